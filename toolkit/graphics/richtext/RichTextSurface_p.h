/// RichTextSurface: what the rich-text nodes need from a device or painter, in one place:
/// the measures of a font, a run of text drawn at a baseline, a line, the colour.
#pragma once

#include "graphics/device/WsiFont.h"
#include "graphics/richtext/MetaString.h"

#include <QColor>
#include <optional>

/// Keeps the measures of the fonts used while it lives, so that one measuring or drawing
/// pass asks the device once per font rather than once per run. Scopes nest: only the
/// outermost one keeps measures, so a device whose state changes between passes is asked
/// again on the next pass. Scopes are per thread.
class RichTextMetricScope {
public:
    RichTextMetricScope();
    ~RichTextMetricScope();
    RichTextMetricScope(const RichTextMetricScope&) = delete;
    RichTextMetricScope& operator=(const RichTextMetricScope&) = delete;

    /// The measures of font on target, from the outermost scope's store (valid while it
    /// lives); outside every scope, from a store that the next call replaces.
    static const WsiFontMetric& metric(const TextTarget& target, const WsiFont& font);

private:
    static constexpr int v_slots = 8;
    struct Slot {
        WsiFont font;
        std::optional<WsiFontMetric> metric;
    };
    const WsiFontMetric& lookUp(const TextTarget& target, const WsiFont& font);

    Slot m_slots[v_slots];
    int m_used = 0;
    int m_nextVictim = 0;
    bool m_outermost;
};

namespace RichTextSurface {
/// The advance of the first length bytes of text in metric. Runs of printable ASCII come
/// from the metric's table of the font; other short runs are kept in a per-thread table keyed
/// by the metric's identity and the bytes, so a label measured again (every repaint of a
/// diagram) is not shaped again.
long advance(const WsiFontMetric& metric, const char* text, unsigned length);
/// Draws the first length bytes of text with the left end of its baseline at at; returns
/// the advance (measured even when there is nothing to draw on).
long drawRun(const TextTarget& target, const char* text, unsigned length, const DevicePoint& at,
             WsiFont& font);
/// A horizontal line from x1 to x2 at y in the current colour and pen width.
void drawLine(const TextTarget& target, long x1, long x2, long y);

/// The colour state of a target, to be set back after a run in another colour.
struct SavedColor {
    wsiColor deviceColor = wsiNoColor;
    QColor penColor;
};
/// Sets color (a wsiColor value) as the drawing colour and returns what to set back.
SavedColor setColor(const TextTarget& target, long color);
void restoreColor(const TextTarget& target, const SavedColor& saved);
} // namespace RichTextSurface
