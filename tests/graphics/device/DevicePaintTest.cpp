// Painting for real: devices over a QImage, checked pixel by pixel.
#include "graphics/device/Device.h"
#include "graphics/device/OutputDevice.h"
#include "graphics/device/TqPainter.h"

#include <QImage>
#include <gtest/gtest.h>

#include <functional>
#include <vector>

namespace {

constexpr wsiRGBColor white = 0xFFFFFF, black = 0x000000, red = 0xFF0000, green = 0x00FF00,
                      blue = 0x0000FF, yellow = 0xFFFF00, cyan = 0x00FFFF;

class OpenDevice : public Device {
public:
    using Device::Device;
    using Device::primitiveLineTo;
    using Device::primitiveMoveTo;
};

class WindowlessOutputDevice : public OutputDevice {
public:
    using OutputDevice::OutputDevice;
};

// A white 200 x 100 image with a painter and an identity-mapped device over it.
struct Canvas {
    Canvas() : image(200, 100, QImage::Format_RGB32) {
        image.fill(Qt::white);
        painter.begin(&image);
        device.setPainter(&painter);
    }
    wsiRGBColor at(int x, int y) { return device.getPixel(x, y); }
    int countInRow(int y, int from, int to, wsiRGBColor color) {
        int count = 0;
        for (int x = from; x < to; ++x)
            count += at(x, y) == color ? 1 : 0;
        return count;
    }

    QImage image;
    TqPainter painter;
    OpenDevice device;
};

struct Probe {
    int x, y;
    wsiRGBColor color;
};

struct PaintCase {
    const char* what;
    std::function<void(OpenDevice&)> paint;
    std::vector<Probe> probes;
};

TEST(DevicePaint, PrimitivesPaintTheirPixelsOnly) {
    const PaintCase cases[] = {
        {"a line in the current colour, both ends included",
         [](OpenDevice& d) {
             d.setColor(wsiRed);
             d.drawLine(SheetPoint(10, 10), SheetPoint(100, 10));
         },
         {{10, 10, red}, {100, 10, red}, {50, 11, white}, {101, 10, white}, {-1, 0, 0}}},
        {"two lineTo from one moveTo draw two lines from the same start",
         [](OpenDevice& d) {
             d.setColor(wsiBlack);
             d.primitiveMoveTo(10, 50);
             d.primitiveLineTo(90, 50);
             d.primitiveLineTo(10, 90);
         },
         {{50, 50, black}, {10, 90, black}, {10, 70, black}, {50, 70, white}}},
        {"a filled rectangle: origin inclusive, corner exclusive",
         [](OpenDevice& d) {
             d.setColor(wsiBlue);
             d.fillRectangle(SheetRectangle(20, 20, 40, 40));
         },
         {{20, 20, blue}, {30, 30, blue}, {39, 39, blue}, {40, 30, white}, {19, 30, white}}},
        {"nothing outside the clip rectangle",
         [](OpenDevice& d) {
             d.setClipRect(DeviceRectangle(0, 0, 50, 50));
             d.setColor(wsiBlack);
             d.drawLine(SheetPoint(10, 40), SheetPoint(150, 40));
             d.fillRectangle(SheetRectangle(40, 0, 80, 80));
         },
         {{45, 40, black}, {45, 45, black}, {60, 40, white}, {45, 60, white}, {150, 40, white}}},
        {"sheet units mapped by the display transformation",
         [](OpenDevice& d) {
             d.setDisplayTransformation(TqMatrix(FloatPoint(10.0, 10.0), FloatPoint(5.0, 5.0)));
             d.setColor(wsiRed);
             d.fillRectangle(SheetRectangle(0, 0, 1, 1));
         },
         {{5, 5, red}, {14, 14, red}, {15, 15, white}, {4, 4, white}}},
        {"a filled ellipse misses its corners; an outlined one is hollow",
         [](OpenDevice& d) {
             d.setColor(wsiGreen);
             d.drawEllipse(SheetRectangle(10, 10, 50, 50), true);
             d.drawEllipse(SheetRectangle(60, 10, 100, 50), false);
         },
         {{30, 30, green}, {11, 11, white}, {80, 30, white}, {80, 10, green}}},
        {"a curve through its ends and the transition's middle, and a pixel",
         [](OpenDevice& d) {
             d.setColor(wsiBlue);
             d.drawCurveUnTransformed({110, 80}, {190, 20});
             d.setPixel(5, 95);
         },
         {{110, 80, blue}, {150, 50, blue}, {5, 95, blue}}},
        {"a polygon filled in its own colour; the current colour kept",
         [](OpenDevice& d) {
             DevicePoint triangle[3] = {{120, 5}, {140, 5}, {130, 15}};
             d.setColor(wsiRed);
             d.filledPolygonUnTransformed(wsiYellow, 3, triangle);
             d.fillRectangle(SheetRectangle(150, 0, 160, 5));
         },
         {{130, 8, yellow}, {155, 2, red}}},
        {"an arrow head at the capped end only, the caller's points kept",
         [](OpenDevice& d) {
             DevicePoint line[2] = {{20, 50}, {120, 50}};
             d.setColor(wsiBlack);
             d.drawCappedPolylineUnTransformed(wsiLineCapRound, wsiLineCapArrow, {20, 12}, 2, line);
             EXPECT_EQ(line[1], DevicePoint(120, 50));
         },
         {{110, 53, black}, {30, 53, white}}},
        {"erase in the background colour, fill in the drawing colour, invert",
         [](OpenDevice& d) {
             d.setColor(wsiRed);
             d.setBackgroundColor(wsiBlue);
             d.erase(DeviceRectangle(0, 0, 10, 10));
             d.fillRectangle(SheetRectangle(20, 0, 30, 10));
             d.fillRectangle(SheetRectangle(40, 0, 50, 10));
             d.invertRectangle(SheetRectangle(40, 0, 50, 10));
         },
         {{5, 5, blue}, {25, 5, red}, {45, 5, cyan}}}};
    for (const PaintCase& c : cases) {
        Canvas canvas;
        c.paint(canvas.device);
        for (const Probe& p : c.probes)
            EXPECT_EQ(canvas.at(p.x, p.y), p.color) << c.what << " at " << p.x << ", " << p.y;
    }
}

TEST(DevicePaint, PenStyleDashLeavesGapsAndWidthThickens) {
    Canvas canvas;
    OpenDevice& d = canvas.device;
    d.setColor(wsiBlack);
    d.setPenStyle(wsiPenDash);
    d.drawLine(SheetPoint(0, 20), SheetPoint(199, 20));
    const int dashed = canvas.countInRow(20, 0, 200, black);
    EXPECT_NEAR(dashed, 120, 70) << "gaps, but mostly ink";
    d.setPenStyle(wsiPenSolid);
    d.setPenWidth(5);
    d.drawLine(SheetPoint(0, 60), SheetPoint(199, 60));
    EXPECT_EQ(canvas.at(100, 58), black);
    EXPECT_EQ(canvas.at(100, 62), black);
    EXPECT_EQ(canvas.at(100, 65), white);
}

TEST(DevicePaint, TextIsDrawnAndMeasuredOnTheImage) {
    Canvas canvas;
    OpenDevice& d = canvas.device;
    WsiFont font(nullptr, 14);
    d.setColor(wsiBlack);
    const DeviceRectangle box =
        d.drawAlignedText("Hello", SheetPoint(100, 50), font, wsiAlignHCenter, wsiAlignVCenter);
    EXPECT_GT(box.width(), 10);
    EXPECT_NEAR((box.left() + box.right()) / 2.0, 100, 2);
    EXPECT_NEAR((box.top() + box.bottom()) / 2.0, 50, 3);
    int inked = 0;
    for (int y = box.top(); y < box.bottom(); ++y)
        inked += canvas.countInRow(y, box.left(), box.right(), black);
    EXPECT_GT(inked, 10);
    EXPECT_EQ(canvas.countInRow(box.top() - 2, 0, 200, black), 0);
    const long advance = d.drawText("Hello", SheetPoint(10, 90), font);
    EXPECT_EQ(advance, box.width());
    EXPECT_LT(d.getTextExtent("Hello", font, 2).x(), advance);
    const int whole = d.getTextExtent("He", font, -1).x();
    EXPECT_EQ(d.getTextExtent("He", font, 10).x(), whole) << "never past the NUL";
    EXPECT_EQ(d.drawText("He\0garbage", SheetPoint(10, 70), font), whole);
}

TEST(OutputDevicePaint, PolylineIsClampedIntoTheClipRectangle) {
    QImage image(100, 100, QImage::Format_RGB32);
    image.fill(Qt::white);
    TqPainter painter(&image);
    WindowlessOutputDevice device;
    device.setPainter(&painter);
    EXPECT_TRUE(device.isOpen());
    device.setClipRect(DeviceRectangle(10, 10, 90, 90));
    device.setColor(wsiBlack);
    DevicePoint corner[2] = {{-50, 50}, {50, -50}};
    device.drawPolylineUnTransformed(2, corner);
    EXPECT_EQ(device.getPixel(30, 30), black); // drawn from (10, 50) to (50, 10)
    const DevicePoint a(-5, 95), b(-9, 120);
    device.drawPolylineUnTransformed(2, &a, &b); // both beyond the left edge: nothing
    int inLeftColumn = 0;
    for (int y = 0; y < 100; ++y)
        inLeftColumn += device.getPixel(10, y) == black ? 1 : 0;
    EXPECT_EQ(inLeftColumn, 1); // only where the clamped diagonal starts, (10, 50)
    EXPECT_EQ(&device.paintDevice(), &image);
    painter.end();
    EXPECT_FALSE(device.isOpen());
}

TEST(DevicePaint, BitmapCopiesPixelsFromAnImageDevice) {
    Canvas source, target;
    source.device.setColor(wsiRed);
    source.device.fillRectangle(SheetRectangle(0, 0, 20, 20));
    target.device.drawBitmap(source.device, DeviceRectangle(0, 0, 10, 10),
                             DeviceRectangle(5, 5, 15, 15), wsiDrawCopy);
    Device painterless;
    target.device.drawBitmap(painterless, DeviceRectangle(0, 0, 10, 10),
                             DeviceRectangle(0, 0, 5, 5), wsiDrawCopy);
    EXPECT_EQ(target.at(10, 10), red);
    EXPECT_EQ(target.at(2, 2), white);
}

// Text primitives select the caller's font only while they draw: the font selected before is
// selected again, and none when none was (the caller's font may not outlive the call).
TEST(DevicePaint, TextLeavesTheFontSelectionAsItFoundIt) {
    Canvas canvas;
    WsiFont kept("Sans", 10), passed("Serif", 14);
    for (WsiFont* before : {static_cast<WsiFont*>(nullptr), &kept}) {
        if (before)
            canvas.device.selectFont(*before);
        else
            canvas.device.deselectFont();
        EXPECT_GT(canvas.device.drawText("plain", SheetPoint(5, 40), passed), 0);
        EXPECT_EQ(canvas.device.selectedFont(), before) << "drawText";
        (void)canvas.device.drawAlignedText("aligned", SheetPoint(100, 50), passed, wsiAlignHCenter,
                                            wsiAlignVCenter);
        EXPECT_EQ(canvas.device.selectedFont(), before) << "drawAlignedText";
    }
}

} // namespace
