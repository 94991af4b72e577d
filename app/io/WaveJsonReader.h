/// WaveJsonReader: reads a WaveJSON timing diagram (.json, .json5, .js: a JavaScript object
/// literal with a `signal` list of wave lanes) into a Diagram. One wave character is one slot
/// of v_slotTime nanoseconds; what the diagram cannot show is named once per kind in warnings().
#pragma once

#include "model/Time.h"

#include "text/FileReader.h"

#include <string>
#include <string_view>
#include <vector>

class Diagram;

class WaveJsonReader : public FileReader {
public:
    explicit WaveJsonReader(const char* filename) : FileReader(filename) {}

    /// Reads the whole file into diagram (replacing what it held, then telling its
    /// dependents). False when the file cannot be read or is no WaveJSON diagram: error says
    /// why ("FILE:LINE: ..."), the diagram is untouched.
    [[nodiscard]] bool read(Diagram& diagram, std::string& error);

    /// The same over text in memory; name stands for the file in messages.
    [[nodiscard]] bool readText(std::string_view text, const char* name, Diagram& diagram,
                                std::string& error);

    /// What the last read met and could not show as the file has it, one line per kind.
    const std::vector<std::string>& warnings() const { return m_warnings; }

    /// The time of one wave character at period 1 and hscale 1, in nanoseconds.
    static constexpr Time v_slotTime = 10;

private:
    std::vector<std::string> m_warnings;
};
