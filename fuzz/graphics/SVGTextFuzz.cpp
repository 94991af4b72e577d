// Writes arbitrary bytes into an SVG file as drawn texts, a font family and the title, the
// bytes split at NUL into those parts. Whatever the bytes, the document must stay
// well-formed XML.
#include "FuzzInput.h"
#include "graphics/export/svg/SVGWriter_p.h"

#include <QGuiApplication>
#include <QXmlStreamReader>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

// Fonts need the application: the writer names Qt's default face when the family is empty.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    static QGuiApplication application(*argc, *argv);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> parts = partsAtNul(data, size);
    std::ostringstream out;
    SVGWriter writer(parts.back().c_str(), out, ExportParameters());
    writer.open(100, 100, 96);
    WsiFont font(parts.size() > 1 ? parts[1].c_str() : nullptr, 9);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        font.setBold(i % 2 == 1);
        writer.text(parts[i], DevicePoint(0, static_cast<std::int32_t>(i)), font, 96 / 72.0);
    }
    if (!writer.close())
        __builtin_trap();
    const std::string text = out.str();
    QXmlStreamReader xml(QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size())));
    while (!xml.atEnd())
        xml.readNext();
    if (xml.hasError())
        __builtin_trap();
    return 0;
}
