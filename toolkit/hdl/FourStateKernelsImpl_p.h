// The body of the four-state kernels, included by one translation unit per instruction set:
// everything here has internal linkage, so each unit keeps its own copy compiled for its
// own target. Each character is decoded into "is 0" and "is 1" byte masks (X, Z and every
// other character being neither), a table combines the masks, and the result masks select
// '0', '1' or 'X'.
#pragma once

#include "hdl/BitChars_p.h"
#include "hdl/FourStateKernels_p.h"

#include <cstdint>
#include <cstring>
#if defined(__AVX2__) || defined(__SSE2__)
#include <immintrin.h>
#endif

namespace {

using Bytes = signed char __attribute__((vector_size(32)));
constexpr std::size_t lanes = sizeof(Bytes);

inline Bytes load(const char* p) {
    Bytes v;
    std::memcpy(&v, p, lanes);
    return v;
}

inline void store(char* p, Bytes v) {
    std::memcpy(p, &v, lanes);
}

// True if every byte of the mask is set.
inline bool allSet(const Bytes& mask) {
#if defined(__AVX2__)
    return _mm256_movemask_epi8(reinterpret_cast<__m256i>(mask)) == -1;
#elif defined(__SSE2__)
    __m128i halves[2];
    std::memcpy(halves, &mask, lanes);
    return (_mm_movemask_epi8(halves[0]) & _mm_movemask_epi8(halves[1])) == 0xFFFF;
#else
    std::uint64_t words[lanes / 8];
    std::memcpy(words, &mask, lanes);
    std::uint64_t all = ~std::uint64_t(0);
    for (std::uint64_t word : words)
        all &= word;
    return all == ~std::uint64_t(0);
#endif
}

// '0' where r0, '1' where r1 (the two are disjoint), else 'X'.
template <typename T>
T select(T r0, T r1) {
    return static_cast<T>('X' ^ (r0 & ('X' ^ '0')) ^ (r1 & ('X' ^ '1')));
}

// The five tables in mask form: r0 says the result is 0, r1 that it is 1.
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

// All ones where v holds the character c, for vectors and single characters alike.
inline Bytes equalMask(const Bytes& v, char c) {
    return Bytes(v == c);
}
inline signed char equalMask(signed char v, char c) {
    return v == c ? -1 : 0;
}

template <typename T>
T maskOf(bool set) {
    return set ? static_cast<T>(~T{}) : T{};
}

// Runs block over n characters. Whole vectors first; a short value goes character by
// character, a longer rest through a zero-padded copy, and the rest after whole vectors as
// one more vector overlapping the last (recomputing a few characters is cheaper than copying).
template <typename Block>
void forBlocks(const char* a, const char* b, char* out, std::size_t n, Block block) {
    auto loadB = [b](std::size_t at) { return b != nullptr ? load(b + at) : Bytes{}; };
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes)
        store(out + i, block(load(a + i), loadB(i)));
    if (i == n)
        return;
    if (n >= lanes) {
        store(out + n - lanes, block(load(a + n - lanes), loadB(n - lanes)));
    } else if (n <= 8) {
        for (; i < n; ++i)
            out[i] = static_cast<char>(block(static_cast<signed char>(a[i]),
                                             static_cast<signed char>(b != nullptr ? b[i] : 0)));
    } else {
        char ta[lanes] = {}, tb[lanes] = {}, to[lanes];
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

// Z and X (and z and x) differ in one bit.
void copyZAsXRun(const char* a, char* out, std::size_t n) {
    forBlocks(a, nullptr, out, n, [](auto va, auto) {
        using T = decltype(va);
        return static_cast<T>(va ^ (equalMask(static_cast<T>(va | 0x20), 'z') & ('Z' ^ 'X')));
    });
}

inline bool isDefinite(char c) {
    return c == '0' || c == '1';
}

std::size_t firstUndecidedRun(const char* a, const char* b, std::size_t n) {
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes) {
        const Bytes va = load(a + i), vb = load(b + i);
        if (!allSet(Bytes(va == vb) & Bytes((va & ~1) == '0')))
            break;
    }
    while (i + 8 <= n && bitchars::sameBinary8(a + i, b + i))
        i += 8;
    for (; i < n; ++i)
        if (a[i] != b[i] || !isDefinite(a[i]))
            return i;
    return n;
}

bool allDefiniteRun(const char* a, std::size_t n) {
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes)
        if (!allSet(Bytes((load(a + i) & ~1) == '0')))
            return false;
    for (; i + 8 <= n; i += 8)
        if (!bitchars::allBinary8(a + i))
            return false;
    for (; i < n; ++i)
        if (!isDefinite(a[i]))
            return false;
    return true;
}

// Packing gathers whether every character was '0' or '1' as it goes and looks once at the end.
#if defined(__AVX2__)
using DefiniteSoFar = __m256i;
inline DefiniteSoFar allDefiniteSoFar() {
    return _mm256_set1_epi8(-1);
}
inline bool wereAllDefinite(const DefiniteSoFar& soFar) {
    return _mm256_movemask_epi8(soFar) == -1;
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

// 32 bit characters ending at end (the last the least significant) as a 32-bit number.
inline std::uint32_t pack32(const char* end, DefiniteSoFar& definite) {
#if defined(__AVX2__)
    const __m256i reverse = _mm256_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0,
                                             15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    __m256i v = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(end - 32));
    v = _mm256_shuffle_epi8(v, reverse);
    v = _mm256_permute2x128_si256(v, v, 1);
    const __m256i zeroOrOne = _mm256_and_si256(v, _mm256_set1_epi8(~1));
    definite = _mm256_and_si256(definite, _mm256_cmpeq_epi8(zeroOrOne, _mm256_set1_epi8('0')));
    return static_cast<std::uint32_t>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi8(v, _mm256_set1_epi8('1'))));
#else
    std::uint32_t value = 0;
    for (int k = 0; k < 4; ++k) {
        definite = definite && bitchars::allBinary8(end - 8 * k - 8);
        value |= std::uint32_t(bitchars::pack8(end - 8 * k - 8)) << (8 * k);
    }
    return value;
#endif
}

// Writes a 32-bit number as 32 bit characters ending at end.
inline void unpack32(char* end, std::uint32_t value) {
#if defined(__AVX2__)
    // Character j takes bit 31 - j: byte (31 - j) / 8 of the value, bit 7 - j % 8 of that.
    const __m256i spread = _mm256_setr_epi8(3, 3, 3, 3, 3, 3, 3, 3, 2, 2, 2, 2, 2, 2, 2, 2, 1, 1, 1,
                                            1, 1, 1, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0);
    const __m256i bit = _mm256_set1_epi64x(static_cast<long long>(0x0102040810204080ULL));
    const __m256i bytes = _mm256_shuffle_epi8(_mm256_set1_epi32(static_cast<int>(value)), spread);
    const __m256i set = _mm256_cmpeq_epi8(_mm256_and_si256(bytes, bit), bit);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(end - 32),
                        _mm256_sub_epi8(_mm256_set1_epi8('0'), set));
#else
    for (int k = 0; k < 4; ++k)
        bitchars::unpack8(end - 8 * k - 8, value >> (8 * k));
#endif
}

bool packBitsRun(const char* bits, std::size_t width, std::uint64_t* words) {
    DefiniteSoFar definite = allDefiniteSoFar();
    std::size_t position = 0;
    for (; position + 64 <= width; position += 64) {
        const std::uint64_t low = pack32(bits + width - position, definite);
        const std::uint64_t high = pack32(bits + width - position - 32, definite);
        words[position / 64] = low | high << 32;
    }
    if (position == width)
        return wereAllDefinite(definite);
    bool restDefinite = true;
    std::uint64_t last = 0;
    for (std::size_t k = 0; position + k < width; ++k) {
        const char c = bits[width - 1 - position - k];
        restDefinite = restDefinite && isDefinite(c);
        last |= std::uint64_t(c == '1') << k;
    }
    words[position / 64] = last;
    return wereAllDefinite(definite) && restDefinite;
}

void unpackBitsRun(const std::uint64_t* words, std::size_t width, char* bits) {
    std::size_t position = 0;
    for (; position + 32 <= width; position += 32)
        unpack32(bits + width - position,
                 static_cast<std::uint32_t>(words[position / 64] >> (position % 64)));
    for (; position < width; ++position)
        bits[width - 1 - position] =
            static_cast<char>('0' + ((words[position / 64] >> (position % 64)) & 1));
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
            unpackBitsRun};
}

} // namespace
