// Reads export parameters from arbitrary settings text; whatever reads cleanly must write
// back to a text that reads to the same parameters.
#include "graphics/export/ExportParameters.h"

#include <cstddef>
#include <cstdint>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    ExportParameters first;
    if (!first.read(text.c_str()))
        return 0;
    const std::string written = first.asText();
    ExportParameters second;
    if (!second.read(written.c_str()) || second.asText() != written)
        __builtin_trap();
    return 0;
}
