/// Label: the one place where the renderer measures and draws text that may carry the
/// rich-text tag markup (<b>, <sub>, <red>, ...): signal names, arrow labels, markers and
/// annotations. Until the toolkit's rich-text parser draws on devices, the tags are removed
/// and the plain text is drawn.
#pragma once

#include "graphics/device/wsiDevice.h"

#include <string>

/// text without the markup's tags (tags not of the markup, such as "<7:0>", stay).
std::string labelPlainText(const std::string& text);
/// The width of text in font, in the device's units.
long labelWidth(wsiDevice& device, const std::string& text, WsiFont& font);
/// Draws text aligned at at (sheet coordinates).
void drawLabel(wsiDevice& device, const std::string& text, const SheetPoint& at, WsiFont& font,
               wsiAlignH h, wsiAlignV v);
