#pragma once

#include "core/TqExport.h"
#include "core/TqObject.h"
#include "graphics/geometry/DevicePoint.h"

#include <QRect>

class FileElement;
class SheetPoint;
class SheetRectangle;
class Transformation;
class TqMatrix;

/// DeviceRectangle: an axis-aligned rectangle in device units, origin the top-left corner
/// (smallest x and y) and corner the bottom-right one. Nothing here allocates.
class TQ_EXPORT DeviceRectangle : public TqObject {
public:
    // --- Constructors (all keep origin <= corner in each axis, swapping if needed) ----------
    ///@{
    /// The empty rectangle at (0, 0), or the one from origin to corner.
    DeviceRectangle() = default;
    DeviceRectangle(const DevicePoint& origin, const DevicePoint& corner);
    ///@}
    ///@{
    /// The corner is origin + extent; the int only selects this overload.
    DeviceRectangle(const DevicePoint& origin, const DevicePoint& extent, int);
    DeviceRectangle(std::int32_t left, std::int32_t top, std::int32_t right, std::int32_t bottom);
    DeviceRectangle(const DeviceRectangle&) = default;
    ///@}
    ///@{
    /// Sheet to device through t or m, truncating like DevicePoint's conversion.
    DeviceRectangle(const SheetRectangle& r, const Transformation& t);
    DeviceRectangle(const SheetRectangle& r, const TqMatrix& m);
    DeviceRectangle(const SheetPoint& origin, const SheetPoint& corner, const Transformation& t);
    DeviceRectangle(const SheetPoint& origin, const SheetPoint& corner, const TqMatrix& m);
    DeviceRectangle& operator=(const DeviceRectangle&) = default;
    ///@}

    /// A process-wide rectangle for temporary results, overwritten by every user; for
    /// callers that must hand out a reference to a result.
    static DeviceRectangle& scratch();

    // --- Queries ----------------------------------------------------------------------------
    ///@{
    /// The top-left and bottom-right corners and their coordinates, in device units.
    const DevicePoint& origin() const { return m_origin; }
    const DevicePoint& corner() const { return m_corner; }
    std::int32_t left() const { return m_origin.x(); }
    std::int32_t top() const { return m_origin.y(); }
    std::int32_t right() const { return m_corner.x(); }
    std::int32_t bottom() const { return m_corner.y(); }
    ///@}
    ///@{
    /// corner - origin, wrapping at 32 bits like the point arithmetic: a rectangle spanning
    /// the whole device range has width -1.
    std::int32_t width() const { return wrappedDifference(m_corner.x(), m_origin.x()); }
    std::int32_t height() const { return wrappedDifference(m_corner.y(), m_origin.y()); }
    DevicePoint extent() const { return DevicePoint(width(), height()); }
    DevicePoint upRight() const { return DevicePoint(right(), top()); }
    DevicePoint lowLeft() const { return DevicePoint(left(), bottom()); }
    ///@}
    ///@{
    /// True when left <= x <= right and top <= y <= bottom: every edge belongs to it.
    bool containsPoint(const DevicePoint& p) const;
    bool operator==(const DeviceRectangle& r) const;
    bool operator!=(const DeviceRectangle& r) const { return !(*this == r); }
    ///@}
    /// The Qt rectangle of the same edges (Qt's right and bottom are the last pixel inside,
    /// one less than ours), built without arithmetic that could overflow.
    QRect toQRect() const {
        return QRect(QPoint(left(), top()),
                     QPoint(wrappedDifference(right(), 1), wrappedDifference(bottom(), 1)));
    }

    /// Reads left, top, right and bottom from the element's first four items, which must all
    /// be number tokens (the stored form "0,5,10,20"), as decimal integers saturated to 32
    /// bits, and orders them. False, with the rectangle unchanged, for any other item types.
    [[nodiscard]] bool read(FileElement& element);

    // --- Setters that keep the order --------------------------------------------------------
    ///@{
    /// Set one or both corners (device and sheet values converted through t or m), then
    /// swap coordinates so that origin <= corner in each axis again.
    void setOrigin(const DevicePoint& p);
    void setOrigin(std::int32_t x, std::int32_t y);
    void setCorner(const DevicePoint& p);
    void setCorner(std::int32_t x, std::int32_t y);
    void setOriginCorner(const DevicePoint& origin, const DevicePoint& corner);
    void setOriginCorner(std::int32_t left, std::int32_t top, std::int32_t right,
                         std::int32_t bottom);
    void setOriginCorner(const SheetPoint& origin, const SheetPoint& corner,
                         const Transformation& t);
    void setOriginCorner(const SheetPoint& origin, const SheetPoint& corner, const TqMatrix& m);
    void setOriginCorner(double left, double top, double right, double bottom,
                         const Transformation& t);
    void setOriginCorner(double left, double top, double right, double bottom, const TqMatrix& m);
    void set(const SheetRectangle& r, const Transformation& t);
    void set(const SheetRectangle& r, const TqMatrix& m);
    ///@}

    // --- Edits that do not reorder: an inverted result stays inverted -----------------------
    ///@{
    /// Set an edge, or move an edge or corner by d, without reordering: an inverted
    /// result stays inverted until a setter that orders is called.
    void setLeft(std::int32_t v) { m_origin.setX(v); }
    void setTop(std::int32_t v) { m_origin.setY(v); }
    void setRight(std::int32_t v) { m_corner.setX(v); }
    void setBottom(std::int32_t v) { m_corner.setY(v); }
    void adjustLeft(std::int32_t d) { m_origin.adjustX(d); }
    void adjustTop(std::int32_t d) { m_origin.adjustY(d); }
    void adjustRight(std::int32_t d) { m_corner.adjustX(d); }
    void adjustBottom(std::int32_t d) { m_corner.adjustY(d); }
    void adjustOrigin(std::int32_t dx, std::int32_t dy) { m_origin.adjustXY(dx, dy); }
    void adjustCorner(std::int32_t dx, std::int32_t dy) { m_corner.adjustXY(dx, dy); }
    ///@}
    /// origin += (dx, dy), corner -= (dx, dy).
    void inset(std::int32_t dx, std::int32_t dy);
    ///@{
    /// Shifts the rectangle so that its origin is p, keeping its size.
    void moveTo(const DevicePoint& p);
    void scaleBy(const DevicePoint& p);
    void scaleBy(const FloatPoint& p);
    void translateBy(const DevicePoint& p);
    void translateBy(const FloatPoint& p);
    ///@}

    // --- Combining --------------------------------------------------------------------------
    /// The overlap of this rectangle and r, in a static object owned by this operation
    /// (valid until its next call), or null when the overlap has no area: rectangles that
    /// only touch do not intersect.
    const DeviceRectangle* intersect(const DeviceRectangle& r) const;
    /// Enlarges this rectangle to the smallest one holding both.
    void rectUnion(const DeviceRectangle& r);
    /// Moves this rectangle to r's origin and then, per chosen axis, by half the difference
    /// of the sizes (truncating toward zero), centring it in r. In an axis not chosen the
    /// rectangle is aligned with r's origin edge, not left where it was. Returns the
    /// displacement applied, in a static object owned by this operation.
    const DevicePoint& alignCenter(const DeviceRectangle& r, bool horizontally, bool vertically);
    /// Moves p along the segment p-q onto this rectangle (q is never changed). True when p now
    /// lies on or in the rectangle; false, with p unchanged, when the segment misses it. Clip
    /// a whole segment by calling it once for each end with the other end as q.
    bool clipLineSegment(DevicePoint& p, const DevicePoint& q) const;

    // --- Text forms -------------------------------------------------------------------------
    /// "(" origin "," corner ")", e.g. "((0,5),(10,20))".
    std::ostream& printOn(std::ostream& out) const override;
    /// origin "," corner in the points' stored form, e.g. "0,5,10,20".
    std::ostream& storeOn(std::ostream& out, Criteria& criteria) const override;

protected:
    /// Swaps the x values when origin.x > corner.x and, independently, the y values.
    void enforceOrder();

private:
    static std::int32_t wrappedDifference(std::int32_t a, std::int32_t b) {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) -
                                         static_cast<std::uint32_t>(b));
    }

    DevicePoint m_origin;
    DevicePoint m_corner;
};
