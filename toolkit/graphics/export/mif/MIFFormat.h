#pragma once

#include "core/TqExport.h"

#include <QColor>
#include <cstddef>
#include <string>

/// MIFFormat: the text forms of the values a MIF file holds (numbers, quoted strings, colour
/// separations), shared by every MIF writer so that all of them spell a value alike.
class TQ_EXPORT MIFFormat {
public:
    // --- Numbers ----------------------------------------------------------------------------
    /// Every number goes through std::to_chars, never the C locale or a stream's formatting.

    ///@{
    /// A real rounded half away from zero to two decimals, trailing zeros dropped but one
    /// decimal always kept: 12.3 → "12.3", 7 → "7.0", 0.125 → "0.13", -0.001 → "0.0".
    /// Infinities and NaN are written as "0.0". Appended to out.
    static void appendReal(std::string& out, double value);
    static void appendInteger(std::string& out, long long value);
    ///@}
    /// The general form of printf's "%g" (six significant digits, no trailing zeros):
    /// 5 → "5", 2.5 → "2.5", 1234567 → "1.23457e+06". Non-finite values give "0".
    static void appendGeneral(std::string& out, double value);
    ///@{
    /// appendReal and appendGeneral into new strings, for callers that build one value at
    /// a time.
    static std::string real(double value);
    static std::string general(double value);
    ///@}

    // --- Strings ----------------------------------------------------------------------------
    /// Appends the first length bytes of the UTF-8 text (up to its NUL; all of it when
    /// length < 0) in the form MIF reads between a back quote and a quote: `\\` for a
    /// backslash, `\>` for ">", `\q` for "'", `\Q` for a back quote, `\t` for a tab, and
    /// `\xNN ` (two lower-case hex
    /// digits and a blank) for every other control character and every character of MIF's
    /// Roman character set beyond ASCII. Characters that set lacks become "?"; bytes that
    /// are not valid UTF-8 are read as Latin-1, so older 8-bit text keeps its accents. A null
    /// text appends nothing.
    static void appendString(std::string& out, const char* text, int length = -1);
    /// The byte that stands for the Unicode character code in MIF's Roman character set, or
    /// -1 when the set lacks it.
    static int romanCode(char32_t code);

    // --- Colours ----------------------------------------------------------------------------
    /// MIF's standard colour separations.
    enum Separation : int {
        separationBlack = 0,
        separationWhite = 1,
        separationRed = 2,
        separationGreen = 3,
        separationBlue = 4,
        separationCyan = 5,
        separationMagenta = 6,
        separationYellow = 7
    };
    /// The separation a colour prints on, or -1 for an invalid colour (no colour: the caller
    /// keeps the separation it has). In grey-scale mode white stays white and every other
    /// colour is black, so that pale lines do not vanish on paper. In colour mode the
    /// colours of the device vocabulary map by name (the greys to black, the reds, greens and
    /// blues to their separation, pale blue to cyan, purple to magenta, yellow to yellow);
    /// any other colour goes to white when nearly white, to black when nearly grey, and
    /// otherwise to the separation nearest its hue.
    static int separationOf(const QColor& color, bool grayScale);
};
