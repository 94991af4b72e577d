/// TimeScale: the mapping between diagram time and the horizontal position of the waveform
/// area, in layout pixels, for one window of time.
#pragma once

#include "model/Time.h"

#include <cmath>

class TimeScale {
public:
    TimeScale() = default;
    /// Maps from..to onto left..right (to > from, right > left).
    TimeScale(Time from, Time to, double left, double right)
        : m_from(from), m_to(to), m_left(left),
          m_pixelsPerTime((right - left) / static_cast<double>(to - from)) {}

    Time from() const { return m_from; }
    Time to() const { return m_to; }
    double left() const { return m_left; }
    double right() const { return x(m_to); }
    double pixelsPerTime() const { return m_pixelsPerTime; }

    /// The position of time t.
    double x(Time t) const { return m_left + static_cast<double>(t - m_from) * m_pixelsPerTime; }
    /// The pixel column (0 at the left edge) that time t falls in.
    double column(Time t) const {
        return std::floor(static_cast<double>(t - m_from) * m_pixelsPerTime);
    }
    /// The first time that falls in column c or a later one.
    Time columnStart(double c) const {
        return m_from + static_cast<Time>(std::ceil(c / m_pixelsPerTime - 1e-9));
    }

private:
    Time m_from = 0;
    Time m_to = 1;
    double m_left = 0;
    double m_pixelsPerTime = 1;
};
