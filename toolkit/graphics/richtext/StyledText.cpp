#include "graphics/richtext/StyledText.h"

#include "graphics/device/Device.h"
#include "graphics/device/QtConversion.h"
#include "graphics/device/TqPainter.h"
#include "graphics/device/WsiFont.h"
#include "graphics/richtext/RichTextSurface_p.h"

#include <QPen>

#include <algorithm>
#include <cassert>

namespace {

QString wrapped(const char* open, const QString& inner, const char* close) {
    QString html = QLatin1String(open);
    html += inner;
    html += QLatin1String(close);
    return html;
}

// Lines are as thick as the pen the caller drew with; a width of 0 is Qt's thinnest line.
long lineWidthOf(const TextTarget& target) {
    if (target.device)
        return std::max(1L, target.device->penWidth());
    if (target.painter)
        return std::max(1L, static_cast<long>(target.painter->pen().widthF() + 0.5));
    return 1;
}

} // namespace

// --- Bold and italic: font changes, so that every output format writes a font of its own ---

QString BoldText::toHTML() const {
    return wrapped("<b>", MetaString::toHTML(), "</b>");
}

void BoldText::preApply(WsiFont& font, bool& changed, DevicePoint&) {
    changed = !font.isBold();
    font.setBold(true);
}

void BoldText::postApply(WsiFont& font, bool& changed, MetaString&, const DevicePoint&, bool) {
    if (changed)
        font.setBold(false);
}

QString ItalicText::toHTML() const {
    return wrapped("<i>", MetaString::toHTML(), "</i>");
}

void ItalicText::preApply(WsiFont& font, bool& changed, DevicePoint&) {
    changed = !font.isItalic();
    font.setItalic(true);
}

void ItalicText::postApply(WsiFont& font, bool& changed, MetaString&, const DevicePoint&, bool) {
    if (changed)
        font.setItalic(false);
}

// --- Under- and overlines: drawn lines, the same on every device ----------------------------

QString UnderlineText::toHTML() const {
    return wrapped("<u>", MetaString::toHTML(), "</u>");
}

void UnderlineText::postApply(WsiFont& font, bool&, MetaString& node, const DevicePoint& position,
                              bool drawing) {
    if (!drawing)
        return;
    const long descent = RichTextMetricScope::metric(target(), font).descent();
    const long y = position.y() + std::max(1L, descent / 2);
    RichTextSurface::drawLine(target(), position.x(), position.x() + node.childrenWidth(font), y);
}

QString OverlineText::toHTML() const {
    return wrapped("<span style=\"text-decoration: overline\">", MetaString::toHTML(), "</span>");
}

void OverlineText::postApply(WsiFont& font, bool&, MetaString& node, const DevicePoint& position,
                             bool drawing) {
    if (!drawing)
        return;
    const long ascent = RichTextMetricScope::metric(target(), font).ascent();
    // Inside the ascent by half the line's width, so that a thick line stays in the box.
    const long y = position.y() - ascent + lineWidthOf(target()) / 2;
    RichTextSurface::drawLine(target(), position.x(), position.x() + node.childrenWidth(font), y);
}

// --- Sub- and superscripts ------------------------------------------------------------------

void ScriptText::preApply(WsiFont& font, bool& changed, DevicePoint& position) {
    position.setXY(position.x(), static_cast<std::int32_t>(adjustY(position.y(), font)));
    font.setPointSize(font.pointSize() * v_scale);
    changed = true;
}

void ScriptText::postApply(WsiFont& font, bool& changed, MetaString&, const DevicePoint&, bool) {
    if (changed)
        font.setPointSize(font.pointSize() / v_scale);
}

QString SubscriptText::toHTML() const {
    return wrapped("<sub>", MetaString::toHTML(), "</sub>");
}

long SubscriptText::adjustYdown(WsiFont& font) {
    return RichTextMetricScope::metric(target(), font).ascent() / 4;
}

QString SuperscriptText::toHTML() const {
    return wrapped("<sup>", MetaString::toHTML(), "</sup>");
}

long SuperscriptText::adjustYdown(WsiFont& font) {
    return -(RichTextMetricScope::metric(target(), font).ascent() / 3);
}

// --- Colours --------------------------------------------------------------------------------

ColoredText::ColoredText(TextTarget target, textformat_tag_type type)
    : MetaString(target), m_type(type), m_color(static_cast<wsiColor>(type - 4)) {
    assert(type >= TF_Black && type <= TF_White && "ColoredText needs a colour tag");
}

QString ColoredText::toHTML() const {
    QString open = QLatin1String("<span style=\"color: ");
    open += QtConversion::asQColor(m_color).name();
    open += QLatin1String("\">");
    return open + MetaString::toHTML() + QLatin1String("</span>");
}

long ColoredText::drawRuns(const DevicePoint& start, WsiFont& font) {
    const RichTextSurface::SavedColor saved = RichTextSurface::setColor(target(), m_color);
    const long advance = MetaString::drawRuns(start, font);
    RichTextSurface::restoreColor(target(), saved);
    return advance;
}
