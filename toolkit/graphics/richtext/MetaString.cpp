#include "graphics/richtext/MetaString.h"

#include "graphics/device/Device.h"
#include "graphics/device/TqPainter.h"
#include "graphics/device/WsiFont.h"
#include "graphics/richtext/RichTextSurface_p.h"
#include "graphics/richtext/TextFormatParser.h"

#include <QFontInfo>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>
#include <ostream>

namespace {

int flagsOf(const WsiFont& font) {
    return (font.isBold() ? 1 : 0) | (font.isItalic() ? 2 : 0) | (font.isUnderline() ? 4 : 0) |
           (font.isOverline() ? 8 : 0);
}

// The font drawText(QRectF, int) draws in when the caller gives none.
WsiFont fontOf(const TextTarget& target) {
    if (target.device && target.device->selectedFont())
        return *target.device->selectedFont();
    WsiFont font;
    if (target.painter) {
        const QFont& qfont = target.painter->font();
        font.setFamily(qfont.family().toUtf8().constData());
        font.setPointSize(QFontInfo(qfont).pointSizeF());
        font.setBold(qfont.bold());
        font.setItalic(qfont.italic());
    }
    return font;
}

} // namespace

// --- MetaString ----------------------------------------------------------------------------

MetaString::MetaString(TextTarget target) : m_target(target) {}

MetaString::~MetaString() {
    MetaString* child = m_first;
    while (child) {
        MetaString* next = child->m_next;
        delete child;
        child = next;
    }
}

void MetaString::addString(MetaString* child) {
    child->m_parent = this;
    child->m_prev = m_last;
    child->m_next = nullptr;
    if (m_last)
        m_last->m_next = child;
    else
        m_first = child;
    m_last = child;
}

int MetaString::childCount() const {
    int count = 0;
    for (const MetaString* child = m_first; child; child = child->m_next)
        ++count;
    return count;
}

MetaString* MetaString::topmostString() {
    MetaString* node = this;
    while (node->m_parent)
        node = node->m_parent;
    return node;
}

std::ostream& MetaString::printOn(std::ostream& out) const {
    const bool styled = tagType() != TF_NoTag;
    if (styled)
        out << TextFormatParser::tagTable()[tagType() - 1].startText << '(';
    for (const MetaString* child = m_first; child; child = child->m_next) {
        if (child != m_first)
            out << ' ';
        child->printOn(out);
    }
    if (styled)
        out << ')';
    return out;
}

QString MetaString::toHTML() const {
    QString html;
    for (const MetaString* child = m_first; child; child = child->m_next) {
        if (!m_parent && child != m_first)
            html += QLatin1String("<br>");
        html += child->toHTML();
    }
    return html;
}

void MetaString::unformattedText(std::stringstream& out) const {
    for (const MetaString* child = m_first; child; child = child->m_next) {
        if (!m_parent && child != m_first)
            out << '\n';
        child->unformattedText(out);
    }
}

long MetaString::drawText(const DevicePoint& at, WsiFont& font, long color) {
    RichTextMetricScope scope;
    RichTextSurface::SavedColor saved;
    if (color != wsiNoColor)
        saved = RichTextSurface::setColor(m_target, color);
    long width = 0;
    if (!m_parent)
        drawLines(at, font, width);
    else
        width = drawRuns(DevicePoint(at.x(), at.y() + static_cast<std::int32_t>(calcAscent(font))),
                         font);
    if (color != wsiNoColor)
        RichTextSurface::restoreColor(m_target, saved);
    return width;
}

void MetaString::drawLines(const DevicePoint& topLeft, WsiFont& font, long& width) {
    long top = topLeft.y();
    for (MetaString* line = m_first; line; line = line->m_next) {
        const long baseline = top + line->calcAscent(font);
        width = std::max(
            width,
            line->drawRuns(DevicePoint(topLeft.x(), static_cast<std::int32_t>(baseline)), font));
        top += line->calcTextExtent(font).y();
    }
}

DeviceRectangle MetaString::drawText(const DevicePoint& at, WsiFont& font, wsiAlignH h, wsiAlignV v,
                                     long color) {
    RichTextMetricScope scope;
    const DevicePoint extent = calcTextExtent(font);
    long x = at.x(), y = at.y();
    if (h == wsiAlignHCenter)
        x -= extent.x() / 2;
    else if (h == wsiAlignRight)
        x -= extent.x();
    if (v == wsiAlignVCenter)
        y -= extent.y() / 2;
    else if (v == wsiAlignBottom)
        y -= extent.y();
    else if (v == wsiAlignBaseline)
        y -= m_parent || !m_first ? calcAscent(font) : m_first->calcAscent(font);
    const DevicePoint topLeft(static_cast<std::int32_t>(x), static_cast<std::int32_t>(y));
    drawText(topLeft, font, color);
    return DeviceRectangle(topLeft.x(), topLeft.y(), topLeft.x() + extent.x(),
                           topLeft.y() + extent.y());
}

QSize MetaString::drawText(const QRectF& rect, int flags) {
    WsiFont font = fontOf(m_target);
    RichTextMetricScope scope;
    const DevicePoint extent = calcTextExtent(font);
    double x = rect.left(), y = rect.top();
    if (flags & Qt::AlignHCenter)
        x += (rect.width() - extent.x()) / 2;
    else if (flags & Qt::AlignRight)
        x += rect.width() - extent.x();
    if (flags & Qt::AlignVCenter)
        y += (rect.height() - extent.y()) / 2;
    else if (flags & Qt::AlignBottom)
        y += rect.height() - extent.y();
    drawText(DevicePoint(static_cast<std::int32_t>(x), static_cast<std::int32_t>(y)), font,
             wsiNoColor);
    return QSize(extent.x(), extent.y());
}

DevicePoint MetaString::calcTextExtent(WsiFont& font) {
    RichTextMetricScope scope;
    long width = 0, height = 0;
    if (!m_parent) {
        for (MetaString* line = m_first; line; line = line->m_next) {
            const DevicePoint e = line->calcTextExtent(font);
            width = std::max<long>(width, e.x());
            height += e.y();
        }
    } else {
        WsiFont styled = font;
        bool changed = false;
        DevicePoint shift(0, 0);
        preApply(styled, changed, shift);
        for (MetaString* child = m_first; child; child = child->m_next) {
            const DevicePoint e = child->calcTextExtent(styled);
            width += e.x();
            height = std::max<long>(height, e.y());
        }
        if (m_first)
            height += std::abs(shift.y());
        postApply(styled, changed, *this, shift, false);
    }
    return DevicePoint(static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));
}

const DevicePoint& MetaString::getTextExtent(WsiFont& font) {
    const int flags = flagsOf(font);
    if (m_extentSize != font.pointSize() || m_extentFlags != flags ||
        m_extentFamily != font.family()) {
        m_extent = calcTextExtent(font);
        m_extentSize = font.pointSize();
        m_extentFlags = flags;
        m_extentFamily = font.family();
    }
    return m_extent;
}

long MetaString::calcAscent(WsiFont& font) {
    RichTextMetricScope scope;
    if (!m_parent)
        return m_first ? m_first->calcAscent(font) : 0;
    WsiFont styled = font;
    bool changed = false;
    DevicePoint shift(0, 0);
    preApply(styled, changed, shift);
    long ascent = 0;
    for (MetaString* child = m_first; child; child = child->m_next)
        ascent = std::max(ascent, child->calcAscent(styled));
    postApply(styled, changed, *this, shift, false);
    return m_first ? ascent - shift.y() : 0;
}

long MetaString::drawRuns(const DevicePoint& start, WsiFont& font) {
    WsiFont styled = font;
    bool changed = false;
    DevicePoint position = start;
    preApply(styled, changed, position);
    long x = position.x();
    for (MetaString* child = m_first; child; child = child->m_next)
        x += child->drawRuns(DevicePoint(static_cast<std::int32_t>(x), position.y()), styled);
    postApply(styled, changed, *this, position, true);
    return x - position.x();
}

long MetaString::childrenWidth(WsiFont& font) {
    long width = 0;
    for (MetaString* child = m_first; child; child = child->m_next)
        width += child->calcTextExtent(font).x();
    return width;
}

void MetaString::preApply(WsiFont&, bool& changed, DevicePoint&) {
    changed = false;
}

void MetaString::postApply(WsiFont&, bool&, MetaString&, const DevicePoint&, bool) {}

long MetaString::adjustY(long y, WsiFont& font) {
    return y + adjustYdown(font);
}

long MetaString::adjustYdown(WsiFont&) {
    return 0;
}

// --- LineString ----------------------------------------------------------------------------

MetaString& LineString::buildBranchFromLeaf(MetaString& leaf) {
    if (leaf.tagType() == TF_NoTag || !leaf.parent())
        return *this;
    MetaString& parentCopy = buildBranchFromLeaf(*leaf.parent());
    MetaString* copy = TextFormatParser::createObjectFromTag(leaf.tagType() - 1, parentCopy,
                                                             target(), leaf.tagType());
    return copy ? *copy : parentCopy;
}

std::ostream& LineString::printOn(std::ostream& out) const {
    out << "L(";
    MetaString::printOn(out);
    return out << ')';
}

// --- TextString ----------------------------------------------------------------------------

TextString* TextString::create(TextTarget target, const char* first, unsigned firstLength,
                               const char* second, unsigned secondLength) {
    if (!first)
        firstLength = 0;
    if (!second)
        secondLength = 0;
    const unsigned length = firstLength + secondLength;
    void* memory = ::operator new(sizeof(TextString) + length + 1);
    auto* node = new (memory) TextString(target, length);
    char* bytes = reinterpret_cast<char*>(node + 1);
    if (firstLength)
        std::memcpy(bytes, first, firstLength);
    if (secondLength)
        std::memcpy(bytes + firstLength, second, secondLength);
    bytes[length] = '\0';
    return node;
}

std::ostream& TextString::printOn(std::ostream& out) const {
    return out << '\'' << text() << '\'';
}

QString TextString::toHTML() const {
    const QString plain = QString::fromUtf8(text(), m_length);
    return TextFormatParser::convertHTMLCharacters() ? plain.toHtmlEscaped() : plain;
}

void TextString::unformattedText(std::stringstream& out) const {
    out.write(text(), m_length);
}

DevicePoint TextString::calcTextExtent(WsiFont& font) {
    const WsiFontMetric& metric = RichTextMetricScope::metric(target(), font);
    return DevicePoint(
        static_cast<std::int32_t>(RichTextSurface::advance(metric, text(), m_length)),
        metric.height());
}

long TextString::calcAscent(WsiFont& font) {
    return RichTextMetricScope::metric(target(), font).ascent();
}

long TextString::drawRuns(const DevicePoint& start, WsiFont& font) {
    return RichTextSurface::drawRun(target(), text(), m_length, start, font);
}
