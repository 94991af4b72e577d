#include "io/DiagramFile.h"

#include "io/TqdReader.h"
#include "io/VcdReader.h"
#include "io/WaveJsonReader.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <iostream>

namespace {

std::string lowerExtension(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return extension;
}

void showWarnings(const std::string& path, const std::vector<std::string>& warnings) {
    for (const std::string& warning : warnings)
        std::cerr << "tqdiagram: " << path << ": warning: " << warning << "\n";
}

} // namespace

bool readDiagramFile(const std::string& path, Diagram& diagram, std::string& error,
                     iTaskDescription* task, const std::vector<std::string>& patterns) {
    const std::string extension = lowerExtension(path);
    if (extension == ".vcd") {
        VcdReader reader(path.c_str());
        reader.setPatterns(patterns);
        if (task)
            reader.setTask(*task);
        const bool good = reader.read(diagram, error);
        showWarnings(path, reader.warnings());
        return good;
    }
    if (extension == ".json" || extension == ".json5" || extension == ".js") {
        WaveJsonReader reader(path.c_str());
        if (task)
            reader.setTask(*task);
        const bool good = reader.read(diagram, error);
        showWarnings(path, reader.warnings());
        return good;
    }
    // Every other extension is read as .tqd too: its reader gives the clearest message for a
    // file that is not one.
    TqdReader reader(path.c_str());
    if (task)
        reader.setTask(*task);
    return reader.read(diagram, error);
}
