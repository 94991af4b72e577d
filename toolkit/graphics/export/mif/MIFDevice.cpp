#include "graphics/export/mif/MIFDevice.h"

#include "graphics/device/QtConversion.h"
#include "graphics/export/mif/MIFPaintDevice_p.h"
#include "graphics/export/mif/MIFWriter_p.h"

MIFDevice::MIFDevice(const char* jobName, std::ostream& out, const ExportParameters& parameters,
                     const DeviceRectangle& drawing)
    : MIFDocument(jobName, out, parameters, drawing),
      m_measuring(std::make_unique<MIFPaintDevice>(nullptr, drawing)) {
    setDisplayResolution(
        DevicePoint(MIFPaintDevice::v_unitsPerInch, MIFPaintDevice::v_unitsPerInch));
}

MIFDevice::~MIFDevice() = default;

QPaintDevice* MIFDevice::measuringDevice() {
    return m_measuring.get();
}

ExportWriter& MIFDevice::exportWriter() {
    return writer();
}

const ExportWriter& MIFDevice::exportWriter() const {
    return writer();
}

void MIFDevice::drawEllipseUnTransformed(const DeviceRectangle& r, bool filled) {
    writer().ellipse(r, filled);
}

void MIFDevice::drawCappedPolylineUnTransformed(wsiLineCap start, wsiLineCap end,
                                                const DevicePoint& capSize, unsigned short n,
                                                DevicePoint* points) {
    writer().cappedPolyline(start, end, capSize, n, points);
}

void MIFDevice::filledPolygonUnTransformed(wsiColor color, unsigned short n, DevicePoint* points) {
    writer().filledPolygon(QtConversion::asQColor(color), n, points);
}

void MIFDevice::primitiveLineTo(long x, long y) {
    writer().line(currentPoint(),
                  DevicePoint(static_cast<std::int32_t>(x), static_cast<std::int32_t>(y)));
}

void MIFDevice::primitiveFilledRect(const DeviceRectangle& r) {
    const DevicePoint corners[] = {r.origin(), r.upRight(), r.corner(), r.lowLeft()};
    writer().filledPolygon(QColor(), 4, corners);
}

void MIFDevice::primitiveDrawText(const char* text, const DevicePoint& at, int length,
                                  WsiFont& font, long& advance) {
    advance = 0;
    if (!text)
        return;
    advance = WsiFontMetric(font, m_measuring.get()).advance(text, length);
    writer().text(text, length, at, wsiAlignLeft, MIFFont::fromWsiFont(font));
}

void MIFDevice::primitiveDrawAlignedText(const char* text, const DevicePoint& at, int length,
                                         WsiFont& font, wsiAlignH h, wsiAlignV v,
                                         DeviceRectangle& bounds) {
    if (!text)
        return;
    DevicePoint start;
    alignText(text, at, length, font, h, v, start, bounds);
    writer().text(text, length, DevicePoint(at.x(), start.y()), h, MIFFont::fromWsiFont(font));
}
