// PDF and SVG devices: the same drawing painted on an image, into a PDF read back through
// pdftoppm and into an SVG read back through Qt's renderer must agree at a few pixels.
#include "graphics/QtFileDevice.h"

#include <QDir>
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

QImage paintedImage() {
    QImage image(v_width, v_height, QImage::Format_RGB32);
    TqPainter painter(&image);
    Device device(painter);
    paintSample(device);
    painter.end();
    return image;
}

QImage svgImage(const QString& file) {
    QImage image(v_width, v_height, QImage::Format_RGB32);
    image.fill(Qt::white);
    QSvgRenderer renderer(file);
    QPainter painter(&image);
    renderer.render(&painter);
    return image;
}

QImage pdfImage(const QString& file, const QString& dir) {
    const QString pdftoppm = QStandardPaths::findExecutable("pdftoppm");
    if (pdftoppm.isEmpty()) {
        ADD_FAILURE() << "pdftoppm is missing: scripts/install-deps installs poppler-utils";
        return {};
    }
    const QString stem = dir + "/page";
    const int rc = QProcess::execute(pdftoppm, {"-r", "96", "-png", "-singlefile", file, stem});
    EXPECT_EQ(rc, 0);
    return QImage(stem + ".png").convertToFormat(QImage::Format_RGB32);
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
    const QImage expected = paintedImage();
    const struct {
        const char* name;
        QImage image;
    } outputs[] = {{"svg", svgImage(svg)}, {"pdf", pdfImage(pdf, dir.path())}};
    const QPoint probes[] = {{50, 40},  {22, 22},  {78, 58}, {130, 50}, {130, 15},
                             {100, 40}, {170, 80}, {5, 5},   {50, 70}};
    for (const auto& output : outputs) {
        ASSERT_EQ(output.image.size(), expected.size()) << output.name;
        for (const QPoint& p : probes) {
            EXPECT_TRUE(near(output.image.pixel(p), expected.pixel(p)))
                << output.name << " at (" << p.x() << ", " << p.y() << "): " << std::hex
                << output.image.pixel(p) << " against " << expected.pixel(p);
        }
    }
}

TEST(QtFileDevice, UnwritableFileLeavesADeviceThatDrawsNothing) {
    const char* file = "/nonexistent-folder/sample";
    PDFDevice pdf(file, "sample", v_width, v_height);
    SVGDevice svg(file, "sample", v_width, v_height);
    for (QtFileDevice* device :
         {static_cast<QtFileDevice*>(&pdf), static_cast<QtFileDevice*>(&svg)}) {
        EXPECT_FALSE(device->isOpen());
        EXPECT_EQ(device->painter(), nullptr);
        paintSample(*device);
        EXPECT_FALSE(device->close());
    }
}

} // namespace
