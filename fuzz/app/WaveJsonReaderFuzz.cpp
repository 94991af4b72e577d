// Reads arbitrary input as a WaveJSON diagram. A read that fails must leave the diagram as it
// was and say where; one that succeeds must leave no arrow or note on a signal it lacks.
#include "io/WaveJsonReader.h"
#include "model/Diagram.h"

#include "core/TqObject.h"

#include <cstddef>
#include <cstdint>
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
    WaveJsonReader reader("fuzz.json");
    if (!reader.readText(text, "fuzz.json", diagram, error)) {
        if (diagram.title() != "before" || diagram.signalCount() != 0 ||
            error.rfind("fuzz.json:", 0) != 0)
            __builtin_trap();
        return 0;
    }
    for (const Arrow& arrow : diagram.arrows()) {
        if (diagram.findSignal(arrow.from.signal) == Signal::npos ||
            diagram.findSignal(arrow.to.signal) == Signal::npos)
            __builtin_trap();
    }
    for (const Annotation& note : diagram.annotations()) {
        if (diagram.findSignal(note.signal) == Signal::npos)
            __builtin_trap();
    }
    return 0;
}
