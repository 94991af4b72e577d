// The name cache: a name copied from it shows the pixels drawing it shows; a new name, font or
// colour adds a picture, a new place does not; devices other than the screen's draw the text.
#include "render/NameCache.h"

#include "render/Label.h"

#include "graphics/device/TqPainter.h"
#include "graphics/geometry/FloatPoint.h"

#include <QImage>
#include <gtest/gtest.h>

namespace {

// A white image with text drawn right-aligned at at, by the cache or as a label.
QImage paintName(NameCache* cache, const std::string& text, WsiFont& font, wsiColor ink,
                 const SheetPoint& at, bool* cached = nullptr) {
    QImage image(300, 60, QImage::Format_RGB32);
    image.fill(Qt::white);
    TqPainter painter(&image);
    Device device(painter);
    device.setDisplayTransformation(TqMatrix(FloatPoint(1, 1), FloatPoint(0, 0)));
    device.setColor(ink);
    device.setBackgroundFillMode(wsiTransparent);
    const bool drawn = cache && cache->drawRightAligned(device, text, at, font);
    if (cached)
        *cached = drawn;
    if (!drawn)
        drawLabel(device, text, at, font, wsiAlignRight, wsiAlignVCenter);
    return image;
}

TEST(NameCache, CopiedNamesShowTheDrawnPixelsAndNewNamesFontsAndColoursAddPictures) {
    WsiFont plain("DejaVu Sans", 9);
    WsiFont bold("DejaVu Sans", 12);
    bold.setBold(true);
    WsiFont italic("DejaVu Sans", 9);
    italic.setItalic(true);
    NameCache cache;
    struct Step {
        const char* text;
        WsiFont* font;
        wsiColor ink;
        SheetPoint at;
        std::size_t pictures; // kept after the step
    };
    // clang-format off
    const Step steps[] = {
        {"clk",              &plain, wsiBlack, {200, 30}, 1},
        {"clk",              &plain, wsiBlack, {120, 17}, 1}, // elsewhere (zoom, resize)
        {"top.block9.sig97", &plain, wsiBlack, {250, 30}, 2}, // renamed
        {"top.block9.sig97", &bold,  wsiBlack, {250, 30}, 3}, // another font
        {"top.block9.sig97", &italic, wsiBlack, {250, 30}, 4}, // another style
        {"top.block9.sig97", &bold,  wsiRed,   {250, 30}, 5}, // another colour
        {"a_b[7:0] jqy",     &plain, wsiBlack, {90, 44},  6},
        {"cut off",          &plain, wsiBlack, {20, 30},  7}, // runs off the left edge
    };
    // clang-format on
    for (const Step& step : steps) {
        bool cached = false;
        const QImage copied = paintName(&cache, step.text, *step.font, step.ink, step.at, &cached);
        const QImage drawn = paintName(nullptr, step.text, *step.font, step.ink, step.at);
        EXPECT_TRUE(cached) << step.text;
        EXPECT_EQ(copied, drawn) << step.text << " at " << step.at.x() << "," << step.at.y();
        EXPECT_EQ(cache.size(), step.pictures) << step.text;
    }
    cache.clear();
    EXPECT_EQ(cache.size(), 0u);
}

TEST(NameCache, OtherDevicesAndMarkedUpNamesAreLeftToTheCaller) {
    WsiFont font("DejaVu Sans", 9);
    NameCache cache;
    QImage image(100, 40, QImage::Format_RGB32);
    struct Case {
        const char* what;
        const char* text;
        bool antialiased;
        double unitsPerPixel;
    };
    // clang-format off
    const Case cases[] = {
        {"antialiased image", "clk",          true,  1},
        {"scaled output",     "clk",          false, 2},
        {"marked-up name",    "<b>clk</b>",   false, 1},
        {"two lines",         "clk\nrefresh", false, 1},
        {"empty name",        "",             false, 1},
    };
    // clang-format on
    for (const Case& c : cases) {
        TqPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing, c.antialiased);
        Device device(painter);
        device.setDisplayTransformation(
            TqMatrix(FloatPoint(c.unitsPerPixel, c.unitsPerPixel), FloatPoint(0, 0)));
        EXPECT_FALSE(cache.drawRightAligned(device, c.text, SheetPoint(50, 20), font)) << c.what;
    }
    Device withoutPainter;
    EXPECT_FALSE(cache.drawRightAligned(withoutPainter, "clk", SheetPoint(50, 20), font));
    EXPECT_EQ(cache.size(), 0u);
}

} // namespace
