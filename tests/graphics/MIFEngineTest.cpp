// The MIF paint engine: a painter's drawing gives the text the MIF device writes for the same
// drawing, and what the engine does on its own (transforms, fills, what it leaves out).
#include "graphics/MIFEngine.h"
#include "MIFTestSupport.h"
#include "graphics/QtConversion.h"
#include "graphics/SheetPoint.h"
#include "graphics/TqPainter.h"

#include <QImage>
#include <QPainterPath>
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

QPen penOf(wsiColor color, int width, Qt::PenStyle style) {
    return QPen(QBrush(QtConversion::asQColor(color)), width, style);
}

struct SameTextCase {
    const char* what;
    std::function<void(MIFDevice&)> draw;
    std::function<void(TqPainter&)> paint;
};

// The triangle (0, 0), (100, 0), (100, 100) on either side.
DevicePoint v_triangle[] = {{0, 0}, {100, 0}, {100, 100}};
const QPoint v_qTriangle[] = {{0, 0}, {100, 0}, {100, 100}};

TEST(MIFEngine, SameDrawing_WritesTheSameTextAsTheDevice) {
    WsiFont times("Times", 12);
    times.setItalic(true);
    const Qt::PenStyle styles[] = {Qt::SolidLine,   Qt::DashLine,       Qt::DotLine,
                                   Qt::DashDotLine, Qt::DashDotDotLine, Qt::NoPen};
    const SameTextCase cases[] = {
        {"lines with colour, dash, width and clip",
         [](MIFDevice& d) {
             d.setColor(wsiRed), d.setPenStyle(wsiPenDash), d.setPenWidth(3);
             line(d, 10, 20, 300, 400);
             d.setClipRect(DeviceRectangle(0, 0, 200, 200)), line(d, -100, 100, 300, 100);
         },
         [](TqPainter& p) {
             p.setPen(penOf(wsiRed, 3, Qt::DashLine)), p.drawLine(10, 20, 300, 400);
             p.setClipRect(QRect(0, 0, 200, 200)), p.drawLine(-100, 100, 300, 100);
         }},
        {"every dash style",
         [](MIFDevice& d) {
             for (int style = 0; style <= 5; ++style)
                 d.setPenStyle(wsiPenStyle(style)), line(d, 0, style, 10, style);
         },
         [&](TqPainter& p) {
             for (int style = 0; style <= 5; ++style)
                 p.setPen(penOf(wsiBlack, 0, styles[style])), p.drawLine(0, style, 10, style);
         }},
        {"polyline and polygon outline",
         [](MIFDevice& d) {
             d.setColor(wsiGreen), d.drawPolylineUnTransformed(3, v_triangle);
             d.drawPolygonUnTransformed(3, v_triangle);
         },
         [](TqPainter& p) {
             p.setPen(penOf(wsiGreen, 0, Qt::SolidLine)), p.drawPolyline(v_qTriangle, 3);
             p.drawPolygon(v_qTriangle, 3);
         }},
        {"rectangle outline and fill",
         [](MIFDevice& d) {
             d.setColor(wsiPurple), d.drawRectangle(SheetRectangle(10, 20, 110, 70));
             d.fillRectangle(SheetRectangle(10, 20, 110, 70));
         },
         [](TqPainter& p) {
             p.setPen(penOf(wsiPurple, 0, Qt::SolidLine)), p.drawRect(QRect(10, 20, 100, 50));
             p.fillRect(QRect(10, 20, 100, 50), QtConversion::asQColor(wsiPurple));
         }},
        {"filled polygon",
         [](MIFDevice& d) { d.filledPolygonUnTransformed(wsiYellow, 3, v_triangle); },
         [](TqPainter& p) {
             p.setPen(Qt::NoPen), p.setBrush(QtConversion::asQColor(wsiYellow));
             p.drawPolygon(v_qTriangle, 3);
         }},
        {"curve and ellipses",
         [](MIFDevice& d) {
             d.setColor(wsiBlue), d.setPenWidth(2), d.drawCurveUnTransformed({0, 0}, {101, 50});
             d.drawEllipseUnTransformed(DeviceRectangle(10, 20, 310, 420), false);
             d.drawEllipseUnTransformed(DeviceRectangle(10, 20, 310, 420), true);
         },
         [](TqPainter& p) {
             p.setPen(penOf(wsiBlue, 2, Qt::SolidLine));
             QPainterPath path(QPointF(0, 0));
             path.cubicTo(QPointF(50, 0), QPointF(50, 50), QPointF(101, 50));
             p.strokePath(path, p.pen()), p.drawEllipse(QRect(10, 20, 300, 400));
             p.setBrush(QtConversion::asQColor(wsiBlue)), p.drawEllipse(QRect(10, 20, 300, 400));
         }},
        {"text",
         [&](MIFDevice& d) {
             d.setColor(wsiDarkGreen), d.drawText("Hi", SheetPoint(100, 200), times);
         },
         [&](TqPainter& p) {
             p.setPen(penOf(wsiDarkGreen, 0, Qt::SolidLine)), p.setFont(times.toQFont());
             p.drawText(QPoint(100, 200), "Hi");
         }},
        {"the painter's transform and clip, applied before writing",
         [](MIFDevice& d) { line(d, 100, 50, 120, 70), line(d, 100, 70, 110, 70); },
         [](TqPainter& p) {
             p.translate(100, 50), p.scale(2, 2), p.drawLine(0, 0, 10, 10);
             p.setClipRect(QRect(0, 0, 5, 100)); // (100, 50) to (110, 250) on the device
             p.drawLine(0, 10, 10, 10);
         }},
        {"images, pixmaps and points write nothing; a rectangle without pen or brush is outlined",
         [](MIFDevice& d) {
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
        EXPECT_EQ(paintedBy(c.paint), device) << c.what;
        EXPECT_NE(frameObjects(device), "") << c.what;
    }
}

} // namespace
