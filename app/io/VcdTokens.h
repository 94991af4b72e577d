/// VcdTokens: the white-space separated tokens of a value change dump, read from a stream in
/// chunks (only a chunk and a token cut by its end are ever held) or taken from text in memory.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string_view>
#include <vector>

class iTaskDescription;

class VcdTokens {
public:
    /// Tokens of in, read chunkBytes at a time (the task, if any, sees the bytes read after
    /// each chunk and can cancel), or of text when in is null.
    VcdTokens(std::istream* in, std::string_view text, iTaskDescription* task,
              std::size_t chunkBytes);

    /// The next token, valid until the next call; false at the end or once cancelled.
    bool next(std::string_view& token) {
        // A white-space bit is set for every byte at or after m_end, so a token found here
        // lies before m_end, and a token that reaches m_end may go on in the next chunk.
        const std::uint64_t words = ~spaceBits(m_pos);
        if (words == 0)
            return nextAfterGap(token);
        m_pos += static_cast<std::size_t>(std::countr_zero(words));
        const std::size_t start = m_pos;
        if (const std::uint64_t spaces = spaceBits(start); spaces != 0) {
            m_pos = start + static_cast<std::size_t>(std::countr_zero(spaces));
            if (m_pos < m_end) {
                token = std::string_view(m_data + start, m_pos - start);
                return true;
            }
        }
        return finishToken(start, token);
    }

    /// The next token after held, the last one read (an identifier code after its value),
    /// keeping held valid too: a refill keeps its bytes, and held is moved with them.
    bool nextAfter(std::string_view& held, std::string_view& token) {
        m_held = static_cast<std::size_t>(held.data() - m_data);
        const bool good = next(token);
        held = std::string_view(m_data + m_held, held.size());
        m_held = v_none;
        return good;
    }

    /// The line of the position reached (1 for the first), for messages. Lines are not
    /// counted while reading: the bytes before the chunk are read again from the stream, and
    /// 0 means that the stream could not go back to count them.
    std::size_t line();
    bool cancelled() const { return m_cancelled; }
    std::uint64_t bytesRead() const { return m_done; }

private:
    // Bit i set when byte pos + i is white space (every control character counts as such) or
    // lies at or after m_end; pos is at most m_end.
    std::uint64_t spaceBits(std::size_t pos) const {
        const std::size_t word = pos / 64, shift = pos % 64;
        return m_bits[word] >> shift | (m_bits[word + 1] << 1) << (63 - shift);
    }
    // The slow paths of next: 64 or more bytes of white space or the end of the chunk before
    // the token; a token of 64 bytes or more, or one that reaches the chunk's end (m_pos is
    // in the token, at or after start).
    bool nextAfterGap(std::string_view& token);
    bool finishToken(std::size_t start, std::string_view& token);
    // The first white-space position at or after from (m_end when none is before it).
    std::size_t tokenEnd(std::size_t from) const;
    // Sets m_bits for the bytes [0, m_end).
    void markSpaces();
    // Moves the bytes from keepFrom (or the held token) on to the front and reads the next
    // chunk after them; returns how many bytes were dropped from the front (0 when nothing
    // more came, which sets m_eof).
    std::size_t refill(std::size_t keepFrom);

    std::istream* m_in;
    // Where the stream stood when reading began (-1 when it cannot tell).
    std::int64_t m_start = -1;
    iTaskDescription* m_task;
    std::size_t m_chunkBytes;
    std::vector<char> m_buffer;
    const char* m_data = nullptr;
    // One bit a byte of m_data, set for white space; two more words than the bytes need.
    std::vector<std::uint64_t> m_bits;
    std::size_t m_pos = 0;
    std::size_t m_end = 0;
    static constexpr std::size_t v_none = static_cast<std::size_t>(-1);
    // The offset of a token the next refill keeps, or v_none.
    std::size_t m_held = v_none;
    // Stream bytes before m_data[0].
    std::uint64_t m_dropped = 0;
    std::uint64_t m_done = 0;
    bool m_eof = false;
    bool m_cancelled = false;
};
