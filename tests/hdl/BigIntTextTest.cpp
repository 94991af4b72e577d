#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>

namespace {

using bigint_test::bin;
using bigint_test::randomBits;
using bigint_test::take;

struct TextCase {
    const char* bits;
    Radix radix;
    unsigned width, group;
    bool upper;
    const char* text;
};

TEST(BigIntText, ConvertsWithFillGroupingAndCase) {
    const TextCase cases[] = {
        // Binary: X and Z in the chosen case, the fill character as stored.
        {"10xz", RadixBinary, 0, 0, true, "10XZ"},
        {"10xz", RadixBinary, 0, 0, false, "10xz"},
        {"10", RadixBinary, 6, 0, true, "000010"},
        {"X1", RadixBinary, 4, 0, false, "XXx1"},
        {"Z1", RadixBinary, 3, 0, true, "ZZ1"},
        {"1101", RadixBinary, 2, 0, true, "01"},
        {"110101", RadixBinary, 0, 4, true, "11_0101"},
        {"110101", RadixBinary, 0, 2, true, "11_01_01"},
        {"110101", RadixBinary, 0, 1, true, "1_1_0_1_0_1"},
        {"110101", RadixBinary, 0, 6, true, "110101"},
        {"110101", RadixBinary, 0, 9, true, "110101"},
        // Hexadecimal: X unless every bit of the group is Z; digits beyond the value fill.
        {"11111111", RadixHexadecimal, 0, 0, true, "FF"},
        {"11111111", RadixHexadecimal, 0, 0, false, "ff"},
        {"1010ZZZZ", RadixHexadecimal, 0, 0, false, "az"},
        {"ZZZZXXXX", RadixHexadecimal, 0, 0, true, "ZX"},
        {"XZZZ", RadixHexadecimal, 0, 0, true, "X"},
        {"ZZZ0", RadixHexadecimal, 0, 0, false, "x"},
        {"0X10", RadixHexadecimal, 0, 0, true, "X"},
        {"1111", RadixHexadecimal, 12, 0, true, "00F"},
        {"X0000", RadixHexadecimal, 12, 0, false, "Xx0"},
        {"Z0000", RadixHexadecimal, 8, 0, false, "z0"},
        {"10110", RadixHexadecimal, 0, 0, true, "16"},
        {"1111", RadixHexadecimal, 3, 0, true, "7"},
        {"10010001101000101", RadixHexadecimal, 0, 2, true, "1_23_45"},
        {"1001000110100010101100111100010011010", RadixHexadecimal, 0, 0, false, "123456789a"},
        // Octal: the same rules in groups of three.
        {"111000101", RadixOctal, 0, 0, true, "705"},
        {"ZZZ", RadixOctal, 0, 0, false, "z"},
        {"Z01", RadixOctal, 0, 0, true, "X"},
        {"11", RadixOctal, 6, 0, true, "03"},
        {"111111", RadixOctal, 0, 1, true, "7_7"},
        // Decimal: "#" for any unknown bit; the low width bits; plain decimal signs.
        {"1010", RadixDecimal, 0, 0, true, "10"},
        {"1010", RadixDecimal, 2, 0, true, "2"},
        {"1010", RadixDecimal, 10, 3, true, "10"},
        {"1X", RadixDecimal, 0, 0, true, "#"},
        {"Z", RadixPlainDecimal, 0, 0, true, "#"},
        {"0", RadixPlainDecimal, 0, 0, true, "0"},
        {"1111111111111111111111111111111111111111111111111111111111111111", RadixDecimal, 0, 0,
         true, "18446744073709551615"},
        {"1", RadixNone, 0, 0, true, "<null>"},
        {"1", static_cast<Radix>(6), 0, 0, true, "<null>"},
    };
    for (const TextCase& c : cases) {
        SCOPED_TRACE(testing::Message() << c.bits << " radix " << c.radix << " width " << c.width
                                        << " group " << c.group << " upper " << c.upper);
        EXPECT_EQ(take(bin(c.bits).asNumericString(c.radix, c.width, c.group, c.upper)), c.text);
    }
}

TEST(BigIntText, OnlyPlainDecimalShowsTheSign) {
    const BigInt minusFive(-5L); // sign '1', bits 011
    EXPECT_EQ(take(minusFive.asNumericString(RadixDecimal, 0, 0, true)), "3");
    EXPECT_EQ(take(minusFive.asNumericString(RadixPlainDecimal, 0, 0, true)), "-5");
    EXPECT_EQ(take(minusFive.BSLToDecimal(2, 0, true)), "-1") << "low bits of the magnitude";
    EXPECT_EQ(take(BigInt(LONG_MIN).asNumericString(RadixPlainDecimal, 0, 0, true)),
              std::to_string(LONG_MIN));
    EXPECT_EQ(take(BigInt(LONG_MAX).asNumericString(RadixPlainDecimal, 0, 0, true)),
              std::to_string(LONG_MAX));
    EXPECT_EQ(take(BigInt("-1", RadixDecimal, 70).BSLToHexadecimal(0, 4, false)),
              "3f_ffff_ffff_ffff_ffff");
}

TEST(BigIntText, AValueWithoutWidthConvertsToNull) {
    const BigInt empty;
    EXPECT_EQ(empty.BSLToBinary(4, 0, true), nullptr);
    EXPECT_EQ(empty.BSLToOctal(4, 0, true), nullptr);
    EXPECT_EQ(empty.BSLToHexadecimal(4, 0, true), nullptr);
    EXPECT_EQ(empty.BSLToDecimal(4, 0, true), nullptr);
}

TEST(BigIntText, WideDecimalValues) {
    const std::string twoTo200 = "1" + std::string(200, '0');
    EXPECT_EQ(take(bin(twoTo200.c_str()).BSLToDecimal(0, 0, false)),
              "1606938044258990275541962092341162602522202993782792835301376");
    EXPECT_EQ(take(BigInt("1606938044258990275541962092341162602522202993782792835301376",
                          RadixDecimal, 0)
                       .BSLToHexadecimal(0, 0, true)),
              "1" + std::string(50, '0'));
}

// The conversion as one doubling step per bit over a decimal digit string: slow, but plainly
// right, which makes it the reference for the fast conversion.
std::string decimalByDoubling(const std::string& bits) {
    std::string digits = "0";
    for (char bit : bits) {
        int carry = bit == '1';
        for (auto d = digits.rbegin(); d != digits.rend(); ++d) {
            const int value = (*d - '0') * 2 + carry;
            *d = static_cast<char>('0' + value % 10);
            carry = value / 10;
        }
        if (carry)
            digits.insert(digits.begin(), '1');
    }
    return digits;
}

// Random values of widths 1..1000 through decimal and hexadecimal text and back.
TEST(BigIntText, DecimalAndHexadecimalRoundTripAtEveryWidth) {
    std::mt19937_64 random(17);
    for (unsigned width = 1; width <= 1000; width += (width < 140 ? 1 : 37)) {
        const std::string bits = randomBits(random, width, "01");
        const BigInt value = bin(bits.c_str());
        const std::string decimal = take(value.BSLToDecimal(0, 0, false));
        ASSERT_EQ(decimal, decimalByDoubling(bits)) << width;
        EXPECT_EQ(BigInt(decimal.c_str(), RadixDecimal, width).bsl() + 1, bits) << width;
        const std::string hex = take(value.BSLToHexadecimal(0, 0, true));
        EXPECT_EQ(BigInt(hex.c_str(), RadixHexadecimal, width).bsl() + 1, bits) << width;
        const std::string octal = take(value.BSLToOctal(0, 0, true));
        EXPECT_EQ(BigInt(octal.c_str(), RadixOctal, width).bsl() + 1, bits) << width;
    }
}

} // namespace
