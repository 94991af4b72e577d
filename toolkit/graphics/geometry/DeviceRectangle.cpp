#include "graphics/geometry/DeviceRectangle.h"

#include "graphics/geometry/CoordinateReader_p.h"
#include "graphics/geometry/FloatPoint.h"
#include "graphics/geometry/RectangleOps_p.h"
#include "graphics/geometry/SheetPoint.h"
#include "graphics/geometry/SheetRectangle.h"
#include "graphics/geometry/TqMatrix.h"
#include "graphics/geometry/Transformation.h"

#include <algorithm>
#include <ostream>
#include <utility>

DeviceRectangle::DeviceRectangle(const DevicePoint& origin, const DevicePoint& corner)
    : m_origin(origin), m_corner(corner) {
    enforceOrder();
}

DeviceRectangle::DeviceRectangle(const DevicePoint& origin, const DevicePoint& extent, int)
    : m_origin(origin), m_corner(origin) {
    m_corner += extent;
    enforceOrder();
}

DeviceRectangle::DeviceRectangle(std::int32_t left, std::int32_t top, std::int32_t right,
                                 std::int32_t bottom)
    : m_origin(left, top), m_corner(right, bottom) {
    enforceOrder();
}

DeviceRectangle::DeviceRectangle(const SheetRectangle& r, const Transformation& t) {
    set(r, t);
}

DeviceRectangle::DeviceRectangle(const SheetRectangle& r, const TqMatrix& m) {
    set(r, m);
}

DeviceRectangle::DeviceRectangle(const SheetPoint& origin, const SheetPoint& corner,
                                 const Transformation& t) {
    setOriginCorner(origin, corner, t);
}

DeviceRectangle::DeviceRectangle(const SheetPoint& origin, const SheetPoint& corner,
                                 const TqMatrix& m) {
    setOriginCorner(origin, corner, m);
}

DeviceRectangle& DeviceRectangle::scratch() {
    static DeviceRectangle instance;
    return instance;
}

bool DeviceRectangle::containsPoint(const DevicePoint& p) const {
    return left() <= p.x() && p.x() <= right() && top() <= p.y() && p.y() <= bottom();
}

bool DeviceRectangle::operator==(const DeviceRectangle& r) const {
    return m_origin == r.m_origin && m_corner == r.m_corner;
}

bool DeviceRectangle::read(FileElement& element) {
    long edges[4];
    if (!readCoordinates(element, edges, 4))
        return false;
    setOriginCorner(
        DevicePoint(static_cast<std::int32_t>(edges[0]), static_cast<std::int32_t>(edges[1])),
        DevicePoint(static_cast<std::int32_t>(edges[2]), static_cast<std::int32_t>(edges[3])));
    return true;
}

void DeviceRectangle::enforceOrder() {
    if (m_origin.x() > m_corner.x()) {
        const std::int32_t x = m_origin.x();
        m_origin.setX(m_corner.x());
        m_corner.setX(x);
    }
    if (m_origin.y() > m_corner.y()) {
        const std::int32_t y = m_origin.y();
        m_origin.setY(m_corner.y());
        m_corner.setY(y);
    }
}

void DeviceRectangle::setOrigin(const DevicePoint& p) {
    m_origin = p;
    enforceOrder();
}

void DeviceRectangle::setOrigin(std::int32_t x, std::int32_t y) {
    setOrigin(DevicePoint(x, y));
}

void DeviceRectangle::setCorner(const DevicePoint& p) {
    m_corner = p;
    enforceOrder();
}

void DeviceRectangle::setCorner(std::int32_t x, std::int32_t y) {
    setCorner(DevicePoint(x, y));
}

void DeviceRectangle::setOriginCorner(const DevicePoint& origin, const DevicePoint& corner) {
    m_origin = origin;
    m_corner = corner;
    enforceOrder();
}

void DeviceRectangle::setOriginCorner(std::int32_t left, std::int32_t top, std::int32_t right,
                                      std::int32_t bottom) {
    setOriginCorner(DevicePoint(left, top), DevicePoint(right, bottom));
}

void DeviceRectangle::setOriginCorner(const SheetPoint& origin, const SheetPoint& corner,
                                      const Transformation& t) {
    setOriginCorner(DevicePoint(origin, t), DevicePoint(corner, t));
}

void DeviceRectangle::setOriginCorner(const SheetPoint& origin, const SheetPoint& corner,
                                      const TqMatrix& m) {
    setOriginCorner(DevicePoint(origin, m), DevicePoint(corner, m));
}

void DeviceRectangle::setOriginCorner(double left, double top, double right, double bottom,
                                      const Transformation& t) {
    setOriginCorner(DevicePoint(left, top, t), DevicePoint(right, bottom, t));
}

void DeviceRectangle::setOriginCorner(double left, double top, double right, double bottom,
                                      const TqMatrix& m) {
    setOriginCorner(DevicePoint(left, top, m), DevicePoint(right, bottom, m));
}

void DeviceRectangle::set(const SheetRectangle& r, const Transformation& t) {
    setOriginCorner(r.origin(), r.corner(), t);
}

void DeviceRectangle::set(const SheetRectangle& r, const TqMatrix& m) {
    setOriginCorner(r.origin(), r.corner(), m);
}

void DeviceRectangle::inset(std::int32_t dx, std::int32_t dy) {
    m_origin.adjustXY(dx, dy);
    m_corner.adjustXY(-dx, -dy);
}

void DeviceRectangle::moveTo(const DevicePoint& p) {
    m_corner -= m_origin;
    m_corner += p;
    m_origin = p;
}

void DeviceRectangle::scaleBy(const DevicePoint& p) {
    m_origin.scaleBy(p);
    m_corner.scaleBy(p);
}

void DeviceRectangle::scaleBy(const FloatPoint& p) {
    m_origin.scaleBy(p);
    m_corner.scaleBy(p);
}

void DeviceRectangle::translateBy(const DevicePoint& p) {
    m_origin.translateBy(p);
    m_corner.translateBy(p);
}

void DeviceRectangle::translateBy(const FloatPoint& p) {
    m_origin.translateBy(p);
    m_corner.translateBy(p);
}

const DeviceRectangle* DeviceRectangle::intersect(const DeviceRectangle& r) const {
    static DeviceRectangle result;
    return intersectInto(*this, r, result) ? &result : nullptr;
}

void DeviceRectangle::rectUnion(const DeviceRectangle& r) {
    uniteWith(*this, r);
}

const DevicePoint& DeviceRectangle::alignCenter(const DeviceRectangle& r, bool horizontally,
                                                bool vertically) {
    static DevicePoint displacement;
    alignCentered(*this, r, horizontally, vertically, displacement);
    return displacement;
}

bool DeviceRectangle::clipLineSegment(DevicePoint& p, const DevicePoint& q) const {
    return clipSegmentEnd(left(), top(), right(), bottom(), p, q);
}

std::ostream& DeviceRectangle::printOn(std::ostream& out) const {
    out << '(';
    m_origin.printOn(out) << ',';
    return m_corner.printOn(out) << ')';
}

std::ostream& DeviceRectangle::storeOn(std::ostream& out, Criteria& criteria) const {
    m_origin.storeOn(out, criteria) << ',';
    return m_corner.storeOn(out, criteria);
}
