#include "graphics/device/Device.h"

#include "graphics/device/QtConversion.h"
#include "graphics/device/TqPainter.h"

#include <QImage>
#include <QPainterPath>
#include <cassert>
#include <memory>

bool Device::v_forDocumentation = false;
bool Device::v_breakRequested = false;

bool Device::checkBreakExecution() {
    const bool requested = v_breakRequested;
    v_breakRequested = false;
    return requested;
}

namespace {
std::unique_ptr<QPoint[]> p_polyPoints;
long v_polyPointsCapacity = 0;
} // namespace

Device::Device() = default;

Device::Device(TqPainter& painter) {
    setPainter(&painter);
}

Device::~Device() = default;

void Device::setPainter(TqPainter* painter) {
    m_painter = painter;
    if (!m_painter)
        return;
    primitiveSetColor(color());
    primitiveSetPenStyle(penStyle());
    setPenWidth(penWidth());
    primitiveSetBackgroundColor(backgroundColor());
    primitiveSetBackgroundFillMode(backgroundFillMode());
    primitiveSetDrawMode(drawMode());
    computeDisplayResolution();
}

QPaintDevice& Device::paintDevice() {
    assert(m_painter && m_painter->device() && "Device::paintDevice: no painter on a device");
    return *m_painter->device();
}

void Device::setPenColor(const QColor& color) {
    if (m_painter)
        m_painter->setPenColor(color);
}

void Device::setBrushColor(const QColor& color) {
    if (m_painter)
        m_painter->setBrushColor(color);
}

QPoint* Device::getPolyPoints(long n) {
    if (n > v_polyPointsCapacity) {
        p_polyPoints.reset(new QPoint[n]);
        v_polyPointsCapacity = n;
    }
    return p_polyPoints.get();
}

long Device::polyPointsCapacity() {
    return v_polyPointsCapacity;
}

QPoint* Device::asPolyPoints(unsigned short n, const DevicePoint* points) {
    QPoint* out = getPolyPoints(n);
    for (unsigned short i = 0; i < n; ++i)
        out[i] = points[i].toQPoint();
    return out;
}

void Device::drawPolylineUnTransformed(unsigned short n, DevicePoint* points) {
    if (!m_painter)
        return wsiDevice::drawPolylineUnTransformed(n, points);
    if (n >= 2)
        m_painter->drawPolyline(asPolyPoints(n, points), n);
}

void Device::drawPolygonUnTransformed(unsigned short n, DevicePoint* points) {
    if (!m_painter)
        return wsiDevice::drawPolygonUnTransformed(n, points);
    if (n < 2)
        return;
    const QBrush brush = m_painter->brush();
    m_painter->setBrush(Qt::NoBrush);
    m_painter->drawPolygon(asPolyPoints(n, points), n);
    m_painter->setBrush(brush);
}

void Device::filledPolygonUnTransformed(wsiColor color, unsigned short n, DevicePoint* points) {
    if (!m_painter || n < 2)
        return;
    const QPen pen = m_painter->pen();
    const QBrush brush = m_painter->brush();
    const QColor fill = QtConversion::asQColor(color);
    m_painter->setPenColor(fill);
    m_painter->setBrush(QBrush(fill));
    m_painter->drawPolygon(asPolyPoints(n, points), n);
    m_painter->setPen(pen);
    m_painter->setBrush(brush);
}

void Device::drawCurveUnTransformed(const DevicePoint& from, const DevicePoint& to) {
    if (!m_painter)
        return wsiDevice::drawCurveUnTransformed(from, to);
    DevicePoint first, second;
    curveControlPoints(from, to, first, second);
    QPainterPath path(from.toQPoint());
    path.cubicTo(first.toQPoint(), second.toQPoint(), to.toQPoint());
    m_painter->strokePath(path, m_painter->pen());
}

void Device::drawEllipseUnTransformed(const DeviceRectangle& r, bool filled) {
    if (!m_painter)
        return wsiDevice::drawEllipseUnTransformed(r, filled);
    const QBrush brush = m_painter->brush();
    if (!filled)
        m_painter->setBrush(Qt::NoBrush);
    m_painter->drawEllipse(r.toQRect());
    m_painter->setBrush(brush);
}

void Device::erase(const DeviceRectangle& r) {
    wsiDevice::erase(r);
}

void Device::setPenWidth(long width) {
    wsiDevice::setPenWidth(width);
    if (m_painter)
        m_painter->setPenWidth(static_cast<int>(width));
}

void Device::setPixel(long x, long y) {
    if (m_painter)
        m_painter->drawPoint(static_cast<int>(x), static_cast<int>(y));
}

wsiRGBColor Device::getPixel(long x, long y) {
    if (!m_painter || !m_painter->device() || m_painter->device()->devType() != QInternal::Image)
        return 0;
    const auto& image = static_cast<const QImage&>(*m_painter->device());
    if (!image.valid(static_cast<int>(x), static_cast<int>(y)))
        return 0;
    return image.pixel(static_cast<int>(x), static_cast<int>(y)) & 0xFFFFFFu;
}

WsiFont& Device::selectFont(WsiFont& font) {
    wsiDevice::selectFont(font);
    if (m_painter)
        m_painter->setFont(font.toQFont());
    return font;
}

QPaintDevice* Device::measuringDevice() {
    return m_painter ? m_painter->device() : nullptr;
}

void Device::computeDisplayResolution() {
    if (m_painter && m_painter->device()) {
        const QPaintDevice& device = *m_painter->device();
        setDisplayResolution(DevicePoint(device.logicalDpiX(), device.logicalDpiY()));
    }
}

void Device::drawBitmap(wsiDevice& source, const DeviceRectangle& from, const DeviceRectangle& to,
                        wsiDrawMode mode) {
    auto* sourceDevice = dynamic_cast<Device*>(&source);
    if (!m_painter || !sourceDevice || !sourceDevice->painter() ||
        !sourceDevice->painter()->device() ||
        sourceDevice->painter()->device()->devType() != QInternal::Image)
        return;
    const auto& image = static_cast<const QImage&>(*sourceDevice->painter()->device());
    const QPainter::CompositionMode previous = m_painter->compositionMode();
    m_painter->setCompositionMode(QtConversion::asCompositionMode(mode));
    m_painter->drawImage(to.toQRect(), image, from.toQRect());
    m_painter->setCompositionMode(previous);
}

void Device::primitiveMoveTo(long x, long y) {
    m_currentPoint.setXY(static_cast<std::int32_t>(x), static_cast<std::int32_t>(y));
}

void Device::primitiveLineTo(long x, long y) {
    if (m_painter)
        m_painter->drawLine(m_currentPoint.toQPoint(),
                            QPoint(static_cast<int>(x), static_cast<int>(y)));
}

void Device::primitiveFilledRect(const DeviceRectangle& r) {
    if (m_painter)
        m_painter->fillRect(r.toQRect(), m_painter->brush().color());
}

void Device::primitiveInvertRect(const DeviceRectangle& r) {
    if (!m_painter)
        return;
    const QPainter::CompositionMode previous = m_painter->compositionMode();
    m_painter->setCompositionMode(QPainter::RasterOp_NotDestination);
    m_painter->fillRect(r.toQRect(), Qt::black);
    m_painter->setCompositionMode(previous);
}

void Device::primitiveSetBackgroundFillMode(wsiBackgroundFillMode mode) {
    if (m_painter)
        m_painter->setBackgroundMode(mode == wsiOpaque ? Qt::OpaqueMode : Qt::TransparentMode);
}

void Device::primitiveSetDrawMode(wsiDrawMode mode) {
    if (m_painter)
        m_painter->setCompositionMode(QtConversion::asCompositionMode(mode));
}

void Device::primitiveSetBackgroundColor(wsiColor color) {
    if (m_painter)
        m_painter->setBackground(QBrush(QtConversion::asQColor(color)));
}

void Device::primitiveSetColor(wsiColor color) {
    if (!m_painter)
        return;
    const QColor qColor = QtConversion::asQColor(color);
    m_painter->setPenColor(qColor);
    m_painter->setBrushColor(qColor);
}

void Device::primitiveSetPenStyle(wsiPenStyle style) {
    if (m_painter)
        m_painter->setPenStyle(QtConversion::asPenStyle(style));
}

void Device::primitiveSetClipRect(const DeviceRectangle& r) {
    if (m_painter)
        m_painter->setClipRect(r.toQRect());
}

void Device::primitiveDrawText(const char* text, const DevicePoint& at, int length, WsiFont& font,
                               long& advance) {
    advance = 0;
    if (!m_painter || !text)
        return;
    const FontRestorer restorer(*this);
    selectFont(font);
    advance = newFontMetric().advance(text, length);
    m_painter->drawText(at.toQPoint(), WsiFontMetric::textOf(text, length));
}

void Device::primitiveDrawAlignedText(const char* text, const DevicePoint& at, int length,
                                      WsiFont& font, wsiAlignH h, wsiAlignV v,
                                      DeviceRectangle& bounds) {
    if (!m_painter || !text)
        return;
    // alignText leaves the painter set to font; drawing straight away spares a second font
    // change and a second measurement for every name and label on the screen.
    const FontRestorer restorer(*this);
    DevicePoint start;
    alignText(text, at, length, font, h, v, start, bounds);
    m_painter->drawText(start.toQPoint(), WsiFontMetric::textOf(text, length));
}
