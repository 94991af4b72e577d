/// DiagramFile: reads a diagram from a file of any format the application knows, chosen by
/// the file's extension (.tqd, and the simulation formats as their readers are added here).
#pragma once

#include <string>

class Diagram;
class iTaskDescription;

/// Reads path into diagram. False, with error set ("FILE:LINE: what was expected" for a bad
/// file) and the diagram untouched, when the file cannot be read or is not well formed. A
/// task, when given, sees the progress and may cancel the read.
[[nodiscard]] bool readDiagramFile(const std::string& path, Diagram& diagram, std::string& error,
                                   iTaskDescription* task = nullptr);
