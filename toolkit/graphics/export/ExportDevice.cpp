#include "graphics/export/ExportDevice.h"

#include "graphics/device/QtConversion.h"
#include "graphics/export/ExportWriter_p.h"

ExportDevice::ExportDevice() = default;

ExportDevice::~ExportDevice() = default;

void ExportDevice::setPenWidth(long width) {
    Device::setPenWidth(width);
    exportWriter().setLineWidth(width);
}

void ExportDevice::drawCurveUnTransformed(const DevicePoint& from, const DevicePoint& to) {
    DevicePoint first, second;
    curveControlPoints(from, to, first, second);
    exportWriter().curve(from, first, second, to);
}

bool ExportDevice::isMonochrome() const {
    return exportWriter().parameters().isGrayScale();
}

void ExportDevice::primitiveSetColor(wsiColor color) {
    if (color != wsiNoColor)
        m_primitiveColor = color;
    exportWriter().setColor(QtConversion::asQColor(color));
}

void ExportDevice::primitiveSetPenStyle(wsiPenStyle style) {
    exportWriter().setPenStyle(style);
}

void ExportDevice::primitiveSetClipRect(const DeviceRectangle& r) {
    exportWriter().setClipRect(r);
}
