// EPSEngine: the paint-engine side writes what EPSDevice writes for the same drawing.
#include "../CommaLocale.h"
#include "EPSTestSupport.h"

#include "../../../../bench/graphics/ExportDrawing.h"
#include "graphics/device/QtConversion.h"
#include "graphics/device/TqPainter.h"

#include <QImage>
#include <QPainterPath>
#include <gtest/gtest.h>

#include <functional>

namespace {

const DeviceRectangle v_page(0, 0, 3060, 3960);

// The text EPSDevice writes for draw after the header of the letter page, into a stream
// whose locale has a decimal comma (which must not reach the text).
std::string throughDevice(const std::function<void(wsiDevice&)>& draw) {
    std::ostringstream out;
    out.imbue(commaLocale());
    EPSDevice device(nullptr, "job", out, ExportParameters());
    device.open(v_page, v_page);
    const std::size_t header = out.str().size();
    draw(device);
    device.close();
    device.endOfPage();
    return out.str().substr(header);
}

// The text EPSEngine writes after the header of the letter page while paint paints on it.
std::string throughEngine(const std::function<void(TqPainter&)>& paint) {
    std::ostringstream out;
    EPSEngine engine(nullptr, "job", out, ExportParameters());
    engine.open(v_page, v_page);
    const std::size_t header = out.str().size();
    TqPainter painter(&engine.paintDevice());
    EXPECT_TRUE(painter.isActive());
    paint(painter);
    painter.end();
    return out.str().substr(header);
}

// The same with a painter-based Device drawing on the engine.
std::string throughEngineDevice(const std::function<void(wsiDevice&)>& draw) {
    return throughEngine([&](TqPainter& painter) {
        Device device(painter);
        draw(device);
    });
}

TEST(EPSEngine, WritesWhatEPSDeviceWritesForTheSameDrawing) {
    const std::string device = throughDevice(eps_test::drawSample);
    EXPECT_EQ(throughEngineDevice(eps_test::drawSample), device);
    EXPECT_NE(device.find(" 100.25 0 360 arc\n"), std::string::npos) << "a point, not a comma";
    const auto segments = [](wsiDevice& d) { drawExportSegments(d, 5000); };
    const std::string benchmark = throughDevice(segments);
    EXPECT_EQ(throughEngineDevice(segments), benchmark) << "the benchmark's drawing";
    EXPECT_EQ(eps_test::countWord(benchmark, "lineto"), 5000);
}

TEST(EPSEngine, BeginOpensThePageAndEndClosesItOnce) {
    std::ostringstream out, reference;
    EPSEngine engine(nullptr, "job", out, ExportParameters());
    EXPECT_EQ(engine.paintDevice().width(), 3060);
    EXPECT_EQ(engine.paintDevice().height(), 3960);
    EXPECT_EQ(engine.paintDevice().logicalDpiY(), 360);
    {
        TqPainter painter(&engine.paintDevice());
        QImage image(4, 4, QImage::Format_RGB32);
        painter.drawLine(1, 2, 3, 4);
        painter.drawImage(0, 0, image);
        painter.drawPoint(5, 5);
        painter.drawPixmap(QRect(0, 0, 4, 4), QPixmap());
    }
    EPSDevice(nullptr, "job", reference, ExportParameters()).open(v_page, v_page);
    EXPECT_EQ(out.str().substr(0, reference.str().size()), reference.str())
        << "begin writes the header of the whole page";
    EXPECT_EQ(out.str().substr(reference.str().size()),
              "0 0 0 setrgbcolor\nstroke\n[] 0 setdash\n1 2 moveto\n3 4 lineto\nstroke\n"
              "grestore\ngrestore\nshowpage\n")
        << "images and points write nothing";
}

TEST(EPSEngine, FillsWithTheBrushAndStrokesWithThePen) {
    EXPECT_EQ(throughEngine([](TqPainter& p) {
                  p.fillRect(QRect(10, 20, 30, 40), QColor(Qt::red));
                  p.setPen(QPen(QColor(Qt::blue), 2));
                  p.setBrush(QColor(Qt::yellow));
                  p.drawRect(QRect(0, 0, 10, 10));
                  p.setPen(Qt::NoPen);
                  p.drawLine(0, 0, 9, 9);
                  p.drawEllipse(QRect(0, 0, 10, 10));
              }),
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
    EXPECT_EQ(throughEngine([](TqPainter& p) {
                  p.setPen(QPen(QColor(Qt::black), 0));
                  p.translate(100, 200);
                  p.setClipRect(QRect(0, 0, 50, 60));
                  QPainterPath path(QPointF(0, 0));
                  path.lineTo(10, 0);
                  path.cubicTo(QPointF(20, 0), QPointF(20, 10), QPointF(30, 10));
                  p.drawPath(path);
                  p.setClipping(false);
                  p.drawLine(QLineF(0.4, 0.6, 1000, 0));
              }),
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

TEST(EPSEngine, ColoursAndPenStylesMapOntoTheDevicesOwn) {
    for (int value = 1; value <= 19; ++value) {
        const auto color = static_cast<wsiColor>(value);
        const wsiColor nearest = QtConversion::nearestWsiColor(QtConversion::asQColor(color));
        EXPECT_EQ(QtConversion::asQColor(nearest), QtConversion::asQColor(color)) << value;
    }
    EXPECT_EQ(QtConversion::nearestWsiColor(QColor()), wsiNoColor);
    EXPECT_EQ(QtConversion::nearestWsiColor(QColor(250, 10, 10)), wsiRed);
    EXPECT_EQ(QtConversion::nearestWsiColor(QColor(120, 0, 10)), wsiDarkRed);
    // Pen styles go back to what the device's own styles become in Qt.
    for (const auto style : {wsiPenCustomDash, wsiPenSolid, wsiPenDash, wsiPenDot, wsiPenDashDot,
                             wsiPenDashDotDot, wsiPenNull})
        EXPECT_EQ(QtConversion::asWsiPenStyle(QtConversion::asPenStyle(style)), style);
    EXPECT_EQ(QtConversion::asWsiPenStyle(Qt::MPenStyle), wsiPenSolid) << "one rule both ways";
}

} // namespace
