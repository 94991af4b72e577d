#include "core/ErrorMessage.h"

#include "core/PdToolkit.h"
#include "core/StringFunctions.h"

#include <cstdio>
#include <cstring>
#include <ostream>
#include <string>

namespace {
constexpr std::size_t v_formatAreaSize = 1024;
}

ErrorMessage::ErrorMessage(MessageSeverity severity) : m_severity(severity) {}

ErrorMessage::ErrorMessage(MessageSeverity severity, MessageObjectType objectType, void* object,
                           int number, const char* format, ...)
    : m_severity(severity), m_objectType(objectType), m_object(object), m_number(number) {
    va_list arguments;
    va_start(arguments, format);
    this->format(format, arguments);
    va_end(arguments);
}

ErrorMessage::ErrorMessage(MessageSeverity severity, MessageObjectType objectType, void* object,
                           int number, int formatId, ...)
    : m_severity(severity), m_objectType(objectType), m_object(object), m_number(number) {
    va_list arguments;
    va_start(arguments, formatId);
    formatFromTable(formatId, arguments);
    va_end(arguments);
}

ErrorMessage::ErrorMessage(MessageSeverity severity, const char* format, ...)
    : m_severity(severity) {
    va_list arguments;
    va_start(arguments, format);
    this->format(format, arguments);
    va_end(arguments);
}

ErrorMessage::ErrorMessage(MessageSeverity severity, int formatId, ...) : m_severity(severity) {
    va_list arguments;
    va_start(arguments, formatId);
    formatFromTable(formatId, arguments);
    va_end(arguments);
}

ErrorMessage::ErrorMessage(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    this->format(format, arguments);
    va_end(arguments);
}

ErrorMessage::ErrorMessage(int formatId, ...) {
    va_list arguments;
    va_start(arguments, formatId);
    formatFromTable(formatId, arguments);
    va_end(arguments);
}

ErrorMessage::ErrorMessage(const ErrorMessage& other)
    : TqObject(other), m_text(mem_strdup(other.m_text.get())), m_userWord(other.m_userWord),
      m_severity(other.m_severity), m_objectType(other.m_objectType), m_object(other.m_object),
      m_number(other.m_number) {}

ErrorMessage& ErrorMessage::operator=(const ErrorMessage& other) {
    if (this != &other) {
        m_text.reset(mem_strdup(other.m_text.get()));
        m_userWord = other.m_userWord;
        m_severity = other.m_severity;
        m_objectType = other.m_objectType;
        m_object = other.m_object;
        m_number = other.m_number;
    }
    return *this;
}

ErrorMessage::~ErrorMessage() = default;

void ErrorMessage::setMessage(int formatId, ...) {
    va_list arguments;
    va_start(arguments, formatId);
    formatFromTable(formatId, arguments);
    va_end(arguments);
}

void ErrorMessage::format(const char* format, va_list arguments) {
    char area[v_formatAreaSize];
    std::vsnprintf(area, sizeof area, format ? format : "", arguments);
    m_text.reset(mem_strdup(area));
}

void ErrorMessage::formatFromTable(int formatId, va_list arguments) {
    // The ring buffer is reused by the formatting below, so the format is copied first.
    const std::string format = PdToolkit::loadString(formatId);
    this->format(format.c_str(), arguments);
}

const char* ErrorMessage::severityString(int severity) {
    switch (severity) {
    case SEVERITY_FATAL:
        return "FATAL ERROR";
    case SEVERITY_WARNING:
        return "WARNING";
    case SEVERITY_NOTE:
        return "NOTE";
    default:
        return "ERROR";
    }
}

bool ErrorMessage::duplicateExists(const OC_<ErrorMessage>& list, bool sameSeverity) const {
    for (const ErrorMessage* other : list) {
        if (std::strcmp(other->message(), message()) == 0 &&
            (!sameSeverity || other->m_severity == m_severity))
            return true;
    }
    return false;
}

std::ostream& ErrorMessage::printOn(std::ostream& out) const {
    return out << severityString() << ": " << message();
}
