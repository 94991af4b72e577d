/// AsciiAdvanceTable: the advances of the printable ASCII characters (blank to tilde) in one
/// font at one resolution, and what the font's shaping adds to each pair of them (kerning),
/// so that WsiFontMetric measures a run of such characters by adding table entries instead
/// of shaping it. Internal to WsiFontMetric.
#pragma once

#include <QFont>

#include <cstddef>
#include <cstdint>

class AsciiAdvanceTable {
public:
    /// The first and last character the table covers.
    static constexpr unsigned char v_first = 0x20;
    static constexpr unsigned char v_last = 0x7e;
    static constexpr unsigned v_count = v_last - v_first + 1;

    /// The table of font at dpi dots per inch (0: the default resolution, as QFontMetricsF
    /// without a device) from this thread's tables, counting the use; identity is
    /// WsiFontMetric::identity() of the same font and resolution. Null while the font has
    /// measured fewer than WsiFontMetric::v_runsBeforeTable runs, else a pointer into this
    /// thread's tables valid until the next call.
    static const AsciiAdvanceTable* of(std::size_t identity, const QFont& font, int dpi);

    /// Sets advance to the advance of the length bytes at text in device units, rounded up as
    /// the shaped measure is, and returns true, when the table holds all of them: every byte
    /// printable ASCII and no pair that the font turns into one glyph (a ligature). False,
    /// with advance unchanged, for any other text, which the caller shapes.
    bool advance(const char* text, std::size_t length, int& advance) const;

private:
    /// Pair entry of a pair that the shaping replaces (or whose adjustment does not fit).
    static constexpr std::int16_t v_shaped = INT16_MIN;

    AsciiAdvanceTable() = default;
    void build(const QFont& font);
    void takePairs(const QFont& font, const QString& piece);

    // In 64ths of a device unit, Qt's fixed-point unit of advances, so that sums are exact.
    std::int32_t m_advances[v_count] = {};
    std::int16_t m_pairs[v_count][v_count] = {};
};
