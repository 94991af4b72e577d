/// TqdReader: reads a .tqd file (the toolkit's sectioned syntax) into a Diagram. A bad file
/// gives "FILE:LINE: what was expected" and leaves the diagram as it was; sections this
/// program does not know are kept in the diagram to be written back.
#pragma once

#include "text/FileReader.h"

#include <string>
#include <string_view>

class Diagram;

class TqdReader : public FileReader {
public:
    /// A reader of the named file; a task set with setTask sees the progress in bytes and can
    /// cancel the read.
    explicit TqdReader(const char* filename) : FileReader(filename) {}

    /// Reads the whole file into diagram (replacing what it held, then telling its
    /// dependents). False when the file cannot be read, is not a well-formed .tqd or the task
    /// was cancelled: error says why, the diagram is untouched.
    [[nodiscard]] bool read(Diagram& diagram, std::string& error);

    /// The same over text already in memory; name stands for the file in messages.
    [[nodiscard]] static bool readText(std::string_view text, const char* name, Diagram& diagram,
                                       std::string& error, iTaskDescription* task = nullptr);
};
