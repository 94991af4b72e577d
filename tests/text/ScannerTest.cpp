#include "text/Scanner.h"
#include "ChunkedBuffer.h"

#include "core/iTaskDescription.h"

#include "../support/ToolkitCycle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <set>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Scanned = std::vector<std::pair<ScanType, std::string>>;

// Text scanned from a string (chunk 0) or through a stream buffer refilled every chunk bytes.
struct Input {
    Input(const std::string& text, std::size_t chunk)
        : text(text), chunk(chunk), buffer(text, chunk), stream(&buffer) {}
    std::unique_ptr<Scanner> scanner(ScanType* table = nullptr) {
        return chunk == 0 ? std::make_unique<Scanner>(text.c_str(), table)
                          : std::make_unique<Scanner>(stream, table);
    }
    std::string text;
    std::size_t chunk;
    ChunkedBuffer buffer;
    std::istream stream;
};

// Opens the protected operations and counts the calls of the virtual scanToken.
class ProbeScanner : public Scanner {
public:
    using Scanner::Scanner;
    using Scanner::setNegativeNumber;
    using Scanner::skipComment;
    using Scanner::skipwhite;
    Token& scanToken() override {
        ++calls;
        return Scanner::scanToken();
    }
    int calls = 0;
};

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

// The tokens before the end, as "type:text" joined by '|'; a token whose text is its type's
// display text is written as the text alone.
std::string written(const Scanned& tokens) {
    std::string text;
    for (const auto& [type, value] : tokens) {
        if (type == ST_END)
            break;
        text += text.empty() ? "" : "|";
        text += value == scanTypeText(type) ? value : scanTypeText(type) + (":" + value);
    }
    return text;
}

enum class Setup { DefaultTable, VerilogTable, SlashDotInWords };

struct ScanCase {
    const char* name;
    std::string input;
    std::string expected;
    Setup setup = Setup::DefaultTable;
};

class ScanTokens : public ::testing::TestWithParam<std::tuple<ScanCase, std::size_t>> {};

// Every case is scanned from a string and through stream buffers that refill after every one,
// two and five characters: the tokens, and the count of characters read, must not change.
TEST_P(ScanTokens, YieldsTheExpectedTokensWhereverTheStreamBufferRefills) {
    const auto& [scanCase, chunk] = GetParam();
    std::unique_ptr<ScanType[]> table;
    if (scanCase.setup == Setup::VerilogTable) {
        table.reset(Scanner::newTypeTable());
        Scanner::setType("hH", ST_BASE_HEX, table.get());
        Scanner::setType("bB", ST_BASE_BIN, table.get());
        Scanner::setType('\n', ST_NEWLINE, table.get());
    }
    Input input(scanCase.input, chunk);
    auto scanner = input.scanner(table.get());
    scanner->setAllowSlashDotInWords(scanCase.setup == Setup::SlashDotInWords);
    Scanned tokens = scanAll(*scanner);
    EXPECT_EQ(written(tokens), scanCase.expected) << scanCase.input;
    EXPECT_EQ(tokens.back(), Scanned::value_type(ST_END, ""));
    EXPECT_EQ(scanner->numRead(), scanCase.input.size() + 1) << "every character and the end";
    EXPECT_EQ(scanner->scanToken().type(), ST_END) << "the end repeats";
    EXPECT_EQ(scanner->numRead(), scanCase.input.size() + 1);
}

// clang-format off
INSTANTIATE_TEST_SUITE_P(
    Scanner, ScanTokens,
    ::testing::Combine(::testing::Values(
        ScanCase{"Empty", "", ""},
        ScanCase{"WordsAndWhiteSpace", "alpha \t beta\n", "word:alpha|word:beta"},
        ScanCase{"DollarUnderscoreAndHighBytesAreLetters", "$a_1 _x \xc3\xa9t",
                 "word:$a_1|word:_x|word:\xc3\xa9t"},
        ScanCase{"CarriageReturnDroppedInsideWordsAndNumbers", "ab\rc 1\r2 3e\r-4\r\n",
                 "word:abc|number:12|number:3e-4"},
        ScanCase{"NumberRangeStopsBeforeTwoPoints", "1..2", "number:1|..|number:2"},
        ScanCase{"FractionAndSignedExponentStayANumber", "1.5e-3 2E+7 4e9 3e",
                 "number:1.5e-3|number:2E+7|number:4e9|number:3e"},
        ScanCase{"LettersTurnANumberIntoAWord", "10ns 0ff1 1ex 2e5e 1e-x",
                 "word:10ns|word:0ff1|word:1ex|word:2e5e|word:1e-x"},
        ScanCase{"PointsStartNumbersAndASecondPointEndsOne", "1.2.3 .25 . x",
                 "number:1.2|number:.3|number:.25|number:.|word:x"},
        ScanCase{"StringTextHasNoQuotesAndKeepsEscapes", "\"a \\\"b\\\" c\" x \"open",
                 "string:a \\\"b\\\" c|word:x|string:open"},
        ScanCase{"AtSignForms", "@- @/ @x", "@-|@/|@|word:x"},
        ScanCase{"PunctuationAndTheCharactersLeftToOtherTables", "+-*/()[]:,<>#;^\\{}~&|!=?",
                 "+|-|*|/|(|)|[|]|:|,|<|>|#|;|^|\\|"
                 "none:{|none:}|none:~|none:&|none:||none:!|none:=|none:?"},
        ScanCase{"BaseAndNewlineClassesGiveTheirOwnTokens", "'hff 'x B\"01\" bad\nz",
                 "'h|word:ff|'|word:x|'b:B|string:01|word:bad|\n|word:z", Setup::VerilogTable},
        ScanCase{"SlashDotFlagKeepsPointsBracketsAndQuotesInWords", "top.u1[3] \"q\"",
                 "word:top.u1[3]|string:\"q\"", Setup::SlashDotInWords},
        ScanCase{"OverlongTokensAreCutAt8191CharactersAndConsumedWhole",
                 std::string(9000, 'a') + " \"" + std::string(10000, 's') + "\" " +
                     std::string(9000, '7') + " b",
                 "word:" + std::string(8191, 'a') + "|string:" + std::string(8191, 's') +
                     "|number:" + std::string(8191, '7') + "|word:b"}),
    ::testing::Values(0u, 1u, 2u, 5u)),
    [](const auto& info) {
        return std::string(std::get<0>(info.param).name) + "_Chunk" +
               std::to_string(std::get<1>(info.param));
    });
// clang-format on

// A caller may go on reading the stream itself after any token.
TEST(Scanner, LeavesTheStreamJustAfterTheTokenAndCountsWhatItTook) {
    const std::string text = "alpha 12..5e3 'x rest of line";
    for (std::size_t chunk : {text.size(), std::size_t{1}, std::size_t{3}}) {
        Input input(text, chunk);
        auto scanner = input.scanner();
        for (const char* expected : {"alpha", "12", "..", "5e3", "'"})
            EXPECT_STREQ(scanner->scanToken().text(), expected) << chunk;
        std::string rest;
        std::getline(input.stream, rest);
        EXPECT_EQ(rest, "x rest of line") << chunk;
        EXPECT_EQ(scanner->numRead(), text.find('x')) << chunk;
    }
}

TEST(Scanner, KeywordsMatchWithoutRegardToCase) {
    HC_<ScannerKeyword> keywords(&ScannerKeyword::keyFromScannerKeyword);
    keywords.add(new ScannerKeyword("Module"));
    Scanner scanner("module MODULE mOdUlE modules", &keywords, nullptr);
    EXPECT_EQ(written(scanAll(scanner)),
              "keyword:module|keyword:MODULE|keyword:mOdUlE|word:modules");
    keywords.deleteContents();
}

// The flag is set before the tokens marked 1; a word leaves it set for the next number.
TEST(Scanner, NegativeNumberFlagSignsTheNextNumberOnly) {
    ProbeScanner scanner("x 7 .5 8 2ns", nullptr);
    Scanned tokens;
    for (char negative : {1, 0, 0, 1, 1}) {
        if (negative)
            scanner.setNegativeNumber(1);
        const Token& token = scanner.scanToken();
        tokens.emplace_back(token.type(), token.text());
    }
    EXPECT_EQ(written(tokens), "word:x|number:-7|number:.5|number:-8|word:-2ns");
}

TEST(Scanner, WordFlagsAdmitExactlyTheirAsymmetricClasses) {
    const std::set<ScanType> always = {ST_LETTER,   ST_NUMBER,   ST_BASE_HEX,
                                       ST_BASE_DEC, ST_BASE_BIN, ST_BASE_OCT};
    const std::set<ScanType> slashDot = {ST_POINT, ST_LBRACKET, ST_RBRACKET, ST_DOUBLEQUOTE};
    const std::set<ScanType> squareBrackets = {ST_SLASH2, ST_BACKSLASH};
    Scanner scanner("", nullptr);
    for (char slash : {0, 1})
        for (char square : {0, 1}) {
            scanner.setAllowSlashDotInWords(slash);
            scanner.setAllowSquareBracketsInWords(square);
            for (int t = 0; t < ST_COUNT; ++t) {
                const auto type = static_cast<ScanType>(t);
                EXPECT_EQ(scanner.isAllowableInWord(type),
                          always.count(type) || (slash && slashDot.count(type)) ||
                              (square && squareBrackets.count(type)))
                    << "type " << t << " slash " << int(slash) << " square " << int(square);
            }
        }
}

// A copy of a string scanner goes on from where the original was, with its private table.
TEST(Scanner, MemberSetTypeCopiesTheSharedTableAndCopiesContinueWithIt) {
    Scanner original("a=b c", nullptr);
    original.setType('=', ST_EQUALS);
    EXPECT_EQ(Scanner::defaultTypeTable()['='], ST_NONE);
    EXPECT_STREQ(original.scanToken().text(), "a");
    Scanner copy(original);
    EXPECT_EQ(written(scanAll(copy)), "=|word:b|word:c");
    EXPECT_EQ(written(scanAll(original)), "=|word:b|word:c");
}

TEST(Scanner, DefaultTableAndTableBuildersGiveTheStatedClasses) {
    ScanType* defaults = Scanner::defaultTypeTable();
    EXPECT_EQ((std::vector<ScanType>{defaults[0], defaults[26], defaults['\t'], defaults['\r']}),
              (std::vector<ScanType>{ST_END, ST_END, ST_SPACE, ST_CR}));
    EXPECT_STREQ(scanTypeText(ST_CASE_NOT_EQUAL), "!==");
    EXPECT_STREQ(scanTypeText(static_cast<ScanType>(55)), "?");

    std::unique_ptr<ScanType[]> table(Scanner::newTypeTable());
    Scanner::setType('a', 'c', ST_NUMBER, table.get());
    Scanner::setType("xy", ST_COMMA, table.get());
    Scanner::setType(300, ST_PLUS, table.get());
    EXPECT_EQ(std::vector<ScanType>(&table['a'], &table['e']),
              (std::vector<ScanType>{ST_NUMBER, ST_NUMBER, ST_NUMBER, ST_LETTER}));
    EXPECT_EQ(table['y'], ST_COMMA);
    Scanner::setTypeAll(ST_STAR, table.get());
    EXPECT_EQ(std::count(table.get(), table.get() + 256, ST_STAR), 256);
}

// Peeked and put-back characters are not counted as read.
TEST(Scanner, CharacterReadsFollowTheStreamStateAndCountWhatStaysTaken) {
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

    const std::pair<std::ios::iostate, bool> usableInStates[] = {
        {std::ios::goodbit, true},
        {std::ios::eofbit, true},
        {std::ios::eofbit | std::ios::failbit, true}, // how a read through the stream ends
        {std::ios::failbit, false},
        {std::ios::badbit, false},
    };
    for (const auto& [state, usable] : usableInStates) {
        std::istringstream in("abc");
        in.setstate(state);
        Scanner reader(in, nullptr);
        EXPECT_EQ(reader.testGood(), usable) << state;
        char read = 'z';
        EXPECT_EQ(reader.getChar(read), usable) << state;
        EXPECT_EQ(read, state == std::ios::goodbit ? 'a' : '\0') << state;
        EXPECT_EQ(reader.scanToken().type(), state == std::ios::goodbit ? ST_WORD : ST_END);
    }
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

// White space is passed over by one rescan per character through the virtual scanToken,
// since skipwhite consumes nothing unless NUL is white space; the nesting is bounded.
TEST(Scanner, WhiteSpaceRescansAndSkipwhiteConsumesNothingUnlessNulIsWhiteSpace) {
    ProbeScanner few(" \t\n word", nullptr);
    EXPECT_STREQ(few.scanToken().text(), "word");
    EXPECT_EQ(few.calls, 5) << "the call itself and one rescan per white-space character";
    std::string text(200000, ' ');
    text += "word";
    ProbeScanner scanner(text.c_str(), nullptr);
    EXPECT_STREQ(scanner.scanToken().text(), "word");
    EXPECT_EQ(scanner.calls, 1 + Scanner::v_maxRescanDepth);

    ProbeScanner plain("   x", nullptr);
    plain.skipwhite();
    EXPECT_EQ(plain.numRead(), 0u);

    std::unique_ptr<ScanType[]> table(Scanner::newTypeTable());
    Scanner::setType(0, ST_SPACE, table.get());
    ProbeScanner run(" \t\n x", table.get());
    run.skipwhite();
    EXPECT_EQ(run.numRead(), 4u);
    EXPECT_STREQ(run.scanToken().text(), "x");
}

TEST(Scanner, SkipCommentHandlesBothFormsAndGivesUpAtMax) {
    struct Case {
        const char* input;
        long max;
        long skipped;
        const char* rest;
    } cases[] = {
        {"* c */x", 100, 6, "x"}, {"*/ c */x", 100, 7, "x"},      {"/ line\nx", 100, 7, "x"},
        {"ab", 100, 0, "ab"},     {"* never closed", 5, 5, "er"},
    };
    for (const Case& c : cases) {
        ProbeScanner scanner(c.input, nullptr);
        EXPECT_EQ(scanner.skipComment(c.max), c.skipped) << c.input;
        EXPECT_STREQ(scanner.scanToken().text(), c.rest) << c.input;
    }
}

class ScannerShutDown : public ToolkitCycle {};

TEST_F(ScannerShutDown, ToolkitShutdownFreesTheSharedTableAndTheNextScannerRebuildsIt) {
    for (int cycle = 0; cycle < 2; ++cycle) {
        TarqToolkit::registerSelf();
        EXPECT_STREQ(Scanner("again", nullptr).scanToken().text(), "again");
        ASSERT_TRUE(Scanner::defaultTypeTableBuilt());
        TarqToolkit::shutDownApp();
        EXPECT_FALSE(Scanner::defaultTypeTableBuilt()) << "cycle " << cycle;
        TqObject::startUp();
    }
}

} // namespace
