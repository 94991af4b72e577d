#include "render/WaveformRuns.h"

#include <algorithm>
#include <limits>

namespace {

void addDense(std::vector<WaveformRun>& runs, double x0, double x1) {
    if (!runs.empty() && runs.back().kind == WaveformRun::Dense && runs.back().x1 >= x0) {
        runs.back().x1 = std::max(runs.back().x1, x1);
        return;
    }
    WaveformRun run;
    run.kind = WaveformRun::Dense;
    run.x0 = x0;
    run.x1 = x1;
    runs.push_back(run);
}

void addSteady(std::vector<WaveformRun>& runs, double x0, double x1, std::size_t change,
               BitState state, bool edge) {
    WaveformRun run;
    run.x0 = x0;
    run.x1 = x1;
    run.change = change;
    run.state = state;
    run.edge = edge && !(runs.empty() || runs.back().kind == WaveformRun::Dense);
    runs.push_back(run);
}

// The first change at or after the start of each pixel column, found for a batch of columns
// at a time: their binary searches run side by side, so that the cache misses in a long
// signal's times overlap instead of queueing one column after another.
class ColumnStarts {
public:
    ColumnStarts(const Signal& signal, const TimeScale& scale) : m_signal(signal), m_scale(scale) {}

    // The first change at or after column's start; from is a change before it.
    std::size_t at(double column, std::size_t from) {
        if (!(column >= m_first && column < m_first + v_batch))
            fill(column, from);
        return m_index[static_cast<std::size_t>(column - m_first)];
    }

private:
    static constexpr std::size_t v_batch = 16;

    void fill(double column, std::size_t from) {
        m_first = column;
        Time key[v_batch];
        std::size_t base[v_batch];
        for (std::size_t k = 0; k < v_batch; ++k) {
            key[k] = m_scale.columnStart(column + static_cast<double>(k));
            base[k] = from;
        }
        // The search is bounded by galloping from the last batch's stride, so that the
        // batch's keys share the few top levels of a short range.
        const std::size_t count = m_signal.changeCount();
        std::size_t step = std::max<std::size_t>(m_stride, 1);
        std::size_t end = from + step;
        while (end < count && m_signal.changeTime(end) < key[v_batch - 1]) {
            step *= 2;
            end = from + step;
        }
        end = std::min(end + 1, count);
        // A branch-free lower bound: each step is a conditional move, and the loads of the
        // batch do not wait for one another.
        std::size_t n = end - from;
        while (n > 1) {
            const std::size_t half = n / 2;
            for (std::size_t k = 0; k < v_batch; ++k)
                base[k] = m_signal.changeTime(base[k] + half) < key[k] ? base[k] + half : base[k];
            n -= half;
        }
        for (std::size_t k = 0; k < v_batch; ++k)
            m_index[k] = base[k] + (m_signal.changeTime(base[k]) < key[k] ? 1 : 0);
        m_stride = m_index[v_batch - 1] - from;
    }

    const Signal& m_signal;
    const TimeScale& m_scale;
    double m_first = -std::numeric_limits<double>::infinity();
    std::size_t m_index[v_batch] = {};
    std::size_t m_stride = 0;
};

// Levels held for less than this many pixels cannot be read as levels.
constexpr double v_narrowestSteady = 2;

// Joins each stretch of dense blocks and too narrow levels into one dense block, when it has
// a dense block or two narrow levels, so that a busy stretch costs one primitive instead of a
// few per pixel column. A lone narrow level between wide ones stays: it is a visible glitch.
void joinBusyStretches(std::vector<WaveformRun>& runs) {
    auto busy = [](const WaveformRun& r) {
        return r.kind == WaveformRun::Dense || r.x1 - r.x0 < v_narrowestSteady;
    };
    std::size_t out = 0;
    for (std::size_t k = 0; k < runs.size();) {
        std::size_t end = k;
        bool dense = false;
        while (end < runs.size() && busy(runs[end])) {
            dense = dense || runs[end].kind == WaveformRun::Dense;
            ++end;
        }
        if (end - k >= 2 || dense) {
            WaveformRun block;
            block.kind = WaveformRun::Dense;
            block.x0 = runs[k].x0;
            block.x1 = runs[end - 1].x1;
            runs[out++] = block;
            k = end;
            continue;
        }
        WaveformRun run = runs[k++];
        // A level after a dense block starts without an edge, as collectRuns draws it.
        if (out > 0 && runs[out - 1].kind == WaveformRun::Dense)
            run.edge = false;
        runs[out++] = run;
    }
    runs.resize(out);
}

} // namespace

void collectRuns(const Signal& signal, const TimeScale& scale, std::vector<WaveformRun>& runs) {
    runs.clear();
    const std::size_t count = signal.changeCount();
    if (count == 0)
        return;
    std::size_t i = signal.indexAt(scale.from());
    Time cursor = scale.from();
    bool edge = false;
    ColumnStarts starts(signal, scale);
    if (i == Signal::npos) {
        i = 0;
        cursor = signal.changeTime(0);
    }
    while (i < count && cursor < scale.to()) {
        const double column = scale.column(cursor);
        const Time columnEnd = scale.columnStart(column + 1);
        const std::size_t next = i + 1;
        if (next < count && signal.changeTime(next) < columnEnd) {
            // Several changes in this column: one block, then whatever holds after the last
            // of them.
            const double left = scale.left() + column;
            addDense(runs, left, std::min(left + 1, scale.right()));
            i = starts.at(column + 1, i) - 1;
            cursor = columnEnd;
            edge = false;
            continue;
        }
        const Time end = next < count ? std::min(signal.changeTime(next), scale.to()) : scale.to();
        addSteady(runs, scale.x(cursor), scale.x(end), i, signal.changeState(i), edge);
        i = next;
        cursor = end;
        edge = true;
    }
    joinBusyStretches(runs);
}

void collectClockRuns(const Signal& clock, const TimeScale& scale, std::vector<WaveformRun>& runs) {
    runs.clear();
    const double periodPixels = static_cast<double>(clock.clock().period) * scale.pixelsPerTime();
    Time cursor = scale.from();
    if (periodPixels < 4) {
        const Time firstEdge = clock.nextClockEdge(scale.from() - 1);
        if (firstEdge > scale.from())
            addSteady(runs, scale.x(cursor), scale.x(std::min(firstEdge, scale.to())), Signal::npos,
                      clock.clockLevel(cursor), false);
        if (firstEdge < scale.to())
            addDense(runs, scale.x(firstEdge), scale.right());
        return;
    }
    bool edge = false;
    while (cursor < scale.to()) {
        const Time end = std::min(clock.nextClockEdge(cursor), scale.to());
        addSteady(runs, scale.x(cursor), scale.x(end), Signal::npos, clock.clockLevel(cursor),
                  edge);
        cursor = end;
        edge = true;
    }
}
