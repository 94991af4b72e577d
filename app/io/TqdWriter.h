/// TqdWriter: writes a Diagram as a .tqd file, every item in a form TqdReader reads back to
/// the same diagram, then the foreign sections it was read with. The file appears only when
/// it was written whole.
#pragma once

#include "text/FileReader.h"

#include <iosfwd>
#include <string>

class Diagram;

class TqdWriter : public FileWritingAgent {
public:
    /// A writer of diagram (which must outlive it) into the named file.
    TqdWriter(const char* filename, const Diagram& diagram);

    /// Writes the file through a temporary beside it; false (error set) when it cannot be
    /// written, and then no file of that name was created or changed.
    [[nodiscard]] bool save(std::string& error);

    /// Writes the diagram's sections to out.
    static void write(const Diagram& diagram, std::ostream& out);

    /// Signal changes are written in sections of at most this many, so that no list
    /// of a file grows past what the file elements count.
    static constexpr std::size_t v_changesPerSection = 8192;

protected:
    void writeContents(std::ostream& out) override;

private:
    const Diagram& m_diagram;
};
