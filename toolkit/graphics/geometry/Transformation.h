#pragma once

#include "core/TqExport.h"
#include "core/TqObject.h"
#include "graphics/geometry/FloatPoint.h"

/// Transformation: the mapping from sheet to device coordinates as a per-axis scale and
/// translation (device = sheet * scale + translation), with the toolkit's clamping rule for
/// device coordinates.
class TQ_EXPORT Transformation : public TqObject {
public:
    ///@{
    /// Scale (1, 1), translation (0, 0).
    Transformation() : m_scale(1.0, 1.0) {}
    Transformation(const FloatPoint& scale, const FloatPoint& translation)
        : m_scale(scale), m_translation(translation) {}
    Transformation(const Transformation&) = default;
    Transformation& operator=(const Transformation&) = default;
    ///@}

    /// A process-wide transformation for temporary results, overwritten by every user.
    static Transformation& scratch();

    ///@{
    /// The scale (device units per sheet unit, per axis) and the translation (device units).
    const FloatPoint& scale() const { return m_scale; }
    const FloatPoint& translation() const { return m_translation; }
    void setScale(const FloatPoint& scale) { m_scale = scale; }
    void setScale(double x, double y) { m_scale.setXY(x, y); }
    void setTranslation(const FloatPoint& translation) { m_translation = translation; }
    void setTranslation(double x, double y) { m_translation.setXY(x, y); }
    ///@}
    ///@{
    /// Sets the scale and translation of one axis.
    void setXHalf(double scale, double translation);
    void setYHalf(double scale, double translation);
    ///@}

    ///@{
    /// The device coordinate of sheet coordinate v: scale * v + translation, plus 0.5 when
    /// round is set, clamped to the signed 32-bit range and truncated toward zero. The
    /// rounding is deliberately asymmetric: -1.7 with round gives -1. NaN gives 0.
    long applyXHalfTo(double v, bool round) const;
    long applyYHalfTo(double v, bool round) const;
    ///@}
    ///@{
    /// The sheet coordinate of device coordinate d: (d - translation) / scale. A zero scale
    /// gives an infinity or NaN; callers never set one.
    double applyInverseXHalfTo(long d) const;
    double applyInverseYHalfTo(long d) const;
    ///@}

    /// translation += d.
    void translateBy(const FloatPoint& d) { m_translation += d; }
    /// scale *= f, component-wise; the translation is kept.
    void scaleBy(const FloatPoint& f) { m_scale *= f; }
    /// translation += d * scale: d is a distance in sheet units.
    void scrollBy(const FloatPoint& d);

    /// "(scale:" scale " xlate:" translation ")", e.g. "(scale:(1@1) xlate:(0@0))".
    std::ostream& printOn(std::ostream& out) const override;

    /// The clamping and truncation of applyXHalfTo, shared with TqMatrix: r (plus 0.5 when
    /// round is set) clamped to [-2147483648, 2147483647] and truncated toward zero.
    static long clampToDevice(double r, bool round);

private:
    FloatPoint m_scale;
    FloatPoint m_translation;
};
