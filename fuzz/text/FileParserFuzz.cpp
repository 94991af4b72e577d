// Reads arbitrary input as a sectioned file, keeping every section and walking its tree, once
// from a string stream and once through a stream buffer refilled every few characters: both
// reads must keep the same sections and end the same way.
#include "text/ChunkedBuffer.h"
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
        FileElement& child = element.element(i);
        if (&child != &element)
            count += walk(child, depth + 1);
    }
    return count;
}

class KeepingParser : public FileParser {
public:
    explicit KeepingParser(std::istream& in) : FileParser(in, nullptr, sections, keywords) {}
    bool keepTest(const SectionDescriptor&) override { return true; }
    bool processKept(FileSection& section) override {
        section.printOn(m_printed);
        return walk(section, 0) >= 0;
    }
    // A Bus section is processed at once, and the raw text after it taken as a string.
    bool processNowTest(const SectionDescriptor& descriptor) override { return descriptor.id == 3; }
    bool processNow(FileSection& section) override {
        SingleFileElement& raw = parseString();
        raw.printOn(m_printed);
        delete &raw;
        return walk(section, 0) >= 0;
    }
    std::string outcome(short passes) {
        bool read = this->read(passes);
        return m_printed.str() + (read ? "+" : "-") + (hasError() ? errorMessage() : "");
    }

private:
    std::ostringstream m_printed;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    std::istringstream whole(text);
    ChunkedBuffer buffer(text, 1 + size % 7);
    std::istream chunked(&buffer);
    if (KeepingParser(whole).outcome(2) != KeepingParser(chunked).outcome(2))
        __builtin_trap();
    return 0;
}
