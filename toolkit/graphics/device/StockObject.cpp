#include "graphics/device/StockObject.h"

#include "graphics/device/QtConversion.h"

#include <vector>

namespace {

struct Entry {
    bool live;
    bool isPen;
    QColor color;
    Qt::PenStyle style;
    int width;
};

std::vector<Entry>& table() {
    static std::vector<Entry> entries = {
        {true, true, Qt::black, Qt::SolidLine, 0}, {true, true, Qt::white, Qt::SolidLine, 0},
        {true, false, Qt::black, Qt::NoPen, 0},    {true, false, Qt::darkGray, Qt::NoPen, 0},
        {true, false, Qt::gray, Qt::NoPen, 0},     {true, false, Qt::lightGray, Qt::NoPen, 0},
        {true, false, Qt::white, Qt::NoPen, 0},
    };
    return entries;
}

const Entry* entryOf(wsiHandle handle) {
    const std::vector<Entry>& entries = table();
    if (handle < 0 || handle >= static_cast<int>(entries.size()) || !entries[handle].live)
        return nullptr;
    return &entries[handle];
}

wsiHandle allocate(const Entry& entry) {
    std::vector<Entry>& entries = table();
    for (int i = StockObject::StockCount; i < static_cast<int>(entries.size()); ++i) {
        if (!entries[i].live) {
            entries[i] = entry;
            return i;
        }
    }
    entries.push_back(entry);
    return static_cast<int>(entries.size()) - 1;
}

StockObject::Stock stockPen(wsiColor color, wsiPenStyle style, long width) {
    if ((style == wsiPenSolid || style == wsiPenDash) && width == 0) {
        if (color == wsiBlack)
            return StockObject::BlackPen;
        if (color == wsiWhite)
            return StockObject::WhitePen;
    }
    return StockObject::StockCount;
}

StockObject::Stock stockBrush(wsiColor color) {
    switch (color) {
    case wsiBlack:
        return StockObject::BlackBrush;
    case wsiDarkGray:
        return StockObject::DarkGrayBrush;
    case wsiGray:
        return StockObject::GrayBrush;
    case wsiPaleGray:
        return StockObject::LightGrayBrush;
    case wsiWhite:
        return StockObject::WhiteBrush;
    default:
        return StockObject::StockCount;
    }
}

} // namespace

StockObject::StockObject(Stock stock, bool isPen, wsiColor color, wsiPenStyle style, long width)
    : m_handle(stock), m_isStock(stock != StockCount) {
    if (!m_isStock) {
        m_handle = allocate({true, isPen, QtConversion::asQColor(color),
                             isPen ? QtConversion::asPenStyle(style) : Qt::NoPen,
                             static_cast<int>(width)});
    }
}

StockObject::~StockObject() {
    if (!m_isStock)
        table()[m_handle].live = false;
}

QPen StockObject::penOf(wsiHandle handle) {
    const Entry* entry = entryOf(handle);
    if (!entry || !entry->isPen)
        return QPen();
    return QPen(QBrush(entry->color), entry->width, entry->style);
}

QBrush StockObject::brushOf(wsiHandle handle) {
    const Entry* entry = entryOf(handle);
    if (!entry || entry->isPen)
        return QBrush();
    return QBrush(entry->color);
}

int StockObject::ownedCount() {
    int count = 0;
    const std::vector<Entry>& entries = table();
    for (int i = StockCount; i < static_cast<int>(entries.size()); ++i)
        count += entries[i].live ? 1 : 0;
    return count;
}

Pen::Pen(wsiColor color, wsiPenStyle style, long width)
    : StockObject(stockPen(color, style, width), true, color, style, width) {}

Brush::Brush(wsiColor color) : StockObject(stockBrush(color), false, color, wsiPenSolid, 0) {}
