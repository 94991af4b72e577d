#pragma once

#include "core/TqExport.h"
#include "graphics/geometry/DeviceRectangle.h"

#include <QPaintDevice>

/// MIFPaintDevice: the paint device of a MIF export, sized like the drawing at 720 device
/// units per inch (a unit is a tenth of a point). A painter on it paints through the MIF
/// engine; without an engine it only serves to measure text in the export's units. Internal to
/// the library.
class MIFPaintDevice : public QPaintDevice {
public:
    /// engine (not owned, may be null) is what paintEngine() returns.
    MIFPaintDevice(QPaintEngine* engine, const DeviceRectangle& drawing);

    QPaintEngine* paintEngine() const override { return m_engine; }
    static constexpr int v_unitsPerInch = 720;

protected:
    int metric(PaintDeviceMetric metric) const override;

private:
    QPaintEngine* m_engine;
    DeviceRectangle m_drawing;
};
