#include "model/Signal.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstring>
#include <memory>

namespace {

constexpr char v_stateChars[] = {'0', '1', 'x', 'z', 'l', 'h'};

// The width digits that extend text to width, or its low width digits: fewer digits extend
// with 0, or with the first digit when it is x or z.
std::string fitDigits(std::string_view digits, unsigned width) {
    std::string bits;
    bits.reserve(width);
    for (char c : digits) {
        if (c != '_')
            bits.push_back(c);
    }
    if (bits.size() >= width)
        return bits.substr(bits.size() - width);
    const char first = bits.empty() ? '0' : bits.front();
    const char fill = first == 'x' || first == 'X' || first == 'z' || first == 'Z' ? first : '0';
    return std::string(width - bits.size(), fill) + bits;
}

} // namespace

char bitStateChar(BitState state) {
    return v_stateChars[static_cast<int>(state)];
}

bool parseBitState(char c, BitState& state) {
    const char lower = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    for (int i = 0; i < 6; ++i) {
        if (v_stateChars[i] == lower) {
            state = static_cast<BitState>(i);
            return true;
        }
    }
    return false;
}

Signal::Signal(std::string name, SignalKind kind, unsigned width)
    : m_name(std::move(name)), m_kind(kind),
      m_width(kind == SignalKind::Bus ? std::max(width, 1u) : 1u) {}

bool Signal::setClock(const ClockSpec& clock) {
    if (clock.period < 2 || !(clock.duty > 0 && clock.duty < 100) ||
        (clock.startLevel != BitState::Low && clock.startLevel != BitState::High))
        return false;
    m_clock = clock;
    return true;
}

// --- Building -----------------------------------------------------------------------------

std::size_t Signal::slotFor(Time time, bool& replace) {
    if (m_times.empty() || time > m_times.back()) {
        replace = false;
        return m_times.size();
    }
    const Time* it = std::lower_bound(m_times.begin(), m_times.end(), time);
    replace = it != m_times.end() && *it == time;
    return static_cast<std::size_t>(it - m_times.begin());
}

void Signal::placeState(Time time, BitState state) {
    bool replace = false;
    const std::size_t index = slotFor(time, replace);
    if (replace) {
        m_states[index] = state;
    } else if (index == m_times.size()) {
        m_times.push_back(time);
        m_states.push_back(state);
    } else {
        m_times.insert(index, 1, time);
        m_states.insert(index, 1, state);
    }
}

std::uint64_t* Signal::placeBusValue(Time time, bool zeroed) {
    const std::size_t words = 2 * wordsPerPlane();
    if (m_times.empty() || time > m_times.back()) {
        // Appending in time order, as readers do.
        m_times.push_back(time);
        if (!m_textOf.empty())
            m_textOf.push_back(v_noText);
        return zeroed ? m_words.resize(m_words.size() + words) : m_words.extend(words);
    }
    bool replace = false;
    const std::size_t index = slotFor(time, replace);
    if (!replace) {
        m_times.insert(index, 1, time);
        m_words.insert(index * words, words, 0);
        if (!m_textOf.empty())
            m_textOf.insert(m_textOf.begin() + static_cast<std::ptrdiff_t>(index), v_noText);
    } else if (!m_textOf.empty()) {
        m_textOf[index] = v_noText;
    }
    std::uint64_t* value = m_words.data() + index * words;
    std::fill(value, value + words, 0);
    return value;
}

bool Signal::appendChange(Time time, BitState state) {
    if (m_kind == SignalKind::Bit) {
        placeState(time, state);
        return true;
    }
    if (m_kind != SignalKind::Bus || static_cast<int>(state) > 3)
        return false;
    std::uint64_t* value = placeBusValue(time);
    const std::size_t plane = wordsPerPlane();
    for (unsigned bit = 0; bit < m_width; ++bit) {
        const std::uint64_t mask = std::uint64_t(1) << (bit % 64);
        if (state == BitState::High || state == BitState::HighZ)
            value[bit / 64] |= mask;
        if (state == BitState::Unknown || state == BitState::HighZ)
            value[plane + bit / 64] |= mask;
    }
    return true;
}

bool Signal::appendChange(Time time, const BigInt& value) {
    if (!value.hasValue() || m_kind == SignalKind::Clock || m_kind == SignalKind::Spacer)
        return false;
    std::unique_ptr<char[]> bits(value.BSLToBinary(m_width, 0, false));
    return bits && appendBinary(time, bits.get());
}

bool Signal::appendBinary(Time time, std::string_view digits) {
    if (m_kind == SignalKind::Clock || m_kind == SignalKind::Spacer || digits.empty())
        return false;
    // Bit 0: the value plane, bit 1: the unknown plane, 4: not a digit, 8: '_'.
    static const auto codes = [] {
        std::array<std::uint8_t, 256> table{};
        table.fill(4);
        table['0'] = 0;
        table['1'] = 1;
        table['x'] = table['X'] = 2;
        table['z'] = table['Z'] = 3;
        table['_'] = 8;
        return table;
    }();
    if (m_kind == SignalKind::Bus && digits.size() <= m_width && appendKnownBinary(time, digits))
        return true;
    std::uint8_t seen = 0;
    for (const char c : digits)
        seen |= codes[static_cast<unsigned char>(c)];
    if (seen & 4)
        return false;
    if (seen & 8 || m_kind == SignalKind::Bit) {
        const std::string bits = fitDigits(digits, m_width);
        if (m_kind == SignalKind::Bit) {
            BitState state = BitState::Low;
            (void)parseBitState(bits.back(), state);
            placeState(time, state);
            return true;
        }
        return appendBinary(time, bits);
    }
    std::uint64_t* value = placeBusValue(time);
    const std::size_t plane = wordsPerPlane();
    const std::size_t count = std::min<std::size_t>(digits.size(), m_width);
    const char* last = digits.data() + digits.size() - 1;
    for (std::size_t bit = 0; bit < count; ++bit) {
        const std::uint64_t code =
            codes[static_cast<unsigned char>(last[-static_cast<std::ptrdiff_t>(bit)])];
        value[bit / 64] |= (code & 1) << (bit % 64);
        value[plane + bit / 64] |= (code >> 1) << (bit % 64);
    }
    const std::uint64_t fill = codes[static_cast<unsigned char>(digits.front())];
    if (count < m_width && fill >= 2) {
        for (std::size_t bit = count; bit < m_width; ++bit) {
            value[bit / 64] |= (fill & 1) << (bit % 64);
            value[plane + bit / 64] |= std::uint64_t(1) << (bit % 64);
        }
    }
    return true;
}

std::uint32_t Signal::textIndex(std::string_view text) {
    const std::size_t hash = std::hash<std::string_view>()(text);
    const auto found = m_textIndices.find(hash);
    if (found != m_textIndices.end() && m_texts[found->second] == text)
        return found->second;
    const auto index = static_cast<std::uint32_t>(m_texts.size());
    m_texts.emplace_back(text);
    if (found == m_textIndices.end())
        m_textIndices.emplace(hash, index);
    return index;
}

bool Signal::appendText(Time time, std::string_view text) {
    if (m_kind != SignalKind::Bus)
        return false;
    const std::uint32_t label = textIndex(text);
    std::uint64_t* value = placeBusValue(time);
    // All X: a text is no number.
    const std::size_t plane = wordsPerPlane();
    std::fill(value + plane, value + 2 * plane, ~std::uint64_t(0));
    if (m_width % 64 != 0)
        value[2 * plane - 1] = (std::uint64_t(1) << (m_width % 64)) - 1;
    if (m_textOf.empty())
        m_textOf.assign(m_times.size(), v_noText);
    m_textOf[static_cast<std::size_t>(value - m_words.data()) / (2 * plane)] = label;
    return true;
}

std::size_t Signal::textCount() const {
    return static_cast<std::size_t>(
        std::count_if(m_textOf.begin(), m_textOf.end(), [](auto t) { return t != v_noText; }));
}

// Eight digits of 0 and 1 at a time: a word of eight such characters, less '0' in every byte,
// times a constant whose shifted copies land byte i on bit 7 - i of the top byte (no two
// partial products meet, so nothing carries into it).
bool Signal::appendKnownBinary(Time time, std::string_view digits) {
    if constexpr (std::endian::native != std::endian::little)
        return false;
    constexpr std::uint64_t zeros = 0x3030303030303030, notBit = 0xfefefefefefefefe,
                            gather = 0x8040201008040201;
    if (digits.size() > v_fastDigits)
        return false;
    const char* const first = digits.data();
    const char* end = first + digits.size();
    // The value is built here and stored whole: or-ing it into fresh words would make every
    // new cache line of the signal wait for its read.
    std::uint64_t bits[v_fastDigits / 64] = {};
    std::size_t count = 0;
    // Check every digit before placing the change: a dump's x and z take the general path.
    for (; end - first >= 8; end -= 8, ++count) {
        std::uint64_t eight;
        std::memcpy(&eight, end - 8, 8);
        if ((eight & notBit) != zeros)
            return false;
        bits[count / 8] |= ((eight - zeros) * gather) >> 56 << (count % 8 * 8);
    }
    if (const auto left = static_cast<unsigned>(end - first); left > 0) {
        std::uint64_t eight = zeros;
        if (digits.size() >= 8) {
            // The eight digits from the first, those already taken replaced by '0'.
            std::memcpy(&eight, first, 8);
            const std::uint64_t mine = ~std::uint64_t(0) >> (64 - 8 * left);
            eight = (eight & mine) | (zeros & ~mine);
        } else {
            // Byte by byte: eight bytes from the first would read past the caller's text.
            for (unsigned i = 0; i < left; ++i)
                eight ^= static_cast<std::uint64_t>(static_cast<unsigned char>(first[i]) ^ '0')
                         << (8 * i);
        }
        if ((eight & notBit) != zeros)
            return false;
        bits[count / 8] |= ((eight - zeros) * gather) >> 56 >> (8 - left) << (count % 8 * 8);
    }
    std::uint64_t* value = placeBusValue(time, false);
    const std::size_t plane = wordsPerPlane();
    for (std::size_t w = 0; w < plane; ++w) {
        value[w] = w < std::size(bits) ? bits[w] : 0;
        value[plane + w] = 0;
    }
    return true;
}

std::size_t Signal::eraseChanges(Time from, Time to) {
    const std::size_t first = firstIndexFrom(from);
    const std::size_t last = std::max(first, firstIndexFrom(to));
    m_times.erase(first, last);
    if (m_kind == SignalKind::Bit) {
        m_states.erase(first, last);
    } else if (m_kind == SignalKind::Bus) {
        const std::size_t words = 2 * wordsPerPlane();
        m_words.erase(first * words, last * words);
        if (!m_textOf.empty())
            m_textOf.erase(m_textOf.begin() + static_cast<std::ptrdiff_t>(first),
                           m_textOf.begin() + static_cast<std::ptrdiff_t>(last));
    }
    return last - first;
}

void Signal::clearChanges() {
    m_times.clear();
    m_states.clear();
    m_words.clear();
    m_textOf.clear();
    m_texts.clear();
    m_textIndices.clear();
}

void Signal::reserve(std::size_t count) {
    m_times.reserve(count);
    if (m_kind == SignalKind::Bit)
        m_states.reserve(count);
    else if (m_kind == SignalKind::Bus)
        m_words.reserve(count * 2 * wordsPerPlane());
}

// --- Reading ------------------------------------------------------------------------------

BitState Signal::changeState(std::size_t index) const {
    if (m_kind == SignalKind::Bit)
        return m_states[index];
    if (changeHasText(index))
        return BitState::High;
    const std::size_t plane = wordsPerPlane();
    const std::uint64_t* value = m_words.data() + index * 2 * plane;
    bool allFlagged = true, anyFlagged = false, allOnes = true, allZeros = true;
    for (std::size_t w = 0; w < plane; ++w) {
        const unsigned bits = w + 1 < plane || m_width % 64 == 0 ? 64 : m_width % 64;
        const std::uint64_t mask = bits == 64 ? ~std::uint64_t(0) : (std::uint64_t(1) << bits) - 1;
        allFlagged = allFlagged && (value[plane + w] & mask) == mask;
        anyFlagged = anyFlagged || (value[plane + w] & mask) != 0;
        allOnes = allOnes && (value[w] & mask) == mask;
        allZeros = allZeros && (value[w] & mask) == 0;
    }
    if (allFlagged && allOnes)
        return BitState::HighZ;
    if (allFlagged && allZeros)
        return BitState::Unknown;
    return anyFlagged ? BitState::Unknown : BitState::High;
}

std::string Signal::changeBinary(std::size_t index) const {
    if (m_kind == SignalKind::Bit)
        return std::string(1, bitStateChar(m_states[index]));
    const std::size_t plane = wordsPerPlane();
    const std::uint64_t* value = m_words.data() + index * 2 * plane;
    std::string bits(m_width, '0');
    for (unsigned bit = 0; bit < m_width; ++bit) {
        const bool one = (value[bit / 64] >> (bit % 64)) & 1;
        const bool flagged = (value[plane + bit / 64] >> (bit % 64)) & 1;
        bits[m_width - 1 - bit] = flagged ? (one ? 'z' : 'x') : (one ? '1' : '0');
    }
    return bits;
}

BigInt Signal::changeValue(std::size_t index) const {
    std::string bits = changeBinary(index);
    if (m_kind == SignalKind::Bit && (bits[0] == 'l' || bits[0] == 'h'))
        bits[0] = bits[0] == 'l' ? '0' : '1';
    return BigInt(bits.c_str(), RadixBinary, m_width);
}

bool Signal::changeIsKnown(std::size_t index) const {
    if (m_kind == SignalKind::Bit)
        return m_states[index] == BitState::Low || m_states[index] == BitState::High;
    const std::size_t plane = wordsPerPlane();
    const std::uint64_t* value = m_words.data() + index * 2 * plane;
    for (std::size_t w = 0; w < plane; ++w) {
        if (value[plane + w] != 0)
            return false;
    }
    return true;
}

bool Signal::changeIsAllUnknown(std::size_t index) const {
    if (m_kind == SignalKind::Bit)
        return m_states[index] == BitState::Unknown;
    if (changeHasText(index))
        return false;
    const std::size_t plane = wordsPerPlane();
    const std::uint64_t* value = m_words.data() + index * 2 * plane;
    for (std::size_t w = 0; w < plane; ++w) {
        const unsigned bits = w + 1 < plane || m_width % 64 == 0 ? 64 : m_width % 64;
        const std::uint64_t mask = bits == 64 ? ~std::uint64_t(0) : (std::uint64_t(1) << bits) - 1;
        if ((value[plane + w] & mask) != mask || (value[w] & mask) != 0)
            return false;
    }
    return true;
}

bool Signal::sameValue(std::size_t a, std::size_t b) const {
    if (m_kind == SignalKind::Bit)
        return m_states[a] == m_states[b];
    if (changeText(a) != changeText(b) || changeHasText(a) != changeHasText(b))
        return false;
    const std::size_t words = 2 * wordsPerPlane();
    return std::equal(m_words.begin() + static_cast<std::ptrdiff_t>(a * words),
                      m_words.begin() + static_cast<std::ptrdiff_t>((a + 1) * words),
                      m_words.begin() + static_cast<std::ptrdiff_t>(b * words));
}

std::size_t Signal::indexAt(Time time) const {
    const auto it = std::upper_bound(m_times.begin(), m_times.end(), time);
    return it == m_times.begin() ? npos : static_cast<std::size_t>(it - m_times.begin()) - 1;
}

std::size_t Signal::firstIndexFrom(Time time) const {
    return static_cast<std::size_t>(std::lower_bound(m_times.begin(), m_times.end(), time) -
                                    m_times.begin());
}

// --- Clocks -------------------------------------------------------------------------------
// Each period starts with an edge away from the start level and returns after `high` counts,
// the duty share of the period rounded and kept inside (0, period).

namespace {

Time secondLevelLength(const ClockSpec& clock) {
    const auto length =
        static_cast<Time>(std::llround(static_cast<double>(clock.period) * clock.duty / 100.0));
    return std::clamp<Time>(length, 1, clock.period - 1);
}

// Edges at times before t.
std::int64_t edgesBefore(const ClockSpec& clock, Time t) {
    const Time away = t - clock.phase;
    const Time back = away - secondLevelLength(clock);
    std::int64_t count = away > 0 ? (away + clock.period - 1) / clock.period : 0;
    count += back > 0 ? (back + clock.period - 1) / clock.period : 0;
    return count;
}

Time floorDiv(Time a, Time b) {
    return a / b - ((a % b != 0) && ((a < 0) != (b < 0)) ? 1 : 0);
}

} // namespace

BitState Signal::clockLevel(Time t) const {
    const BitState other = m_clock.startLevel == BitState::Low ? BitState::High : BitState::Low;
    if (t < m_clock.phase)
        return m_clock.startLevel;
    const Time into = (t - m_clock.phase) % m_clock.period;
    return into < secondLevelLength(m_clock) ? other : m_clock.startLevel;
}

Time Signal::nextClockEdge(Time t) const {
    if (t < m_clock.phase)
        return m_clock.phase;
    const Time base = m_clock.phase + floorDiv(t - m_clock.phase, m_clock.period) * m_clock.period;
    const Time back = base + secondLevelLength(m_clock);
    return t < back ? back : base + m_clock.period;
}

std::int64_t Signal::clockEdgeCount(Time from, Time to) const {
    return to > from ? edgesBefore(m_clock, to) - edgesBefore(m_clock, from) : 0;
}

std::size_t Signal::memoryBytes() const {
    std::size_t texts = m_textOf.capacity() * sizeof(std::uint32_t) +
                        m_texts.capacity() * sizeof(std::string) + m_textIndices.size() * 32;
    for (const std::string& text : m_texts)
        texts += text.capacity() > 15 ? text.capacity() + 1 : 0;
    return m_times.capacity() * sizeof(Time) + m_states.capacity() +
           m_words.capacity() * sizeof(std::uint64_t) + texts;
}

bool Signal::sameTexts(const Signal& other) const {
    if (m_textOf.empty() && other.m_textOf.empty())
        return true;
    for (std::size_t i = 0; i < m_times.size() && i < other.m_times.size(); ++i) {
        if (changeHasText(i) != other.changeHasText(i) || changeText(i) != other.changeText(i))
            return false;
    }
    return true;
}

bool Signal::operator==(const Signal& other) const {
    return m_name == other.m_name && m_nameShown == other.m_nameShown && m_kind == other.m_kind &&
           m_width == other.m_width && m_group == other.m_group && m_clock == other.m_clock &&
           m_format == other.m_format && m_times == other.m_times && m_states == other.m_states &&
           m_words == other.m_words && sameTexts(other);
}
