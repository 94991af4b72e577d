#include "graphics/export/svg/SVGFormat.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

namespace {

constexpr char v_hex[] = "0123456789abcdef";

// The replacement character U+FFFD in UTF-8.
constexpr char v_replacement[] = "\xEF\xBF\xBD";

char* appendText(char* out, const char* text, std::size_t n) {
    std::memcpy(out, text, n);
    return out + n;
}

// The length of the well-formed UTF-8 sequence of a character XML allows that starts at
// text (n bytes left), or 0 when there is none. Follows the table of well-formed byte
// sequences of the Unicode standard, which leaves out overlong forms, surrogates and code
// points beyond U+10FFFF.
std::size_t sequenceLength(const unsigned char* text, std::size_t n) {
    const unsigned char lead = text[0];
    auto continuation = [&](std::size_t i, unsigned char low, unsigned char high) {
        return i < n && text[i] >= low && text[i] <= high;
    };
    if (lead >= 0xC2 && lead <= 0xDF)
        return continuation(1, 0x80, 0xBF) ? 2 : 0;
    if (lead >= 0xE0 && lead <= 0xEF) {
        const unsigned char low = lead == 0xE0 ? 0xA0 : 0x80;
        const unsigned char high = lead == 0xED ? 0x9F : 0xBF;
        if (!continuation(1, low, high) || !continuation(2, 0x80, 0xBF))
            return 0;
        // U+FFFE and U+FFFF are not characters to XML.
        if (lead == 0xEF && text[1] == 0xBF && text[2] >= 0xBE)
            return 0;
        return 3;
    }
    if (lead >= 0xF0 && lead <= 0xF4) {
        const unsigned char low = lead == 0xF0 ? 0x90 : 0x80;
        const unsigned char high = lead == 0xF4 ? 0x8F : 0xBF;
        return continuation(1, low, high) && continuation(2, 0x80, 0xBF) &&
                       continuation(3, 0x80, 0xBF)
                   ? 4
                   : 0;
    }
    return 0;
}

} // namespace

char* SVGFormat::appendInteger(char* out, long long value) {
    return std::to_chars(out, out + v_numberRoom, value).ptr;
}

char* SVGFormat::appendNumber(char* out, double value) {
    constexpr double v_limit = 1e15;
    if (!std::isfinite(value))
        value = 0;
    const long long thousandths = std::llround(std::clamp(value, -v_limit, v_limit) * 1000);
    if (thousandths % 1000 == 0)
        return appendInteger(out, thousandths / 1000);
    if (thousandths < 0)
        *out++ = '-';
    const unsigned long long magnitude = thousandths < 0
                                             ? 0ULL - static_cast<unsigned long long>(thousandths)
                                             : static_cast<unsigned long long>(thousandths);
    if (magnitude >= 1000)
        out = std::to_chars(out, out + v_numberRoom, magnitude / 1000).ptr;
    *out++ = '.';
    unsigned fraction = static_cast<unsigned>(magnitude % 1000);
    int digits = 3;
    while (fraction % 10 == 0) {
        fraction /= 10;
        --digits;
    }
    for (int i = digits - 1; i >= 0; --i) {
        out[i] = static_cast<char>('0' + fraction % 10);
        fraction /= 10;
    }
    return out + digits;
}

char* SVGFormat::appendColor(char* out, QRgb color) {
    const unsigned channels[3] = {static_cast<unsigned>(qRed(color)),
                                  static_cast<unsigned>(qGreen(color)),
                                  static_cast<unsigned>(qBlue(color))};
    const bool shortForm = std::all_of(std::begin(channels), std::end(channels),
                                       [](unsigned c) { return c >> 4 == (c & 15); });
    *out++ = '#';
    for (unsigned c : channels) {
        *out++ = v_hex[c >> 4];
        if (!shortForm)
            *out++ = v_hex[c & 15];
    }
    return out;
}

char* SVGFormat::appendEscaped(char* out, const char* text, std::size_t n) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text);
    std::size_t i = 0;
    while (i < n) {
        const unsigned char c = bytes[i];
        if (c >= 0x80) {
            const std::size_t length = sequenceLength(bytes + i, n - i);
            if (length == 0) {
                out = appendText(out, v_replacement, 3);
                ++i;
            } else {
                out = appendText(out, text + i, length);
                i += length;
            }
            continue;
        }
        ++i;
        switch (c) {
        case '&':
            out = appendText(out, "&amp;", 5);
            break;
        case '<':
            out = appendText(out, "&lt;", 4);
            break;
        case '>':
            out = appendText(out, "&gt;", 4);
            break;
        case '"':
            out = appendText(out, "&quot;", 6);
            break;
        case '\t':
            out = appendText(out, "&#9;", 4);
            break;
        case '\n':
            out = appendText(out, "&#10;", 5);
            break;
        case '\r':
            out = appendText(out, "&#13;", 5);
            break;
        default:
            if (c >= 0x20)
                *out++ = static_cast<char>(c);
        }
    }
    return out;
}
