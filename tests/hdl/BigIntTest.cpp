#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"
#include "support/ToolkitCycle.h"

#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <utility>

namespace {

using bigint_test::bin;
using bigint_test::bslOf;
using bigint_test::take;

TEST(BigIntConstruction, FromLongUsesTheBitLengthAndTwosComplementForNegatives) {
    const std::pair<long, const char*> cases[] = {
        {0, "00"},
        {1, "01"},
        {5, "0101"},
        {8, "01000"},
        {-1, "11"},
        {-4, "1100"},
        {-5, "1011"},
        {LONG_MAX, "0111111111111111111111111111111111111111111111111111111111111111"},
        {LONG_MIN, "11000000000000000000000000000000000000000000000000000000000000000"},
    };
    for (const auto& [value, representation] : cases) {
        SCOPED_TRACE(value);
        const BigInt constructed(value);
        EXPECT_EQ(bslOf(constructed), representation);
        EXPECT_EQ(constructed.size(), std::string(representation).size() - 1);
        BigInt assigned("1", RadixBinary, 0);
        assigned = value;
        EXPECT_EQ(bslOf(assigned), representation);
    }
}

struct TextCase {
    const char* text;
    Radix radix;
    unsigned width;
    const char* representation;
};

TEST(BigIntConstruction, FromDigitStringsOfEachRadix) {
    const TextCase cases[] = {
        {"10xz", RadixBinary, 0, "010XZ"},
        {"1_0", RadixBinary, 0, "010"},
        {"1?", RadixBinary, 0, "01X"},
        {"7x", RadixOctal, 0, "0111XXX"},
        {"z1", RadixOctal, 0, "0ZZZ001"},
        {"aZ", RadixHexadecimal, 0, "01010ZZZZ"},
        {"F_f", RadixHexadecimal, 0, "011111111"},
        {"g", RadixHexadecimal, 0, "0XXXX"},
        {"5", RadixDecimal, 0, "0101"},
        {"0", RadixPlainDecimal, 0, "00"},
        {"1_000", RadixDecimal, 0, "01111101000"},
        {"-5", RadixPlainDecimal, 0, "1011"},
        {"-4", RadixDecimal, 0, "1100"},
        {"-5", RadixDecimal, 8, "111111011"},
        {"-0", RadixDecimal, 0, "00"},
        {"1x", RadixDecimal, 0, "0X"},
        {"1x", RadixDecimal, 4, "0XXXX"},
        {"-", RadixDecimal, 0, "0X"},
        // A width above the digits' own extends by the four-state rule...
        {"101", RadixBinary, 5, "000101"},
        {"x01", RadixBinary, 5, "0XXX01"},
        {"z", RadixHexadecimal, 6, "0ZZZZZZ"},
        {"011", RadixBinary, 5, "000011"},
        // ...and a smaller one keeps the low bits.
        {"F0", RadixHexadecimal, 6, "0110000"},
        {"12", RadixDecimal, 2, "000"},
        {"", RadixBinary, 3, "0000"},
        {"", RadixOctal, 0, "<null>"},
        {"1", RadixNone, 0, "<null>"},
        {"1", static_cast<Radix>(7), 0, "<null>"},
        {nullptr, RadixBinary, 4, "<null>"},
    };
    for (const TextCase& c : cases) {
        SCOPED_TRACE(testing::Message()
                     << (c.text ? c.text : "null") << " radix " << c.radix << " width " << c.width);
        const BigInt value(c.text, c.radix, c.width);
        EXPECT_EQ(bslOf(value), c.representation);
        EXPECT_EQ(value.hasValue(), c.representation[0] != '<');
    }
}

// What the application does with a constant a user typed: parse it, then build the value
// from the digits, the radix and the declared size.
TEST(BigIntConstruction, FromParsedConstants) {
    const std::pair<const char*, const char*> cases[] = {
        {"8'hFF", "011111111"},    {"4'bx", "0XXXX"}, {"6'o7z", "0111ZZZ"},
        {"'h1_0", "000010000"},    {"-3", "101"},     {"X\"1F\"", "000011111"},
        {"\"300\"", "0100101100"}, {"3'd12", "0100"}, {"5'b1", "000001"},
    };
    for (const auto& [text, representation] : cases) {
        HDLanguage language = HDLNone;
        Radix radix = RadixNone;
        char upperCase = 0;
        unsigned size = 0, bits = 0;
        std::unique_ptr<char[]> digits(
            parseHDLConstant(text, language, radix, upperCase, size, bits));
        ASSERT_NE(digits, nullptr) << text;
        EXPECT_EQ(bslOf(BigInt(digits.get(), radix, size)), representation) << text;
    }
}

TEST(BigIntConstruction, DecimalBeyondSixtyFourBits) {
    EXPECT_EQ(bslOf(BigInt("18446744073709551617", RadixDecimal, 0)),
              "01" + std::string(63, '0') + "1");
    EXPECT_EQ(bslOf(BigInt("-18446744073709551616", RadixDecimal, 0)), "11" + std::string(64, '0'));
}

TEST(BigIntConstruction, CopyMoveAndAssignmentOwnTheirStrings) {
    BigInt original = bin("1X0");
    BigInt copy(original);
    EXPECT_NE(copy.bsl(), original.bsl());
    EXPECT_EQ(bslOf(copy), "01X0");
    BigInt moved(std::move(copy));
    EXPECT_EQ(bslOf(moved), "01X0");
    EXPECT_EQ(copy.size(), 0u); // NOLINT(bugprone-use-after-move): the moved-from state is set
    BigInt assigned;
    assigned = original;
    assigned = assigned; // self-assignment keeps the value
    EXPECT_EQ(bslOf(assigned), "01X0");
    assigned = BigInt(3L);
    EXPECT_EQ(bslOf(assigned), "011");
    const BigInt empty;
    EXPECT_FALSE(empty.hasValue());
    EXPECT_EQ(empty.bsl(), nullptr);
    EXPECT_EQ(take(empty.asString()), "<null>");
    EXPECT_EQ(take(original.asString()), "01X0");
}

struct QueryCase {
    BigInt value;
    bool isZero, hasNonNumericBit, isInteger, isNegative, isPositive;
};

TEST(BigIntQueries, AnswerFromTheRepresentation) {
    const QueryCase cases[] = {
        {bin("000"), true, false, true, false, false},
        {bin("0X1"), true, true, false, false, false},
        {bin("Z"), true, true, false, false, false},
        {bin("010"), false, false, true, false, true},
        {BigInt(-2L), false, false, true, true, false},
        {BigInt(), false, false, false, false, false},
        {BigInt("-0", RadixDecimal, 4), true, false, true, false, false},
        {bin("1X"), false, true, false, false, false},
    };
    for (const QueryCase& c : cases) {
        SCOPED_TRACE(bslOf(c.value));
        EXPECT_EQ(c.value.isZero(), c.isZero);
        EXPECT_EQ(c.value.hasNonNumericBit(), c.hasNonNumericBit);
        EXPECT_EQ(c.value.isInteger(), c.isInteger);
        EXPECT_EQ(c.value.isNegative(), c.isNegative);
        EXPECT_EQ(c.value.isPositive(), c.isPositive);
    }
}

TEST(BigIntConversionSteps, TwosComplementCoversTheWholeString) {
    const std::pair<const char*, const char*> cases[] = {
        {"0101", "1011"}, {"0000", "0000"}, {"1000", "1000"}, {"01Z1", "10X1"},
        {"0z10", "1x10"}, {"01X0", "10X0"}, {"", ""},
    };
    for (const auto& [input, output] : cases) {
        std::string text = input;
        BigInt::twosComplement(text.data());
        EXPECT_EQ(text, output) << input;
    }
    BigInt::twosComplement(nullptr);
}

TEST(BigIntConversionSteps, ReconcileWidthsFillsOnlyAZero) {
    const unsigned cases[][4] = {{0, 0, 0, 0}, {5, 0, 5, 5}, {0, 7, 7, 7}, {3, 4, 3, 4}};
    for (const auto& c : cases) {
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
    BigInt* others[7];
    for (BigInt*& other : others) {
        other = &(a | b);
        EXPECT_NE(other, &first);
    }
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
    // oldest is the slot the next result takes.
    BigInt& next = ~oldest;
    EXPECT_EQ(&next, &oldest);
    EXPECT_EQ(bslOf(next), "01000");
}

using BigIntShutDown = ToolkitCycle;

TEST_F(BigIntShutDown, ToolkitShutdownFreesTheIntermediateSlots) {
    TarqToolkit::registerSelf();
    const BigInt a = bin("1010");
    BigInt& result = a & a;
    ASSERT_TRUE(result.hasValue());
    TarqToolkit::shutDownApp();
    EXPECT_EQ(result.bsl(), nullptr);
    EXPECT_EQ(result.size(), 0u);

    // The next cycle registers the step again on first use.
    TqObject::startUp();
    TarqToolkit::registerSelf();
    BigInt& again = a | a;
    ASSERT_TRUE(again.hasValue());
    TarqToolkit::shutDownApp();
    EXPECT_EQ(again.bsl(), nullptr);
}

TEST(BigIntShutDownStep, ShutDownFreesEverySlotAndReturnsTrue) {
    const BigInt a = bin("1");
    BigInt& result = a + a;
    EXPECT_TRUE(BigInt::shutDown());
    EXPECT_EQ(result.bsl(), nullptr);
    EXPECT_FALSE(result.hasValue());
}

} // namespace
