#include "graphics/richtext/RichTextSurface_p.h"

#include "graphics/device/Device.h"
#include "graphics/device/QtConversion.h"
#include "graphics/device/TqPainter.h"

#include <QLineF>
#include <QPen>
#include <QPointF>

#include <cstdint>
#include <cstring>
#include <memory>

namespace {

// The outermost live scope of this thread.
thread_local RichTextMetricScope* v_activeScope = nullptr;

bool sameFont(const WsiFont& a, const WsiFont& b) {
    return a.pointSize() == b.pointSize() && a.isBold() == b.isBold() &&
           a.isItalic() == b.isItalic() && a.isUnderline() == b.isUnderline() &&
           a.isOverline() == b.isOverline() && a.family() == b.family();
}

WsiFontMetric measuresOf(const TextTarget& target, const WsiFont& font) {
    if (Device* device = target.device) {
        // The device's own measures: an export device measures as its format prints. The
        // selection is only recorded (wsiDevice's), so that measuring leaves the painter's
        // font alone; drawing a run selects its font for real.
        WsiFont* previous = device->selectedFont();
        WsiFont selected = font;
        device->wsiDevice::selectFont(selected);
        WsiFontMetric metric = device->newFontMetric();
        if (previous)
            device->wsiDevice::selectFont(*previous);
        else
            device->wsiDevice::deselectFont();
        return metric;
    }
    return WsiFontMetric(font, target.painter ? target.painter->device() : nullptr);
}

// A direct-mapped table of run advances; a new run takes the place of the one it collides
// with. Fixed in size, allocated once per thread that measures.
class RunAdvanceTable {
public:
    static constexpr unsigned v_maxRun = 40;

    bool find(std::size_t identity, const char* text, unsigned length, long& advance) {
        const Entry& e = m_entries[slotOf(identity, text, length)];
        if (e.length != length || e.identity != identity || std::memcmp(e.text, text, length) != 0)
            return false;
        advance = e.advance;
        return true;
    }

    void keep(std::size_t identity, const char* text, unsigned length, long advance) {
        Entry& e = m_entries[slotOf(identity, text, length)];
        e.identity = identity;
        e.length = length;
        e.advance = advance;
        std::memcpy(e.text, text, length);
    }

private:
    static constexpr unsigned v_entries = 4096;
    struct Entry {
        std::size_t identity = 0;
        unsigned length = v_maxRun + 1; // matches no run
        long advance = 0;
        char text[v_maxRun];
    };

    static unsigned slotOf(std::size_t identity, const char* text, unsigned length) {
        std::uint64_t hash = 14695981039346656037ull ^ identity;
        for (unsigned i = 0; i < length; ++i)
            hash = (hash ^ static_cast<unsigned char>(text[i])) * 1099511628211ull;
        return static_cast<unsigned>((hash ^ (hash >> 29)) % v_entries);
    }

    Entry m_entries[v_entries];
};

RunAdvanceTable& runAdvances() {
    thread_local std::unique_ptr<RunAdvanceTable> table;
    if (!table)
        table = std::make_unique<RunAdvanceTable>();
    return *table;
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
    thread_local std::optional<WsiFontMetric> loose;
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

long advance(const WsiFontMetric& metric, const char* text, unsigned length) {
    int tabulated = 0;
    if (metric.tabulatedAdvance(text, static_cast<int>(length), tabulated))
        return tabulated;
    if (length > RunAdvanceTable::v_maxRun)
        return metric.advance(text, static_cast<int>(length));
    RunAdvanceTable& table = runAdvances();
    long width = 0;
    if (!table.find(metric.identity(), text, length, width)) {
        width = metric.advance(text, static_cast<int>(length));
        table.keep(metric.identity(), text, length, width);
    }
    return width;
}

long drawRun(const TextTarget& target, const char* text, unsigned length, const DevicePoint& at,
             WsiFont& font) {
    const long advance =
        RichTextSurface::advance(RichTextMetricScope::metric(target, font), text, length);
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
