/// Signal: one row of a timing diagram, a clock, a single bit or a bus, with its changes kept
/// sorted by time in compact arrays, so that a time window is found by binary search.
#pragma once

#include "model/RemapArray.h"
#include "model/Time.h"

#include "hdl/BigInt.h"
#include "hdl/HDLConstant.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

/// What a signal shows.
enum class SignalKind : int {
    Clock = 0, ///< a periodic square wave described by ClockSpec; it stores no changes
    Bit = 1,   ///< one wire: 0, 1, X, Z, weak low and weak high
    Bus = 2,   ///< a four-state value of a given width per time slot
    /// An empty row that spaces the others out; it stores no changes and draws no waveform,
    /// but arrows may start or end on it.
    Spacer = 3,
};

/// The state of a bit signal, or the state a bus slot shows when all its bits agree.
enum class BitState : std::uint8_t {
    Low = 0,
    High = 1,
    Unknown = 2,  ///< X: drawn as a hatched slot
    HighZ = 3,    ///< Z: drawn as a line at mid level
    WeakLow = 4,  ///< L: a resistive 0, drawn dashed
    WeakHigh = 5, ///< H: a resistive 1, drawn dashed
};

/// The character of a state in files and commands: 0 1 x z l h.
char bitStateChar(BitState state);
/// The state of c (either case); false for any other character.
[[nodiscard]] bool parseBitState(char c, BitState& state);

/// A clock: rising and falling edges every period, starting at phase.
struct ClockSpec {
    Time period = 10;
    /// The share of the period the clock is at its second level, in percent (0 < duty < 100).
    double duty = 50;
    /// The time of the first edge; the clock holds its start level before it.
    Time phase = 0;
    /// The level before the first edge; the first edge goes to the other level.
    BitState startLevel = BitState::Low;

    bool operator==(const ClockSpec&) const = default;
};

/// How a bus shows its values.
struct BusFormat {
    Radix radix = RadixHexadecimal;
    /// HDLNone shows the bare digits, HDLVerilog 8'hA5, HDLVHDL X"A5".
    HDLanguage notation = HDLNone;

    bool operator==(const BusFormat&) const = default;
};

class Signal {
public:
    /// A signal named name (a hierarchical name such as "top.cpu.addr"); width applies to a
    /// bus (at least 1) and is 1 for the other kinds.
    Signal(std::string name, SignalKind kind, unsigned width = 1);

    // --- Identity and appearance -------------------------------------------------------------
    const std::string& name() const { return m_name; }
    void setName(std::string name) { m_name = std::move(name); }
    /// False when the row shows no name: the name stays the row's key for files, arrows and
    /// commands (a lane that had none in the file it was read from).
    bool nameShown() const { return m_nameShown; }
    void setNameShown(bool shown) { m_nameShown = shown; }
    SignalKind kind() const { return m_kind; }
    /// Bits per value: the bus width, 1 for the other kinds.
    unsigned width() const { return m_width; }
    /// The group the signal is shown under; empty for none.
    const std::string& group() const { return m_group; }
    void setGroup(std::string group) { m_group = std::move(group); }
    const ClockSpec& clock() const { return m_clock; }
    /// False, clock unchanged, for a period below 1, a duty outside (0, 100) or a start level
    /// other than Low or High.
    [[nodiscard]] bool setClock(const ClockSpec& clock);
    const BusFormat& busFormat() const { return m_format; }
    void setBusFormat(const BusFormat& format) { m_format = format; }

    // --- Building: changes ---------------------------------------------------------------------
    // A change sets the signal's value from its time until the next change. Changes are kept
    // sorted by time: appending in time order costs O(1); an earlier time is inserted in place
    // (O(changes)); a change at the time of an existing one replaces it. A clock or a spacer
    // keeps no changes: these return false for it, as they do for a value of the wrong kind.

    /// A bit signal's change. For a bus, the state fills every bit (X, Z, 0 or 1 only).
    [[nodiscard]] bool appendChange(Time time, BitState state);
    /// A bus change; value is cut or extended to the width as BigInt's text converters do.
    /// For a bit signal its lowest bit is used.
    [[nodiscard]] bool appendChange(Time time, const BigInt& value);
    /// A bus change from binary digits, the most significant first ('0' '1' 'x' 'X' 'z' 'Z',
    /// '_' ignored), as a value-change dump writes them: fewer digits than the width extend
    /// with 0, or with X or Z when the first digit is x or z; more keep the low digits. False
    /// for any other character.
    [[nodiscard]] bool appendBinary(Time time, std::string_view digits);
    /// A bus change that shows text instead of a number ("IDLE", "3.25", or "" for a slot
    /// without text). Read as a number it is all X. Each distinct text is stored once per
    /// signal. False for a bit signal or a clock.
    [[nodiscard]] bool appendText(Time time, std::string_view text);
    /// Removes every change in [from, to); returns how many.
    std::size_t eraseChanges(Time from, Time to);
    /// Removes every change.
    void clearChanges();
    /// Room for count changes, for a reader that knows the count ahead.
    void reserve(std::size_t count);

    // --- Reading: changes ------------------------------------------------------------------------
    /// Stored changes (0 for a clock: see clockEdges).
    std::size_t changeCount() const { return m_times.size(); }
    Time changeTime(std::size_t index) const { return m_times[index]; }
    /// A bit change's state. For a bus, what its slot is drawn as: HighZ when every bit is Z
    /// (a line at mid level), Unknown when any bit is X or Z (hatched when all are X), and
    /// High for a slot that shows a value, a fully known number or a text; a bus is never Low.
    /// A text change is High although its bits read as all X (changeValue): the renderer
    /// draws a High slot outlined with its value (busValueText), and an Unknown one would be
    /// hatched and lose its text. Whoever wants to know whether a slot is text asks
    /// changeHasText.
    BitState changeState(std::size_t index) const;
    /// A bus change's value (sign character '0', the signal's width); for a bit signal a
    /// 1-bit value. By value.
    BigInt changeValue(std::size_t index) const;
    /// A bus change's value as binary digits, the most significant first (0 1 x z). By value.
    std::string changeBinary(std::size_t index) const;
    /// True when the bus value of change index has no X or Z bit.
    bool changeIsKnown(std::size_t index) const;
    /// True when every bit of change index is X: a bus slot drawn hatched, without a value. A
    /// text change is not.
    bool changeIsAllUnknown(std::size_t index) const;
    /// True when change index shows text (see appendText).
    bool changeHasText(std::size_t index) const {
        return !m_textOf.empty() && m_textOf[index] != v_noText;
    }
    /// The text of change index, or empty for a change without text. It lives in the signal
    /// until the signal's changes are cleared.
    std::string_view changeText(std::size_t index) const {
        return changeHasText(index) ? std::string_view(m_texts[m_textOf[index]])
                                    : std::string_view();
    }
    /// How many changes show text.
    std::size_t textCount() const;
    /// True when changes a and b hold the same value (and the same text, if any).
    bool sameValue(std::size_t a, std::size_t b) const;
    /// The index of the last change at or before time, or npos when all are later (binary
    /// search, O(log changes)).
    std::size_t indexAt(Time time) const;
    /// The index of the first change at or after time (changeCount() when none is).
    std::size_t firstIndexFrom(Time time) const;
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    /// For a clock: the level at time t (Low or High).
    BitState clockLevel(Time t) const;
    /// For a clock: the time of the first edge strictly after t.
    Time nextClockEdge(Time t) const;
    /// For a clock: how many edges fall in [from, to).
    std::int64_t clockEdgeCount(Time from, Time to) const;

    /// The time of the last change (the last clock edge is unbounded: 0), or 0 without any.
    Time lastChangeTime() const { return m_times.empty() ? 0 : m_times.back(); }
    /// Heap bytes the changes take, for reports on big inputs.
    std::size_t memoryBytes() const;

    /// True when kind, width, group, clock, format and every change (with its text) are the
    /// same (name and whether it is shown too).
    bool operator==(const Signal& other) const;

private:
    // Words per value plane: a value is wordsPerPlane() words of bits followed by as many
    // words of unknown flags (a flagged bit is Z where its value bit is 1, X where it is 0).
    std::size_t wordsPerPlane() const { return (m_width + 63) / 64; }
    // Where a change at time goes: its index, and whether it replaces the one there.
    std::size_t slotFor(Time time, bool& replace);
    // Makes room for (or reuses) the change at time and returns the first of its value words,
    // zeroed unless the caller sets them all.
    std::uint64_t* placeBusValue(Time time, bool zeroed = true);
    void placeState(Time time, BitState state);
    // The common case of appendBinary: a bus value of at most v_fastDigits digits, all 0 or 1,
    // no more than the width. False, nothing placed, for any other.
    bool appendKnownBinary(Time time, std::string_view digits);
    static constexpr std::size_t v_fastDigits = 256;
    // True when every change shows the same text as the other's change of that index.
    bool sameTexts(const Signal& other) const;
    // The index of text in m_texts, adding it when new.
    std::uint32_t textIndex(std::string_view text);

    std::string m_name;
    bool m_nameShown = true;
    SignalKind m_kind;
    unsigned m_width;
    std::string m_group;
    ClockSpec m_clock;
    BusFormat m_format;
    // Changes are kept in arrays that grow without copying: a reader appends millions.
    RemapArray<Time> m_times;
    // Bit signals: one state a change.
    RemapArray<BitState> m_states;
    // Buses: 2 * wordsPerPlane() words a change.
    RemapArray<std::uint64_t> m_words;
    // Buses with text: per change an index into m_texts, or v_noText. Empty while no change
    // has text, so a signal of numbers pays nothing for it.
    static constexpr std::uint32_t v_noText = 0xffffffffu;
    std::vector<std::uint32_t> m_textOf;
    std::vector<std::string> m_texts;
    // Text hash to index into m_texts, to store each text once; a colliding text is simply
    // stored again.
    std::unordered_map<std::size_t, std::uint32_t> m_textIndices;
};
