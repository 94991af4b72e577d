// Labels measured and drawn for real: extents against the font measures of their runs,
// pixels on an image, the same label in PNG, PDF and SVG against the screen rendering, and
// the font changes in the EPS and MIF text.
#include "graphics/device/Device.h"
#include "graphics/device/TqPainter.h"
#include "graphics/device/WsiFont.h"
#include "graphics/export/QtFileDevice.h"
#include "graphics/export/eps/EPSDevice.h"
#include "graphics/export/mif/MIFDevice.h"
#include "graphics/export/svg/SVGDevice.h"
#include "graphics/richtext/StyledText.h"
#include "graphics/richtext/TextFormatParser.h"

#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sstream>
#include <string>

namespace {

constexpr int v_width = 320, v_height = 120;

// A white image with a painter and a device over it.
struct Canvas {
    Canvas() : image(v_width, v_height, QImage::Format_RGB32) {
        image.fill(Qt::white);
        painter.begin(&image);
        device.setPainter(&painter);
    }
    QImage image;
    TqPainter painter;
    Device device;
};

bool dark(QRgb c) {
    return qGray(c) < 128;
}

bool near(QRgb a, QRgb b) {
    return std::abs(qRed(a) - qRed(b)) <= 60 && std::abs(qGreen(a) - qGreen(b)) <= 60 &&
           std::abs(qBlue(a) - qBlue(b)) <= 60;
}

int countIf(const QImage& image, const QRect& r, const std::function<bool(QRgb)>& test) {
    int count = 0;
    for (int y = r.top(); y <= r.bottom(); ++y)
        for (int x = r.left(); x <= r.right(); ++x)
            count += test(image.pixel(x, y)) ? 1 : 0;
    return count;
}

// The box of the dark pixels in columns [from, to).
QRect inkBox(const QImage& image, int from, int to) {
    QRect box;
    for (int y = 0; y < image.height(); ++y)
        for (int x = from; x < to; ++x)
            if (dark(image.pixel(x, y)))
                box |= QRect(x, y, 1, 1);
    return box;
}

WsiFont styled(double size, bool bold = false, bool italic = false) {
    WsiFont font(nullptr, size);
    font.setBold(bold);
    font.setItalic(italic);
    return font;
}

TEST(RichTextMeasure, ExtentIsTheSumOfTheRunsMeasures) {
    Canvas canvas;
    const double size = 12;
    const auto m = [&](const WsiFont& f) { return WsiFontMetric(f, &canvas.image); };
    const WsiFontMetric plain = m(styled(size)), bold = m(styled(size, true)),
                        both = m(styled(size, true, true)),
                        small = m(styled(size * ScriptText::v_scale));
    const int h = plain.height();
    const struct {
        const char* text;
        int width, height;
    } cases[] = {
        {"", 0, 0},
        {"abc", plain.advance("abc", -1), h},
        {"<b>ab</b>cd", bold.advance("ab", -1) + plain.advance("cd", -1),
         std::max(bold.height(), h)},
        {"<i><b>x</b></i>", both.advance("x", -1), both.height()},
        {"ab\nlonger", std::max(plain.advance("ab", -1), plain.advance("longer", -1)), 2 * h},
        {"a\n\nb", std::max(plain.advance("a", -1), plain.advance("b", -1)), 2 * h},
        {"<o>A</o><u>B</u><red>C</red>",
         plain.advance("A", -1) + plain.advance("B", -1) + plain.advance("C", -1), h},
        {"x<sub>0</sub>", plain.advance("x", -1) + small.advance("0", -1),
         std::max(h, small.height() + plain.ascent() / 4)},
        {"x<super>2</super>", plain.advance("x", -1) + small.advance("2", -1),
         std::max(h, small.height() + plain.ascent() / 3)},
        {"<b>a\nbb</b>", bold.advance("bb", -1), 2 * bold.height()},
    };
    for (const auto& c : cases) {
        WsiFont font = styled(size);
        TextFormatParser parser(c.text, canvas.device);
        MetaString& label = parser.parse();
        const DevicePoint expected(c.width, c.height);
        EXPECT_EQ(label.calcTextExtent(font), expected) << c.text;
        EXPECT_EQ(TextFormatParser::pixelBox(c.text, canvas.device, font), expected) << c.text;
        EXPECT_EQ(TextFormatParser::pixelBox(c.text, &canvas.painter, font), expected) << c.text;
        EXPECT_FALSE(font.isBold()) << "the caller's font is left as it was";
    }
}

// Runs measured once are remembered by the identity of their font's measures: an export
// device, which measures in its own fonts and units, never gets the screen's widths.
TEST(RichTextMeasure, ExtentUsesEachDevicesOwnMeasures) {
    std::ostringstream out;
    EPSDevice eps(nullptr, "label", out, ExportParameters());
    eps.open(DeviceRectangle(0, 0, 400, 200), DeviceRectangle(0, 0, 1200, 600));
    Canvas canvas;
    const char* text = "<b>Bold</b> run";
    for (Device* device :
         {static_cast<Device*>(&eps), &canvas.device, static_cast<Device*>(&eps)}) {
        WsiFont plain("Helvetica", 10), bold = plain;
        bold.setBold(true);
        device->selectFont(bold);
        const int boldWidth = device->newFontMetric().advance("Bold", -1);
        device->selectFont(plain);
        const int plainWidth = device->newFontMetric().advance(" run", -1);
        device->deselectFont();
        EXPECT_EQ(TextFormatParser::pixelBox(text, *device, plain).x(), boldWidth + plainWidth);
    }
    eps.close();
}

TEST(RichTextMeasure, GetTextExtentKeepsTheExtentUntilTheFontChanges) {
    Canvas canvas;
    TextFormatParser parser("<b>DATA</b><sub>[7:0]</sub>", canvas.device);
    MetaString& label = parser.parse();
    WsiFont font = styled(10);
    const DevicePoint& first = label.getTextExtent(font);
    const DevicePoint small = first;
    EXPECT_EQ(&label.getTextExtent(font), &first);
    font.setPointSize(20);
    const DevicePoint large = label.getTextExtent(font);
    EXPECT_GT(large.x(), small.x());
    EXPECT_GT(large.y(), small.y());
    font.setPointSize(10);
    EXPECT_EQ(label.getTextExtent(font), small);
}

// Draws text with its top left at (10, 10) in a 28 point font and returns the image.
QImage drawn(const char* text, long penWidth = 3, long color = wsiNoColor) {
    Canvas canvas;
    canvas.device.setPenWidth(penWidth);
    canvas.device.setColor(wsiBlack);
    WsiFont font = styled(28);
    TextFormatParser parser(text, canvas.device);
    parser.parse().drawText(DevicePoint(10, 10), font, color);
    EXPECT_EQ(canvas.device.color(), wsiBlack) << text << ": the colour is set back";
    return canvas.image;
}

TEST(RichTextDraw, LinesAreDrawnAtTheirOffsetsInThePenWidth) {
    Canvas canvas;
    const WsiFont font = styled(28);
    const WsiFontMetric metric(font, &canvas.image);
    const int width = metric.advance("MMM", -1), baseline = 10 + metric.ascent();
    const int overline = baseline - metric.ascent() + 1;
    const int underline = baseline + std::max(1, metric.descent() / 2);
    const QImage plain = drawn("MMM"), over = drawn("<o>MMM</o>"), under = drawn("<u>MMM</u>");
    for (int y : {overline - 1, overline, overline + 1})
        EXPECT_EQ(countIf(over, QRect(10, y, width, 1), dark), width) << "overline row " << y;
    EXPECT_EQ(countIf(over, QRect(10, overline - 3, width, 1), dark), 0);
    EXPECT_EQ(countIf(plain, QRect(10, overline, width, 1), dark), 0);
    EXPECT_EQ(countIf(under, QRect(10, underline, width, 1), dark), width);
    EXPECT_EQ(countIf(plain, QRect(10, underline, width, 1), dark), 0);
    // The pen's square caps reach half its width past the ends, and no further.
    EXPECT_EQ(countIf(over, QRect(10 + width + 2, 0, 20, v_height), dark), 0);
    const QImage thin = drawn("<o>MMM</o>", 0);
    const int top = baseline - metric.ascent();
    EXPECT_EQ(countIf(thin, QRect(10, top, width, 1), dark), width) << "one unit at width 0";
    EXPECT_EQ(countIf(thin, QRect(10, top + 1, width, 1), dark), 0);
}

TEST(RichTextDraw, StylesChangeTheGlyphs) {
    const QImage plain = drawn("MMM"), bold = drawn("<b>MMM</b>"), italic = drawn("<i>III</i>"),
                 upright = drawn("III");
    const QRect all(0, 0, v_width, v_height);
    EXPECT_GT(countIf(bold, all, dark), countIf(plain, all, dark) * 11 / 10);
    // A slanted I reaches further right at its top than at its foot.
    const QRect i = inkBox(italic, 10, 30), u = inkBox(upright, 10, 30);
    EXPECT_GT(i.width(), u.width());

    const QImage script = drawn("M<sub>M</sub><super>M</super>");
    Canvas canvas;
    const WsiFontMetric metric(styled(28), &canvas.image);
    const int m = metric.advance("M", -1);
    const int ms = WsiFontMetric(styled(28 * ScriptText::v_scale), &canvas.image).advance("M", -1);
    const QRect base = inkBox(script, 10, 10 + m), sub = inkBox(script, 10 + m, 10 + m + ms),
                super = inkBox(script, 10 + m + ms, 10 + m + 2 * ms);
    EXPECT_LT(sub.height(), base.height());
    EXPECT_EQ(sub.bottom() - base.bottom(), metric.ascent() / 4);
    EXPECT_EQ(base.bottom() - super.bottom(), metric.ascent() / 3);
}

TEST(RichTextDraw, ColoursComeFromThePalette) {
    const auto isRed = [](QRgb c) { return qRed(c) > 200 && qGreen(c) < 80 && qBlue(c) < 80; };
    const auto isBlue = [](QRgb c) { return qBlue(c) > 200 && qRed(c) < 80 && qGreen(c) < 80; };
    const QRect all(0, 0, v_width, v_height);
    const QImage red = drawn("A<red>MM</red>A");
    EXPECT_GT(countIf(red, all, isRed), 50);
    EXPECT_GT(countIf(red, all, dark), countIf(red, all, isRed)) << "the As stay black";
    const QImage blue = drawn("MM", 3, wsiBlue);
    EXPECT_GT(countIf(blue, all, isBlue), 50);
    EXPECT_EQ(countIf(blue, all, isRed), 0);
    const QImage nested = drawn("<blue>M<red>M</red>M</blue>", 3, wsiGreen);
    EXPECT_GT(countIf(nested, all, isRed), 20);
    EXPECT_GT(countIf(nested, all, isBlue), 40);
}

TEST(RichTextDraw, PainterAndDeviceTargetsDrawAlike) {
    const char* text = "<b>D</b>ATA<sub>[7:0]</sub>\n<o>RESET</o> <red>n</red>";
    Canvas onDevice, onPainter;
    onDevice.device.setColor(wsiBlack);
    onPainter.painter.setPen(QPen(Qt::black, 1));
    WsiFont font = styled(16);
    TextFormatParser(text, onDevice.device).parse().drawText(DevicePoint(5, 5), font, 0);
    TextFormatParser(text, &onPainter.painter).parse().drawText(DevicePoint(5, 5), font, 0);
    EXPECT_EQ(onDevice.image, onPainter.image);
    EXPECT_GT(countIf(onDevice.image, QRect(0, 0, v_width, v_height), dark), 100);
}

TEST(RichTextDraw, AlignedFormsPlaceTheBox) {
    Canvas canvas;
    WsiFont font = styled(14);
    TextFormatParser parser("<b>CLK</b>\nline two", canvas.device);
    MetaString& label = parser.parse();
    const DevicePoint extent = label.calcTextExtent(font);
    const DeviceRectangle box =
        label.drawText(DevicePoint(300, 100), font, wsiAlignRight, wsiAlignBottom);
    EXPECT_EQ(box, DeviceRectangle(300 - extent.x(), 100 - extent.y(), 300, 100));
    const QRect inside(box.left(), box.top(), extent.x(), extent.y());
    const QRect all(0, 0, v_width, v_height);
    EXPECT_EQ(countIf(canvas.image, all, dark), countIf(canvas.image, inside, dark));
    const DeviceRectangle centred =
        label.drawText(DevicePoint(100, 50), font, wsiAlignHCenter, wsiAlignVCenter);
    EXPECT_EQ(centred.left(), 100 - extent.x() / 2);
    EXPECT_EQ(centred.top(), 50 - extent.y() / 2);
    const DeviceRectangle onBaseline =
        label.drawText(DevicePoint(0, 40), font, wsiAlignLeft, wsiAlignBaseline);
    EXPECT_EQ(onBaseline.top(), 40 - WsiFontMetric(styled(14, true), &canvas.image).ascent());
    canvas.device.selectFont(font);
    EXPECT_EQ(label.drawText(QRectF(0, 0, 100, 60), Qt::AlignCenter),
              QSize(extent.x(), extent.y()));
}

// The labels of the export comparison: thick coloured lines and large coloured text.
void paintLabels(Device& device) {
    device.setBackgroundColor(wsiWhite);
    device.erase(DeviceRectangle(0, 0, v_width, v_height));
    device.setPenWidth(4);
    device.setColor(wsiBlack);
    WsiFont font(nullptr, 30);
    TextFormatParser("<red><o>RST</o></red> <blue><u>EN</u></blue>", device)
        .parse()
        .drawText(DevicePoint(10, 10), font, 0);
    TextFormatParser("<b>DATA</b><sub>[7:0]</sub>", device)
        .parse()
        .drawText(DevicePoint(10, 60), font, wsiDarkGreen);
}

TEST(RichTextExport, PngPdfAndSvgMatchTheScreen) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString png = dir.filePath("label.png"), pdf = dir.filePath("label.pdf"),
                  svg = dir.filePath("label.svg");
    Canvas screen;
    paintLabels(screen.device);
    ASSERT_TRUE(screen.image.save(png));
    {
        PDFDevice device(pdf.toUtf8().constData(), "label", v_width, v_height);
        ASSERT_TRUE(device.isOpen());
        paintLabels(device);
        ASSERT_TRUE(device.close());
    }
    {
        SVGDevice device(svg.toUtf8().constData(), "label", v_width, v_height);
        ASSERT_TRUE(device.isOpen());
        paintLabels(device);
        ASSERT_TRUE(device.close());
    }
    QImage fromSvg(v_width, v_height, QImage::Format_RGB32);
    fromSvg.fill(Qt::white);
    {
        QPainter painter(&fromSvg);
        QSvgRenderer(svg).render(&painter);
    }
    const QString pdftoppm = QStandardPaths::findExecutable("pdftoppm");
    ASSERT_FALSE(pdftoppm.isEmpty()) << "scripts/install-deps installs poppler-utils";
    ASSERT_EQ(
        QProcess::execute(pdftoppm, {"-r", "96", "-png", "-singlefile", pdf, dir.filePath("page")}),
        0);

    WsiFont font(nullptr, 30);
    const WsiFontMetric metric(font, &screen.image);
    const int rst = metric.advance("RST", -1), space = metric.advance(" ", -1),
              en = metric.advance("EN", -1);
    const int overline = 10 + 2,
              underline = 10 + metric.ascent() + std::max(1, metric.descent() / 2);
    const QPoint probes[] = {{10 + rst / 2, overline},
                             {10 + 3, overline},
                             {10 + rst - 3, overline},
                             {10 + rst + space + en / 2, underline},
                             {10 + rst + space + 3, underline},
                             {5, 5},
                             {v_width - 5, 30},
                             {v_width - 5, v_height - 5}};
    const auto isGreen = [](QRgb c) { return qGreen(c) > 60 && qRed(c) < 60 && qBlue(c) < 60; };
    const QRect rows(0, 60, v_width, v_height - 60);
    const int screenGreen = countIf(screen.image, rows, isGreen);
    ASSERT_GT(screenGreen, 100);
    const struct {
        const char* name;
        QImage image;
    } outputs[] = {{"png", QImage(png).convertToFormat(QImage::Format_RGB32)},
                   {"svg", fromSvg},
                   {"pdf", QImage(dir.filePath("page.png")).convertToFormat(QImage::Format_RGB32)}};
    for (const auto& output : outputs) {
        ASSERT_EQ(output.image.size(), screen.image.size()) << output.name;
        for (const QPoint& p : probes)
            EXPECT_TRUE(near(output.image.pixel(p), screen.image.pixel(p)))
                << output.name << " at (" << p.x() << ", " << p.y() << "): " << std::hex
                << output.image.pixel(p) << " against " << screen.image.pixel(p);
        const int green = countIf(output.image, rows, isGreen);
        EXPECT_NEAR(green, screenGreen, screenGreen / 4) << output.name;
    }
    EXPECT_EQ(screen.image.pixel(probes[0]), qRgb(255, 0, 0));
    EXPECT_EQ(screen.image.pixel(probes[3]), qRgb(0, 0, 255));
}

// The label whose runs the file formats must keep apart.
void paintRuns(Device& device) {
    WsiFont font("Helvetica", 10);
    TextFormatParser("<b>Bold</b><i>Slant</i>Plain<b><i>Both</i></b>", device)
        .parse()
        .drawText(DevicePoint(20, 20), font, 0);
}

TEST(RichTextExport, EpsWritesOneFontChangePerRun) {
    std::ostringstream out;
    {
        EPSDevice device(nullptr, "label", out, ExportParameters());
        device.open(DeviceRectangle(0, 0, 400, 200), DeviceRectangle(0, 0, 400, 200));
        paintRuns(device);
        device.close();
    }
    const std::string eps = out.str();
    std::size_t at = 0;
    for (const char* expected :
         {"/Helvetica-Bold findfont", "(Bold)", "/Helvetica-Oblique findfont", "(Slant)",
          "/Helvetica findfont", "(Plain)", "/Helvetica-BoldOblique findfont", "(Both)"}) {
        const std::size_t found = eps.find(expected, at);
        ASSERT_NE(found, std::string::npos) << expected << " after offset " << at << "\n" << eps;
        at = found;
    }
    std::size_t shows = 0;
    for (std::size_t p = eps.find("findfont"); p != std::string::npos;
         p = eps.find("findfont", p + 1))
        ++shows;
    EXPECT_EQ(shows, 4u) << "one text per run, no drawn emulation of bold or italic";
}

TEST(RichTextExport, MifWritesOneFontChangePerRun) {
    std::ostringstream out;
    {
        MIFDevice device("label", out, ExportParameters(), DeviceRectangle(0, 0, 400, 200));
        paintRuns(device);
        ASSERT_TRUE(device.close());
    }
    const std::string mif = out.str();
    const struct {
        const char* text;
        const char* bold;
        const char* italic;
    } runs[] = {{"Bold", "Yes", "No"},
                {"Slant", "No", "Yes"},
                {"Plain", "No", "No"},
                {"Both", "Yes", "Yes"}};
    for (const auto& run : runs) {
        const std::size_t string = mif.find(std::string("<String `") + run.text + "'>");
        ASSERT_NE(string, std::string::npos) << run.text << "\n" << mif;
        const std::size_t font = mif.rfind("<Font", string);
        ASSERT_NE(font, std::string::npos);
        const std::string entry = mif.substr(font, string - font);
        EXPECT_NE(entry.find(std::string("<FBold ") + run.bold + ">"), std::string::npos)
            << run.text << ": " << entry;
        EXPECT_NE(entry.find(std::string("<FItalic ") + run.italic + ">"), std::string::npos)
            << run.text << ": " << entry;
    }
}

} // namespace
