// Parses arbitrary bytes as a marked-up label, then measures it, converts it to HTML and
// strips its markup. Whatever the bytes: no crash, no hang, the text without markup never
// longer than the input, and a text free of markup characters kept exactly.
#include "graphics/device/WsiFont.h"
#include "graphics/richtext/MetaString.h"
#include "graphics/richtext/TextFormatParser.h"
#include "text/Scanner.h"

#include <QGuiApplication>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

// Qt's font database keeps fontconfig's patterns for the life of the process, out of the
// leak checker's sight; they are not the parser's.
extern "C" const char* __lsan_default_suppressions() {
    return "leak:libfontconfig.so\n";
}

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static QGuiApplication application(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    const char* text = bytes.c_str();
    const std::size_t length = std::strlen(text);

    std::unique_ptr<char[]> plain(TextFormatParser::removeFormatting(text));
    const std::size_t plainLength = std::strlen(plain.get());
    if (plainLength > length)
        std::abort();
    // Without '<' every byte up to the end (NUL or Ctrl-Z) but carriage returns is text,
    // as long as no run is cut at the scanner's longest token.
    const std::size_t end = std::strcspn(text, "\x1A");
    std::string expected;
    bool markupFree = true;
    for (std::size_t i = 0; i < end; ++i) {
        if (text[i] == '<')
            markupFree = false;
        else if (text[i] != '\r')
            expected += text[i];
    }
    if (markupFree && length <= Scanner::v_maxTokenLength && expected != plain.get())
        std::abort();

    TextFormatParser parser(text);
    MetaString& root = parser.parse();
    WsiFont font(nullptr, 1 + (size % 24));
    const DevicePoint extent = root.getTextExtent(font);
    if (extent.x() < 0 || extent.y() < 0)
        std::abort();
    if (root.toHTML().size() < 0)
        std::abort();
    return 0;
}
