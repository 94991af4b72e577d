/// WaveformRuns: a signal's changes within a window of time reduced to what can be seen at
/// the output's width: steady runs between visible changes, and dense blocks where several
/// changes fall in one pixel column or levels are too narrow to read. The work is
/// proportional to the number of pixel columns (times a binary search), not to the number of
/// changes.
#pragma once

#include "model/Signal.h"
#include "render/TimeScale.h"

#include <vector>

struct WaveformRun {
    enum Kind { Steady, Dense };
    Kind kind = Steady;
    /// From and to, in layout pixels.
    double x0 = 0;
    double x1 = 0;
    /// Steady: the index of the change whose value holds (Signal::npos for a clock).
    std::size_t change = Signal::npos;
    /// Steady: the state shown (a clock's level, a bit's state, a bus slot's kind as
    /// Signal::changeState gives it: High for a slot with a number or a text).
    BitState state = BitState::Unknown;
    /// Steady: true when a change starts the run (an edge is drawn at x0).
    bool edge = false;
};

/// The runs of signal (a bit or a bus) across scale's window, appended to runs after clearing
/// it. Nothing is shown before the first change.
void collectRuns(const Signal& signal, const TimeScale& scale, std::vector<WaveformRun>& runs);
/// The same for a clock: edges closer than two pixels become one dense block.
void collectClockRuns(const Signal& clock, const TimeScale& scale, std::vector<WaveformRun>& runs);
