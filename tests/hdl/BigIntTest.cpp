#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"
#include "support/ToolkitCycle.h"

#include <gtest/gtest.h>

#include <climits>
#include <tuple>
#include <utility>

namespace {

using bigint_test::bin;
using bigint_test::bslOf;
using bigint_test::take;
using bigint_test::val;

TEST(BigIntConstruction, FromLongUsesTheBitLengthAndTwosComplementForNegatives) {
    const std::pair<long, std::string> cases[] = {
        {0, "00"}, {1, "01"}, {5, "0101"}, {8, "01000"}, {-1, "11"}, {-4, "1100"}, {-5, "1011"}};
    for (auto [value, representation] : cases) {
        BigInt assigned("1", RadixBinary, 0);
        assigned = value;
        EXPECT_EQ(bslOf(BigInt(value)), representation) << value;
        EXPECT_EQ(bslOf(assigned), representation) << value;
        EXPECT_EQ(BigInt(value).size(), representation.size() - 1) << value;
    }
    EXPECT_EQ(bslOf(BigInt(LONG_MAX)), "0" + std::string(63, '1'));
    EXPECT_EQ(bslOf(BigInt(LONG_MIN)), "11" + std::string(63, '0'));
}

// A larger width extends by the four-state rule, a smaller one keeps the low bits.
TEST(BigIntConstruction, FromDigitStringsOfEachRadix) {
    // clang-format off
    const std::tuple<const char*, Radix, unsigned, const char*> cases[] = {
        {"10xz", RadixBinary, 0, "010XZ"},           {"1_0", RadixBinary, 0, "010"},
        {"1?", RadixBinary, 0, "01X"},               {"7x", RadixOctal, 0, "0111XXX"},
        {"z1", RadixOctal, 0, "0ZZZ001"},            {"aZ", RadixHexadecimal, 0, "01010ZZZZ"},
        {"F_f", RadixHexadecimal, 0, "011111111"},   {"g", RadixHexadecimal, 0, "0XXXX"},
        {"5", RadixDecimal, 0, "0101"},              {"0", RadixPlainDecimal, 0, "00"},
        {"1_000", RadixDecimal, 0, "01111101000"},   {"-5", RadixPlainDecimal, 0, "1011"},
        {"-4", RadixDecimal, 0, "1100"},             {"-5", RadixDecimal, 8, "111111011"},
        {"-0", RadixDecimal, 0, "00"},               {"1x", RadixDecimal, 0, "0X"},
        {"1x", RadixDecimal, 4, "0XXXX"},            {"-", RadixDecimal, 0, "0X"},
        {"101", RadixBinary, 5, "000101"},           {"x01", RadixBinary, 5, "0XXX01"},
        {"z", RadixHexadecimal, 6, "0ZZZZZZ"},       {"011", RadixBinary, 5, "000011"},
        {"F0", RadixHexadecimal, 6, "0110000"},      {"12", RadixDecimal, 2, "000"},
        {"", RadixBinary, 3, "0000"},                {"", RadixOctal, 0, "<null>"},
        {"1", RadixNone, 0, "<null>"},               {"1", static_cast<Radix>(7), 0, "<null>"},
        {nullptr, RadixBinary, 4, "<null>"}};
    // clang-format on
    for (const auto& [text, radix, width, representation] : cases) {
        const BigInt value(text, radix, width);
        EXPECT_EQ(bslOf(value), representation) << (text ? text : "null") << " " << radix;
        EXPECT_EQ(value.hasValue(), representation[0] != '<');
    }
    EXPECT_EQ(bslOf(val("d18446744073709551617")), "01" + std::string(63, '0') + "1");
    EXPECT_EQ(bslOf(val("d-18446744073709551616")), "11" + std::string(64, '0'));
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
    assigned = BigInt(3L);
    EXPECT_EQ(bslOf(assigned), "011");
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

TEST(BigIntConversionSteps, TwosComplementAndReconcileWidths) {
    const std::pair<std::string, const char*> cases[] = {
        {"0101", "1011"}, {"0000", "0000"}, {"1000", "1000"}, {"01Z1", "10X1"},
        {"0z10", "1x10"}, {"01X0", "10X0"}, {"", ""}};
    for (auto [text, output] : cases) {
        BigInt::twosComplement(text.data());
        EXPECT_EQ(text, output);
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

TEST(BigIntIntermediates, AResultLivesUntilEightMoreAreTaken) {
    const BigInt a = bin("1100"), b = bin("1010");
    BigInt& first = a & b;
    const char* kept = first.bsl();
    for (int i = 0; i < 7; ++i)
        EXPECT_NE(&(a | b), &first);
    EXPECT_EQ(first.bsl(), kept);
    EXPECT_EQ(bslOf(first), "01000");
    BigInt& ninth = a ^ b;
    EXPECT_EQ(&ninth, &first) << "the ninth result reuses the first slot";
    EXPECT_EQ(bslOf(ninth), "00110");
}

TEST(BigIntIntermediates, AnOperandThatIsTheReusedSlotIsReadBeforeItIsFreed) {
    const BigInt a = bin("0110");
    BigInt& oldest = a | 1L;
    for (int i = 0; i < 7; ++i)
        (void)(a & a);
    BigInt& next = ~oldest;
    EXPECT_EQ(&next, &oldest);
    EXPECT_EQ(bslOf(next), "01000");
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
