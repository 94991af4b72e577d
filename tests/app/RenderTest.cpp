// The renderer: each signal kind and state at sample pixels of the PNG, the same samples in
// the PDF (through pdftoppm), the EPS (through Ghostscript) and the SVG (through Qt's SVG
// renderer), and level of detail: a signal's cost follows the output's width, not its
// number of changes.
#include "ImageProbes.h"
#include "render/DiagramExporter.h"
#include "render/DiagramPainter.h"
#include "render/WaveformRuns.h"

#include "graphics/device/Device.h"
#include "graphics/device/TqPainter.h"

#include <QImage>
#include <QPainter>
#include <QPicture>
#include <QSvgRenderer>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

namespace {

// One row of each kind and state, on a 0..100 ns axis.
void sampleDiagram(Diagram& d) {
    d.setTitle("Samples");
    d.setSpan(0, 100);
    Signal& clk = d.addSignal("clk", SignalKind::Clock);
    ASSERT_TRUE(clk.setClock({.period = 20, .duty = 50, .phase = 0}));
    Signal& bit = d.addSignal("bit", SignalKind::Bit);
    const char states[] = "01xzlh";
    for (int i = 0; i < 6; ++i) {
        BitState s{};
        ASSERT_TRUE(parseBitState(states[i], s));
        ASSERT_TRUE(bit.appendChange(i * 16, s));
    }
    Signal& bus = d.addSignal("bus", SignalKind::Bus, 8);
    ASSERT_TRUE(bus.appendChange(0, BigInt(0xA5)));
    ASSERT_TRUE(bus.appendChange(40, BitState::Unknown));
    ASSERT_TRUE(bus.appendChange(70, BitState::HighZ));
    d.addSignal("gap", SignalKind::Spacer);
    d.addArrow({{"gap", 20}, {"gap", 80}, "", ArrowShape::Curved, ArrowHeads::Both});
}

// Inked is any ink but white: the formats map the dark colours slightly differently.
enum class Ink { White, Dark, Blue, Any, Inked };

Ink classify(QRgb pixel) {
    const int r = qRed(pixel), g = qGreen(pixel), b = qBlue(pixel);
    if (r > 235 && g > 235 && b > 235)
        return Ink::White;
    if (b > 150 && b > r + 80 && b > g + 80)
        return Ink::Blue;
    return r + g + b < 3 * 170 ? Ink::Dark : Ink::Any;
}

// Whether some pixel within two pixels of (x, y) has the ink: antialiasing and the formats'
// own rounding move lines by a pixel.
bool inkNear(const QImage& image, double x, double y, Ink ink) {
    for (int dy = -2; dy <= 2; ++dy) {
        for (int dx = -2; dx <= 2; ++dx) {
            const int px = static_cast<int>(x) + dx, py = static_cast<int>(y) + dy;
            if (!image.valid(px, py))
                continue;
            const Ink found = classify(image.pixel(px, py));
            if (found == ink || (ink == Ink::Inked && found != Ink::White))
                return true;
        }
    }
    return false;
}

// How many pixels of a box are not white.
int inkIn(const QImage& image, double x0, double y0, double x1, double y1) {
    int count = 0;
    for (int y = static_cast<int>(y0); y < static_cast<int>(y1); ++y)
        for (int x = static_cast<int>(x0); x < static_cast<int>(x1); ++x)
            count += image.valid(x, y) && classify(image.pixel(x, y)) != Ink::White;
    return count;
}

struct Sample {
    const char* what;
    const char* signal;
    Time time;
    double dy; // from the row's middle: -9 the high level, +9 the low level
    Ink ink;
};

// clang-format off
const Sample v_samples[] = {
    {"clock high", "clk", 5, -9, Ink::Inked},   {"clock high, nothing low", "clk", 5, 9, Ink::White},
    {"clock low", "clk", 15, 9, Ink::Inked},    {"clock low, nothing high", "clk", 15, -9, Ink::White},
    {"bit 0", "bit", 8, 9, Ink::Inked},         {"bit 0, nothing high", "bit", 8, -9, Ink::White},
    {"bit 1", "bit", 24, -9, Ink::Inked},       {"bit 1, nothing low", "bit", 24, 9, Ink::White},
    {"bit z at mid level", "bit", 56, 0, Ink::Blue}, {"bit z, nothing high", "bit", 56, -9, Ink::White},
    {"bus value outline", "bus", 20, -9, Ink::Inked}, {"bus z at mid level", "bus", 85, 0, Ink::Blue},
    {"bus z, nothing high", "bus", 85, -9, Ink::White},
    {"spacer, no waveform", "gap", 50, 0, Ink::White}, {"spacer, nothing low", "gap", 50, 9, Ink::White},
    {"curved arrow over its row", "gap", 50, -12, Ink::Dark}, {"arrow head at its start", "gap", 21, -12, Ink::Dark},
};
// clang-format on

// Checks every sample on image, a picture of painter's layout at scale pixels to a layout
// pixel; names the format in failures.
void checkSamples(const QImage& image, const DiagramPainter& painter, double scale,
                  const char* format) {
    ASSERT_FALSE(image.isNull()) << format;
    for (const Sample& s : v_samples) {
        const double x = painter.timeScale().x(s.time) * scale;
        const double y = (painter.rowMiddle(s.signal) + s.dy) * scale;
        EXPECT_TRUE(inkNear(image, x, y, s.ink)) << format << ": " << s.what;
    }
    // X is hatched: ink all over its slot, between the levels too.
    const TimeScale& t = painter.timeScale();
    const double bit = painter.rowMiddle("bit"), bus = painter.rowMiddle("bus");
    EXPECT_GT(inkIn(image, t.x(35) * scale, (bit - 5) * scale, t.x(45) * scale, (bit + 5) * scale),
              10 * scale * scale)
        << format << ": bit x hatched";
    EXPECT_GT(inkIn(image, t.x(50) * scale, (bus - 5) * scale, t.x(60) * scale, (bus + 5) * scale),
              10 * scale * scale)
        << format << ": bus x hatched";
    // A weak level is dashed: ink on its line, but gaps too.
    const double weak = (bit + 9) * scale;
    const int inked = inkIn(image, t.x(66) * scale, weak - 1, t.x(78) * scale, weak + 2);
    const double length = (t.x(78) - t.x(66)) * scale;
    EXPECT_GT(inked, length * 0.4) << format << ": weak low drawn";
    EXPECT_LT(inked, length * 3 * 0.9) << format << ": weak low dashed";
    // The bus value is written inside its slot, the unknown slot holds no text.
    EXPECT_GT(inkIn(image, t.x(12) * scale, (bus - 4) * scale, t.x(28) * scale, (bus + 4) * scale),
              15 * scale * scale)
        << format << ": bus value text";
}

// A folder of the test's own: ctest runs the tests of this file side by side.
std::string temporaryFolder() {
    const auto folder =
        std::filesystem::temp_directory_path() /
        (std::string("tq_app_") + ::testing::UnitTest::GetInstance()->current_test_info()->name() +
         "_" + std::to_string(getpid()));
    std::filesystem::create_directories(folder);
    return folder.string();
}

bool haveProgram(const char* name) {
    return std::system((std::string("command -v ") + name + " >/dev/null 2>&1").c_str()) == 0;
}

class RenderSamples : public ::testing::Test {
protected:
    void SetUp() override {
        sampleDiagram(m_diagram);
        m_options.width = 600;
        m_options.slopedEdges = false;
        std::string error;
        ASSERT_TRUE(m_painter.layout(error)) << error;
        m_folder = temporaryFolder();
    }
    void TearDown() override { std::filesystem::remove_all(m_folder); }

    std::string exportTo(OutputFormat format) {
        const std::string path = m_folder + "/d." + outputFormatName(format);
        std::string error;
        EXPECT_TRUE(DiagramExporter::exportFile(m_diagram, m_options, path, format, error))
            << error;
        return path;
    }

    Diagram m_diagram;
    RenderOptions m_options;
    DiagramPainter m_painter{m_diagram, m_options};
    std::string m_folder;
};

TEST_F(RenderSamples, PngShowsEveryKindAndStateAtItsPlace) {
    for (double scale : {1.0, 2.0}) {
        m_options.scale = scale;
        QImage image;
        std::string error;
        ASSERT_TRUE(DiagramExporter::renderImage(m_diagram, m_options, image, error)) << error;
        EXPECT_EQ(image.width(), static_cast<int>(600 * scale));
        checkSamples(image, m_painter, scale, scale == 1 ? "png" : "png at scale 2");
    }
    m_options.scale = 1;
    const QImage file(QString::fromStdString(exportTo(OutputFormat::Png)));
    checkSamples(file, m_painter, 1, "png file");
}

TEST_F(RenderSamples, PdfEpsAndSvgShowTheSamePicture) {
    const std::string svg = exportTo(OutputFormat::Svg);
    QSvgRenderer renderer(QString::fromStdString(svg));
    ASSERT_TRUE(renderer.isValid());
    QImage image(m_painter.width(), m_painter.height(), QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    renderer.render(&painter);
    painter.end();
    checkSamples(image, m_painter, 1, "svg");

    if (haveProgram("pdftoppm")) {
        const std::string pdf = exportTo(OutputFormat::Pdf);
        ASSERT_EQ(std::system(
                      ("pdftoppm -png -r 96 -singlefile " + pdf + " " + m_folder + "/pdf").c_str()),
                  0);
        checkSamples(QImage(QString::fromStdString(m_folder + "/pdf.png")), m_painter, 1, "pdf");
    }
    if (haveProgram("gs")) {
        const std::string eps = exportTo(OutputFormat::Eps);
        ASSERT_EQ(std::system(("gs -q -dSAFER -dBATCH -dNOPAUSE -sDEVICE=png16m -r96 -dEPSCrop "
                               "-sOutputFile=" +
                               m_folder + "/eps.png " + eps)
                                  .c_str()),
                  0);
        checkSamples(QImage(QString::fromStdString(m_folder + "/eps.png")), m_painter, 1, "eps");
    }
    std::ifstream mif(exportTo(OutputFormat::Mif));
    std::stringstream text;
    text << mif.rdbuf();
    EXPECT_EQ(text.str().rfind("<MIFFile", 0), 0u);
    for (const char* expected : {"<PolyLine", "`A5'", "`clk'", "`Samples'"})
        EXPECT_NE(text.str().find(expected), std::string::npos) << "mif lacks " << expected;
}

TEST(WaveformRuns, ChangesInOnePixelColumnBecomeOneDenseBlock) {
    // clang-format off
    const struct { const char* what; std::vector<Time> times; const char* expected; } cases[] = {
        {"apart", {0, 40, 80}, "S0-10 S10-20 S20-100"},
        {"two in a column", {0, 40, 41, 120}, "S0-10 D10-11 S11-30 S30-100"},
        {"a burst over columns", {0, 200, 203, 206, 209, 212, 215, 240}, "S0-50 D50-54 S54-60 S60-100"},
        {"before the window", {-120, -80, 160}, "S0-40 S40-100"},
        {"after the window", {480}, ""},
        {"starts late", {100}, "S25-100"},
    };
    // clang-format on
    for (const auto& c : cases) {
        Signal s("s", SignalKind::Bit);
        for (std::size_t i = 0; i < c.times.size(); ++i)
            ASSERT_TRUE(s.appendChange(c.times[i], i % 2 ? BitState::High : BitState::Low));
        // 4 time units a pixel.
        const TimeScale scale(0, 400, 0, 100);
        std::vector<WaveformRun> runs;
        collectRuns(s, scale, runs);
        std::ostringstream shown;
        for (const WaveformRun& r : runs)
            shown << (shown.tellp() > 0 ? " " : "") << (r.kind == WaveformRun::Dense ? "D" : "S")
                  << r.x0 << "-" << r.x1;
        EXPECT_EQ(shown.str(), c.expected) << c.what;
    }
}

TEST(WaveformRuns, AMillionChangesCostTheOutputsWidth) {
    Diagram d;
    Signal& s = d.addSignal("fast", SignalKind::Bit);
    s.reserve(1000000);
    for (Time t = 0; t < 1000000; ++t)
        ASSERT_TRUE(s.appendChange(t * 4 + t % 3, t % 2 ? BitState::High : BitState::Low));
    const TimeScale scale(0, 4000000, 100, 2100);
    std::vector<WaveformRun> runs;
    collectRuns(s, scale, runs);
    ASSERT_EQ(runs.size(), 1u);
    EXPECT_EQ(runs[0].kind, WaveformRun::Dense);
    EXPECT_DOUBLE_EQ(runs[0].x1, 2100);
    // Zoomed in to 500 changes across 2000 pixels, each change is visible again.
    collectRuns(s, TimeScale(1200000, 1202000, 0, 2000), runs);
    EXPECT_GE(runs.size(), 500u);
    EXPECT_TRUE(std::all_of(runs.begin(), runs.end(),
                            [](const WaveformRun& r) { return r.kind == WaveformRun::Steady; }));

    RenderOptions options;
    options.width = 2000;
    QImage image;
    std::string error;
    ASSERT_TRUE(DiagramExporter::renderImage(d, options, image, error)) << error;
    DiagramPainter painter(d, options);
    ASSERT_TRUE(painter.layout(error));
    const double middle = painter.rowMiddle("fast");
    EXPECT_GT(inkIn(image, 300, middle - 6, 1900, middle + 6), 1600 * 10)
        << "a dense block fills the row";
}

TEST(WaveformRuns, BusyStretchesBecomeOneBlockButALoneGlitchStays) {
    // clang-format off
    const struct { const char* what; std::vector<Time> times; const char* expected; } cases[] = {
        {"a lone glitch", {0, 40, 44, 120}, "S0-10 /S10-11 /S11-30 /S30-100"},
        {"two narrow levels", {0, 40, 44, 49, 120}, "S0-10 D10-12.25 S12.25-30 /S30-100"},
        {"dense, narrow, dense", {0, 40, 41, 45, 48, 49, 120}, "S0-10 D10-13 S13-30 /S30-100"},
        {"wide level between blocks", {0, 40, 41, 60, 61, 120}, "S0-10 D10-11 S11-15 D15-16 S16-30 /S30-100"},
        // More columns than are searched at once.
        {"a long burst", {0, 100, 101, 102, 103, 104, 105, 106, 107, 108, 109, 110, 111, 112, 113,
                          114, 115, 116, 117, 118, 119, 120, 121, 122, 123, 124, 125, 126, 127,
                          128, 129, 130, 131, 132, 133, 134, 135, 136, 137, 138, 139, 140, 141,
                          142, 143, 144, 145, 146, 147, 148, 149, 150, 151, 152, 153, 154, 155,
                          156, 157, 158, 159, 160, 161, 162, 163, 164, 165, 166, 167, 300},
         "S0-25 D25-42 S42-75 /S75-100"},
    };
    // clang-format on
    for (const auto& c : cases) {
        Signal s("s", SignalKind::Bit);
        for (std::size_t i = 0; i < c.times.size(); ++i)
            ASSERT_TRUE(s.appendChange(c.times[i], i % 2 ? BitState::High : BitState::Low));
        // 4 time units a pixel; "/" marks a level that starts with an edge.
        std::vector<WaveformRun> runs;
        collectRuns(s, TimeScale(0, 400, 0, 100), runs);
        std::ostringstream shown;
        for (const WaveformRun& r : runs)
            shown << (shown.tellp() > 0 ? " " : "") << (r.edge ? "/" : "")
                  << (r.kind == WaveformRun::Dense ? "D" : "S") << r.x0 << "-" << r.x1;
        EXPECT_EQ(shown.str(), c.expected) << c.what;
    }
}

// A text slot's bits read as all X, but it is drawn as a slot with a value: outlined, never
// hatched, even when its text is empty.
TEST(WaveformRuns, TextSlotsAreDrawnAsSlotsWithAValueNotAsUnknownOnes) {
    Diagram d;
    d.setSpan(0, 100);
    Signal& bus = d.addSignal("bus", SignalKind::Bus, 8);
    // clang-format off
    const struct { Time time; const char* text; const char* digits; BitState state; } steps[] = {
        {0, nullptr, "x", BitState::Unknown}, {20, "", nullptr, BitState::High},
        {40, "IDLE", nullptr, BitState::High}, {60, nullptr, "10100101", BitState::High},
        {80, nullptr, "z", BitState::HighZ},
    };
    // clang-format on
    for (const auto& slot : steps)
        ASSERT_TRUE(slot.text ? bus.appendText(slot.time, slot.text)
                              : bus.appendBinary(slot.time, slot.digits));
    std::vector<WaveformRun> runs;
    collectRuns(bus, TimeScale(0, 100, 0, 100), runs);
    ASSERT_EQ(runs.size(), std::size(steps));
    for (std::size_t i = 0; i < runs.size(); ++i)
        EXPECT_EQ(runs[i].state, steps[i].state) << "slot at " << steps[i].time;

    RenderOptions options;
    QImage image;
    std::string error;
    ASSERT_TRUE(DiagramExporter::renderImage(d, options, image, error)) << error;
    DiagramPainter painter(d, options);
    ASSERT_TRUE(painter.layout(error));
    const TimeScale& t = painter.timeScale();
    const double middle = painter.rowMiddle("bus");
    auto inside = [&](Time from) {
        return inkIn(image, t.x(from + 5), middle - 5, t.x(from + 15), middle + 5);
    };
    EXPECT_GT(inside(0), 20) << "the unknown slot is hatched";
    EXPECT_EQ(inside(20), 0) << "the slot with an empty text is blank inside";
}

// Text blended through a clip may round its antialiasing a grey level differently.
bool samePixel(QRgb a, QRgb b) {
    return std::abs(qRed(a) - qRed(b)) <= 2 && std::abs(qGreen(a) - qGreen(b)) <= 2 &&
           std::abs(qBlue(a) - qBlue(b)) <= 2;
}

// A picture painted in bands shows in each band what the whole picture shows there, and
// leaves everything outside the band alone.
TEST(DiagramPainterBand, ABandShowsTheSamePixelsAsTheWholePicture) {
    Diagram d;
    sampleDiagram(d);
    Signal& fast = d.addSignal("fast", SignalKind::Bit, 1, "Busy");
    for (Time t = 0; t < 100; ++t)
        ASSERT_TRUE(fast.appendChange(t, t % 3 ? BitState::High : BitState::Low));
    d.addSignal("idle", SignalKind::Bit, 1, "Busy");
    d.setGrid({.visible = true, .spacing = 10});
    d.addMarker({.time = 50, .label = "half"});
    d.addArrow({.from = {"bit", 16}, .to = {"fast", 40}, .label = "cause"});
    d.addAnnotation({.time = 30, .signal = "fast", .text = "busy"});
    d.addGap({.time = 70, .signal = ""});
    // clang-format off
    const struct { Time from, to; double top, bottom; } cases[] = {
        {0, 100, 0, 40},     {0, 100, 100, 131},  {0, 100, 143, 250},
        {20, 40, 61, 190},   {45, 55, 180, 400},  {0, 100, 0, 400},
    };
    // clang-format on
    for (const auto& c : cases) {
        RenderOptions options;
        options.width = 600;
        options.from = c.from;
        options.to = c.to;
        DiagramPainter painter(d, options);
        std::string error;
        ASSERT_TRUE(painter.layout(error)) << error;
        auto paint = [&](bool band) {
            QImage image(painter.width(), painter.height(), QImage::Format_RGB32);
            image.fill(Qt::magenta);
            TqPainter qpainter(&image);
            qpainter.setRenderHint(QPainter::Antialiasing);
            Device device(qpainter);
            if (band)
                painter.paintBand(device, 1, c.top, c.bottom);
            else
                painter.paint(device, 1);
            qpainter.end();
            return image;
        };
        const QImage whole = paint(false), part = paint(true);
        const int bottom = std::min(static_cast<int>(c.bottom), painter.height());
        int differing = 0, outside = 0;
        for (int y = 0; y < painter.height(); ++y) {
            for (int x = 0; x < painter.width(); ++x) {
                if (y >= c.top && y < bottom)
                    differing += !samePixel(part.pixel(x, y), whole.pixel(x, y));
                else
                    outside += part.pixel(x, y) != QColor(Qt::magenta).rgb();
            }
        }
        EXPECT_EQ(differing, 0) << c.from << ".." << c.to << " band " << c.top << ".." << c.bottom;
        EXPECT_EQ(outside, 0) << c.from << ".." << c.to << " band " << c.top << ".." << c.bottom;
    }
}

// On the screen (pixels one for one, no antialiasing) wide level lines are drawn as thin ones
// and unknown slots with a brush. The picture must show what the general paths draw (here
// recorded in a QPicture, which takes them, and played back on an image): every pixel that
// differs has its colour a pixel away in the other picture, and few differ.
TEST(DiagramPainterOnScreen, FastPathsDrawWhatTheGeneralPathsDraw) {
    Diagram d;
    sampleDiagram(d);
    // Unknown slots from narrower than a stroke's run to wider than a row, between levels.
    Signal& unknown = d.addSignal("unknown", SignalKind::Bit);
    Time t = 0;
    for (Time width : {1, 2, 3, 5, 8, 13, 21, 34}) {
        ASSERT_TRUE(unknown.appendChange(t, BitState::Unknown));
        ASSERT_TRUE(unknown.appendChange(t + width, t % 2 ? BitState::High : BitState::Low));
        t += width + 4;
    }
    Signal& bus = d.addSignal("busx", SignalKind::Bus, 4);
    ASSERT_TRUE(bus.appendBinary(0, "xxxx"));
    ASSERT_TRUE(bus.appendChange(50, BigInt(3)));
    // clang-format off
    const struct { Time from, to; bool sloped; } windows[] = {
        {0, 100, true}, {0, 100, false}, {10, 40, true}, {0, 400, true},
    };
    // clang-format on
    for (const auto& w : windows) {
        RenderOptions options;
        options.width = 700;
        options.from = w.from;
        options.to = w.to;
        options.slopedEdges = w.sloped;
        DiagramPainter painter(d, options);
        std::string error;
        ASSERT_TRUE(painter.layout(error)) << error;
        QImage fast(painter.width(), painter.height(), QImage::Format_RGB32);
        QImage general = fast;
        {
            TqPainter qpainter(&fast);
            Device device(qpainter);
            painter.paint(device, 1);
        }
        QPicture recorded;
        {
            TqPainter qpainter(&recorded);
            Device device(qpainter);
            painter.paint(device, 1);
        }
        {
            QPainter replay(&general);
            replay.drawPicture(0, 0, recorded);
        }
        int differing = 0, stray = 0, ink = 0, greyFast = 0, greyGeneral = 0;
        const QRgb grey = QColor(Qt::gray).rgb(), white = QColor(Qt::white).rgb();
        for (int y = 0; y < fast.height(); ++y) {
            for (int x = 0; x < fast.width(); ++x) {
                const QRgb a = fast.pixel(x, y), b = general.pixel(x, y);
                ink += b != white;
                greyFast += a == grey;
                greyGeneral += b == grey;
                if (a == b)
                    continue;
                ++differing;
                stray += !colourNear(general, x, y, a) || !colourNear(fast, x, y, b);
            }
        }
        const std::string what = std::to_string(w.from) + ".." + std::to_string(w.to) +
                                 (w.sloped ? " sloped" : " sharp");
        // A slot a pixel or two wide may take its strokes' pixels from another row; a sloped
        // edge may step a row earlier or later.
        EXPECT_LE(stray, 2) << what;
        EXPECT_LT(differing, ink / 8) << what;
        EXPECT_NEAR(greyFast, greyGeneral, greyGeneral / 10) << what << ": hatch strokes";
    }
}

TEST(DiagramLayout, GroupsGetHeadingsAndUngroupedSignalsAfterAGroupARule) {
    struct Case {
        std::vector<std::pair<const char*, const char*>> lanes; // name, group
        const char* rows; // "[group]" a heading, "[]" a bare rule, a name a signal's row
    };
    // clang-format off
    const Case cases[] = {
        {{{"a", ""}, {"b", ""}}, "a b"},
        {{{"a", "G"}, {"b", "G"}}, "[G] a b"},
        {{{"a", ""}, {"b", "G"}}, "a [G] b"},
        {{{"a", "G"}, {"b", ""}, {"c", ""}}, "[G] a [] b c"},
        {{{"a", "G"}, {"b", "H"}, {"c", ""}}, "[G] a [H] b [] c"},
    };
    // clang-format on
    for (const Case& c : cases) {
        Diagram d;
        d.setSpan(0, 100);
        for (const auto& [name, group] : c.lanes)
            d.addSignal(name, SignalKind::Bit, 1, group);
        RenderOptions options;
        DiagramPainter painter(d, options);
        std::string error;
        ASSERT_TRUE(painter.layout(error)) << error;
        std::string shown;
        double bottom = painter.rows().front().top;
        for (const DiagramPainter::Row& row : painter.rows()) {
            shown.append(shown.empty() ? "" : " ");
            shown.append(row.signal == Signal::npos ? "[" + row.group + "]"
                                                    : d.signal(row.signal).name());
            EXPECT_DOUBLE_EQ(row.top, bottom) << c.rows << ": rows follow without gaps";
            bottom = row.top + row.height;
        }
        EXPECT_EQ(shown, c.rows);
    }
}

TEST(BusValueText, TextSlotsShowTheirTextWholeWhenItFitsAndShortenedWhenNot) {
    Diagram d;
    d.setSpan(0, 100);
    Signal& bus = d.addSignal("state", SignalKind::Bus, 2);
    const std::string tooLong = "WAITING_FOR_THE_SLOWEST_TARGET";
    // clang-format off
    const struct { Time time; std::string text; const char* shown; } cases[] = {
        {0, "IDLE", "IDLE"}, {40, tooLong, "WAIT"}, {50, "", nullptr}, {60, "A&B <c>", "A&amp;B"},
    };
    // clang-format on
    for (const auto& c : cases)
        ASSERT_TRUE(bus.appendText(c.time, c.text));
    EXPECT_EQ(busValueText(bus, 1), tooLong);
    const auto output = std::filesystem::temp_directory_path() /
                        ("tq_app_text_slots_" + std::to_string(getpid()) + ".svg");
    std::string error;
    ASSERT_TRUE(
        DiagramExporter::exportFile(d, RenderOptions(), output.string(), OutputFormat::Svg, error))
        << error;
    std::ifstream in(output);
    std::stringstream svg;
    svg << in.rdbuf();
    std::filesystem::remove(output);
    for (const auto& c : cases) {
        if (c.shown) {
            EXPECT_NE(svg.str().find(c.shown), std::string::npos) << c.text;
        }
    }
    EXPECT_EQ(svg.str().find(tooLong), std::string::npos) << "the long text is shortened";
    EXPECT_NE(svg.str().find(".."), std::string::npos);
}

TEST(BusValueText, RadixAndNotationAsDesignersWriteThem) {
    // clang-format off
    const struct { Radix radix; HDLanguage notation; const char* bits; const char* text; } cases[] = {
        {RadixHexadecimal, HDLNone, "10100101", "A5"},
        {RadixHexadecimal, HDLVerilog, "10100101", "8'hA5"},
        {RadixHexadecimal, HDLVHDL, "10100101", "8X\"A5\""},
        {RadixBinary, HDLVerilog, "1010xz01", "8'b1010XZ01"},
        {RadixDecimal, HDLNone, "10100101", "165"},
        {RadixPlainDecimal, HDLNone, "11111101", "-3"},
        {RadixPlainDecimal, HDLVerilog, "00000011", "3"},
        {RadixDecimal, HDLNone, "1010x101", "X"},
        {RadixOctal, HDLNone, "10100101", "245"},
        {RadixHexadecimal, HDLNone, "xxxx0101", "X5"},
    };
    // clang-format on
    for (const auto& c : cases) {
        Signal bus("b", SignalKind::Bus, 8);
        bus.setBusFormat({c.radix, c.notation});
        ASSERT_TRUE(bus.appendBinary(0, c.bits));
        EXPECT_EQ(busValueText(bus, 0), c.text) << c.bits << " radix " << c.radix;
    }
}

} // namespace
