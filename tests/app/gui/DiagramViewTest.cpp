// The diagram view: its window of time under zoom, fit, scroll and keys, the cursor's values,
// and the repaint that follows a change of the diagram.
#include "gui/DiagramView.h"
#include "ImageProbes.h"

#include "hdl/BigInt.h"

#include "graphics/device/Device.h"
#include "graphics/device/TqPainter.h"

#include <QApplication>
#include <QImage>
#include <QKeyEvent>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>
#include <gtest/gtest.h>

void PrintTo(const DiagramView::CursorValue& value, std::ostream* out) {
    *out << value.signal << "=" << value.value;
}

namespace {

// clk: period 10, rising at 0; rst: 1 then 0 at 15; data[7:0]: x, then A5 at 20 and 3C at 60.
void buildDiagram(Diagram& diagram) {
    diagram.setTimeUnit(TimeUnit::ns);
    Signal& clk = diagram.addSignal("clk", SignalKind::Clock);
    ASSERT_TRUE(clk.setClock({.period = 10}));
    Signal& rst = diagram.addSignal("rst", SignalKind::Bit);
    ASSERT_TRUE(rst.appendChange(0, BitState::High));
    ASSERT_TRUE(rst.appendChange(15, BitState::Low));
    Signal& data = diagram.addSignal("data", SignalKind::Bus, 8);
    ASSERT_TRUE(data.appendBinary(0, "xxxxxxxx"));
    ASSERT_TRUE(data.appendChange(20, BigInt(0xA5)));
    ASSERT_TRUE(data.appendChange(60, BigInt(0x3C)));
    diagram.setSpan(0, 100);
}

class DiagramViewTest : public ::testing::Test {
public:
    void SetUp() override {
        buildDiagram(diagram);
        view = std::make_unique<DiagramView>(diagram);
        view->resize(800, 400);
        view->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
    }

    void key(int code) {
        QKeyEvent press(QEvent::KeyPress, code, Qt::NoModifier);
        QApplication::sendEvent(view.get(), &press);
    }

    Diagram diagram;
    std::unique_ptr<DiagramView> view;
};

TEST_F(DiagramViewTest, ZoomFitScrollAndKeysMoveTheWindowOfTime) {
    struct Step {
        const char* what;
        std::function<void(DiagramViewTest&)> act;
        Time from, to;
    };
    // clang-format off
    const Step steps[] = {
        {"starts fitted",          [](auto&) {},                                  0, 100},
        {"zoom in at the middle",  [](auto& t) { t.view->zoom(2); },              25, 75},
        {"zoom in around 30",      [](auto& t) { t.view->zoom(5, Time{30}); },    29, 39},
        {"scroll a page on",       [](auto& t) { t.view->scrollTime(1); },        39, 49},
        {"minus key widens",       [](auto& t) { t.key(Qt::Key_Minus); },         34, 54},
        {"plus key narrows",       [](auto& t) { t.key(Qt::Key_Plus); },          39, 49},
        {"right key scrolls",      [](auto& t) { t.key(Qt::Key_Right); },         40, 50},
        {"F fits",                 [](auto& t) { t.key(Qt::Key_F); },             0, 100},
        {"never below one unit",   [](auto& t) { t.view->zoom(1e6, Time{50}); },  50, 51},
    };
    // clang-format on
    for (const Step& step : steps) {
        step.act(*this);
        EXPECT_EQ(view->from(), step.from) << step.what;
        EXPECT_EQ(view->to(), step.to) << step.what;
    }
}

TEST_F(DiagramViewTest, CtrlWheelZoomsAtThePointerAndStatusShowsZoomAndSpan) {
    const std::optional<Time> under = view->timeAt(400);
    ASSERT_TRUE(under);
    const double before = view->pixelsPerTime();
    QWheelEvent wheel(QPointF(400, 100), view->mapToGlobal(QPoint(400, 100)), QPoint(),
                      QPoint(0, 120), Qt::NoButton, Qt::ControlModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(view->viewport(), &wheel);
    EXPECT_NEAR(view->pixelsPerTime(), before * 1.25, before * 0.02);
    // The time under the pointer stays under it, to the pixel.
    EXPECT_NEAR(static_cast<double>(*view->timeAt(400)), static_cast<double>(*under), 1.0);
    const std::string status = view->statusText();
    EXPECT_NE(status.find("px/ns"), std::string::npos) << status;
    EXPECT_NE(status.find(" - "), std::string::npos) << status;
}

TEST_F(DiagramViewTest, CursorShowsEverySignalsValueAtItsTime) {
    using Values = std::vector<DiagramView::CursorValue>;
    struct Case {
        Time time;
        Values values;
    };
    // clang-format off
    const Case cases[] = {
        {0,  {{"clk", "1"}, {"rst", "1"}, {"data", "XX"}}},
        {5,  {{"clk", "0"}, {"rst", "1"}, {"data", "XX"}}},
        {20, {{"clk", "1"}, {"rst", "0"}, {"data", "A5"}}},
        {99, {{"clk", "0"}, {"rst", "0"}, {"data", "3C"}}},
    };
    // clang-format on
    EXPECT_TRUE(view->cursorValues().empty());
    for (const Case& c : cases) {
        view->setCursorTime(c.time);
        EXPECT_EQ(view->cursorValues(), c.values) << "at " << c.time;
        EXPECT_NE(view->statusText().find("Cursor " + formatTime(c.time, TimeUnit::ns)),
                  std::string::npos);
    }
    // A click sets the cursor at the time under the pointer; Escape takes it away.
    const int x = 500;
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, QPoint(x, 100));
    EXPECT_EQ(view->cursorTime(), view->timeAt(x));
    key(Qt::Key_Escape);
    EXPECT_FALSE(view->cursorTime());
}

TEST_F(DiagramViewTest, OnlyChangesOfTheWindowOfTimeOrTheDiagramRenderAgain) {
    for (int s = 0; s < 40; ++s)
        diagram.addSignal("extra" + std::to_string(s), SignalKind::Bit);
    view->zoom(4);
    QApplication::processEvents();
    view->viewport()->repaint();
    QTest::qWait(400); // the pause that fills the picture
    struct Step {
        const char* what;
        std::function<void(DiagramView&)> act;
        int renders;
    };
    // clang-format off
    const Step steps[] = {
        {"vertical scroll", [](DiagramView& v) { v.verticalScrollBar()->setValue(60); }, 0},
        {"cursor",          [](DiagramView& v) { v.setCursorTime(30); },                0},
        {"zoom",            [](DiagramView& v) { v.zoom(2); },                          1},
        {"horizontal",      [](DiagramView& v) { v.scrollTime(0.5); },                  1},
        {"diagram change",  [](DiagramView& v) { (void)v; },                            1},
    };
    // clang-format on
    for (const Step& step : steps) {
        const int before = view->renderCount();
        if (std::string(step.what) == "diagram change")
            diagram.changed(aspectContents);
        step.act(*view);
        view->viewport()->repaint();
        EXPECT_EQ(view->renderCount() - before, step.renders) << step.what;
    }
}

// A frame after a zoom draws without the picture, and so does a scroll before the user pauses;
// once the user pauses, the rows in view are drawn into the picture, and a scroll by a row
// then draws only the strip it uncovers.
TEST_F(DiagramViewTest, APauseAfterAZoomFillsThePictureAndAScrollDrawsOnlyWhatItUncovers) {
    for (int s = 0; s < 40; ++s)
        diagram.addSignal("extra" + std::to_string(s), SignalKind::Bit);
    QApplication::processEvents();
    const int before = view->stripCount();
    view->zoom(2);
    view->viewport()->repaint();
    EXPECT_EQ(view->stripCount(), before) << "the frame after the zoom";
    const int renders = view->renderCount();
    view->verticalScrollBar()->setValue(view->verticalScrollBar()->value() + 30);
    view->viewport()->repaint();
    EXPECT_EQ(view->stripCount(), before) << "a scroll before the pause";
    EXPECT_EQ(view->renderCount(), renders + 1) << "a scroll before the pause";
    QTest::qWait(400);
    const int strips = view->viewport()->height() / 32;
    EXPECT_GE(view->stripCount() - before, strips) << "after the pause";
    EXPECT_LE(view->stripCount() - before, strips + 2) << "after the pause";
    const int filled = view->stripCount();
    view->verticalScrollBar()->setValue(view->verticalScrollBar()->value() + 30);
    view->viewport()->repaint();
    EXPECT_LE(view->stripCount() - filled, 2) << "scrolled by a row";
}

TEST_F(DiagramViewTest, DiagramChangeRepaintsAndPatternsChooseTheSignals) {
    QApplication::processEvents();
    const int paints = view->paintCount();
    ASSERT_TRUE(diagram.signal(1).appendChange(80, BitState::High));
    diagram.changed(aspectContents);
    QApplication::processEvents();
    EXPECT_GT(view->paintCount(), paints);
    view->setCursorTime(90);
    EXPECT_EQ(view->cursorValues()[1].value, "1");

    view->setPatterns({"d*"});
    ASSERT_EQ(view->cursorValues().size(), 1u);
    EXPECT_EQ(view->cursorValues()[0].signal, "data");
    view->setPatterns({"nothing"});
    EXPECT_TRUE(view->cursorValues().empty());
    EXPECT_FALSE(view->layoutError().empty());
    QApplication::processEvents(); // paints the message instead of the picture
}

// The first frame after a zoom draws the rows in view itself; later frames copy from a picture
// that gets rows as they scroll into view, and names from a cache kept across layouts. Every
// frame shows what the whole picture, drawn without either, shows at that place, but that Qt
// may step a sloped edge a pixel aside where a band's edge (the frame's or a strip's) cuts it.
TEST_F(DiagramViewTest, FramesShowTheWholePicturesPixelsWhereverTheyAreScrolled) {
    for (int s = 0; s < 60; ++s) {
        Signal& extra = diagram.addSignal("extra" + std::to_string(s), SignalKind::Bit);
        for (Time t = s % 7; t < 100; t += 3 + s % 5)
            ASSERT_TRUE(extra.appendChange(t, t % 2 ? BitState::High : BitState::Low));
    }
    auto expectWholePicture = [&](const std::string& what) {
        const int top = view->verticalScrollBar()->value();
        const QImage frame =
            view->viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
        const RenderOptions options = view->renderOptions();
        DiagramPainter painter(diagram, options);
        std::string error;
        ASSERT_TRUE(painter.layout(error)) << error;
        QImage whole(painter.width(), painter.height(), QImage::Format_RGB32);
        TqPainter qpainter(&whole);
        Device device(qpainter);
        painter.paint(device, 1);
        qpainter.end();
        const QImage shown = whole.copy(0, top, frame.width(), frame.height());
        const int rows = std::min(frame.height(), whole.height() - top);
        // Where a band's edge cuts a sloped edge, the rest of that edge may step differently:
        // up to a swing from the edges of a frame drawn straight into the viewport, and in the
        // rows next to a strip's edge in a copied frame.
        const int swing = static_cast<int>(DiagramPainter::v_swing);
        auto nearCut = [&](int y) {
            const int inStrip = (y + top) % DiagramView::v_stripHeight;
            return y < swing || y >= rows - swing || inStrip < 2 ||
                   inStrip >= DiagramView::v_stripHeight - 2;
        };
        int stray = 0, awayFromCuts = 0;
        for (int y = 0; y < rows; ++y) {
            for (int x = 0; x < frame.width(); ++x) {
                const QRgb a = frame.pixel(x, y), b = shown.pixel(x, y);
                if (a == b)
                    continue;
                awayFromCuts += !nearCut(y);
                stray += !colourNear(shown, x, y, a) || !colourNear(frame, x, y, b);
            }
        }
        EXPECT_EQ(stray, 0) << what << ", scrolled to " << top;
        EXPECT_EQ(awayFromCuts, 0) << what << ", scrolled to " << top;
    };
    view->zoom(2);
    for (int value : {0, 40, 700, 350, 10000}) {
        view->verticalScrollBar()->setValue(value);
        expectWholePicture("scrolled");
    }
    ASSERT_TRUE(diagram.renameSignal(diagram.findSignal("extra50"), "renamed.extra50"));
    expectWholePicture("renamed");
    view->verticalScrollBar()->setValue(500);
    expectWholePicture("renamed, scrolled");
    view->resize(500, 300);
    expectWholePicture("resized");
    view->zoom(3);
    expectWholePicture("zoomed");
}

TEST_F(DiagramViewTest, AWindowTallerThanTheDiagramIsWhiteBelowIt) {
    const RenderOptions options = view->renderOptions();
    DiagramPainter painter(diagram, options);
    std::string error;
    ASSERT_TRUE(painter.layout(error)) << error;
    const QImage frame = view->viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
    ASSERT_LT(painter.height(), frame.height());
    int dark = 0;
    for (int y = painter.height(); y < frame.height(); ++y)
        for (int x = 0; x < frame.width(); ++x)
            dark += frame.pixel(x, y) != qRgb(255, 255, 255);
    EXPECT_EQ(dark, 0);
}

} // namespace
