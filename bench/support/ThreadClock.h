// The calling thread's CPU time, which the benchmarks time both sides of a ratio in: other
// jobs on this shared machine then stretch neither side.
#pragma once

#include <ctime>

/// Seconds of CPU time the calling thread has used.
inline double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}
