#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>

namespace {

using bigint_test::bin;
using bigint_test::bslOf;
using bigint_test::cat;
using bigint_test::randomBits;

enum class Op { And, Or, Xor, Nor, Nand };

// The four-state tables, rows for the left bit and columns for the right, both 0 1 X Z.
const char* const tables[] = {
    "0000"
    "01XX"
    "0XXX"
    "0XXX", // and
    "01XX"
    "1111"
    "X1XX"
    "X1XX", // or
    "01XX"
    "10XX"
    "XXXX"
    "XXXX", // xor
    "10XX"
    "0000"
    "X0XX"
    "X0XX", // nor
    "1111"
    "10XX"
    "1XXX"
    "1XXX", // nand
};

int decode(char bit) {
    return bit == '0' ? 0 : bit == '1' ? 1 : bit == 'Z' ? 3 : 2;
}

char tableBit(Op op, char left, char right) {
    return tables[static_cast<int>(op)][decode(left) * 4 + decode(right)];
}

BigInt& apply(Op op, const BigInt& a, const BigInt& b) {
    switch (op) {
    case Op::And:
        return a & b;
    case Op::Or:
        return a | b;
    case Op::Xor:
        return a ^ b;
    case Op::Nor:
        return a.nor(b);
    case Op::Nand:
        return a.nand(b);
    }
    return a & b;
}

constexpr Op allOps[] = {Op::And, Op::Or, Op::Xor, Op::Nor, Op::Nand};

TEST(BigIntBitwise, EveryTableEntryIncludingLowerCaseAndOtherCharacters) {
    const char bits[] = {'0', '1', 'X', 'Z'};
    for (Op op : allOps)
        for (char left : bits)
            for (char right : bits) {
                const char l[] = {left, '\0'}, r[] = {right, '\0'};
                const BigInt& result = apply(op, bin(l), bin(r));
                EXPECT_EQ(bslOf(result), (std::string{'0', tableBit(op, left, right)}))
                    << int(op) << " " << left << right;
            }
    // A reduction's lower-case "x" and its blank decode as X.
    EXPECT_EQ(bslOf(bin("1").reductionAnd() & bin("1").reductionOr()), "01");
    EXPECT_EQ(bslOf(bin("1X").reductionAnd() | bin("0")), "0X");
    EXPECT_EQ(bslOf(BigInt().reductionOr() & bin("1")), "0X");
}

TEST(BigIntBitwise, NarrowerOperandExtendsByTheFourStateRule) {
    struct Case {
        const char *left, *right;
        Op op;
        const char* result;
    };
    const Case cases[] = {
        {"1010", "11", Op::And, "00010"}, // a leading 1 extends as 0
        {"X1", "0000", Op::Or, "0XXX1"},  // a leading X fills the missing bits
        {"0000", "X1", Op::Or, "0XXX1"},  // either side
        {"Z0", "1111", Op::And, "0XXX0"}, // Z extends as Z, and X comes out
        {"01", "1111", Op::Xor, "01110"}, // a leading 0 extends as 0
        {"1111", "", Op::And, "00000"},   // no bits read as 0
        {"", "", Op::Or, "0"},            // two values without bits give width 0
        {"11", "0000", Op::Nor, "01100"},
        {"11", "1111", Op::Nand, "01100"},
    };
    for (const Case& c : cases) {
        const BigInt left = c.left[0] ? bin(c.left) : BigInt();
        const BigInt right = c.right[0] ? bin(c.right) : BigInt();
        const BigInt& result = apply(c.op, left, right);
        EXPECT_EQ(bslOf(result), c.result) << c.left << " op " << int(c.op) << " " << c.right;
        EXPECT_EQ(result.size(), std::string(c.result).size() - 1);
    }
}

TEST(BigIntBitwise, SignCharacterOfTheResultIsAlwaysZero) {
    const BigInt minusOne(-1L);
    EXPECT_EQ(bslOf(minusOne & minusOne), "01");
    EXPECT_EQ(bslOf(minusOne | 6L), "0111"); // -1 is the 1-bit 1, which extends as 0
}

// Random four-state operands at the widths around the word and vector sizes, against the
// tables applied one character at a time.
TEST(BigIntBitwise, WidthSweepMatchesTheTablesBitByBit) {
    std::mt19937_64 random(7);
    const unsigned widths[] = {1,  2,  3,  15,  16,  17,  31,  32,  33, 47,
                               63, 64, 65, 127, 128, 129, 255, 256, 257};
    for (unsigned wa : widths)
        for (unsigned wb : {wa, wa / 2 + 1, wa + 17}) {
            const std::string a = randomBits(random, wa), b = randomBits(random, wb);
            const unsigned w = std::max(wa, wb);
            auto at = [w](const std::string& bits, unsigned i) {
                // Bit i of the result width, from the top, extended by the four-state rule.
                const unsigned missing = w - static_cast<unsigned>(bits.size());
                if (i >= missing)
                    return bits[i - missing];
                return bits[0] == '1' ? '0' : bits[0];
            };
            for (Op op : allOps) {
                std::string expected = "0";
                for (unsigned i = 0; i < w; ++i)
                    expected += tableBit(op, at(a, i), at(b, i));
                EXPECT_EQ(bslOf(apply(op, bin(a.c_str()), bin(b.c_str()))), expected)
                    << "widths " << wa << " " << wb << " op " << int(op);
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
    EXPECT_EQ(bslOf(value), "00000");
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
    const BigInt& once = ~bin(wide.c_str());
    EXPECT_EQ(bslOf(~once), cat("0", wide));
}

TEST(BigIntShift, RightShiftIsLogicalAndTurnsZIntoX) {
    const std::pair<unsigned, const char*> cases[] = {
        {0, "01X01"}, {1, "001X0"}, {3, "00001"}, {4, "00000"}, {9, "00000"},
    };
    const BigInt value = bin("1Z01");
    for (const auto& [count, representation] : cases)
        EXPECT_EQ(bslOf(value >> count), representation) << count;
    EXPECT_EQ(bslOf(BigInt(-4L) >> 0), "0100") << "the sign character is cleared";
    EXPECT_EQ(bslOf(bin("1").reductionAnd().reductionAnd() >> 0), "01");
    EXPECT_EQ(bslOf(bin("X").reductionOr() >> 0), "0x") << "lower-case x is kept";
    EXPECT_EQ(bslOf(BigInt() >> 3), "0");
}

TEST(BigIntShift, LeftShiftFillsZerosFromTheRightAndGivesXForXAndZ) {
    const std::pair<unsigned, const char*> cases[] = {
        {0, "01X0X"}, {1, "0X0X0"}, {3, "0X000"}, {4, "00000"}, {40, "00000"},
    };
    const BigInt value = bin("1X0Z");
    for (const auto& [count, representation] : cases)
        EXPECT_EQ(bslOf(value << count), representation) << count;
    EXPECT_EQ(bslOf(BigInt(-3L) << 1), "010"); // -3 is sign 1 with the bits 01
}

TEST(BigIntShift, WideShiftsMoveEveryBit) {
    std::mt19937_64 random(11);
    for (unsigned width : {63u, 64u, 65u, 129u, 300u}) {
        const std::string bits = randomBits(random, width, "01XZ");
        std::string noZ = bits;
        for (char& c : noZ)
            c = c == 'Z' ? 'X' : c;
        for (unsigned count : {1u, 7u, 16u, 33u, width - 1}) {
            EXPECT_EQ(bslOf(bin(bits.c_str()) >> count),
                      cat("0", std::string(count, '0'), noZ.substr(0, width - count)));
            EXPECT_EQ(bslOf(bin(bits.c_str()) << count),
                      cat("0", noZ.substr(count), std::string(count, '0')));
        }
    }
}

struct ReductionCase {
    const char* bits;
    char andBit, orBit, xorBit;
};

TEST(BigIntReductions, ScanFromTheLeastSignificantBitAndWriteLowerCaseX) {
    const ReductionCase cases[] = {
        {"1X1", 'x', '1', 'x'},  {"1X0", '0', '1', 'x'}, {"0X0", '0', 'x', 'x'},
        {"1011", '0', '1', '1'}, {"111", '1', '1', '1'}, {"000", '0', '0', '0'},
        {"Z", 'x', 'x', 'x'},    {"0Z1", '0', '1', 'x'}, {"X10", '0', '1', 'x'},
        {"1", '1', '1', '1'},    {"0", '0', '0', '0'},   {"11", '1', '1', '0'},
    };
    auto one = [](char bit) { return std::string{bit, bit}; };
    auto negated = [](char bit) { return bit == '0' ? '1' : bit == '1' ? '0' : bit; };
    for (const ReductionCase& c : cases) {
        SCOPED_TRACE(c.bits);
        const BigInt value = bin(c.bits);
        EXPECT_EQ(bslOf(value.reductionAnd()), one(c.andBit));
        EXPECT_EQ(bslOf(value.reductionOr()), one(c.orBit));
        EXPECT_EQ(bslOf(value.reductionXor()), one(c.xorBit));
        EXPECT_EQ(bslOf(value.reductionNand()), one(negated(c.andBit)));
        EXPECT_EQ(bslOf(value.reductionNor()), one(negated(c.orBit)));
        EXPECT_EQ(bslOf(value.reductionXnor()), one(negated(c.xorBit)));
        EXPECT_EQ(value.reductionAnd().size(), 1u);
    }
}

TEST(BigIntReductions, AValueWithoutBitsLeavesTheBlank) {
    const BigInt empty;
    for (const BigInt* result :
         {&empty.reductionAnd(), &empty.reductionOr(), &empty.reductionXor(),
          &empty.reductionNand(), &empty.reductionNor(), &empty.reductionXnor()})
        EXPECT_EQ(bslOf(*result), "  ");
}

TEST(BigIntSelection, BitAndRangeCountFromTheLeastSignificantAndReadXOutside) {
    const BigInt value = bin("10Z1");
    const std::pair<int, const char*> bitCases[] = {
        {0, "01"}, {1, "0Z"}, {2, "00"}, {3, "01"}, {4, "0X"}, {-1, "0X"},
    };
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
    value.clip(2);
    EXPECT_EQ(bslOf(value), "110");
    value.clip(0);
    EXPECT_EQ(bslOf(value), "110");
    value.clip(5);
    EXPECT_EQ(bslOf(value), "110");
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
