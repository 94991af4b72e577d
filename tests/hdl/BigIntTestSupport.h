// Helpers shared by the BigInt tests: values from their bits, representation strings, heap
// text taken into a std::string, and random four-state bit strings.
#pragma once

#include "hdl/BigInt.h"

#include <algorithm>
#include <memory>
#include <random>
#include <string>

namespace bigint_test {

// A value from its bits, most significant first, with sign character '0'.
inline BigInt bin(const char* bits) {
    return BigInt(bits, RadixBinary, 0);
}

// A value written as its bits ("1X0"), as "d" and a decimal with an optional width after a
// slash ("d-1/3"), or as "" for the value without bits; this keeps the case tables literal.
inline BigInt val(const std::string& text) {
    if (text.empty() || text[0] != 'd')
        return text.empty() ? BigInt() : bin(text.c_str());
    const std::size_t slash = std::min(text.find('/'), text.size());
    const unsigned width = slash < text.size() ? std::stoul(text.substr(slash + 1)) : 0;
    return BigInt(text.substr(1, slash - 1).c_str(), RadixDecimal, width);
}

// The representation string, or "<null>".
inline std::string bslOf(const BigInt& value) {
    return value.bsl() != nullptr ? value.bsl() : "<null>";
}

// Takes a heap string from a converter; "<null>" for null.
inline std::string take(char* text) {
    const std::unique_ptr<char[]> owned(text);
    return text != nullptr ? text : "<null>";
}

// width random characters out of alphabet.
inline std::string randomBits(std::mt19937_64& random, unsigned width,
                              const std::string& alphabet = "01XZ") {
    std::string bits(width, '0');
    for (char& bit : bits)
        bit = alphabet[random() % alphabet.size()];
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
