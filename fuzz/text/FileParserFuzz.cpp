// Reads arbitrary input as a sectioned file, keeping every section and walking its tree.
#include "text/FileParser.h"

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

namespace {

KeywordDescriptor keywords[] = {
    {"edge", 1, 0}, {"time", 2, 0}, {"name", 3, 0}, {"list", 4, 0}, {nullptr, 0, 0},
};
SectionDescriptor signal{"Signal", 1, 0}, view{"View", 2, 1}, bus{"Bus", 3, 0};
SectionDescriptor* sections[] = {&signal, &view, &bus, nullptr};

int walk(FileElement& element, int depth) {
    if (depth > FileParser::v_maxNesting + 2)
        __builtin_trap();
    int count = 0;
    for (short i = 0; i < element.numberOfElements(); ++i) {
        const char* value = element.value(i);
        count += value ? static_cast<int>(element.token(i).length()) : 0;
        if (element.type(i) == ST_END && value)
            ++count;
        FileElement& child = element.element(i);
        if (&child != &element)
            count += walk(child, depth + 1);
    }
    return count;
}

class KeepingParser : public FileParser {
public:
    KeepingParser(std::istream& in) : FileParser(in, nullptr, sections, keywords) {}
    bool keepTest(const SectionDescriptor&) override { return true; }
    bool processKept(FileSection& section) override { return walk(section, 0) >= 0; }
    bool processNowTest(const SectionDescriptor& descriptor) override { return descriptor.id == 3; }
    bool processNow(FileSection& section) override {
        delete &parseString();
        return walk(section, 0) >= 0;
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream in(std::string(reinterpret_cast<const char*>(data), size));
    KeepingParser parser(in);
    (void)parser.read(2);
    return 0;
}
