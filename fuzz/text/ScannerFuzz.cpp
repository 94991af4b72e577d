// Scans arbitrary input with the default table, or with a character table, keyword set and
// word flags taken from the input itself.
#include "text/BasicParser.h"
#include "text/Scanner.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>

namespace {

void scanAll(Scanner& scanner) {
    // Every token consumes input or ends it, so the count is bounded by the input's length;
    // the guard only makes a fault show as a crash instead of a hang.
    for (int guard = 0; guard < 1 << 20; ++guard) {
        Token& token = scanner.scanToken();
        if (token.length() > Scanner::v_maxTokenLength)
            __builtin_trap();
        if (token.type() == ST_END && !scanner.testGood())
            return;
        if (token.type() == ST_END && token.length() == 0)
            return;
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
    HC_<ScannerKeyword> keywords(&ScannerKeyword::keyFromScannerKeyword);
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
        parser.setAllowSquareBracketsInWords(static_cast<char>(mode & 16));
        parser.advance();
        while (parser.match(parser.token().type()) && parser.token().type() != ST_END)
            ;
        if (!parser.match(static_cast<ScanType>(mode % ST_COUNT)) && !parser.errorMessage())
            __builtin_trap();
    } else {
        // A NUL in the text ends a C string, so the text scanner sees only its first part.
        Scanner scanner(text.c_str(), &keywords, table.get());
        scanner.setAllowSlashDotInWords(static_cast<char>(mode & 8));
        scanner.setAllowSquareBracketsInWords(static_cast<char>(mode & 16));
        if (mode & 32)
            scanner.setType(' ', ST_NEWLINE);
        scanAll(scanner);
    }
    keywords.deleteContents();
    return 0;
}
