#include "graphics/export/eps/PostScriptFont.h"

#include "graphics/device/WsiFont.h"

#include <QByteArray>
#include <array>
#include <cstddef>

namespace {

// One family of standard fonts: its faces (roman, bold, italic, bold italic; a family with
// one face repeats it), the family name that measures like it, and the names by which a
// caller may ask for it, in the normalised form of normalise() below.
struct Family {
    std::array<const char*, 4> faces;
    const char* measuring;
    std::array<std::string_view, 8> aliases;
};

constexpr std::array<Family, 11> v_families{{
    {{"Times-Roman", "Times-Bold", "Times-Italic", "Times-BoldItalic"},
     "Times",
     {"times", "timesroman", "timesnewroman", "serif", "nimbusroman", "liberationserif", "tinos",
      "roman"}},
    {{"Helvetica", "Helvetica-Bold", "Helvetica-Oblique", "Helvetica-BoldOblique"},
     "Helvetica",
     {"helvetica", "arial", "sans", "sansserif", "nimbussans", "liberationsans", "arimo", "swiss"}},
    {{"Helvetica-Narrow", "Helvetica-Narrow-Bold", "Helvetica-Narrow-Oblique",
      "Helvetica-Narrow-BoldOblique"},
     "Helvetica Narrow",
     {"helveticanarrow", "arialnarrow", "nimbussansnarrow", "liberationsansnarrow"}},
    {{"Courier", "Courier-Bold", "Courier-Oblique", "Courier-BoldOblique"},
     "Courier",
     {"courier", "couriernew", "monospace", "mono", "nimbusmono", "nimbusmonops", "liberationmono",
      "cousine"}},
    {{"Symbol", "Symbol", "Symbol", "Symbol"},
     "Symbol",
     {"symbol", "standardsymbolsps", "standardsymbols"}},
    {{"ZapfDingbats", "ZapfDingbats", "ZapfDingbats", "ZapfDingbats"},
     "Zapf Dingbats",
     {"zapfdingbats", "itczapfdingbats", "dingbats", "d050000l"}},
    {{"AvantGarde-Book", "AvantGarde-Demi", "AvantGarde-BookOblique", "AvantGarde-DemiOblique"},
     "Avant Garde",
     {"avantgarde", "itcavantgarde", "itcavantgardegothic", "avantgardegothic", "urwgothic"}},
    {{"Bookman-Light", "Bookman-Demi", "Bookman-LightItalic", "Bookman-DemiItalic"},
     "Bookman",
     {"bookman", "itcbookman", "bookmanoldstyle", "urwbookman"}},
    {{"NewCenturySchlbk-Roman", "NewCenturySchlbk-Bold", "NewCenturySchlbk-Italic",
      "NewCenturySchlbk-BoldItalic"},
     "New Century Schoolbook",
     {"newcenturyschlbk", "newcenturyschoolbook", "centuryschoolbook", "c059"}},
    {{"Palatino-Roman", "Palatino-Bold", "Palatino-Italic", "Palatino-BoldItalic"},
     "Palatino",
     {"palatino", "palatinolinotype", "bookantiqua", "p052", "urwpalladio"}},
    {{"ZapfChancery-MediumItalic", "ZapfChancery-MediumItalic", "ZapfChancery-MediumItalic",
      "ZapfChancery-MediumItalic"},
     "Zapf Chancery",
     {"zapfchancery", "itczapfchancery", "z003"}},
}};

// The 35 names, family by family.
constexpr std::array<const char*, 35> v_standardNames{
    "Times-Roman",
    "Times-Bold",
    "Times-Italic",
    "Times-BoldItalic",
    "Helvetica",
    "Helvetica-Bold",
    "Helvetica-Oblique",
    "Helvetica-BoldOblique",
    "Helvetica-Narrow",
    "Helvetica-Narrow-Bold",
    "Helvetica-Narrow-Oblique",
    "Helvetica-Narrow-BoldOblique",
    "Courier",
    "Courier-Bold",
    "Courier-Oblique",
    "Courier-BoldOblique",
    "Symbol",
    "ZapfDingbats",
    "AvantGarde-Book",
    "AvantGarde-Demi",
    "AvantGarde-BookOblique",
    "AvantGarde-DemiOblique",
    "Bookman-Light",
    "Bookman-Demi",
    "Bookman-LightItalic",
    "Bookman-DemiItalic",
    "NewCenturySchlbk-Roman",
    "NewCenturySchlbk-Bold",
    "NewCenturySchlbk-Italic",
    "NewCenturySchlbk-BoldItalic",
    "Palatino-Roman",
    "Palatino-Bold",
    "Palatino-Italic",
    "Palatino-BoldItalic",
    "ZapfChancery-MediumItalic",
};

constexpr std::size_t v_helvetica = 1;
constexpr std::size_t v_maxFamilyLength = 64;

// Lower case, without blanks, hyphens and underscores; false when the family is too long
// to be one of ours.
bool normalise(std::string_view family, std::array<char, v_maxFamilyLength>& buffer,
               std::string_view& out) {
    std::size_t n = 0;
    for (const char c : family) {
        if (c == ' ' || c == '-' || c == '_' || c == '\t')
            continue;
        if (n == buffer.size())
            return false;
        buffer[n++] = (c >= 'A' && c <= 'Z') ? char(c - 'A' + 'a') : c;
    }
    out = std::string_view(buffer.data(), n);
    return true;
}

const char* face(std::size_t family, bool bold, bool italic) {
    return v_families[family].faces[(bold ? 1 : 0) + (italic ? 2 : 0)];
}

} // namespace

std::span<const char* const> PostScriptFont::standardNames() {
    return v_standardNames;
}

const char* PostScriptFont::nameFor(std::string_view family, bool bold, bool italic) {
    std::array<char, v_maxFamilyLength> buffer{};
    std::string_view key;
    if (!normalise(family, buffer, key) || key.empty())
        return face(v_helvetica, bold, italic);
    for (std::size_t f = 0; f < v_families.size(); ++f)
        for (const std::string_view alias : v_families[f].aliases)
            if (!alias.empty() && alias == key)
                return face(f, bold, italic);
    // A standard name itself: its face's weight and slant are added to those asked for.
    for (std::size_t f = 0; f < v_families.size(); ++f)
        for (std::size_t i = 0; i < 4; ++i) {
            std::array<char, v_maxFamilyLength> nameBuffer{};
            std::string_view name;
            if (normalise(v_families[f].faces[i], nameBuffer, name) && name == key)
                return face(f, bold || (i & 1) != 0, italic || (i & 2) != 0);
        }
    return face(v_helvetica, bold, italic);
}

const char* PostScriptFont::nameFor(const WsiFont& font) {
    const QByteArray family = font.family().toUtf8();
    return nameFor(std::string_view(family.constData(), std::size_t(family.size())), font.isBold(),
                   font.isItalic());
}

const char* PostScriptFont::measuringFamily(std::string_view standardName) {
    for (const Family& family : v_families)
        for (const char* name : family.faces)
            if (standardName == name)
                return family.measuring;
    return v_families[v_helvetica].measuring;
}
