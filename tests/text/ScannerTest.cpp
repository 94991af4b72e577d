#include "text/Scanner.h"

#include "core/iTaskDescription.h"

#include "../support/ToolkitCycle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Scanned = std::vector<std::pair<ScanType, std::string>>;

// Every token up to and including the first `end`.
Scanned scanAll(Scanner& scanner) {
    Scanned tokens;
    for (int guard = 0; guard < 100000; ++guard) {
        Token& token = scanner.scanToken();
        tokens.emplace_back(token.type(), std::string(token.text(), token.length()));
        EXPECT_EQ(std::strlen(token.text()), token.length()) << "the text is terminated";
        if (token.type() == ST_END)
            break;
    }
    return tokens;
}

Scanned scanAll(const char* text, ScanType* table = nullptr) {
    Scanner scanner(text, table);
    return scanAll(scanner);
}

// One token per character of text, of the types in order, then the end.
Scanned singles(const char* text, std::initializer_list<ScanType> types) {
    Scanned tokens;
    for (ScanType type : types)
        tokens.emplace_back(type, std::string(1, *text++));
    tokens.emplace_back(ST_END, "");
    return tokens;
}

struct ScanCase {
    const char* name;
    const char* input;
    Scanned expected;
};

class ScanTokens : public ::testing::TestWithParam<ScanCase> {};

TEST_P(ScanTokens, YieldsTheExpectedTokensWithTheDefaultTable) {
    EXPECT_EQ(scanAll(GetParam().input), GetParam().expected) << GetParam().input;
}

INSTANTIATE_TEST_SUITE_P(
    DefaultTable, ScanTokens,
    ::testing::Values(
        ScanCase{"Empty", "", {{ST_END, ""}}},
        ScanCase{"WordsAndWhiteSpace",
                 "alpha \t beta\n",
                 {{ST_WORD, "alpha"}, {ST_WORD, "beta"}, {ST_END, ""}}},
        ScanCase{"DollarAndUnderscoreAreLetters",
                 "$a_1 _x",
                 {{ST_WORD, "$a_1"}, {ST_WORD, "_x"}, {ST_END, ""}}},
        ScanCase{"HighBytesAreLetters",
                 "\xc3\xa9t\xc3\xa9",
                 {{ST_WORD, "\xc3\xa9t\xc3\xa9"}, {ST_END, ""}}},
        ScanCase{"CarriageReturnDroppedInsideWordsAndNumbers",
                 "ab\rc 1\r2\r\n",
                 {{ST_WORD, "abc"}, {ST_NUMBER, "12"}, {ST_END, ""}}},
        ScanCase{"NumberRangeStopsBeforeTwoPoints",
                 "1..2",
                 {{ST_NUMBER, "1"}, {ST_DOTDOT, ".."}, {ST_NUMBER, "2"}, {ST_END, ""}}},
        ScanCase{"ValueWithUnitIsOneWord",
                 "10ns 3e",
                 {{ST_WORD, "10ns"}, {ST_NUMBER, "3e"}, {ST_END, ""}}},
        ScanCase{"FractionAndSignedExponentStayANumber",
                 "1.5e-3 2E+7 4e9",
                 {{ST_NUMBER, "1.5e-3"}, {ST_NUMBER, "2E+7"}, {ST_NUMBER, "4e9"}, {ST_END, ""}}},
        ScanCase{"LetterAfterExponentLetterMakesAWord",
                 "1ex 2e5e",
                 {{ST_WORD, "1ex"}, {ST_WORD, "2e5e"}, {ST_END, ""}}},
        ScanCase{
            "HexDigitsStartingWithADigitAreOneWord", "0ff1", {{ST_WORD, "0ff1"}, {ST_END, ""}}},
        ScanCase{"SecondPointEndsANumber",
                 "1.2.3",
                 {{ST_NUMBER, "1.2"}, {ST_NUMBER, ".3"}, {ST_END, ""}}},
        ScanCase{"PointFollowedByDigitsIsANumber", ".25", {{ST_NUMBER, ".25"}, {ST_END, ""}}},
        ScanCase{"StringTextHasNoQuotesAndKeepsEscapes",
                 "\"a \\\"b\\\" c\" x",
                 {{ST_STRING, "a \\\"b\\\" c"}, {ST_WORD, "x"}, {ST_END, ""}}},
        ScanCase{"UnterminatedStringEndsAtEndOfInput", "\"abc", {{ST_STRING, "abc"}, {ST_END, ""}}},
        ScanCase{
            "AtSignForms",
            "@- @/ @x",
            {{ST_AT_MINUS, "@-"}, {ST_AT_SLASH, "@/"}, {ST_AT, "@"}, {ST_WORD, "x"}, {ST_END, ""}}},
        ScanCase{"QuoteWithoutBaseTableLeavesTheNextCharacter",
                 "'h",
                 {{ST_QUOTE, "'"}, {ST_WORD, "h"}, {ST_END, ""}}},
        ScanCase{"Punctuation", "+-*/()[]:,<>#;^\\",
                 singles("+-*/()[]:,<>#;^\\",
                         {ST_PLUS, ST_MINUS, ST_STAR, ST_SLASH, ST_LPAREN, ST_RPAREN, ST_LBRACKET,
                          ST_RBRACKET, ST_COLON, ST_COMMA, ST_LESS, ST_GREATER, ST_HASH,
                          ST_SEMICOLON, ST_CARET, ST_BACKSLASH})},
        ScanCase{"UnlistedCharactersAreOfClassNone", "{=", singles("{=", {ST_NONE, ST_NONE})}),
    [](const auto& info) { return std::string(info.param.name); });

TEST(Scanner, EndTokenRepeatsAfterEndOfInput) {
    Scanner scanner("x", nullptr);
    EXPECT_EQ(scanner.scanToken().type(), ST_WORD);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(scanner.scanToken().type(), ST_END);
        EXPECT_EQ(scanner.token().length(), 0u);
    }
}

TEST(Scanner, OverlongWordStringAndNumberAreCutAt8191CharactersAndConsumedWhole) {
    const std::string text = std::string(9000, 'a') + " \"" + std::string(10000, 's') + "\" " +
                             std::string(9000, '7') + " b";
    EXPECT_EQ(scanAll(text.c_str()), (Scanned{{ST_WORD, std::string(8191, 'a')},
                                              {ST_STRING, std::string(8191, 's')},
                                              {ST_NUMBER, std::string(8191, '7')},
                                              {ST_WORD, "b"},
                                              {ST_END, ""}}));
}

TEST(Scanner, KeywordsMatchWithoutRegardToCase) {
    HC_<ScannerKeyword> keywords(&ScannerKeyword::keyFromScannerKeyword);
    keywords.add(new ScannerKeyword("Module"));
    Scanner scanner("module MODULE mOdUlE modules", &keywords, nullptr);
    EXPECT_EQ(scanAll(scanner), (Scanned{{ST_KEYWORD, "module"},
                                         {ST_KEYWORD, "MODULE"},
                                         {ST_KEYWORD, "mOdUlE"},
                                         {ST_WORD, "modules"},
                                         {ST_END, ""}}));
    keywords.deleteContents();
}

TEST(Scanner, BaseAndNewlineClassesGiveTheirOwnTokens) {
    std::unique_ptr<ScanType[]> table(Scanner::newTypeTable());
    Scanner::setType("hH", ST_BASE_HEX, table.get());
    Scanner::setType("bB", ST_BASE_BIN, table.get());
    Scanner::setType('\n', ST_NEWLINE, table.get());
    EXPECT_EQ(scanAll("'hff 'x B\"01\" bad\nz", table.get()), (Scanned{{ST_BASE_HEX, "'h"},
                                                                       {ST_WORD, "ff"},
                                                                       {ST_QUOTE, "'"},
                                                                       {ST_WORD, "x"},
                                                                       {ST_BASE_BIN, "B"},
                                                                       {ST_STRING, "01"},
                                                                       {ST_WORD, "bad"},
                                                                       {ST_NEWLINE, "\n"},
                                                                       {ST_WORD, "z"},
                                                                       {ST_END, ""}}));
}

TEST(Scanner, WordFlagsAdmitExactlyTheirAsymmetricClasses) {
    using Set = std::initializer_list<ScanType>;
    auto in = [](Set set, ScanType type) {
        return std::find(set.begin(), set.end(), type) != set.end();
    };
    const Set always = {ST_LETTER, ST_NUMBER, ST_BASE_HEX, ST_BASE_DEC, ST_BASE_BIN, ST_BASE_OCT};
    const Set slashDot = {ST_POINT, ST_LBRACKET, ST_RBRACKET, ST_DOUBLEQUOTE};
    const Set squareBrackets = {ST_SLASH2, ST_BACKSLASH};
    Scanner scanner("", nullptr);
    for (char slash : {0, 1})
        for (char square : {0, 1}) {
            scanner.setAllowSlashDotInWords(slash);
            scanner.setAllowSquareBracketsInWords(square);
            for (int t = 0; t < ST_COUNT; ++t) {
                const auto type = static_cast<ScanType>(t);
                EXPECT_EQ(scanner.isAllowableInWord(type), in(always, type) ||
                                                               (slash && in(slashDot, type)) ||
                                                               (square && in(squareBrackets, type)))
                    << "type " << t << " slash " << int(slash) << " square " << int(square);
            }
        }
}

TEST(Scanner, SlashDotFlagKeepsPointsBracketsAndQuotesInWords) {
    Scanner scanner("top.u1[3] \"q\"", nullptr);
    scanner.setAllowSlashDotInWords(1);
    EXPECT_EQ(scanAll(scanner),
              (Scanned{{ST_WORD, "top.u1[3]"}, {ST_STRING, "\"q\""}, {ST_END, ""}}));
}

TEST(Scanner, MemberSetTypeCopiesTheSharedTableInsteadOfChangingIt) {
    Scanner changed("a=b", nullptr);
    changed.setType('=', ST_EQUALS);
    EXPECT_EQ(Scanner::defaultTypeTable()['='], ST_NONE);
    EXPECT_EQ(scanAll(changed),
              (Scanned{{ST_WORD, "a"}, {ST_EQUALS, "="}, {ST_WORD, "b"}, {ST_END, ""}}));
    Scanner copy(changed);
    EXPECT_EQ(copy.typeOf('='), ST_EQUALS);
}

TEST(Scanner, TableBuildersSetSinglesRangesStringsAndAll) {
    std::unique_ptr<ScanType[]> table(Scanner::newTypeTable());
    Scanner::setType('a', 'c', ST_NUMBER, table.get());
    Scanner::setType("xy", ST_COMMA, table.get());
    Scanner::setType(300, ST_PLUS, table.get());
    EXPECT_EQ(table['a'], ST_NUMBER);
    EXPECT_EQ(table['c'], ST_NUMBER);
    EXPECT_EQ(table['d'], ST_LETTER);
    EXPECT_EQ(table['y'], ST_COMMA);
    Scanner::setTypeAll(ST_STAR, table.get());
    for (int c = 0; c < 256; ++c)
        ASSERT_EQ(table[c], ST_STAR);
}

TEST(Scanner, DefaultTableClassesMatchTheirDisplayTexts) {
    ScanType* table = Scanner::defaultTypeTable();
    for (int c = 0; c < 128; ++c) {
        ScanType type = table[c];
        std::string text = scanTypeText(type);
        if (text.size() == 1 && type != ST_NONE) {
            EXPECT_EQ(text[0], static_cast<char>(c)) << "character " << c;
        }
    }
    EXPECT_EQ(table[0], ST_END);
    EXPECT_EQ(table[26], ST_END);
    EXPECT_EQ(table['\t'], ST_SPACE);
    EXPECT_EQ(table['\r'], ST_CR);
    EXPECT_STREQ(scanTypeText(ST_CASE_NOT_EQUAL), "!==");
    EXPECT_STREQ(scanTypeText(static_cast<ScanType>(55)), "?");
}

TEST(Scanner, NumReadCountsEveryCharacterAndTheEndOnce) {
    std::istringstream in("ab 12.5 'x");
    Scanner scanner(in, nullptr);
    scanAll(scanner);
    EXPECT_EQ(scanner.numRead(), in.str().size() + 1);
    scanner.scanToken();
    EXPECT_EQ(scanner.numRead(), in.str().size() + 1);
}

TEST(Scanner, PeekAndPutbackLeaveTheCountAndInputUnchanged) {
    Scanner scanner("xy", nullptr);
    char c = 0;
    EXPECT_TRUE(scanner.peekChar(c));
    EXPECT_EQ(c, 'x');
    EXPECT_EQ(scanner.numRead(), 0u);
    EXPECT_TRUE(scanner.getChar(c));
    EXPECT_TRUE(scanner.getChar(c));
    scanner.putback(c);
    EXPECT_EQ(scanner.numRead(), 1u);
    EXPECT_TRUE(scanner.getChar(c));
    EXPECT_EQ(c, 'y');
    EXPECT_TRUE(scanner.getChar(c)); // end of file: NUL, counted
    EXPECT_EQ(c, '\0');
    EXPECT_EQ(scanner.numRead(), 3u);
    EXPECT_TRUE(scanner.getChar(c)); // already at end: the token becomes `end`
    EXPECT_EQ(scanner.token().type(), ST_END);
    EXPECT_TRUE(scanner.testGood());
}

TEST(Scanner, ReadFailureEndsWithFalseAndAnEndToken) {
    std::istringstream in("abc");
    in.setstate(std::ios::badbit);
    Scanner scanner(in, nullptr);
    char c = 'z';
    EXPECT_FALSE(scanner.getChar(c));
    EXPECT_EQ(c, '\0');
    EXPECT_EQ(scanner.token().type(), ST_END);
    EXPECT_FALSE(scanner.testGood());
    EXPECT_EQ(scanner.scanToken().type(), ST_END);
}

TEST(Scanner, CancelledTaskEndsTheTokenStream) {
    iTaskDescription task;
    Scanner scanner("one two", nullptr);
    scanner.setTask(task);
    EXPECT_STREQ(scanner.scanToken().text(), "one");
    task.cancel();
    EXPECT_EQ(scanner.scanToken().type(), ST_END);
    EXPECT_EQ(scanner.numRead(), 3u) << "nothing is read once the task is cancelled";
}

class CountingScanner : public Scanner {
public:
    using Scanner::Scanner;
    Token& scanToken() override {
        ++calls;
        return Scanner::scanToken();
    }
    int calls = 0;
};

TEST(Scanner, WhiteSpaceRescansThroughTheVirtualScanTokenWithoutDeepRecursion) {
    std::string text(200000, ' ');
    text += "word";
    CountingScanner scanner(text.c_str(), nullptr);
    EXPECT_STREQ(scanner.scanToken().text(), "word");
    EXPECT_EQ(scanner.calls, 2);
}

class SkipScanner : public Scanner {
public:
    using Scanner::Scanner;
    using Scanner::skipComment;
    using Scanner::skipwhite;
};

TEST(Scanner, SkipwhiteConsumesNothingUnlessNulIsWhiteSpace) {
    SkipScanner plain("   x", nullptr);
    plain.skipwhite();
    EXPECT_EQ(plain.numRead(), 0u);

    std::unique_ptr<ScanType[]> table(Scanner::newTypeTable());
    Scanner::setType(0, ST_SPACE, table.get());
    SkipScanner run(" \t\n x", table.get());
    run.skipwhite();
    EXPECT_EQ(run.numRead(), 4u);
    char c = 0;
    EXPECT_TRUE(run.getChar(c));
    EXPECT_EQ(c, 'x');
}

TEST(Scanner, SkipCommentHandlesBothFormsAndGivesUpAtMax) {
    struct Case {
        const char* input;
        long max;
        long skipped;
        const char* rest;
    } cases[] = {
        {"* c */x", 100, 6, "x"},
        {"/ line\nx", 100, 7, "x"},
        {"ab", 100, 0, "ab"},
        {"* never closed", 5, 5, "er"},
    };
    for (const Case& c : cases) {
        SkipScanner scanner(c.input, nullptr);
        EXPECT_EQ(scanner.skipComment(c.max), c.skipped) << c.input;
        EXPECT_STREQ(scanner.scanToken().text(), c.rest) << c.input;
    }
}

TEST(Scanner, NumberFollowedByTwoPointsSurvivesPutbackAcrossBufferRefills) {
    // A stream buffer with one character of get area forces the double put-back path.
    class OneByteBuffer : public std::streambuf {
    public:
        explicit OneByteBuffer(std::string text) : m_text(std::move(text)) {}

    protected:
        int_type underflow() override {
            if (m_pos >= m_text.size())
                return traits_type::eof();
            m_char = m_text[m_pos++];
            setg(&m_char, &m_char, &m_char + 1);
            return traits_type::to_int_type(m_char);
        }

    private:
        std::string m_text;
        size_t m_pos = 0;
        char m_char = 0;
    } buffer("12..34");
    std::istream in(&buffer);
    Scanner scanner(in, nullptr);
    EXPECT_EQ(scanAll(scanner),
              (Scanned{{ST_NUMBER, "12"}, {ST_DOTDOT, ".."}, {ST_NUMBER, "34"}, {ST_END, ""}}));
}

TEST(Scanner, CopyOfAStringScannerContinuesWhereTheOriginalWas) {
    Scanner original("one two three", nullptr);
    original.scanToken();
    Scanner copy(original);
    EXPECT_STREQ(copy.scanToken().text(), "two");
    EXPECT_STREQ(original.scanToken().text(), "two");
}

class ScannerShutDown : public ToolkitCycle {};

TEST_F(ScannerShutDown, ToolkitShutdownFreesTheSharedTableAndTheNextScannerRebuildsIt) {
    TarqToolkit::registerSelf();
    Scanner::defaultTypeTable();
    ASSERT_TRUE(Scanner::defaultTypeTableBuilt());
    TarqToolkit::shutDownApp();
    EXPECT_FALSE(Scanner::defaultTypeTableBuilt());

    TqObject::startUp();
    TarqToolkit::registerSelf();
    {
        Scanner scanner("again", nullptr);
        EXPECT_STREQ(scanner.scanToken().text(), "again");
    }
    TarqToolkit::shutDownApp();
    EXPECT_FALSE(Scanner::defaultTypeTableBuilt()) << "the rebuilt table registered again";
    TqObject::startUp();
}

} // namespace
