#include "graphics/export/svg/SVGDevice.h"

#include "graphics/device/QtConversion.h"
#include "graphics/export/svg/SVGWriter_p.h"

#include <QGuiApplication>
#include <QScreen>
#include <algorithm>
#include <cmath>
#include <cstring>

namespace {

// The resolution that fonts are measured at without a paint device, or 0 when unknown.
int defaultResolution() {
    if (QCoreApplication::testAttribute(Qt::AA_Use96Dpi))
        return 96;
    const bool gui = qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr;
    const QScreen* screen = gui ? QGuiApplication::primaryScreen() : nullptr;
    return screen ? qRound(screen->logicalDotsPerInchY()) : 0;
}

// The first length bytes of text (all when length < 0; never past its NUL).
std::string_view textBytes(const char* text, int length) {
    if (length < 0)
        return std::string_view(text);
    return std::string_view(text, strnlen(text, static_cast<std::size_t>(length)));
}

} // namespace

SVGDevice::SVGDevice(const char* fileName, const char* jobName, int width, int height,
                     int resolution)
    : m_writer(std::make_unique<SVGWriter>(jobName, m_file, ExportParameters())),
      m_measuring(1, 1, QImage::Format_Mono), m_resolution(std::max(resolution, 1)) {
    const int dotsPerMeter = static_cast<int>(std::lround(m_resolution / 0.0254));
    m_measuring.setDotsPerMeterX(dotsPerMeter);
    m_measuring.setDotsPerMeterY(dotsPerMeter);
    setDisplayResolution(DevicePoint(m_resolution, m_resolution));
    m_measureOnDefault = defaultResolution() == m_resolution;
    if (fileName)
        m_file.open(fileName, std::ios::binary | std::ios::trunc);
    m_open = m_file.is_open();
    if (m_open)
        m_writer->open(width, height, m_resolution);
}

SVGDevice::~SVGDevice() {
    if (m_open)
        (void)close();
}

bool SVGDevice::close() {
    if (!m_open)
        return false;
    m_open = false;
    const bool written = m_writer->close();
    m_file.close();
    return written && !m_file.fail();
}

QPaintDevice& SVGDevice::paintDevice() {
    return m_measuring;
}

QPaintDevice* SVGDevice::measuringDevice() {
    // Measures made without a device (as a layout makes them) are then the same measures,
    // and the fonts' shaping and advance tables serve both.
    return m_measureOnDefault ? nullptr : &m_measuring;
}

ExportWriter& SVGDevice::exportWriter() {
    return *m_writer;
}

const ExportWriter& SVGDevice::exportWriter() const {
    return *m_writer;
}

void SVGDevice::drawPolylineUnTransformed(unsigned short n, DevicePoint* points) {
    m_writer->polyline(points, n, false);
}

void SVGDevice::drawPolygonUnTransformed(unsigned short n, DevicePoint* points) {
    m_writer->polyline(points, n, true);
}

void SVGDevice::filledPolygonUnTransformed(wsiColor color, unsigned short n, DevicePoint* points) {
    const QColor fill = QtConversion::asQColor(color);
    m_writer->filledPolygon(fill.isValid() ? fill.rgba() : m_writer->color(), points, n, true);
}

void SVGDevice::drawEllipseUnTransformed(const DeviceRectangle& r, bool filled) {
    m_writer->ellipse(r, filled);
}

void SVGDevice::setPixel(long x, long y) {
    const long side = std::max(penWidth(), 1L);
    const auto left = static_cast<std::int32_t>(x - side / 2),
               top = static_cast<std::int32_t>(y - side / 2);
    m_writer->filledRect(m_writer->color(),
                         DeviceRectangle(left, top, left + static_cast<std::int32_t>(side),
                                         top + static_cast<std::int32_t>(side)));
}

void SVGDevice::primitiveLineTo(long x, long y) {
    m_writer->line(currentPoint(),
                   DevicePoint(static_cast<std::int32_t>(x), static_cast<std::int32_t>(y)));
}

void SVGDevice::primitiveFilledRect(const DeviceRectangle& r) {
    m_writer->filledRect(QtConversion::asQColor(primitiveColor()).rgba(), r);
}

void SVGDevice::primitiveDrawText(const char* text, const DevicePoint& at, int length,
                                  WsiFont& font, long& advance) {
    advance = 0;
    if (!text)
        return;
    const FontRestorer restorer(*this);
    selectFont(font);
    advance = newFontMetric().advance(text, length);
    m_writer->text(textBytes(text, length), at, font, m_resolution / 72.0);
}

void SVGDevice::primitiveDrawAlignedText(const char* text, const DevicePoint& at, int length,
                                         WsiFont& font, wsiAlignH h, wsiAlignV v,
                                         DeviceRectangle& bounds) {
    if (!text)
        return;
    DevicePoint start;
    alignText(text, at, length, font, h, v, start, bounds);
    m_writer->text(textBytes(text, length), start, font, m_resolution / 72.0);
}
