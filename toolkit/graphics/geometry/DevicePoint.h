#pragma once

#include "core/TqExport.h"
#include "core/TqObject.h"

#include <QPoint>
#include <cstdint>

class FileElement;
class FloatPoint;
class SheetPoint;
class Transformation;
class TqMatrix;

/// DevicePoint: a point or an extent in device units (signed 32 bits: screen pixels, printer
/// dots, PostScript or MIF points). Arithmetic wraps at 32 bits; nothing here allocates.
class TQ_EXPORT DevicePoint : public TqObject {
public:
    // --- Constructors -----------------------------------------------------------------------
    ///@{
    /// (0, 0), (x, y), or a copy.
    DevicePoint() = default;
    DevicePoint(std::int32_t x, std::int32_t y) : m_x(x), m_y(y) {}
    DevicePoint(const DevicePoint&) = default;
    ///@}
    /// Rounds each coordinate half away from zero (FloatPoint::asLong).
    explicit DevicePoint(const FloatPoint& p);
    ///@{
    /// Sheet to device through t, truncating (applyXHalfTo with round false).
    DevicePoint(double x, double y, const Transformation& t);
    DevicePoint(double x, double y, const TqMatrix& m);
    DevicePoint(const SheetPoint& p, const Transformation& t);
    DevicePoint(const SheetPoint& p, const TqMatrix& m);
    ///@}

    /// A process-wide point for temporary results, overwritten by every user; for callers
    /// that must hand out a reference to a result.
    static DevicePoint& scratch();

    // --- Queries and setters ----------------------------------------------------------------
    ///@{
    /// The coordinates in device units; setting from sheet coordinates converts through t or m as
    /// the constructors do; adjust adds, scaleBy multiplies and translateBy adds each
    /// coordinate of p, wrapping at 32 bits.
    std::int32_t x() const { return m_x; }
    std::int32_t y() const { return m_y; }
    void setX(std::int32_t x) { m_x = x; }
    void setY(std::int32_t y) { m_y = y; }
    void setXY(std::int32_t x, std::int32_t y) { m_x = x, m_y = y; }
    void set(const SheetPoint& p, const Transformation& t);
    void set(const SheetPoint& p, const TqMatrix& m);
    void setXY(double x, double y, const Transformation& t);
    void setXY(double x, double y, const TqMatrix& m);
    void adjustX(std::int32_t d);
    void adjustY(std::int32_t d);
    void adjustXY(std::int32_t dx, std::int32_t dy);
    void scaleBy(const DevicePoint& p);
    void translateBy(const DevicePoint& p);
    ///@}
    ///@{
    /// Rounds each product or sum half away from zero.
    void scaleBy(const FloatPoint& p);
    void translateBy(const FloatPoint& p);
    ///@}

    /// The Qt point of the same coordinates.
    QPoint toQPoint() const { return QPoint(m_x, m_y); }

    /// Reads x and y from the element's first two items, which must both be number tokens, as
    /// decimal integers (saturated to 32 bits). False, with the point unchanged, for any other
    /// item types.
    [[nodiscard]] bool read(FileElement& element);

    // --- Intercepts -------------------------------------------------------------------------
    /// The y of the line through a and b at x: trunc((x - a.x) * slope) + a.y, the slope
    /// computed in double. a and b must not lie on one vertical (asserted).
    static long yIntercept(long x, const DevicePoint& a, const DevicePoint& b);
    /// The x of that line at y; a and b must not lie on one horizontal (asserted).
    static long xIntercept(long y, const DevicePoint& a, const DevicePoint& b);

    // --- Operators --------------------------------------------------------------------------
    /// Binary and unary operators return a reference to a static object owned by each
    /// operator, valid until that operator runs again: copy the result at once.
    DevicePoint& operator=(const DevicePoint&) = default;
    ///@{
    /// Rounds half away from zero.
    DevicePoint& operator=(const FloatPoint& p);
    bool operator==(const DevicePoint& p) const { return m_x == p.m_x && m_y == p.m_y; }
    bool operator!=(const DevicePoint& p) const { return !(*this == p); }
    bool operator==(const FloatPoint& p) const;
    bool operator!=(const FloatPoint& p) const { return !(*this == p); }
    const DevicePoint& operator+(const DevicePoint& p) const;
    const DevicePoint& operator-(const DevicePoint& p) const;
    const DevicePoint& operator*(const DevicePoint& p) const;
    ///@}
    ///@{
    /// Integer division truncating toward zero, x by x and y by y; a zero divisor is
    /// asserted.
    const DevicePoint& operator/(const DevicePoint& p) const;
    const DevicePoint& operator-() const;
    DevicePoint& operator+=(const DevicePoint& p);
    DevicePoint& operator-=(const DevicePoint& p);
    DevicePoint& operator*=(const DevicePoint& p);
    DevicePoint& operator/=(const DevicePoint& p);
    ///@}
    ///@{
    /// Both coordinates, rounded half away from zero.
    DevicePoint& operator*=(double f);
    DevicePoint& operator/=(double f);
    ///@}
    ///@{
    /// With a FloatPoint: the results are rounded half away from zero.
    DevicePoint& operator+=(const FloatPoint& p);
    DevicePoint& operator-=(const FloatPoint& p);
    DevicePoint& operator*=(const FloatPoint& p);
    DevicePoint& operator/=(const FloatPoint& p);
    const FloatPoint& operator+(const FloatPoint& p) const;
    const FloatPoint& operator-(const FloatPoint& p) const;
    const FloatPoint& operator*(const FloatPoint& p) const;
    const FloatPoint& operator/(const FloatPoint& p) const;
    ///@}

    // --- Text forms -------------------------------------------------------------------------
    /// "(" x "," y ")".
    std::ostream& printOn(std::ostream& out) const override;
    /// x "," y.
    std::ostream& storeOn(std::ostream& out, Criteria& criteria) const override;

private:
    std::int32_t m_x = 0;
    std::int32_t m_y = 0;
};
