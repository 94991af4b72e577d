// The end-of-segment clipping shared by DeviceRectangle and SheetRectangle, written once over
// the rectangle's coordinate type.
#pragma once

// Moves p onto the rectangle (l, t, r, b) along the segment p-q; q is never changed.
// Returns true when p now lies on or in the rectangle, false when the segment cannot reach
// it (p unchanged then). Point provides x(), y(), setXY(), and static yIntercept/xIntercept.
template <class Point, class Coord>
bool clipSegmentEnd(Coord l, Coord t, Coord r, Coord b, Point& p, const Point& q) {
    const auto inX = [&](auto x) { return l <= x && x <= r; };
    const auto inY = [&](auto y) { return t <= y && y <= b; };
    if (inX(p.x()) && inY(p.y()))
        return true;
    // Entry through a vertical edge (edge x), falling back to the horizontal edges.
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
    // p lies above or below: entry through a horizontal edge, falling back to the vertical
    // edge on q's side.
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
}
