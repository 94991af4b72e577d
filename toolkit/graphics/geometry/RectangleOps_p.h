/// \file
/// The operations that DeviceRectangle and SheetRectangle share, written once over the
/// rectangle type (Rect), its point type (Point) and its coordinate type (Coord).
#pragma once

#include <algorithm>
#include <cstdint>

/// The overlap of a and b into result; false when it has no area (touching edges included).
template <class Rect>
bool intersectInto(const Rect& a, const Rect& b, Rect& result) {
    result.setLeft(std::max(a.left(), b.left()));
    result.setTop(std::max(a.top(), b.top()));
    result.setRight(std::min(a.right(), b.right()));
    result.setBottom(std::min(a.bottom(), b.bottom()));
    return result.left() < result.right() && result.top() < result.bottom();
}

/// Enlarges a to hold b.
template <class Rect>
void uniteWith(Rect& a, const Rect& b) {
    a.setLeft(std::min(a.left(), b.left()));
    a.setTop(std::min(a.top(), b.top()));
    a.setRight(std::max(a.right(), b.right()));
    a.setBottom(std::max(a.bottom(), b.bottom()));
}

///@{
/// Half of a - b: in 64 bits and truncating toward zero for device units, so that the
/// difference of two extents cannot overflow; in doubles for sheet units.
inline std::int32_t halfDifference(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>((std::int64_t{a} - b) / 2);
}
inline double halfDifference(double a, double b) {
    return (a - b) / 2;
}
///@}

/// Moves a to b's origin plus, per chosen axis, half the size difference; sets displacement
/// to the move.
template <class Rect, class Point>
void alignCentered(Rect& a, const Rect& b, bool horizontally, bool vertically,
                   Point& displacement) {
    Point origin = b.origin();
    if (horizontally)
        origin.adjustX(halfDifference(b.width(), a.width()));
    if (vertically)
        origin.adjustY(halfDifference(b.height(), a.height()));
    displacement = origin;
    displacement -= a.origin();
    a.moveTo(origin);
}

/// Moves p onto the rectangle (l, t, r, b) along the segment p-q; q is never changed.
/// Returns true when p now lies on or in the rectangle, false when the segment cannot reach
/// it (p unchanged then). Point provides x(), y(), setXY(), and static yIntercept/xIntercept.
template <class Point, class Coord>
bool clipSegmentEnd(Coord l, Coord t, Coord r, Coord b, Point& p, const Point& q) {
    const auto inX = [&](auto x) { return l <= x && x <= r; };
    const auto inY = [&](auto y) { return t <= y && y <= b; };
    if (inX(p.x()) && inY(p.y()))
        return true;
    ///@{
    /// Entry through a vertical edge (edge x), falling back to the horizontal edges.
    const auto throughVertical = [&](Coord edge, bool beyond) {
        if (beyond)
            return false;
        if (p.y() == q.y()) {
            if (!inY(p.y()))
                return false;
            p.setXY(edge, p.y());
            return true;
        }
        const auto y = Point::yIntercept(edge, p, q);
        if (inY(y)) {
            p.setXY(edge, static_cast<Coord>(y));
            return true;
        }
        const Coord horizontal = y > b ? b : t;
        const auto x = Point::xIntercept(horizontal, p, q);
        if (!inX(x))
            return false;
        p.setXY(static_cast<Coord>(x), horizontal);
        return true;
    };
    if (p.x() < l)
        return throughVertical(l, q.x() < l);
    if (p.x() > r)
        return throughVertical(r, q.x() > r);
    ///@}
    ///@{
    /// p lies above or below: entry through a horizontal edge, falling back to the vertical
    /// edge on q's side.
    const Coord edge = p.y() < t ? t : b;
    if (p.y() < t ? q.y() < t : q.y() > b)
        return false;
    if (p.x() == q.x()) {
        p.setXY(p.x(), edge);
        return true;
    }
    const auto x = Point::xIntercept(edge, p, q);
    if (inX(x)) {
        p.setXY(static_cast<Coord>(x), edge);
        return true;
    }
    const Coord vertical = x > r ? r : l;
    const auto y = Point::yIntercept(vertical, p, q);
    if (!inY(y))
        return false;
    p.setXY(vertical, static_cast<Coord>(y));
    return true;
    ///@}
}
