/// \file
/// Conversions between runs of '0'/'1' bit characters (most significant first) and machine
/// words, eight characters at a time, shared by the arithmetic and the text conversions.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>

namespace bitchars {

/// The eight characters of a byte, most significant bit first, as one little-endian word.
inline constexpr std::array<std::uint64_t, 256> byteChars = [] {
    std::array<std::uint64_t, 256> table{};
    for (unsigned value = 0; value < 256; ++value) {
        std::uint64_t word = 0;
        for (unsigned k = 0; k < 8; ++k)
            word |= std::uint64_t('0' + ((value >> (7 - k)) & 1)) << (8 * k);
        table[value] = word;
    }
    return table;
}();

/// The byte that eight '0'/'1' characters spell, the first character the most significant.
/// Other characters read their lowest bit.
inline unsigned pack8(const char* chars) {
    std::uint64_t word;
    std::memcpy(&word, chars, 8);
    word &= 0x0101010101010101ULL;
    /// Each character's bit lands in the top byte at its own place; no two products collide.
    return static_cast<unsigned>((word * 0x8040201008040201ULL) >> 56);
}

/// Writes the eight characters of a byte, most significant bit first.
inline void unpack8(char* out, unsigned byte) {
    std::memcpy(out, &byteChars[byte & 0xFF], 8);
}

/// True if all eight characters are '0' or '1'.
inline bool allBinary8(const char* chars) {
    std::uint64_t word;
    std::memcpy(&word, chars, 8);
    return (word & 0xFEFEFEFEFEFEFEFEULL) == 0x3030303030303030ULL;
}

/// True if the eight characters at a are those at b, and all '0' or '1'.
inline bool sameBinary8(const char* a, const char* b) {
    std::uint64_t wa, wb;
    std::memcpy(&wa, a, 8);
    std::memcpy(&wb, b, 8);
    return wa == wb && (wa & 0xFEFEFEFEFEFEFEFEULL) == 0x3030303030303030ULL;
}

/// True if the n characters at a are those at b. A short run is compared here in overlapping
/// words, cheaper than the call to memcmp that a long one is worth.
inline bool sameChars(const char* a, const char* b, std::size_t n) {
    auto same = [a, b](std::size_t at, auto word) {
        decltype(word) wa, wb;
        std::memcpy(&wa, a + at, sizeof wa);
        std::memcpy(&wb, b + at, sizeof wb);
        return wa == wb;
    };
    if (n > 64)
        return std::memcmp(a, b, n) == 0;
    if (n >= 8) {
        for (std::size_t i = 0; i + 8 < n; i += 8)
            if (!same(i, std::uint64_t{}))
                return false;
        return same(n - 8, std::uint64_t{});
    }
    if (n >= 4)
        return same(0, std::uint32_t{}) && same(n - 4, std::uint32_t{});
    if (n >= 2)
        return same(0, std::uint16_t{}) && same(n - 2, std::uint16_t{});
    return n == 0 || *a == *b;
}

} // namespace bitchars
