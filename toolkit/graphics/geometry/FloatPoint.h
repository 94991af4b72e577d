#pragma once

#include "core/TqExport.h"
#include "core/TqObject.h"

class DevicePoint;
class SheetPoint;

/// FloatPoint: a pair of reals used as scale factors, offsets and intermediate results of the
/// coordinate mappings, with the toolkit's one rule for rounding reals to device units.
class TQ_EXPORT FloatPoint : public TqObject {
public:
    // --- Constructors -----------------------------------------------------------------------
    FloatPoint() = default;
    ///@{
    /// Both coordinates set to v.
    explicit FloatPoint(double v) : m_x(v), m_y(v) {}
    FloatPoint(double x, double y) : m_x(x), m_y(y) {}
    FloatPoint(int x, int y) : m_x(x), m_y(y) {}
    FloatPoint(long x, long y) : m_x(static_cast<double>(x)), m_y(static_cast<double>(y)) {}
    explicit FloatPoint(const DevicePoint& p);
    explicit FloatPoint(const SheetPoint& p);
    FloatPoint(const FloatPoint&) = default;
    FloatPoint& operator=(const FloatPoint&) = default;
    ///@}

    /// The one shared scratch instance.
    static FloatPoint& scratch();

    // --- Queries and setters ----------------------------------------------------------------
    ///@{
    /// The coordinates; adjust and translateBy add, scaleBy multiplies each coordinate.
    double x() const { return m_x; }
    double y() const { return m_y; }
    void setX(double x) { m_x = x; }
    void setY(double y) { m_y = y; }
    void setXY(double x, double y) { m_x = x, m_y = y; }
    void adjustX(double d) { m_x += d; }
    void adjustY(double d) { m_y += d; }
    void adjustXY(double dx, double dy) { m_x += dx, m_y += dy; }
    void scaleBy(const FloatPoint& f) { m_x *= f.m_x, m_y *= f.m_y; }
    void translateBy(const FloatPoint& d) { m_x += d.m_x, m_y += d.m_y; }
    ///@}

    // --- Rounding ---------------------------------------------------------------------------
    ///@{
    /// Halves round away from zero: 2.5 gives 3, -1.7 gives -2, -2.5 gives -3. No clamping:
    /// the value must fit a long.
    static long asLong(double v) { return static_cast<long>(v >= 0 ? v + 0.5 : v - 0.5); }
    long xRounded() const { return asLong(m_x); }
    long yRounded() const { return asLong(m_y); }
    ///@}

    // --- Operators --------------------------------------------------------------------------
    ///@{
    /// The binary and unary operators return a reference to a static object owned by each
    /// operator, valid until that operator runs again: copy the result at once.
    bool operator==(const FloatPoint& p) const { return m_x == p.m_x && m_y == p.m_y; }
    bool operator!=(const FloatPoint& p) const { return !(*this == p); }
    const FloatPoint& operator+(const FloatPoint& p) const;
    const FloatPoint& operator-(const FloatPoint& p) const;
    const FloatPoint& operator*(const FloatPoint& p) const;
    ///@}
    ///@{
    /// Component-wise; a zero divisor gives an infinity or NaN as in double arithmetic.
    const FloatPoint& operator/(const FloatPoint& p) const;
    const FloatPoint& operator-() const;
    FloatPoint& operator+=(const FloatPoint& p) { return m_x += p.m_x, m_y += p.m_y, *this; }
    FloatPoint& operator-=(const FloatPoint& p) { return m_x -= p.m_x, m_y -= p.m_y, *this; }
    FloatPoint& operator*=(const FloatPoint& p) { return m_x *= p.m_x, m_y *= p.m_y, *this; }
    FloatPoint& operator/=(const FloatPoint& p) { return m_x /= p.m_x, m_y /= p.m_y, *this; }
    FloatPoint& operator*=(double f) { return m_x *= f, m_y *= f, *this; }
    FloatPoint& operator/=(double f) { return m_x /= f, m_y /= f, *this; }
    ///@}

    // --- Text forms -------------------------------------------------------------------------
    /// "(" x "@" y ")".
    std::ostream& printOn(std::ostream& out) const override;
    /// x "@" y.
    std::ostream& storeOn(std::ostream& out, Criteria& criteria) const override;

private:
    double m_x = 0.0;
    double m_y = 0.0;
};
