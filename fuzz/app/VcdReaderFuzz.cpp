// Reads arbitrary input as a value change dump, whole and through a signal pattern. A read
// that fails must leave the diagram as it was and say where; a pattern may only drop signals,
// never change the ones it keeps.
#include "io/VcdReader.h"
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
    Diagram all;
    all.setTitle("before");
    std::string error;
    VcdReader reader("fuzz.vcd");
    if (!reader.readText(text, "fuzz.vcd", all, error)) {
        if (all.title() != "before" || all.signalCount() != 0 || error.rfind("fuzz.vcd:", 0) != 0)
            __builtin_trap();
        return 0;
    }
    Diagram some;
    VcdReader filtered("fuzz.vcd");
    filtered.setPatterns({"**a*"});
    if (!filtered.readText(text, "fuzz.vcd", some, error))
        __builtin_trap();
    for (std::size_t i = 0; i < some.signalCount(); ++i) {
        const Signal& kept = some.signal(i);
        const std::size_t index = all.findSignal(kept.name());
        if (index == Signal::npos || !(all.signal(index) == kept))
            __builtin_trap();
    }
    return 0;
}
