#include "graphics/geometry/Transformation.h"

#include <cmath>
#include <ostream>

Transformation& Transformation::scratch() {
    static Transformation instance;
    return instance;
}

void Transformation::setXHalf(double scale, double translation) {
    m_scale.setX(scale);
    m_translation.setX(translation);
}

void Transformation::setYHalf(double scale, double translation) {
    m_scale.setY(scale);
    m_translation.setY(translation);
}

long Transformation::clampToDevice(double r, bool round) {
    if (round)
        r += 0.5;
    if (r < -2147483648.0)
        return -2147483648L;
    if (r > 2147483647.0)
        return 2147483647L;
    if (std::isnan(r))
        return 0;
    return static_cast<long>(r);
}

long Transformation::applyXHalfTo(double v, bool round) const {
    return clampToDevice(m_scale.x() * v + m_translation.x(), round);
}

long Transformation::applyYHalfTo(double v, bool round) const {
    return clampToDevice(m_scale.y() * v + m_translation.y(), round);
}

double Transformation::applyInverseXHalfTo(long d) const {
    return (static_cast<double>(d) - m_translation.x()) / m_scale.x();
}

double Transformation::applyInverseYHalfTo(long d) const {
    return (static_cast<double>(d) - m_translation.y()) / m_scale.y();
}

void Transformation::scrollBy(const FloatPoint& d) {
    m_translation.adjustXY(d.x() * m_scale.x(), d.y() * m_scale.y());
}

std::ostream& Transformation::printOn(std::ostream& out) const {
    out << "(scale:";
    m_scale.printOn(out) << " xlate:";
    return m_translation.printOn(out) << ')';
}
