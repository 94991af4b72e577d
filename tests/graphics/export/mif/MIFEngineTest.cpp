// The MIF paint engine: a drawing painted on it, through a painter-based Device or a painter
// directly, gives the text the MIF device writes for the same drawing.
#include "graphics/export/mif/MIFEngine.h"
#include "MIFTestSupport.h"
#include "graphics/device/Device.h"
#include "graphics/device/QtConversion.h"
#include "graphics/device/TqPainter.h"
#include "graphics/geometry/SheetPoint.h"

#include <QImage>
#include <QPixmap>
#include <gtest/gtest.h>

namespace {

std::string paintedBy(const std::function<void(TqPainter&)>& paint) {
    std::ostringstream out;
    MIFEngine engine("job", out, fixedParameters(), v_drawing);
    // The painter's device measures in tenths of a point, like the MIF device.
    EXPECT_EQ(engine.paintDevice().width(), 1000);
    EXPECT_EQ(engine.paintDevice().logicalDpiY(), 720);
    {
        TqPainter painter(&engine.paintDevice());
        EXPECT_TRUE(painter.isActive());
        paint(painter);
    }
    EXPECT_TRUE(engine.close());
    return out.str();
}

// One drawing and, where the painter side is not the same drawing through a painter-based
// Device, what a painter does instead.
struct SameTextCase {
    const char* what;
    std::function<void(wsiDevice&)> draw;
    std::function<void(TqPainter&)> paint = nullptr;
};

TEST(MIFEngine, SameDrawing_WritesTheSameTextAsTheDevice) {
    WsiFont times("Times", 12);
    times.setItalic(true);
    const SameTextCase cases[] = {
        {"lines with colour, dash, width and clip",
         [](wsiDevice& d) {
             d.setColor(wsiRed), d.setPenStyle(wsiPenDash), d.setPenWidth(3);
             line(d, 10, 20, 300, 400);
             d.setClipRect(DeviceRectangle(0, 0, 200, 200)), line(d, -100, 100, 300, 100);
         }},
        {"every dash style",
         [](wsiDevice& d) {
             for (int style = 0; style <= 5; ++style)
                 d.setPenStyle(wsiPenStyle(style)), line(d, 0, style, 10, style);
         }},
        {"polyline and polygon outline",
         [](wsiDevice& d) {
             DevicePoint triangle[] = {{0, 0}, {100, 0}, {100, 100}};
             d.setColor(wsiGreen), d.drawPolylineUnTransformed(3, triangle);
             d.drawPolygonUnTransformed(3, triangle);
         }},
        {"rectangle outline and fill",
         [](wsiDevice& d) {
             d.setColor(wsiPurple), d.drawRectangle(SheetRectangle(10, 20, 110, 70));
             d.fillRectangle(SheetRectangle(10, 20, 110, 70));
         }},
        {"a polygon filled without an outline (a painter-based Device outlines it too)",
         [](wsiDevice& d) {
             DevicePoint triangle[] = {{0, 0}, {100, 0}, {100, 100}};
             d.filledPolygonUnTransformed(wsiYellow, 3, triangle);
         },
         [](TqPainter& p) {
             const QPoint triangle[] = {{0, 0}, {100, 0}, {100, 100}};
             p.setPen(Qt::NoPen), p.setBrush(QtConversion::asQColor(wsiYellow));
             p.drawPolygon(triangle, 3);
         }},
        {"curve and ellipses",
         [](wsiDevice& d) {
             d.setColor(wsiBlue), d.setPenWidth(2), d.drawCurveUnTransformed({0, 0}, {101, 50});
             d.drawEllipseUnTransformed(DeviceRectangle(10, 20, 310, 420), false);
             d.drawEllipseUnTransformed(DeviceRectangle(10, 20, 310, 420), true);
         }},
        {"text",
         [&](wsiDevice& d) {
             d.setColor(wsiDarkGreen), d.drawText("Hi", SheetPoint(100, 200), times);
         }},
        {"the painter's transform and clip, applied before writing",
         [](wsiDevice& d) { line(d, 100, 50, 120, 70), line(d, 100, 70, 110, 70); },
         [](TqPainter& p) {
             p.translate(100, 50), p.scale(2, 2), p.drawLine(0, 0, 10, 10);
             p.setClipRect(QRect(0, 0, 5, 100)); // (100, 50) to (110, 250) on the device
             p.drawLine(0, 10, 10, 10);
         }},
        {"images, pixmaps and points write nothing; a rectangle without pen or brush is outlined",
         [](wsiDevice& d) {
             d.setPenStyle(wsiPenNull), d.setPenWidth(1);
             d.drawRectangle(SheetRectangle(0, 0, 10, 10));
         },
         [](TqPainter& p) {
             QImage image(4, 4, QImage::Format_RGB32);
             image.fill(Qt::red);
             p.drawImage(QPoint(0, 0), image);
             p.drawPixmap(QRect(0, 0, 4, 4), QPixmap::fromImage(image));
             p.drawTiledPixmap(QRect(0, 0, 8, 8), QPixmap::fromImage(image)), p.drawPoint(1, 1);
             p.setPen(Qt::NoPen), p.setBrush(Qt::NoBrush); // a pen of width 1, no brush
             p.drawRect(QRect(0, 0, 10, 10));
         }}};
    for (const SameTextCase& c : cases) {
        const std::string device = fileDrawnBy(c.draw);
        EXPECT_EQ(paintedBy(c.paint ? c.paint : [&c](TqPainter& p) {
                      Device painted(p);
                      c.draw(painted);
                  }),
                  device)
            << c.what;
        EXPECT_NE(frameObjects(device), "") << c.what;
    }
}

} // namespace
