#include "graphics/device/OutputDevice.h"

#include "graphics/device/TqPainter.h"

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
    out.setXY(std::clamp(x, l, r), std::clamp(y, t, b));
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
    // The outcodes matter only until the first pair of neighbours that shares no outside edge
    // (in a drawing, usually the first pair); after it the points are just clamped. Outcodes
    // are taken in blocks of two passes, each free of a dependency from one point to the next
    // so that the compiler vectorises it: clamp and record, then test the pairs. Each outcode
    // is taken before its point is written, so in and out may be the same array.
    constexpr unsigned block = 512;
    std::uint32_t codes[block + 1];
    const unsigned first = clampPoint(in[0], out[0], l, t, r, b);
    unsigned previous = first;
    for (unsigned start = 1; start < n; start += block) {
        const unsigned count = std::min(block, unsigned(n) - start);
        codes[0] = previous;
        for (unsigned i = 0; i < count; ++i)
            codes[i + 1] = clampPoint(in[start + i], out[start + i], l, t, r, b);
        unsigned disjoint = 0;
        for (unsigned i = 0; i < count; ++i)
            disjoint |= unsigned((codes[i] & codes[i + 1]) == 0);
        if (disjoint) {
            for (unsigned j = start + count; j < n; ++j)
                out[j].setXY(std::clamp(in[j].x(), l, r), std::clamp(in[j].y(), t, b));
            return true;
        }
        previous = codes[count];
    }
    // Every neighbouring pair shares an edge: the closing pair decides, for two points or more.
    return n >= 2 && (previous & first) == 0;
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
