// Operands shared by the BigInt benchmarks and their SystemC counterparts: the same bits for
// the same (which, width, fourState) in every program and run.
#pragma once

#include <cstdint>
#include <random>
#include <string>

namespace bench_bigint {

// width bits, most significant first: 0 and 1 only, or 0, 1, X and Z. The top bit is 1 so
// that the numeric operands really are width bits wide.
inline std::string operandBits(int which, std::int64_t width, bool fourState) {
    std::mt19937_64 random(static_cast<std::uint64_t>(which * 1000003 + width));
    std::string bits(static_cast<std::size_t>(width), '0');
    const char* alphabet = fourState ? "01XZ" : "01";
    const unsigned mask = fourState ? 3 : 1;
    for (char& bit : bits)
        bit = alphabet[random() & mask];
    bits[0] = '1';
    return bits;
}

} // namespace bench_bigint
