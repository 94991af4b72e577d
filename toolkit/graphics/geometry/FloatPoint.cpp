#include "graphics/geometry/FloatPoint.h"

#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/SheetPoint.h"

#include <ostream>

FloatPoint::FloatPoint(const DevicePoint& p) : m_x(p.x()), m_y(p.y()) {}

FloatPoint::FloatPoint(const SheetPoint& p) : m_x(p.x()), m_y(p.y()) {}

FloatPoint& FloatPoint::scratch() {
    static FloatPoint instance;
    return instance;
}

const FloatPoint& FloatPoint::operator+(const FloatPoint& p) const {
    static FloatPoint result;
    result.setXY(m_x + p.m_x, m_y + p.m_y);
    return result;
}

const FloatPoint& FloatPoint::operator-(const FloatPoint& p) const {
    static FloatPoint result;
    result.setXY(m_x - p.m_x, m_y - p.m_y);
    return result;
}

const FloatPoint& FloatPoint::operator*(const FloatPoint& p) const {
    static FloatPoint result;
    result.setXY(m_x * p.m_x, m_y * p.m_y);
    return result;
}

const FloatPoint& FloatPoint::operator/(const FloatPoint& p) const {
    static FloatPoint result;
    result.setXY(m_x / p.m_x, m_y / p.m_y);
    return result;
}

const FloatPoint& FloatPoint::operator-() const {
    static FloatPoint result;
    result.setXY(-m_x, -m_y);
    return result;
}

std::ostream& FloatPoint::printOn(std::ostream& out) const {
    return out << '(' << m_x << '@' << m_y << ')';
}

std::ostream& FloatPoint::storeOn(std::ostream& out, Criteria&) const {
    return out << m_x << '@' << m_y;
}
