/// Label: the one place where the renderer measures and draws text that may carry the
/// rich-text tag markup (<b>, <sub>, <o>, <red>, ...): signal names, arrow labels, markers and
/// annotations. Marked-up text goes through the toolkit's TextFormatParser, plain text
/// straight to the device.
#pragma once

#include "graphics/device/Device.h"

#include <string>

/// The width of text in font, in the device's units.
long labelWidth(Device& device, const std::string& text, WsiFont& font);
/// Draws text aligned at at (sheet coordinates) in the current colour (tags may change it).
void drawLabel(Device& device, const std::string& text, const SheetPoint& at, WsiFont& font,
               wsiAlignH h, wsiAlignV v);
