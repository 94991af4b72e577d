#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <functional>
#include <string>
#include <tuple>

namespace {

using namespace bigint_test;

// Every table entry and the extension of random operands are checked in BigIntFastPathTest;
// here are the operands random ones do not give: no bits, sign characters and the characters
// a reduction writes.
TEST(BigIntBitwise, ExtendsTheNarrowerOperandAndReadsOtherCharactersAsX) {
    // clang-format off
    const std::tuple<const char*, int, const char*, const char*> cases[] = {
        {"1010", And, "11", "00010"}, {"X1", Or, "0000", "0XXX1"}, {"1111", And, "", "00000"},
        {"", Or, "", "0"},            {"d-1", And, "d-1", "01"},   {"d-1", Or, "d6", "0111"}};
    // clang-format on
    for (const auto& [left, op, right, expected] : cases)
        EXPECT_EQ(bslOf(bitwise[op].first(val(left), val(right))), expected) << left << op << right;
    EXPECT_EQ(bslOf(bin("1").reductionAnd() & bin("1").reductionOr()), "01");
    EXPECT_EQ(bslOf(bin("1X").reductionAnd() | bin("0")), "0X");
    EXPECT_EQ(bslOf(BigInt().reductionOr() & bin("1")), "0X");
}

TEST(BigIntBitwise, CompoundAssignmentsAndLongOperands) {
    BigInt value = bin("1100");
    value &= bin("0110");
    EXPECT_EQ(bslOf(value), "00100");
    value |= 3L;
    EXPECT_EQ(bslOf(value), "00111");
    value ^= bin("1X11");
    EXPECT_EQ(bslOf(value), "01X00");
    value &= 0L;
    value |= bin("1");
    value ^= 2L;
    EXPECT_EQ(bslOf(value), "00011");
    // clang-format off
    const std::pair<const BigInt*, const char*> longs[] = {
        {&bin("1010").nor(1L), "00100"}, {&bin("1010").nand(3L), "01101"},
        {&(bin("10") & 1L), "000"}, {&(bin("10") | 1L), "011"}, {&(bin("10") ^ 3L), "001"}};
    // clang-format on
    for (const auto& [result, expected] : longs)
        EXPECT_EQ(bslOf(*result), expected);
}

// Random four-state operands go through ~, << and >> in BigIntFastPathTest; here are a
// reduction's "x", which only >> keeps, the sign character, which all clear, and no bits.
TEST(BigIntShift, NotAndShiftsKeepTheWidthAndClearTheSign) {
    using Unary = BigInt& (*)(const BigInt&);
    const Unary invert = [](const BigInt& v) -> BigInt& { return ~v; };
    const Unary right = [](const BigInt& v) -> BigInt& { return v >> 0; };
    const Unary left = [](const BigInt& v) -> BigInt& { return v << 0; };
    const BigInt x = bin("X").reductionOr(); // "xx"
    // clang-format off
    const std::tuple<BigInt, Unary, const char*> cases[] = {
        {x, invert, "0X"},           {x, right, "0x"},             {x, left, "0X"},
        {BigInt(-1L), invert, "00"}, {BigInt(-4L), right, "0100"}, {BigInt(-3L), left, "001"},
        {BigInt(), invert, "0"},     {BigInt(), right, "0"},       {BigInt(), left, "0"}};
    // clang-format on
    for (const auto& [value, operation, expected] : cases)
        EXPECT_EQ(bslOf(operation(value)), expected) << bslOf(value);
}

TEST(BigIntReductions, ScanFromTheLeastSignificantBitAndWriteLowerCaseX) {
    // The bits, then their and, or and xor; a value without bits gives the blank.
    // clang-format off
    const std::pair<const char*, const char*> cases[] = {
        {"1X1", "x1x"},  {"1X0", "01x"}, {"0X0", "0xx"}, {"1011", "011"}, {"111", "111"},
        {"000", "000"},  {"Z", "xxx"},   {"0Z1", "01x"}, {"X10", "01x"},  {"1", "111"},
        {"0", "000"},    {"11", "110"},  {nullptr, "   "}};
    // clang-format on
    auto one = [](char bit) { return std::string{bit, bit}; };
    auto negated = [](char bit) { return bit == '0' ? '1' : bit == '1' ? '0' : bit; };
    for (const auto& [bits, answers] : cases) {
        SCOPED_TRACE(bits ? bits : "no bits");
        const BigInt value = bits ? bin(bits) : BigInt();
        const BigInt* got[] = {&value.reductionAnd(), &value.reductionOr(),
                               &value.reductionXor(), &value.reductionNand(),
                               &value.reductionNor(), &value.reductionXnor()};
        for (int k = 0; k < 6; ++k)
            EXPECT_EQ(bslOf(*got[k]), one(k < 3 ? answers[k] : negated(answers[k - 3]))) << k;
    }
}

// Positions count from the least significant bit (0); those outside the value read X.
TEST(BigIntSelection, BitsRangesClipAndCombine) {
    const BigInt value = bin("10Z1");
    const std::pair<std::function<BigInt&()>, const char*> cases[] = {
        {[&]() -> BigInt& { return value[0]; }, "01"},
        {[&]() -> BigInt& { return value[1]; }, "0Z"},
        {[&]() -> BigInt& { return value[3]; }, "01"},
        {[&]() -> BigInt& { return value[4]; }, "0X"},
        {[&]() -> BigInt& { return value[-1]; }, "0X"},
        {[&]() -> BigInt& { return value.bits(2, 0); }, "00Z1"},
        {[&]() -> BigInt& { return value.bits(0, 2); }, "00Z1"},
        {[&]() -> BigInt& { return value.bits(5, 2); }, "0XX10"},
        {[&]() -> BigInt& { return value.bits(1, -2); }, "0Z1XX"},
        {[&]() -> BigInt& { return value.bits(3, 3); }, "01"},
        {[&]() -> BigInt& { return BigInt().bits(1, 0); }, "0XX"},
        {[&]() -> BigInt& { return value.bits(INT_MAX, INT_MIN); }, "0"},
        {[&]() -> BigInt& { return bin("10").combine(bin("0Z1")); }, "0100Z1"},
        {[&]() -> BigInt& { return BigInt(-1L).combine(BigInt(-1L)); }, "011"},
        {[&]() -> BigInt& { return BigInt().combine(bin("1")); }, "01"},
        {[&]() -> BigInt& { return bin("1").combine(BigInt()); }, "01"}};
    for (const auto& [select, expected] : cases) {
        const BigInt& result = select();
        EXPECT_EQ(bslOf(result), expected);
        EXPECT_EQ(result.size(), std::strlen(expected) - 1) << expected;
    }
    // clip keeps the low bits and the sign character, and ignores 0 and widths not below.
    // clang-format off
    const std::tuple<BigInt, unsigned, const char*> clips[] = {
        {BigInt(-6L), 2, "110"}, {BigInt(-6L), 0, "1010"}, {BigInt(-6L), 3, "1010"},
        {bin("1X0Z1"), 4, "0X0Z1"}};
    // clang-format on
    for (auto [clipped, width, expected] : clips) {
        clipped.clip(width);
        EXPECT_EQ(bslOf(clipped), expected) << width;
        EXPECT_EQ(clipped.size(), std::strlen(expected) - 1);
    }
}

} // namespace
