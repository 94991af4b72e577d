#include "core/StringFunctions.h"
#include "core/TqObject.h"

#include <QString>
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>

namespace {

struct HeapString {
    explicit HeapString(char* s) : text(s) {}
    std::unique_ptr<char[]> text;
    const char* get() const { return text.get(); }
};

using InPlace = char* (*)(char*);
constexpr InPlace zeroFraction = static_cast<InPlace>(stripZeroFraction);

TEST(StripFunctions, InPlaceResultsFollowTheirRulesAndTheQStringOverloadAgrees) {
    struct Case {
        const char* name;
        InPlace run;
        const char* input;
        const char* expected;
    } cases[] = {
        {"leading blanks", [](char* b) { return stripLeading(b, " \t"); }, " \t abc ", "abc "},
        {"leading none", [](char* b) { return stripLeading(b, "x"); }, "abc", "abc"},
        {"leading all", [](char* b) { return stripLeading(b, " "); }, "   ", ""},
        {"trailing blanks", [](char* b) { return stripTrailing(b, " "); }, "abc  ", "abc"},
        {"trailing only blanks", [](char* b) { return stripTrailing(b, " "); }, "    ", ""},
        {"trailing keeps inner", [](char* b) { return stripTrailing(b, "ab"); }, "abcab", "abc"},
        {"zero fraction", zeroFraction, "1.500", "1.5"},
        {"whole fraction", zeroFraction, "2.000", "2"},
        {"bare point", zeroFraction, "3.", "3"},
        {"no point", zeroFraction, "100", "100"},
        {"point zero only", zeroFraction, ".0", ""},
        {"fraction cut", stripFraction, "12.75", "12"},
        {"fraction without point", stripFraction, "12", "12"},
        {"upper", strToUpper, "aBc1_z", "ABC1_Z"},
        {"lower", strToLower, "aBc1_Z", "abc1_z"},
        {"reverse", strReverse, "abc", "cba"},
        {"reverse empty", strReverse, "", ""},
    };
    for (const Case& c : cases) {
        std::string buffer(c.input);
        EXPECT_EQ(c.run(buffer.data()), buffer.data()) << c.name << ": works in place";
        EXPECT_STREQ(buffer.c_str(), c.expected) << c.name;
        if (c.run == zeroFraction) {
            QString text = QString::fromLatin1(c.input);
            EXPECT_EQ(*stripZeroFraction(&text), QString::fromLatin1(c.expected)) << c.name;
        }
    }
}

TEST(StripFunctions, NullArgumentsGiveNull) {
    char text[] = "abc";
    EXPECT_EQ(stripLeading(nullptr, " "), nullptr);
    EXPECT_EQ(stripLeading(text, nullptr), nullptr);
    EXPECT_EQ(stripTrailing(nullptr, " "), nullptr);
    EXPECT_EQ(stripTrailing(text, nullptr), nullptr);
    EXPECT_EQ(stripFraction(nullptr), nullptr);
    EXPECT_EQ(strReverse(nullptr), nullptr);
}

TEST(StrIncludes, MatchesCharactersOfTheSetButNeverTheTerminator) {
    EXPECT_TRUE(strIncludes("abc", 'b'));
    EXPECT_FALSE(strIncludes("abc", 'd'));
    EXPECT_FALSE(strIncludes("abc", '\0'));
    EXPECT_FALSE(strIncludes(nullptr, 'a'));
}

TEST(HeapCopies, ReturnFreshCopiesOrNull) {
    HeapString copy(mem_strdup("net"));
    EXPECT_STREQ(copy.get(), "net");
    EXPECT_EQ(mem_strdup(nullptr), nullptr);

    HeapString roomy(strdupn("ab", 3));
    std::strcat(roomy.text.get(), "cde");
    EXPECT_STREQ(roomy.get(), "abcde");
    HeapString negative(strdupn("ab", -5));
    EXPECT_STREQ(negative.get(), "ab") << "a negative extra never cuts the copy";
    EXPECT_EQ(strdupn(nullptr, 2), nullptr);

    HeapString joined(strcatdup("clk", "_en"));
    EXPECT_STREQ(joined.get(), "clk_en");
    EXPECT_EQ(strcatdup(nullptr, "a"), nullptr);
    EXPECT_EQ(strcatdup("a", nullptr), nullptr);
}

TEST(QuotedStrings, EscapesTheFiveSpecialCharacters) {
    HeapString quoted(strAsQuotedString("a\tb\nc\rd\"e\\f"));
    EXPECT_STREQ(quoted.get(), "\"a\\tb\\nc\\rd\\\"e\\\\f\"");
    HeapString empty(strAsQuotedString(""));
    EXPECT_STREQ(empty.get(), "\"\"");
    EXPECT_EQ(strAsQuotedString(nullptr), nullptr);
}

TEST(QuotedStrings, ExpandIsTheExactInverseOfQuote) {
    // Every byte value, including the escaped ones, in many lengths and orders.
    std::string all;
    for (int c = 1; c < 256; ++c)
        all.push_back(static_cast<char>(c));
    const std::string samples[] = {"", "\"", "\\", "\\\"", "a\\tb", "\"quoted\"", "\t\n\r", all};
    for (const std::string& sample : samples) {
        HeapString quoted(strAsQuotedString(sample.c_str()));
        HeapString expanded(strExpandQuotedString(quoted.get()));
        EXPECT_EQ(std::string(expanded.get()), sample);
    }
}

TEST(QuotedStrings, ExpandStopsAtTheClosingQuoteAndReadsUnquotedText) {
    HeapString closed(strExpandQuotedString("\"ab\"cd"));
    EXPECT_STREQ(closed.get(), "ab");
    HeapString bare(strExpandQuotedString("a\\qb"));
    EXPECT_STREQ(bare.get(), "aqb");
    HeapString trailingBackslash(strExpandQuotedString("\"a\\"));
    EXPECT_STREQ(trailingBackslash.get(), "a\\");
    EXPECT_EQ(strExpandQuotedString(nullptr), nullptr);
}

TEST(TextQueries, VisibleCharactersAndLineCounting) {
    EXPECT_TRUE(hasVisibleCharacters("  x "));
    EXPECT_FALSE(hasVisibleCharacters(" \t\r\n"));
    EXPECT_FALSE(hasVisibleCharacters(""));
    EXPECT_FALSE(hasVisibleCharacters(nullptr));
    EXPECT_TRUE(hasVisibleCharacters("\xc3\xa9")) << "UTF-8 letters are visible";

    EXPECT_EQ(numLines(nullptr), 0);
    EXPECT_EQ(numLines(""), 1);
    EXPECT_EQ(numLines("a\nb\n"), 3);

    char text[] = "one\ntwo\nthree";
    EXPECT_EQ(lineNumber(1, text), text);
    EXPECT_STREQ(lineNumber(3, text), "three");
    EXPECT_EQ(lineNumber(4, text), nullptr);
    EXPECT_EQ(lineNumber(0, text), nullptr);
    EXPECT_EQ(lineNumber(1, nullptr), nullptr);
}

TEST(IsNumericString, AcceptsSignsDigitsAndOptionalFraction) {
    struct Case {
        const char* text;
        bool allowFraction;
        bool numeric;
    } cases[] = {
        {"42", false, true},    {"  -42", false, true}, {"+", false, true},
        {"-", false, true},     {"12.", true, true},    {"12.5", true, true},
        {"12.5", false, false}, {".5", true, true},     {"1.5.", true, false},
        {"42 ", false, false},  {"", false, false},     {"   ", false, false},
        {"4a", false, false},   {"--1", false, false},  {nullptr, true, false},
    };
    for (const Case& c : cases)
        EXPECT_EQ(isNumericString(c.text, c.allowFraction), c.numeric)
            << (c.text ? c.text : "<null>") << " fraction=" << c.allowFraction;
}

TEST(StrReplaceStr, ReplacesLeftToRightWithoutRescanning) {
    struct Case {
        const char* s;
        const char* find;
        const char* repl;
        const char* expected;
    } cases[] = {
        {"a-b-c", "-", "+", "a+b+c"},
        {"aab", "ab", "X", "aab"}, // the broken partial match is not retried
        {"abab", "ab", "", ""},
        {"xaby", "ab", "<>", "x<>y"},
        {"tail a", "ab", "X", "tail a"}, // a partial match at the end is written out
        {"same", "", "X", "same"},       // an empty find never matches
    };
    for (const Case& c : cases)
        EXPECT_STREQ(strReplaceStr(c.s, c.find, c.repl), c.expected) << c.s;
    EXPECT_EQ(strReplaceStr(nullptr, "a", "b"), nullptr);
}

TEST(StrReplaceStr, OutputIsCutAt255Characters) {
    const std::string input(300, 'a');
    EXPECT_EQ(std::string(strReplaceStr(input.c_str(), "b", "c")), std::string(255, 'a'));
    EXPECT_EQ(std::strlen(strReplaceStr(input.c_str(), "a", "xy")), 255u);
    // A partial match flushed on a mismatch stops one short of the limit.
    const std::string nearlyFull = std::string(253, 'z') + "abq";
    EXPECT_EQ(std::string(strReplaceStr(nearlyFull.c_str(), "abc", "")),
              std::string(253, 'z') + "aq");
}

TEST(StrExtractField, CountsFieldsFromMinusOne) {
    EXPECT_STREQ(strExtractField(0, ",x,y", ','), "x");
    EXPECT_STREQ(strExtractField(-1, "x,y", ','), "x");
    EXPECT_STREQ(strExtractField(1, "a,b,c,", ','), "c");
    EXPECT_STREQ(strExtractField(5, "a,b", ','), "") << "a missing field is empty";
    EXPECT_EQ(strExtractField(0, nullptr, ','), nullptr);
}

TEST(StrExtractField, FieldRunningToTheEndIsNotTerminated) {
    // The scratch still holds the previous result; the unterminated copy shows its tail.
    strReplaceStr("hello world", "", "");
    EXPECT_STREQ(strExtractField(0, ",ab", ','), "abllo world");
    // However long the previous result, the scratch is terminated within its 256 bytes.
    const std::string wide(400, 'w');
    strReplaceStr(wide.c_str(), "", "");
    const std::string longField = "," + std::string(300, 'f');
    EXPECT_EQ(std::string(strExtractField(0, longField.c_str(), ',')), std::string(255, 'f'));
}

TEST(IncrementOfString, IncrementsTheTrailingNumberOrAppendsOne) {
    struct Case {
        const char* s;
        int n;
        const char* expected;
    } cases[] = {
        {"a007", 1, "a8"},
        {"net", 1, "net1"},
        {"bus9", 1, "bus10"},
        {"x10", -3, "x7"},
        {"12", 5, "17"},
        {"", 4, "4"},
        {"a5", -10, "a-5"},
        {"n99999999999999", 1, "n2147483647"}, // the run saturates at the int range
    };
    for (const Case& c : cases)
        EXPECT_STREQ(incrementOfString(c.s, c.n), c.expected) << c.s << " + " << c.n;
    const char* result = incrementOfString("a", 1);
    EXPECT_EQ(result, TqObject::staticBuffer()) << "the result is in the ring";
}

TEST(BinaryText, ReversedAndStraightBinaryForms) {
    EXPECT_STREQ(asBinReversed(1, 4), "1000");
    EXPECT_STREQ(asBin(1, 4), "0001");
    const std::string full = asBin(5, 0);
    EXPECT_EQ(full.size(), 32u);
    EXPECT_EQ(full, std::string(29, '0') + "101");
    EXPECT_EQ(std::string(asBin(0xFFFFFFFFu, 40)), std::string(8, '0') + std::string(32, '1'));
    EXPECT_EQ(std::strlen(asBin(1, 5000)), 5000u) << "wide forms grow the ring buffer";
}

} // namespace
