#include "graphics/export/mif/MIFFormat.h"
#include "graphics/device/QtConversion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

TEST(MIFFormat, RealRoundsToTwoDecimalsAndKeepsOne) {
    const struct {
        double value;
        std::string text;
    } cases[] = {// clang-format off
        {0, "0.0"},       {12.3, "12.3"},   {7, "7.0"},         {-7.25, "-7.25"},
        {0.1 + 0.2, "0.3"}, {0.125, "0.13"}, {-0.005, "-0.01"}, {-0.001, "0.0"},
        {-0.0, "0.0"},    {214748364.7, "214748364.7"},         {1e20, "100000000000000000000.0"},
        {-std::ldexp(1.0, 70), "-1180591620717411303424.0"},
        {std::numeric_limits<double>::quiet_NaN(), "0.0"},
        {std::numeric_limits<double>::infinity(), "0.0"}};
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(MIFFormat::real(c.value), c.text) << c.value;
    // The largest double has 309 integral digits.
    EXPECT_EQ(MIFFormat::real(-std::numeric_limits<double>::max()).size(), 1u + 309u + 2u);
}

TEST(MIFFormat, GeneralAndIntegerFollowPrintfForms) {
    const struct {
        double value;
        const char* text;
    } cases[] = {// clang-format off
        {5, "5"}, {2.5, "2.5"}, {1234567, "1.23457e+06"}, {0.0001, "0.0001"}, {0.00001, "1e-05"},
        {-0.5, "-0.5"}, {std::numeric_limits<double>::infinity(), "0"}};
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(MIFFormat::general(c.value), c.text) << c.value;
    std::string text = "kept ";
    MIFFormat::appendInteger(text, -9223372036854775807LL - 1);
    EXPECT_EQ(text, "kept -9223372036854775808");
}

TEST(MIFFormat, StringEscapesWhatMIFReadsSpecially) {
    const struct {
        const char* what;
        const char* text;
        int length;
        const char* quoted;
    } cases[] = {{"plain", "Clock 1 <en>", -1, "Clock 1 <en\\>"},
                 {"backslash", "a\\b", -1, "a\\\\b"},
                 {"quotes", "`it's'", -1, "\\Qit\\qs\\q"},
                 {"tab", "a\tb", -1, "a\\tb"},
                 {"controls", "\n\x01\x7f", -1, "\\x0a \\x01 \\x7f "},
                 {"accent", "caf\xC3\xA9", -1, "caf\\x8e "},
                 {"euro and dash", "\xE2\x82\xAC\xE2\x80\x93", -1, "\\xdb \\xd0 "},
                 {"missing from the set", "\xE4\xB8\xAD!", -1, "?!"},
                 {"latin-1 byte", "caf\xE9", -1, "caf\\x8e "},
                 {"truncated sequence", "\xC3", -1, "\\xcc "},
                 {"overlong", "\xC0\xAF", -1, "\\xcb \\xf8 "},
                 {"four bytes beyond the set", "\xF0\x9F\x98\x80", -1, "?"},
                 {"first, last and blank of the upper half", "\xC3\x84\xCB\x87\xC2\xA0", -1,
                  "\\x80 \\xff \\xca "},
                 {"holes in the upper half", "\xC2\xA4\xC2\x80\xEF\xBF\xBF", -1, "???"},
                 {"length cuts", "abc", 2, "ab"},
                 {"length beyond the NUL", "ab", 10, "ab"},
                 {"empty", "", -1, ""}};
    for (const auto& c : cases) {
        std::string out = "kept ";
        MIFFormat::appendString(out, c.text, c.length);
        EXPECT_EQ(out, std::string("kept ") + c.quoted) << c.what;
    }
    std::string none;
    MIFFormat::appendString(none, nullptr);
    EXPECT_EQ(none, "");
}

TEST(MIFFormat, SeparationOfMapsTheVocabularyByNameAndOthersByHue) {
    // wsiColor 1 to 20: colour mode, grey mode.
    const int colour[] = {1, 0, 0, 0, 0, 0, 2, 2, 2, 3, 3, 3, 4, 4, 5, 6, 7, 1, 0, 0};
    for (int value = 1; value <= 20; ++value) {
        const QColor c = QtConversion::asQColor(static_cast<wsiColor>(value));
        EXPECT_EQ(MIFFormat::separationOf(c, false), colour[value - 1]) << value;
        EXPECT_EQ(MIFFormat::separationOf(c, true), value == 1 || value == 18 ? 1 : 0) << value;
    }
    EXPECT_EQ(MIFFormat::separationOf(QColor(), false), -1);
    EXPECT_EQ(MIFFormat::separationOf(QColor(), true), -1);
    const struct {
        QColor color;
        int separation;
    } others[] = {
        {QColor(250, 250, 250), 1}, {QColor(100, 100, 110), 0},         {QColor(30, 0, 0), 0},
        {QColor(255, 100, 0), 2},   {QColor(200, 200, 20), 7},          {QColor(20, 200, 60), 3},
        {QColor(20, 180, 200), 5},  {QColor(40, 40, 200), 4},           {QColor(200, 30, 180), 6},
        {QColor(200, 20, 60), 2},   {QColor::fromHsv(359, 255, 255), 2}};
    for (const auto& c : others)
        EXPECT_EQ(MIFFormat::separationOf(c.color, false), c.separation)
            << c.color.name().toStdString();
    EXPECT_EQ(MIFFormat::separationOf(QColor(250, 250, 250), true), 0);
}

} // namespace
