// The three constant parsers on any text. Whatever one accepts must format back through
// radixCharacter and formatHDLString into a text that parses to the same radix and language.
#include "core/TqObject.h"
#include "hdl/HDLConstant.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

using Parser = char* (*)(const char*, HDLanguage&, Radix&, char&, unsigned&, unsigned&);

void check(bool condition) {
    if (!condition)
        __builtin_trap();
}

void parseAndReformat(Parser parser, const char* text) {
    HDLanguage language = HDLNone;
    Radix radix = RadixNone;
    char upperCase = 0;
    unsigned size = 0, bits = 0;
    char* digits = parser(text, language, radix, upperCase, size, bits);
    if (digits == nullptr)
        return;
    check(language != HDLNone && radix != RadixNone);
    const char letter = radixCharacter(radix, language, upperCase);
    const std::string again = formatHDLString(digits, language, letter, size);
    HDLanguage language2 = radix == RadixPlainDecimal ? language : HDLNone;
    Radix radix2 = RadixNone;
    char upperCase2 = 0;
    unsigned size2 = 0, bits2 = 0;
    char* digits2 = parseHDLConstant(again.c_str(), language2, radix2, upperCase2, size2, bits2);
    check(digits2 != nullptr && std::strcmp(digits, digits2) == 0);
    check(radix2 == radix && language2 == language && bits2 == bits);
    delete[] digits2;
    delete[] digits;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int started = TqObject::startUp();
    (void)started;
    const std::string text(reinterpret_cast<const char*>(data), size);
    parseAndReformat(parseHDLConstant, text.c_str());
    parseAndReformat(parseVerilogConstant, text.c_str());
    parseAndReformat(parseVHDLConstant, text.c_str());
    unsigned bits = 0;
    (void)isBinary(text.c_str(), bits);
    (void)isOctal(text.c_str(), bits);
    (void)isDecimal(text.c_str(), bits);
    (void)isHexadecimal(text.c_str(), bits, size % 2 == 0);
    return 0;
}
