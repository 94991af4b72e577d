#include "hdl/HDLConstant.h"

#include "BigIntTestSupport.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>

namespace {

using bigint_test::cat;
using Parser = char* (*)(const char*, HDLanguage&, Radix&, char&, unsigned&, unsigned&);

// A parser's outputs in one line, "digits language radix upperCase size bits" ("<null>" when
// it returns null), the outputs starting from the values given.
std::string parsed(Parser parser, const char* text, HDLanguage language = HDLNone,
                   unsigned bits = 0, Radix radix = RadixNone, char upperCase = 0,
                   unsigned size = 0) {
    const std::unique_ptr<char[]> digits(parser(text, language, radix, upperCase, size, bits));
    std::string line = digits ? digits.get() : "<null>";
    for (unsigned n : {unsigned(language), unsigned(radix), unsigned(upperCase), size, bits})
        line.append(" ").append(std::to_string(n));
    return line;
}

TEST(ParseHDLConstant, RecognisesPlainVerilogAndVHDLConstants) {
    // clang-format off
    const std::pair<const char*, const char*> cases[] = {
        {"8'hFF", "FF 1 3 0 8 8"},           {"'B10xz", "10xz 1 1 1 0 4"},
        {"4 'b1010", "1010 1 1 0 4 4"},      {"12", "12 1 5 0 0 4"},
        {"-3", "-3 1 5 0 0 2"},              {" \t0", "0 1 5 0 0 1"},
        {"X\"1F\"", "1F 2 3 1 0 8"},         {"b \"0101\"", "0101 2 1 0 0 4"},
        {"'hx_F", "x_F 1 3 0 0 8"},          {"16'D1_000", "1_000 1 2 1 16 10"},
        {"3'o17", "17 1 4 0 3 6"},           {"'O", " 1 4 1 0 0"},
        {"O\"\"", " 2 4 1 0 0"},             {"o\"7z\"", "7z 2 4 0 0 6"},
        {"\"255\"", "255 2 2 1 0 8"},        {"\"0101\"", "0101 2 2 1 0 7"},
        {"8x\"ff\"", "ff 2 3 0 8 8"},        {"'b1_", "1_ 1 1 0 0 1"},
        {"99999999999'b1", "1 1 1 0 2147483647 1"}};
    // clang-format on
    for (const auto& [text, summary] : cases)
        EXPECT_EQ(parsed(parseHDLConstant, text), summary) << text;
    EXPECT_EQ(parsed(parseVerilogConstant, "  2 'h1z"), "1z 1 3 0 2 8");
    EXPECT_EQ(parsed(parseVHDLConstant, " 4 B\t\"1_0\""), "1_0 2 1 1 4 2");
    // A plain decimal keeps a caller's VHDL, and its count is added to bits, not assigned.
    EXPECT_EQ(parsed(parseHDLConstant, "8", HDLVHDL, 5), "8 2 5 0 0 9");
}

// parseHDLConstant clears all five outputs when it fails. The other two clear the language
// and what they read before the failure; the rest stays as the caller set it.
TEST(ParseHDLConstant, RejectsMalformedTextAndClearsTheOutputs) {
    for (const char* text :
         {"4'b 1010", "b \"0101\" ", "B\"01\"x", "'sb1", "8'", "'b", "'b_1", "'b1__0", "'d1x",
          "\"1F\"", "X\"1F", "H\"1F\"", "", "8'q1", "8'hFF ", static_cast<const char*>(nullptr)})
        EXPECT_EQ(parsed(parseHDLConstant, text, HDLVHDL, 9, RadixOctal, 1, 3), "<null> 0 0 0 0 0")
            << (text ? text : "null");
    const std::tuple<Parser, const char*, const char*> cases[] = {
        {parseVerilogConstant, "12", "<null> 0 0 0 12 0"},
        {parseVerilogConstant, "4'b102", "<null> 0 1 0 4 0"},
        {parseVerilogConstant, nullptr, "<null> 0 0 0 0 0"},
        {parseVHDLConstant, "8'hFF", "<null> 0 0 0 8 0"},
        {parseVHDLConstant, "X\"1\"\"", "<null> 0 3 0 0 0"}};
    for (const auto& [parser, text, summary] : cases)
        EXPECT_EQ(parsed(parser, text, HDLVHDL, 9, RadixOctal, 1, 3), summary)
            << (text ? text : "null");
}

// Hexadecimal digits need allowXZ for X, Z and underscores. A check adds its count to bits
// and leaves bits alone when it fails; null is each check's empty case.
TEST(DigitPredicates, CheckDigitsUnderscoresAndCountBits) {
    using Check = bool (*)(const char*, unsigned&);
    const Check checks[] = {
        isBinary, isOctal, isDecimal,
        [](const char* digits, unsigned& bits) { return isHexadecimal(digits, bits, false); },
        [](const char* digits, unsigned& bits) { return isHexadecimal(digits, bits, true); }};
    struct Case {
        const char* digits;
        unsigned bits[5]; // binary, octal, decimal, hexadecimal, hexadecimal with X and Z
        const char* accepted;
    };
    // clang-format off
    const Case cases[] = {
        {"0", {1, 3, 1, 4, 4}, "11111"},      {"5", {0, 3, 3, 4, 4}, "01111"},
        {"8", {0, 0, 4, 4, 4}, "00111"},      {"1010", {4, 12, 10, 16, 16}, "11111"},
        {"10xz", {4, 12, 0, 0, 16}, "11001"}, {"XZ", {2, 6, 0, 0, 8}, "11001"},
        {"x", {1, 3, 0, 0, 4}, "11001"},      {"1_0_", {2, 6, 4, 0, 8}, "11101"},
        {"x_F", {0, 0, 0, 0, 8}, "00001"},    {"_1", {0, 0, 0, 0, 0}, "00000"},
        {"1__0", {0, 0, 0, 0, 0}, "00000"},   {"-12", {0, 0, 4, 0, 0}, "00100"},
        {"1-2", {0, 0, 0, 0, 0}, "00000"},    {"-", {0, 0, 0, 0, 0}, "00000"},
        {"-_1", {0, 0, 0, 0, 0}, "00000"},    {"fF", {0, 0, 0, 8, 8}, "00011"},
        {"2", {0, 3, 2, 4, 4}, "01111"},      {"18446744073709551616", {0, 0, 65, 80, 80}, "00111"},
        {"", {0, 0, 0, 0, 0}, "01000"},       {" 1", {0, 0, 0, 0, 0}, "00000"},
        {nullptr, {0, 0, 0, 0, 0}, "01000"}};
    // clang-format on
    for (const Case& c : cases)
        for (int i = 0; i < 5; ++i) {
            unsigned bits = 10;
            EXPECT_EQ(checks[i](c.digits, bits), c.accepted[i] == '1') << c.digits << " " << i;
            EXPECT_EQ(bits, 10 + c.bits[i]) << c.digits << " " << i;
        }
}

// What the round trip below leaves out: a radix outside the enumeration, no language, no
// digits, and a long digit string with the largest size.
TEST(FormatHDLString, HandlesAnUnknownRadixNoLanguageNoDigitsAndTheLargestSize) {
    EXPECT_EQ(radixCharacter(static_cast<Radix>(9), HDLVerilog, 0), '\0');
    EXPECT_STREQ(formatHDLString("1010", HDLNone, 'b', 0), "'b1010");
    EXPECT_EQ(formatHDLString(nullptr, HDLVerilog, 'h', 0), nullptr);
    const std::string wide(5000, '1');
    EXPECT_EQ(std::string(formatHDLString(wide.c_str(), HDLVerilog, 'b', 4294967295u)),
              "4294967295'b" + wide);
}

// Every radix, language and upper-case flag goes out through radixCharacter and
// formatHDLString and comes back through parseHDLConstant unchanged, except where the notation
// fixes the flag (a plain decimal reads lower case, a VHDL decimal upper case).
TEST(FormatHDLString, RoundTripsThroughTheParserForEveryCombination) {
    // clang-format off
    const std::pair<Radix, const char*> samples[] = {
        {RadixBinary, "10xz"}, {RadixDecimal, "1234"}, {RadixHexadecimal, "1aZ"},
        {RadixOctal, "17x"}, {RadixPlainDecimal, "99"}};
    // clang-format on
    for (const auto& [radix, digits] : samples)
        for (HDLanguage language : {HDLVerilog, HDLVHDL})
            for (char upper : {0, 1})
                for (unsigned size : {0u, 12u}) {
                    const bool plain = radix == RadixPlainDecimal;
                    const char* text = formatHDLString(
                        digits, language, radixCharacter(radix, language, upper), size);
                    // Only a caller's language keeps a plain decimal VHDL.
                    const std::string line =
                        parsed(parseHDLConstant, text, plain ? language : HDLNone);
                    const unsigned flag = plain                                          ? 0
                                          : radix == RadixDecimal && language == HDLVHDL ? 1
                                                                                         : upper;
                    const std::string expected =
                        cat(digits, " ", std::to_string(language), " ", std::to_string(radix), " ",
                            std::to_string(flag), " ", std::to_string(plain ? 0 : size));
                    EXPECT_EQ(line.substr(0, line.rfind(' ')), expected) << text;
                }
}

} // namespace
