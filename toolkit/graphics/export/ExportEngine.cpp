#include "graphics/export/ExportEngine.h"

#include "graphics/device/QtConversion.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>

namespace {

std::int32_t rounded(double v) {
    constexpr double low = std::numeric_limits<std::int32_t>::min();
    constexpr double high = std::numeric_limits<std::int32_t>::max();
    if (!std::isfinite(v))
        return 0;
    return static_cast<std::int32_t>(std::lround(std::clamp(v, low, high)));
}

} // namespace

ExportEngine::ExportEngine() : QPaintEngine(v_features) {}

void ExportEngine::updateState(const QPaintEngineState& state) {
    const DirtyFlags flags = state.state();
    if (flags & DirtyTransform)
        m_transform = state.transform();
    if (flags & DirtyBrush) {
        const QBrush brush = state.brush();
        m_hasBrush = brush.style() != Qt::NoBrush;
        m_brushColor = brush.color();
    }
    if (flags & DirtyPen) {
        const QPen pen = state.pen();
        m_hasPen = pen.style() != Qt::NoPen;
        m_penColor = pen.color();
        m_penStyle = QtConversion::asWsiPenStyle(pen.style());
        m_penWidth = pen.widthF();
        penChanged();
    }
    if (flags & (DirtyClipPath | DirtyClipRegion | DirtyClipEnabled)) {
        std::optional<DeviceRectangle> clip = clipOf();
        if (clip != m_clip) {
            m_clip = clip;
            clipChanged();
        }
    }
}

// The painter's own bounding rectangle of its clip, which has every clip operation applied
// (intersections included), in device units.
std::optional<DeviceRectangle> ExportEngine::clipOf() const {
    const QPainter* p = painter();
    if (!p || !p->hasClipping())
        return std::nullopt;
    return mapRect(p->clipBoundingRect());
}

DevicePoint ExportEngine::map(const QPointF& p) const {
    const QPointF q = m_transform.map(p);
    return DevicePoint(rounded(q.x()), rounded(q.y()));
}

DeviceRectangle ExportEngine::mapRect(const QRectF& r) const {
    const QRectF q = m_transform.mapRect(r);
    return DeviceRectangle(rounded(q.left()), rounded(q.top()), rounded(q.right()),
                           rounded(q.bottom()));
}

void ExportEngine::drawLines(const QLineF* lines, int lineCount) {
    for (int i = 0; i < lineCount; ++i) {
        const DevicePoint ends[2] = {map(lines[i].p1()), map(lines[i].p2())};
        strokePolyline(ends, 2, false);
    }
}

void ExportEngine::drawLines(const QLine* lines, int lineCount) {
    for (int i = 0; i < lineCount; ++i) {
        const QLineF line(lines[i]);
        drawLines(&line, 1);
    }
}

void ExportEngine::drawRects(const QRectF* rects, int rectCount) {
    for (int i = 0; i < rectCount; ++i) {
        const QRectF& r = rects[i];
        const QPointF corners[4] = {r.topLeft(), QPointF(r.right(), r.top()),
                                    QPointF(r.right(), r.bottom()), QPointF(r.left(), r.bottom())};
        drawPolygon(corners, 4, OddEvenMode);
    }
}

void ExportEngine::drawRects(const QRect* rects, int rectCount) {
    for (int i = 0; i < rectCount; ++i) {
        const QRectF r(rects[i]);
        drawRects(&r, 1);
    }
}

template <class Point>
void ExportEngine::drawMappedPolygon(const Point* points, int pointCount, PolygonDrawMode mode) {
    m_points.clear();
    m_points.reserve(std::size_t(std::max(pointCount, 0)));
    for (int i = 0; i < pointCount; ++i)
        m_points.push_back(map(points[i]));
    const bool closed = mode != PolylineMode;
    if (closed && m_hasBrush)
        fillPolygon(m_points.data(), m_points.size());
    strokePolyline(m_points.data(), m_points.size(), closed);
}

void ExportEngine::drawPolygon(const QPointF* points, int pointCount, PolygonDrawMode mode) {
    drawMappedPolygon(points, pointCount, mode);
}

void ExportEngine::drawPolygon(const QPoint* points, int pointCount, PolygonDrawMode mode) {
    drawMappedPolygon(points, pointCount, mode);
}

void ExportEngine::drawEllipse(const QRect& r) {
    drawEllipse(QRectF(r));
}

void ExportEngine::drawPath(const QPainterPath& path) {
    if (m_hasBrush) {
        for (const QPolygonF& polygon : path.toFillPolygons(m_transform)) {
            std::vector<DevicePoint> points;
            points.reserve(std::size_t(polygon.size()));
            for (const QPointF& p : polygon)
                points.emplace_back(rounded(p.x()), rounded(p.y()));
            fillPolygon(points.data(), points.size());
        }
    }
    DevicePoint current;
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element& e = path.elementAt(i);
        const DevicePoint p = map(QPointF(e.x, e.y));
        if (e.isCurveTo() && i + 2 < path.elementCount()) {
            const QPainterPath::Element& second = path.elementAt(i + 1);
            const QPainterPath::Element& end = path.elementAt(i + 2);
            const DevicePoint to = map(QPointF(end.x, end.y));
            strokeCurve(current, p, map(QPointF(second.x, second.y)), to);
            current = to;
            i += 2;
            continue;
        }
        if (e.isLineTo()) {
            const DevicePoint ends[2] = {current, p};
            strokePolyline(ends, 2, false);
        }
        current = p;
    }
}

void ExportEngine::drawImage(const QRectF&, const QImage&, const QRectF&,
                             Qt::ImageConversionFlags) {}

void ExportEngine::drawPixmap(const QRectF&, const QPixmap&, const QRectF&) {}

void ExportEngine::drawTiledPixmap(const QRectF&, const QPixmap&, const QPointF&) {}

void ExportEngine::drawPoints(const QPointF*, int) {}

void ExportEngine::drawPoints(const QPoint*, int) {}
