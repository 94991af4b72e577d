#include "hdl/HDLConstant.h"
#include "hdl/BigInt.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Parser = char* (*)(const char*, HDLanguage&, Radix&, char&, unsigned&, unsigned&);

// The outputs of one parser call that starts from the given values.
struct Parsed {
    Parsed(Parser parser, const char* text, HDLanguage l = HDLNone, Radix r = RadixNone, char u = 0,
           unsigned s = 0, unsigned b = 0)
        : language(l), radix(r), upperCase(u), size(s), bits(b),
          digits(parser(text, language, radix, upperCase, size, bits)) {}
    HDLanguage language;
    Radix radix;
    char upperCase;
    unsigned size, bits;
    std::unique_ptr<char[]> digits;
};

struct ParseCase {
    const char* text;
    const char* digits;
    HDLanguage language;
    Radix radix;
    char upperCase;
    unsigned size, bits;
};

void expectParsed(const Parsed& p, const ParseCase& c) {
    ASSERT_NE(p.digits, nullptr) << c.text;
    EXPECT_STREQ(p.digits.get(), c.digits) << c.text;
    EXPECT_EQ(p.language, c.language) << c.text;
    EXPECT_EQ(p.radix, c.radix) << c.text;
    EXPECT_EQ(p.upperCase, c.upperCase) << c.text;
    EXPECT_EQ(p.size, c.size) << c.text;
    EXPECT_EQ(p.bits, c.bits) << c.text;
}

TEST(ParseHDLConstant, RecognisesPlainVerilogAndVHDLConstants) {
    const ParseCase cases[] = {{"8'hFF", "FF", HDLVerilog, RadixHexadecimal, 0, 8, 8},
                               {"'B10xz", "10xz", HDLVerilog, RadixBinary, 1, 0, 4},
                               {"4 'b1010", "1010", HDLVerilog, RadixBinary, 0, 4, 4},
                               {"12", "12", HDLVerilog, RadixPlainDecimal, 0, 0, 4},
                               {"-3", "-3", HDLVerilog, RadixPlainDecimal, 0, 0, 2},
                               {" \t0", "0", HDLVerilog, RadixPlainDecimal, 0, 0, 1},
                               {"X\"1F\"", "1F", HDLVHDL, RadixHexadecimal, 1, 0, 8},
                               {"b \"0101\"", "0101", HDLVHDL, RadixBinary, 0, 0, 4},
                               {"'hx_F", "x_F", HDLVerilog, RadixHexadecimal, 0, 0, 8},
                               {"16'D1_000", "1_000", HDLVerilog, RadixDecimal, 1, 16, 10},
                               {"3'o17", "17", HDLVerilog, RadixOctal, 0, 3, 6},
                               {"'O", "", HDLVerilog, RadixOctal, 1, 0, 0},
                               {"O\"\"", "", HDLVHDL, RadixOctal, 1, 0, 0},
                               {"o\"7z\"", "7z", HDLVHDL, RadixOctal, 0, 0, 6},
                               {"\"255\"", "255", HDLVHDL, RadixDecimal, 1, 0, 8},
                               {"\"0101\"", "0101", HDLVHDL, RadixDecimal, 1, 0, 7},
                               {"8x\"ff\"", "ff", HDLVHDL, RadixHexadecimal, 0, 8, 8},
                               {"'b1_", "1_", HDLVerilog, RadixBinary, 0, 0, 1},
                               {"99999999999'b1", "1", HDLVerilog, RadixBinary, 0, 2147483647, 1}};
    for (const ParseCase& c : cases)
        expectParsed(Parsed(parseHDLConstant, c.text), c);
    expectParsed(Parsed(parseVerilogConstant, "  2 'h1z"),
                 {"", "1z", HDLVerilog, RadixHexadecimal, 0, 2, 8});
    expectParsed(Parsed(parseVHDLConstant, " 4 B\t\"1_0\""),
                 {"", "1_0", HDLVHDL, RadixBinary, 1, 4, 2});
    // A plain decimal keeps a caller's VHDL, and its count is added to bits, not assigned.
    expectParsed(Parsed(parseHDLConstant, "8", HDLVHDL, RadixNone, 0, 0, 5),
                 {"", "8", HDLVHDL, RadixPlainDecimal, 0, 0, 9});
}

// A failure clears the language a caller set; parseHDLConstant clears every other output too.
TEST(ParseHDLConstant, RejectsMalformedTextAndClearsTheOutputs) {
    const std::pair<Parser, std::vector<const char*>> cases[] = {
        {parseHDLConstant,
         {"4'b 1010", "b \"0101\" ", "B\"01\"x", "'sb1", "8'", "'b", "'b_1", "'b1__0", "'d1x",
          "\"1F\"", "X\"1F", "H\"1F\"", "", "8'q1", nullptr}},
        {parseVerilogConstant, {"12", "X\"1F\"", "4'b102", nullptr}},
        {parseVHDLConstant, {"8'hFF", "\"1\"\"", nullptr}}};
    for (const auto& [parser, texts] : cases)
        for (const char* text : texts) {
            const Parsed p(parser, text, HDLVHDL, RadixOctal, 1, 3, 9);
            SCOPED_TRACE(text ? text : "null");
            EXPECT_EQ(p.digits, nullptr);
            EXPECT_EQ(p.language, HDLNone);
            if (parser == parseHDLConstant) {
                EXPECT_EQ(p.radix, RadixNone);
                EXPECT_EQ(p.upperCase, 0);
                EXPECT_EQ(p.size, 0u);
                EXPECT_EQ(p.bits, 0u);
            }
        }
}

// What the application does with a constant a user typed: parse it, then build the value
// from the digits, the radix and the declared size.
TEST(ParseHDLConstant, ResultsBuildTheBigIntOfTheConstant) {
    const std::pair<const char*, const char*> cases[] = {
        {"8'hFF", "011111111"}, {"4'bx", "0XXXX"},
        {"6'o7z", "0111ZZZ"},   {"'h1_0", "000010000"},
        {"-3", "101"},          {"X\"1F\"", "000011111"},
        {"3'd12", "0100"},      {"\"300\"", "0100101100"},
        {"5'b1", "000001"}};
    for (const auto& [text, representation] : cases) {
        const Parsed p(parseHDLConstant, text);
        ASSERT_NE(p.digits, nullptr) << text;
        EXPECT_STREQ(BigInt(p.digits.get(), p.radix, p.size).bsl(), representation) << text;
    }
}

// Hexadecimal digits need allowXZ for X, Z and underscores; the counts are in bits.
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
        {"", {0, 0, 0, 0, 0}, "01000"},       {" 1", {0, 0, 0, 0, 0}, "00000"}};
    // clang-format on
    for (const Case& c : cases)
        for (int i = 0; i < 5; ++i) {
            unsigned bits = 0;
            EXPECT_EQ(checks[i](c.digits, bits), c.accepted[i] == '1') << c.digits << " " << i;
            EXPECT_EQ(bits, c.bits[i]) << c.digits << " " << i;
        }
    // The counts add to bits; null is each check's empty case.
    unsigned bits = 10;
    EXPECT_TRUE(isBinary("11", bits));
    EXPECT_TRUE(isOctal("7", bits));
    EXPECT_TRUE(isDecimal("255", bits));
    EXPECT_TRUE(isHexadecimal("A", bits, false));
    EXPECT_EQ(bits, 10u + 2 + 3 + 8 + 4);
    EXPECT_FALSE(isBinary(nullptr, bits));
    EXPECT_TRUE(isOctal(nullptr, bits));
    EXPECT_FALSE(isDecimal(nullptr, bits));
    EXPECT_FALSE(isHexadecimal(nullptr, bits, true));
    EXPECT_EQ(bits, 27u);
}

TEST(RadixCharacter, GivesTheLetterOfEachNotation) {
    const std::tuple<Radix, HDLanguage, char, char> cases[] = {
        {RadixHexadecimal, HDLVerilog, 0, 'h'}, {RadixHexadecimal, HDLVHDL, 1, 'X'},
        {RadixBinary, HDLNone, 1, 'B'},         {RadixOctal, HDLVHDL, 0, 'o'},
        {RadixDecimal, HDLVerilog, 1, 'D'},     {RadixPlainDecimal, HDLVerilog, 1, '\0'},
        {RadixNone, HDLVerilog, 0, '\0'},       {static_cast<Radix>(9), HDLVerilog, 0, '\0'}};
    for (const auto& [radix, language, upper, letter] : cases)
        EXPECT_EQ(radixCharacter(radix, language, upper), letter) << radix << " " << language;
}

TEST(FormatHDLString, WritesEachNotation) {
    EXPECT_STREQ(formatHDLString("FF", HDLVerilog, 'h', 8), "8'hFF");
    EXPECT_STREQ(formatHDLString("1010", HDLNone, 'b', 0), "'b1010");
    EXPECT_STREQ(formatHDLString("FF", HDLVHDL, 'X', 8), "8X\"FF\"");
    EXPECT_STREQ(formatHDLString("12", HDLVHDL, 'D', 0), "\"12\"");
    EXPECT_STREQ(formatHDLString("12", HDLVHDL, '\0', 0), "12");
    EXPECT_EQ(formatHDLString(nullptr, HDLVerilog, 'h', 0), nullptr);
    const std::string wide(5000, '1');
    EXPECT_EQ(std::string(formatHDLString(wide.c_str(), HDLVerilog, 'b', 4294967295u)),
              "4294967295'b" + wide);
}

// Every radix, language and upper-case flag goes out through radixCharacter and
// formatHDLString and comes back through parseHDLConstant unchanged, except where the notation
// fixes the flag (a plain decimal reads lower case, a VHDL decimal upper case).
TEST(FormatHDLString, RoundTripsThroughTheParserForEveryCombination) {
    const std::pair<Radix, const char*> samples[] = {{RadixBinary, "10xz"},
                                                     {RadixDecimal, "1234"},
                                                     {RadixHexadecimal, "1aZ"},
                                                     {RadixOctal, "17x"},
                                                     {RadixPlainDecimal, "99"}};
    for (const auto& [radix, digits] : samples)
        for (HDLanguage language : {HDLVerilog, HDLVHDL})
            for (char upper : {0, 1})
                for (unsigned size : {0u, 12u}) {
                    const bool plain = radix == RadixPlainDecimal;
                    const char* text = formatHDLString(
                        digits, language, radixCharacter(radix, language, upper), size);
                    // Only a caller's language keeps a plain decimal VHDL.
                    const Parsed p(parseHDLConstant, text, plain ? language : HDLNone);
                    ASSERT_NE(p.digits, nullptr) << text;
                    EXPECT_STREQ(p.digits.get(), digits);
                    EXPECT_EQ(p.radix, radix) << text;
                    EXPECT_EQ(p.language, language) << text;
                    EXPECT_EQ(p.upperCase, plain                                          ? 0
                                           : radix == RadixDecimal && language == HDLVHDL ? 1
                                                                                          : upper)
                        << text;
                    if (!plain) {
                        EXPECT_EQ(p.size, size) << text;
                    }
                }
}

} // namespace
