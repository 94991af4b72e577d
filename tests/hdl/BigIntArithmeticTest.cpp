#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>

namespace {

using namespace bigint_test;

std::string decimalOf(const BigInt& value) {
    return take(value.BSLToDecimal(0, 0, true));
}

const BIGINTBOOLEAN T = BIGINT_TRUE, F = BIGINT_FALSE, U = BIGINT_UNKNOWN;

BIGINTBOOLEAN truth(char c) {
    return c == 'T' ? T : c == 'F' ? F : U;
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
    EXPECT_EQ(decimalOf(value), "8");
    value -= BigInt(10L);
    value += BigInt(-1L);
    EXPECT_EQ(decimalOf(value), "-3");
    value -= 1L;
    EXPECT_EQ(decimalOf(value), "-4");
}

// Equality decides at the first position from the top where the answer is known; a leading
// X extends as X; values without strings never compare equal, two of width 0 do. Case
// equality compares X and Z literally after zero extension, bits only.
TEST(BigIntComparison, EqualityAndCaseEqualityDecideFromTheTop) {
    // left, right, then == and case_eq
    const char* const cases[][3] = {
        {"1X0", "100", "UF"}, {"0X1", "1X0", "FF"}, {"100", "1X1", "UF"},   {"101", "101", "TT"},
        {"X", "X", "UT"},     {"01", "0001", "TT"}, {"1", "0001", "TT"},    {"X1", "0001", "UF"},
        {"1X", "101", "FF"},  {"d-1", "1", "FT"},   {"d-1", "d-1/4", "TF"}, {"1X0", "1X0", "UT"},
        {"Z", "X", "UF"},     {"0Z", "Z", "UT"},    {"X", "XX", "UF"},      {"", "", "FF"},
        {"", "0", "FF"}};
    for (const auto& [left, right, answers] : cases) {
        const BigInt a = val(left), b = val(right);
        SCOPED_TRACE(testing::Message() << left << " vs " << right);
        EXPECT_EQ(a == b, truth(answers[0]));
        EXPECT_EQ(a != b, answers[0] == 'U' ? U : answers[0] == 'T' ? F : T);
        EXPECT_EQ(a.case_eq(b), truth(answers[1]));
        EXPECT_EQ(b.case_eq(a), truth(answers[1]));
        EXPECT_EQ(a.case_neq(b), answers[1] == 'T' ? F : T);
    }
    EXPECT_EQ((bin("") & bin("")) == (bin("") | bin("")), T);
    EXPECT_EQ(bin("0101") == 5L, T);
    EXPECT_EQ(bin("0101").case_eq(5L), T);
    EXPECT_EQ(BigInt(-1L).case_neq(1L), F);
}

TEST(BigIntComparison, OrderingIsThreeValuedFromTheTop) {
    // left, right, then >, >=, <, <=
    const char* const cases[][3] = {
        {"0101", "0100", "TTFF"}, {"0101", "01X0", "UUUU"}, {"0101", "0101", "FTFT"},
        {"X101", "0101", "UUUU"}, {"0100", "0101", "FFTT"}, {"d3", "d-3", "TTFF"},
        {"d-3", "d3", "FFTT"},    {"d-3", "d-5", "TTFF"},   {"11", "011", "FTFT"},
        {"", "", "UUUU"},         {"", "0", "UUUU"},        {"1", "", "TTFF"}};
    for (const auto& [left, right, answers] : cases) {
        const BigInt a = val(left), b = val(right);
        SCOPED_TRACE(testing::Message() << left << " vs " << right);
        const BIGINTBOOLEAN got[] = {a > b, a >= b, a < b, a <= b};
        for (int k = 0; k < 4; ++k)
            EXPECT_EQ(got[k], truth(answers[k])) << "comparison " << k;
    }
    EXPECT_EQ(bin("0101") >= 5L, T);
    EXPECT_EQ(bin("0101") <= 4L, F);
}

} // namespace
