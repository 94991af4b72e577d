#include "graphics/export/mif/MIFPaintDevice_p.h"

#include <algorithm>
#include <cstdint>

namespace {
// An extent in 64 bits, cut to what a paint device can report.
int extent(std::int32_t from, std::int32_t to) {
    return static_cast<int>(std::min<std::int64_t>(std::int64_t{to} - from, INT32_MAX));
}
} // namespace

MIFPaintDevice::MIFPaintDevice(QPaintEngine* engine, const DeviceRectangle& drawing)
    : m_engine(engine), m_drawing(drawing) {}

int MIFPaintDevice::metric(PaintDeviceMetric metric) const {
    switch (metric) {
    case PdmWidth:
        return extent(m_drawing.left(), m_drawing.right());
    case PdmHeight:
        return extent(m_drawing.top(), m_drawing.bottom());
    case PdmWidthMM:
        return static_cast<int>(extent(m_drawing.left(), m_drawing.right()) * 25.4 /
                                v_unitsPerInch);
    case PdmHeightMM:
        return static_cast<int>(extent(m_drawing.top(), m_drawing.bottom()) * 25.4 /
                                v_unitsPerInch);
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
