#include "graphics/device/Device.h"
#include "graphics/device/OutputDevice.h"
#include "graphics/device/QtConversion.h"
#include "graphics/device/StockObject.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(QtConversion, ColoursAndPenStylesFollowTheirTables) {
    // wsiColor 0 (no colour: an invalid QColor) to 20.
    // clang-format off
    const QColor expected[] = {
        QColor(),            Qt::white,           Qt::black,     Qt::black,     Qt::darkGray,
        Qt::gray,            Qt::lightGray,       Qt::darkRed,   Qt::red,       QColor(243, 84, 94),
        Qt::darkGreen,       Qt::green,           QColor(0, 255, 128), Qt::darkBlue, Qt::blue,
        QColor(0, 255, 255), QColor(255, 0, 255), Qt::yellow,    Qt::white,     Qt::black,
        Qt::black};
    // clang-format on
    for (int value = 0; value <= 20; ++value)
        EXPECT_EQ(QtConversion::asQColor(static_cast<wsiColor>(value)), expected[value]) << value;
    EXPECT_EQ(QtConversion::asQColor(static_cast<wsiColor>(1000)), QColor(Qt::black));
    // Pen styles -1 to 5; anything else is solid.
    const Qt::PenStyle styles[] = {Qt::CustomDashLine, Qt::SolidLine,   Qt::DashLine,
                                   Qt::DotLine,        Qt::DashDotLine, Qt::DashDotDotLine,
                                   Qt::NoPen};
    for (int style = -1; style <= 5; ++style)
        EXPECT_EQ(QtConversion::asPenStyle(static_cast<wsiPenStyle>(style)), styles[style + 1]);
    EXPECT_EQ(QtConversion::asPenStyle(static_cast<wsiPenStyle>(6)), Qt::SolidLine);
    EXPECT_EQ(QtConversion::asPenStyle(static_cast<wsiPenStyle>(-2)), Qt::SolidLine);
}

TEST(StockObject, PensAndBrushesUseStockHandlesExactlyWhereTheRuleSays) {
    const int before = StockObject::ownedCount();
    {
        const Pen black(wsiBlack, wsiPenSolid, 0), white(wsiWhite, wsiPenDash, 0);
        EXPECT_EQ(black.handle(), StockObject::BlackPen);
        EXPECT_EQ(white.handle(), StockObject::WhitePen);
        // A dashed hairline in black takes the solid stock pen, as it always has.
        EXPECT_EQ(StockObject::penOf(Pen(wsiBlack, wsiPenDash, 0).handle()).style(), Qt::SolidLine);
        for (const Pen* owned : {new Pen(wsiBlack, wsiPenDot, 0), new Pen(wsiBlack, wsiPenSolid, 1),
                                 new Pen(wsiSystemBlack, wsiPenSolid, 0)}) {
            EXPECT_FALSE(owned->isStock());
            delete owned;
        }
        const Pen red(wsiRed, wsiPenDashDot, 3);
        EXPECT_EQ(StockObject::ownedCount(), before + 1);
        const QPen pen = StockObject::penOf(red.handle());
        EXPECT_EQ(pen.color(), QColor(Qt::red));
        EXPECT_EQ(pen.style(), Qt::DashDotLine);
        EXPECT_EQ(pen.width(), 3);

        const int stockBrushes[] = {wsiBlack, wsiDarkGray, wsiGray, wsiPaleGray, wsiWhite};
        for (int c : stockBrushes)
            EXPECT_TRUE(Brush(static_cast<wsiColor>(c)).isStock()) << c;
        const Brush green(wsiGreen);
        EXPECT_FALSE(green.isStock());
        EXPECT_EQ(StockObject::brushOf(green.handle()).color(), QColor(Qt::green));
        EXPECT_EQ(StockObject::brushOf(Brush::defaultBrush()).color(), QColor(Qt::white));
        EXPECT_EQ(StockObject::penOf(Pen::defaultPen()).color(), QColor(Qt::black));
    }
    EXPECT_EQ(StockObject::ownedCount(), before);
    EXPECT_EQ(StockObject::brushOf(12345).style(), Qt::NoBrush);
}

// An OutputDevice without a window, to reach its clipping.
class ClippingDevice : public OutputDevice {
public:
    explicit ClippingDevice(const DeviceRectangle& clip) { setClipRect(clip); }
};

// Calls the va_list form the way a "..." drawing operation does.
bool clipVariadic(OutputDevice& device, DevicePoint* out, unsigned short n, ...) {
    va_list in;
    va_start(in, n);
    const bool visible = device.clipPoints(n, in, out);
    va_end(in);
    return visible;
}

struct ClipPointsCase {
    const char* what;
    std::vector<DevicePoint> in;
    bool visible;
    std::vector<DevicePoint> out;
};

TEST(OutputDevice, ClipPointsClampsAndTestsConsecutiveOutcodes) {
    ClippingDevice device(DeviceRectangle(0, 0, 100, 100));
    // clang-format off
    const ClipPointsCase cases[] = {
        {"all left", {{-5, 10}, {-50, 20}, {-1, 200}}, false, {{0, 10}, {0, 20}, {0, 100}}},
        {"one inside point", {{50, 50}}, false, {{50, 50}}},
        {"inside pair", {{10, 10}, {20, 20}}, true, {{10, 10}, {20, 20}}},
        {"left to right", {{-10, 50}, {200, 50}}, true, {{0, 50}, {100, 50}}},
        {"corner pass drawn along the edges", {{-10, 50}, {50, -10}}, true, {{0, 50}, {50, 0}}},
        {"both above-left", {{-10, -10}, {-20, -5}}, false, {{0, 0}, {0, 0}}},
        {"closing pair counts", {{-10, 50}, {-20, 60}, {150, 50}}, true, {{0, 50}, {0, 60}, {100, 50}}},
        {"all below", {{0, 101}, {100, 200}}, false, {{0, 100}, {100, 100}}},
        {"points after the first visible pair clamped too",
         {{10, 10}, {20, 20}, {-5, 300}, {500, -5}, {7, 8}}, true,
         {{10, 10}, {20, 20}, {0, 100}, {100, 0}, {7, 8}}}};
    // clang-format on
    for (const ClipPointsCase& c : cases) {
        SCOPED_TRACE(c.what);
        std::vector<DevicePoint> in = c.in, out(in.size());
        EXPECT_EQ(device.clipPoints(static_cast<unsigned short>(in.size()), in.data(), out.data()),
                  c.visible);
        EXPECT_EQ(out, c.out);
        if (in.size() == 2) { // the va_list form, given pointers to the points
            EXPECT_EQ(clipVariadic(device, out.data(), 2, &in[0], &in[1]), c.visible);
            EXPECT_EQ(out, c.out);
        }
        // In place: each point's outcode is taken before the point is overwritten.
        EXPECT_EQ(device.clipPoints(static_cast<unsigned short>(in.size()), in.data(), in.data()),
                  c.visible);
        EXPECT_EQ(in, c.out);
    }
}

TEST(Device, ProcessWideStatePolyPointsGrowToExactlyNAndABreakIsConsumedByItsCheck) {
    const long start = Device::polyPointsCapacity();
    Device::getPolyPoints(start + 10);
    EXPECT_EQ(Device::polyPointsCapacity(), start + 10);
    QPoint* same = Device::getPolyPoints(3);
    EXPECT_EQ(Device::polyPointsCapacity(), start + 10) << "never shrinks";
    EXPECT_EQ(Device::getPolyPoints(start + 10), same);
    EXPECT_FALSE(Device::forDocumentation());
    Device::setForDocumentation(true);
    EXPECT_TRUE(Device::forDocumentation());
    Device::setForDocumentation(false);
    EXPECT_FALSE(Device::checkBreakExecution());
    Device::requestBreakExecution();
    EXPECT_TRUE(Device::checkBreakExecution());
    EXPECT_FALSE(Device::checkBreakExecution());
}

class DeviceWatcher : public Dependent {
public:
    void update(wsiDevice& device, Aspect a) override { m_heard.push_back({&device, a}); }
    std::vector<std::pair<wsiDevice*, Aspect>> m_heard;
};

TEST(Device, TellsDependentsOfANewTransformationAndClip) {
    Device device;
    DeviceWatcher watcher;
    device.addDependent(watcher);
    device.setDisplayTransformation(TqMatrix(FloatPoint(2.0, 2.0), FloatPoint(0.0, 0.0)));
    device.setClipRect(DeviceRectangle(0, 0, 20, 40));
    ASSERT_EQ(watcher.m_heard.size(), 2u);
    EXPECT_EQ(watcher.m_heard[0].first, &device);
    EXPECT_EQ(watcher.m_heard[0].second, aspectTransformation);
    EXPECT_EQ(watcher.m_heard[1].second, aspectVisibleArea);
    EXPECT_EQ(device.visibleArea(true), SheetRectangle(SheetPoint(0, 0), SheetPoint(10, 20)));
}

TEST(Device, WithoutAPainterEveryOperationDoesNothingSafely) {
    Device device;
    WsiFont font;
    DevicePoint points[3] = {{0, 0}, {10, 10}, {20, 0}};
    const DevicePoint a(1, 1), b(5, 5);
    const SheetRectangle r(0, 0, 5, 5);
    device.setColor(wsiRed);
    device.setPenStyle(wsiPenDash);
    device.setPenWidth(3);
    device.setBackgroundColor(wsiYellow);
    device.setBackgroundFillMode(wsiOpaque);
    device.setDrawMode(wsiDrawXor);
    device.setClipRect(DeviceRectangle(0, 0, 5, 5));
    device.drawLine(SheetPoint(0, 0), SheetPoint(5, 5));
    device.drawRectangle(r);
    device.fillRectangle(r);
    device.invertRectangle(r);
    device.drawPolylineUnTransformed(3, points);
    device.drawPolylineUnTransformed(2, &a, &b);
    device.drawPolygonUnTransformed(3, points);
    device.drawCurveUnTransformed(a, b);
    device.filledPolygonUnTransformed(wsiBlue, 3, points);
    device.drawCappedPolylineUnTransformed(wsiLineCapArrow, wsiLineCapArrow, {4, 4}, 3, points);
    device.drawCurvedArrowUnTransformed(a, b, {9, 1}, DeviceRectangle(0, 0, 3, 3),
                                        wsiCurveCapArrow);
    device.drawEllipseUnTransformed(DeviceRectangle(0, 0, 9, 9), true);
    device.erase(DeviceRectangle(0, 0, 9, 9));
    device.setPixel(1, 1);
    EXPECT_EQ(device.getPixel(1, 1), 0u);
    EXPECT_EQ(device.drawText("text", SheetPoint(1, 1), font), 0);
    EXPECT_EQ(device.drawAlignedText("text", SheetPoint(1, 1), font, wsiAlignRight, wsiAlignTop),
              DeviceRectangle());
    // Text is still measured, on the default resolution.
    EXPECT_GT(device.pixelBox("text", font).x(), 0);
    EXPECT_EQ(device.pixelBox(nullptr, font), DevicePoint(0, 0));
}

} // namespace
