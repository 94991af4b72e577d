#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

namespace {

using namespace bigint_test;

const BIGINTBOOLEAN T = BIGINT_TRUE, F = BIGINT_FALSE, U = BIGINT_UNKNOWN;

// The answer a table letter stands for (T, F or U), or its three-valued negation.
BIGINTBOOLEAN truth(char c, bool negated = false) {
    return c == 'U' ? U : (c == 'T') != negated ? T : F;
}

// Positive overflow widens, two negatives always widen, mixed signs never; the narrower
// operand extends with its sign.
TEST(BigIntAddition, WidensOnPositiveOverflowAndWhenBothAreNegative) {
    const char* const cases[][3] = {
        {"011", "001", "0100"},    {"111", "001", "01000"},   {"d-1/3", "d-1/3", "11110"},
        {"d-1/3", "001", "0000"},  {"1X0", "001", "0XXX"},    {"01", "Z", "0XX"},
        {"1", "11111", "0100000"}, {"d-2", "1", "111"},       {"", "", "0"},
        {"", "10", "010"},         {"d-1/1", "d-1/1", "110"}, {"d-4", "d-4", "11000"}};
    for (const auto& [left, right, sum] : cases) {
        const BigInt& result = val(left) + val(right);
        EXPECT_EQ(bslOf(result), sum) << left << " + " << right;
        EXPECT_EQ(result.size(), std::strlen(sum) - 1);
    }
}

TEST(BigIntAddition, NegationSubtractionAndAssignments) {
    BigInt mostNegative(-8L); // sign '1', bits 1000
    mostNegative.clip(3);     // sign '1', bits 000
    // clang-format off
    const std::pair<const BigInt*, const char*> cases[] = {
        {&-BigInt(5L), "1011"}, {&-BigInt(-5L), "0101"}, {&-mostNegative, "1000"},
        {&-bin("1Z"), "0XX"}, {&-BigInt(), "0"}, {&(BigInt(5L) - BigInt(3L)), "0010"},
        {&(BigInt(5L) - 7L), "1110"}, {&(bin("101") + 1L), "0110"}};
    // clang-format on
    for (const auto& [result, expected] : cases)
        EXPECT_EQ(bslOf(*result), expected);
    BigInt value(5L);
    value += 3L;
    EXPECT_EQ(bslOf(value), "01000");
    value -= BigInt(10L);
    value += BigInt(-1L);
    EXPECT_EQ(bslOf(value), "111101") << "two negatives widen";
    value -= 1L;
    EXPECT_EQ(bslOf(value), "1111100");
}

// Equality decides at the first position from the top where the answer is known; a leading
// X extends as X; values without strings never compare equal, two of width 0 do. Case
// equality compares X and Z literally after zero extension, bits only. The ordering is decided
// the same way from the top, and a sign decides before any bit.
TEST(BigIntComparison, DecideFromTheTopInThreeValues) {
    // left, right, then ==, case_eq, >, >=, <, <=
    // clang-format off
    const char* const cases[][3] = {
        {"1X0", "100", "UFUUUU"},  {"0X1", "1X0", "FFFFTT"},  {"100", "1X1", "UFUUUU"},
        {"101", "101", "TTFTFT"},  {"X", "X", "UTUUUU"},      {"01", "0001", "TTFTFT"},
        {"1", "0001", "TTFTFT"},   {"X1", "0001", "UFUUUU"},  {"1X", "101", "FFFFTT"},
        {"d-1", "1", "FTFFTT"},    {"d-1", "d-1/4", "TFFTFT"}, {"1X0", "1X0", "UTUUUU"},
        {"Z", "X", "UFUUUU"},      {"0Z", "Z", "UTUUUU"},     {"X", "XX", "UFUUUU"},
        {"", "", "FFUUUU"},        {"", "0", "FFUUUU"},       {"1", "", "FFTTFF"},
        {"0101", "0100", "FFTTFF"}, {"0101", "01X0", "UFUUUU"}, {"X101", "0101", "UFUUUU"},
        {"0100", "0101", "FFFFTT"}, {"d3", "d-3", "FFTTFF"},  {"d-3", "d3", "FFFFTT"},
        {"d-3", "d-5", "FFTTFF"},  {"11", "011", "TTFTFT"}};
    // clang-format on
    for (const auto& [left, right, answers] : cases) {
        const BigInt a = val(left), b = val(right);
        SCOPED_TRACE(testing::Message() << left << " vs " << right);
        const BIGINTBOOLEAN got[] = {a == b, a.case_eq(b), a > b, a >= b, a < b, a <= b};
        for (int k = 0; k < 6; ++k)
            EXPECT_EQ(got[k], truth(answers[k])) << "comparison " << k;
        EXPECT_EQ(a != b, truth(answers[0], true));
        EXPECT_EQ(b.case_eq(a), truth(answers[1]));
        EXPECT_EQ(a.case_neq(b), truth(answers[1], true));
    }
    EXPECT_EQ((bin("") & bin("")) == (bin("") | bin("")), T);
    EXPECT_EQ(bin("0101") == 5L, T);
    EXPECT_EQ(bin("0101").case_eq(5L), T);
    EXPECT_EQ(BigInt(-1L).case_neq(1L), F);
    EXPECT_EQ(bin("0101") >= 5L, T);
    EXPECT_EQ(bin("0101") <= 4L, F);
}

} // namespace
