#pragma once

#include "core/TqExport.h"

#include <QRgb>
#include <cstddef>

/// SVGFormat: the text forms of the values an SVG file holds (numbers, colours, escaped
/// text), written straight into the caller's buffer so that the writer formats without
/// allocating. Every function appends at out, which must have the room its constant names,
/// and returns the end of what it wrote; nothing is terminated with a NUL.
class TQ_EXPORT SVGFormat {
public:
    // --- Numbers ----------------------------------------------------------------------------
    /// The most bytes appendNumber and appendInteger write.
    static constexpr std::size_t v_numberRoom = 24;
    /// An integer in decimal: -12 → "-12".
    static char* appendInteger(char* out, long long value);
    /// The shortest decimal form with at most three decimals (rounded half away from zero),
    /// never an exponent: 7 → "7", 2.5 → "2.5", 0.125 → ".125", -0.0004 → "0",
    /// 1 / 3.0 → ".333". Magnitudes beyond 10^15 are clamped to it; NaN and infinities give
    /// "0".
    static char* appendNumber(char* out, double value);

    // --- Colours ----------------------------------------------------------------------------
    /// The most bytes appendColor writes.
    static constexpr std::size_t v_colorRoom = 7;
    /// The colour's red, green and blue as "#rgb" where each channel's two hex digits agree
    /// (white "#fff", red "#f00"), else "#rrggbb", in lower case; alpha is not written.
    static char* appendColor(char* out, QRgb color);

    // --- Text -------------------------------------------------------------------------------
    /// The most bytes appendEscaped writes for each byte of its input.
    static constexpr std::size_t v_escapedRoom = 6;
    /// The n bytes of UTF-8 text as XML 1.0 character data that may stand in an element or
    /// between double quotes: "&", "<", ">" and '"' as entity references, tab, line feed and
    /// carriage return as character references; the other control characters, which XML
    /// cannot hold, are dropped; a byte that does not begin a well-formed UTF-8 sequence of
    /// a character XML allows (overlong forms, surrogates, U+FFFE and U+FFFF, beyond
    /// U+10FFFF) becomes U+FFFD, as a Qt string would show it.
    static char* appendEscaped(char* out, const char* text, std::size_t n);
};
