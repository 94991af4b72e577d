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
        // Token starts and ends are taken from two cursors over the chunk's bits, each a word
        // of bits that only loses its lowest one per token: a token's place never waits for
        // the previous token's end to be known.
        while (m_starts == 0) {
            if (++m_startWord >= m_words)
                return nextAfterGap(token);
            m_starts = startBits(m_startWord);
        }
        const std::size_t start = 64 * m_startWord + std::countr_zero(m_starts);
        m_starts &= m_starts - 1;
        while (m_ends == 0)
            m_ends = endBits(++m_endWord);
        const std::size_t end = 64 * m_endWord + std::countr_zero(m_ends);
        m_ends &= m_ends - 1;
        m_pos = end;
        // The bits after m_end are set, so the end found may be m_end: the token may go on in
        // the next chunk.
        if (end >= m_end && !m_eof)
            return finishToken(start, token);
        token = std::string_view(m_data + start, end - start);
        return true;
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
        const std::size_t word = pos / 64 + 1, shift = pos % 64;
        return m_bits[word] >> shift | (m_bits[word + 1] << 1) << (63 - shift);
    }
    // Bit i set when byte 64 * word + i starts a token, or ends one (is the white space after
    // it); the byte before the first counts as white space.
    std::uint64_t startBits(std::size_t word) const {
        const std::uint64_t here = m_bits[word + 1];
        return ~here & (here << 1 | m_bits[word] >> 63);
    }
    std::uint64_t endBits(std::size_t word) const {
        const std::uint64_t here = m_bits[word + 1];
        return here & ~(here << 1 | m_bits[word] >> 63);
    }
    // Sets both cursors to the first token start and end after pos, which is in white space
    // or at a token's start.
    void seek(std::size_t pos);
    // The slow paths of next: no token start left in the chunk (it ends in white space); a
    // token that reaches the chunk's end (m_pos is in the token, at or after start). Both
    // leave the cursors after the token found.
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
    // One bit a byte of m_data, set for white space, after a first word of white space and
    // followed by one.
    std::vector<std::uint64_t> m_bits;
    // Words of m_bits that hold bytes of m_data.
    std::size_t m_words = 0;
    // The cursors: the rest of the start bits of word m_startWord, of the end bits of word
    // m_endWord.
    std::size_t m_startWord = 0;
    std::uint64_t m_starts = 0;
    std::size_t m_endWord = 0;
    std::uint64_t m_ends = 0;
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
