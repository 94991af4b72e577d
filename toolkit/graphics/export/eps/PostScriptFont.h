#pragma once

#include "core/TqExport.h"

#include <span>
#include <string_view>

class WsiFont;

/// PostScriptFont: the 35 standard PostScript fonts (the fonts every PostScript interpreter
/// has) and the mapping of a WsiFont's family, weight and slant onto one of them, for the
/// export writers that name fonts rather than embed them.
class TQ_EXPORT PostScriptFont {
public:
    /// The 35 standard font names ("Times-Roman" ... "ZapfDingbats"), static strings, in the
    /// order of their eleven families (each family lists roman, bold, italic, bold italic).
    static std::span<const char* const> standardNames();

    ///@{
    /// The standard font for family (matched without regard to case, blanks, hyphens and
    /// underscores, through the family's usual names: "Times", "Times New Roman", "serif",
    /// "Arial", "sans-serif", "Courier New", "monospace", "Palatino", "Nimbus Sans", ...)
    /// in the weight and slant asked for. A family that is itself a standard font name
    /// ("Times-Bold") adds its own weight and slant to those asked for. Families with one
    /// face (Symbol, ZapfDingbats, ZapfChancery-MediumItalic) ignore weight and slant. Any
    /// other family, a null or an empty one included, is "Helvetica" in the weight and slant
    /// asked for ("Helvetica-Bold", "Helvetica-Oblique", "Helvetica-BoldOblique"). Returns a
    /// static string; never null.
    static const char* nameFor(std::string_view family, bool bold, bool italic);
    static const char* nameFor(const WsiFont& font);
    ///@}

    /// The family name under which the system's fonts offer a face with the metrics of the
    /// standard font name (fontconfig maps "Helvetica" to a metric-compatible face, for
    /// example), so that text measured with it has the width the PostScript font gives it.
    /// A static string; "Helvetica" for a name that is not standard.
    static const char* measuringFamily(std::string_view standardName);
};
