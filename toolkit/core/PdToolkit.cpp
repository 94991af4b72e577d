#include "core/PdToolkit.h"

#include "core/SToolkitClient.h"
#include "core/TqObject.h"

#include <climits>
#include <cstring>
#include <vector>

namespace {
struct StringRange {
    int first;
    int last;
    PdStringEntry* table;
};

// Ordered by first id, ascending; each range ends just before the next one starts.
std::vector<StringRange> ranges;
HINSTANCE appHandle = nullptr;
// Recorded when the library is loaded, as the module attach of the original platform did.
HINSTANCE kitHandle = piModule::toolkit();
} // namespace

void PdToolkit::registerToolkitClient(SToolkitClient* client) {
    if (client->isApplication) {
        appHandle = nullptr;
        kitHandle = nullptr;
    }
    if (client->firstStringId == 0)
        return;
    const StringRange range{client->firstStringId, INT_MAX, client->stringTable};
    std::size_t position = 0;
    while (position < ranges.size() && ranges[position].first <= range.first)
        ++position;
    ranges.insert(ranges.begin() + static_cast<std::ptrdiff_t>(position), range);
    for (std::size_t i = 0; i + 1 < ranges.size(); ++i)
        ranges[i].last = ranges[i + 1].first - 1;
    ranges.back().last = INT_MAX;
}

PdStringEntry* PdToolkit::getStringEntry(int id) {
    for (const StringRange& range : ranges) {
        if (id < range.first)
            continue;
        if (id <= range.last)
            return range.table + (static_cast<long long>(id) - range.first + 1);
    }
    return nullptr;
}

char* PdToolkit::loadString(int id) {
    static char empty[] = "";
    TqObject::nextStaticBuffer();
    const PdStringEntry* entry = getStringEntry(id);
    if (!entry)
        return empty;
    const QByteArray text = QString::fromUtf8(entry->text).toUtf8();
    char* buffer = TqObject::fitStaticBuffer(static_cast<int>(text.size()) + 1);
    std::memcpy(buffer, text.constData(), static_cast<std::size_t>(text.size()) + 1);
    return buffer;
}

QString PdToolkit::loadQString(int id) {
    const PdStringEntry* entry = getStringEntry(id);
    return entry ? QString::fromUtf8(entry->text) : QString::fromUtf8("");
}

HINSTANCE PdToolkit::appHINST() {
    return appHandle;
}

HINSTANCE PdToolkit::kitHINST() {
    return kitHandle;
}

void PdToolkit::setKitHINST(HINSTANCE handle) {
    kitHandle = handle;
}

void PdToolkit::shutDown() {
    ranges.clear();
    ranges.shrink_to_fit();
}
