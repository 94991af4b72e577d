// Reads points and rectangles from the elements of a parsed sectioned file, the way an
// application reads its stored geometry: every element of every "Shape" section, and every
// element nested one level in it, is offered to the four read operations.
#include "core/TqObject.h"
#include "graphics/geometry/DeviceRectangle.h"
#include "graphics/geometry/SheetRectangle.h"
#include "text/FileParser.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

KeywordDescriptor v_keywords[] = {{"point", 1, 0}, {"rect", 2, 0}, {nullptr, 0, 0}};
SectionDescriptor v_shape = {"Shape", 1, 0};
SectionDescriptor* v_sections[] = {&v_shape, nullptr};

void readAll(FileElement& element) {
    DevicePoint devicePoint;
    SheetPoint sheetPoint;
    DeviceRectangle deviceRectangle;
    SheetRectangle sheetRectangle;
    if (devicePoint.read(element) != sheetPoint.read(element))
        __builtin_trap();
    if (deviceRectangle.read(element) != sheetRectangle.read(element))
        __builtin_trap();
    if (deviceRectangle.left() > deviceRectangle.right() ||
        deviceRectangle.top() > deviceRectangle.bottom())
        __builtin_trap();
    // Extents and the Qt forms are defined for every rectangle read, the whole range
    // included.
    if (deviceRectangle.toQRect().topLeft() != deviceRectangle.origin().toQPoint() ||
        sheetRectangle.toQRect() != deviceRectangle.toQRect() ||
        DevicePoint(deviceRectangle.extent()) + deviceRectangle.origin() !=
            deviceRectangle.corner())
        __builtin_trap();
}

class ShapeParser : public FileParser {
public:
    explicit ShapeParser(const char* text) : FileParser(text, nullptr, v_sections, v_keywords) {}

protected:
    bool processNowTest(const SectionDescriptor&) override { return true; }
    bool processNow(FileSection& section) override {
        readAll(section);
        for (int i = 0; i < section.numberOfElements(); ++i) {
            FileElement& element = section.element(i);
            readAll(element);
            for (int j = 0; j < element.numberOfElements(); ++j)
                readAll(element.element(j));
        }
        return true;
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int started = TqObject::startUp();
    (void)started;
    const std::string text(reinterpret_cast<const char*>(data), size);
    ShapeParser parser(text.c_str());
    (void)parser.read(1);
    return 0;
}
