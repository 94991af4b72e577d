#include "graphics/device/wsiDevice.h"

#include "graphics/geometry/FloatPoint.h"
#include "graphics/geometry/SheetPoint.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>
#include <vector>

namespace {

constexpr int v_curvePieces = 16;
constexpr int v_ellipseSides = 32;
constexpr int v_maxPoints = 65535;

unsigned short pointCount(int n) {
    return static_cast<unsigned short>(std::clamp(n, 0, v_maxPoints));
}

// The point at parameter t of the cubic Bezier a, b, c, d.
DevicePoint bezierAt(double t, const DevicePoint& a, const DevicePoint& b, const DevicePoint& c,
                     const DevicePoint& d) {
    const double u = 1.0 - t;
    const double wa = u * u * u, wb = 3 * u * u * t, wc = 3 * u * t * t, wd = t * t * t;
    return DevicePoint(FloatPoint(wa * a.x() + wb * b.x() + wc * c.x() + wd * d.x(),
                                  wa * a.y() + wb * b.y() + wc * c.y() + wd * d.y()));
}

} // namespace

wsiDevice::wsiDevice() : m_resolution(96, 96) {}

wsiDevice::~wsiDevice() = default;

void wsiDevice::sendUpdateTo(Dependent& d, Aspect a) {
    d.update(*this, a);
}

const TqMatrix& wsiDevice::displayTransformation(bool recompute) {
    if (recompute)
        computeDisplayTransformation();
    return m_displayTransformation;
}

void wsiDevice::setDisplayTransformation(const TqMatrix& m) {
    m_displayTransformation = m;
    changed(aspectTransformation);
}

void wsiDevice::computeDisplayTransformation() {}

const SheetRectangle& wsiDevice::visibleArea(bool recompute) {
    if (recompute)
        computeVisibleArea();
    return m_visibleArea;
}

void wsiDevice::computeVisibleArea() {
    m_visibleArea.set(m_clipRect, m_displayTransformation);
}

void wsiDevice::computeDisplayResolution() {}

void wsiDevice::setColor(wsiColor color) {
    m_color = color;
    primitiveSetColor(color);
}

void wsiDevice::setBackgroundColor(wsiColor color) {
    m_backgroundColor = color;
    primitiveSetBackgroundColor(color);
}

void wsiDevice::setPenStyle(wsiPenStyle style) {
    m_penStyle = style;
    primitiveSetPenStyle(style);
}

void wsiDevice::setPenWidth(long width) {
    m_penWidth = width;
}

void wsiDevice::setBackgroundFillMode(wsiBackgroundFillMode mode) {
    m_backgroundFillMode = mode;
    primitiveSetBackgroundFillMode(mode);
}

void wsiDevice::setDrawMode(wsiDrawMode mode) {
    m_drawMode = mode;
    primitiveSetDrawMode(mode);
}

void wsiDevice::setClipRect(const DeviceRectangle& r) {
    m_clipRect = r;
    primitiveSetClipRect(r);
    changed(aspectVisibleArea);
}

void wsiDevice::setClipRect(const SheetRectangle& r) {
    setClipRect(DeviceRectangle(r, displayTransformation(false)));
}

bool wsiDevice::isMonochrome() const {
    return false;
}

WsiFont& wsiDevice::selectFont(WsiFont& font) {
    m_selectedFont = &font;
    return font;
}

void wsiDevice::deselectFont() {
    m_selectedFont = nullptr;
}

void wsiDevice::selectNullFont() {
    m_selectedFont = nullptr;
}

WsiFontMetric& wsiDevice::newFontMetric() {
    const WsiFont fallback;
    WsiFontMetric metric(m_selectedFont ? *m_selectedFont : fallback, measuringDevice());
    // Kept in the one object, so that measuring a label's runs does not allocate each time.
    if (m_fontMetric)
        *m_fontMetric = std::move(metric);
    else
        m_fontMetric = std::make_unique<WsiFontMetric>(std::move(metric));
    return *m_fontMetric;
}

QPaintDevice* wsiDevice::measuringDevice() {
    return nullptr;
}

const DevicePoint& wsiDevice::pixelBox(const char* text, WsiFont& font) {
    static DevicePoint box;
    box = getTextExtent(text, font, -1);
    return box;
}

DevicePoint& wsiDevice::getTextExtent(const char* text, WsiFont& font, int length) {
    static DevicePoint extent;
    if (!text) {
        extent.setXY(0, 0);
        return extent;
    }
    WsiFont* previous = m_selectedFont;
    selectFont(font);
    const WsiFontMetric& metric = newFontMetric();
    extent.setXY(metric.advance(text, length), metric.height());
    m_selectedFont = previous;
    return extent;
}

void wsiDevice::moveTo(const SheetPoint& p) {
    m_sheetCurrentPoint.set(p, displayTransformation(false));
    primitiveMoveTo(m_sheetCurrentPoint.x(), m_sheetCurrentPoint.y());
}

void wsiDevice::lineTo(const SheetPoint& p) {
    m_sheetCurrentPoint.set(p, displayTransformation(false));
    primitiveLineTo(m_sheetCurrentPoint.x(), m_sheetCurrentPoint.y());
    primitiveMoveTo(m_sheetCurrentPoint.x(), m_sheetCurrentPoint.y());
}

void wsiDevice::drawLine(const SheetPoint& from, const SheetPoint& to) {
    moveTo(from);
    lineTo(to);
}

void wsiDevice::drawRectangle(const SheetRectangle& r) {
    const DeviceRectangle d(r, displayTransformation(false));
    DevicePoint* points = devicePointBuffer(4);
    points[0] = d.origin();
    points[1] = d.upRight();
    points[2] = d.corner();
    points[3] = d.lowLeft();
    drawPolygonUnTransformed(4, points);
}

void wsiDevice::fillRectangle(const SheetRectangle& r) {
    primitiveFilledRect(DeviceRectangle(r, displayTransformation(false)));
}

void wsiDevice::invertRectangle(const SheetRectangle& r) {
    primitiveInvertRect(DeviceRectangle(r, displayTransformation(false)));
}

namespace {
DevicePoint* mapped(wsiDevice& device, DevicePoint* buffer, unsigned short n,
                    const SheetPoint* points) {
    const TqMatrix& m = device.displayTransformation(false);
    for (unsigned short i = 0; i < n; ++i)
        buffer[i].set(points[i], m);
    return buffer;
}
} // namespace

void wsiDevice::drawPolyline(int n, const SheetPoint* points) {
    const unsigned short count = pointCount(n);
    drawPolylineUnTransformed(count, mapped(*this, devicePointBuffer(count), count, points));
}

void wsiDevice::drawPolygon(int n, const SheetPoint* points) {
    const unsigned short count = pointCount(n);
    drawPolygonUnTransformed(count, mapped(*this, devicePointBuffer(count), count, points));
}

void wsiDevice::fillPolygon(wsiColor color, int n, const SheetPoint* points) {
    const unsigned short count = pointCount(n);
    filledPolygonUnTransformed(color, count,
                               mapped(*this, devicePointBuffer(count), count, points));
}

void wsiDevice::drawEllipse(const SheetRectangle& r, bool filled) {
    drawEllipseUnTransformed(DeviceRectangle(r, displayTransformation(false)), filled);
}

void wsiDevice::drawCurve(const SheetPoint& from, const SheetPoint& to) {
    const TqMatrix& m = displayTransformation(false);
    drawCurveUnTransformed(DevicePoint(from, m), DevicePoint(to, m));
}

long wsiDevice::drawText(const char* text, const SheetPoint& at, WsiFont& font) {
    long advance = 0;
    if (text)
        primitiveDrawText(text, DevicePoint(at, displayTransformation(false)), -1, font, advance);
    return advance;
}

long wsiDevice::drawTextUnTransformed(const char* text, const DevicePoint& at, int length,
                                      WsiFont& font) {
    long advance = 0;
    if (text)
        primitiveDrawText(text, at, length, font, advance);
    return advance;
}

const DeviceRectangle& wsiDevice::drawAlignedText(const char* text, const SheetPoint& at,
                                                  WsiFont& font, wsiAlignH h, wsiAlignV v) {
    static DeviceRectangle bounds;
    bounds = DeviceRectangle();
    if (text) {
        primitiveDrawAlignedText(text, DevicePoint(at, displayTransformation(false)), -1, font, h,
                                 v, bounds);
    }
    return bounds;
}

void wsiDevice::drawPolylineUnTransformed(unsigned short n, DevicePoint* points) {
    if (n < 2)
        return;
    primitiveMoveTo(points[0].x(), points[0].y());
    for (unsigned short i = 1; i < n; ++i) {
        primitiveLineTo(points[i].x(), points[i].y());
        primitiveMoveTo(points[i].x(), points[i].y());
    }
}

void wsiDevice::drawPolylineUnTransformed(unsigned n, ...) {
    va_list in;
    va_start(in, n);
    unsigned short count = 0;
    DevicePoint* points = collectPoints(n, in, count);
    va_end(in);
    drawPolylineUnTransformed(count, points);
}

void wsiDevice::drawPolygonUnTransformed(unsigned short n, DevicePoint* points) {
    if (n < 2)
        return;
    drawPolylineUnTransformed(n, points);
    primitiveLineTo(points[0].x(), points[0].y());
    primitiveMoveTo(points[0].x(), points[0].y());
}

void wsiDevice::drawPolygonUnTransformed(unsigned n, ...) {
    va_list in;
    va_start(in, n);
    unsigned short count = 0;
    DevicePoint* points = collectPoints(n, in, count);
    va_end(in);
    drawPolygonUnTransformed(count, points);
}

void wsiDevice::drawCappedPolylineUnTransformed(wsiLineCap start, wsiLineCap end,
                                                const DevicePoint& capSize, unsigned short n,
                                                DevicePoint* points) {
    if (n < 2)
        return;
    const DevicePoint first = points[0];
    const DevicePoint last = points[n - 1];
    if (start == wsiLineCapArrow)
        points[0] = privateDrawArrow(&points[1], first, capSize);
    if (end == wsiLineCapArrow)
        points[n - 1] = privateDrawArrow(&points[n - 2], last, capSize);
    drawPolylineUnTransformed(n, points);
    points[0] = first;
    points[n - 1] = last;
}

void wsiDevice::drawCappedPolylineUnTransformed(wsiLineCap start, wsiLineCap end,
                                                const DevicePoint& capSize, unsigned n, ...) {
    va_list in;
    va_start(in, n);
    unsigned short count = 0;
    DevicePoint* points = collectPoints(n, in, count);
    va_end(in);
    drawCappedPolylineUnTransformed(start, end, capSize, count, points);
}

void wsiDevice::filledPolygonUnTransformed(wsiColor color, unsigned n, ...) {
    va_list in;
    va_start(in, n);
    unsigned short count = 0;
    DevicePoint* points = collectPoints(n, in, count);
    va_end(in);
    filledPolygonUnTransformed(color, count, points);
}

void wsiDevice::curveControlPoints(const DevicePoint& from, const DevicePoint& to,
                                   DevicePoint& first, DevicePoint& second) {
    const std::int32_t middle = static_cast<std::int32_t>((std::int64_t{from.x()} + to.x()) / 2);
    first.setXY(middle, from.y());
    second.setXY(middle, to.y());
}

void wsiDevice::drawCurveUnTransformed(const DevicePoint& from, const DevicePoint& to) {
    DevicePoint first, second;
    curveControlPoints(from, to, first, second);
    primitiveMoveTo(from.x(), from.y());
    for (int i = 1; i <= v_curvePieces; ++i) {
        const DevicePoint p = bezierAt(double(i) / v_curvePieces, from, first, second, to);
        primitiveLineTo(p.x(), p.y());
        primitiveMoveTo(p.x(), p.y());
    }
}

void wsiDevice::drawCurvedArrowUnTransformed(const DevicePoint& start, const DevicePoint& control,
                                             const DevicePoint& end, const DeviceRectangle& bounds,
                                             wsiCurveCap cap) {
    DevicePoint* points = devicePointBuffer(v_curvePieces + 1);
    for (int i = 0; i <= v_curvePieces; ++i)
        points[i] = bezierAt(double(i) / v_curvePieces, start, control, control, end);
    if (cap == wsiCurveCapArrow)
        points[v_curvePieces] = privateDrawArrow(&points[v_curvePieces - 1], end, bounds.extent());
    drawPolylineUnTransformed(v_curvePieces + 1, points);
}

void wsiDevice::drawEllipseUnTransformed(const DeviceRectangle& r, bool filled) {
    DevicePoint* points = devicePointBuffer(v_ellipseSides);
    const double cx = (double(r.left()) + r.right()) / 2, cy = (double(r.top()) + r.bottom()) / 2;
    const double rx = r.width() / 2.0, ry = r.height() / 2.0;
    for (int i = 0; i < v_ellipseSides; ++i) {
        const double angle = 2 * std::numbers::pi * i / v_ellipseSides;
        points[i] = FloatPoint(cx + rx * std::cos(angle), cy + ry * std::sin(angle));
    }
    if (filled)
        filledPolygonUnTransformed(m_color, v_ellipseSides, points);
    else
        drawPolygonUnTransformed(v_ellipseSides, points);
}

void wsiDevice::erase(const DeviceRectangle& r) {
    const wsiColor previous = m_color;
    primitiveSetColor(m_backgroundColor);
    primitiveFilledRect(r);
    primitiveSetColor(previous);
}

wsiRGBColor wsiDevice::getPixel(const DevicePoint& p) {
    return getPixel(p.x(), p.y());
}

wsiRGBColor wsiDevice::getPixel(long, long) {
    return 0;
}

bool wsiDevice::clipPoints(unsigned short n, DevicePoint* in, DevicePoint* out) {
    std::copy(in, in + n, out);
    return n >= 2;
}

bool wsiDevice::clipPoints(unsigned short n, va_list in, DevicePoint* out) {
    for (unsigned short i = 0; i < n; ++i)
        out[i] = *va_arg(in, const DevicePoint*);
    return n >= 2;
}

void wsiDevice::deleteDCObjects() {}

void wsiDevice::alignText(const char* text, const DevicePoint& at, int length, WsiFont& font,
                          wsiAlignH h, wsiAlignV v, DevicePoint& baselineStart,
                          DeviceRectangle& bounds) {
    WsiFont* previous = m_selectedFont;
    selectFont(font);
    const WsiFontMetric& metric = newFontMetric();
    const int width = metric.advance(text, length);
    const int ascent = metric.ascent(), descent = metric.descent();
    m_selectedFont = previous;
    long x = at.x();
    if (h == wsiAlignHCenter)
        x -= width / 2;
    else if (h == wsiAlignRight)
        x -= width;
    long baseline = at.y();
    if (v == wsiAlignTop)
        baseline += ascent;
    else if (v == wsiAlignVCenter)
        baseline += (ascent - descent) / 2;
    else if (v == wsiAlignBottom)
        baseline -= descent;
    baselineStart.setXY(static_cast<std::int32_t>(x), static_cast<std::int32_t>(baseline));
    bounds.setOriginCorner(
        static_cast<std::int32_t>(x), static_cast<std::int32_t>(baseline - ascent),
        static_cast<std::int32_t>(x + width), static_cast<std::int32_t>(baseline + descent));
}

DevicePoint wsiDevice::privateDrawArrow(const DevicePoint* from, const DevicePoint& tip,
                                        const DevicePoint& size) {
    if (!from || *from == tip)
        return tip;
    const double dx = double(tip.x()) - from->x(), dy = double(tip.y()) - from->y();
    const double length = std::hypot(dx, dy);
    const double ux = dx / length, uy = dy / length;
    const double baseX = tip.x() - ux * size.x(), baseY = tip.y() - uy * size.x();
    const double half = size.y() / 2.0;
    DevicePoint head[3] = {tip, DevicePoint(FloatPoint(baseX - uy * half, baseY + ux * half)),
                           DevicePoint(FloatPoint(baseX + uy * half, baseY - ux * half))};
    filledPolygonUnTransformed(m_color, 3, head);
    return DevicePoint(FloatPoint(baseX, baseY));
}

DevicePoint* wsiDevice::devicePointBuffer(int n) {
    static std::vector<DevicePoint> buffer;
    if (static_cast<int>(buffer.size()) < n)
        buffer.resize(n);
    return buffer.data();
}

DevicePoint* wsiDevice::collectPoints(unsigned n, va_list in, unsigned short& count) {
    count = pointCount(static_cast<int>(std::min<unsigned>(n, v_maxPoints)));
    DevicePoint* points = devicePointBuffer(count);
    for (unsigned short i = 0; i < count; ++i)
        points[i] = *va_arg(in, const DevicePoint*);
    return points;
}
