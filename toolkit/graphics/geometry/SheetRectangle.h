#pragma once

#include "core/TqExport.h"
#include "core/TqObject.h"
#include "graphics/geometry/SheetPoint.h"

#include <QRect>

class DevicePoint;
class DeviceRectangle;
class FileElement;
class Transformation;
class TqMatrix;

/// SheetRectangle: an axis-aligned rectangle in sheet units, origin the top-left corner
/// (smallest x and y) and corner the bottom-right one. Nothing here allocates.
class TQ_EXPORT SheetRectangle : public TqObject {
public:
    // --- Constructors (all keep origin <= corner in each axis, swapping if needed) ----------
    ///@{
    /// The empty rectangle at (0, 0), or the one from origin to corner.
    SheetRectangle() = default;
    SheetRectangle(const SheetPoint& origin, const SheetPoint& corner);
    ///@}
    ///@{
    /// The corner is origin + extent; the int only selects this overload.
    SheetRectangle(const SheetPoint& origin, const SheetPoint& extent, int);
    SheetRectangle(double left, double top, double right, double bottom);
    SheetRectangle(const SheetRectangle&) = default;
    ///@}
    ///@{
    /// Device to sheet through t or m.
    SheetRectangle(const DeviceRectangle& r, const Transformation& t);
    SheetRectangle(const DeviceRectangle& r, const TqMatrix& m);
    SheetRectangle(const DevicePoint& origin, const DevicePoint& corner, const Transformation& t);
    SheetRectangle(const DevicePoint& origin, const DevicePoint& corner, const TqMatrix& m);
    SheetRectangle& operator=(const SheetRectangle&) = default;
    ///@}

    /// A process-wide rectangle for temporary results, overwritten by every user; for
    /// callers that must hand out a reference to a result.
    static SheetRectangle& scratch();

    // --- Queries ----------------------------------------------------------------------------
    ///@{
    /// The top-left and bottom-right corners and their coordinates, in sheet units.
    const SheetPoint& origin() const { return m_origin; }
    const SheetPoint& corner() const { return m_corner; }
    double left() const { return m_origin.x(); }
    double top() const { return m_origin.y(); }
    double right() const { return m_corner.x(); }
    double bottom() const { return m_corner.y(); }
    ///@}
    ///@{
    /// The size (corner - origin) and the other two corners, in sheet units.
    double width() const { return m_corner.x() - m_origin.x(); }
    double height() const { return m_corner.y() - m_origin.y(); }
    SheetPoint extent() const { return SheetPoint(width(), height()); }
    SheetPoint upRight() const { return SheetPoint(right(), top()); }
    SheetPoint lowLeft() const { return SheetPoint(left(), bottom()); }
    ///@}
    ///@{
    /// True when left <= x <= right and top <= y <= bottom: every edge belongs to it.
    bool containsPoint(const SheetPoint& p) const;
    bool operator==(const SheetRectangle& r) const;
    bool operator!=(const SheetRectangle& r) const { return !(*this == r); }
    ///@}
    /// The Qt rectangle of the edges rounded half away from zero and limited to the signed
    /// 32-bit range.
    QRect toQRect() const;

    /// Reads left, top, right and bottom from the element's first four items, which must all
    /// be number tokens (the stored form "0,5,10,20"), as decimal integers saturated to 32
    /// bits, and orders them. False, with the rectangle unchanged, for any other item types.
    [[nodiscard]] bool read(FileElement& element);

    // --- Setters that keep the order --------------------------------------------------------
    ///@{
    /// Set one or both corners (device and sheet values converted through t or m), then
    /// swap coordinates so that origin <= corner in each axis again.
    void setOrigin(const SheetPoint& p);
    void setOrigin(double x, double y);
    void setCorner(const SheetPoint& p);
    void setCorner(double x, double y);
    void setOriginCorner(const SheetPoint& origin, const SheetPoint& corner);
    void setOriginCorner(double left, double top, double right, double bottom);
    void setOriginCorner(const DevicePoint& origin, const DevicePoint& corner,
                         const Transformation& t);
    void setOriginCorner(const DevicePoint& origin, const DevicePoint& corner, const TqMatrix& m);
    void setOriginCorner(long left, long top, long right, long bottom, const Transformation& t);
    void setOriginCorner(long left, long top, long right, long bottom, const TqMatrix& m);
    void set(const DeviceRectangle& r, const Transformation& t);
    void set(const DeviceRectangle& r, const TqMatrix& m);
    ///@}

    // --- Edits that do not reorder: an inverted result stays inverted -----------------------
    ///@{
    /// Set an edge, or move an edge or corner by d, without reordering: an inverted
    /// result stays inverted until a setter that orders is called.
    void setLeft(double v) { m_origin.setX(v); }
    void setTop(double v) { m_origin.setY(v); }
    void setRight(double v) { m_corner.setX(v); }
    void setBottom(double v) { m_corner.setY(v); }
    void adjustLeft(double d) { m_origin.adjustX(d); }
    void adjustTop(double d) { m_origin.adjustY(d); }
    void adjustRight(double d) { m_corner.adjustX(d); }
    void adjustBottom(double d) { m_corner.adjustY(d); }
    void adjustOrigin(double dx, double dy) { m_origin.adjustXY(dx, dy); }
    void adjustCorner(double dx, double dy) { m_corner.adjustXY(dx, dy); }
    ///@}
    /// origin += (dx, dy), corner -= (dx, dy).
    void inset(double dx, double dy);
    ///@{
    /// Shifts the rectangle so that its origin is p, keeping its size.
    void moveTo(const SheetPoint& p);
    void scaleBy(const SheetPoint& p);
    void scaleBy(const FloatPoint& p);
    void translateBy(const SheetPoint& p);
    void translateBy(const FloatPoint& p);
    ///@}

    // --- Combining --------------------------------------------------------------------------
    /// The overlap of this rectangle and r, in a static object owned by this operation
    /// (valid until its next call), or null when the overlap has no area: rectangles that
    /// only touch do not intersect.
    const SheetRectangle* intersect(const SheetRectangle& r) const;
    /// Enlarges this rectangle to the smallest one holding both.
    void rectUnion(const SheetRectangle& r);
    /// Moves this rectangle to r's origin and then, per chosen axis, by half the difference
    /// of the sizes centring it in r. In an axis not chosen the
    /// rectangle is aligned with r's origin edge, not left where it was. Returns the
    /// displacement applied, in a static object owned by this operation.
    const SheetPoint& alignCenter(const SheetRectangle& r, bool horizontally, bool vertically);
    /// Moves p along the segment p-q onto this rectangle (q is never changed). True when p now
    /// lies on or in the rectangle; false, with p unchanged, when the segment misses it. Clip
    /// a whole segment by calling it once for each end with the other end as q.
    bool clipLineSegment(SheetPoint& p, const SheetPoint& q) const;

    // --- Text forms -------------------------------------------------------------------------
    /// "(" origin "," corner ")", e.g. "((0,5),(10,20))".
    std::ostream& printOn(std::ostream& out) const override;
    /// origin "," corner in the points' stored form, e.g. "0,5,10,20".
    std::ostream& storeOn(std::ostream& out, Criteria& criteria) const override;

protected:
    /// Swaps the x values when origin.x > corner.x and, independently, the y values.
    void enforceOrder();

private:
    SheetPoint m_origin;
    SheetPoint m_corner;
};
