/// \file
/// The body of the four-state kernels, included by one translation unit per instruction set:
/// everything here has internal linkage, so each unit keeps its own copy compiled for its
/// own target. Each character is decoded into "is 0" and "is 1" byte masks (X, Z and every
/// other character being neither), a table combines the masks, and the result masks select
/// '0', '1' or 'X'.
#pragma once

#include "hdl/BitChars_p.h"
#include "hdl/FourStateKernels_p.h"

#include <bit>
#include <cstdint>
#include <cstring>
#if defined(__AVX2__) || defined(__SSE2__)
#include <immintrin.h>
#endif

namespace {

using Bytes = signed char __attribute__((vector_size(32)));
constexpr std::size_t v_lanes = sizeof(Bytes);

inline Bytes load(const char* p) {
    Bytes v;
    std::memcpy(&v, p, v_lanes);
    return v;
}

inline void store(char* p, Bytes v) {
    std::memcpy(p, &v, v_lanes);
}

/// True if no bit of v is set.
inline bool allZero(const Bytes& v) {
#if defined(__AVX2__)
    const __m256i x = reinterpret_cast<__m256i>(v);
    return _mm256_testz_si256(x, x);
#else
    std::uint64_t words[v_lanes / 8];
    std::memcpy(words, &v, v_lanes);
    return (words[0] | words[1] | words[2] | words[3]) == 0;
#endif
}

/// Not zero in the bytes that hold neither '0' nor '1'.
inline Bytes indefinite(const Bytes& v) {
    return (v & ~1) ^ '0';
}

/// Not zero in the bytes where a does not hold the same '0' or '1' as b.
inline Bytes undecided(const Bytes& a, const Bytes& b) {
    return (a ^ b) | indefinite(a);
}

/// '0' where r0, '1' where r1 (the two are disjoint), else 'X'.
template <typename T>
T select(T r0, T r1) {
    return static_cast<T>('X' ^ (r0 & ('X' ^ '0')) ^ (r1 & ('X' ^ '1')));
}

/// The five tables in mask form: r0 says the result is 0, r1 that it is 1.
struct AndTable {
    template <typename T>
    static void apply(T z0, T o0, T z1, T o1, T& r0, T& r1) {
        r0 = z0 | z1;
        r1 = o0 & o1;
    }
};
struct OrTable {
    template <typename T>
    static void apply(T z0, T o0, T z1, T o1, T& r0, T& r1) {
        r0 = z0 & z1;
        r1 = o0 | o1;
    }
};
struct XorTable {
    template <typename T>
    static void apply(T z0, T o0, T z1, T o1, T& r0, T& r1) {
        r0 = (z0 & z1) | (o0 & o1);
        r1 = (z0 & o1) | (o0 & z1);
    }
};
struct NorTable {
    template <typename T>
    static void apply(T z0, T o0, T z1, T o1, T& r0, T& r1) {
        r0 = o0 | o1;
        r1 = z0 & z1;
    }
};
struct NandTable {
    template <typename T>
    static void apply(T z0, T o0, T z1, T o1, T& r0, T& r1) {
        r0 = o0 & o1;
        r1 = z0 | z1;
    }
};

///@{
/// All ones where v holds the character c, for vectors and single characters alike.
inline Bytes equalMask(const Bytes& v, char c) {
    return Bytes(v == c);
}
inline signed char equalMask(signed char v, char c) {
    return v == c ? -1 : 0;
}
///@}

template <typename T>
T maskOf(bool set) {
    return set ? static_cast<T>(~T{}) : T{};
}

/// Runs block over n characters. Whole vectors first; a short value goes character by
/// character, a longer rest through a zero-padded copy, and the rest after whole vectors as
/// one more vector overlapping the last (recomputing a few characters is cheaper than copying).
template <typename Block>
void forBlocks(const char* a, const char* b, char* out, std::size_t n, Block block) {
    auto loadB = [b](std::size_t at) { return b != nullptr ? load(b + at) : Bytes{}; };
    std::size_t i = 0;
    for (; i + v_lanes <= n; i += v_lanes)
        store(out + i, block(load(a + i), loadB(i)));
    if (i == n)
        return;
    if (n >= v_lanes) {
        store(out + n - v_lanes, block(load(a + n - v_lanes), loadB(n - v_lanes)));
    } else if (n <= 8) {
        for (; i < n; ++i)
            out[i] = static_cast<char>(block(static_cast<signed char>(a[i]),
                                             static_cast<signed char>(b != nullptr ? b[i] : 0)));
    } else {
        char ta[v_lanes] = {}, tb[v_lanes] = {}, to[v_lanes];
        std::memcpy(ta, a, n);
        if (b != nullptr)
            std::memcpy(tb, b, n);
        store(to, block(load(ta), load(tb)));
        std::memcpy(out, to, n);
    }
}

template <typename Table>
void combineRuns(const char* a, const char* b, char* out, std::size_t n) {
    forBlocks(a, b, out, n, [](auto va, auto vb) {
        decltype(va) r0, r1;
        Table::apply(equalMask(va, '0'), equalMask(va, '1'), equalMask(vb, '0'), equalMask(vb, '1'),
                     r0, r1);
        return select(r0, r1);
    });
}

template <typename Table>
void combineWithFill(const char* a, char fill, char* out, std::size_t n) {
    forBlocks(a, nullptr, out, n, [fill](auto va, auto) {
        using T = decltype(va);
        T r0, r1;
        Table::apply(equalMask(va, '0'), equalMask(va, '1'), maskOf<T>(fill == '0'),
                     maskOf<T>(fill == '1'), r0, r1);
        return select(r0, r1);
    });
}

template <bool inverted>
void decodeRun(const char* a, char* out, std::size_t n) {
    forBlocks(a, nullptr, out, n, [](auto va, auto) {
        const auto z = equalMask(va, '0'), o = equalMask(va, '1');
        return inverted ? select(o, z) : select(z, o);
    });
}

/// Z and X (and z and x) differ in one bit.
void copyZAsXRun(const char* a, char* out, std::size_t n) {
    forBlocks(a, nullptr, out, n, [](auto va, auto) {
        using T = decltype(va);
        return static_cast<T>(va ^ (equalMask(static_cast<T>(va | 0x20), 'z') & ('Z' ^ 'X')));
    });
}

inline bool isDefinite(char c) {
    return c == '0' || c == '1';
}

/// Whether four vectors of characters are all '0' or '1', from the or and the and of them: no
/// character has a bit the or lacks or lacks a bit the and has, so when the or has no bit
/// outside '1' and the and every bit of '0', each character lies between the two.
struct DefiniteBlock {
    Bytes any{}, all = ~Bytes{};
    void add(const Bytes& v) {
        any |= v;
        all &= v;
    }
    Bytes stray() const { return indefinite(any) | indefinite(all); }
};

/// Long runs are tested four vectors at a time; the vector that ends the run is found after.
std::size_t firstUndecidedRun(const char* a, const char* b, std::size_t n) {
    std::size_t i = 0;
    for (; i + 4 * v_lanes <= n; i += 4 * v_lanes) {
        Bytes differ{};
        DefiniteBlock block;
        for (std::size_t k = i; k < i + 4 * v_lanes; k += v_lanes) {
            const Bytes va = load(a + k);
            differ |= va ^ load(b + k);
            block.add(va);
        }
        if (!allZero(differ | block.stray()))
            break;
    }
    for (; i + v_lanes <= n; i += v_lanes)
        if (!allZero(undecided(load(a + i), load(b + i))))
            break;
    while (i + 8 <= n && bitchars::sameBinary8(a + i, b + i))
        i += 8;
    for (; i < n; ++i)
        if (a[i] != b[i] || !isDefinite(a[i]))
            return i;
    return n;
}

bool allDefiniteRun(const char* a, std::size_t n) {
    std::size_t i = 0;
    for (; i + 4 * v_lanes <= n; i += 4 * v_lanes) {
        DefiniteBlock block;
        for (std::size_t k = i; k < i + 4 * v_lanes; k += v_lanes)
            block.add(load(a + k));
        if (!allZero(block.stray()))
            return false;
    }
    for (; i + v_lanes <= n; i += v_lanes)
        if (!allZero(indefinite(load(a + i))))
            return false;
    for (; i + 8 <= n; i += 8)
        if (!bitchars::allBinary8(a + i))
            return false;
    for (; i < n; ++i)
        if (!isDefinite(a[i]))
            return false;
    return true;
}

/// Packing gathers whether every character was '0' or '1' as it goes and looks once at the end:
/// with AVX2 as the bits other than the lowest that any character differs from '0' in.
#if defined(__AVX2__)
using DefiniteSoFar = __m256i;
inline DefiniteSoFar allDefiniteSoFar() {
    return _mm256_setzero_si256();
}
inline bool wereAllDefinite(const DefiniteSoFar& soFar) {
    return _mm256_testz_si256(soFar, _mm256_set1_epi8(static_cast<char>(0xFE)));
}
#else
using DefiniteSoFar = bool;
inline DefiniteSoFar allDefiniteSoFar() {
    return true;
}
inline bool wereAllDefinite(const DefiniteSoFar& soFar) {
    return soFar;
}
#endif

/// 32 bit characters ending at end (the last the least significant) as a 32-bit number.
inline std::uint32_t pack32(const char* end, DefiniteSoFar& definite) {
#if defined(__AVX2__)
    ///@{
    /// Reversing the bytes within each 16-byte lane and then swapping the two 16-bit halves of
    /// the mask costs one shuffle less than reversing the whole vector.
    const __m256i reverse = _mm256_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0,
                                             15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    const __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(end - 32));
    definite = _mm256_or_si256(definite, _mm256_xor_si256(v, _mm256_set1_epi8('0')));
    const __m256i ones = _mm256_cmpeq_epi8(_mm256_shuffle_epi8(v, reverse), _mm256_set1_epi8('1'));
    return std::rotl(static_cast<std::uint32_t>(_mm256_movemask_epi8(ones)), 16);
    ///@}
#else
    std::uint32_t value = 0;
    for (int k = 0; k < 4; ++k) {
        definite = definite && bitchars::allBinary8(end - 8 * k - 8);
        value |= std::uint32_t(bitchars::pack8(end - 8 * k - 8)) << (8 * k);
    }
    return value;
#endif
}

/// 64 bit characters ending at end as a 64-bit number, and back.
inline std::uint64_t pack64(const char* end, DefiniteSoFar& definite) {
    const std::uint64_t low = pack32(end, definite);
    return low | std::uint64_t(pack32(end - 32, definite)) << 32;
}

#if defined(__AVX2__)
/// The 32 characters of the value bits a spread picks out of a vector of the eight value bytes:
/// character j of the 32 takes bit 7 - j % 8 of its byte, '1' where it is set.
inline __m256i charactersOf(__m256i valueBytes, __m256i spread) {
    const __m256i bit = _mm256_set1_epi64x(static_cast<long long>(0x0102040810204080ULL));
    const __m256i bytes = _mm256_shuffle_epi8(valueBytes, spread);
    const __m256i set = _mm256_cmpeq_epi8(_mm256_and_si256(bytes, bit), bit);
    return _mm256_sub_epi8(_mm256_set1_epi8('0'), set);
}
#endif

inline void unpack64(char* end, std::uint64_t value) {
#if defined(__AVX2__)
    ///@{
    /// Character j of the 64 takes bit 63 - j, in byte (63 - j) / 8 of the value.
    const __m256i high = _mm256_setr_epi8(7, 7, 7, 7, 7, 7, 7, 7, 6, 6, 6, 6, 6, 6, 6, 6, 5, 5, 5,
                                          5, 5, 5, 5, 5, 4, 4, 4, 4, 4, 4, 4, 4);
    const __m256i low = _mm256_setr_epi8(3, 3, 3, 3, 3, 3, 3, 3, 2, 2, 2, 2, 2, 2, 2, 2, 1, 1, 1, 1,
                                         1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m256i bytes = _mm256_set1_epi64x(static_cast<long long>(value));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(end - 64), charactersOf(bytes, high));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(end - 32), charactersOf(bytes, low));
    ///@}
#else
    for (int k = 0; k < 8; ++k)
        bitchars::unpack8(end - 8 * k - 8, static_cast<unsigned>(value >> (8 * k)));
#endif
}

/// The n (below 64) bit characters at bits as a number, eight at a time where it can; definite
/// turns false at a character that is not '0' or '1'.
inline std::uint64_t packShort(const char* bits, std::size_t n, bool& definite) {
    std::uint64_t value = 0;
    std::size_t i = 0;
    for (; i < n % 8; ++i) {
        definite = definite && isDefinite(bits[i]);
        value = value << 1 | std::uint64_t(bits[i] == '1');
    }
    for (; i < n; i += 8) {
        definite = definite && bitchars::allBinary8(bits + i);
        value = value << 8 | bitchars::pack8(bits + i);
    }
    return value;
}

inline void unpackShort(char* bits, std::size_t n, std::uint64_t value) {
    std::size_t i = 0;
    for (; i < n % 8; ++i)
        bits[i] = static_cast<char>('0' + ((value >> (n - 1 - i)) & 1));
    for (; i < n; i += 8)
        bitchars::unpack8(bits + i, static_cast<unsigned>(value >> (n - 8 - i)));
}

bool packBitsRun(const char* bits, std::size_t width, std::uint64_t* words) {
    DefiniteSoFar definite = allDefiniteSoFar();
    std::size_t position = 0;
    for (; position + 64 <= width; position += 64)
        words[position / 64] = pack64(bits + width - position, definite);
    bool restDefinite = true;
    if (position != width)
        words[position / 64] = packShort(bits, width - position, restDefinite);
    return wereAllDefinite(definite) && restDefinite;
}

void unpackBitsRun(const std::uint64_t* words, std::size_t width, char* bits) {
    std::size_t position = 0;
    for (; position + 64 <= width; position += 64)
        unpack64(bits + width - position, words[position / 64]);
    if (position != width)
        unpackShort(bits, width - position, words[position / 64]);
}

/// The sum of a's run and b's (or the fill's) in one pass from the least significant end: 64
/// characters of each are packed, added and unpacked at a time, the first (short) word last.
template <bool withFill>
bool addRun(const char* a, const char* b, char fill, char* out, std::size_t n, unsigned& carry) {
    const std::uint64_t fillWord = fill == '1' ? ~std::uint64_t(0) : 0;
    std::uint64_t c = carry;
    std::size_t left = n; ///< the characters still to add, at the front
    for (; left >= 64; left -= 64) {
        DefiniteSoFar definite = allDefiniteSoFar();
        const std::uint64_t x = pack64(a + left, definite);
        const std::uint64_t y = withFill ? fillWord : pack64(b + left, definite);
        if (!wereAllDefinite(definite))
            return false;
        std::uint64_t sum = x + y;
        const std::uint64_t overflow = sum < x;
        sum += c;
        c = overflow | std::uint64_t(sum < c);
        unpack64(out + left, sum);
    }
    if (left != 0) {
        bool definite = true;
        const std::uint64_t x = packShort(a, left, definite);
        const std::uint64_t y = withFill ? fillWord >> (64 - left) : packShort(b, left, definite);
        if (!definite)
            return false;
        ///@{
        /// Both are below 2^left, so the sum cannot overflow the word.
        const std::uint64_t sum = x + y + c;
        c = sum >> left;
        unpackShort(out, left, sum);
        ///@}
    }
    carry = static_cast<unsigned>(c);
    return true;
}

bool addRuns(const char* a, const char* b, char* out, std::size_t n, unsigned& carry) {
    return addRun<false>(a, b, '0', out, n, carry);
}

bool addFill(const char* a, char fill, char* out, std::size_t n, unsigned& carry) {
    return addRun<true>(a, nullptr, fill, out, n, carry);
}

FourStateKernels makeKernels() {
    return {{combineRuns<AndTable>, combineRuns<OrTable>, combineRuns<XorTable>,
             combineRuns<NorTable>, combineRuns<NandTable>},
            {combineWithFill<AndTable>, combineWithFill<OrTable>, combineWithFill<XorTable>,
             combineWithFill<NorTable>, combineWithFill<NandTable>},
            decodeRun<false>,
            decodeRun<true>,
            copyZAsXRun,
            firstUndecidedRun,
            allDefiniteRun,
            packBitsRun,
            unpackBitsRun,
            addRuns,
            addFill};
}

} // namespace
