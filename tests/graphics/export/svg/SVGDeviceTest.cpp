// SVGDevice: primitives in, the SVG read back as XML and as a picture out.
#include "graphics/export/svg/SVGDevice.h"

#include "graphics/device/TqPainter.h"

#include <QFile>
#include <QImage>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr int v_width = 200, v_height = 100;

struct Element {
    QString name;
    QXmlStreamAttributes attributes;
    QString text;
    QString attribute(const char* name) const { return attributes.value(name).toString(); }
};

// The drawing's elements below the document's own group, in order; a parse error fails the
// test.
std::vector<Element> elementsOf(const QString& file) {
    QFile in(file);
    EXPECT_TRUE(in.open(QIODevice::ReadOnly));
    QXmlStreamReader xml(&in);
    std::vector<Element> elements;
    int depth = 0;
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            if (++depth > 2)
                elements.push_back({xml.name().toString(), xml.attributes(), {}});
        } else if (token == QXmlStreamReader::EndElement) {
            --depth;
        } else if (token == QXmlStreamReader::Characters && depth > 2 && !xml.isWhitespace()) {
            elements.back().text += xml.text();
        }
    }
    EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
    return elements;
}

class SVGDeviceTest : public testing::Test {
protected:
    QString file(const char* name = "drawing.svg") const { return m_dir.filePath(name); }
    // Draws through a fresh device and returns the elements written.
    std::vector<Element> draw(const std::function<void(SVGDevice&)>& paint, int resolution = 96) {
        {
            SVGDevice device(file().toUtf8().constData(), "test", v_width, v_height, resolution);
            EXPECT_TRUE(device.isOpen());
            paint(device);
            EXPECT_TRUE(device.close());
            EXPECT_FALSE(device.close());
        }
        return elementsOf(file());
    }
    QImage rendered() const {
        QImage image(v_width, v_height, QImage::Format_RGB32);
        image.fill(Qt::white);
        QPainter painter(&image);
        QSvgRenderer(file()).render(&painter);
        return image;
    }

    QTemporaryDir m_dir;
};

void line(Device& d, int x0, int y0, int x1, int y1) {
    d.drawLine(SheetPoint(x0, y0), SheetPoint(x1, y1));
}

TEST_F(SVGDeviceTest, PrimitivesOfOneStyleInARowShareOneElement) {
    // clang-format off
    const struct {
        const char* name;
        std::function<void(SVGDevice&)> paint;
        std::vector<std::vector<std::pair<const char*, const char*>>> expected;
    } cases[] = {
        {"lines of one style are subpaths of one path",
         [](SVGDevice& d) { line(d, 10, 10, 50, 10); line(d, 10, 20, 10, 60); line(d, 0, 0, 3, -4); },
         {{{"stroke", "#000"}, {"d", "m10 10h40m-40 10v40m-10-60 3-4"}}}},
        {"a new colour, width or dash starts another",
         [](SVGDevice& d) {
             d.setColor(wsiRed); line(d, 0, 0, 5, 0);
             d.setPenWidth(2); line(d, 0, 1, 5, 1);
             d.setPenStyle(wsiPenDash); line(d, 0, 2, 5, 2);
             d.setPenWidth(0); d.setPenStyle(wsiPenDot); line(d, 0, 3, 5, 3); },
         {{{"stroke", "#f00"}, {"d", "m0 0h5"}},
          {{"stroke-width", "2"}, {"d", "m0 1h5"}},
          {{"stroke-width", "2"}, {"stroke-dasharray", "8,4"}, {"d", "m0 2h5"}},
          {{"stroke-width", ""}, {"stroke-dasharray", "1,2"}, {"d", "m0 3h5"}}}},
        {"a polyline drops repeated points and joins straight runs",
         [](SVGDevice& d) {
             const SheetPoint p[] = {{1, 1}, {1, 1}, {4, 1}, {9, 1}, {9, 5}, {9, 8}, {2, 8}, {5, 8}};
             d.drawPolyline(8, p);
             d.drawPolygon(3, p + 3); },
         {{{"d", "m1 1h8v7h-7 3m4-7v7z"}}}},
        {"fills of one colour merge, convex polygons wound one way",
         [](SVGDevice& d) {
             d.setColor(wsiGray);
             d.fillRectangle(SheetRectangle(SheetPoint(1, 2), SheetPoint(11, 7)));
             d.fillRectangle(SheetRectangle(SheetPoint(20, 2), SheetPoint(30, 7)));
             const SheetPoint clockwise[] = {{0, 0}, {10, 0}, {0, 10}}, anti[] = {{0, 0}, {0, 10}, {10, 0}};
             d.fillPolygon(wsiBlue, 3, clockwise);
             d.fillPolygon(wsiBlue, 3, anti); },
         {{{"fill", "#a0a0a4"}, {"stroke", ""}, {"d", "m1 2h10v5h-10zm19 0h10v5h-10z"}},
          {{"fill", "#00f"}, {"stroke", "#00f"}, {"d", "m0 0h10l-10 10zm10 0-10 10v-10z"}}}},
        {"a polygon that is not convex gets its own element, filled odd-even",
         [](SVGDevice& d) {
             const SheetPoint star[] = {{50, 0}, {80, 90}, {0, 30}, {100, 30}, {20, 90}};
             d.fillPolygon(wsiRed, 5, star); d.fillPolygon(wsiRed, 5, star); },
         {{{"fill-rule", "evenodd"}}, {{"fill-rule", "evenodd"}}}},
        {"without a pen lines vanish and polygons keep their fill",
         [](SVGDevice& d) {
             d.setPenStyle(wsiPenNull); line(d, 0, 0, 9, 9);
             const SheetPoint p[] = {{0, 0}, {10, 0}, {0, 10}};
             d.fillPolygon(wsiBlack, 3, p); },
         {{{"fill", "#000"}, {"stroke", ""}}}},
        {"curves and ellipses",
         [](SVGDevice& d) {
             d.drawCurve(SheetPoint(10, 10), SheetPoint(30, 50));
             d.drawEllipse(SheetRectangle(SheetPoint(50, 20), SheetPoint(61, 40)), false);
             line(d, 70, 70, 75, 70); },
         {{{"d", "m10 10c10 0 10 40 20 40M50 30a5.5 10 0 1 0 11 0a5.5 10 0 1 0 -11 0zM70 70h5"}}}},
        {"texts of one font and colour share a group",
         [](SVGDevice& d) {
             WsiFont font("DejaVu Sans", 9), bold("DejaVu Sans", 7.5);
             bold.setBold(true);
             bold.setItalic(true);
             d.drawText("a<b", SheetPoint(5, 20), font);
             d.drawText("c & d", SheetPoint(5, 40), font);
             d.setColor(wsiDarkGreen);
             d.drawText("\"e\"", SheetPoint(5, 60), bold); },
         {{{"fill", "#000"}, {"font-family", "DejaVu Sans"}, {"font-size", "12"}, {"font-weight", ""}},
          {{"x", "5"}, {"y", "20"}}, {{"x", "5"}, {"y", "40"}},
          {{"fill", "#008000"}, {"font-size", "10"}, {"font-weight", "bold"}, {"font-style", "italic"}},
          {{"x", "5"}, {"y", "60"}}}},
        {"a clip is written once, around what is drawn under it",
         [](SVGDevice& d) {
             d.setClipRect(DeviceRectangle(10, 20, 110, 70));
             line(d, 0, 50, 200, 50); line(d, 0, 60, 200, 60);
             d.setClipRect(DeviceRectangle(0, 0, 5, 5));
             d.setClipRect(DeviceRectangle(10, 20, 110, 70));
             line(d, 0, 65, 200, 65);
             d.setClipRect(DeviceRectangle(0, 0, 5, 5));
             line(d, 0, 1, 9, 1); },
         {{{"id", "c1"}}, {{"x", "10"}, {"y", "20"}, {"width", "100"}, {"height", "50"}},
          {{"clip-path", "url(#c1)"}}, {{"d", "m10 50h100m-100 10h100m-100 5h100"}},
          {{"id", "c2"}}, {{"width", "5"}}, {{"clip-path", "url(#c2)"}}, {{"d", "m0 1h5"}}}},
        {"lines and fills are cut to the clip for renderers without clip paths",
         [](SVGDevice& d) {
             d.setClipRect(DeviceRectangle(10, 10, 20, 20));
             const SheetPoint corner[] = {{0, 12}, {15, 12}, {15, 40}};
             d.drawPolyline(3, corner);
             d.fillRectangle(SheetRectangle(SheetPoint(0, 0), SheetPoint(15, 30)));
             const SheetPoint triangle[] = {{0, 0}, {30, 0}, {0, 30}};
             d.fillPolygon(wsiRed, 3, triangle); },
         {{{"id", "c1"}}, {}, {}, {{"d", "m10 12h5v8"}}, {{"d", "m10 10h5v10h-5z"}},
          {{"d", "m20 10-10 10v-10z"}}}},
    };
    // clang-format on
    for (const auto& c : cases) {
        const std::vector<Element> elements = draw(c.paint);
        ASSERT_EQ(elements.size(), c.expected.size()) << c.name;
        for (std::size_t i = 0; i < elements.size(); ++i) {
            for (const auto& [name, value] : c.expected[i])
                EXPECT_EQ(elements[i].attribute(name).toStdString(), value)
                    << c.name << ": element " << i << ", " << name;
        }
    }
}

TEST_F(SVGDeviceTest, TextComesBackAsWrittenWhateverItsBytes) {
    const std::vector<Element> fixed = draw([](SVGDevice& d) {
        WsiFont font(nullptr, 9);
        d.drawText("<&>\"'\tx\xC3\xA9\xE2\x82\xAC\x01", SheetPoint(0, 20), font);
    });
    ASSERT_EQ(fixed.size(), 2U);
    EXPECT_FALSE(fixed[0].attribute("font-family").isEmpty()) << "Qt's default face by name";
    EXPECT_EQ(fixed[1].text, QString::fromUtf8("<&>\"'\tx\xC3\xA9\xE2\x82\xAC"));

    // Random bytes, awkward ones often: the file stays well-formed, and valid UTF-8 without
    // control characters comes back unchanged.
    std::mt19937 random(7);
    const char awkward[] = {'<',    '&',    '>',    '"',    '\'',   '\x01', '\x1f',
                            '\xC3', '\xA9', '\xE2', '\x82', '\xAC', '\xF0', '\x9F',
                            '\xED', '\xA0', '\xFF', 'a',    ' '};
    std::vector<std::string> texts(200);
    for (std::string& text : texts) {
        const std::size_t n = random() % 24 + 1;
        for (std::size_t i = 0; i < n; ++i)
            text += awkward[random() % sizeof awkward];
    }
    const std::vector<Element> elements = draw([&](SVGDevice& d) {
        WsiFont font("DejaVu Sans", 9);
        for (const std::string& text : texts)
            d.drawText(text.c_str(), SheetPoint(0, 20), font);
    });
    // One group of one font, then a text element for each text.
    ASSERT_EQ(elements.size(), texts.size() + 1);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const QString text = QString::fromUtf8(texts[i]);
        const bool plain = std::none_of(text.begin(), text.end(), [](QChar c) {
            return c == QChar(0xFFFD) || c.unicode() < 0x20;
        });
        if (plain && !text.trimmed().isEmpty()) {
            EXPECT_EQ(elements[i + 1].text, text) << texts[i];
        }
    }
}

TEST_F(SVGDeviceTest, SizeAndFontsFollowTheResolutionAndTheDisplayTransformation) {
    const std::vector<Element> elements = draw(
        [](SVGDevice& d) {
            d.setDisplayTransformation(TqMatrix(FloatPoint(2, 2), FloatPoint(5, 1)));
            line(d, 10, 10, 20, 10);
            WsiFont font("DejaVu Sans", 9);
            d.drawText("x", SheetPoint(0, 0), font);
        },
        192);
    ASSERT_EQ(elements.size(), 3U);
    EXPECT_EQ(elements[0].attribute("d"), "m25 21h20");
    EXPECT_EQ(elements[1].attribute("font-size"), "24");
    EXPECT_EQ(elements[2].attribute("x"), "5");
    QFile in(file());
    ASSERT_TRUE(in.open(QIODevice::ReadOnly));
    EXPECT_TRUE(in.readAll().contains("width=\"100\" height=\"50\" viewBox=\"0 0 200 100\""));
}

// The same drawing painted on an image and read back from the SVG through Qt's renderer.
TEST_F(SVGDeviceTest, ReadsBackLikeThePaintedImage) {
    auto paint = [](Device& d) {
        d.setBackgroundColor(wsiWhite);
        d.erase(DeviceRectangle(0, 0, v_width, v_height));
        d.setPenWidth(3);
        d.setColor(wsiBlue);
        line(d, 10, 10, 190, 10);
        d.setPenStyle(wsiPenDash);
        line(d, 10, 20, 190, 20);
        d.setPenStyle(wsiPenSolid);
        const SheetPoint triangle[] = {{20, 30}, {60, 30}, {20, 90}},
                         back[] = {{60, 90}, {20, 90}, {60, 30}};
        d.fillPolygon(wsiRed, 3, triangle);
        d.fillPolygon(wsiRed, 3, back);
        d.setColor(wsiDarkGreen);
        d.drawEllipse(SheetRectangle(SheetPoint(80, 40), SheetPoint(120, 80)), true);
        d.setClipRect(DeviceRectangle(140, 30, 170, 90));
        d.setColor(wsiBlack);
        d.fillRectangle(SheetRectangle(SheetPoint(130, 30), SheetPoint(190, 90)));
    };
    QImage expected(v_width, v_height, QImage::Format_RGB32);
    {
        TqPainter painter(&expected);
        Device device(painter);
        paint(device);
    }
    draw([&](SVGDevice& d) { paint(d); });
    const QImage image = rendered();
    const QPoint probes[] = {{100, 10}, {30, 40},  {50, 80},  {40, 60},  {100, 60},
                             {150, 60}, {135, 60}, {180, 60}, {100, 95}, {70, 35}};
    for (const QPoint& p : probes) {
        const QRgb a = image.pixel(p), b = expected.pixel(p);
        EXPECT_LE(std::abs(qRed(a) - qRed(b)) + std::abs(qGreen(a) - qGreen(b)) +
                      std::abs(qBlue(a) - qBlue(b)),
                  60)
            << "at (" << p.x() << ", " << p.y() << "): " << std::hex << a << " against " << b;
    }
}

// Text selects the caller's font only while it is written: the font selected before is
// selected again, and none when none was.
TEST_F(SVGDeviceTest, TextLeavesTheFontSelectionAsItFoundIt) {
    WsiFont kept("Sans", 10), passed("Serif", 14);
    for (WsiFont* before : {static_cast<WsiFont*>(nullptr), &kept}) {
        (void)draw([&](SVGDevice& device) {
            if (before)
                device.selectFont(*before);
            EXPECT_GT(device.drawText("plain", SheetPoint(5, 40), passed), 0);
            EXPECT_EQ(device.selectedFont(), before) << "drawText";
            (void)device.drawAlignedText("aligned", SheetPoint(100, 50), passed, wsiAlignHCenter,
                                         wsiAlignVCenter);
            EXPECT_EQ(device.selectedFont(), before) << "drawAlignedText";
        });
    }
}

TEST_F(SVGDeviceTest, AFileThatCannotBeOpenedLeavesADeviceThatDrawsNothing) {
    SVGDevice device("/nonexistent-folder/drawing.svg", "test", v_width, v_height);
    EXPECT_FALSE(device.isOpen());
    line(device, 0, 0, 10, 10);
    WsiFont font;
    EXPECT_GT(device.drawText("measured all the same", SheetPoint(0, 10), font), 0);
    EXPECT_FALSE(device.close());
}

} // namespace
