// Reads arbitrary settings text twice: as a whole settings file, and as a font description
// for the dialog font. Whatever reads must write back to text that reads the same.
#include "graphics/device/WsiFont.h"
#include "settings/Config.h"
#include "settings/IniSettings.h"

#include <QBuffer>

#include <cstddef>
#include <cstdint>
#include <string>

namespace {

class FontReader : public Config {
public:
    using Config::scanFont;
};

void checkSettingsFile(const QByteArray& bytes) {
    QByteArray input = bytes;
    QBuffer source(&input);
    source.open(QIODevice::ReadOnly);
    QSettings::SettingsMap map;
    IniSettings::read(source, map);
    QByteArray written;
    QBuffer sink(&written);
    sink.open(QIODevice::WriteOnly);
    if (!IniSettings::write(sink, map))
        __builtin_trap();
    sink.close();
    QBuffer again(&written);
    again.open(QIODevice::ReadOnly);
    QSettings::SettingsMap back;
    IniSettings::read(again, back);
    // Values lose line breaks and keys lose blanks when written; what was read from one
    // file's lines writes back unchanged.
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
        if (!entry.key().contains(QLatin1Char('=')) && !back.contains(entry.key()))
            __builtin_trap();
}

void checkFont(const std::string& text) {
    const std::unique_ptr<WsiFont> font = FontReader::scanFont(text.c_str());
    if (!font)
        return;
    const std::string description = font->description();
    const std::unique_ptr<WsiFont> again = FontReader::scanFont(description.c_str());
    if (!again || again->description() != description)
        __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    checkSettingsFile(QByteArray(text.data(), static_cast<qsizetype>(text.size())));
    checkFont(text);
    return 0;
}
