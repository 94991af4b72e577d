#include "hdl/HDLConstant.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

struct Parsed {
    std::unique_ptr<char[]> digits;
    HDLanguage language = HDLNone;
    Radix radix = RadixNone;
    char upperCase = 0;
    unsigned size = 0;
    unsigned bits = 0;
};

using Parser = char* (*)(const char*, HDLanguage&, Radix&, char&, unsigned&, unsigned&);

Parsed parse(Parser parser, const char* text, HDLanguage language = HDLNone) {
    Parsed p;
    p.language = language;
    p.digits.reset(parser(text, p.language, p.radix, p.upperCase, p.size, p.bits));
    return p;
}

struct ParseCase {
    const char* text;
    const char* digits; // null: rejected
    HDLanguage language;
    Radix radix;
    char upperCase;
    unsigned size;
    unsigned bits;
};

void expectParsed(const Parsed& p, const ParseCase& c) {
    SCOPED_TRACE(c.text);
    if (c.digits == nullptr) {
        EXPECT_EQ(p.digits, nullptr);
        EXPECT_EQ(p.language, HDLNone);
        return;
    }
    ASSERT_NE(p.digits, nullptr);
    EXPECT_STREQ(p.digits.get(), c.digits);
    EXPECT_EQ(p.language, c.language);
    EXPECT_EQ(p.radix, c.radix);
    EXPECT_EQ(p.upperCase, c.upperCase);
    EXPECT_EQ(p.size, c.size);
    EXPECT_EQ(p.bits, c.bits);
}

TEST(ParseHDLConstant, RecognisesPlainVerilogAndVHDLConstants) {
    const ParseCase cases[] = {
        {"8'hFF", "FF", HDLVerilog, RadixHexadecimal, 0, 8, 8},
        {"'B10xz", "10xz", HDLVerilog, RadixBinary, 1, 0, 4},
        {"4 'b1010", "1010", HDLVerilog, RadixBinary, 0, 4, 4},
        {"4'b 1010", nullptr, HDLNone, RadixNone, 0, 0, 0},
        {"12", "12", HDLVerilog, RadixPlainDecimal, 0, 0, 4},
        {"-3", "-3", HDLVerilog, RadixPlainDecimal, 0, 0, 2},
        {" \t0", "0", HDLVerilog, RadixPlainDecimal, 0, 0, 1},
        {"X\"1F\"", "1F", HDLVHDL, RadixHexadecimal, 1, 0, 8},
        {"b \"0101\"", "0101", HDLVHDL, RadixBinary, 0, 0, 4},
        {"b \"0101\" ", nullptr, HDLNone, RadixNone, 0, 0, 0},
        {"B\"01\"x", nullptr, HDLNone, RadixNone, 0, 0, 0},
        {"'hx_F", "x_F", HDLVerilog, RadixHexadecimal, 0, 0, 8},
        {"16'D1_000", "1_000", HDLVerilog, RadixDecimal, 1, 16, 10},
        {"3'o17", "17", HDLVerilog, RadixOctal, 0, 3, 6},
        {"'O", "", HDLVerilog, RadixOctal, 1, 0, 0},
        {"O\"\"", "", HDLVHDL, RadixOctal, 1, 0, 0},
        {"o\"7z\"", "7z", HDLVHDL, RadixOctal, 0, 0, 6},
        {"\"255\"", "255", HDLVHDL, RadixDecimal, 1, 0, 8},
        {"\"0101\"", "0101", HDLVHDL, RadixDecimal, 1, 0, 7},
        {"8x\"ff\"", "ff", HDLVHDL, RadixHexadecimal, 0, 8, 8},
        {"'sb1", nullptr, HDLNone, RadixNone, 0, 0, 0},
        {"8'", nullptr, HDLNone, RadixNone, 0, 0, 0},
        {"'b", nullptr, HDLNone, RadixNone, 0, 0, 0},
        {"'b_1", nullptr, HDLNone, RadixNone, 0, 0, 0},
        {"'b1__0", nullptr, HDLNone, RadixNone, 0, 0, 0},
        {"'b1_", "1_", HDLVerilog, RadixBinary, 0, 0, 1},
        {"'d1x", nullptr, HDLNone, RadixNone, 0, 0, 0},
        {"\"1F\"", nullptr, HDLNone, RadixNone, 0, 0, 0},
        {"X\"1F", nullptr, HDLNone, RadixNone, 0, 0, 0},
        {"H\"1F\"", nullptr, HDLNone, RadixNone, 0, 0, 0},
        {"", nullptr, HDLNone, RadixNone, 0, 0, 0},
        {"99999999999'b1", "1", HDLVerilog, RadixBinary, 0, 2147483647, 1},
    };
    for (const ParseCase& c : cases)
        expectParsed(parse(parseHDLConstant, c.text), c);
}

TEST(ParseHDLConstant, NullTextClearsEveryOutput) {
    Parsed p;
    p.language = HDLVHDL;
    p.radix = RadixOctal;
    p.upperCase = 1;
    p.size = 3;
    p.bits = 9;
    p.digits.reset(parseHDLConstant(nullptr, p.language, p.radix, p.upperCase, p.size, p.bits));
    EXPECT_EQ(p.digits, nullptr);
    EXPECT_EQ(p.language, HDLNone);
    EXPECT_EQ(p.radix, RadixNone);
    EXPECT_EQ(p.upperCase, 0);
    EXPECT_EQ(p.size, 0u);
    EXPECT_EQ(p.bits, 0u);
}

TEST(ParseHDLConstant, PlainDecimalKeepsACallersVHDLAndAddsToBits) {
    Parsed p;
    p.language = HDLVHDL;
    p.bits = 5;
    p.digits.reset(parseHDLConstant("8", p.language, p.radix, p.upperCase, p.size, p.bits));
    ASSERT_NE(p.digits, nullptr);
    EXPECT_EQ(p.language, HDLVHDL);
    EXPECT_EQ(p.radix, RadixPlainDecimal);
    EXPECT_EQ(p.bits, 9u) << "the count is added, not assigned";
}

TEST(ParseHDLConstant, FailureClearsEveryOutput) {
    Parsed p = parse(parseHDLConstant, "8'q1", HDLVHDL);
    EXPECT_EQ(p.digits, nullptr);
    EXPECT_EQ(p.language, HDLNone);
    EXPECT_EQ(p.radix, RadixNone);
    EXPECT_EQ(p.size, 0u);
}

TEST(ParseVerilogConstant, AcceptsOnlyTheVerilogForm) {
    expectParsed(parse(parseVerilogConstant, "  2 'h1z"),
                 {"", "1z", HDLVerilog, RadixHexadecimal, 0, 2, 8});
    EXPECT_EQ(parse(parseVerilogConstant, "12").digits, nullptr);
    EXPECT_EQ(parse(parseVerilogConstant, "X\"1F\"").digits, nullptr);
    EXPECT_EQ(parse(parseVerilogConstant, nullptr).digits, nullptr);
    Parsed failed = parse(parseVerilogConstant, "4'b102", HDLVHDL);
    EXPECT_EQ(failed.language, HDLNone);
}

TEST(ParseVHDLConstant, AcceptsOnlyTheVHDLForm) {
    expectParsed(parse(parseVHDLConstant, " 4 B\t\"1_0\""),
                 {"", "1_0", HDLVHDL, RadixBinary, 1, 4, 2});
    EXPECT_EQ(parse(parseVHDLConstant, "8'hFF").digits, nullptr);
    EXPECT_EQ(parse(parseVHDLConstant, "\"1\"\"").digits, nullptr);
    EXPECT_EQ(parse(parseVHDLConstant, nullptr).digits, nullptr);
}

struct PredicateCase {
    const char* digits;
    bool binary, octal, decimal, hexadecimal, hexadecimalXZ;
    unsigned binaryBits, octalBits, decimalBits, hexadecimalBits;
};

TEST(DigitPredicates, CheckDigitsUnderscoresAndCountBits) {
    const PredicateCase cases[] = {
        // digits      bin    oct    dec    hex    hexXZ  bits: b   o   d   h
        {"0", true, true, true, true, true, 1, 3, 1, 4},
        {"5", false, true, true, true, true, 0, 3, 3, 4},
        {"8", false, false, true, true, true, 0, 0, 4, 4},
        {"1010", true, true, true, true, true, 4, 12, 10, 16},
        {"10xz", true, true, false, false, true, 4, 12, 0, 16},
        {"XZ", true, true, false, false, true, 2, 6, 0, 8},
        {"1_0_", true, true, true, false, true, 2, 6, 4, 8},
        {"_1", false, false, false, false, false, 0, 0, 0, 0},
        {"1__0", false, false, false, false, false, 0, 0, 0, 0},
        {"-12", false, false, true, false, false, 0, 0, 4, 0},
        {"1-2", false, false, false, false, false, 0, 0, 0, 0},
        {"-", false, false, false, false, false, 0, 0, 0, 0},
        {"-_1", false, false, false, false, false, 0, 0, 0, 0},
        {"fF", false, false, false, true, true, 0, 0, 0, 8},
        {"2", false, true, true, true, true, 0, 3, 2, 4},
        {"18446744073709551616", false, false, true, true, true, 0, 0, 65, 80},
        {"", false, true, false, false, false, 0, 0, 0, 0},
        {" 1", false, false, false, false, false, 0, 0, 0, 0},
    };
    for (const PredicateCase& c : cases) {
        SCOPED_TRACE(c.digits);
        unsigned bits = 0;
        EXPECT_EQ(isBinary(c.digits, bits), c.binary);
        EXPECT_EQ(bits, c.binaryBits);
        bits = 0;
        EXPECT_EQ(isOctal(c.digits, bits), c.octal);
        EXPECT_EQ(bits, c.octalBits);
        bits = 0;
        EXPECT_EQ(isDecimal(c.digits, bits), c.decimal);
        EXPECT_EQ(bits, c.decimalBits);
        bits = 0;
        EXPECT_EQ(isHexadecimal(c.digits, bits, false), c.hexadecimal);
        EXPECT_EQ(bits, c.hexadecimal ? c.hexadecimalBits : 0);
        bits = 0;
        EXPECT_EQ(isHexadecimal(c.digits, bits, true), c.hexadecimalXZ);
        EXPECT_EQ(bits, c.hexadecimalXZ ? c.hexadecimalBits : 0);
    }
}

TEST(DigitPredicates, AddToBitsAndTreatNullAsTheirEmptyCase) {
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

TEST(DigitPredicates, HexadecimalNeedsAllowXZForXZAndUnderscores) {
    unsigned bits = 0;
    EXPECT_FALSE(isHexadecimal("x", bits, false));
    EXPECT_FALSE(isHexadecimal("F_F", bits, false));
    EXPECT_TRUE(isHexadecimal("x_F", bits, true));
    EXPECT_EQ(bits, 8u);
}

TEST(RadixCharacter, GivesTheLetterOfEachNotation) {
    EXPECT_EQ(radixCharacter(RadixHexadecimal, HDLVerilog, 0), 'h');
    EXPECT_EQ(radixCharacter(RadixHexadecimal, HDLVHDL, 1), 'X');
    EXPECT_EQ(radixCharacter(RadixBinary, HDLNone, 1), 'B');
    EXPECT_EQ(radixCharacter(RadixOctal, HDLVHDL, 0), 'o');
    EXPECT_EQ(radixCharacter(RadixDecimal, HDLVerilog, 1), 'D');
    EXPECT_EQ(radixCharacter(RadixPlainDecimal, HDLVerilog, 1), '\0');
    EXPECT_EQ(radixCharacter(RadixNone, HDLVerilog, 0), '\0');
    EXPECT_EQ(radixCharacter(static_cast<Radix>(9), HDLVerilog, 0), '\0');
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
    struct Digits {
        Radix radix;
        const char* digits;
    };
    const Digits samples[] = {{RadixBinary, "10xz"},
                              {RadixDecimal, "1234"},
                              {RadixHexadecimal, "1aZ"},
                              {RadixOctal, "17x"},
                              {RadixPlainDecimal, "99"}};
    for (const Digits& sample : samples)
        for (HDLanguage language : {HDLVerilog, HDLVHDL})
            for (char upper : {0, 1})
                for (unsigned size : {0u, 12u}) {
                    SCOPED_TRACE(testing::Message()
                                 << "radix " << sample.radix << " language " << language
                                 << " upper " << int(upper) << " size " << size);
                    const char letter = radixCharacter(sample.radix, language, upper);
                    const char* text = formatHDLString(sample.digits, language, letter, size);
                    // Only a caller's language keeps a plain decimal VHDL.
                    const HDLanguage given = sample.radix == RadixPlainDecimal ? language : HDLNone;
                    Parsed p = parse(parseHDLConstant, text, given);
                    ASSERT_NE(p.digits, nullptr) << text;
                    EXPECT_STREQ(p.digits.get(), sample.digits);
                    EXPECT_EQ(p.radix, sample.radix);
                    EXPECT_EQ(p.language, language);
                    char expectedUpper = upper;
                    if (sample.radix == RadixPlainDecimal)
                        expectedUpper = 0;
                    else if (sample.radix == RadixDecimal && language == HDLVHDL)
                        expectedUpper = 1;
                    EXPECT_EQ(p.upperCase, expectedUpper);
                    if (sample.radix != RadixPlainDecimal) {
                        EXPECT_EQ(p.size, size);
                    }
                }
}

} // namespace
