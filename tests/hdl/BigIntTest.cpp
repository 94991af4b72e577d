#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"
#include "support/ToolkitCycle.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>
#include <functional>
#include <tuple>
#include <utility>

namespace {

using namespace bigint_test;

TEST(BigIntConstruction, FromLongUsesTheBitLengthAndTwosComplementForNegatives) {
    // clang-format off
    const std::pair<long, std::string> cases[] = {
        {0, "00"}, {1, "01"}, {5, "0101"}, {8, "01000"}, {-1, "11"}, {-4, "1100"}, {-5, "1011"},
        {LONG_MAX, cat("0", std::string(63, '1'))}, {LONG_MIN, cat("11", std::string(63, '0'))}};
    // clang-format on
    for (const auto& [value, representation] : cases) {
        BigInt assigned("1", RadixBinary, 0);
        assigned = value;
        EXPECT_EQ(bslOf(BigInt(value)), representation) << value;
        EXPECT_EQ(bslOf(assigned), representation) << value;
        EXPECT_EQ(BigInt(value).size(), representation.size() - 1) << value;
    }
}

// A larger width extends by the four-state rule, a smaller one keeps the low bits.
TEST(BigIntConstruction, FromDigitStringsOfEachRadix) {
    const Radix B = RadixBinary, O = RadixOctal, H = RadixHexadecimal, D = RadixDecimal;
    // clang-format off
    const std::tuple<const char*, Radix, unsigned, const char*> cases[] = {
        {"10xz", B, 0, "010XZ"}, {"1_0", B, 0, "010"},         {"1?", B, 0, "01X"},
        {"7x", O, 0, "0111XXX"}, {"z1", O, 0, "0ZZZ001"},      {"8", O, 0, "0XXX"},
        {"aZ", H, 0, "01010ZZZZ"}, {"F_f", H, 0, "011111111"}, {"g", H, 0, "0XXXX"},
        {"5", D, 0, "0101"},     {"1_000", D, 0, "01111101000"}, {"0", RadixPlainDecimal, 0, "00"},
        {"-5", RadixPlainDecimal, 0, "1011"}, {"-4", D, 0, "1100"}, {"-5", D, 8, "111111011"},
        {"-5", D, 2, "111"},     {"-0", D, 0, "00"},           {"1x", D, 0, "0X"},
        {"1x", D, 4, "0XXXX"},   {"-", D, 0, "0X"},            {"", D, 2, "0XX"},
        {"5-", D, 0, "0X"},      {"12", D, 2, "000"},          {"101", B, 5, "000101"},
        {"x01", B, 5, "0XXX01"}, {"011", B, 5, "000011"},      {"z", H, 6, "0ZZZZZZ"},
        {"F0", H, 6, "0110000"}, {"", B, 3, "0000"},           {"", O, 0, "<null>"},
        {"__", D, 0, "<null>"},  {"1", RadixNone, 0, "<null>"}, {"1", Radix(7), 0, "<null>"},
        {nullptr, B, 4, "<null>"}};
    // clang-format on
    for (const auto& [text, radix, width, representation] : cases) {
        const BigInt value(text, radix, width);
        EXPECT_EQ(bslOf(value), representation) << (text ? text : "null") << " " << radix;
        EXPECT_EQ(value.hasValue(), representation[0] != '<');
    }
    EXPECT_EQ(bslOf(val("d18446744073709551617")), cat("01", std::string(63, '0'), "1"));
    EXPECT_EQ(bslOf(val("d-18446744073709551616")), cat("11", std::string(64, '0')));
}

// The steps the string constructor is made of, where they say more than the constructor shows:
// the width they report, decimal digits without a sign, digit values, and the two's
// complement, which turns Z into X.
TEST(BigIntConversionSteps, EachKeepsItsOwnContract) {
    using Step = char* (*)(const char*, unsigned&);
    // clang-format off
    const std::tuple<Step, const char*, unsigned, const char*> toBSL[] = {
        {BigInt::binToBSL, "1z", 4, "0001Z"}, {BigInt::octToBSL, "71", 4, "01001"},
        {BigInt::hexToBSL, "", 0, "0"},       {BigInt::decToBSL, "-1", 3, "0XXX"},
        {BigInt::decToBSL, "300", 4, "01100"}};
    // clang-format on
    for (const auto& [step, digits, width, representation] : toBSL) {
        unsigned built = width;
        EXPECT_EQ(take(step(digits, built)), representation) << digits;
        EXPECT_EQ(built, std::strlen(representation) - 1) << digits;
    }
    std::string text = "-_1_2__-";
    EXPECT_EQ(BigInt::removeUnderscores(text.data()), text.data());
    EXPECT_TRUE(BigInt::removeNegativeSign(text.data()));
    EXPECT_FALSE(BigInt::removeNegativeSign(text.data()));
    EXPECT_STREQ(text.c_str(), "12-");
    EXPECT_EQ(BigInt::removeUnderscores(nullptr), nullptr);
    EXPECT_FALSE(BigInt::removeNegativeSign(nullptr));
    const std::string digits = "09afAFgxZ/:`@G";
    const int values[] = {0, 9, 10, 15, 10, 15, -1, -1, -1, -1, -1, -1, -1, -1};
    for (std::size_t i = 0; i < digits.size(); ++i)
        EXPECT_EQ(BigInt::asDigit(digits[i]), values[i]) << digits[i];
    const std::pair<std::string, const char*> cases[] = {
        {"0101", "1011"}, {"0000", "0000"}, {"1000", "1000"}, {"01Z1", "10X1"},
        {"0z10", "1x10"}, {"01X0", "10X0"}, {"", ""}};
    for (auto [bits, output] : cases) {
        BigInt::twosComplement(bits.data());
        EXPECT_EQ(bits, output);
    }
    BigInt::twosComplement(nullptr);
    // Only a zero width is filled from the other.
    const unsigned widths[][4] = {{0, 0, 0, 0}, {5, 0, 5, 5}, {0, 7, 7, 7}, {3, 4, 3, 4}};
    for (const auto& c : widths) {
        unsigned a = c[0], b = c[1];
        BigInt::reconcileWidths(a, b);
        EXPECT_EQ(a, c[2]);
        EXPECT_EQ(b, c[3]);
    }
}

TEST(BigIntConstruction, CopyMoveAndAssignmentOwnTheirStrings) {
    const BigInt original = bin("1X0");
    BigInt copy(original);
    EXPECT_NE(copy.bsl(), original.bsl());
    BigInt moved(std::move(copy));
    EXPECT_EQ(bslOf(moved), "01X0");
    EXPECT_EQ(copy.size(), 0u); // NOLINT(bugprone-use-after-move): the moved-from state is set
    BigInt assigned;
    assigned = original;
    assigned = assigned;
    EXPECT_EQ(bslOf(assigned), "01X0");
    EXPECT_EQ(take(BigInt().asString()), "<null>");
    EXPECT_EQ(take(original.asString()), "01X0");
}

TEST(BigIntQueries, AnswerFromTheRepresentation) {
    // isZero, hasNonNumericBit, isInteger, isNegative, isPositive
    const std::pair<const char*, const char*> cases[] = {
        {"000", "10100"}, {"0X1", "11000"}, {"Z", "11000"},     {"010", "00101"},
        {"d-2", "00110"}, {"", "00000"},    {"d-0/4", "10100"}, {"1X", "01000"}};
    for (const auto& [text, answers] : cases) {
        const BigInt value = val(text);
        const bool got[] = {value.isZero(), value.hasNonNumericBit(), value.isInteger(),
                            value.isNegative(), value.isPositive()};
        for (int i = 0; i < 5; ++i)
            EXPECT_EQ(got[i], answers[i] == '1') << text << " query " << i;
    }
}

// A result outlives seven more and the eighth reuses its slot; an operand that is that slot is
// read before it is reused, also where the operator builds a value of its own on the way
// (subtraction negates its right operand).
TEST(BigIntIntermediates, AResultLivesUntilEightMoreAreTakenAndIsReadFirst) {
    const BigInt five(5L), three(3L);
    const std::pair<std::function<BigInt&(const BigInt&)>, const char*> cases[] = {
        {[](const BigInt& x) -> BigInt& { return ~x; }, "0010"},
        {[&](const BigInt& x) -> BigInt& { return x - three; }, "0010"},
        {[](const BigInt& x) -> BigInt& { return x - 3L; }, "0010"},
        {[&](const BigInt& x) -> BigInt& { return x.combine(three); }, "010111"}};
    for (const auto& [operation, expected] : cases) {
        BigInt& oldest = five | 0L;
        for (int i = 0; i < 7; ++i)
            EXPECT_NE(&(three & three), &oldest);
        EXPECT_EQ(bslOf(oldest), "0101");
        BigInt& result = operation(oldest);
        EXPECT_EQ(&result, &oldest);
        EXPECT_EQ(bslOf(result), expected);
    }
}

using BigIntShutDown = ToolkitCycle;

TEST_F(BigIntShutDown, ToolkitShutdownFreesTheIntermediateSlotsInEveryCycle) {
    const BigInt a = bin("1010");
    for (int cycle = 0; cycle < 2; ++cycle) {
        if (cycle > 0)
            TqObject::startUp();
        TarqToolkit::registerSelf();
        BigInt& result = a & a;
        ASSERT_TRUE(result.hasValue());
        TarqToolkit::shutDownApp();
        EXPECT_EQ(result.bsl(), nullptr) << cycle;
        EXPECT_EQ(result.size(), 0u);
    }
    TqObject::startUp();
    BigInt& direct = a + a;
    EXPECT_TRUE(BigInt::shutDown());
    EXPECT_FALSE(direct.hasValue());
}

} // namespace
