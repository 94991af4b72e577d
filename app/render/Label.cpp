#include "render/Label.h"

#include <array>
#include <string_view>

namespace {

constexpr std::array<std::string_view, 22> v_tagWords = {
    "b",        "i",        "u",        "o",      "sub",     "super",     "black", "darkgray",
    "gray",     "palegray", "darkred",  "red",    "palered", "darkgreen", "green", "palegreen",
    "darkblue", "blue",     "paleblue", "purple", "yellow",  "white"};

bool isTag(std::string_view word) {
    if (!word.empty() && word[0] == '/')
        word.remove_prefix(1);
    for (std::string_view tag : v_tagWords) {
        if (word == tag)
            return true;
    }
    return false;
}

} // namespace

std::string labelPlainText(const std::string& text) {
    std::string plain;
    plain.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '<') {
            const std::size_t close = text.find('>', i + 1);
            if (close != std::string::npos &&
                isTag(std::string_view(text).substr(i + 1, close - i - 1))) {
                i = close;
                continue;
            }
        }
        plain.push_back(text[i]);
    }
    return plain;
}

long labelWidth(wsiDevice& device, const std::string& text, WsiFont& font) {
    const std::string plain = labelPlainText(text);
    return plain.empty() ? 0 : device.pixelBox(plain.c_str(), font).x();
}

void drawLabel(wsiDevice& device, const std::string& text, const SheetPoint& at, WsiFont& font,
               wsiAlignH h, wsiAlignV v) {
    const std::string plain = labelPlainText(text);
    if (!plain.empty())
        device.drawAlignedText(plain.c_str(), at, font, h, v);
}
