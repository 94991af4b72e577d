#include "graphics/export/eps/EPSEngine.h"

#include "graphics/device/QtConversion.h"
#include "graphics/device/WsiFont.h"
#include "graphics/device/wsiDevice.h"
#include "graphics/export/eps/EPSWriter_p.h"
#include "graphics/export/eps/PostScriptFont.h"

#include <QPainterPath>
#include <QTextItem>
#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

namespace {

std::int32_t rounded(double v) {
    constexpr double low = std::numeric_limits<std::int32_t>::min();
    constexpr double high = std::numeric_limits<std::int32_t>::max();
    if (!std::isfinite(v))
        return 0;
    return static_cast<std::int32_t>(std::lround(std::clamp(v, low, high)));
}

} // namespace

EPSEngine::EPSEngine(wsiDevice* device, const char* jobName, std::ostream& out,
                     const ExportParameters& parameters)
    : QPaintEngine(QPaintEngine::AllFeatures), m_device(device), m_jobName(jobName ? jobName : ""),
      m_parameters(parameters),
      m_writer(std::make_unique<EPSWriter>(out, parameters.isGrayScale())),
      m_paintDevice(std::make_unique<EPSPaintDevice>(this)) {
    m_paintDevice->setPage(EPSWriter::deviceSize(parameters), 72 / m_writer->fontScaleFactor());
}

EPSEngine::~EPSEngine() = default;

QPaintDevice& EPSEngine::paintDevice() {
    return *m_paintDevice;
}

void EPSEngine::updatePageMetrics() {
    m_paintDevice->setPage(deviceSize(), 72 / m_writer->fontScaleFactor());
}

// --- The page ---------------------------------------------------------------------------------

bool EPSEngine::open(const DeviceRectangle& source, const DeviceRectangle& target) {
    m_writer->open(source, target, deviceSize(), m_parameters.orientation(),
                   m_parameters.paperFeed());
    updatePageMetrics();
    m_clip.reset();
    m_writtenColor.reset();
    m_writtenStyle.reset();
    m_writtenWidth = m_writer->lineWidth();
    return true;
}

void EPSEngine::close() {
    m_writer->close();
}

void EPSEngine::endOfPage() {
    m_writer->endOfPage();
}

void EPSEngine::endPath() {
    m_writer->endPath();
}

void EPSEngine::closePath() {
    m_writer->closePath();
}

void EPSEngine::computeFontScaleFactor(const DeviceRectangle& source,
                                       const DeviceRectangle& target) {
    m_writer->computeFontScaleFactor(source, target);
    updatePageMetrics();
}

double EPSEngine::fontScaleFactor() const {
    return m_writer->fontScaleFactor();
}

DevicePoint EPSEngine::paperSize() const {
    return EPSWriter::paperSize(m_parameters);
}

DevicePoint EPSEngine::deviceSize() const {
    return EPSWriter::deviceSize(m_parameters);
}

// --- Fonts ----------------------------------------------------------------------------------

const char* EPSEngine::selectFont(const QFont& font) const {
    const QByteArray family = font.family().toUtf8();
    return PostScriptFont::nameFor(std::string_view(family.constData(), std::size_t(family.size())),
                                   font.bold(), font.italic());
}

const DevicePoint& EPSEngine::pixelBox(const char* text, const QFont& font) {
    static DevicePoint box;
    box.setXY(0, 0);
    if (!text)
        return box;
    // The page's resolution makes a point 1 / fontScaleFactor device units, as printed.
    WsiFont measured(PostScriptFont::measuringFamily(selectFont(font)), pointSizeOf(font));
    measured.setBold(font.bold());
    measured.setItalic(font.italic());
    const WsiFontMetric metric(measured, m_paintDevice.get());
    box.setXY(metric.advance(text, -1), metric.height());
    return box;
}

double EPSEngine::pointSizeOf(const QFont& font) const {
    return font.pointSizeF() > 0 ? font.pointSizeF()
                                 : font.pixelSize() * 72.0 / m_paintDevice->logicalDpiY();
}

// --- QPaintEngine -----------------------------------------------------------------------------

bool EPSEngine::begin(QPaintDevice*) {
    if (!m_writer->isDrawing()) {
        const DevicePoint size = deviceSize();
        const DeviceRectangle page(0, 0, size.x(), size.y());
        open(page, page);
    }
    return true;
}

bool EPSEngine::end() {
    m_writer->close();
    if (!m_writer->pageEnded())
        m_writer->endOfPage();
    return true;
}

QPaintEngine::Type EPSEngine::type() const {
    return QPaintEngine::User;
}

void EPSEngine::updateState(const QPaintEngineState& state) {
    const DirtyFlags flags = state.state();
    if (flags & DirtyTransform)
        m_transform = state.transform();
    if (flags & DirtyPen) {
        const QPen pen = state.pen();
        m_noPen = pen.style() == Qt::NoPen;
        m_penColor = nearestColor(pen.color());
        m_penStyle = penStyleOf(pen.style());
        m_penWidth = std::lround(pen.widthF());
    }
    if (flags & DirtyBrush) {
        const QBrush brush = state.brush();
        m_brush = brush.style() != Qt::NoBrush;
        m_brushColor = nearestColor(brush.color());
    }
    if (flags & (DirtyClipPath | DirtyClipRegion | DirtyClipEnabled))
        updateClip(state);
}

void EPSEngine::updateClip(const QPaintEngineState& state) {
    std::optional<DeviceRectangle> clip;
    if (state.isClipEnabled() && state.clipOperation() != Qt::NoClip) {
        const QPainterPath path = state.clipPath();
        const QRectF area = (state.state() & DirtyClipPath) || !path.isEmpty()
                                ? path.boundingRect()
                                : QRectF(state.clipRegion().boundingRect());
        DeviceRectangle r = mapRect(area);
        if (state.clipOperation() == Qt::IntersectClip && m_clip) {
            const DeviceRectangle* overlap = r.intersect(*m_clip);
            r = overlap ? *overlap : DeviceRectangle(r.origin(), r.origin());
        }
        clip = r;
    }
    if (clip == m_clip)
        return;
    m_clip = clip;
    if (clip)
        m_writer->setClipRect(*clip);
    else
        m_writer->clearClipRect();
    // grestore brought back the graphics state of the header.
    m_writtenColor.reset();
    m_writtenStyle.reset();
    m_writtenWidth.reset();
}

bool EPSEngine::applyPen() {
    if (m_noPen)
        return false;
    if (m_writtenColor != m_penColor) {
        m_writer->setColor(m_penColor);
        m_writtenColor = m_penColor;
    }
    if (m_writtenStyle != m_penStyle) {
        m_writer->setPenStyle(m_penStyle);
        m_writtenStyle = m_penStyle;
    }
    if (m_writtenWidth != m_penWidth) {
        m_writer->setLineWidth(m_penWidth);
        m_writtenWidth = m_penWidth;
    }
    return true;
}

DevicePoint EPSEngine::map(const QPointF& p) const {
    const QPointF q = m_transform.map(p);
    return DevicePoint(rounded(q.x()), rounded(q.y()));
}

DeviceRectangle EPSEngine::mapRect(const QRectF& r) const {
    const QRectF q = m_transform.mapRect(r);
    return DeviceRectangle(rounded(q.left()), rounded(q.top()), rounded(q.right()),
                           rounded(q.bottom()));
}

// The lines joining the points in order (and back to the first when closed), as EPSDevice's
// polylines write them.
void EPSEngine::drawPointList(const DevicePoint* points, std::size_t n, bool closed) {
    if (n < 2 || !applyPen())
        return;
    m_writer->moveTo(points[0].x(), points[0].y());
    for (std::size_t i = 1; i < n; ++i)
        m_writer->lineTo(points[i].x(), points[i].y());
    if (closed)
        m_writer->lineTo(points[0].x(), points[0].y());
}

void EPSEngine::drawShape(const DevicePoint* points, std::size_t n, bool closed) {
    if (closed && m_brush)
        m_writer->filledPolygon(m_brushColor, n, points, false);
    drawPointList(points, n, closed);
}

void EPSEngine::drawLines(const QLine* lines, int lineCount) {
    for (int i = 0; i < lineCount; ++i) {
        const DevicePoint ends[2] = {map(lines[i].p1()), map(lines[i].p2())};
        drawPointList(ends, 2, false);
    }
}

void EPSEngine::drawLines(const QLineF* lines, int lineCount) {
    for (int i = 0; i < lineCount; ++i) {
        const DevicePoint ends[2] = {map(lines[i].p1()), map(lines[i].p2())};
        drawPointList(ends, 2, false);
    }
}

void EPSEngine::drawPath(const QPainterPath& path) {
    if (m_brush) {
        for (const QPolygonF& polygon : path.toFillPolygons(m_transform)) {
            std::vector<DevicePoint> points;
            points.reserve(std::size_t(polygon.size()));
            for (const QPointF& p : polygon)
                points.emplace_back(rounded(p.x()), rounded(p.y()));
            m_writer->filledPolygon(m_brushColor, points.size(), points.data(), false);
        }
    }
    if (!applyPen())
        return;
    DevicePoint current;
    for (int i = 0; i < path.elementCount(); ++i) {
        const QPainterPath::Element& e = path.elementAt(i);
        const DevicePoint p = map(QPointF(e.x, e.y));
        if (e.type == QPainterPath::CurveToElement && i + 2 < path.elementCount()) {
            const QPainterPath::Element& second = path.elementAt(i + 1);
            const QPainterPath::Element& end = path.elementAt(i + 2);
            const DevicePoint to = map(QPointF(end.x, end.y));
            m_writer->curve(current, p, map(QPointF(second.x, second.y)), to);
            current = to;
            i += 2;
            continue;
        }
        if (e.type == QPainterPath::LineToElement) {
            m_writer->moveTo(current.x(), current.y());
            m_writer->lineTo(p.x(), p.y());
        }
        current = p;
    }
}

void EPSEngine::drawPolygon(const QPoint* points, int pointCount, PolygonDrawMode mode) {
    std::vector<DevicePoint> mapped;
    mapped.reserve(std::size_t(std::max(pointCount, 0)));
    for (int i = 0; i < pointCount; ++i)
        mapped.push_back(map(points[i]));
    drawShape(mapped.data(), mapped.size(), mode != PolylineMode);
}

void EPSEngine::drawPolygon(const QPointF* points, int pointCount, PolygonDrawMode mode) {
    std::vector<DevicePoint> mapped;
    mapped.reserve(std::size_t(std::max(pointCount, 0)));
    for (int i = 0; i < pointCount; ++i)
        mapped.push_back(map(points[i]));
    drawShape(mapped.data(), mapped.size(), mode != PolylineMode);
}

void EPSEngine::drawRects(const QRectF* rects, int rectCount) {
    for (int i = 0; i < rectCount; ++i) {
        const QRectF& r = rects[i];
        const DevicePoint corners[4] = {map(r.topLeft()), map(QPointF(r.right(), r.top())),
                                        map(QPointF(r.right(), r.bottom())),
                                        map(QPointF(r.left(), r.bottom()))};
        drawShape(corners, 4, true);
    }
}

void EPSEngine::drawRects(const QRect* rects, int rectCount) {
    for (int i = 0; i < rectCount; ++i) {
        const QRectF r(rects[i]);
        drawRects(&r, 1);
    }
}

void EPSEngine::drawEllipse(const QRectF& r) {
    const bool outline = applyPen();
    m_writer->ellipse(mapRect(r), m_brush, m_brushColor, outline);
}

void EPSEngine::drawEllipse(const QRect& r) {
    drawEllipse(QRectF(r));
}

void EPSEngine::drawTextItem(const QPointF& p, const QTextItem& textItem) {
    if (!applyPen())
        return;
    const QFont font = textItem.font();
    const QByteArray text = textItem.text().toUtf8();
    m_writer->text(std::string_view(text.constData(), std::size_t(text.size())), map(p),
                   selectFont(font), pointSizeOf(font) / m_writer->fontScaleFactor(), m_penColor);
}

void EPSEngine::drawImage(const QRectF&, const QImage&, const QRectF&, Qt::ImageConversionFlags) {}

void EPSEngine::drawPixmap(const QRectF&, const QPixmap&, const QRectF&) {}

void EPSEngine::drawTiledPixmap(const QRectF&, const QPixmap&, const QPointF&) {}

void EPSEngine::drawPoints(const QPointF*, int) {}

void EPSEngine::drawPoints(const QPoint*, int) {}

// --- Conversions ------------------------------------------------------------------------------

wsiColor EPSEngine::nearestColor(const QColor& color) {
    if (!color.isValid())
        return wsiNoColor;
    const QRgb rgb = color.rgb();
    wsiColor best = wsiBlack;
    long long bestDistance = std::numeric_limits<long long>::max();
    // The markup colours first, so that black and white come out as 3 and 18.
    for (int value = wsiBlack; value <= wsiWhite; ++value) {
        const QRgb candidate = QtConversion::asQColor(static_cast<wsiColor>(value)).rgb();
        const long long dr = qRed(rgb) - qRed(candidate), dg = qGreen(rgb) - qGreen(candidate),
                        db = qBlue(rgb) - qBlue(candidate);
        const long long distance = dr * dr + dg * dg + db * db;
        if (distance < bestDistance) {
            bestDistance = distance;
            best = static_cast<wsiColor>(value);
        }
    }
    return best;
}

wsiPenStyle EPSEngine::penStyleOf(Qt::PenStyle style) {
    switch (style) {
    case Qt::SolidLine:
        return wsiPenSolid;
    case Qt::DashLine:
        return wsiPenDash;
    case Qt::DotLine:
        return wsiPenDot;
    case Qt::DashDotLine:
        return wsiPenDashDot;
    case Qt::DashDotDotLine:
        return wsiPenDashDotDot;
    case Qt::NoPen:
        return wsiPenNull;
    default:
        return wsiPenCustomDash;
    }
}
