// Painting for real: devices over a QImage, checked pixel by pixel.
#include "graphics/Device.h"
#include "graphics/OutputDevice.h"
#include "graphics/TqPainter.h"

#include <QImage>
#include <gtest/gtest.h>

#include <memory>

namespace {

constexpr wsiRGBColor white = 0xFFFFFF, black = 0x000000, red = 0xFF0000, blue = 0x0000FF;

// A Device that lets the test call its primitives directly.
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
class DevicePaint : public testing::Test {
protected:
    DevicePaint() : m_image(200, 100, QImage::Format_RGB32) {
        m_image.fill(Qt::white);
        m_painter = std::make_unique<TqPainter>(&m_image);
        m_device.setPainter(m_painter.get());
    }

    wsiRGBColor at(int x, int y) { return m_device.getPixel(x, y); }
    int countInRow(int y, int from, int to, wsiRGBColor color) {
        int count = 0;
        for (int x = from; x < to; ++x)
            count += at(x, y) == color ? 1 : 0;
        return count;
    }

    QImage m_image;
    std::unique_ptr<TqPainter> m_painter;
    OpenDevice m_device;
};

TEST_F(DevicePaint, Line_HasTheCurrentColourAtItsPixelsOnly) {
    m_device.setColor(wsiRed);
    m_device.drawLine(SheetPoint(10, 10), SheetPoint(100, 10));
    EXPECT_EQ(at(10, 10), red);
    EXPECT_EQ(at(50, 10), red);
    EXPECT_EQ(at(100, 10), red);
    EXPECT_EQ(at(50, 11), white);
    EXPECT_EQ(at(101, 10), white);
    EXPECT_EQ(m_device.getPixel(DevicePoint(50, 10)), red);
    EXPECT_EQ(at(-1, 0), 0u); // outside the image
}

TEST_F(DevicePaint, LineToTwiceFromOneMoveTo_DrawsTwoLinesFromTheSameStart) {
    m_device.setColor(wsiBlack);
    m_device.primitiveMoveTo(10, 50);
    m_device.primitiveLineTo(90, 50);
    m_device.primitiveLineTo(10, 90);
    EXPECT_EQ(at(50, 50), black);
    EXPECT_EQ(at(10, 90), black);
    EXPECT_EQ(at(10, 70), black);
    EXPECT_EQ(at(50, 70), white);
}

TEST_F(DevicePaint, FilledRectangle_FillsOriginInclusiveCornerExclusive) {
    m_device.setColor(wsiBlue);
    m_device.fillRectangle(SheetRectangle(SheetPoint(20, 20), SheetPoint(40, 40)));
    EXPECT_EQ(at(20, 20), blue);
    EXPECT_EQ(at(30, 30), blue);
    EXPECT_EQ(at(39, 39), blue);
    EXPECT_EQ(at(40, 30), white);
    EXPECT_EQ(at(19, 30), white);
}

TEST_F(DevicePaint, NothingIsDrawnOutsideTheClipRectangle) {
    m_device.setClipRect(DeviceRectangle(0, 0, 50, 50));
    m_device.setColor(wsiBlack);
    m_device.drawLine(SheetPoint(10, 40), SheetPoint(150, 40));
    m_device.fillRectangle(SheetRectangle(SheetPoint(40, 0), SheetPoint(80, 80)));
    EXPECT_EQ(at(45, 40), black);
    EXPECT_EQ(at(45, 45), black);
    EXPECT_EQ(at(60, 40), white);
    EXPECT_EQ(at(45, 60), white);
    EXPECT_EQ(countInRow(40, 50, 200, black), 0);
}

TEST_F(DevicePaint, PenStyleDashLeavesGapsAndWidthThickens) {
    m_device.setColor(wsiBlack);
    m_device.setPenStyle(wsiPenDash);
    m_device.drawLine(SheetPoint(0, 20), SheetPoint(199, 20));
    const int dashed = countInRow(20, 0, 200, black);
    EXPECT_GT(dashed, 50);
    EXPECT_LT(dashed, 190);
    m_device.setPenStyle(wsiPenSolid);
    m_device.setPenWidth(5);
    m_device.drawLine(SheetPoint(0, 60), SheetPoint(199, 60));
    EXPECT_EQ(at(100, 58), black);
    EXPECT_EQ(at(100, 62), black);
    EXPECT_EQ(at(100, 65), white);
}

TEST_F(DevicePaint, TransformationMapsSheetUnits) {
    m_device.setDisplayTransformation(TqMatrix(FloatPoint(10.0, 10.0), FloatPoint(5.0, 5.0)));
    m_device.setColor(wsiRed);
    m_device.fillRectangle(SheetRectangle(SheetPoint(0, 0), SheetPoint(1, 1)));
    EXPECT_EQ(at(5, 5), red);
    EXPECT_EQ(at(14, 14), red);
    EXPECT_EQ(at(15, 15), white);
    EXPECT_EQ(at(4, 4), white);
}

TEST_F(DevicePaint, EllipsePolygonCurveAndPixel) {
    m_device.setColor(wsiGreen);
    m_device.drawEllipse(SheetRectangle(SheetPoint(10, 10), SheetPoint(50, 50)), true);
    EXPECT_EQ(at(30, 30), 0x00FF00u);
    EXPECT_EQ(at(11, 11), white); // the corner lies outside the ellipse
    m_device.drawEllipse(SheetRectangle(SheetPoint(60, 10), SheetPoint(100, 50)), false);
    EXPECT_EQ(at(80, 30), white); // outline only
    EXPECT_EQ(at(80, 10), 0x00FF00u);
    m_device.setColor(wsiBlue);
    m_device.drawCurveUnTransformed(DevicePoint(110, 80), DevicePoint(190, 20));
    EXPECT_EQ(at(110, 80), blue);
    EXPECT_EQ(at(150, 50), blue); // the transition's middle
    m_device.setPixel(5, 95);
    EXPECT_EQ(at(5, 95), blue);
    m_device.setColor(wsiRed);
    DevicePoint triangle[3] = {{120, 5}, {140, 5}, {130, 15}};
    m_device.filledPolygonUnTransformed(wsiYellow, 3, triangle);
    EXPECT_EQ(at(130, 8), 0xFFFF00u);
    m_device.fillRectangle(SheetRectangle(SheetPoint(150, 0), SheetPoint(160, 5)));
    EXPECT_EQ(at(155, 2), red); // the fill kept the current colour
}

TEST_F(DevicePaint, ArrowHeadsAreFilledAtTheCappedEnds) {
    m_device.setColor(wsiBlack);
    DevicePoint line[2] = {{20, 50}, {120, 50}};
    m_device.drawCappedPolylineUnTransformed(wsiLineCapRound, wsiLineCapArrow, DevicePoint(20, 12),
                                             2, line);
    EXPECT_EQ(line[1], DevicePoint(120, 50)); // the caller's points are left as they were
    EXPECT_EQ(at(110, 53), black);            // inside the head, off the line
    EXPECT_EQ(at(30, 53), white);             // no head at the round start
}

TEST_F(DevicePaint, TextIsDrawnAndMeasuredOnTheImage) {
    WsiFont font(nullptr, 14);
    m_device.setColor(wsiBlack);
    const DeviceRectangle& box = m_device.drawAlignedText("Hello", SheetPoint(100, 50), font,
                                                          wsiAlignHCenter, wsiAlignVCenter);
    EXPECT_GT(box.width(), 10);
    EXPECT_NEAR((box.left() + box.right()) / 2.0, 100, 2);
    EXPECT_NEAR((box.top() + box.bottom()) / 2.0, 50, 3);
    int inked = 0;
    for (int y = box.top(); y < box.bottom(); ++y)
        inked += countInRow(y, box.left(), box.right(), black);
    EXPECT_GT(inked, 10);
    EXPECT_EQ(countInRow(box.top() - 2, 0, 200, black), 0);
    const long advance = m_device.drawText("Hello", SheetPoint(10, 90), font);
    EXPECT_EQ(advance, box.width());
    EXPECT_EQ(m_device.getTextExtent("Hello", font, 2).x() < advance, true);
    const int whole = m_device.getTextExtent("He", font, -1).x();
    EXPECT_EQ(m_device.getTextExtent("He", font, 10).x(), whole) << "never past the NUL";
    EXPECT_EQ(m_device.drawText("He\0garbage", SheetPoint(10, 70), font), whole);
}

TEST_F(DevicePaint, EraseFillsWithTheBackgroundColour) {
    m_device.setColor(wsiRed);
    m_device.setBackgroundColor(wsiBlue);
    m_device.erase(DeviceRectangle(0, 0, 10, 10));
    EXPECT_EQ(at(5, 5), blue);
    m_device.fillRectangle(SheetRectangle(SheetPoint(20, 0), SheetPoint(30, 10)));
    EXPECT_EQ(at(25, 5), red);
    m_device.invertRectangle(SheetRectangle(SheetPoint(20, 0), SheetPoint(30, 10)));
    EXPECT_EQ(at(25, 5), 0x00FFFFu);
}

TEST(OutputDevicePaint, PolylineIsClampedIntoTheClipRectangle) {
    QImage image(100, 100, QImage::Format_RGB32);
    image.fill(Qt::white);
    TqPainter painter(&image);
    WindowlessOutputDevice device;
    device.setPainter(&painter);
    EXPECT_TRUE(device.isOpen());
    EXPECT_EQ(device.parentWindow(), nullptr);
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

TEST(DevicePaintBitmap, CopiesPixelsFromAnImageDevice) {
    QImage source(20, 20, QImage::Format_RGB32), target(20, 20, QImage::Format_RGB32);
    source.fill(Qt::red);
    target.fill(Qt::white);
    TqPainter sourcePainter(&source), targetPainter(&target);
    Device from(sourcePainter), to(targetPainter);
    to.drawBitmap(from, DeviceRectangle(0, 0, 10, 10), DeviceRectangle(5, 5, 15, 15), wsiDrawCopy);
    EXPECT_EQ(to.getPixel(10, 10), red);
    EXPECT_EQ(to.getPixel(2, 2), white);
    Device painterless;
    to.drawBitmap(painterless, DeviceRectangle(0, 0, 10, 10), DeviceRectangle(0, 0, 5, 5),
                  wsiDrawCopy);
    EXPECT_EQ(to.getPixel(2, 2), white);
}

} // namespace
