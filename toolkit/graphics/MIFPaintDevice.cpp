#include "graphics/MIFPaintDevice.h"

MIFPaintDevice::MIFPaintDevice(QPaintEngine* engine, const DeviceRectangle& drawing)
    : m_engine(engine), m_drawing(drawing) {}

int MIFPaintDevice::metric(PaintDeviceMetric metric) const {
    switch (metric) {
    case PdmWidth:
        return m_drawing.width();
    case PdmHeight:
        return m_drawing.height();
    case PdmWidthMM:
        return static_cast<int>(m_drawing.width() * 25.4 / v_unitsPerInch);
    case PdmHeightMM:
        return static_cast<int>(m_drawing.height() * 25.4 / v_unitsPerInch);
    case PdmNumColors:
        return 0x7FFFFFFF;
    case PdmDepth:
        return 32;
    case PdmDpiX:
    case PdmDpiY:
    case PdmPhysicalDpiX:
    case PdmPhysicalDpiY:
        return v_unitsPerInch;
    case PdmDevicePixelRatio:
        return 1;
    case PdmDevicePixelRatioScaled:
        return static_cast<int>(devicePixelRatioFScale());
    default:
        return 0;
    }
}
