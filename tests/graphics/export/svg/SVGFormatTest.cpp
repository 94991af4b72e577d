// SVGFormat: numbers, colours and escaped text as the SVG writer spells them.
#include "graphics/export/svg/SVGFormat.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

std::string number(double v) {
    char buffer[SVGFormat::v_numberRoom];
    return std::string(buffer, SVGFormat::appendNumber(buffer, v));
}

std::string escaped(const std::string& text) {
    std::string out(text.size() * SVGFormat::v_escapedRoom, '\0');
    out.resize(
        std::size_t(SVGFormat::appendEscaped(out.data(), text.data(), text.size()) - out.data()));
    return out;
}

TEST(SVGFormat, NumbersAreShortestWithAtMostThreeDecimalsAndNoExponent) {
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr double inf = std::numeric_limits<double>::infinity();
    // clang-format off
    const struct { double value; const char* text; } cases[] = {
        {0, "0"}, {-0.0, "0"}, {7, "7"}, {-12, "-12"}, {2.5, "2.5"}, {0.125, ".125"},
        {-0.5, "-.5"}, {1 / 3.0, ".333"}, {2 / 3.0, ".667"}, {1234.5678, "1234.568"},
        {99.9996, "100"}, {-0.0004, "0"}, {0.0006, ".001"}, {12.10, "12.1"}, {1e20, "1000000000000000"},
        {-1e20, "-1000000000000000"}, {1e-9, "0"}, {nan, "0"}, {inf, "0"}, {-inf, "0"}};
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(number(c.value), c.text) << c.value;
    char buffer[SVGFormat::v_numberRoom];
    const long long lowest = std::numeric_limits<long long>::min();
    EXPECT_EQ(std::string(buffer, SVGFormat::appendInteger(buffer, lowest)),
              "-9223372036854775808");
}

TEST(SVGFormat, ColoursUseTheShortFormWhereEveryChannelAllowsIt) {
    // clang-format off
    const struct { QRgb color; const char* text; } cases[] = {
        {0xffffffff, "#fff"}, {0xff000000, "#000"}, {0xffff0000, "#f00"}, {0x8000ffff, "#0ff"},
        {0xff808080, "#808080"}, {0xffa0a0a4, "#a0a0a4"}, {0xff112234, "#112234"}};
    // clang-format on
    for (const auto& c : cases) {
        char buffer[SVGFormat::v_colorRoom];
        EXPECT_EQ(std::string(buffer, SVGFormat::appendColor(buffer, c.color)), c.text);
    }
}

TEST(SVGFormat, EscapingKeepsTheDocumentWellFormedForAnyBytes) {
    // Each byte that begins no well-formed character becomes one U+FFFD.
    auto fffd = [](int n) {
        std::string s;
        for (int i = 0; i < n; ++i)
            s += "\xEF\xBF\xBD";
        return s;
    };
    // clang-format off
    const struct { std::string in, out; } cases[] = {
        {"plain 8'hA5", "plain 8'hA5"},
        {"a<b>&c", "a&lt;b&gt;&amp;c"},
        {"\"quoted\"", "&quot;quoted&quot;"},
        {"tab\tline\nreturn\r", "tab&#9;line&#10;return&#13;"},
        {std::string("x\0y\x01\x1f\x7f", 6), "xy\x7f"},
        {"\xC3\xA9t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "\xC3\xA9t\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80"},
        {"cut \xC3", "cut " + fffd(1)},
        {"\xC0\xAF", fffd(2)},                      // an overlong '/'
        {"\xED\xA0\x80", fffd(3)},                  // a surrogate
        {"\xEF\xBF\xBE\xEF\xBF\xBF", fffd(6)},        // U+FFFE and U+FFFF
        {"\xF4\x90\x80\x80", fffd(4)},              // beyond U+10FFFF
        {"\xFF\xFE", fffd(2)},
        {"\xE2\x82<", fffd(2) + "&lt;"}};
    // clang-format on
    for (const auto& c : cases) {
        EXPECT_EQ(escaped(c.in), c.out) << c.in;
        EXPECT_LE(escaped(c.in).size(), c.in.size() * SVGFormat::v_escapedRoom);
    }
}

} // namespace
