#include "graphics/export/mif/MIFEngine.h"

#include "graphics/geometry/FloatPoint.h"

#include <QPainter>
#include <QPainterPath>
#include <algorithm>

namespace {

constexpr int v_maxPoints = 65535;

wsiPenStyle asWsiPenStyle(Qt::PenStyle style) {
    switch (style) {
    case Qt::NoPen:
        return wsiPenNull;
    case Qt::DashLine:
        return wsiPenDash;
    case Qt::DotLine:
        return wsiPenDot;
    case Qt::DashDotLine:
        return wsiPenDashDot;
    case Qt::DashDotDotLine:
        return wsiPenDashDotDot;
    case Qt::CustomDashLine:
        return wsiPenCustomDash;
    default:
        return wsiPenSolid;
    }
}

} // namespace

MIFEngine::MIFEngine(const char* jobName, std::ostream& out, const ExportParameters& parameters,
                     const DeviceRectangle& drawing)
    : QPaintEngine(AllFeatures), m_writer(jobName, out, parameters, drawing),
      m_device(this, drawing) {}

bool MIFEngine::begin(QPaintDevice*) {
    return true;
}

bool MIFEngine::end() {
    return true;
}

void MIFEngine::updateState(const QPaintEngineState& state) {
    const DirtyFlags flags = state.state();
    if (flags & DirtyTransform)
        m_transform = state.transform();
    if (flags & DirtyPen) {
        const QPen pen = state.pen();
        m_hasPen = pen.style() != Qt::NoPen;
        m_writer.setColor(pen.color());
        m_writer.setPenStyle(asWsiPenStyle(pen.style()));
        m_writer.setPenWidth(pen.widthF());
    }
    if (flags & DirtyBrush) {
        m_hasBrush = state.brush().style() != Qt::NoBrush;
        m_brushColor = state.brush().color();
    }
    if (flags & (DirtyClipEnabled | DirtyClipRegion | DirtyClipPath | DirtyTransform)) {
        const QPainter* p = painter();
        if (!p || !p->hasClipping()) {
            m_writer.clearClipRect();
        } else {
            const QRectF r = m_transform.mapRect(p->clipBoundingRect());
            const DevicePoint origin(FloatPoint(r.left(), r.top()));
            const DevicePoint corner(FloatPoint(r.right(), r.bottom()));
            m_writer.setClipRect(DeviceRectangle(origin, corner));
        }
    }
}

DevicePoint MIFEngine::map(const QPointF& p) const {
    const QPointF mapped = m_transform.map(p);
    return DevicePoint(FloatPoint(mapped.x(), mapped.y()));
}

unsigned short MIFEngine::mapPoints(const QPointF* points, int pointCount) {
    const auto n = static_cast<unsigned short>(std::clamp(pointCount, 0, v_maxPoints));
    m_points.resize(n);
    for (unsigned short i = 0; i < n; ++i)
        m_points[i] = map(points[i]);
    return n;
}

void MIFEngine::drawOutline(unsigned short n, bool closed) {
    for (unsigned short i = 1; i < n; ++i)
        m_writer.line(m_points[i - 1], m_points[i]);
    if (closed && n >= 2)
        m_writer.line(m_points[n - 1], m_points[0]);
}

void MIFEngine::drawLines(const QLineF* lines, int lineCount) {
    for (int i = 0; i < lineCount; ++i)
        m_writer.line(map(lines[i].p1()), map(lines[i].p2()));
}

void MIFEngine::drawRects(const QRectF* rects, int rectCount) {
    for (int i = 0; i < rectCount; ++i) {
        const QRectF& r = rects[i];
        const QPointF corners[] = {r.topLeft(), QPointF(r.left() + r.width(), r.top()),
                                   QPointF(r.left() + r.width(), r.top() + r.height()),
                                   QPointF(r.left(), r.top() + r.height())};
        drawPolygon(corners, 4, OddEvenMode);
    }
}

void MIFEngine::drawEllipse(const QRectF& r) {
    const QRectF mapped = m_transform.mapRect(r);
    const DevicePoint origin(FloatPoint(mapped.left(), mapped.top()));
    const DevicePoint corner(
        FloatPoint(mapped.left() + mapped.width(), mapped.top() + mapped.height()));
    m_writer.ellipse(DeviceRectangle(origin, corner), m_hasBrush);
}

void MIFEngine::drawPolygon(const QPointF* points, int pointCount, PolygonDrawMode mode) {
    const unsigned short n = mapPoints(points, pointCount);
    if (mode == PolylineMode)
        return drawOutline(n, false);
    if (m_hasBrush)
        m_writer.filledPolygon(m_brushColor, n, m_points.data());
    if (m_hasPen || !m_hasBrush)
        drawOutline(n, true);
}

void MIFEngine::drawPath(const QPainterPath& path) {
    DevicePoint current;
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element& e = path.elementAt(i);
        const DevicePoint p = map(QPointF(e.x, e.y));
        if (e.isMoveTo()) {
            current = p;
        } else if (e.isLineTo()) {
            m_writer.line(current, p);
            current = p;
        } else if (e.isCurveTo() && i + 2 < path.elementCount()) {
            const QPainterPath::Element& second = path.elementAt(i + 1);
            const QPainterPath::Element& end = path.elementAt(i + 2);
            const DevicePoint to = map(QPointF(end.x, end.y));
            m_writer.curve(current, p, map(QPointF(second.x, second.y)), to);
            current = to;
            i += 2;
        }
    }
}

void MIFEngine::drawTextItem(const QPointF& p, const QTextItem& textItem) {
    const QByteArray text = textItem.text().toUtf8();
    m_writer.text(text.constData(), static_cast<int>(text.size()), map(p), wsiAlignLeft,
                  MIFFont::fromQFont(textItem.font()));
}

void MIFEngine::drawPixmap(const QRectF&, const QPixmap&, const QRectF&) {}

void MIFEngine::drawPoints(const QPointF*, int) {}
