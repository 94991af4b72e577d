#include "render/Label.h"

#include "graphics/geometry/DevicePoint.h"
#include "graphics/richtext/TextFormatParser.h"

namespace {

// Most names carry no markup; they skip building a tree of runs.
bool hasMarkup(const std::string& text) {
    return text.find('<') != std::string::npos || text.find('\n') != std::string::npos;
}

} // namespace

long labelWidth(Device& device, const std::string& text, WsiFont& font) {
    if (text.empty())
        return 0;
    if (!hasMarkup(text))
        return device.pixelBox(text.c_str(), font).x();
    return TextFormatParser::pixelBox(text.c_str(), device, font).x();
}

void drawLabel(Device& device, const std::string& text, const SheetPoint& at, WsiFont& font,
               wsiAlignH h, wsiAlignV v) {
    if (text.empty())
        return;
    if (!hasMarkup(text)) {
        device.drawAlignedText(text.c_str(), at, font, h, v);
        return;
    }
    TextFormatParser parser(text.c_str(), device);
    parser.parse().drawText(DevicePoint(at, device.displayTransformation(false)), font, h, v);
}
