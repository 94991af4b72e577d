#include "graphics/geometry/SheetPoint.h"

#include "graphics/geometry/CoordinateReader_p.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/FloatPoint.h"
#include "graphics/geometry/TqMatrix.h"
#include "graphics/geometry/Transformation.h"

#include <ostream>

SheetPoint::SheetPoint(const FloatPoint& p) : m_x(p.x()), m_y(p.y()) {}

SheetPoint::SheetPoint(long x, long y, const Transformation& t) {
    setXY(x, y, t);
}

SheetPoint::SheetPoint(long x, long y, const TqMatrix& m) {
    setXY(x, y, m);
}

SheetPoint::SheetPoint(const DevicePoint& p, const Transformation& t) {
    setXY(p.x(), p.y(), t);
}

SheetPoint::SheetPoint(const DevicePoint& p, const TqMatrix& m) {
    setXY(p.x(), p.y(), m);
}

SheetPoint& SheetPoint::scratch() {
    static SheetPoint instance;
    return instance;
}

void SheetPoint::set(const DevicePoint& p, const Transformation& t) {
    setXY(p.x(), p.y(), t);
}

void SheetPoint::set(const DevicePoint& p, const TqMatrix& m) {
    setXY(p.x(), p.y(), m);
}

void SheetPoint::setXY(long x, long y, const Transformation& t) {
    m_x = t.applyInverseXHalfTo(x);
    m_y = t.applyInverseYHalfTo(y);
}

void SheetPoint::setXY(long x, long y, const TqMatrix& m) {
    m_x = m.applyInverseXHalfTo(x);
    m_y = m.applyInverseYHalfTo(y);
}

void SheetPoint::scaleBy(const FloatPoint& p) {
    *this *= p;
}

void SheetPoint::translateBy(const FloatPoint& p) {
    *this += p;
}

bool SheetPoint::read(FileElement& element) {
    long xy[2];
    if (!readCoordinates(element, xy, 2))
        return false;
    m_x = static_cast<double>(xy[0]);
    m_y = static_cast<double>(xy[1]);
    return true;
}

double SheetPoint::yIntercept(double x, const SheetPoint& a, const SheetPoint& b) {
    const double slope = (b.m_y - a.m_y) / (b.m_x - a.m_x);
    return (x - a.m_x) * slope + a.m_y;
}

double SheetPoint::xIntercept(double y, const SheetPoint& a, const SheetPoint& b) {
    const double slope = (b.m_x - a.m_x) / (b.m_y - a.m_y);
    return (y - a.m_y) * slope + a.m_x;
}

SheetPoint& SheetPoint::operator=(const FloatPoint& p) {
    m_x = p.x();
    m_y = p.y();
    return *this;
}

bool SheetPoint::operator==(const FloatPoint& p) const {
    return m_x == p.x() && m_y == p.y();
}

const SheetPoint& SheetPoint::operator+(const SheetPoint& p) const {
    static SheetPoint result;
    result.setXY(m_x + p.m_x, m_y + p.m_y);
    return result;
}

const SheetPoint& SheetPoint::operator-(const SheetPoint& p) const {
    static SheetPoint result;
    result.setXY(m_x - p.m_x, m_y - p.m_y);
    return result;
}

const SheetPoint& SheetPoint::operator*(const SheetPoint& p) const {
    static SheetPoint result;
    result.setXY(m_x * p.m_x, m_y * p.m_y);
    return result;
}

const SheetPoint& SheetPoint::operator/(const SheetPoint& p) const {
    static SheetPoint result;
    result.setXY(m_x / p.m_x, m_y / p.m_y);
    return result;
}

const SheetPoint& SheetPoint::operator-() const {
    static SheetPoint result;
    result.setXY(-m_x, -m_y);
    return result;
}

SheetPoint& SheetPoint::operator+=(const FloatPoint& p) {
    return m_x += p.x(), m_y += p.y(), *this;
}

SheetPoint& SheetPoint::operator-=(const FloatPoint& p) {
    return m_x -= p.x(), m_y -= p.y(), *this;
}

SheetPoint& SheetPoint::operator*=(const FloatPoint& p) {
    return m_x *= p.x(), m_y *= p.y(), *this;
}

SheetPoint& SheetPoint::operator/=(const FloatPoint& p) {
    return m_x /= p.x(), m_y /= p.y(), *this;
}

const FloatPoint& SheetPoint::operator+(const FloatPoint& p) const {
    static FloatPoint result;
    result.setXY(m_x + p.x(), m_y + p.y());
    return result;
}

const FloatPoint& SheetPoint::operator-(const FloatPoint& p) const {
    static FloatPoint result;
    result.setXY(m_x - p.x(), m_y - p.y());
    return result;
}

const FloatPoint& SheetPoint::operator*(const FloatPoint& p) const {
    static FloatPoint result;
    result.setXY(m_x * p.x(), m_y * p.y());
    return result;
}

const FloatPoint& SheetPoint::operator/(const FloatPoint& p) const {
    static FloatPoint result;
    result.setXY(m_x / p.x(), m_y / p.y());
    return result;
}

std::ostream& SheetPoint::printOn(std::ostream& out) const {
    return out << '(' << m_x << ',' << m_y << ')';
}

std::ostream& SheetPoint::storeOn(std::ostream& out, Criteria&) const {
    return out << m_x << ',' << m_y;
}
