#include "io/VcdTokens.h"

#include "core/iTaskDescription.h"

#include <algorithm>
#ifdef __SSE2__
#include <emmintrin.h>
#endif
#include <cstring>
#include <istream>

namespace {

inline bool isSpace(char c) {
    return static_cast<unsigned char>(c) <= ' ';
}

// The white-space bits of 64 bytes: bit i for byte i.
inline std::uint64_t spaceWord(const char* bytes) {
#ifdef __SSE2__
    // A byte is white space when the unsigned minimum of it and ' ' is itself.
    const __m128i space = _mm_set1_epi8(' ');
    std::uint64_t word = 0;
    for (int part = 0; part < 4; ++part) {
        const __m128i sixteen = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes) + part);
        const auto mask = static_cast<unsigned>(
            _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_min_epu8(sixteen, space), sixteen)));
        word |= static_cast<std::uint64_t>(mask) << (16 * part);
    }
    return word;
#else
    std::uint64_t word = 0;
    for (int i = 0; i < 64; ++i)
        word |= static_cast<std::uint64_t>(isSpace(bytes[i])) << i;
    return word;
#endif
}

} // namespace

VcdTokens::VcdTokens(std::istream* in, std::string_view text, iTaskDescription* task,
                     std::size_t chunkBytes)
    : m_in(in), m_task(task), m_chunkBytes(std::max<std::size_t>(chunkBytes, 1)) {
    if (m_in) {
        m_start = static_cast<std::int64_t>(m_in->tellg());
        m_buffer.resize(m_chunkBytes);
        m_data = m_buffer.data();
    } else {
        m_data = text.data();
        m_end = text.size();
        m_eof = true;
    }
    markSpaces();
    seek(0);
}

void VcdTokens::seek(std::size_t pos) {
    m_startWord = pos / 64;
    m_starts = startBits(m_startWord) & ~std::uint64_t(0) << (pos % 64);
    m_endWord = (pos + 1) / 64;
    m_ends = endBits(m_endWord) & ~std::uint64_t(0) << ((pos + 1) % 64);
}

bool VcdTokens::nextAfterGap(std::string_view& token) {
    // Only white space is left before m_end.
    m_pos = m_end;
    for (;;) {
        if (m_pos >= m_end) {
            m_pos = m_end;
            refill(m_end);
            if (m_pos >= m_end)
                return false;
        }
        const std::uint64_t words = ~spaceBits(m_pos);
        if (words != 0) {
            m_pos += static_cast<std::size_t>(std::countr_zero(words));
            return finishToken(m_pos, token);
        }
        m_pos += 64;
    }
}

bool VcdTokens::finishToken(std::size_t start, std::string_view& token) {
    for (;;) {
        m_pos = tokenEnd(m_pos);
        if (m_pos < m_end || m_eof)
            break;
        start -= refill(start);
    }
    token = std::string_view(m_data + start, m_pos - start);
    seek(m_pos);
    return true;
}

std::size_t VcdTokens::tokenEnd(std::size_t from) const {
    // The bits after m_end are set, so the search stops there at the latest.
    for (;;) {
        if (const std::uint64_t spaces = spaceBits(from); spaces != 0)
            return std::min(m_end, from + static_cast<std::size_t>(std::countr_zero(spaces)));
        from += 64;
    }
}

void VcdTokens::markSpaces() {
    const std::size_t full = m_end / 64;
    m_words = (m_end + 63) / 64;
    m_bits.resize(full + 3);
    m_bits[0] = ~std::uint64_t(0);
    for (std::size_t word = 0; word < full; ++word)
        m_bits[word + 1] = spaceWord(m_data + 64 * word);
    std::uint64_t last = ~std::uint64_t(0);
    for (std::size_t i = 64 * full; i < m_end; ++i) {
        if (!isSpace(m_data[i]))
            last &= ~(std::uint64_t(1) << (i - 64 * full));
    }
    m_bits[full + 1] = last;
    m_bits[full + 2] = ~std::uint64_t(0);
}

std::size_t VcdTokens::refill(std::size_t keepFrom) {
    if (!m_in || m_eof) {
        m_eof = true;
        return 0;
    }
    keepFrom = std::min(keepFrom, m_held);
    m_dropped += keepFrom;
    if (m_held != v_none)
        m_held -= keepFrom;
    const std::size_t kept = m_end - keepFrom;
    if (kept > 0)
        std::memmove(m_buffer.data(), m_buffer.data() + keepFrom, kept);
    // A token as long as the buffer (a very wide vector) grows it rather than being cut.
    if (m_buffer.size() - kept < m_chunkBytes / 2 + 1)
        m_buffer.resize(m_buffer.size() * 2);
    m_data = m_buffer.data();
    m_in->read(m_buffer.data() + kept, static_cast<std::streamsize>(m_buffer.size() - kept));
    const auto got = static_cast<std::size_t>(m_in->gcount());
    m_pos = kept;
    m_end = kept + got;
    m_done += got;
    if (m_task) {
        m_task->setProgress(static_cast<unsigned long>(m_done));
        if (m_task->isCancelled()) {
            m_cancelled = true;
            m_end = kept;
        }
    }
    if (got == 0 || m_cancelled)
        m_eof = true;
    markSpaces();
    return keepFrom;
}

std::size_t VcdTokens::line() {
    const std::size_t here = std::min(m_pos, m_end);
    std::size_t lines = 1 + static_cast<std::size_t>(std::count(m_data, m_data + here, '\n'));
    if (m_dropped == 0)
        return lines;
    // The dropped bytes are read again: counting them all the way would cost every read.
    if (m_start < 0)
        return 0;
    m_in->clear();
    const auto back = m_in->tellg();
    m_in->seekg(m_start);
    std::vector<char> block(1 << 16);
    for (std::uint64_t left = m_dropped; left > 0;) {
        const auto want = static_cast<std::streamsize>(std::min<std::uint64_t>(left, block.size()));
        m_in->read(block.data(), want);
        if (m_in->gcount() != want) {
            lines = 0;
            break;
        }
        lines += static_cast<std::size_t>(std::count(block.data(), block.data() + want, '\n'));
        left -= static_cast<std::uint64_t>(want);
    }
    m_in->clear();
    m_in->seekg(back);
    return lines;
}
