#pragma once

#include <cstddef>
#include <cstdint>

/// FourStateKernels: the loops over runs of bit characters behind the bitwise operators,
/// shifts and comparisons, chosen once for the processor (32 characters per step with AVX2,
/// 16 without). Every run is n characters; outputs may not overlap inputs.
struct FourStateKernels {
    using Runs = void (*)(const char* a, const char* b, char* out, std::size_t n);
    using Fill = void (*)(const char* a, char fill, char* out, std::size_t n);
    using Map = void (*)(const char* a, char* out, std::size_t n);

    /// out[i] = table(a[i], b[i]) for the and, or, xor, nor and nand tables, in that order.
    Runs runs[5];
    /// out[i] = table(a[i], fill), in the same order.
    Fill fill[5];
    /// '0' and '1' copied, anything else 'X'.
    Map decode;
    /// '0' and '1' swapped, anything else 'X'.
    Map invert;
    /// A copy with 'Z' turned into 'X' and 'z' into 'x'.
    Map copyZAsX;
    /// The index of the first position where a and b differ or a is not '0' or '1'; n if none.
    std::size_t (*firstUndecided)(const char* a, const char* b, std::size_t n);
    /// True if every character is '0' or '1'.
    bool (*allDefinite)(const char* a, std::size_t n);
    /// Packs width bit characters (most significant first) into (width + 63) / 64 words, least
    /// significant first, the bits above width 0. True if every character was '0' or '1'; the
    /// words mean nothing otherwise.
    bool (*packBits)(const char* bits, std::size_t width, std::uint64_t* words);
    /// Writes the low width bits of words as '0'/'1' characters, most significant first.
    void (*unpackBits)(const std::uint64_t* words, std::size_t width, char* bits);
    /// Adds two runs of n bit characters (most significant first) and the carry, writing the
    /// n sum characters to out and the carry out to carry. False, with out and carry meaning
    /// nothing, if a character of a or b is not '0' or '1'.
    bool (*addRuns)(const char* a, const char* b, char* out, std::size_t n, unsigned& carry);
    /// The same with every bit of the second run the fill character, '0' or '1'.
    bool (*addFill)(const char* a, char fill, char* out, std::size_t n, unsigned& carry);

    /// The kernels for this processor (the environment variable TQ_HDL_KERNELS=generic
    /// forces the baseline ones).
    static const FourStateKernels& get();
};

/// The order of the tables in runs and fill.
enum FourStateTable { TableAnd, TableOr, TableXor, TableNor, TableNand };
