#pragma once

#include "core/TqExport.h"
#include "core/TqObject.h"

class DevicePoint;
class FileElement;
class FloatPoint;
class Transformation;
class TqMatrix;

/// SheetPoint: a point or an extent in sheet units, the real-valued coordinates of the
/// diagram being drawn. Nothing here allocates.
class TQ_EXPORT SheetPoint : public TqObject {
public:
    // --- Constructors -----------------------------------------------------------------------
    ///@{
    /// (0, 0), (x, y), or a copy.
    SheetPoint() = default;
    SheetPoint(double x, double y) : m_x(x), m_y(y) {}
    SheetPoint(const SheetPoint&) = default;
    ///@}
    /// The same coordinates.
    explicit SheetPoint(const FloatPoint& p);
    ///@{
    /// Device to sheet through t (applyInverseXHalfTo).
    SheetPoint(long x, long y, const Transformation& t);
    SheetPoint(long x, long y, const TqMatrix& m);
    SheetPoint(const DevicePoint& p, const Transformation& t);
    SheetPoint(const DevicePoint& p, const TqMatrix& m);
    ///@}

    /// A process-wide point for temporary results, overwritten by every user; for callers
    /// that must hand out a reference to a result.
    static SheetPoint& scratch();

    // --- Queries and setters ----------------------------------------------------------------
    ///@{
    /// The coordinates in sheet units; setting from device coordinates converts through t or m as
    /// the constructors do; adjust adds, scaleBy multiplies and translateBy adds each
    /// coordinate of p.
    double x() const { return m_x; }
    double y() const { return m_y; }
    void setX(double x) { m_x = x; }
    void setY(double y) { m_y = y; }
    void setXY(double x, double y) { m_x = x, m_y = y; }
    void set(const DevicePoint& p, const Transformation& t);
    void set(const DevicePoint& p, const TqMatrix& m);
    void setXY(long x, long y, const Transformation& t);
    void setXY(long x, long y, const TqMatrix& m);
    void adjustX(double d) { m_x += d; }
    void adjustY(double d) { m_y += d; }
    void adjustXY(double dx, double dy) { m_x += dx, m_y += dy; }
    void scaleBy(const SheetPoint& p) { m_x *= p.m_x, m_y *= p.m_y; }
    void translateBy(const SheetPoint& p) { m_x += p.m_x, m_y += p.m_y; }
    void scaleBy(const FloatPoint& p);
    void translateBy(const FloatPoint& p);
    ///@}

    /// Reads x and y from the element's first two items, which must both be number tokens, as
    /// decimal integers (saturated to 32 bits). False, with the point unchanged, for any other
    /// item types.
    [[nodiscard]] bool read(FileElement& element);

    // --- Intercepts -------------------------------------------------------------------------
    /// The y of the line through a and b at x; a vertical pair gives an infinity or NaN.
    static double yIntercept(double x, const SheetPoint& a, const SheetPoint& b);
    /// The x of that line at y; a horizontal pair gives an infinity or NaN.
    static double xIntercept(double y, const SheetPoint& a, const SheetPoint& b);

    // --- Operators --------------------------------------------------------------------------
    ///@{
    /// Binary and unary operators return a reference to a static object owned by each
    /// operator, valid until that operator runs again: copy the result at once.
    SheetPoint& operator=(const SheetPoint&) = default;
    SheetPoint& operator=(const FloatPoint& p);
    bool operator==(const SheetPoint& p) const { return m_x == p.m_x && m_y == p.m_y; }
    bool operator!=(const SheetPoint& p) const { return !(*this == p); }
    bool operator==(const FloatPoint& p) const;
    bool operator!=(const FloatPoint& p) const { return !(*this == p); }
    const SheetPoint& operator+(const SheetPoint& p) const;
    const SheetPoint& operator-(const SheetPoint& p) const;
    const SheetPoint& operator*(const SheetPoint& p) const;
    const SheetPoint& operator/(const SheetPoint& p) const;
    const SheetPoint& operator-() const;
    SheetPoint& operator+=(const SheetPoint& p) { return m_x += p.m_x, m_y += p.m_y, *this; }
    SheetPoint& operator-=(const SheetPoint& p) { return m_x -= p.m_x, m_y -= p.m_y, *this; }
    SheetPoint& operator*=(const SheetPoint& p) { return m_x *= p.m_x, m_y *= p.m_y, *this; }
    SheetPoint& operator/=(const SheetPoint& p) { return m_x /= p.m_x, m_y /= p.m_y, *this; }
    SheetPoint& operator*=(double f) { return m_x *= f, m_y *= f, *this; }
    SheetPoint& operator/=(double f) { return m_x /= f, m_y /= f, *this; }
    SheetPoint& operator+=(const FloatPoint& p);
    SheetPoint& operator-=(const FloatPoint& p);
    SheetPoint& operator*=(const FloatPoint& p);
    SheetPoint& operator/=(const FloatPoint& p);
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
    double m_x = 0.0;
    double m_y = 0.0;
};
