/// DiagramFile: reads a diagram from a file of any format the application knows, chosen by
/// the file's extension: .vcd value change dumps, .json .json5 .js WaveJSON diagrams, and .tqd.
#pragma once

#include <string>
#include <vector>

class Diagram;
class iTaskDescription;

/// Reads path into diagram. False, with error set ("FILE:LINE: what was expected" for a bad
/// file) and the diagram untouched, when the file cannot be read or is not well formed. A
/// task, when given, sees the progress and may cancel the read. A value change dump keeps
/// only the signals that match one of patterns (all when there are none) as it is read. What
/// a reader cannot show as the file has it is named on standard error, once per kind.
[[nodiscard]] bool readDiagramFile(const std::string& path, Diagram& diagram, std::string& error,
                                   iTaskDescription* task = nullptr,
                                   const std::vector<std::string>& patterns = {});
