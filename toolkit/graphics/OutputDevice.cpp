#include "graphics/OutputDevice.h"

#include "graphics/TqPainter.h"

#include <vector>

namespace {

// The clamped points handed to the painter; apart from devicePointBuffer, which may hold
// the input.
DevicePoint* clipBuffer(int n) {
    static std::vector<DevicePoint> buffer;
    if (static_cast<int>(buffer.size()) < n)
        buffer.resize(n);
    return buffer.data();
}

// Clamps p into [l, r] x [t, b] and returns its outcode: 1 left, 2 right, 4 above, 8 below.
inline unsigned clampPoint(DevicePoint& p, std::int32_t l, std::int32_t t, std::int32_t r,
                           std::int32_t b) {
    std::int32_t x = p.x(), y = p.y();
    unsigned code = 0;
    if (x < l) {
        x = l;
        code = 1;
    } else if (x > r) {
        x = r;
        code = 2;
    }
    if (y < t) {
        y = t;
        code |= 4;
    } else if (y > b) {
        y = b;
        code |= 8;
    }
    p.setXY(x, y);
    return code;
}

} // namespace

bool OutputDevice::isOpen() const {
    return painter() && painter()->isActive();
}

bool OutputDevice::clipPoints(unsigned short n, DevicePoint* in, DevicePoint* out) {
    if (n == 0)
        return false;
    const std::int32_t l = m_clipRect.left(), t = m_clipRect.top();
    const std::int32_t r = m_clipRect.right(), b = m_clipRect.bottom();
    out[0] = in[0];
    const unsigned firstCode = clampPoint(out[0], l, t, r, b);
    unsigned previous = firstCode;
    bool visible = false;
    for (unsigned short i = 1; i < n; ++i) {
        out[i] = in[i];
        const unsigned code = clampPoint(out[i], l, t, r, b);
        visible |= (code & previous) == 0;
        previous = code;
    }
    if (n >= 2)
        visible |= (previous & firstCode) == 0;
    return visible;
}

bool OutputDevice::clipPoints(unsigned short n, va_list in, DevicePoint* out) {
    return clipPoints(n, collectPoints(n, in), out);
}

DevicePoint* OutputDevice::clipped(unsigned short n, DevicePoint* points) {
    DevicePoint* out = clipBuffer(n);
    return clipPoints(n, points, out) ? out : nullptr;
}

void OutputDevice::drawPolylineUnTransformed(unsigned short n, DevicePoint* points) {
    if (DevicePoint* out = clipped(n, points))
        Device::drawPolylineUnTransformed(n, out);
}

void OutputDevice::drawPolylineUnTransformed(unsigned short n, ...) {
    va_list in;
    va_start(in, n);
    DevicePoint* points = collectPoints(n, in);
    va_end(in);
    drawPolylineUnTransformed(n, points);
}

void OutputDevice::drawPolygonUnTransformed(unsigned short n, DevicePoint* points) {
    if (DevicePoint* out = clipped(n, points))
        Device::drawPolygonUnTransformed(n, out);
}

void OutputDevice::drawPolygonUnTransformed(unsigned short n, ...) {
    va_list in;
    va_start(in, n);
    DevicePoint* points = collectPoints(n, in);
    va_end(in);
    drawPolygonUnTransformed(n, points);
}
