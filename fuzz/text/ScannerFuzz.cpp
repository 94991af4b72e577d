// Scans arbitrary input with the default table, or with a character table, keyword set and
// word flags taken from the input itself. The same text is scanned from a string stream and
// through a stream buffer refilled every few characters: the tokens and the count of
// characters read must agree, whichever way the characters arrive. With the default table the
// text is also scanned through a copy of it, which takes the general path.
#include "text/BasicParser.h"
#include "text/ChunkedBuffer.h"
#include "text/Scanner.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

struct Flags {
    char slashDot;
    char squareBrackets;
    bool newlineBlank;
};

using Scanned = std::vector<std::pair<ScanType, std::string>>;

// The tokens up to the end and the count of characters read by then.
Scanned scanAll(Scanner& scanner, const Flags& flags, unsigned long& numRead) {
    scanner.setAllowSlashDotInWords(flags.slashDot);
    scanner.setAllowSquareBracketsInWords(flags.squareBrackets);
    if (flags.newlineBlank)
        scanner.setType(' ', ST_NEWLINE);
    Scanned tokens;
    // Every token consumes input or ends it, so the count is bounded by the input's length;
    // the guard only makes a fault show as a crash instead of a hang.
    for (int guard = 0; guard < 1 << 20; ++guard) {
        Token& token = scanner.scanToken();
        if (token.length() > Scanner::v_maxTokenLength || token.text()[token.length()] != '\0' ||
            token.type() < 0 || token.type() >= ST_COUNT)
            __builtin_trap();
        tokens.emplace_back(token.type(), std::string(token.text(), token.length()));
        if (token.type() == ST_END && token.length() == 0) {
            numRead = scanner.numRead();
            return tokens;
        }
    }
    __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    std::uint8_t mode = data[0];
    ++data;
    --size;
    std::unique_ptr<ScanType[]> table;
    if ((mode & 1) && size >= 64) {
        // 64 bytes change classes: pairs of (character, class).
        table.reset(Scanner::newTypeTable());
        for (int i = 0; i < 32; ++i)
            Scanner::setType(data[2 * i], static_cast<ScanType>(data[2 * i + 1] % ST_COUNT),
                             table.get());
        data += 64;
        size -= 64;
    }
    std::string text(reinterpret_cast<const char*>(data), size);
    HC_<ScannerKeyword> keywords(&ScannerKeyword::keyFromScannerKeyword);
    if (mode & 2) {
        // Keywords are the first few words of the text itself.
        std::istringstream words(text);
        std::string word;
        for (int i = 0; i < 4 && words >> word; ++i) {
            auto* keyword = new ScannerKeyword(word.c_str());
            if (!keywords.add(keyword))
                delete keyword;
        }
    }
    if (mode & 4) {
        std::istringstream in(text);
        BasicParser parser(in, table.get());
        parser.setAllowSlashDotInWords(static_cast<char>(mode & 8));
        parser.advance();
        while (parser.match(parser.token().type()) && parser.token().type() != ST_END)
            ;
        if (!parser.match(static_cast<ScanType>(mode % ST_COUNT)) && !parser.errorMessage())
            __builtin_trap();
    } else if (mode & 2) {
        // Only a text scanner takes keywords; a NUL ends its text.
        const Flags flags{static_cast<char>(mode & 8), static_cast<char>(mode & 16), false};
        Scanner scanner(text.c_str(), &keywords, table.get());
        unsigned long numRead = 0;
        scanAll(scanner, flags, numRead);
    } else {
        const Flags flags{static_cast<char>(mode & 8), static_cast<char>(mode & 16),
                          (mode & 32) != 0};
        std::istringstream whole(text);
        Scanner wholeScanner(whole, table.get());
        ChunkedBuffer buffer(text, 1 + (mode >> 6) * 2);
        std::istream chunked(&buffer);
        Scanner chunkedScanner(chunked, table.get());
        unsigned long wholeRead = 0, chunkedRead = 0;
        Scanned tokens = scanAll(wholeScanner, flags, wholeRead);
        if (tokens != scanAll(chunkedScanner, flags, chunkedRead) || wholeRead != chunkedRead ||
            wholeRead != text.size() + 1)
            __builtin_trap();
        if (!table) {
            // The shared default table has a path of its own; a copy of it takes the general
            // one.
            std::unique_ptr<ScanType[]> copy(Scanner::newTypeTable());
            std::istringstream again(text);
            Scanner general(again, copy.get());
            unsigned long generalRead = 0;
            if (tokens != scanAll(general, flags, generalRead) || generalRead != wholeRead)
                __builtin_trap();
        }
    }
    keywords.deleteContents();
    return 0;
}
