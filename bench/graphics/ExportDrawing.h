// The drawing every export benchmark writes, and the output stream they write it to: a
// waveform of line segments with a colour and dash change every thousand segments, drawn
// through a device's public drawing operations, into a stream that only counts its bytes.
#pragma once

#include "graphics/device/wsiDevice.h"
#include "graphics/geometry/DevicePoint.h"

#include <cstdint>
#include <ostream>
#include <streambuf>

// A stream buffer that discards what it is given and counts it, so that a benchmark
// measures formatting and the writer, not the disk.
class CountingStreambuf : public std::streambuf {
public:
    CountingStreambuf() { setp(m_buffer, m_buffer + sizeof m_buffer); }
    long long bytes() const { return m_flushed + (pptr() - pbase()); }

protected:
    int_type overflow(int_type c) override {
        m_flushed += pptr() - pbase();
        setp(m_buffer, m_buffer + sizeof m_buffer);
        if (!traits_type::eq_int_type(c, traits_type::eof())) {
            *pptr() = traits_type::to_char_type(c);
            pbump(1);
        }
        return traits_type::not_eof(c);
    }
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        m_flushed += n;
        (void)s;
        return n;
    }

private:
    char m_buffer[1 << 16];
    long long m_flushed = 0;
};

// The i-th segment's two end points: a clock-like waveform across a 20,000-unit sheet, a
// horizontal step then a vertical edge, on one of eight rows.
inline void exportSegment(long i, DevicePoint& from, DevicePoint& to) {
    const auto x = std::int32_t((i / 2 * 7) % 20000);
    const auto low = std::int32_t(1000 + (i / 2857) % 8 * 2000);
    const std::int32_t level = (i / 2) & 1 ? low + 1500 : low;
    from.setXY(x, level);
    if (i & 1)
        to.setXY(x, level == low ? low + 1500 : low);
    else
        to.setXY(x + 7, level);
}

// Draws segments segments on device, changing colour (3 to 17) and pen style (0 to 4)
// every thousand.
inline void drawExportSegments(wsiDevice& device, long segments) {
    DevicePoint line[2];
    for (long i = 0; i < segments; ++i) {
        if (i % 1000 == 0) {
            device.setColor(wsiColor(3 + (i / 1000) % 15));
            device.setPenStyle(wsiPenStyle((i / 1000) % 5));
        }
        exportSegment(i, line[0], line[1]);
        device.drawPolylineUnTransformed(2, line);
    }
}
