// Helpers shared by the BigInt tests: values from their representation, heap text taken into a
// std::string, random bit strings, and the five four-state tables.
#pragma once

#include "hdl/BigInt.h"

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <utility>

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

// The value whose representation is bsl. A sign character '1' needs 0 and 1 bits, not all 0:
// the value is the negation of its two's complement.
inline BigInt fromRepresentation(const std::string& bsl) {
    if (bsl[0] != '1')
        return bin(bsl.c_str() + 1);
    std::string magnitude = bsl;
    BigInt::twosComplement(magnitude.data());
    return -bin(magnitude.c_str() + 1);
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

// and, or, xor, nor, nand, each with its four-state table: rows for the left bit and columns
// for the right, both in the order 0 1 X Z.
using Operation = BigInt& (*)(const BigInt&, const BigInt&);
inline const std::pair<Operation, const char*> bitwise[] = {
    {[](const BigInt& a, const BigInt& b) -> BigInt& { return a & b; }, "000001XX0XXX0XXX"},
    {[](const BigInt& a, const BigInt& b) -> BigInt& { return a | b; }, "01XX1111X1XXX1XX"},
    {[](const BigInt& a, const BigInt& b) -> BigInt& { return a ^ b; }, "01XX10XXXXXXXXXX"},
    {[](const BigInt& a, const BigInt& b) -> BigInt& { return a.nor(b); }, "10XX0000X0XXX0XX"},
    {[](const BigInt& a, const BigInt& b) -> BigInt& { return a.nand(b); }, "111110XX1XXX1XXX"}};
enum { And, Or, Xor, Nor, Nand };

// The table entry for two bit characters; any character but 0, 1 and Z reads as X.
inline char tableBit(int op, char left, char right) {
    auto row = [](char bit) { return bit == '0' ? 0 : bit == '1' ? 1 : bit == 'Z' ? 3 : 2; };
    return bitwise[op].second[row(left) * 4 + row(right)];
}

} // namespace bigint_test
