// PDF and SVG devices: the same drawing painted on an image, into a PDF read back through
// pdftoppm and into an SVG read back through Qt's renderer must agree at a few pixels.
#include "graphics/export/QtFileDevice.h"
#include "graphics/export/svg/SVGDevice.h"

#include <QImage>
#include <QProcess>
#include <QStandardPaths>
#include <QSvgRenderer>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstdlib>

namespace {

constexpr int v_width = 200, v_height = 100;

void paintSample(Device& device) {
    device.setBackgroundColor(wsiWhite);
    device.erase(DeviceRectangle(0, 0, v_width, v_height));
    device.setColor(wsiRed);
    device.fillRectangle(SheetRectangle(SheetPoint(20, 20), SheetPoint(80, 60)));
    device.setColor(wsiBlue);
    device.setPenWidth(6);
    device.drawLine(SheetPoint(130, 10), SheetPoint(130, 90));
}

// Close enough for anti-aliased renderers: every channel within 40.
bool near(QRgb a, QRgb b) {
    return std::abs(qRed(a) - qRed(b)) <= 40 && std::abs(qGreen(a) - qGreen(b)) <= 40 &&
           std::abs(qBlue(a) - qBlue(b)) <= 40;
}

TEST(QtFileDevice, PdfAndSvgReadBackLikeThePaintedImage) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString pdf = dir.filePath("sample.pdf"), svg = dir.filePath("sample.svg");
    {
        PDFDevice device(pdf.toUtf8().constData(), "sample", v_width, v_height);
        ASSERT_TRUE(device.isOpen());
        paintSample(device);
        EXPECT_TRUE(device.close());
        EXPECT_FALSE(device.close());
    }
    {
        SVGDevice device(svg.toUtf8().constData(), "sample", v_width, v_height);
        ASSERT_TRUE(device.isOpen());
        paintSample(device);
        // Left open: the destructor finishes the file.
    }
    QImage expected(v_width, v_height, QImage::Format_RGB32), fromSvg = expected.copy();
    {
        TqPainter painter(&expected);
        Device device(painter);
        paintSample(device);
    }
    fromSvg.fill(Qt::white);
    QPainter painter(&fromSvg);
    QSvgRenderer(svg).render(&painter);
    painter.end();
    const QString pdftoppm = QStandardPaths::findExecutable("pdftoppm");
    ASSERT_FALSE(pdftoppm.isEmpty()) << "scripts/install-deps installs poppler-utils";
    EXPECT_EQ(
        QProcess::execute(pdftoppm, {"-r", "96", "-png", "-singlefile", pdf, dir.filePath("page")}),
        0);
    const struct {
        const char* name;
        QImage image;
    } outputs[] = {{"svg", fromSvg},
                   {"pdf", QImage(dir.filePath("page.png")).convertToFormat(QImage::Format_RGB32)}};
    const QPoint probes[] = {{50, 40},  {22, 22},  {78, 58}, {130, 50}, {130, 15},
                             {100, 40}, {170, 80}, {5, 5},   {50, 70}};
    for (const auto& output : outputs) {
        ASSERT_EQ(output.image.size(), expected.size()) << output.name;
        for (const QPoint& p : probes)
            EXPECT_TRUE(near(output.image.pixel(p), expected.pixel(p)))
                << output.name << " at (" << p.x() << ", " << p.y() << "): " << std::hex
                << output.image.pixel(p) << " against " << expected.pixel(p);
    }
}

TEST(QtFileDevice, UnwritableFileLeavesADeviceThatDrawsNothing) {
    PDFDevice pdf("/nonexistent-folder/sample", "sample", v_width, v_height);
    EXPECT_FALSE(pdf.isOpen());
    EXPECT_EQ(pdf.painter(), nullptr);
    paintSample(pdf);
    EXPECT_FALSE(pdf.close());
}

} // namespace
