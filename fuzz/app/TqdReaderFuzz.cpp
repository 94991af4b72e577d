// Reads arbitrary input as a .tqd diagram. A read that fails must leave the diagram as it was
// and say where; a read that succeeds must write a file that reads back to the same diagram.
#include "io/TqdReader.h"
#include "io/TqdWriter.h"
#include "model/Diagram.h"

#include "core/TqObject.h"

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    TqObject::startUp();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    Diagram diagram;
    diagram.setTitle("before");
    std::string error;
    if (!TqdReader::readText(text, "fuzz.tqd", diagram, error)) {
        if (diagram.title() != "before" || diagram.signalCount() != 0 ||
            error.rfind("fuzz.tqd:", 0) != 0)
            __builtin_trap();
        return 0;
    }
    std::ostringstream out;
    TqdWriter::write(diagram, out);
    Diagram again;
    if (!TqdReader::readText(out.str(), "again.tqd", again, error) || !again.sameContents(diagram))
        __builtin_trap();
    return 0;
}
