#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"

#include <gtest/gtest.h>

#include <cctype>
#include <random>
#include <string>
#include <tuple>

namespace {

using namespace bigint_test;

// Binary writes X and Z in the chosen case and the fill character as stored; hexadecimal and
// octal write X unless every bit of the group is Z, and fill digits beyond the value; decimal
// writes "#" for any unknown bit, and only plain decimal shows a sign. A value without width
// converts to null.
TEST(BigIntText, ConvertsWithFillGroupingCaseAndSign) {
    // The value as val() reads it; the radix as a letter, upper case for upper-case digits: b,
    // o, h, d (decimal), p (plain decimal), - (none), 6 (not a radix).
    // clang-format off
    const std::tuple<const char*, char, unsigned, unsigned, const char*> cases[] = {
        {"10xz", 'B', 0, 0, "10XZ"},          {"10xz", 'b', 0, 0, "10xz"},
        {"10", 'B', 6, 0, "000010"},          {"X1", 'b', 4, 0, "XXx1"},
        {"Z1", 'B', 3, 0, "ZZ1"},             {"1101", 'B', 2, 0, "01"},
        {"110101", 'B', 0, 4, "11_0101"},     {"110101", 'B', 0, 2, "11_01_01"},
        {"110101", 'B', 0, 1, "1_1_0_1_0_1"}, {"110101", 'B', 0, 6, "110101"},
        {"110101", 'B', 0, 9, "110101"},      {"11111111", 'H', 0, 0, "FF"},
        {"11111111", 'h', 0, 0, "ff"},        {"1010ZZZZ", 'h', 0, 0, "az"},
        {"ZZZZXXXX", 'H', 0, 0, "ZX"},        {"XZZZ", 'H', 0, 0, "X"},
        {"ZZZ0", 'h', 0, 0, "x"},             {"0X10", 'H', 0, 0, "X"},
        {"1111", 'H', 12, 0, "00F"},          {"X0000", 'h', 12, 0, "Xx0"},
        {"Z0000", 'h', 8, 0, "z0"},           {"1111", 'H', 3, 0, "7"},
        {"10010001101000101", 'H', 0, 2, "1_23_45"},
        {"d-1/70", 'h', 0, 4, "3f_ffff_ffff_ffff_ffff"},
        {"ZZZ", 'o', 0, 0, "z"},              {"Z01", 'O', 0, 0, "X"},
        {"11", 'O', 6, 0, "03"},              {"111111", 'O', 0, 1, "7_7"},
        {"1010", 'D', 2, 0, "2"},             {"1010", 'D', 10, 3, "10"},
        {"1X", 'D', 0, 0, "#"},               {"Z", 'P', 0, 0, "#"},
        {"0", 'P', 0, 0, "0"},                {"d-5", 'D', 0, 0, "3"},
        {"d-5", 'P', 0, 0, "-5"},             {"d-5", 'P', 2, 0, "-1"},
        {"d-9223372036854775808", 'P', 0, 0, "-9223372036854775808"},
        {"1", '-', 0, 0, "<null>"},           {"1", '6', 0, 0, "<null>"},
        {"", 'B', 4, 0, "<null>"},            {"", 'O', 4, 0, "<null>"},
        {"", 'H', 4, 0, "<null>"},            {"", 'P', 4, 0, "<null>"}};
    // clang-format on
    const std::string letters = "-bdhop6"; // in the order of the enumeration
    for (const auto& [value, letter, width, group, text] : cases) {
        const auto radix = static_cast<Radix>(letters.find(std::tolower(letter)));
        const bool upper = std::isupper(letter) || letter == '-' || letter == '6';
        EXPECT_EQ(take(val(value).asNumericString(radix, width, group, upper)), text)
            << value << " " << letter << " width " << width << " group " << group;
    }
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
