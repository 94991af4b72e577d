#include "graphics/geometry/DevicePoint.h"

#include "graphics/geometry/CoordinateReader_p.h"
#include "graphics/geometry/FloatPoint.h"
#include "graphics/geometry/SheetPoint.h"
#include "graphics/geometry/TqMatrix.h"
#include "graphics/geometry/Transformation.h"

#include <cassert>
#include <cmath>
#include <ostream>

namespace {

// Device arithmetic wraps at 32 bits like the machine word it stands for, without the
// undefined behaviour of a signed overflow.
std::int32_t wrap(std::int64_t v) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(v));
}

// v limited to +-2^53 (NaN to 0), far inside the range of long, so that converting it and
// adding a coordinate to it cannot overflow.
double saturated(double v) {
    constexpr double limit = 9007199254740992.0;
    if (std::isnan(v))
        return 0.0;
    return v < -limit ? -limit : (v > limit ? limit : v);
}

std::int32_t rounded(double v) {
    return wrap(FloatPoint::asLong(saturated(v)));
}

long truncSaturated(double v) {
    return static_cast<long>(saturated(v));
}

} // namespace

DevicePoint::DevicePoint(const FloatPoint& p) : m_x(rounded(p.x())), m_y(rounded(p.y())) {}

DevicePoint::DevicePoint(double x, double y, const Transformation& t) {
    setXY(x, y, t);
}

DevicePoint::DevicePoint(double x, double y, const TqMatrix& m) {
    setXY(x, y, m);
}

DevicePoint::DevicePoint(const SheetPoint& p, const Transformation& t) {
    setXY(p.x(), p.y(), t);
}

DevicePoint::DevicePoint(const SheetPoint& p, const TqMatrix& m) {
    setXY(p.x(), p.y(), m);
}

DevicePoint& DevicePoint::scratch() {
    static DevicePoint instance;
    return instance;
}

void DevicePoint::set(const SheetPoint& p, const Transformation& t) {
    setXY(p.x(), p.y(), t);
}

void DevicePoint::set(const SheetPoint& p, const TqMatrix& m) {
    setXY(p.x(), p.y(), m);
}

void DevicePoint::setXY(double x, double y, const Transformation& t) {
    m_x = static_cast<std::int32_t>(t.applyXHalfTo(x, false));
    m_y = static_cast<std::int32_t>(t.applyYHalfTo(y, false));
}

void DevicePoint::setXY(double x, double y, const TqMatrix& m) {
    m_x = static_cast<std::int32_t>(m.applyXHalfTo(x, false));
    m_y = static_cast<std::int32_t>(m.applyYHalfTo(y, false));
}

void DevicePoint::adjustX(std::int32_t d) {
    m_x = wrap(std::int64_t{m_x} + d);
}

void DevicePoint::adjustY(std::int32_t d) {
    m_y = wrap(std::int64_t{m_y} + d);
}

void DevicePoint::adjustXY(std::int32_t dx, std::int32_t dy) {
    adjustX(dx);
    adjustY(dy);
}

void DevicePoint::scaleBy(const DevicePoint& p) {
    *this *= p;
}

void DevicePoint::translateBy(const DevicePoint& p) {
    *this += p;
}

void DevicePoint::scaleBy(const FloatPoint& p) {
    *this *= p;
}

void DevicePoint::translateBy(const FloatPoint& p) {
    *this += p;
}

bool DevicePoint::read(FileElement& element) {
    long xy[2];
    if (!readCoordinates(element, xy, 2))
        return false;
    m_x = static_cast<std::int32_t>(xy[0]);
    m_y = static_cast<std::int32_t>(xy[1]);
    return true;
}

long DevicePoint::yIntercept(long x, const DevicePoint& a, const DevicePoint& b) {
    assert(a.m_x != b.m_x && "DevicePoint::yIntercept: the two points lie on one vertical");
    const double slope = static_cast<double>(std::int64_t{b.m_y} - a.m_y) /
                         static_cast<double>(std::int64_t{b.m_x} - a.m_x);
    return truncSaturated(static_cast<double>(x - a.m_x) * slope) + a.m_y;
}

long DevicePoint::xIntercept(long y, const DevicePoint& a, const DevicePoint& b) {
    assert(a.m_y != b.m_y && "DevicePoint::xIntercept: the two points lie on one horizontal");
    const double slope = static_cast<double>(std::int64_t{b.m_x} - a.m_x) /
                         static_cast<double>(std::int64_t{b.m_y} - a.m_y);
    return truncSaturated(static_cast<double>(y - a.m_y) * slope) + a.m_x;
}

DevicePoint& DevicePoint::operator=(const FloatPoint& p) {
    m_x = rounded(p.x());
    m_y = rounded(p.y());
    return *this;
}

bool DevicePoint::operator==(const FloatPoint& p) const {
    return m_x == p.x() && m_y == p.y();
}

const DevicePoint& DevicePoint::operator+(const DevicePoint& p) const {
    static DevicePoint result;
    result = *this;
    return result += p;
}

const DevicePoint& DevicePoint::operator-(const DevicePoint& p) const {
    static DevicePoint result;
    result = *this;
    return result -= p;
}

const DevicePoint& DevicePoint::operator*(const DevicePoint& p) const {
    static DevicePoint result;
    result = *this;
    return result *= p;
}

const DevicePoint& DevicePoint::operator/(const DevicePoint& p) const {
    static DevicePoint result;
    result = *this;
    return result /= p;
}

const DevicePoint& DevicePoint::operator-() const {
    static DevicePoint result;
    result.setXY(wrap(-std::int64_t{m_x}), wrap(-std::int64_t{m_y}));
    return result;
}

DevicePoint& DevicePoint::operator+=(const DevicePoint& p) {
    m_x = wrap(std::int64_t{m_x} + p.m_x);
    m_y = wrap(std::int64_t{m_y} + p.m_y);
    return *this;
}

DevicePoint& DevicePoint::operator-=(const DevicePoint& p) {
    m_x = wrap(std::int64_t{m_x} - p.m_x);
    m_y = wrap(std::int64_t{m_y} - p.m_y);
    return *this;
}

DevicePoint& DevicePoint::operator*=(const DevicePoint& p) {
    m_x = wrap(std::int64_t{m_x} * p.m_x);
    m_y = wrap(std::int64_t{m_y} * p.m_y);
    return *this;
}

DevicePoint& DevicePoint::operator/=(const DevicePoint& p) {
    assert(p.m_x != 0 && p.m_y != 0 && "DevicePoint: division by a zero coordinate");
    m_x = wrap(std::int64_t{m_x} / p.m_x);
    m_y = wrap(std::int64_t{m_y} / p.m_y);
    return *this;
}

DevicePoint& DevicePoint::operator*=(double f) {
    m_x = rounded(m_x * f);
    m_y = rounded(m_y * f);
    return *this;
}

DevicePoint& DevicePoint::operator/=(double f) {
    m_x = rounded(m_x / f);
    m_y = rounded(m_y / f);
    return *this;
}

DevicePoint& DevicePoint::operator+=(const FloatPoint& p) {
    m_x = rounded(m_x + p.x());
    m_y = rounded(m_y + p.y());
    return *this;
}

DevicePoint& DevicePoint::operator-=(const FloatPoint& p) {
    m_x = rounded(m_x - p.x());
    m_y = rounded(m_y - p.y());
    return *this;
}

DevicePoint& DevicePoint::operator*=(const FloatPoint& p) {
    m_x = rounded(m_x * p.x());
    m_y = rounded(m_y * p.y());
    return *this;
}

DevicePoint& DevicePoint::operator/=(const FloatPoint& p) {
    m_x = rounded(m_x / p.x());
    m_y = rounded(m_y / p.y());
    return *this;
}

const FloatPoint& DevicePoint::operator+(const FloatPoint& p) const {
    static FloatPoint result;
    result.setXY(m_x + p.x(), m_y + p.y());
    return result;
}

const FloatPoint& DevicePoint::operator-(const FloatPoint& p) const {
    static FloatPoint result;
    result.setXY(m_x - p.x(), m_y - p.y());
    return result;
}

const FloatPoint& DevicePoint::operator*(const FloatPoint& p) const {
    static FloatPoint result;
    result.setXY(m_x * p.x(), m_y * p.y());
    return result;
}

const FloatPoint& DevicePoint::operator/(const FloatPoint& p) const {
    static FloatPoint result;
    result.setXY(m_x / p.x(), m_y / p.y());
    return result;
}

std::ostream& DevicePoint::printOn(std::ostream& out) const {
    return out << '(' << m_x << ',' << m_y << ')';
}

std::ostream& DevicePoint::storeOn(std::ostream& out, Criteria&) const {
    return out << m_x << ',' << m_y;
}
