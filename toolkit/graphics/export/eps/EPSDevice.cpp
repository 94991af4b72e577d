#include "graphics/export/eps/EPSDevice.h"

#include "graphics/export/eps/EPSWriter_p.h"
#include "graphics/export/eps/PostScriptFont.h"

#include <cmath>

EPSDevice::EPSDevice(wsiDevice* device, const char* jobName, std::ostream& out,
                     const ExportParameters& parameters)
    : m_jobName(jobName ? jobName : ""), m_parameters(parameters),
      m_writer(std::make_unique<EPSWriter>(out, parameters.isGrayScale())),
      m_measuringDevice(std::make_unique<EPSPaintDevice>(nullptr)) {
    if (device)
        setDisplayTransformation(device->displayTransformation(false));
    updateResolution();
}

EPSDevice::~EPSDevice() = default;

void EPSDevice::updateResolution() {
    // Measuring happens at 72 units per inch on fonts sized in drawing units (see
    // newFontMetric), so that no rounding of the resolution enters the measures.
    m_measuringDevice->setPage(deviceSize(), 72);
    const auto perInch = static_cast<std::int32_t>(std::lround(72 / fontScaleFactor()));
    setDisplayResolution(DevicePoint(perInch, perInch));
}

bool EPSDevice::open(const DeviceRectangle& source, const DeviceRectangle& target) {
    m_writer->open(source, target, deviceSize(), m_parameters.orientation(),
                   m_parameters.paperFeed());
    updateResolution();
    return true;
}

void EPSDevice::close() {
    m_writer->close();
}

void EPSDevice::endOfPage() {
    m_writer->endOfPage();
}

void EPSDevice::endPath() {
    m_writer->endPath();
}

void EPSDevice::closePath() {
    m_writer->closePath();
}

void EPSDevice::computeFontScaleFactor(const DeviceRectangle& source,
                                       const DeviceRectangle& target) {
    m_writer->computeFontScaleFactor(source, target);
    updateResolution();
}

double EPSDevice::fontScaleFactor() const {
    return m_writer->fontScaleFactor();
}

DevicePoint EPSDevice::paperSize() const {
    return EPSWriter::paperSize(m_parameters);
}

DevicePoint EPSDevice::deviceSize() const {
    return EPSWriter::deviceSize(m_parameters);
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

bool EPSDevice::isMonochrome() const {
    return m_parameters.isGrayScale();
}

void EPSDevice::setPenWidth(long width) {
    Device::setPenWidth(width);
    m_writer->setLineWidth(width);
}

void EPSDevice::drawCurveUnTransformed(const DevicePoint& from, const DevicePoint& to) {
    DevicePoint first, second;
    curveControlPoints(from, to, first, second);
    m_writer->curve(from, first, second, to);
}

void EPSDevice::drawEllipseUnTransformed(const DeviceRectangle& r, bool filled) {
    m_writer->ellipse(r, filled, color(), true);
}

void EPSDevice::drawCappedPolylineUnTransformed(wsiLineCap start, wsiLineCap end,
                                                const DevicePoint& capSize, unsigned short n,
                                                DevicePoint* points) {
    wsiDevice::drawCappedPolylineUnTransformed(start, end, capSize, n, points);
}

void EPSDevice::filledPolygonUnTransformed(wsiColor color, unsigned short n, DevicePoint* points) {
    m_writer->filledPolygon(color, n, points, true);
}

void EPSDevice::primitiveMoveTo(long x, long y) {
    Device::primitiveMoveTo(x, y);
    m_writer->moveTo(x, y);
}

void EPSDevice::primitiveLineTo(long x, long y) {
    m_writer->lineTo(x, y);
    Device::primitiveMoveTo(x, y);
}

void EPSDevice::primitiveFilledRect(const DeviceRectangle& r) {
    DevicePoint corners[4] = {r.origin(), r.upRight(), r.corner(), r.lowLeft()};
    filledPolygonUnTransformed(m_primitiveColor, 4, corners);
}

void EPSDevice::primitiveSetColor(wsiColor color) {
    if (color != wsiNoColor)
        m_primitiveColor = color;
    m_writer->setColor(color);
}

void EPSDevice::primitiveSetPenStyle(wsiPenStyle style) {
    m_writer->setPenStyle(style);
}

void EPSDevice::primitiveSetClipRect(const DeviceRectangle& r) {
    m_writer->setClipRect(r);
}

void EPSDevice::primitiveDrawText(const char* text, const DevicePoint& at, int length,
                                  WsiFont& font, long& advance) {
    advance = 0;
    if (!text)
        return;
    WsiFont* previous = selectedFont();
    selectFont(font);
    advance = newFontMetric().advance(text, length);
    m_writer->text(EPSWriter::textBytes(text, length), at, PostScriptFont::nameFor(font),
                   font.pointSize() / fontScaleFactor(), color());
    if (previous)
        selectFont(*previous);
    else
        deselectFont(); // font belongs to the caller and may not outlive this call
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
