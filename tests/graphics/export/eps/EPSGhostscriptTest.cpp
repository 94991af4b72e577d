// The written EPS read back by Ghostscript: it renders without error, marks only inside the
// box it declares, and puts text upright where the device measured it.
#include "EPSTestSupport.h"

#include "graphics/device/TqPainter.h"

#include <QPainterPath>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <regex>

namespace {

struct Box {
    double left = 0, bottom = 0, right = 0, top = 0;
};

// The first "%%<name>BoundingBox: l b r t" line of text.
std::optional<Box> boundingBox(const std::string& text, const char* name = "") {
    const std::regex line(std::string("%%") + name +
                          "BoundingBox: (-?[0-9.]+) (-?[0-9.]+) (-?[0-9.]+) (-?[0-9.]+)");
    std::smatch m;
    if (!std::regex_search(text, m, line))
        return std::nullopt;
    return Box{std::stod(m[1]), std::stod(m[2]), std::stod(m[3]), std::stod(m[4])};
}

class Ghostscript : public testing::Test {
protected:
    void SetUp() override {
        m_gs = QStandardPaths::findExecutable("gs");
        ASSERT_FALSE(m_gs.isEmpty())
            << "Ghostscript (gs) is not installed: run scripts/install-deps, which installs "
               "the ghostscript package";
        ASSERT_TRUE(m_dir.isValid());
    }

    // Writes eps to a file, runs gs on it with device and the extra arguments, expects it to
    // succeed and returns what it wrote on its standard output and error.
    std::string run(const std::string& eps, const char* device, const QStringList& extra = {}) {
        const QString path = m_dir.filePath("drawing.eps");
        std::ofstream(path.toStdString(), std::ios::binary) << eps;
        QProcess gs;
        gs.setProcessChannelMode(QProcess::MergedChannels);
        QStringList arguments{"-q", "-dNOPAUSE", "-dBATCH", "-dSAFER",
                              QString("-sDEVICE=") + device};
        gs.start(m_gs, arguments + extra + QStringList{path});
        const bool finished = gs.waitForFinished(60000);
        const std::string output = gs.readAll().toStdString();
        EXPECT_TRUE(finished && gs.exitCode() == 0) << device << ": " << output;
        return output;
    }

    // Every check the suite makes of one EPS text.
    void checkRendersInsideItsBox(const std::string& eps, const char* what) {
        EXPECT_EQ(eps_test::countWord(eps, "gsave"), eps_test::countWord(eps, "grestore"))
            << what << ": every gsave has its grestore";
        const auto declared = boundingBox(eps);
        ASSERT_TRUE(declared) << what << ": no %%BoundingBox line";
        const std::string bbox = run(eps, "bbox");
        const auto marked = boundingBox(bbox, "HiRes");
        ASSERT_TRUE(marked) << what << ": gs reported no box: " << bbox;
        EXPECT_LT(marked->left, marked->right) << what << ": something is drawn";
        // Marks on the declared edge (a clip edge there) may round a little beyond it.
        constexpr double rounding = 0.01;
        EXPECT_GE(marked->left, declared->left - rounding) << what;
        EXPECT_GE(marked->bottom, declared->bottom - rounding) << what;
        EXPECT_LE(marked->right, declared->right + rounding) << what;
        EXPECT_LE(marked->top, declared->top + rounding) << what;
        const QString png = m_dir.filePath("drawing.png");
        EXPECT_EQ(run(eps, "png16m", {"-r72", "-sOutputFile=" + png}), "")
            << what << ": Ghostscript reported a problem";
        QImage image(png);
        EXPECT_FALSE(image.isNull()) << what;
    }

    QString m_gs;
    QTemporaryDir m_dir;
};

// The sample drawing and what only the device draws, 2000 x 1500 units placed on the letter
// page with a margin.
std::string deviceDrawing(bool gray) {
    std::ostringstream out;
    ExportParameters parameters;
    parameters.setGrayScale(gray);
    EPSDevice d(nullptr, "job", out, parameters);
    d.open(DeviceRectangle(0, 0, 2000, 1500), DeviceRectangle(500, 500, 2500, 2000));
    eps_test::drawSample(d);
    d.setColor(wsiPaleGreen);
    d.fillRectangle(SheetRectangle(1300, 500, 1500, 600));
    DevicePoint arrow[] = {{200, 1300}, {800, 1300}};
    d.drawCappedPolylineUnTransformed(wsiLineCapArrow, wsiLineCapArrow, {40, 30}, 2, arrow);
    WsiFont font("Times", 14);
    d.setColor(wsiBlack);
    d.drawText("escapes \xA9\n", SheetPoint(300, 600), font);
    d.endPath();
    d.close();
    d.endOfPage();
    return out.str();
}

TEST_F(Ghostscript, DeviceAndEngineDrawingsRenderWithoutErrorInsideTheirBoxes) {
    checkRendersInsideItsBox(deviceDrawing(false), "colour drawing");
    checkRendersInsideItsBox(deviceDrawing(true), "grey drawing");
    std::ostringstream out;
    EPSEngine engine(nullptr, "job", out, ExportParameters());
    engine.open(DeviceRectangle(0, 0, 1000, 1000), DeviceRectangle(1000, 1000, 2000, 2000));
    {
        TqPainter p(&engine.paintDevice());
        p.setPen(QPen(QColor(Qt::darkRed), 4, Qt::DashLine));
        p.setBrush(QColor(Qt::green));
        p.drawRect(QRect(100, 100, 200, 150));
        p.drawEllipse(QRectF(400, 100, 150, 150));
        QPainterPath path(QPointF(100, 500));
        path.cubicTo(QPointF(300, 300), QPointF(500, 700), QPointF(700, 500));
        path.lineTo(700, 800);
        path.closeSubpath();
        p.drawPath(path);
        p.setClipRect(QRect(0, 0, 900, 900));
        p.setFont(QFont("Courier", 20));
        p.drawText(QPoint(100, 900), "engine text");
        p.drawLine(-100, -100, 2000, 2000);
    }
    checkRendersInsideItsBox(out.str(), "engine drawing");
}

TEST_F(Ghostscript, TextIsUprightAtItsBaselineAndAsWideAsMeasured) {
    std::ostringstream out;
    EPSDevice d(nullptr, "job", out, ExportParameters());
    const DeviceRectangle page(0, 0, 3060, 3960);
    d.open(page, page);
    WsiFont font("Helvetica", 20);
    // Capitals without descenders: the marks lie between the baseline and the cap height.
    const long advance = d.drawText("HIHIH", SheetPoint(500, 1000), font);
    d.close();
    d.endOfPage();
    const std::string bbox = run(out.str(), "bbox");
    const auto marked = boundingBox(bbox, "HiRes");
    ASSERT_TRUE(marked) << bbox;
    // The baseline is 1000 units (200 points) below the top of the 792-point page.
    EXPECT_NEAR(marked->bottom, 592, 0.5) << "the glyphs stand on the baseline";
    EXPECT_NEAR(marked->top, 592 + 0.72 * 20, 1.0) << "upright, 20 points high (cap height)";
    EXPECT_NEAR(marked->left, 100, 2.0);
    EXPECT_NEAR(marked->right - marked->left, advance / 5.0, 4.0)
        << "the printed width is the measured advance (less the side bearings)";
}

} // namespace
