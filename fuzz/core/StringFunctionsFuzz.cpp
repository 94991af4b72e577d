// Runs the string functions that read text from outside (files, command lines, user input)
// on arbitrary bytes, and checks what each promises about its result: the scratch results
// stay within their 256 bytes, quoting and expanding are inverses, the command-line words
// never hold more than the line, and the ring results are as long as their rules say.
#include "core/CommandLine.h"
#include "core/StringFunctions.h"
#include "core/TqObject.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

namespace {

void check(bool condition) {
    if (!condition)
        __builtin_trap();
}

// The scratch is 256 bytes: its results must be terminated within them.
void checkScratch(const char* result) {
    check(result && std::memchr(result, '\0', 256) != nullptr);
}

void checkInPlace(const std::string& text) {
    std::string copy = text;
    check(std::strlen(stripLeading(copy.data(), " \t")) <= text.size());
    copy = text;
    check(std::strlen(stripTrailing(copy.data(), " 0")) <= text.size());
    copy = text;
    check(std::strlen(stripZeroFraction(copy.data())) <= text.size());
    copy = text;
    check(std::strlen(strReverse(strToUpper(copy.data()))) == std::strlen(text.c_str()));
}

void checkQuoting(const char* text) {
    const std::unique_ptr<char[]> quoted(strAsQuotedString(text));
    const std::unique_ptr<char[]> expanded(strExpandQuotedString(quoted.get()));
    check(std::strcmp(expanded.get(), text) == 0);
    // Expanding never lengthens its input, whatever the input is.
    const std::unique_ptr<char[]> raw(strExpandQuotedString(text));
    check(std::strlen(raw.get()) <= std::strlen(text));
}

void checkCommandLine(const char* text) {
    std::string line = text;
    int argc = 0;
    char** argv = initArgs(line.data(), argc);
    check(argc >= 1 && argv[0] == nullptr);
    std::size_t total = 0;
    for (int i = 1; i < argc; ++i) {
        total += std::strlen(argv[i]);
        delete[] argv[i];
    }
    delete[] argv;
    check(total <= std::strlen(text));
}

} // namespace

// Input: a separator byte, a field number byte, then up to three NUL-separated texts used as
// the text, the text to find and its replacement.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const int ringStarted = TqObject::startUp();
    (void)ringStarted;
    if (size < 2)
        return 0;
    const char separator = static_cast<char>(data[0]);
    const int field = static_cast<signed char>(data[1]);
    const std::string rest(reinterpret_cast<const char*>(data + 2), size - 2);
    const char* text = rest.c_str();
    const char* find = text + std::strlen(text);
    if (find < rest.data() + rest.size())
        ++find;
    const char* replacement = find + std::strlen(find);
    if (replacement < rest.data() + rest.size())
        ++replacement;

    checkScratch(strReplaceStr(text, find, replacement));
    checkScratch(strExtractField(field, text, separator));
    checkInPlace(text);
    checkQuoting(text);
    checkCommandLine(text);

    isNumericString(text, field & 1);
    hasVisibleCharacters(text);
    std::string lines = text;
    const char* line = lineNumber(numLines(text), lines.data());
    check(line != nullptr && std::strchr(line, '\n') == nullptr);

    const std::size_t length = std::strlen(text);
    check(std::strlen(incrementOfString(text, field * 1000003)) <= length + 11);
    check(
        std::strlen(asBin(static_cast<unsigned>(length), static_cast<unsigned char>(separator))) ==
        (separator ? static_cast<unsigned char>(separator) : 32u));
    return 0;
}
