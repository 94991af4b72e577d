#include "graphics/device/AsciiAdvanceTable_p.h"

#include "graphics/device/WsiFont.h"

#include <QFontMetricsF>
#include <QGlyphRun>
#include <QPaintDevice>
#include <QRawFont>
#include <QTextLayout>

#include <cmath>
#include <limits>
#include <memory>

// Why a sum of table entries equals Qt's measure: Qt measures a string by shaping it and
// adding the advances of the glyphs, in 64ths of a unit. For Latin text the shaping changes
// an advance in two ways only: a pair adjustment (kerning, "AV", "To") that belongs to the
// first character of a pair and depends on the pair alone, and a ligature ("fi" in the
// default DejaVu faces) that replaces characters by one glyph. So the table keeps each
// character's advance and each pair's adjustment as the shaping of the pair in running text
// gives them, and marks the pairs the shaping replaces, whose runs are shaped as before.
// Kerning stays on: measures and drawings agree because both come from the same shaping.
// Contextual rules over more than two characters are not modelled; the fonts in use have
// none for ASCII, and the tests compare the sums with Qt's measure across families and
// styles.

namespace {

// A paint device that only has a resolution: QFont takes a device's vertical resolution
// and nothing else from it, so the table resolves its font as QFontMetricsF(font, device)
// does without keeping the device.
class ResolutionDevice : public QPaintDevice {
public:
    explicit ResolutionDevice(int dpi) : m_dpi(dpi) {}
    QPaintEngine* paintEngine() const override { return nullptr; }

protected:
    int metric(PaintDeviceMetric metric) const override {
        switch (metric) {
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return m_dpi;
        default:
            return QPaintDevice::metric(metric);
        }
    }

private:
    int m_dpi;
};

// Every ordered pair of the table's characters once, the last character closing the
// cycle: a de Bruijn sequence of order two, from the Lyndon words of length one and two in
// order (a, then a b for every b after a).
QString pairSequence() {
    QString sequence;
    sequence.reserve(AsciiAdvanceTable::v_count * AsciiAdvanceTable::v_count + 1);
    for (unsigned a = 0; a < AsciiAdvanceTable::v_count; ++a) {
        const QChar first(AsciiAdvanceTable::v_first + a);
        sequence += first;
        for (unsigned b = a + 1; b < AsciiAdvanceTable::v_count; ++b) {
            sequence += first;
            sequence += QChar(AsciiAdvanceTable::v_first + b);
        }
    }
    sequence += QChar(AsciiAdvanceTable::v_first);
    return sequence;
}

// Pieces of the sequence are shaped apart: Qt cuts longer texts into items of its own, and
// no adjustment is made across such a cut.
constexpr qsizetype v_piece = 256;

std::int32_t inSixtyFourths(qreal units) {
    return static_cast<std::int32_t>(std::lround(units * 64));
}

// The fonts of this thread, with the runs each has measured and, once in steady use, its
// table (some 18 KB). A diagram uses a few fonts at a few sizes; when more are in use the
// oldest entry gives way.
struct TableStore {
    static constexpr int v_fonts = 64;
    struct Entry {
        std::size_t identity = 0;
        int runs = 0;
        std::unique_ptr<AsciiAdvanceTable> table;
    };
    Entry entries[v_fonts];
    int used = 0;
    int nextVictim = 0;
};

} // namespace

const AsciiAdvanceTable* AsciiAdvanceTable::of(std::size_t identity, const QFont& font, int dpi) {
    thread_local TableStore store;
    TableStore::Entry* entry = nullptr;
    for (int i = 0; i < store.used && !entry; ++i)
        if (store.entries[i].identity == identity)
            entry = &store.entries[i];
    if (!entry) {
        if (store.used < TableStore::v_fonts) {
            entry = &store.entries[store.used++];
        } else {
            entry = &store.entries[store.nextVictim];
            store.nextVictim = (store.nextVictim + 1) % TableStore::v_fonts;
        }
        entry->identity = identity;
        entry->runs = 0;
        entry->table.reset();
    }
    if (entry->table || ++entry->runs < WsiFontMetric::v_runsBeforeTable)
        return entry->table.get();
    entry->table.reset(new AsciiAdvanceTable);
    if (dpi > 0) {
        const ResolutionDevice device(dpi);
        entry->table->build(QFont(font, &device));
    } else {
        entry->table->build(font);
    }
    return entry->table.get();
}

bool AsciiAdvanceTable::advance(const char* text, std::size_t length, int& advance) const {
    std::int64_t sum = 0;
    unsigned previous = v_count;
    for (std::size_t i = 0; i < length; ++i) {
        const unsigned c = static_cast<unsigned char>(text[i]) - v_first;
        if (c >= v_count)
            return false;
        if (previous < v_count) {
            const std::int16_t pair = m_pairs[previous][c];
            if (pair == v_shaped)
                return false;
            sum += pair;
        }
        sum += m_advances[c];
        previous = c;
    }
    // Rounded up as WsiFontMetric rounds the shaped measure.
    advance = static_cast<int>(std::ceil(static_cast<double>(sum) / 64));
    return true;
}

void AsciiAdvanceTable::build(const QFont& font) {
    const QFontMetricsF metrics(font);
    for (unsigned c = 0; c < v_count; ++c)
        m_advances[c] = inSixtyFourths(metrics.horizontalAdvance(QChar(v_first + c)));
    const QString sequence = pairSequence();
    for (qsizetype from = 0; from + 1 < sequence.size(); from += v_piece - 1)
        takePairs(font, sequence.mid(from, v_piece));
}

// Shapes piece as running text and keeps the adjustment of each pair in it. A piece whose
// glyphs are not its characters' own, one each, is halved until the pairs that the shaping
// replaces stand alone; those are marked.
void AsciiAdvanceTable::takePairs(const QFont& font, const QString& piece) {
    QTextLayout layout(piece, font);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    line.setLineWidth(std::numeric_limits<int>::max() / 128);
    layout.endLayout();
    const QList<QGlyphRun> runs = line.glyphRuns();
    const bool ownGlyphs = runs.size() == 1 && runs[0].glyphIndexes().size() == piece.size() &&
                           runs[0].glyphIndexes() == runs[0].rawFont().glyphIndexesForString(piece);
    if (!ownGlyphs) {
        if (piece.size() == 2) {
            m_pairs[piece[0].unicode() - v_first][piece[1].unicode() - v_first] = v_shaped;
        } else {
            const qsizetype half = piece.size() / 2;
            takePairs(font, piece.left(half + 1));
            takePairs(font, piece.mid(half));
        }
        return;
    }
    const QList<QPointF> positions = runs[0].positions();
    for (qsizetype i = 0; i + 1 < piece.size(); ++i) {
        const unsigned a = piece[i].unicode() - v_first, b = piece[i + 1].unicode() - v_first;
        const std::int32_t pair =
            inSixtyFourths(positions[i + 1].x()) - inSixtyFourths(positions[i].x()) - m_advances[a];
        m_pairs[a][b] = pair > std::numeric_limits<std::int16_t>::min() &&
                                pair <= std::numeric_limits<std::int16_t>::max()
                            ? static_cast<std::int16_t>(pair)
                            : v_shaped;
    }
}
