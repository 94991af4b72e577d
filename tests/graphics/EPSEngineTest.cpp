// EPSEngine: the paint-engine side writes what EPSDevice writes for the same drawing.
#include "EPSTestSupport.h"

#include "../../bench/graphics/ExportDrawing.h"
#include "graphics/QtConversion.h"
#include "graphics/SheetPoint.h"
#include "graphics/SheetRectangle.h"
#include "graphics/TqPainter.h"

#include <QImage>
#include <QPainterPath>
#include <gtest/gtest.h>

#include <functional>

namespace {

using eps_test::linesOf;

const DeviceRectangle v_page(0, 0, 3060, 3960);

// A drawing through the public operations of a device, touching every kind of text the
// writer has: colours, dashes and widths, lines, polylines, polygons, a clip with the state
// set again after it, curves, ellipses, text and aligned text.
void drawSample(wsiDevice& d) {
    d.setColor(wsiRed);
    d.setPenStyle(wsiPenDash);
    d.setPenWidth(3);
    d.drawLine(SheetPoint(100, 100), SheetPoint(900, 100));
    const SheetPoint zigzag[] = {SheetPoint(100, 200), SheetPoint(200, 300), SheetPoint(300, 200),
                                 SheetPoint(400, 300)};
    d.drawPolyline(4, zigzag);
    d.setColor(wsiDarkGreen);
    d.drawRectangle(SheetRectangle(SheetPoint(500, 500), SheetPoint(800, 700)));
    d.setClipRect(DeviceRectangle(50, 50, 2000, 1500));
    d.setColor(wsiBlue);
    d.setPenStyle(wsiPenDot);
    d.setPenWidth(2);
    d.drawLine(SheetPoint(0, 1000), SheetPoint(3000, 1000)); // clipped
    d.drawCurve(SheetPoint(100, 800), SheetPoint(600, 1200));
    d.drawEllipse(SheetRectangle(SheetPoint(1000, 200), SheetPoint(1200, 400)), false);
    d.setColor(wsiYellow);
    d.drawEllipse(SheetRectangle(SheetPoint(1300, 200), SheetPoint(1500, 300)), true);
    WsiFont font("Helvetica", 12);
    d.setColor(wsiPurple);
    d.drawText("Hello (EPS) \\ world", SheetPoint(300, 1300), font);
    font.setItalic(true);
    d.drawAlignedText("aligned", SheetPoint(1000, 1400), font, wsiAlignHCenter, wsiAlignBottom);
}

// The text EPSDevice writes for draw, opened on the letter page.
std::string throughDevice(const std::function<void(wsiDevice&)>& draw) {
    std::ostringstream out;
    EPSDevice device(nullptr, "job", out, ExportParameters());
    device.open(v_page, v_page);
    draw(device);
    device.close();
    device.endOfPage();
    return out.str();
}

// The text EPSEngine writes when a painter-based Device draws the same on it.
std::string throughEngine(const std::function<void(wsiDevice&)>& draw) {
    std::ostringstream out;
    EPSEngine engine(nullptr, "job", out, ExportParameters());
    engine.open(v_page, v_page);
    {
        TqPainter painter(&engine.paintDevice());
        EXPECT_TRUE(painter.isActive());
        Device device(painter);
        draw(device);
        painter.end();
    }
    return out.str();
}

TEST(EPSEngine, WritesWhatEPSDeviceWritesForTheSameDrawing) {
    const std::string device = throughDevice(drawSample);
    const std::string engine = throughEngine(drawSample);
    EXPECT_EQ(linesOf(engine), linesOf(device));
    EXPECT_NE(device.find("(Hello \\(EPS\\) \\\\ world) show\n"), std::string::npos);
    EXPECT_NE(device.find("/Helvetica-Oblique findfont 60 scalefont setfont\n"), std::string::npos);
    EXPECT_NE(device.find("1 0 1 setrgbcolor\n"), std::string::npos);
}

TEST(EPSEngine, WritesWhatEPSDeviceWritesForTheBenchmarkDrawing) {
    const auto draw = [](wsiDevice& d) { drawExportSegments(d, 5000); };
    const std::string device = throughDevice(draw);
    EXPECT_EQ(throughEngine(draw), device);
    EXPECT_EQ(eps_test::countWord(device, "lineto"), 5000);
}

TEST(EPSEngine, BeginOpensThePageAndEndClosesItOnce) {
    std::ostringstream out;
    EPSEngine engine(nullptr, "job", out, ExportParameters());
    EXPECT_STREQ(engine.jobName(), "job");
    EXPECT_EQ(engine.paintDevice().width(), 3060);
    EXPECT_EQ(engine.paintDevice().height(), 3960);
    EXPECT_EQ(engine.paintDevice().logicalDpiY(), 360);
    {
        TqPainter painter(&engine.paintDevice());
        painter.drawLine(QPoint(1, 2), QPoint(3, 4));
        QImage image(4, 4, QImage::Format_RGB32);
        painter.drawImage(QPoint(0, 0), image);
        painter.drawPixmap(QRect(0, 0, 4, 4), QPixmap());
        painter.drawPoint(QPoint(5, 5));
    }
    std::ostringstream device;
    EPSDevice reference(nullptr, "job", device, ExportParameters());
    reference.open(v_page, v_page);
    EXPECT_EQ(out.str().substr(0, device.str().size()), device.str())
        << "begin writes the header of the whole page";
    const auto lines = linesOf(out.str().substr(device.str().size()));
    const std::vector<std::string> expected = {"0 0 0 setrgbcolor", "stroke",     "[] 0 setdash",
                                               "1 2 moveto",        "3 4 lineto", "stroke",
                                               "grestore",          "grestore",   "showpage"};
    EXPECT_EQ(lines, expected) << "images and points write nothing";
}

TEST(EPSEngine, FillsWithTheBrushAndStrokesWithThePen) {
    std::ostringstream out;
    EPSEngine engine(nullptr, "job", out, ExportParameters());
    engine.open(v_page, v_page);
    const std::size_t header = out.str().size();
    {
        TqPainter painter(&engine.paintDevice());
        painter.fillRect(QRect(10, 20, 30, 40), QColor(Qt::red));
        painter.setPen(QPen(QColor(Qt::blue), 2));
        painter.setBrush(QColor(Qt::yellow));
        painter.drawRect(QRect(0, 0, 10, 10));
        painter.setPen(Qt::NoPen);
        painter.drawLine(QPoint(0, 0), QPoint(9, 9));
        painter.drawEllipse(QRect(0, 0, 10, 10));
        painter.end();
    }
    EXPECT_EQ(out.str().substr(header),
              "newpath\n10 20 moveto\n40 20 lineto\n40 60 lineto\n10 60 lineto\nclosepath\n"
              "gsave\n  1 0 0 setrgbcolor\n  fill\ngrestore\nnewpath\n"
              "newpath\n0 0 moveto\n10 0 lineto\n10 10 lineto\n0 10 lineto\nclosepath\n"
              "gsave\n  1 1 0 setrgbcolor\n  fill\ngrestore\nnewpath\n"
              "0 0 1 setrgbcolor\n[] 0 setdash\n2 setlinewidth\n"
              "0 0 moveto\n10 0 lineto\n10 0 moveto\n10 10 lineto\n10 10 moveto\n0 10 lineto\n"
              "0 10 moveto\n0 0 lineto\n"
              "stroke\n5 5 5 0 360 arc\ngsave\n  1 1 0 setrgbcolor\n  fill\ngrestore\nnewpath\n"
              "grestore\ngrestore\nshowpage\n")
        << "no pen: no line, the ellipse filled only";
}

TEST(EPSEngine, PathsTransformsAndClipsGoThroughThePainterState) {
    std::ostringstream out;
    EPSEngine engine(nullptr, "job", out, ExportParameters());
    engine.open(v_page, v_page);
    const std::size_t header = out.str().size();
    {
        TqPainter painter(&engine.paintDevice());
        painter.setPen(QPen(QColor(Qt::black), 0));
        painter.translate(100, 200);
        painter.setClipRect(QRect(0, 0, 50, 60));
        QPainterPath path(QPointF(0, 0));
        path.lineTo(10, 0);
        path.cubicTo(QPointF(20, 0), QPointF(20, 10), QPointF(30, 10));
        painter.drawPath(path);
        painter.setClipping(false);
        painter.drawLine(QLineF(0.4, 0.6, 1000, 0));
        painter.end();
    }
    EXPECT_EQ(out.str().substr(header),
              "stroke\ngrestore\ngsave\nnewpath\n100 200 moveto\n150 200 lineto\n"
              "150 260 lineto\n100 260 lineto\nclosepath\nclip\nnewpath\n"
              "0 0 0 setrgbcolor\n[] 0 setdash\n0 setlinewidth\n"
              "100 200 moveto\n110 200 lineto\n"
              "stroke\n0 setlinewidth\nnewpath\n110 200 moveto\n120 200\n120 210\n130 210\n"
              "curveto\nstroke\n"
              "grestore\ngsave\n0 0 0 setrgbcolor\n[] 0 setdash\n0 setlinewidth\n"
              "100 201 moveto\n1100 200 lineto\n"
              "stroke\ngrestore\ngrestore\nshowpage\n")
        << "the clip is mapped to device units; after each clip change the pen is written "
           "again";
}

TEST(EPSEngine, FontsMapAndMeasureAsEPSDeviceDoes) {
    std::ostringstream out;
    EPSEngine engine(nullptr, "job", out, ExportParameters());
    EPSDevice device(nullptr, "job", out, ExportParameters());
    QFont font("Times New Roman", 14);
    font.setItalic(true);
    EXPECT_STREQ(engine.selectFont(font), "Times-Italic");
    EXPECT_STREQ(engine.selectFont(QFont("No Such Family", 10)), "Helvetica");
    font.setBold(true);
    EXPECT_STREQ(engine.selectFont(font), "Times-BoldItalic");
    WsiFont same("Times New Roman", 14);
    same.setBold(true);
    same.setItalic(true);
    const DevicePoint measured = engine.pixelBox("Timing", font);
    EXPECT_EQ(measured, device.pixelBox("Timing", same));
    EXPECT_GT(measured.x(), 100) << "a 14-point word at 360 units per inch";
    EXPECT_EQ(engine.pixelBox(nullptr, font), DevicePoint(0, 0));
}

TEST(EPSEngine, ColoursMapToTheNearestDeviceColour) {
    for (int value = 1; value <= 19; ++value) {
        const auto color = static_cast<wsiColor>(value);
        const wsiColor nearest = EPSEngine::nearestColor(QtConversion::asQColor(color));
        EXPECT_EQ(QtConversion::asQColor(nearest), QtConversion::asQColor(color)) << value;
    }
    EXPECT_EQ(EPSEngine::nearestColor(QColor()), wsiNoColor);
    EXPECT_EQ(EPSEngine::nearestColor(QColor(Qt::white)), wsiWhite);
    EXPECT_EQ(EPSEngine::nearestColor(QColor(Qt::black)), wsiBlack);
    EXPECT_EQ(EPSEngine::nearestColor(QColor(250, 10, 10)), wsiRed);
    EXPECT_EQ(EPSEngine::nearestColor(QColor(120, 0, 10)), wsiDarkRed);
    const Qt::PenStyle styles[] = {Qt::SolidLine,   Qt::DashLine,       Qt::DotLine,
                                   Qt::DashDotLine, Qt::DashDotDotLine, Qt::NoPen};
    for (int style = 0; style <= 5; ++style)
        EXPECT_EQ(EPSEngine::penStyleOf(styles[style]), static_cast<wsiPenStyle>(style));
    EXPECT_EQ(EPSEngine::penStyleOf(Qt::CustomDashLine), wsiPenCustomDash);
}

} // namespace
