#include "graphics/export/eps/EPSDevice.h"

#include "graphics/device/QtConversion.h"
#include "graphics/export/eps/EPSWriter_p.h"
#include "graphics/export/eps/PostScriptFont.h"

#include <cmath>

EPSDevice::EPSDevice(wsiDevice* device, const char* jobName, std::ostream& out,
                     const ExportParameters& parameters)
    : EPSPage(jobName, out, parameters),
      m_measuringDevice(std::make_unique<EPSPaintDevice>(nullptr)) {
    if (device)
        setDisplayTransformation(device->displayTransformation(false));
    scaleChanged();
}

EPSDevice::~EPSDevice() = default;

void EPSDevice::scaleChanged() {
    // Measuring happens at 72 units per inch on fonts sized in drawing units (see
    // newFontMetric), so that no rounding of the resolution enters the measures.
    m_measuringDevice->setPage(deviceSize(), 72);
    const auto perInch = static_cast<std::int32_t>(std::lround(72 / fontScaleFactor()));
    setDisplayResolution(DevicePoint(perInch, perInch));
}

WsiFont& EPSDevice::selectFont(WsiFont& font) {
    return Device::selectFont(font);
}

WsiFontMetric& EPSDevice::newFontMetric() {
    const WsiFont fallback;
    const WsiFont& selected = selectedFont() ? *selectedFont() : fallback;
    const char* name = PostScriptFont::nameFor(selected);
    const QByteArray family = QByteArray(PostScriptFont::measuringFamily(name));
    WsiFont measured(family.constData(), selected.pointSize() / fontScaleFactor());
    measured.setBold(selected.isBold());
    measured.setItalic(selected.isItalic());
    m_fontMetric = std::make_unique<WsiFontMetric>(measured, m_measuringDevice.get());
    return *m_fontMetric;
}

QPaintDevice* EPSDevice::measuringDevice() {
    return m_measuringDevice.get();
}

QPaintDevice& EPSDevice::paintDevice() {
    return *m_measuringDevice;
}

ExportWriter& EPSDevice::exportWriter() {
    return writer();
}

const ExportWriter& EPSDevice::exportWriter() const {
    return writer();
}

void EPSDevice::drawEllipseUnTransformed(const DeviceRectangle& r, bool filled) {
    writer().ellipse(r, filled, QtConversion::asQColor(color()), true);
}

void EPSDevice::drawCappedPolylineUnTransformed(wsiLineCap start, wsiLineCap end,
                                                const DevicePoint& capSize, unsigned short n,
                                                DevicePoint* points) {
    wsiDevice::drawCappedPolylineUnTransformed(start, end, capSize, n, points);
}

void EPSDevice::filledPolygonUnTransformed(wsiColor color, unsigned short n, DevicePoint* points) {
    writer().filledPolygon(QtConversion::asQColor(color), n, points, true);
}

void EPSDevice::primitiveMoveTo(long x, long y) {
    Device::primitiveMoveTo(x, y);
    writer().moveTo(x, y);
}

void EPSDevice::primitiveLineTo(long x, long y) {
    writer().lineTo(x, y);
    Device::primitiveMoveTo(x, y);
}

void EPSDevice::primitiveFilledRect(const DeviceRectangle& r) {
    DevicePoint corners[4] = {r.origin(), r.upRight(), r.corner(), r.lowLeft()};
    filledPolygonUnTransformed(primitiveColor(), 4, corners);
}

void EPSDevice::primitiveDrawText(const char* text, const DevicePoint& at, int length,
                                  WsiFont& font, long& advance) {
    advance = 0;
    if (!text)
        return;
    const FontRestorer restorer(*this);
    selectFont(font);
    advance = newFontMetric().advance(text, length);
    writer().text(EPSWriter::textBytes(text, length), at, PostScriptFont::nameFor(font),
                  font.pointSize() / fontScaleFactor(), QtConversion::asQColor(color()));
}

void EPSDevice::primitiveDrawAlignedText(const char* text, const DevicePoint& at, int length,
                                         WsiFont& font, wsiAlignH h, wsiAlignV v,
                                         DeviceRectangle& bounds) {
    if (!text)
        return;
    DevicePoint start;
    alignText(text, at, length, font, h, v, start, bounds);
    long advance = 0;
    primitiveDrawText(text, start, length, font, advance);
}
