/// \file
/// The drawing vocabulary of the device interface: colours, pen styles, line and curve caps,
/// text alignments, background and draw modes. Devices pass them through unchanged.
#pragma once

#include <cstdint>

/// Values 3 to 18 are also the sixteen colour names of the rich-text markup ("black" ...
/// "white"); 1 and 2 are the plain white and black of the window system, 19 its foreground.
enum wsiColor : int {
    wsiNoColor = 0,
    wsiSystemWhite = 1,
    wsiSystemBlack = 2,
    wsiBlack = 3,
    wsiDarkGray = 4,
    wsiGray = 5,
    wsiPaleGray = 6,
    wsiDarkRed = 7,
    wsiRed = 8,
    wsiPaleRed = 9,
    wsiDarkGreen = 10,
    wsiGreen = 11,
    wsiPaleGreen = 12,
    wsiDarkBlue = 13,
    wsiBlue = 14,
    wsiPaleBlue = 15,
    wsiPurple = 16,
    wsiYellow = 17,
    wsiWhite = 18,
    wsiForeground = 19
};

/// The dash pattern of lines; values 0 to 5 are stored in files and settings.
enum wsiPenStyle : int {
    wsiPenCustomDash = -1,
    wsiPenSolid = 0,
    wsiPenDash = 1,
    wsiPenDot = 2,
    wsiPenDashDot = 3,
    wsiPenDashDotDot = 4,
    wsiPenNull = 5
};

/// How a capped polyline ends: plainly (round) or with a filled arrow head.
enum wsiLineCap : int { wsiLineCapRound = 0, wsiLineCapArrow = 1 };

/// How a curved arrow ends: without a head or with one at its end point.
enum wsiCurveCap : int { wsiCurveCapNone = 0, wsiCurveCapArrow = 1 };

/// Where text is anchored horizontally: its left end, its middle or its right end.
enum wsiAlignH : int { wsiAlignLeft = 0, wsiAlignHCenter = 1, wsiAlignRight = 2 };

/// Baseline puts the text's baseline, the others its box's edge or middle, at the point.
enum wsiAlignV : int {
    wsiAlignTop = 0,
    wsiAlignVCenter = 1,
    wsiAlignBottom = 2,
    wsiAlignBaseline = 3
};

/// Whether text and dashed lines fill their background with the background colour.
enum wsiBackgroundFillMode : int { wsiTransparent = 1, wsiOpaque = 2 };

/// How drawn pixels combine with those already there.
enum wsiDrawMode : int { wsiDrawCopy = 0, wsiDrawXor = 1, wsiDrawInvert = 2 };

/// A pixel's colour as 0x00RRGGBB.
using wsiRGBColor = std::uint32_t;
