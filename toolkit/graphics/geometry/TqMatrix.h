#pragma once

#include "core/TqExport.h"
#include "core/TqObject.h"
#include "graphics/geometry/FloatPoint.h"

#include <QTransform>

class QRect;

/// TqMatrix: the sheet-to-device mapping held as a Qt affine matrix (m11 the x scale, m22 the
/// y scale, dx and dy the translation), with the same operations as Transformation.
class TQ_EXPORT TqMatrix : public TqObject, public QTransform {
public:
    ///@{
    /// The identity, a matrix of the given scale and translation, or a copy (of a Qt matrix:
    /// its shear and projection are kept but not used by the half-apply operations).
    TqMatrix() = default;
    TqMatrix(const FloatPoint& scale, const FloatPoint& translation);
    explicit TqMatrix(const QTransform& matrix) : QTransform(matrix) {}
    TqMatrix(const TqMatrix&) = default;
    TqMatrix& operator=(const TqMatrix&) = default;
    TqMatrix& operator=(const QTransform& matrix);
    ///@}

    /// A process-wide matrix for temporary results, overwritten by every user.
    static TqMatrix& scratch();

    ///@{
    /// Equal when the Qt matrices are equal (TqObject's identity comparison is not meant).
    bool operator==(const TqMatrix& m) const { return QTransform::operator==(m); }
    bool operator!=(const TqMatrix& m) const { return !(*this == m); }
    ///@}

    ///@{
    /// (m11, m22) and (dx, dy). These hide QTransform's scale(sx, sy) and translate.
    FloatPoint scale() const { return FloatPoint(m11(), m22()); }
    FloatPoint translation() const { return FloatPoint(dx(), dy()); }
    void setScale(const FloatPoint& scale) { setScale(scale.x(), scale.y()); }
    void setScale(double x, double y);
    void setTranslation(const FloatPoint& t) { setTranslation(t.x(), t.y()); }
    void setTranslation(double x, double y);
    void setXScale(double s);
    void setYScale(double s);
    void setXTranslation(double t);
    void setYTranslation(double t);
    void setXHalf(double scale, double translation);
    void setYHalf(double scale, double translation);
    ///@}

    /// As Transformation::applyXHalfTo, with r the x of the matrix's mapping of (v, 0).
    long applyXHalfTo(double v, bool round) const;
    /// With r the y of the mapping of (0, v).
    long applyYHalfTo(double v, bool round) const;
    ///@{
    /// (d - dx) / m11 and (d - dy) / m22; no guard against a zero scale.
    double applyInverseXHalfTo(long d) const;
    double applyInverseYHalfTo(long d) const;
    ///@}

    ///@{
    /// translateBy adds d to the translation; scaleBy multiplies the scale by f; scrollBy
    /// adds d in logical units (d times the scale) to the translation.
    void translateBy(const FloatPoint& d);
    void scaleBy(const FloatPoint& f);
    void scrollBy(const FloatPoint& d);
    ///@}

    /// Maps a device rectangle back into logical units, in place. Its edges (left, top and
    /// the exclusive right and bottom) are mapped and rounded half away from zero, limited to
    /// the signed 32-bit range of a QRect.
    void physicalToLogical(QRect& rect) const;

    /// "(scale:" scale " xlate:" translation ")".
    std::ostream& printOn(std::ostream& out) const override;

private:
    void setElements(double m11, double m22, double dx, double dy);
};
