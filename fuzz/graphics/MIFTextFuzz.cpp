// Writes arbitrary bytes as the text of a MIF file: a drawn text line, a font family, and a
// table built by table calls in any order, the bytes split at NUL into the calls' texts,
// each text's first byte choosing its call. Whatever the bytes, every string must stay
// closed and free of raw 8-bit bytes, and every statement balanced.
#include "FuzzInput.h"
#include "graphics/export/mif/MIFWriter_p.h"

#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

namespace {

bool wellFormed(const std::string& text) {
    int depth = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '`') {
            for (++i; i < text.size() && text[i] != '\''; ++i) {
                if (text[i] == '\\')
                    ++i;
                else if (text[i] == '\n' || static_cast<unsigned char>(text[i]) >= 0x80)
                    return false;
            }
            if (i >= text.size())
                return false;
        } else if (c == '#') {
            while (i < text.size() && text[i] != '\n')
                ++i;
        } else if (c == '<') {
            ++depth;
        } else if (c == '>' && --depth < 0) {
            return false;
        }
    }
    return depth == 0;
}

void tableCall(MIFWriter& writer, const std::string& text) {
    const int choice = text.empty() ? 0 : static_cast<unsigned char>(text[0]) % 12;
    switch (choice) {
    case 0:
        return writer.writeCellText(text.c_str());
    case 1:
        return writer.startTable(text.c_str(), text.size() % 2 == 0);
    case 2:
        return writer.endTable();
    case 3:
        return writer.startHeader();
    case 4:
        return writer.endHeader();
    case 5:
        return writer.startBody();
    case 6:
        return writer.endBody();
    case 7:
        return writer.startRow();
    case 8:
        return writer.endRow();
    case 9:
    case 10:
        return writer.startCell(static_cast<int>(text.size() % 4) - 1);
    default:
        return writer.endCell();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::string> parts = partsAtNul(data, size);
    for (const bool table : {false, true}) {
        std::ostringstream out;
        MIFWriter writer("fuzz", out, ExportParameters(), DeviceRectangle(0, 0, 1000, 1000));
        MIFFont font;
        font.family = parts.size() > 1 ? parts[1] : "Helvetica";
        writer.text(parts[0].c_str(), static_cast<int>(size % 7) - 1, DevicePoint(10, 10),
                    wsiAlignLeft, font);
        if (table) {
            writer.startTable(nullptr, false);
            for (const std::string& part : parts)
                tableCall(writer, part);
        }
        if (!writer.close() || !wellFormed(out.str()))
            __builtin_trap();
    }
    return 0;
}
