// The shared default table is scanned by a path of its own; a copy of that table goes through
// the general path. Both must give the same tokens, counts, stream states and positions, for
// tricky and random texts, through every way the characters can arrive.
#include "ChunkedBuffer.h"
#include "text/Scanner.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

namespace {

// Counts the calls of the virtual scanToken, so that the rescans of white space show.
class CountingScanner : public Scanner {
public:
    using Scanner::Scanner;
    Token& scanToken() override {
        ++calls;
        return Scanner::scanToken();
    }
    int calls = 0;
};

// How the text reaches the scanner: as a string with keywords (a NUL ends it), through one
// get area holding all of it, or through get areas of a few characters.
constexpr std::size_t v_asString = 0;
constexpr std::size_t v_whole = ~std::size_t{0};
const std::size_t v_chunks[] = {v_asString, 1, 2, 3, 5, 7, 16, 4096, v_whole};

// Everything a caller can observe of one scan: every token with the count and stream state
// after it, the character calls mixed in, the rescans, and what the stream holds after the
// scanner stopped part way.
std::string trace(const std::string& text, std::size_t chunk, ScanType* table, bool counting,
                  unsigned seed) {
    HC_<ScannerKeyword> keywords(&ScannerKeyword::keyFromScannerKeyword);
    keywords.add(new ScannerKeyword("Edge"));
    keywords.add(new ScannerKeyword("e1"));
    ChunkedBuffer buffer(text, chunk == v_whole ? text.size() + 1 : chunk);
    std::istream stream(&buffer);
    std::unique_ptr<Scanner> scanner;
    if (chunk == v_asString)
        scanner = counting ? std::make_unique<CountingScanner>(text.c_str(), &keywords, table)
                           : std::make_unique<Scanner>(text.c_str(), &keywords, table);
    else
        scanner = counting ? std::make_unique<CountingScanner>(stream, table)
                           : std::make_unique<Scanner>(stream, table);
    std::mt19937 random(seed);
    const unsigned stopAfter = random() % 64;
    std::ostringstream out;
    for (unsigned tokens = 0; tokens < 100000; ++tokens) {
        char c = 'z';
        switch (random() % 8) {
        case 0:
            out << "get " << scanner->getChar(c) << int(c) << ' ';
            break;
        case 1:
            out << "peek " << scanner->peekChar(c) << int(c) << ' ';
            break;
        case 2:
            out << "back " << scanner->getChar(c) << int(c) << ' ';
            scanner->putback(c);
            break;
        default:
            break;
        }
        const Token& token = scanner->scanToken();
        out << token.type() << ':' << std::string(token.text(), token.length()) << ' '
            << scanner->numRead() << ' ' << stream.rdstate() << '\n';
        if (token.type() == ST_END && token.length() == 0)
            break;
        if (chunk != v_asString && tokens == stopAfter) {
            out << "rest " << std::string(std::istreambuf_iterator<char>(stream), {});
            break;
        }
    }
    if (counting)
        out << "calls " << static_cast<CountingScanner&>(*scanner).calls;
    keywords.deleteContents();
    return out.str();
}

void expectSamePaths(const std::string& text, unsigned seed) {
    std::unique_ptr<ScanType[]> copy(Scanner::newTypeTable());
    for (std::size_t chunk : v_chunks)
        for (bool counting : {false, true}) {
            std::string fast = trace(text, chunk, nullptr, counting, seed);
            std::string general = trace(text, chunk, copy.get(), counting, seed);
            ASSERT_EQ(fast, general) << "text '" << text << "' chunk " << chunk << " counting "
                                     << counting << " seed " << seed;
        }
}

TEST(ScannerPaths, DefaultTableGivesWhatItsCopyGivesOnTrickyTexts) {
    const std::string cr = "\r";
    // clang-format off
    const std::string texts[] = {
        "", " ", "x", "1", ".", "'", "\"", "@", "\\", "\r", "\r\n", " \t\n\r ",
        "1..2", "1.2.3", ".5", "..", "...", ". .", "1.", "1.e5", ".e5", "1e", "1e+", "1e-x",
        "1e+5.3", "1e5e", "2E+7", "10ns", "0ff1", "1ex", "3e\r-4", "1\r2", "1e\r\r+2", "ab\rc",
        "a\r", "1\r", "x1.5", "1.5x", "1.x", "1..x", "9.9.", "e1", "E1 edge EDGE edges",
        "@-", "@/", "@x", "@", "@@-", "'h", "''", "'\"", "\"a \\\"b\\\" c\"", "\"open",
        "\"\\", "\"a\\", "\"\\\"\"", "\"\r\n\"", "\"\xff\"", "$a_1 _x \xc3\xa9t",
        std::string("a\0b", 3), std::string("\0", 1), "\x1a x", "+-*/()[]:,<>#;^{}~&|!=?",
        "Signal( name(\"clk_3\") edge(12.5e-3 rise, \"4'b01xz\") )\n",
        "Bus( addr[7:0] slice(-12,\"3'b1x0\") )\r\n",
        std::string(9000, 'a') + " " + std::string(9000, '7') + "e5",
        "\"" + std::string(9000, 's') + "\\\"" + std::string(10, 's') + "\" b",
        std::string(8190, 'a') + cr + "bc" + cr + "d", std::string(8195, '1') + "x" + cr + "y",
        std::string(300, ' ') + "x" + std::string(300, '\r'),
    };
    // clang-format on
    unsigned seed = 1;
    for (const std::string& text : texts)
        expectSamePaths(text, seed++);
    // Every byte at the start of a token and after a word, a number and a point.
    for (int byte = 0; byte < 256; ++byte) {
        const char c = static_cast<char>(byte);
        expectSamePaths(std::string{c, 'x', c, '1', c, '.', c, '"', c, '"', c, ' '}, seed++);
    }
}

// Texts made of the pieces where the token rules turn, with now and then any byte at all.
TEST(ScannerPaths, DefaultTableGivesWhatItsCopyGivesOnRandomTexts) {
    const std::string pieces[] = {"a",   "e",    "E",    "x",  "_",    "$",    "1",
                                  "9",   "0",    ".",    "..", "+",    "-",    "@",
                                  "/",   "'",    "\"",   "\\", "\r",   "\n",   " ",
                                  "\t",  "\x80", "\xff", "#",  "(",    ")",    ",",
                                  "1e",  "2.5",  "e+",   "ab", "\r\n", "edge", std::string(1, '\0'),
                                  "\x1a"};
    std::mt19937 random(20241125);
    for (int round = 0; round < 1500; ++round) {
        std::string text;
        for (unsigned i = 0, n = random() % 40; i < n; ++i)
            text += random() % 16 ? pieces[random() % std::size(pieces)]
                                  : std::string(1, static_cast<char>(random()));
        expectSamePaths(text, static_cast<unsigned>(round));
        if (HasFatalFailure())
            return;
    }
}

} // namespace
