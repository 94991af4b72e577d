#include "core/StringFunctions.h"
#include "core/TqObject.h"

#include <QString>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <tuple>

namespace {

// Takes a heap result over: its text, or "<null>".
std::string take(char* heap) {
    const std::unique_ptr<char[]> owned(heap);
    return heap ? heap : "<null>";
}

using InPlace = char* (*)(char*);
constexpr InPlace zeroFraction = static_cast<InPlace>(stripZeroFraction);

TEST(InPlaceFunctions, FollowTheirRulesAndTheQStringOverloadAgrees) {
    const std::tuple<InPlace, const char*, const char*> cases[] = {
        {[](char* b) { return stripLeading(b, " \t"); }, " \t abc ", "abc "},
        {[](char* b) { return stripLeading(b, " "); }, "   ", ""},
        {[](char* b) { return stripTrailing(b, " "); }, "abc  ", "abc"},
        {[](char* b) { return stripTrailing(b, " "); }, "    ", ""},
        {[](char* b) { return stripTrailing(b, "ab"); }, "abcab", "abc"},
        {zeroFraction, "1.500", "1.5"},
        {zeroFraction, "2.000", "2"},
        {zeroFraction, "3.", "3"},
        {zeroFraction, "100", "100"},
        {zeroFraction, "10.0", "10"},
        {zeroFraction, ".0", ""},
        {stripFraction, "12.75", "12"},
        {stripFraction, "12", "12"},
        {strToUpper, "aBc1_z", "ABC1_Z"},
        {strToLower, "aBc1_Z", "abc1_z"},
        // ASCII only: Latin-1 and UTF-8 bytes stay, whatever the locale.
        {strToUpper, "\xe9t\xc3\xa9", "\xe9T\xc3\xa9"},
        {strToLower, "\xc9T\xc3\x89", "\xc9t\xc3\x89"},
        {strReverse, "abc", "cba"},
        {strReverse, "", ""},
    };
    for (const auto& [run, input, expected] : cases) {
        std::string buffer(input);
        EXPECT_EQ(run(buffer.data()), buffer.data()) << input;
        EXPECT_STREQ(buffer.c_str(), expected) << input;
        if (run == zeroFraction) {
            QString text = QString::fromLatin1(input);
            EXPECT_EQ(*stripZeroFraction(&text), QString::fromLatin1(expected)) << input;
        }
    }
    char text[] = "abc";
    for (char* result :
         {stripLeading(nullptr, " "), stripLeading(text, nullptr), stripTrailing(nullptr, " "),
          stripTrailing(text, nullptr), stripFraction(nullptr), strReverse(nullptr)})
        EXPECT_EQ(result, nullptr);
    EXPECT_TRUE(strIncludes("abc", 'b'));
    EXPECT_FALSE(strIncludes("abc", 'd'));
    EXPECT_FALSE(strIncludes("abc", '\0')) << "the terminator never matches";
    EXPECT_FALSE(strIncludes(nullptr, 'a'));
}

TEST(HeapFunctions, ReturnFreshCopiesOrNull) {
    const std::pair<std::string, const char*> cases[] = {
        {take(mem_strdup("net")), "net"},
        {take(mem_strdup(nullptr)), "<null>"},
        {take(strdupn(nullptr, 2)), "<null>"},
        {take(strcatdup("clk", "_en")), "clk_en"},
        {take(strcatdup(nullptr, "a")), "<null>"},
        {take(strcatdup("a", nullptr)), "<null>"},
        {take(strAsQuotedString("a\tb\nc\rd\"e\\f")), R"("a\tb\nc\rd\"e\\f")"},
        {take(strAsQuotedString("")), "\"\""},
        {take(strAsQuotedString(nullptr)), "<null>"},
        {take(strExpandQuotedString("\"ab\"cd")), "ab"},
        {take(strExpandQuotedString("a\\qb")), "aqb"},
        {take(strExpandQuotedString("\"a\\")), "a\\"},
        {take(strExpandQuotedString(nullptr)), "<null>"},
    };
    for (const auto& [result, expected] : cases)
        EXPECT_EQ(result, expected);

    const std::unique_ptr<char[]> roomy(strdupn("ab", 3));
    EXPECT_STREQ(std::strcat(roomy.get(), "cde"), "abcde") << "room for three more";
    EXPECT_EQ(take(strdupn("ab", -5)), "ab") << "a negative extra never cuts the copy";
}

TEST(HeapFunctions, ExpandIsTheExactInverseOfQuote) {
    std::string all;
    for (int c = 1; c < 256; ++c)
        all.push_back(static_cast<char>(c));
    for (const std::string& sample :
         {std::string(), std::string("a\\tb\\\""), std::string("\"q\"\t\n\r"), all})
        EXPECT_EQ(take(strExpandQuotedString(take(strAsQuotedString(sample.c_str())).c_str())),
                  sample);
}

TEST(TextQueries, VisibleCharactersNumbersAndLines) {
    EXPECT_TRUE(hasVisibleCharacters("  x "));
    EXPECT_TRUE(hasVisibleCharacters("\xc3\xa9")) << "UTF-8 letters are visible";
    EXPECT_FALSE(hasVisibleCharacters(" \t\r\n"));
    EXPECT_FALSE(hasVisibleCharacters(nullptr));

    const std::tuple<const char*, bool, bool> numbers[] = {
        {"  -42", false, true}, {"+", false, true},    {"-", false, true},
        {"12.", true, true},    {".5", true, true},    {"12.5", true, true},
        {"12.5", false, false}, {"1.5.", true, false}, {"42 ", false, false},
        {"   ", false, false},  {"--1", false, false}, {nullptr, true, false},
    };
    for (const auto& [text, allowFraction, numeric] : numbers)
        EXPECT_EQ(isNumericString(text, allowFraction), numeric)
            << (text ? text : "<null>") << " fraction=" << allowFraction;

    EXPECT_EQ(numLines(nullptr), 0);
    EXPECT_EQ(numLines(""), 1);
    EXPECT_EQ(numLines("a\nb\n"), 3);
    char lines[] = "one\ntwo\nthree";
    EXPECT_EQ(lineNumber(1, lines), lines);
    EXPECT_STREQ(lineNumber(3, lines), "three");
    EXPECT_EQ(lineNumber(4, lines), nullptr);
    EXPECT_EQ(lineNumber(0, lines), nullptr);
    EXPECT_EQ(lineNumber(1, nullptr), nullptr);
}

// Each result is copied out before the next call overwrites the shared scratch buffer.
TEST(ScratchFunctions, ReplaceAndExtractFollowTheirRulesWithin255Characters) {
    const std::string a300(300, 'a'), nearlyFull = std::string(253, 'z') + "abq";
    const std::pair<std::string, std::string> cases[] = {
        {strReplaceStr("a-b-c", "-", "+"), "a+b+c"},
        // the character that broke a partial match is not retried
        {strReplaceStr("aab", "ab", "X"), "aab"},
        {strReplaceStr("abab", "ab", ""), ""},
        {strReplaceStr("tail a", "ab", "X"), "tail a"}, // a partial match at the end is written
        {strReplaceStr("same", "", "X"), "same"},       // an empty find never matches
        {strReplaceStr(a300.c_str(), "b", "c"), std::string(255, 'a')},
        // flushing a broken partial match stops one short of the limit
        {strReplaceStr(nearlyFull.c_str(), "abc", ""), std::string(253, 'z') + "aq"},
        {strExtractField(0, ",x,y", ','), "x"}, // fields count from -1
        {strExtractField(-1, "x,y", ','), "x"},
        {strExtractField(1, "a,b,c,", ','), "c"},
        {strExtractField(5, "a,b", ','), ""}, // a missing field is empty
    };
    for (const auto& [result, expected] : cases)
        EXPECT_EQ(result, expected);
    EXPECT_EQ(std::strlen(strReplaceStr(a300.c_str(), "a", "xy")), 255u);
    EXPECT_EQ(strReplaceStr(nullptr, "a", "b"), nullptr);
    EXPECT_EQ(strExtractField(0, nullptr, ','), nullptr);

    strReplaceStr("hello world", "", "");
    EXPECT_STREQ(strExtractField(0, ",ab", ','), "abllo world") << "a last field is unterminated";
    const std::string wide(400, 'w'), longField = "," + std::string(300, 'f');
    strReplaceStr(wide.c_str(), "", "");
    EXPECT_EQ(std::string(strExtractField(0, longField.c_str(), ',')), std::string(255, 'f'))
        << "the scratch stays terminated within its 256 bytes";
}

// Each result is copied out before eight more ring buffers are taken.
TEST(RingFunctions, IncrementOfStringAndBinaryFormsFollowTheirRules) {
    const std::pair<std::string, std::string> cases[] = {
        {incrementOfString("a007", 1), "a8"},
        {incrementOfString("net", 1), "net1"},
        {incrementOfString("bus9", 1), "bus10"},
        {incrementOfString("x10", -3), "x7"},
        {incrementOfString("", 4), "4"},
        {incrementOfString("a5", -10), "a-5"},
        {incrementOfString("a9", 2147483638), "a2147483647"},
        // the run and the sum saturate at the int range
        {incrementOfString("n99999999999999", 1), "n2147483647"},
        {asBinReversed(1, 4), "1000"},
        {asBin(1, 4), "0001"},
        {asBin(5, 0), std::string(29, '0') + "101"}, // width 0 means 32
        {asBin(0xFFFFFFFFu, 40), std::string(8, '0') + std::string(32, '1')},
    };
    for (const auto& [result, expected] : cases)
        EXPECT_EQ(result, expected);
    const char* result = incrementOfString("a", 1);
    EXPECT_EQ(result, TqObject::staticBuffer()) << "the result is in the ring";

    TqObject::startUp();
    const std::string longName = std::string(4996, 'n') + "0007";
    EXPECT_EQ(std::strlen(incrementOfString(longName.c_str(), 1)), 4997u);
    EXPECT_EQ(TqObject::staticBufferLength(), 5002) << "fitted to the text and two bytes";
    EXPECT_EQ(std::strlen(asBin(1, 5000)), 5000u) << "wide forms grow the ring buffer";
}

} // namespace
