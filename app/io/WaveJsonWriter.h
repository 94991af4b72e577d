/// WaveJsonWriter: writes a Diagram as a WaveJSON file (strict JSON), so that a diagram can be
/// drawn by the tools that read that format. Times become slots of one common length; what the
/// format cannot hold is named once per kind in warnings().
#pragma once

#include "text/FileReader.h"

#include <iosfwd>
#include <string>
#include <vector>

class Diagram;

class WaveJsonWriter : public FileWritingAgent {
public:
    /// A writer of diagram (which must outlive it) into the named file.
    WaveJsonWriter(const char* filename, const Diagram& diagram);

    /// Writes the file through a temporary beside it; false (error set) when it cannot be
    /// written, and then no file of that name was created or changed.
    [[nodiscard]] bool save(std::string& error);

    /// Writes the diagram to out; warnings gets what was left out, once per kind.
    static void write(const Diagram& diagram, std::ostream& out,
                      std::vector<std::string>& warnings);

    const std::vector<std::string>& warnings() const { return m_warnings; }

    /// The most slots a lane gets; closer changes are merged into one slot.
    static constexpr long long v_maxSlots = 100000;

protected:
    void writeContents(std::ostream& out) override;

private:
    const Diagram& m_diagram;
    std::vector<std::string> m_warnings;
};
