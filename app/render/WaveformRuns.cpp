#include "render/WaveformRuns.h"

#include <algorithm>

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

} // namespace

void collectRuns(const Signal& signal, const TimeScale& scale, std::vector<WaveformRun>& runs) {
    runs.clear();
    const std::size_t count = signal.changeCount();
    if (count == 0)
        return;
    std::size_t i = signal.indexAt(scale.from());
    Time cursor = scale.from();
    bool edge = false;
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
            i = signal.firstIndexFrom(columnEnd) - 1;
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
