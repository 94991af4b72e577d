#include "graphics/geometry/SheetRectangle.h"

#include "graphics/geometry/CoordinateReader_p.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/DeviceRectangle.h"
#include "graphics/geometry/FloatPoint.h"
#include "graphics/geometry/RectangleOps_p.h"
#include "graphics/geometry/TqMatrix.h"
#include "graphics/geometry/Transformation.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <ostream>
#include <utility>

SheetRectangle::SheetRectangle(const SheetPoint& origin, const SheetPoint& corner)
    : m_origin(origin), m_corner(corner) {
    enforceOrder();
}

SheetRectangle::SheetRectangle(const SheetPoint& origin, const SheetPoint& extent, int)
    : m_origin(origin), m_corner(origin) {
    m_corner += extent;
    enforceOrder();
}

SheetRectangle::SheetRectangle(double left, double top, double right, double bottom)
    : m_origin(left, top), m_corner(right, bottom) {
    enforceOrder();
}

SheetRectangle::SheetRectangle(const DeviceRectangle& r, const Transformation& t) {
    set(r, t);
}

SheetRectangle::SheetRectangle(const DeviceRectangle& r, const TqMatrix& m) {
    set(r, m);
}

SheetRectangle::SheetRectangle(const DevicePoint& origin, const DevicePoint& corner,
                               const Transformation& t) {
    setOriginCorner(origin, corner, t);
}

SheetRectangle::SheetRectangle(const DevicePoint& origin, const DevicePoint& corner,
                               const TqMatrix& m) {
    setOriginCorner(origin, corner, m);
}

SheetRectangle& SheetRectangle::scratch() {
    static SheetRectangle instance;
    return instance;
}

namespace {
// v rounded half away from zero into the signed 32-bit range of device edges (NaN to 0).
std::int32_t edgeOf(double v) {
    if (std::isnan(v))
        return 0;
    return static_cast<std::int32_t>(
        FloatPoint::asLong(std::clamp(v, -2147483648.0, 2147483647.0)));
}
} // namespace

QRect SheetRectangle::toQRect() const {
    DeviceRectangle edges;
    edges.setLeft(edgeOf(left()));
    edges.setTop(edgeOf(top()));
    edges.setRight(edgeOf(right()));
    edges.setBottom(edgeOf(bottom()));
    return edges.toQRect();
}

bool SheetRectangle::containsPoint(const SheetPoint& p) const {
    return left() <= p.x() && p.x() <= right() && top() <= p.y() && p.y() <= bottom();
}

bool SheetRectangle::operator==(const SheetRectangle& r) const {
    return m_origin == r.m_origin && m_corner == r.m_corner;
}

bool SheetRectangle::read(FileElement& element) {
    long edges[4];
    if (!readCoordinates(element, edges, 4))
        return false;
    setOriginCorner(SheetPoint(static_cast<double>(edges[0]), static_cast<double>(edges[1])),
                    SheetPoint(static_cast<double>(edges[2]), static_cast<double>(edges[3])));
    return true;
}

void SheetRectangle::enforceOrder() {
    if (m_origin.x() > m_corner.x()) {
        const double x = m_origin.x();
        m_origin.setX(m_corner.x());
        m_corner.setX(x);
    }
    if (m_origin.y() > m_corner.y()) {
        const double y = m_origin.y();
        m_origin.setY(m_corner.y());
        m_corner.setY(y);
    }
}

void SheetRectangle::setOrigin(const SheetPoint& p) {
    m_origin = p;
    enforceOrder();
}

void SheetRectangle::setOrigin(double x, double y) {
    setOrigin(SheetPoint(x, y));
}

void SheetRectangle::setCorner(const SheetPoint& p) {
    m_corner = p;
    enforceOrder();
}

void SheetRectangle::setCorner(double x, double y) {
    setCorner(SheetPoint(x, y));
}

void SheetRectangle::setOriginCorner(const SheetPoint& origin, const SheetPoint& corner) {
    m_origin = origin;
    m_corner = corner;
    enforceOrder();
}

void SheetRectangle::setOriginCorner(double left, double top, double right, double bottom) {
    setOriginCorner(SheetPoint(left, top), SheetPoint(right, bottom));
}

void SheetRectangle::setOriginCorner(const DevicePoint& origin, const DevicePoint& corner,
                                     const Transformation& t) {
    setOriginCorner(SheetPoint(origin, t), SheetPoint(corner, t));
}

void SheetRectangle::setOriginCorner(const DevicePoint& origin, const DevicePoint& corner,
                                     const TqMatrix& m) {
    setOriginCorner(SheetPoint(origin, m), SheetPoint(corner, m));
}

void SheetRectangle::setOriginCorner(long left, long top, long right, long bottom,
                                     const Transformation& t) {
    setOriginCorner(SheetPoint(left, top, t), SheetPoint(right, bottom, t));
}

void SheetRectangle::setOriginCorner(long left, long top, long right, long bottom,
                                     const TqMatrix& m) {
    setOriginCorner(SheetPoint(left, top, m), SheetPoint(right, bottom, m));
}

void SheetRectangle::set(const DeviceRectangle& r, const Transformation& t) {
    setOriginCorner(r.origin(), r.corner(), t);
}

void SheetRectangle::set(const DeviceRectangle& r, const TqMatrix& m) {
    setOriginCorner(r.origin(), r.corner(), m);
}

void SheetRectangle::inset(double dx, double dy) {
    m_origin.adjustXY(dx, dy);
    m_corner.adjustXY(-dx, -dy);
}

void SheetRectangle::moveTo(const SheetPoint& p) {
    m_corner -= m_origin;
    m_corner += p;
    m_origin = p;
}

void SheetRectangle::scaleBy(const SheetPoint& p) {
    m_origin.scaleBy(p);
    m_corner.scaleBy(p);
}

void SheetRectangle::scaleBy(const FloatPoint& p) {
    m_origin.scaleBy(p);
    m_corner.scaleBy(p);
}

void SheetRectangle::translateBy(const SheetPoint& p) {
    m_origin.translateBy(p);
    m_corner.translateBy(p);
}

void SheetRectangle::translateBy(const FloatPoint& p) {
    m_origin.translateBy(p);
    m_corner.translateBy(p);
}

const SheetRectangle* SheetRectangle::intersect(const SheetRectangle& r) const {
    static SheetRectangle result;
    return intersectInto(*this, r, result) ? &result : nullptr;
}

void SheetRectangle::rectUnion(const SheetRectangle& r) {
    uniteWith(*this, r);
}

const SheetPoint& SheetRectangle::alignCenter(const SheetRectangle& r, bool horizontally,
                                              bool vertically) {
    static SheetPoint displacement;
    alignCentered(*this, r, horizontally, vertically, displacement);
    return displacement;
}

bool SheetRectangle::clipLineSegment(SheetPoint& p, const SheetPoint& q) const {
    return clipSegmentEnd(left(), top(), right(), bottom(), p, q);
}

std::ostream& SheetRectangle::printOn(std::ostream& out) const {
    out << '(';
    m_origin.printOn(out) << ',';
    return m_corner.printOn(out) << ')';
}

std::ostream& SheetRectangle::storeOn(std::ostream& out, Criteria& criteria) const {
    m_origin.storeOn(out, criteria) << ',';
    return m_corner.storeOn(out, criteria);
}
