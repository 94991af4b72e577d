#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

using bigint_test::bin;
using bigint_test::bslOf;
using bigint_test::randomBits;
using bigint_test::take;

__extension__ typedef unsigned __int128 u128;

BigInt minus(const char* decimal, unsigned width) {
    return BigInt(decimal, RadixDecimal, width);
}

TEST(BigIntAddition, WidensOnPositiveOverflowAndWhenBothAreNegative) {
    struct Case {
        BigInt left, right;
        const char* sum;
    };
    const Case cases[] = {
        {bin("011"), bin("001"), "0100"},
        {bin("111"), bin("001"), "01000"},         // positive overflow widens
        {minus("-1", 3), minus("-1", 3), "11110"}, // two negatives always widen
        {minus("-1", 3), bin("001"), "0000"},      // mixed signs never widen
        {bin("1X0"), bin("001"), "0XXX"},
        {bin("01"), bin("Z"), "0XX"},
        {bin("1"), bin("11111"), "0100000"}, // the narrower extends with its sign
        {BigInt(-2L), bin("1"), "111"},
        {BigInt(), BigInt(), "0"},
        {BigInt(), bin("10"), "010"},
        {minus("-1", 1), minus("-1", 1), "110"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(bslOf(c.left) + " + " + bslOf(c.right));
        const BigInt& sum = c.left + c.right;
        EXPECT_EQ(bslOf(sum), c.sum);
        EXPECT_EQ(sum.size(), std::string(c.sum).size() - 1);
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
    EXPECT_EQ(take(value.BSLToDecimal(0, 0, true)), "8");
    value -= BigInt(10L);
    EXPECT_EQ(take(value.BSLToDecimal(0, 0, true)), "-2");
    value += BigInt(-1L);
    EXPECT_EQ(take(value.BSLToDecimal(0, 0, true)), "-3");
    value -= 1L;
    EXPECT_EQ(take(value.BSLToDecimal(0, 0, true)), "-4");
}

// Signed values as BigInt(long) against native arithmetic and comparisons.
TEST(BigIntAddition, SignedValuesMatchNativeArithmetic) {
    std::mt19937_64 random(5);
    std::uniform_int_distribution<int> bitsOf(0, 61);
    for (int i = 0; i < 3000; ++i) {
        auto draw = [&] {
            const long magnitude = static_cast<long>(random() >> (63 - bitsOf(random)));
            return (random() & 1) ? -magnitude : magnitude;
        };
        const long a = draw(), b = draw();
        const BigInt x(a), y(b);
        SCOPED_TRACE(testing::Message() << a << " " << b);
        EXPECT_EQ(take((x + y).BSLToDecimal(0, 0, true)), std::to_string(a + b));
        EXPECT_EQ(take((x - y).BSLToDecimal(0, 0, true)), std::to_string(a - b));
        EXPECT_EQ(take((-x).BSLToDecimal(0, 0, true)), std::to_string(-a));
        EXPECT_EQ(x == y, a == b ? BIGINT_TRUE : BIGINT_FALSE);
        EXPECT_EQ(x != b, a != b ? BIGINT_TRUE : BIGINT_FALSE);
        EXPECT_EQ(x > y, a > b ? BIGINT_TRUE : BIGINT_FALSE);
        EXPECT_EQ(x >= y, a >= b ? BIGINT_TRUE : BIGINT_FALSE);
        EXPECT_EQ(x < b, a < b ? BIGINT_TRUE : BIGINT_FALSE);
        EXPECT_EQ(x <= y, a <= b ? BIGINT_TRUE : BIGINT_FALSE);
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
                const bool overflow = (sum >> w) != 0;
                ASSERT_EQ(result.size(), overflow ? w + 1 : w) << a << " + " << b;
                EXPECT_EQ(result.bsl()[0], '0');
                EXPECT_EQ(valueOf(result.bsl() + 1), sum) << a << " + " << b;
            }
}

TEST(BigIntEquality, DecidesAtTheFirstPositionFromTheTop) {
    struct Case {
        BigInt left, right;
        BIGINTBOOLEAN equal;
    };
    const Case cases[] = {
        {bin("1X0"), bin("100"), BIGINT_UNKNOWN},
        {bin("0X1"), bin("1X0"), BIGINT_FALSE},
        {bin("100"), bin("1X1"), BIGINT_UNKNOWN}, // definite left facing X
        {bin("101"), bin("101"), BIGINT_TRUE},
        {bin("X"), bin("X"), BIGINT_UNKNOWN},
        {bin("01"), bin("0001"), BIGINT_TRUE},
        {bin("1"), bin("0001"), BIGINT_TRUE},
        {bin("X1"), bin("0001"), BIGINT_UNKNOWN}, // a leading X extends as X
        {bin("1X"), bin("101"), BIGINT_FALSE},    // the 0 extension meets the 1 first
        {BigInt(-1L), bin("1"), BIGINT_FALSE},    // sign characters differ
        {BigInt(-1L), minus("-1", 4), BIGINT_TRUE},
        {BigInt(), BigInt(), BIGINT_FALSE}, // no strings to compare
        {BigInt(), bin("0"), BIGINT_FALSE},
        {bin("") & bin(""), bin("") | bin(""), BIGINT_TRUE}, // width 0, both strings "0"
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(bslOf(c.left) + " == " + bslOf(c.right));
        EXPECT_EQ(c.left == c.right, c.equal);
        const BIGINTBOOLEAN notEqual = c.equal == BIGINT_UNKNOWN ? BIGINT_UNKNOWN
                                       : c.equal == BIGINT_TRUE  ? BIGINT_FALSE
                                                                 : BIGINT_TRUE;
        EXPECT_EQ(c.left != c.right, notEqual);
    }
}

TEST(BigIntOrdering, ThreeValuedFromTheTop) {
    struct Case {
        BigInt left, right;
        BIGINTBOOLEAN greater, greaterEqual, less, lessEqual;
    };
    const BIGINTBOOLEAN T = BIGINT_TRUE, F = BIGINT_FALSE, U = BIGINT_UNKNOWN;
    const Case cases[] = {
        {bin("0101"), bin("0100"), T, T, F, F},
        {bin("0101"), bin("01X0"), U, U, U, U},
        {bin("0101"), bin("0101"), F, T, F, T},
        {bin("X101"), bin("0101"), U, U, U, U},
        {bin("0100"), bin("0101"), F, F, T, T},
        {BigInt(3L), BigInt(-3L), T, T, F, F},
        {BigInt(-3L), BigInt(3L), F, F, T, T},
        {BigInt(-3L), BigInt(-5L), T, T, F, F},
        {bin("11"), bin("011"), F, T, F, T},
        {BigInt(), BigInt(), U, U, U, U}, // equal positions, but no width
        {BigInt(), bin("0"), U, U, U, U},
        {bin("1"), BigInt(), T, T, F, F},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(bslOf(c.left) + " vs " + bslOf(c.right));
        EXPECT_EQ(c.left > c.right, c.greater);
        EXPECT_EQ(c.left >= c.right, c.greaterEqual);
        EXPECT_EQ(c.left < c.right, c.less);
        EXPECT_EQ(c.left <= c.right, c.lessEqual);
    }
    EXPECT_EQ(bin("0101") > 4L, BIGINT_TRUE);
    EXPECT_EQ(bin("0101") >= 5L, BIGINT_TRUE);
    EXPECT_EQ(bin("0101") <= 4L, BIGINT_FALSE);
    EXPECT_EQ(bin("0101") == 5L, BIGINT_TRUE);
}

TEST(BigIntCaseEquality, ComparesXAndZLiterallyAfterZeroExtension) {
    struct Case {
        BigInt left, right;
        BIGINTBOOLEAN equal;
    };
    const Case cases[] = {
        {bin("1X0"), bin("1X0"), BIGINT_TRUE},
        {bin("1X0"), bin("100"), BIGINT_FALSE},
        {bin("Z"), bin("X"), BIGINT_FALSE},
        {bin("0Z"), bin("Z"), BIGINT_TRUE},
        {bin("X"), bin("XX"), BIGINT_FALSE}, // zero extension, not X extension
        {bin("1"), bin("001"), BIGINT_TRUE},
        {BigInt(-1L), bin("1"), BIGINT_TRUE}, // bits only, the sign character aside
        {BigInt(), BigInt(), BIGINT_FALSE},
        {BigInt(), bin("0"), BIGINT_FALSE},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(bslOf(c.left) + " === " + bslOf(c.right));
        EXPECT_EQ(c.left.case_eq(c.right), c.equal);
        EXPECT_EQ(c.right.case_eq(c.left), c.equal);
        EXPECT_EQ(c.left.case_neq(c.right), c.equal == BIGINT_TRUE ? BIGINT_FALSE : BIGINT_TRUE);
    }
}

TEST(BigIntEquality, WidthSweepFindsTheDecidingPosition) {
    std::mt19937_64 random(13);
    for (unsigned width : {1u, 7u, 8u, 9u, 31u, 32u, 33u, 63u, 64u, 65u, 127u, 128u, 129u}) {
        const std::string bits = randomBits(random, width, "01");
        for (unsigned at : {0u, width / 2, width - 1}) {
            std::string other = bits;
            other[at] = other[at] == '0' ? '1' : '0';
            std::string unknown = bits;
            unknown[at] = 'X';
            const BigInt a = bin(bits.c_str());
            EXPECT_EQ(a == bin(bits.c_str()), BIGINT_TRUE);
            EXPECT_EQ(a == bin(other.c_str()), BIGINT_FALSE);
            EXPECT_EQ(a > bin(other.c_str()), bits[at] == '1' ? BIGINT_TRUE : BIGINT_FALSE);
            EXPECT_EQ(a == bin(unknown.c_str()), BIGINT_UNKNOWN);
            EXPECT_EQ(a.case_eq(bin(unknown.c_str())), BIGINT_FALSE);
        }
    }
}

} // namespace
