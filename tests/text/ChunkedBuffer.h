// Test support shared by the unit tests and the fuzz targets: a stream buffer that hands its
// text out in get areas of a few characters with no room to put back into, so that tokens
// straddle every refill and put-back falls to the scanner's own.
#pragma once

#include <algorithm>
#include <cstddef>
#include <streambuf>
#include <string>
#include <utility>

class ChunkedBuffer : public std::streambuf {
public:
    ChunkedBuffer(std::string text, std::size_t chunk)
        : m_text(std::move(text)), m_chunk(std::max<std::size_t>(chunk, 1)) {}

protected:
    int_type underflow() override {
        if (m_next >= m_text.size())
            return traits_type::eof();
        char* start = m_text.data() + m_next;
        m_next += std::min(m_chunk, m_text.size() - m_next);
        setg(start, start, m_text.data() + m_next);
        return traits_type::to_int_type(*start);
    }

private:
    std::string m_text;
    std::size_t m_chunk;
    std::size_t m_next = 0;
};
