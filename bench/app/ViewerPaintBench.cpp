// The viewer's frames on a 1920 x 1080 window onto a diagram of 200 signals with 1,000,000
// changes each, at the whole span (fit), a thousandth of it (mid) and 2,000 time units (deep:
// a unit or so a pixel):
//
// - a frame after a zoom (the window of time narrowed by a fifth or widened back around its
//   middle) and after a horizontal scroll (an eighth of the window, the arrow keys' step): the
//   renderer draws the rows in view again;
// - a scrolling frame (vertical scroll by a row, cursor, uncovered parts) once the user has
//   paused and the view has filled its picture: the exposed area is copied from the picture,
//   drawing only rows not drawn before. A scroll before that pause is drawn as the frame after
//   a zoom is.
//
// Each frame paints the whole viewport, halfway down the diagram, as a real window's paint
// event after such a step does. The figure is each frame's thread CPU time (the target is
// 16 ms); the baseline, timed in the same iterations, is the same frame on 200 signals of 1,000
// changes, so the ratio shows what the million changes cost beyond a light diagram's frame.
//
// The million-change diagram takes about 2 GB: bit signals keep 9 bytes a change.
#include "ThreadClock.h"
#include "gui/DiagramView.h"

#include "core/TqObject.h"
#include "hdl/BigInt.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QScrollBar>
#include <QThread>
#include <benchmark/benchmark.h>

#include <memory>
#include <random>

namespace {

constexpr Time v_span = 100000000;

// 200 signals over the span, every tenth an 8-bit bus, changes in bursts and pauses.
std::unique_ptr<Diagram> makeDiagram(std::size_t changes) {
    auto d = std::make_unique<Diagram>();
    d->setSpan(0, v_span);
    std::mt19937_64 random(7);
    const auto meanGap = static_cast<std::uint64_t>(v_span / static_cast<Time>(changes));
    for (int s = 0; s < 200; ++s) {
        const bool bus = s % 10 == 9;
        std::string name = "top.block";
        name.append(std::to_string(s / 10)).append(".sig").append(std::to_string(s));
        Signal& signal = d->addSignal(name, bus ? SignalKind::Bus : SignalKind::Bit, bus ? 8 : 1);
        signal.reserve(changes);
        Time t = 0;
        for (std::size_t c = 0; c < changes && t < v_span; ++c) {
            if (bus)
                (void)signal.appendChange(t, BigInt(static_cast<long>(random() % 256)));
            else
                (void)signal.appendChange(t, static_cast<BitState>(random() % 4 == 0 ? 2 : c % 2));
            t += random() % 16 == 0 ? static_cast<Time>(4 * meanGap)
                                    : 1 + static_cast<Time>(random() % meanGap);
        }
    }
    return d;
}

// A 1920 x 1080 view of diagram and the image its frames are painted into.
struct Frame {
    explicit Frame(Diagram& diagram) : view(diagram), image(1920, 1080, QImage::Format_RGB32) {
        view.resize(1920, 1080);
        view.setAttribute(Qt::WA_DontShowOnScreen);
        view.show();
        // The window's first paint as it opens, which loads fonts and lays out the names; the
        // frames timed are those of the steps that follow.
        view.viewport()->render(&image);
    }

    // Zooms to width around the middle of the span and out of it again, alternately, and
    // paints the visible area once.
    double zoom(Time width) {
        m_zoomedIn = !m_zoomedIn;
        const Time shown = m_zoomedIn ? width / 5 * 4 : width;
        return paintWindow(v_span / 2 - shown / 2, shown);
    }

    // Scrolls the window of width around the middle of the span an eighth of it on and back,
    // alternately, and paints the visible area once.
    double scrollTime(Time width) {
        m_shift = m_shift > 0 ? -1 : 1;
        return paintWindow(v_span / 2 - width / 2 + m_shift * (width / 8), width);
    }

    // Shows width from from, scrolled halfway down, and paints the visible area once.
    double paintWindow(Time from, Time width) {
        view.setTimeWindow(from, from + width);
        (void)view.pixelsPerTime(); // lays out outside the timed frame, as a scroll step does
        view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() / 2);
        const double start = threadSeconds();
        view.viewport()->render(&image);
        return threadSeconds() - start;
    }

    // Scrolls down one row (up again at the end) and paints the visible area once.
    double scroll() {
        QScrollBar* bar = view.verticalScrollBar();
        const int step = static_cast<int>(DiagramPainter::v_rowHeight);
        bar->setValue(bar->value() + step > bar->maximum() ? 0 : bar->value() + step);
        const double start = threadSeconds();
        view.viewport()->render(&image);
        return threadSeconds() - start;
    }

    DiagramView view;
    QImage image;
    Time m_shift = 1;
    bool m_zoomedIn = false;
};

std::unique_ptr<Diagram>& bigDiagram() {
    static auto diagram = makeDiagram(1000000);
    return diagram;
}

std::unique_ptr<Diagram>& smallDiagram() {
    static auto diagram = makeDiagram(1000);
    return diagram;
}

// The user's pause after a step, in which the view fills its picture: events, the view's timer
// among them, are handled for that long.
void pause(int milliseconds) {
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < milliseconds) {
        QCoreApplication::processEvents();
        QThread::msleep(5);
    }
}

enum FrameKind { Zoom, HorizontalScroll, VerticalScroll };

double frame(Frame& f, FrameKind kind, Time width) {
    switch (kind) {
    case Zoom:
        return f.zoom(width);
    case HorizontalScroll:
        return f.scrollTime(width);
    case VerticalScroll:
        break;
    }
    return f.scroll();
}

// range(0): the window of time; range(1): the step before the frame (a FrameKind).
void BM_ViewerFrame_MillionVsThousandChanges(benchmark::State& state) {
    const auto& big = bigDiagram();
    // Never destroyed: a widget may not outlive the application object, which main ends first.
    static Frame& bigFrame = *new Frame(*big);
    static Frame& smallFrame = *new Frame(*smallDiagram());
    const Time width = state.range(0);
    const auto kind = static_cast<FrameKind>(state.range(1));
    if (kind == VerticalScroll) {
        (void)bigFrame.scrollTime(width);
        (void)smallFrame.scrollTime(width);
        pause(200);
    }
    double bigSeconds = 0, smallSeconds = 0, worst = 0;
    for (auto _ : state) {
        const double a = frame(bigFrame, kind, width);
        const double b = frame(smallFrame, kind, width);
        bigSeconds += a;
        smallSeconds += b;
        worst = std::max(worst, a);
        state.SetIterationTime(a);
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["frame_ms"] = bigSeconds / n * 1e3;
    state.counters["worst_ms"] = worst * 1e3;
    state.counters["baseline_ms"] = smallSeconds / n * 1e3;
    state.counters["ratio"] = bigSeconds / smallSeconds;
    state.counters["changes_M"] = static_cast<double>(big->totalChanges()) / 1e6;
}
BENCHMARK(BM_ViewerFrame_MillionVsThousandChanges)
    ->ArgNames({"window", "zoom0_hscroll1_vscroll2"})
    ->ArgsProduct({{v_span, v_span / 1000, 2000}, {Zoom, HorizontalScroll, VerticalScroll}})
    ->UseManualTime()
    ->Iterations(20)
    ->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QApplication application(argc, argv);
    TqObject::startUp();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    TqObject::shutDown();
    return 0;
}
