#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <string>
#include <tuple>

namespace {

using bigint_test::bin;
using bigint_test::bslOf;
using bigint_test::randomBits;
using bigint_test::take;
using bigint_test::val;

__extension__ typedef unsigned __int128 u128;

std::string decimalOf(const BigInt& value) {
    return take(value.BSLToDecimal(0, 0, true));
}

const BIGINTBOOLEAN T = BIGINT_TRUE, F = BIGINT_FALSE, U = BIGINT_UNKNOWN;

// Positive overflow widens, two negatives always widen, mixed signs never; the narrower
// operand extends with its sign.
TEST(BigIntAddition, WidensOnPositiveOverflowAndWhenBothAreNegative) {
    const char* const cases[][3] = {
        {"011", "001", "0100"},    {"111", "001", "01000"},  {"d-1/3", "d-1/3", "11110"},
        {"d-1/3", "001", "0000"},  {"1X0", "001", "0XXX"},   {"01", "Z", "0XX"},
        {"1", "11111", "0100000"}, {"d-2", "1", "111"},      {"", "", "0"},
        {"", "10", "010"},         {"d-1/1", "d-1/1", "110"}};
    for (const auto& [left, right, sum] : cases) {
        const BigInt& result = val(left) + val(right);
        EXPECT_EQ(bslOf(result), sum) << left << " + " << right;
        EXPECT_EQ(result.size(), std::strlen(sum) - 1);
    }
}

TEST(BigIntAddition, NegationSubtractionAndAssignments) {
    EXPECT_EQ(bslOf(-BigInt(5L)), "1011");
    EXPECT_EQ(bslOf(-BigInt(-5L)), "0101");
    BigInt mostNegative(-8L); // sign '1', bits 1000
    mostNegative.clip(3);     // sign '1', bits 000
    EXPECT_EQ(bslOf(-mostNegative), "1000") << "the most negative value negates to itself";
    EXPECT_EQ(bslOf(-bin("1Z")), "0XX");
    EXPECT_EQ(bslOf(-BigInt()), "0");
    EXPECT_EQ(bslOf(BigInt(5L) - BigInt(3L)), "0010");
    EXPECT_EQ(bslOf(BigInt(5L) - 7L), "1110");
    EXPECT_EQ(bslOf(bin("101") + 1L), "0110");
    BigInt value(5L);
    value += 3L;
    EXPECT_EQ(decimalOf(value), "8");
    value -= BigInt(10L);
    value += BigInt(-1L);
    EXPECT_EQ(decimalOf(value), "-3");
    value -= 1L;
    EXPECT_EQ(decimalOf(value), "-4");
}

// Signed values as BigInt(long) against native arithmetic and comparisons.
TEST(BigIntAddition, SignedValuesMatchNativeArithmetic) {
    std::mt19937_64 random(5);
    auto draw = [&] {
        const long magnitude = static_cast<long>(random() >> (63 - random() % 62));
        return (random() & 1) ? -magnitude : magnitude;
    };
    auto truth = [](bool b) { return b ? BIGINT_TRUE : BIGINT_FALSE; };
    for (int i = 0; i < 3000; ++i) {
        const long a = draw(), b = draw();
        const BigInt x(a), y(b);
        SCOPED_TRACE(testing::Message() << a << " " << b);
        EXPECT_EQ(decimalOf(x + y), std::to_string(a + b));
        EXPECT_EQ(decimalOf(x - y), std::to_string(a - b));
        EXPECT_EQ(decimalOf(-x), std::to_string(-a));
        EXPECT_EQ(x == y, truth(a == b));
        EXPECT_EQ(x != b, truth(a != b));
        EXPECT_EQ(x > y, truth(a > b));
        EXPECT_EQ(x >= y, truth(a >= b));
        EXPECT_EQ(x < b, truth(a < b));
        EXPECT_EQ(x <= y, truth(a <= b));
    }
}

// Unsigned operands of the widths around the word sizes against 128-bit native sums.
TEST(BigIntAddition, WidthSweepMatchesNativeUnsignedSums) {
    std::mt19937_64 random(9);
    const unsigned widths[] = {1, 2, 3, 31, 32, 33, 63, 64, 65, 126, 127};
    auto valueOf = [](const std::string& bits) {
        u128 v = 0;
        for (char c : bits)
            v = (v << 1) | u128(c == '1');
        return v;
    };
    for (unsigned wa : widths)
        for (unsigned wb : widths)
            for (int round = 0; round < 3; ++round) {
                const std::string a = randomBits(random, wa, "01"),
                                  b = randomBits(random, wb, "01");
                const u128 sum = valueOf(a) + valueOf(b);
                const BigInt& result = bin(a.c_str()) + bin(b.c_str());
                const unsigned w = std::max(wa, wb);
                ASSERT_EQ(result.size(), (sum >> w) != 0 ? w + 1 : w) << a << " + " << b;
                EXPECT_EQ(result.bsl()[0], '0');
                EXPECT_EQ(valueOf(result.bsl() + 1), sum) << a << " + " << b;
            }
}

// Equality decides at the first position from the top where the answer is known; a leading
// X extends as X; values without strings never compare equal, two of width 0 do.
TEST(BigIntEquality, DecidesAtTheFirstPositionFromTheTop) {
    const std::tuple<const char*, const char*, BIGINTBOOLEAN> cases[] = {
        {"1X0", "100", U}, {"0X1", "1X0", F}, {"100", "1X1", U},   {"101", "101", T},
        {"X", "X", U},     {"01", "0001", T}, {"1", "0001", T},    {"X1", "0001", U},
        {"1X", "101", F},  {"d-1", "1", F},   {"d-1", "d-1/4", T}, {"", "", F},
        {"", "0", F}};
    for (const auto& [left, right, equal] : cases) {
        EXPECT_EQ(val(left) == val(right), equal) << left << " == " << right;
        EXPECT_EQ(val(left) != val(right), equal == U ? U : equal == T ? F : T) << left;
    }
    EXPECT_EQ((bin("") & bin("")) == (bin("") | bin("")), T);
}

TEST(BigIntOrdering, ThreeValuedFromTheTop) {
    // left, right, then >, >=, <, <=
    const char* const cases[][3] = {
        {"0101", "0100", "TTFF"}, {"0101", "01X0", "UUUU"}, {"0101", "0101", "FTFT"},
        {"X101", "0101", "UUUU"}, {"0100", "0101", "FFTT"}, {"d3", "d-3", "TTFF"},
        {"d-3", "d3", "FFTT"},    {"d-3", "d-5", "TTFF"},   {"11", "011", "FTFT"},
        {"", "", "UUUU"},         {"", "0", "UUUU"},        {"1", "", "TTFF"}};
    auto truth = [](char c) { return c == 'T' ? T : c == 'F' ? F : U; };
    for (const auto& [left, right, answers] : cases) {
        const BigInt a = val(left), b = val(right);
        SCOPED_TRACE(testing::Message() << left << " vs " << right);
        EXPECT_EQ(a > b, truth(answers[0]));
        EXPECT_EQ(a >= b, truth(answers[1]));
        EXPECT_EQ(a < b, truth(answers[2]));
        EXPECT_EQ(a <= b, truth(answers[3]));
    }
    EXPECT_EQ(bin("0101") >= 5L, T);
    EXPECT_EQ(bin("0101") <= 4L, F);
    EXPECT_EQ(bin("0101") == 5L, T);
}

// Case equality compares X and Z literally, after zero extension, bits only.
TEST(BigIntCaseEquality, ComparesXAndZLiterallyAfterZeroExtension) {
    const std::tuple<const char*, const char*, BIGINTBOOLEAN> cases[] = {
        {"1X0", "1X0", T}, {"1X0", "100", F}, {"Z", "X", F}, {"0Z", "Z", T}, {"X", "XX", F},
        {"1", "001", T},   {"d-1", "1", T},   {"", "", F},   {"", "0", F}};
    for (const auto& [left, right, equal] : cases) {
        const BigInt a = val(left), b = val(right);
        EXPECT_EQ(a.case_eq(b), equal) << left << " === " << right;
        EXPECT_EQ(b.case_eq(a), equal) << left << " === " << right;
        EXPECT_EQ(a.case_neq(b), equal == T ? F : T) << left << " === " << right;
    }
}

TEST(BigIntEquality, WidthSweepFindsTheDecidingPosition) {
    std::mt19937_64 random(13);
    for (unsigned width : {1u, 7u, 8u, 9u, 31u, 32u, 33u, 63u, 64u, 65u, 127u, 128u, 129u}) {
        const std::string bits = randomBits(random, width, "01");
        const BigInt a = bin(bits.c_str());
        for (unsigned at : {0u, width / 2, width - 1}) {
            std::string other = bits, unknown = bits;
            other[at] = other[at] == '0' ? '1' : '0';
            unknown[at] = 'X';
            EXPECT_EQ(a == bin(bits.c_str()), T);
            EXPECT_EQ(a == bin(other.c_str()), F);
            EXPECT_EQ(a > bin(other.c_str()), bits[at] == '1' ? T : F);
            EXPECT_EQ(a == bin(unknown.c_str()), U);
            EXPECT_EQ(a.case_eq(bin(unknown.c_str())), F);
        }
    }
}

} // namespace
