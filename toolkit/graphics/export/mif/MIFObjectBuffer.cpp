#include "graphics/export/mif/MIFObjectBuffer_p.h"

#include <algorithm>

namespace {

using namespace std::string_view_literals;

constexpr std::size_t v_chunkSize = 1 << 20;
constexpr std::size_t v_flushSize = 1 << 16;

// The head of the lines that follow is stored between these two bytes.
constexpr char v_headStart = '\x02';
constexpr char v_headEnd = '\x03';

bool isCode(char c) {
    return static_cast<unsigned char>(c) <= static_cast<unsigned char>(MIFObjectBuffer::v_endLine);
}

} // namespace

std::string& MIFObjectBuffer::text() {
    if (m_chunks.empty() || m_chunks.back().size() >= v_chunkSize) {
        m_chunks.emplace_back();
        m_chunks.back().reserve(v_chunkSize + 4096);
    }
    return m_chunks.back();
}

void MIFObjectBuffer::setLineHead(std::string_view head) {
    std::string& out = text();
    out += v_headStart;
    out += head;
    out += v_headEnd;
}

bool MIFObjectBuffer::writeTo(std::ostream& out) const {
    std::string expanded;
    expanded.reserve(v_flushSize + 4096);
    std::string_view head;
    for (const std::string& chunk : m_chunks) {
        const char* p = chunk.data();
        const char* const end = p + chunk.size();
        while (p < end) {
            const char* code = std::find_if(p, end, isCode);
            expanded.append(p, code);
            if (code == end)
                break;
            p = code + 1;
            switch (*code) {
            case v_headStart: {
                const char* headEnd = std::find(p, end, v_headEnd);
                head = std::string_view(p, static_cast<std::size_t>(headEnd - p));
                p = std::min(headEnd + 1, end);
                break;
            }
            case v_line:
                expanded += head;
                break;
            case v_nextPoint:
                expanded += ">\n <Point "sv;
                break;
            case v_endLine:
                expanded += ">\n> # end PolyLine\n"sv;
                break;
            default:
                break;
            }
            if (expanded.size() >= v_flushSize) {
                out.write(expanded.data(), static_cast<std::streamsize>(expanded.size()));
                expanded.clear();
            }
        }
    }
    out.write(expanded.data(), static_cast<std::streamsize>(expanded.size()));
    return !out.fail();
}
