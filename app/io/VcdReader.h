/// VcdReader: reads a value change dump (.vcd, written by Verilog simulators) into a Diagram as
/// it streams past: only the changes of the signals the patterns select are kept, scopes become
/// groups, and a task sees the progress in bytes and can cancel the read.
#pragma once

#include "text/FileReader.h"

#include <string>
#include <string_view>
#include <vector>

class Diagram;

class VcdReader : public FileReader {
public:
    /// A reader of the named file; a task set with setTask sees the progress and can cancel.
    explicit VcdReader(const char* filename) : FileReader(filename) {}

    /// Keeps only the variables whose hierarchical names ("tb.dut.data") match one of the
    /// patterns (SignalPattern wildcards); empty keeps every variable.
    void setPatterns(std::vector<std::string> patterns) { m_patterns = std::move(patterns); }

    /// Reads the whole file into diagram (replacing what it held, then telling its
    /// dependents). False when the file cannot be read, is not a well-formed dump or the task
    /// was cancelled: error says why ("FILE:LINE: ...", "FILE: ..." when the line cannot be
    /// found again, "FILE: reading was cancelled"), the diagram is untouched.
    [[nodiscard]] bool read(Diagram& diagram, std::string& error);

    /// The same over text in memory; name stands for the file in messages.
    [[nodiscard]] bool readText(std::string_view text, const char* name, Diagram& diagram,
                                std::string& error);

    /// What the last read met and could not show as the dump has it, one line per kind.
    const std::vector<std::string>& warnings() const { return m_warnings; }

    /// Bytes read from the file between two looks at the task.
    static constexpr std::size_t v_chunkBytes = 1 << 20;

private:
    [[nodiscard]] bool parse(std::istream* in, std::string_view text, const char* name,
                             Diagram& diagram, std::string& error);

    std::vector<std::string> m_patterns;
    std::vector<std::string> m_warnings;
};
