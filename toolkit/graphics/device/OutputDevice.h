#pragma once

#include "core/TqExport.h"
#include "graphics/device/Device.h"

class WsdWindow;

/// OutputDevice: a Device bound to a parent window that clips point lists itself, clamping
/// every point into the clip rectangle before the painter sees it.
class TQ_EXPORT OutputDevice : public Device {
public:
    /// True while the device has a painter that is painting.
    bool isOpen() const;
    /// The window the device draws in, or null for a device without one.
    WsdWindow* parentWindow() const { return m_parent; }

    ///@{
    /// Draw only when clipPoints finds something to draw, from the clamped points. The "..."
    /// forms of wsiDevice collect their points and call these.
    void drawPolylineUnTransformed(unsigned short n, DevicePoint* points) override;
    using Device::drawPolylineUnTransformed;
    void drawPolygonUnTransformed(unsigned short n, DevicePoint* points) override;
    using Device::drawPolygonUnTransformed;
    using Device::filledPolygonUnTransformed;
    ///@}

    /// Writes each point clamped into the clip rectangle to out (which holds n points) and
    /// returns true when some consecutive pair, or for n >= 2 the last and the first point,
    /// lies beyond no common edge. A single point, or points all beyond one edge, give false.
    /// A segment passing outside a corner is thus drawn along the clip edges, on purpose.
    /// It works in process-wide scratch arrays, like all drawing: main thread only.
    bool clipPoints(unsigned short n, DevicePoint* in, DevicePoint* out) override;
    /// The same with the points read as n arguments of type const DevicePoint* from in.
    bool clipPoints(unsigned short n, va_list in, DevicePoint* out) override;

protected:
    /// A device in parent; the window layer sets the painter when it paints.
    explicit OutputDevice(WsdWindow& parent) : m_parent(&parent) {}
    /// A device without a window (an off-screen surface given through setPainter).
    OutputDevice() = default;

private:
    /// A clamped copy of the points for the painter; true when there is something to draw.
    DevicePoint* clipped(unsigned short n, DevicePoint* points);

    WsdWindow* m_parent = nullptr;
};
