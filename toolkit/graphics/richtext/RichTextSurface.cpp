#include "graphics/richtext/RichTextSurface_p.h"

#include "graphics/device/Device.h"
#include "graphics/device/QtConversion.h"
#include "graphics/device/TqPainter.h"

#include <QLineF>
#include <QPen>
#include <QPointF>

namespace {

// The outermost live scope; labels are measured and drawn on the main thread only.
RichTextMetricScope* v_activeScope = nullptr;

bool sameFont(const WsiFont& a, const WsiFont& b) {
    return a.pointSize() == b.pointSize() && a.isBold() == b.isBold() &&
           a.isItalic() == b.isItalic() && a.isUnderline() == b.isUnderline() &&
           a.isOverline() == b.isOverline() && a.family() == b.family();
}

WsiFontMetric measuresOf(const TextTarget& target, const WsiFont& font) {
    if (Device* device = target.device) {
        // The device's own measures: an export device measures as its format prints.
        WsiFont* previous = device->selectedFont();
        WsiFont selected = font;
        device->selectFont(selected);
        WsiFontMetric metric = device->newFontMetric();
        if (previous)
            device->selectFont(*previous);
        else
            device->deselectFont();
        return metric;
    }
    return WsiFontMetric(font, target.painter ? target.painter->device() : nullptr);
}

} // namespace

RichTextMetricScope::RichTextMetricScope() : m_outermost(v_activeScope == nullptr) {
    if (m_outermost)
        v_activeScope = this;
}

RichTextMetricScope::~RichTextMetricScope() {
    if (m_outermost)
        v_activeScope = nullptr;
}

const WsiFontMetric& RichTextMetricScope::metric(const TextTarget& target, const WsiFont& font) {
    if (v_activeScope)
        return v_activeScope->lookUp(target, font);
    static std::optional<WsiFontMetric> loose;
    loose.emplace(measuresOf(target, font));
    return *loose;
}

const WsiFontMetric& RichTextMetricScope::lookUp(const TextTarget& target, const WsiFont& font) {
    for (int i = 0; i < m_used; ++i)
        if (sameFont(m_slots[i].font, font))
            return *m_slots[i].metric;
    int slot = m_used < v_slots ? m_used++ : m_nextVictim++ % v_slots;
    m_slots[slot].font = font;
    m_slots[slot].metric.emplace(measuresOf(target, font));
    return *m_slots[slot].metric;
}

namespace RichTextSurface {

long drawRun(const TextTarget& target, const char* text, unsigned length, const DevicePoint& at,
             WsiFont& font) {
    const long advance =
        RichTextMetricScope::metric(target, font).advance(text, static_cast<int>(length));
    if (target.device) {
        target.device->drawTextUnTransformed(text, at, static_cast<int>(length), font);
    } else if (target.painter && target.painter->isActive()) {
        target.painter->setFont(font.toQFont());
        target.painter->drawText(QPointF(at.x(), at.y()),
                                 WsiFontMetric::textOf(text, static_cast<int>(length)));
    }
    return advance;
}

void drawLine(const TextTarget& target, long x1, long x2, long y) {
    if (x2 <= x1)
        return;
    if (target.device) {
        DevicePoint points[2] = {
            DevicePoint(static_cast<std::int32_t>(x1), static_cast<std::int32_t>(y)),
            DevicePoint(static_cast<std::int32_t>(x2), static_cast<std::int32_t>(y))};
        target.device->drawPolylineUnTransformed(2, points);
    } else if (target.painter && target.painter->isActive()) {
        target.painter->drawLine(QLineF(x1, y, x2, y));
    }
}

SavedColor setColor(const TextTarget& target, long color) {
    SavedColor saved;
    if (target.device) {
        saved.deviceColor = target.device->color();
        target.device->setColor(static_cast<wsiColor>(color));
    } else if (target.painter) {
        saved.penColor = target.painter->pen().color();
        target.painter->setPenColor(QtConversion::asQColor(static_cast<wsiColor>(color)));
    }
    return saved;
}

void restoreColor(const TextTarget& target, const SavedColor& saved) {
    if (target.device)
        target.device->setColor(saved.deviceColor);
    else if (target.painter)
        target.painter->setPenColor(saved.penColor);
}

} // namespace RichTextSurface
