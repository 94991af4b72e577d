#include "io/AtomicFile.h"

#include "text/FileReader.h"

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <unistd.h>

namespace {

// The temporary names the interrupt handler removes. The handler may only call
// async-signal-safe functions, so the names sit in fixed buffers it reads directly.
constexpr std::size_t v_slots = 8;
constexpr std::size_t v_nameLength = 4096;
char v_pending[v_slots][v_nameLength];
volatile std::sig_atomic_t v_used[v_slots];

int reserveSlot(const std::string& name) {
    if (name.size() >= v_nameLength)
        return -1;
    for (std::size_t i = 0; i < v_slots; ++i) {
        if (!v_used[i]) {
            std::memcpy(v_pending[i], name.c_str(), name.size() + 1);
            v_used[i] = 1;
            return static_cast<int>(i);
        }
    }
    return -1;
}

void removePending(int signal) {
    for (std::size_t i = 0; i < v_slots; ++i) {
        if (v_used[i])
            unlink(v_pending[i]);
    }
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigaction(signal, &action, nullptr);
    raise(signal);
}

} // namespace

AtomicFile::AtomicFile(std::string path) : m_path(std::move(path)) {
    m_temporary = m_path + ".tmp-" + std::to_string(getpid());
    m_slot = reserveSlot(m_temporary);
}

AtomicFile::~AtomicFile() {
    if (!m_committed)
        std::remove(m_temporary.c_str());
    if (m_slot >= 0)
        v_used[m_slot] = 0;
}

bool AtomicFile::commit(std::string& error) {
    if (std::rename(m_temporary.c_str(), m_path.c_str()) != 0) {
        error = "cannot write " + m_path + ": " + std::strerror(errno);
        return false;
    }
    m_committed = true;
    return true;
}

void AtomicFile::installInterruptCleanup() {
    struct sigaction action {};
    action.sa_handler = removePending;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGHUP, &action, nullptr);
}

bool saveAtomically(FileWritingAgent& writer, std::string& error) {
    AtomicFile file(writer.filename());
    const std::string target = writer.filename();
    writer.setFilename(file.temporaryPath().c_str());
    const bool written = writer.render();
    writer.setFilename(target.c_str());
    if (!written) {
        error = "cannot write " + target;
        return false;
    }
    return file.commit(error);
}
