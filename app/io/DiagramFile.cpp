#include "io/DiagramFile.h"

#include "io/TqdReader.h"

bool readDiagramFile(const std::string& path, Diagram& diagram, std::string& error,
                     iTaskDescription* task) {
    // Every other extension is read as .tqd too: its reader gives the clearest message for a
    // file that is not one.
    TqdReader reader(path.c_str());
    if (task)
        reader.setTask(*task);
    return reader.read(diagram, error);
}
