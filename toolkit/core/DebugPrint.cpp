#include "core/DebugPrint.h"

#include <atomic>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace {
std::mutex printMutex;
// Read without the lock, so that a silent print costs the calling threads no lock.
std::atomic<int> currentLevel{-1}; // -1: not yet read from the environment
DebugPrintSink currentSink = nullptr;

int level() {
    int value = currentLevel.load(std::memory_order_relaxed);
    if (value < 0) {
        const char* fromEnvironment = std::getenv("TQ_DEBUG_LEVEL");
        int unread = -1;
        currentLevel.compare_exchange_strong(unread,
                                             fromEnvironment ? std::atoi(fromEnvironment) : 0);
        value = currentLevel.load(std::memory_order_relaxed);
    }
    return value;
}

void writeLocked(const char* text) {
    if (currentSink)
        currentSink(text);
    else
        std::fputs(text, stderr);
}

std::string vformat(const char* format, va_list arguments) {
    va_list copy;
    va_copy(copy, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, copy);
    va_end(copy);
    if (length <= 0)
        return {};
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    return text;
}
} // namespace

void Printf(int level, const char* format, ...) {
    if (level > ::level())
        return;
    va_list arguments;
    va_start(arguments, format);
    const std::string text = vformat(format, arguments);
    va_end(arguments);
    std::lock_guard lock(printMutex);
    writeLocked(text.c_str());
}

void dumpBuff(int level, const void* data, std::size_t length) {
    if (level > ::level() || !data)
        return;
    std::lock_guard lock(printMutex);
    const auto* bytes = static_cast<const unsigned char*>(data);
    for (std::size_t offset = 0; offset < length; offset += 16) {
        char line[96];
        int used = std::snprintf(line, sizeof line, "%08zx:", offset);
        for (std::size_t i = offset; i < offset + 16; ++i) {
            if (i < length)
                used += std::snprintf(line + used, sizeof line - used, " %02x", bytes[i]);
            else
                used += std::snprintf(line + used, sizeof line - used, "   ");
        }
        used += std::snprintf(line + used, sizeof line - used, "  ");
        for (std::size_t i = offset; i < offset + 16 && i < length; ++i)
            line[used++] = std::isprint(bytes[i]) ? static_cast<char>(bytes[i]) : '.';
        line[used++] = '\n';
        line[used] = '\0';
        writeLocked(line);
    }
}

int debugPrintLevel() {
    return level();
}

void setDebugPrintLevel(int value) {
    currentLevel.store(value, std::memory_order_relaxed);
}

DebugPrintSink setDebugPrintSink(DebugPrintSink sink) {
    std::lock_guard lock(printMutex);
    const DebugPrintSink previous = currentSink;
    currentSink = sink;
    return previous;
}

DebugMessage::DebugMessage(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    m_text = vformat(format, arguments);
    va_end(arguments);
}

void DebugMessage::display(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const std::string text = "DEBUG: " + vformat(format, arguments) + "\n";
    va_end(arguments);
    std::lock_guard lock(printMutex);
    writeLocked(text.c_str());
}
