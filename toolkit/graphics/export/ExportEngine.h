#pragma once

#include "core/TqExport.h"
#include "graphics/device/wsiTypes.h"
#include "graphics/geometry/DevicePoint.h"
#include "graphics/geometry/DeviceRectangle.h"

#include <QColor>
#include <QPaintEngine>
#include <QTransform>
#include <cstddef>
#include <optional>
#include <vector>

/// ExportEngine: the shared part of the Qt paint engines that export what a TqPainter paints
/// to a file format (EPSEngine, MIFEngine): the painter's state as the formats use it, the
/// clip, the mapping to device units and the breaking up of shapes. Each format overrides
/// only the hooks that write its text.
///
/// The engine declares only the features it draws (v_features), so that QPainter emulates
/// the rest: shapes come untransformed and are mapped here, painter paths are filled and
/// stroked, and every brush, pen and composition that is more than a solid colour is left to
/// the painter. Images, pixmaps and points have no form in these exports and write nothing.
class TQ_EXPORT ExportEngine : public QPaintEngine {
public:
    /// What an export engine draws itself: it maps shapes through the painter's
    /// transformation, fills and strokes painter paths, and paints at any time.
    static constexpr PaintEngineFeatures v_features{QPaintEngine::PrimitiveTransform |
                                                    QPaintEngine::PainterPaths |
                                                    QPaintEngine::PaintOutsidePaintEvent};

    /// QPaintEngine::User: these engines are none of Qt's own.
    Type type() const override { return QPaintEngine::User; }
    /// Takes the transformation, the pen (colour, style as QtConversion::asWsiPenStyle, width),
    /// the brush and the clip, each only when the painter marks it changed, and tells the
    /// format through penChanged and clipChanged.
    void updateState(const QPaintEngineState& state) override;

    ///@{
    /// Each line as a stroked polyline of two points.
    void drawLines(const QLineF* lines, int lineCount) override;
    void drawLines(const QLine* lines, int lineCount) override;
    ///@}
    ///@{
    /// Each rectangle as a polygon of its four corners.
    void drawRects(const QRectF* rects, int rectCount) override;
    void drawRects(const QRect* rects, int rectCount) override;
    ///@}
    ///@{
    /// A polyline is stroked; a polygon is filled with the brush (when there is one) and
    /// stroked closed.
    void drawPolygon(const QPointF* points, int pointCount, PolygonDrawMode mode) override;
    void drawPolygon(const QPoint* points, int pointCount, PolygonDrawMode mode) override;
    ///@}
    /// As the format draws the ellipse in QRectF(r).
    void drawEllipse(const QRect& r) override;
    using QPaintEngine::drawEllipse;
    /// Fills the path's polygons with the brush (when there is one), then strokes its
    /// straight elements as two-point polylines and its cubic elements as curves.
    void drawPath(const QPainterPath& path) override;
    ///@{
    /// Write nothing: these exports have no form for them.
    void drawImage(const QRectF& r, const QImage& image, const QRectF& sr,
                   Qt::ImageConversionFlags flags) override;
    void drawPixmap(const QRectF& r, const QPixmap& pm, const QRectF& sr) override;
    void drawTiledPixmap(const QRectF& r, const QPixmap& pixmap, const QPointF& s) override;
    void drawPoints(const QPointF* points, int pointCount) override;
    void drawPoints(const QPoint* points, int pointCount) override;
    ///@}

protected:
    ExportEngine();

    // --- The painter's state ----------------------------------------------------------------
    ///@{
    /// The painter's pen as last updated: its colour, dash style, width in device units
    /// (0 is a cosmetic pen), and whether there is one at all (false for Qt::NoPen).
    const QColor& penColor() const { return m_penColor; }
    wsiPenStyle penStyle() const { return m_penStyle; }
    double penWidth() const { return m_penWidth; }
    bool hasPen() const { return m_hasPen; }
    ///@}
    ///@{
    /// The painter's brush colour, and whether shapes are filled (false for Qt::NoBrush).
    const QColor& brushColor() const { return m_brushColor; }
    bool hasBrush() const { return m_hasBrush; }
    ///@}
    /// The bounding rectangle of the painter's clip in device units; none without a clip.
    const std::optional<DeviceRectangle>& clip() const { return m_clip; }
    /// Forgets the clip, as when a new page starts without one.
    void resetClip() { m_clip.reset(); }

    // --- Mapping ----------------------------------------------------------------------------
    ///@{
    /// Through the painter's transformation, rounded half away from zero to device units
    /// (a coordinate beyond them is clamped, one that is not finite is 0).
    DevicePoint map(const QPointF& p) const;
    DeviceRectangle mapRect(const QRectF& r) const;
    ///@}

    // --- What the formats write -------------------------------------------------------------
    /// Told after updateState took a new pen; writes nothing by default.
    virtual void penChanged() {}
    /// Told after updateState took a new clip (clip() may now be none).
    virtual void clipChanged() = 0;
    /// The polygon of n points filled in the brush colour, without outline.
    virtual void fillPolygon(const DevicePoint* points, std::size_t n) = 0;
    /// The lines joining the n points in order, and back to the first when closed (then the
    /// outline of a shape drawn with brushColor when hasBrush).
    virtual void strokePolyline(const DevicePoint* points, std::size_t n, bool closed) = 0;
    /// The cubic curve from from to to with the two control points.
    virtual void strokeCurve(const DevicePoint& from, const DevicePoint& first,
                             const DevicePoint& second, const DevicePoint& to) = 0;

private:
    std::optional<DeviceRectangle> clipOf() const;
    template <class Point>
    void drawMappedPolygon(const Point* points, int pointCount, PolygonDrawMode mode);

    QTransform m_transform;
    QColor m_penColor{Qt::black};
    wsiPenStyle m_penStyle = wsiPenSolid;
    double m_penWidth = 0;
    bool m_hasPen = true;
    QColor m_brushColor{Qt::black};
    bool m_hasBrush = false;
    std::optional<DeviceRectangle> m_clip;
    std::vector<DevicePoint> m_points;
};
