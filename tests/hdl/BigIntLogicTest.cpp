#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <random>
#include <string>
#include <tuple>

namespace {

using bigint_test::bin;
using bigint_test::bslOf;
using bigint_test::cat;
using bigint_test::randomBits;
using bigint_test::val;

using Operation = BigInt& (*)(const BigInt&, const BigInt&);

// and, or, xor, nor, nand, each with its four-state table: rows for the left bit and columns
// for the right, both in the order 0 1 X Z.
const std::pair<Operation, const char*> operations[] = {
    {[](const BigInt& a, const BigInt& b) -> BigInt& { return a & b; }, "000001XX0XXX0XXX"},
    {[](const BigInt& a, const BigInt& b) -> BigInt& { return a | b; }, "01XX1111X1XXX1XX"},
    {[](const BigInt& a, const BigInt& b) -> BigInt& { return a ^ b; }, "01XX10XXXXXXXXXX"},
    {[](const BigInt& a, const BigInt& b) -> BigInt& { return a.nor(b); }, "10XX0000X0XXX0XX"},
    {[](const BigInt& a, const BigInt& b) -> BigInt& { return a.nand(b); }, "111110XX1XXX1XXX"}};
enum { And, Or, Xor, Nor, Nand };

char tableBit(int op, char left, char right) {
    auto decode = [](char bit) { return bit == '0' ? 0 : bit == '1' ? 1 : bit == 'Z' ? 3 : 2; };
    return operations[op].second[decode(left) * 4 + decode(right)];
}

TEST(BigIntBitwise, EveryTableEntryIncludingLowerCaseAndOtherCharacters) {
    for (int op = And; op <= Nand; ++op)
        for (char left : {'0', '1', 'X', 'Z'})
            for (char right : {'0', '1', 'X', 'Z'}) {
                const char l[] = {left, '\0'}, r[] = {right, '\0'};
                EXPECT_EQ(bslOf(operations[op].first(bin(l), bin(r))),
                          (std::string{'0', tableBit(op, left, right)}))
                    << op << " " << left << right;
            }
    // A reduction's lower-case "x" and its blank decode as X.
    EXPECT_EQ(bslOf(bin("1").reductionAnd() & bin("1").reductionOr()), "01");
    EXPECT_EQ(bslOf(bin("1X").reductionAnd() | bin("0")), "0X");
    EXPECT_EQ(bslOf(BigInt().reductionOr() & bin("1")), "0X");
}

// A leading 1 or 0 extends as 0, X and Z fill the missing bits (Z giving X), no bits read as
// 0, and the sign character of the result is always 0.
TEST(BigIntBitwise, NarrowerOperandExtendsByTheFourStateRule) {
    const std::tuple<const char*, int, const char*, const char*> cases[] = {
        {"1010", And, "11", "00010"},
        {"X1", Or, "0000", "0XXX1"},
        {"0000", Or, "X1", "0XXX1"},
        {"Z0", And, "1111", "0XXX0"},
        {"01", Xor, "1111", "01110"},
        {"1111", And, "", "00000"},
        {"", Or, "", "0"},
        {"11", Nor, "0000", "01100"},
        {"11", Nand, "1111", "01100"},
        {"d-1", And, "d-1", "01"},
        {"d-1", Or, "d6", "0111"}};
    for (const auto& [left, op, right, expected] : cases) {
        const BigInt& result = operations[op].first(val(left), val(right));
        EXPECT_EQ(bslOf(result), expected) << left << " op " << op << " " << right;
        EXPECT_EQ(result.size(), std::strlen(expected) - 1);
    }
}

// Random four-state operands at the widths around the word and vector sizes, against the
// tables applied one character at a time.
TEST(BigIntBitwise, WidthSweepMatchesTheTablesBitByBit) {
    std::mt19937_64 random(7);
    for (unsigned wa :
         {1, 2, 3, 15, 16, 17, 31, 32, 33, 47, 63, 64, 65, 127, 128, 129, 255, 256, 257})
        for (unsigned wb : {wa, wa / 2 + 1, wa + 17}) {
            const std::string a = randomBits(random, wa), b = randomBits(random, wb);
            const unsigned w = std::max(wa, wb);
            auto at = [w](const std::string& bits, unsigned i) {
                const unsigned missing = w - static_cast<unsigned>(bits.size());
                return i >= missing ? bits[i - missing] : bits[0] == '1' ? '0' : bits[0];
            };
            for (int op = And; op <= Nand; ++op) {
                std::string expected = "0";
                for (unsigned i = 0; i < w; ++i)
                    expected += tableBit(op, at(a, i), at(b, i));
                EXPECT_EQ(bslOf(operations[op].first(bin(a.c_str()), bin(b.c_str()))), expected)
                    << "widths " << wa << " " << wb << " op " << op;
            }
        }
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
    EXPECT_EQ(bslOf(bin("1010").nor(1L)), "00100");
    EXPECT_EQ(bslOf(bin("1010").nand(3L)), "01101");
    EXPECT_EQ(bslOf(bin("10") & 1L), "000");
    EXPECT_EQ(bslOf(bin("10") | 1L), "011");
    EXPECT_EQ(bslOf(bin("10") ^ 3L), "001");
}

TEST(BigIntBitwise, NotKeepsTheWidthAndTurnsXAndZIntoX) {
    EXPECT_EQ(bslOf(~bin("01XZ")), "010XX");
    EXPECT_EQ(bslOf(~BigInt(-1L)), "00");
    EXPECT_EQ(bslOf(~BigInt()), "0");
    std::mt19937_64 random(3);
    const std::string wide = randomBits(random, 70, "01");
    EXPECT_EQ(bslOf(~~bin(wide.c_str())), cat("0", wide));
}

// Right shifts are logical, left shifts fill zeros from the right; both turn Z into X.
TEST(BigIntShift, ShiftsMoveBitsAndTurnZIntoX) {
    const std::pair<unsigned, const char*> right[] = {
        {0, "01X01"}, {1, "001X0"}, {3, "00001"}, {4, "00000"}, {9, "00000"}};
    for (const auto& [count, representation] : right)
        EXPECT_EQ(bslOf(bin("1Z01") >> count), representation) << count;
    const std::pair<unsigned, const char*> left[] = {
        {0, "01X0X"}, {1, "0X0X0"}, {3, "0X000"}, {4, "00000"}, {40, "00000"}};
    for (const auto& [count, representation] : left)
        EXPECT_EQ(bslOf(bin("1X0Z") << count), representation) << count;
    EXPECT_EQ(bslOf(BigInt(-4L) >> 0), "0100") << "the sign character is cleared";
    EXPECT_EQ(bslOf(BigInt(-3L) << 1), "010");
    EXPECT_EQ(bslOf(bin("1").reductionAnd().reductionAnd() >> 0), "01");
    EXPECT_EQ(bslOf(bin("X").reductionOr() >> 0), "0x") << "lower-case x is kept";
    EXPECT_EQ(bslOf(BigInt() >> 3), "0");
}

TEST(BigIntShift, WideShiftsMoveEveryBit) {
    std::mt19937_64 random(11);
    for (unsigned width : {63u, 64u, 65u, 129u, 300u}) {
        const std::string bits = randomBits(random, width, "01XZ");
        std::string noZ = bits;
        std::replace(noZ.begin(), noZ.end(), 'Z', 'X');
        for (unsigned count : {1u, 7u, 16u, 33u, width - 1}) {
            EXPECT_EQ(bslOf(bin(bits.c_str()) >> count),
                      cat("0", std::string(count, '0'), noZ.substr(0, width - count)));
            EXPECT_EQ(bslOf(bin(bits.c_str()) << count),
                      cat("0", noZ.substr(count), std::string(count, '0')));
        }
    }
}

TEST(BigIntReductions, ScanFromTheLeastSignificantBitAndWriteLowerCaseX) {
    struct Case {
        const char* bits;
        char andBit, orBit, xorBit;
    };
    const Case cases[] = {{"1X1", 'x', '1', 'x'},  {"1X0", '0', '1', 'x'}, {"0X0", '0', 'x', 'x'},
                          {"1011", '0', '1', '1'}, {"111", '1', '1', '1'}, {"000", '0', '0', '0'},
                          {"Z", 'x', 'x', 'x'},    {"0Z1", '0', '1', 'x'}, {"X10", '0', '1', 'x'},
                          {"1", '1', '1', '1'},    {"0", '0', '0', '0'},   {"11", '1', '1', '0'},
                          {nullptr, ' ', ' ', ' '}}; // no bits: the blank
    auto one = [](char bit) { return std::string{bit, bit}; };
    auto negated = [](char bit) { return bit == '0' ? '1' : bit == '1' ? '0' : bit; };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.bits ? c.bits : "no bits");
        const BigInt value = c.bits ? bin(c.bits) : BigInt();
        EXPECT_EQ(bslOf(value.reductionAnd()), one(c.andBit));
        EXPECT_EQ(bslOf(value.reductionOr()), one(c.orBit));
        EXPECT_EQ(bslOf(value.reductionXor()), one(c.xorBit));
        EXPECT_EQ(bslOf(value.reductionNand()), one(negated(c.andBit)));
        EXPECT_EQ(bslOf(value.reductionNor()), one(negated(c.orBit)));
        EXPECT_EQ(bslOf(value.reductionXnor()), one(negated(c.xorBit)));
    }
}

TEST(BigIntSelection, BitAndRangeCountFromTheLeastSignificantAndReadXOutside) {
    const BigInt value = bin("10Z1");
    const std::pair<int, const char*> bitCases[] = {{0, "01"}, {1, "0Z"}, {2, "00"},
                                                    {3, "01"}, {4, "0X"}, {-1, "0X"}};
    for (const auto& [position, representation] : bitCases)
        EXPECT_EQ(bslOf(value[position]), representation) << position;
    EXPECT_EQ(bslOf(value.bits(2, 0)), "00Z1");
    EXPECT_EQ(bslOf(value.bits(0, 2)), "00Z1") << "either order";
    EXPECT_EQ(bslOf(value.bits(5, 2)), "0XX10");
    EXPECT_EQ(bslOf(value.bits(1, -2)), "0Z1XX");
    EXPECT_EQ(bslOf(value.bits(3, 3)), "01");
    EXPECT_EQ(bslOf(BigInt().bits(1, 0)), "0XX");
    EXPECT_EQ(value.bits(INT_MAX, INT_MIN).size(), 0u);
}

TEST(BigIntSelection, ClipKeepsTheLowBitsAndTheSignCharacter) {
    BigInt value(-6L); // sign '1', bits 010
    for (unsigned width : {2u, 0u, 5u}) {
        value.clip(width);
        EXPECT_EQ(bslOf(value), "110") << width;
    }
    BigInt wide = bin("1X0Z1");
    wide.clip(4);
    EXPECT_EQ(bslOf(wide), "0X0Z1");
}

TEST(BigIntSelection, CombinePutsThisValueOnTop) {
    EXPECT_EQ(bslOf(bin("10").combine(bin("0Z1"))), "0100Z1");
    EXPECT_EQ(bslOf(BigInt(-1L).combine(BigInt(-1L))), "011");
    EXPECT_EQ(bslOf(BigInt().combine(bin("1"))), "01");
    EXPECT_EQ(bslOf(bin("1").combine(BigInt())), "01");
}

} // namespace
