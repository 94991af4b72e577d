// Helpers shared by the BigInt tests: values from their bits, representation strings, heap
// text taken into a std::string, and random four-state bit strings.
#pragma once

#include "hdl/BigInt.h"

#include <random>
#include <string>

namespace bigint_test {

// A value from its bits, most significant first, with sign character '0'.
inline BigInt bin(const char* bits) {
    return BigInt(bits, RadixBinary, 0);
}

// The representation string, or "<null>".
inline std::string bslOf(const BigInt& value) {
    return value.bsl() != nullptr ? std::string(value.bsl()) : std::string("<null>");
}

// Takes a heap string from a converter; "<null>" for null.
inline std::string take(char* text) {
    if (text == nullptr)
        return "<null>";
    std::string copy(text);
    delete[] text;
    return copy;
}

// width random characters out of alphabet.
inline std::string randomBits(std::mt19937_64& random, unsigned width,
                              const std::string& alphabet = "01XZ") {
    std::string bits(width, '0');
    std::uniform_int_distribution<std::size_t> pick(0, alphabet.size() - 1);
    for (char& bit : bits)
        bit = alphabet[pick(random)];
    return bits;
}

// The parts joined by appending (GCC 12 warns falsely on literal + std::string temporaries).
template <typename... Parts>
std::string cat(const Parts&... parts) {
    std::string joined;
    (joined.append(parts), ...);
    return joined;
}

} // namespace bigint_test
