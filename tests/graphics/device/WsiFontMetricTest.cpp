// WsiFontMetric::advance against Qt's own measure of the same text in the same font on the
// same device: runs of printable ASCII are summed from a table of advances and pair
// adjustments, everything else is shaped, and both must give what shaping the whole text
// gives, kerning and ligatures included.
#include "graphics/device/WsiFont.h"

#include <QFontMetricsF>
#include <QImage>
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace {

struct FontCase {
    const char* family;
    double points;
    bool bold;
    bool italic;
};

// clang-format off
const FontCase v_fonts[] = {
    {nullptr,            10,   false, false},
    {nullptr,            7.5,  true,  false},
    {nullptr,            13.5, false, true },
    {"DejaVu Serif",     10,   true,  true },
    {"DejaVu Serif",     31,   false, false},
    {"DejaVu Sans Mono", 9,    false, false},
    {"Nimbus Sans",      11,   false, true },
};
// clang-format on

WsiFont fontOf(const FontCase& c) {
    WsiFont font(c.family, c.points);
    font.setBold(c.bold);
    font.setItalic(c.italic);
    return font;
}

// What advance() must give: Qt's measure of the text as one string, rounded up.
int shapedAdvance(const WsiFont& font, QPaintDevice* device, const char* text, int length) {
    const QFontMetricsF metrics =
        device ? QFontMetricsF(font.toQFont(), device) : QFontMetricsF(font.toQFont());
    return static_cast<int>(
        std::ceil(metrics.horizontalAdvance(WsiFontMetric::textOf(text, length))));
}

// A metric of font on device whose font is in steady use on this thread, so that its
// printable ASCII runs are summed from the font's table.
WsiFontMetric steadyMetric(const WsiFont& font, QPaintDevice* device) {
    WsiFontMetric metric(font, device);
    for (int i = 0; i < WsiFontMetric::v_runsBeforeTable; ++i)
        metric.advance("warm", -1);
    return metric;
}

// The devices a font is measured on: none (the default resolution), a screen-like image,
// and a 300 dpi image, whose fonts are sized by its resolution.
struct Devices {
    Devices() : screen(8, 8, QImage::Format_RGB32), print(8, 8, QImage::Format_RGB32) {
        print.setDotsPerMeterX(11811);
        print.setDotsPerMeterY(11811);
    }
    std::vector<QPaintDevice*> all() { return {nullptr, &screen, &print}; }
    QImage screen;
    QImage print;
};

TEST(WsiFontMetric, AdvanceEqualsTheShapedMeasureOfTheWholeText) {
    struct Run {
        const char* text;
        int length; // -1: all of it
    };
    // clang-format off
    const Run runs[] = {
        {"", -1}, {"A", -1}, {" ", -1}, {"AV", -1}, {"To", -1}, {"WAVE", -1}, {"Type", -1},
        {"LT", -1}, {"Yo", -1}, {"T.", -1}, {"AVAVAVAV", -1}, {"P,", -1}, {"r.", -1},
        {"CLK12_EN", -1}, {"DATA7", -1}, {"[31:0]", -1}, {"RESET3_N", -1}, {"ERR4 flag", -1},
        {"fi", -1}, {"ff", -1}, {"fl", -1}, {"office", -1}, {"affluent", -1}, {"ffi", -1},
        {"shift_ff", -1}, {"a b", -1}, {" lead", -1}, {"trail ", -1}, {"   ", -1},
        {"~`!@#$%^&*()-=+{}|\\;:'\",<.>/?", -1},
        {"AVATAR", 2}, {"AVATAR", 0}, {"To", 40}, {"AV\0VA", 5},
        {"Gr\xc3\xb6\xc3\x9f" "e", -1}, {"AV\xc3\xa9", -1}, {"\xc2\xb5s", -1},
        {"\xe2\x80\xbe" "CS", -1}, {"\xe6\x97\xa5\xe6\x9c\xac", -1},
        {"tab\there", -1}, {"\tAV", -1}, {"\x01" "ctl", -1}, {"DEL\x7f", -1}, {"cr\r", -1},
        {"line\nbreak", -1}, {"\xff\xfe" "bad", -1},
    };
    // clang-format on
    Devices devices;
    for (const FontCase& fc : v_fonts) {
        const WsiFont font = fontOf(fc);
        for (QPaintDevice* device : devices.all()) {
            const WsiFontMetric metric = steadyMetric(font, device);
            for (const Run& run : runs) {
                SCOPED_TRACE(testing::Message()
                             << (fc.family ? fc.family : "default") << ' ' << fc.points
                             << (fc.bold ? " bold" : "") << (fc.italic ? " italic" : "") << " dpi "
                             << (device ? device->logicalDpiY() : 0) << " text '" << run.text
                             << "' length " << run.length);
                EXPECT_EQ(metric.advance(run.text, run.length),
                          shapedAdvance(font, device, run.text, run.length));
            }
        }
    }
}

// Random runs weighted towards the letters that kern and form ligatures in common faces, so
// that a wrong pair entry, a pair taken the wrong way round or a missing ligature mark shows.
TEST(WsiFontMetric, AdvanceOfRandomAsciiRunsEqualsTheShapedMeasure) {
    const char prone[] = "AVTWYLPFfilo.,-ary";
    std::mt19937 random(20261125);
    Devices devices;
    for (const FontCase& fc : v_fonts) {
        const WsiFont font = fontOf(fc);
        for (QPaintDevice* device : devices.all()) {
            const WsiFontMetric metric = steadyMetric(font, device);
            int mismatches = 0;
            for (int i = 0; i < 400; ++i) {
                std::string text(1 + random() % 16, ' ');
                for (char& c : text)
                    c = random() % 2 ? prone[random() % (sizeof prone - 1)]
                                     : static_cast<char>(0x20 + random() % 95);
                const int expected = shapedAdvance(font, device, text.c_str(), -1);
                if (metric.advance(text.c_str(), -1) != expected && ++mismatches <= 3)
                    ADD_FAILURE() << (fc.family ? fc.family : "default") << ' ' << fc.points
                                  << " dpi " << (device ? device->logicalDpiY() : 0) << " '" << text
                                  << "': " << metric.advance(text.c_str(), -1)
                                  << " != " << expected;
            }
        }
    }
}

TEST(WsiFontMetric, TabulatedAdvanceCoversPrintableAsciiOnlyOfAFontInSteadyUse) {
    struct Row {
        const char* text;
        bool covered; // whatever the face
    };
    // clang-format off
    const Row rows[] = {
        {"CLK_EN", true}, {"[31:0]", true}, {" ~", true}, {"AVTo", true},
        {"Gr\xc3\xb6\xc3\x9f" "e", false}, {"a\tb", false}, {"\x1f", false}, {"\x7f", false},
        {"x\n", false}, {"\xc2\xa0", false},
    };
    // clang-format on
    // A size no other test uses, so that the font starts unused on this thread.
    const WsiFontMetric metric(WsiFont(nullptr, 47.5), nullptr);
    int advance = -7;
    for (int i = 1; i < WsiFontMetric::v_runsBeforeTable; ++i)
        ASSERT_FALSE(metric.tabulatedAdvance("CLK_EN", -1, advance)) << "run " << i;
    EXPECT_EQ(advance, -7);
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        advance = -7;
        const bool covered = metric.tabulatedAdvance(row.text, -1, advance);
        EXPECT_EQ(covered, row.covered);
        EXPECT_EQ(advance, covered ? metric.advance(row.text, -1) : -7);
    }
    advance = -7;
    EXPECT_FALSE(metric.tabulatedAdvance(nullptr, -1, advance));
    EXPECT_EQ(advance, -7);
}

// More fonts in steady use than a thread keeps tables for, in turn and again: a table that
// gave way must not answer for another font.
TEST(WsiFontMetric, AdvancesStayRightWhenTablesGiveWayToOtherFonts) {
    const char* text = "AVATAR To WAVE [7:0]";
    for (int round = 0; round < 2; ++round) {
        for (int step = 0; step < 72; ++step) {
            WsiFont font(nullptr, 6 + step * 0.25);
            font.setBold(step % 2 == 0);
            SCOPED_TRACE(testing::Message() << "round " << round << " step " << step);
            EXPECT_EQ(steadyMetric(font, nullptr).advance(text, -1),
                      shapedAdvance(font, nullptr, text, -1));
        }
    }
}

} // namespace
