#include "graphics/OutputDevice.h"

#include "graphics/TqPainter.h"

#include <algorithm>
#include <cstdint>
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
// Branch-free, since whether a point lies outside is as good as random to the processor.
inline unsigned clampPoint(const DevicePoint& in, DevicePoint& out, std::int32_t l, std::int32_t t,
                           std::int32_t r, std::int32_t b) {
    const std::int32_t x = in.x(), y = in.y();
    const unsigned code =
        unsigned(x < l) | unsigned(x > r) << 1 | unsigned(y < t) << 2 | unsigned(y > b) << 3;
    out.setXY(std::min(std::max(x, l), r), std::min(std::max(y, t), b));
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
    // Two passes, each free of a dependency from one point to the next so that the compiler
    // can vectorise them: clamp and record the outcodes, then test the pairs.
    static std::uint8_t codes[65536];
    for (unsigned i = 0; i < n; ++i)
        codes[i] = static_cast<std::uint8_t>(clampPoint(in[i], out[i], l, t, r, b));
    unsigned shared = n >= 2 ? std::min(1u, unsigned(codes[n - 1] & codes[0])) : 1;
    for (unsigned i = 1; i < n; ++i)
        shared &= std::min(1u, unsigned(codes[i] & codes[i - 1]));
    return shared == 0;
}

bool OutputDevice::clipPoints(unsigned short n, va_list in, DevicePoint* out) {
    unsigned short count = 0;
    return clipPoints(n, collectPoints(n, in, count), out);
}

DevicePoint* OutputDevice::clipped(unsigned short n, DevicePoint* points) {
    DevicePoint* out = clipBuffer(n);
    return clipPoints(n, points, out) ? out : nullptr;
}

void OutputDevice::drawPolylineUnTransformed(unsigned short n, DevicePoint* points) {
    if (DevicePoint* out = clipped(n, points))
        Device::drawPolylineUnTransformed(n, out);
}

void OutputDevice::drawPolygonUnTransformed(unsigned short n, DevicePoint* points) {
    if (DevicePoint* out = clipped(n, points))
        Device::drawPolygonUnTransformed(n, out);
}
