/// \file
/// The levelled debug print: Printf(DBG_PRINT_LEVEL, format, ...) and byte dumps through
/// dumpBuff. Silent by default; the environment variable TQ_DEBUG_LEVEL (read at the first
/// print) or setDebugPrintLevel turns levels on. Safe to call from any thread.
#pragma once

#include "core/TqExport.h"

#include <cstddef>
#include <string>

/// The levels of the debug print: a print is written when its level is at or below the
/// current level (debugPrintLevel()).
enum DebugPrintLevel {
    DBG_ERRORS = 1, ///< failures worth a line even in production diagnostics
    DBG_INFO = 2,   ///< one line per request or connection
    DBG_TRACE = 3,  ///< per message and per byte dump
};

/// The level a file's own prints use; define it before including this header to change it.
#ifndef DBG_PRINT_LEVEL
#define DBG_PRINT_LEVEL DBG_INFO
#endif

/// Writes the formatted text when level is at or below the current level.
TQ_EXPORT void Printf(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));
/// Writes length bytes as hex and printable characters, 16 a line, at the given level.
TQ_EXPORT void dumpBuff(int level, const void* data, std::size_t length);

///@{
/// The level prints must be at or below to be written; 0 (silent) unless set or given in the
/// environment.
TQ_EXPORT int debugPrintLevel();
TQ_EXPORT void setDebugPrintLevel(int level);
///@}
/// Where the prints go: standard error by default. A sink receives each formatted piece of
/// text; null restores standard error. Returns the previous sink (null for standard error).
using DebugPrintSink = void (*)(const char* text);
/// Installs sink (null: standard error) and returns the previous one.
TQ_EXPORT DebugPrintSink setDebugPrintSink(DebugPrintSink sink);

/// A formatted diagnostic message, shown on standard error by display().
class TQ_EXPORT DebugMessage {
public:
    /// Formats the message now, printf-style; the text is kept by value.
    explicit DebugMessage(const char* format, ...) __attribute__((format(printf, 2, 3)));
    /// The formatted text, owned by the message ("" if the format failed).
    const char* text() const { return m_text.c_str(); }
    /// Shows "DEBUG: " and the formatted text, whatever the debug level.
    static void display(const char* format, ...) __attribute__((format(printf, 1, 2)));

private:
    std::string m_text;
};
