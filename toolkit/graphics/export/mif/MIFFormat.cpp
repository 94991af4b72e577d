#include "graphics/export/mif/MIFFormat.h"

#include "graphics/device/QtConversion.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

namespace {

// The characters of MIF's Roman character set from 0x80 to 0xFF, as Unicode. 0xF0 has no
// Unicode counterpart and is never produced.
constexpr std::array<char32_t, 128> v_romanUpperHalf = {
    0x00C4, 0x00C5, 0x00C7, 0x00C9, 0x00D1, 0x00D6, 0x00DC, 0x00E1, // 80
    0x00E0, 0x00E2, 0x00E4, 0x00E3, 0x00E5, 0x00E7, 0x00E9, 0x00E8, // 88
    0x00EA, 0x00EB, 0x00ED, 0x00EC, 0x00EE, 0x00EF, 0x00F1, 0x00F3, // 90
    0x00F2, 0x00F4, 0x00F6, 0x00F5, 0x00FA, 0x00F9, 0x00FB, 0x00FC, // 98
    0x2020, 0x00B0, 0x00A2, 0x00A3, 0x00A7, 0x2022, 0x00B6, 0x00DF, // A0
    0x00AE, 0x00A9, 0x2122, 0x00B4, 0x00A8, 0x2260, 0x00C6, 0x00D8, // A8
    0x221E, 0x00B1, 0x2264, 0x2265, 0x00A5, 0x00B5, 0x2202, 0x2211, // B0
    0x220F, 0x03C0, 0x222B, 0x00AA, 0x00BA, 0x03A9, 0x00E6, 0x00F8, // B8
    0x00BF, 0x00A1, 0x00AC, 0x221A, 0x0192, 0x2248, 0x2206, 0x00AB, // C0
    0x00BB, 0x2026, 0x00A0, 0x00C0, 0x00C3, 0x00D5, 0x0152, 0x0153, // C8
    0x2013, 0x2014, 0x201C, 0x201D, 0x2018, 0x2019, 0x00F7, 0x25CA, // D0
    0x00FF, 0x0178, 0x2044, 0x20AC, 0x2039, 0x203A, 0xFB01, 0xFB02, // D8
    0x2021, 0x00B7, 0x201A, 0x201E, 0x2030, 0x00C2, 0x00CA, 0x00C1, // E0
    0x00CB, 0x00C8, 0x00CD, 0x00CE, 0x00CF, 0x00CC, 0x00D3, 0x00D4, // E8
    0xFFFF, 0x00D2, 0x00DA, 0x00DB, 0x00D9, 0x0131, 0x02C6, 0x02DC, // F0
    0x00AF, 0x02D8, 0x02D9, 0x02DA, 0x00B8, 0x02DD, 0x02DB, 0x02C7, // F8
};

// Room for any double in fixed notation (at most 309 integral digits) with sign and
// decimals.
constexpr std::size_t v_numberRoom = 400;

// Decodes one UTF-8 character at text[i] (n bytes in all), returning it and setting used to
// its byte count; a byte that does not start a valid sequence is returned as itself
// (Latin-1) with used = 1.
char32_t decodeUtf8(const unsigned char* text, std::size_t n, std::size_t i, std::size_t& used) {
    const unsigned char lead = text[i];
    used = 1;
    if (lead < 0x80)
        return lead;
    std::size_t length = 0;
    char32_t code = 0, minimum = 0;
    if ((lead & 0xE0) == 0xC0)
        length = 2, code = lead & 0x1F, minimum = 0x80;
    else if ((lead & 0xF0) == 0xE0)
        length = 3, code = lead & 0x0F, minimum = 0x800;
    else if ((lead & 0xF8) == 0xF0)
        length = 4, code = lead & 0x07, minimum = 0x10000;
    else
        return lead;
    if (n - i < length)
        return lead;
    for (std::size_t k = 1; k < length; ++k) {
        if ((text[i + k] & 0xC0) != 0x80)
            return lead;
        code = (code << 6) | (text[i + k] & 0x3F);
    }
    if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
        return lead;
    used = length;
    return code;
}

void appendHexEscape(std::string& out, unsigned byte) {
    static constexpr char digits[] = "0123456789abcdef";
    const char escape[] = {'\\', 'x', digits[byte >> 4], digits[byte & 0xF], ' '};
    out.append(escape, sizeof escape);
}

// The separations of wsiColor 0 to 19 (0 is never looked up: it is the invalid colour).
constexpr int v_vocabularySeparation[] = {
    MIFFormat::separationBlack, MIFFormat::separationWhite,   MIFFormat::separationBlack,
    MIFFormat::separationBlack, MIFFormat::separationBlack,   MIFFormat::separationBlack,
    MIFFormat::separationBlack, MIFFormat::separationRed,     MIFFormat::separationRed,
    MIFFormat::separationRed,   MIFFormat::separationGreen,   MIFFormat::separationGreen,
    MIFFormat::separationGreen, MIFFormat::separationBlue,    MIFFormat::separationBlue,
    MIFFormat::separationCyan,  MIFFormat::separationMagenta, MIFFormat::separationYellow,
    MIFFormat::separationWhite, MIFFormat::separationBlack};

int separationOfHue(const QColor& color) {
    const int r = color.red(), g = color.green(), b = color.blue();
    const int high = std::max({r, g, b}), low = std::min({r, g, b});
    if (low >= 240)
        return MIFFormat::separationWhite;
    if (high < 40 || (high - low) * 100 < high * 15)
        return MIFFormat::separationBlack;
    // Hue sectors of 60 degrees centred on red, yellow, green, cyan, blue and magenta.
    static constexpr int sectors[] = {MIFFormat::separationRed,   MIFFormat::separationYellow,
                                      MIFFormat::separationGreen, MIFFormat::separationCyan,
                                      MIFFormat::separationBlue,  MIFFormat::separationMagenta};
    const int hue = std::max(color.hsvHue(), 0);
    return sectors[((hue + 30) / 60) % 6];
}

} // namespace

void MIFFormat::appendReal(std::string& out, double value) {
    char text[v_numberRoom];
    char* end = text;
    if (!std::isfinite(value))
        value = 0;
    const double hundredths = std::round(value * 100.0);
    if (std::fabs(hundredths) < 9e15) {
        // Integral hundredths format exactly, which keeps coordinates like 12.3 from
        // showing their binary error.
        const auto whole = static_cast<long long>(hundredths);
        const long long magnitude = whole < 0 ? -whole : whole;
        if (whole < 0)
            *end++ = '-';
        end = std::to_chars(end, text + sizeof text, magnitude / 100).ptr;
        *end++ = '.';
        *end++ = char('0' + magnitude % 100 / 10);
        if (magnitude % 10 != 0)
            *end++ = char('0' + magnitude % 10);
    } else {
        end = std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, 2).ptr;
        if (end[-1] == '0')
            --end;
    }
    out.append(text, end);
}

void MIFFormat::appendInteger(std::string& out, long long value) {
    char text[24];
    out.append(text, std::to_chars(text, text + sizeof text, value).ptr);
}

void MIFFormat::appendGeneral(std::string& out, double value) {
    char text[v_numberRoom];
    if (!std::isfinite(value))
        value = 0;
    out.append(text,
               std::to_chars(text, text + sizeof text, value, std::chars_format::general, 6).ptr);
}

std::string MIFFormat::real(double value) {
    std::string text;
    appendReal(text, value);
    return text;
}

std::string MIFFormat::general(double value) {
    std::string text;
    appendGeneral(text, value);
    return text;
}

int MIFFormat::romanCode(char32_t code) {
    if (code < 0x80)
        return static_cast<int>(code);
    const auto* found = std::find(v_romanUpperHalf.begin(), v_romanUpperHalf.end(), code);
    if (found == v_romanUpperHalf.end() || code == 0xFFFF)
        return -1;
    return 0x80 + static_cast<int>(found - v_romanUpperHalf.begin());
}

void MIFFormat::appendString(std::string& out, const char* text, int length) {
    if (!text)
        return;
    const std::size_t n = length < 0 ? std::strlen(text) : strnlen(text, std::size_t(length));
    const auto* bytes = reinterpret_cast<const unsigned char*>(text);
    std::size_t used = 0;
    for (std::size_t i = 0; i < n; i += used) {
        const char32_t code = decodeUtf8(bytes, n, i, used);
        switch (code) {
        case '\\':
            out += "\\\\";
            continue;
        case '>':
            out += "\\>";
            continue;
        case '\'':
            out += "\\q";
            continue;
        case '`':
            out += "\\Q";
            continue;
        case '\t':
            out += "\\t";
            continue;
        default:
            break;
        }
        const int roman = romanCode(code);
        if (roman < 0)
            out += '?';
        else if (roman < 0x20 || roman >= 0x7F)
            appendHexEscape(out, static_cast<unsigned>(roman));
        else
            out += static_cast<char>(roman);
    }
}

int MIFFormat::separationOf(const QColor& color, bool grayScale) {
    if (!color.isValid())
        return -1;
    const QColor rgb = color.toRgb();
    if (grayScale)
        return rgb.red() == 255 && rgb.green() == 255 && rgb.blue() == 255 ? separationWhite
                                                                           : separationBlack;
    for (int value = 1; value < int(std::size(v_vocabularySeparation)); ++value) {
        if ((QtConversion::asQColor(static_cast<wsiColor>(value)).rgb() & 0xFFFFFFu) ==
            (rgb.rgb() & 0xFFFFFFu))
            return v_vocabularySeparation[value];
    }
    return separationOfHue(rgb);
}
