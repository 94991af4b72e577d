#include "hdl/BigInt.h"

#include "core/StringFunctions.h"
#include "core/TarqToolkit.h"
#include "hdl/FourStateKernels_p.h"

#include <algorithm>
#include <bit>
#include <climits>
#include <cstring>
#include <utility>

BigInt BigInt::v_intermediates[BigInt::v_intermediateCount];
int BigInt::v_intermediateIndex = 0;
bool BigInt::v_shutDownRegistered = false;

// --- Construction ---------------------------------------------------------------------------

BigInt::BigInt(long value) {
    assignFromLong(value);
}

BigInt::BigInt(const BigInt& other)
    : m_width(other.m_width), m_bsl(mem_strdup(other.m_bsl.get())) {}

BigInt::BigInt(BigInt&& other) noexcept
    : m_width(std::exchange(other.m_width, 0)), m_bsl(std::move(other.m_bsl)) {}

BigInt& BigInt::operator=(const BigInt& other) {
    if (this != &other) {
        m_bsl.reset(mem_strdup(other.m_bsl.get()));
        m_width = other.m_width;
    }
    return *this;
}

BigInt& BigInt::operator=(BigInt&& other) noexcept {
    if (this != &other) {
        m_width = std::exchange(other.m_width, 0);
        m_bsl = std::move(other.m_bsl);
    }
    return *this;
}

BigInt& BigInt::operator=(long value) {
    assignFromLong(value);
    return *this;
}

BigInt::~BigInt() = default;

void BigInt::assignFromLong(long value) {
    const bool negative = value < 0;
    // The magnitude in unsigned arithmetic, so that LONG_MIN needs no special case.
    const unsigned long magnitude =
        negative ? 0UL - static_cast<unsigned long>(value) : static_cast<unsigned long>(value);
    m_width = std::max(1U, static_cast<unsigned>(std::bit_width(magnitude)));
    m_bsl.reset(newBSL(m_width, '0'));
    for (unsigned i = 0; i < m_width; ++i)
        m_bsl[m_width - i] = static_cast<char>('0' + ((magnitude >> i) & 1));
    if (negative)
        twosComplement(m_bsl.get());
}

// --- Queries --------------------------------------------------------------------------------

bool BigInt::hasNonNumericBit() const {
    return !FourStateKernels::get().allDefinite(bitChars(), m_width);
}

bool BigInt::isInteger() const {
    return m_width != 0 && !hasNonNumericBit();
}

bool BigInt::isNegative() const {
    return isInteger() && m_bsl[0] == '1';
}

bool BigInt::isPositive() const {
    return isInteger() && m_bsl[0] == '0' && std::memchr(m_bsl.get() + 1, '1', m_width) != nullptr;
}

bool BigInt::isZero() const {
    if (m_width == 0 || m_bsl == nullptr)
        return false;
    const char* c = m_bsl.get();
    while (*c == '0')
        ++c;
    return *c != '1';
}

char* BigInt::asString() const {
    return mem_strdup(m_bsl.get());
}

// --- Bit selection and assembly -------------------------------------------------------------

BigInt& BigInt::operator[](int position) const {
    const bool inside = position >= 0 && static_cast<unsigned>(position) < m_width;
    char* out = newBSL(1, '0');
    out[1] = inside ? m_bsl[m_width - static_cast<unsigned>(position)] : 'X';
    return intermediate(1, out);
}

BigInt& BigInt::bits(int msb, int lsb) const {
    const long long high = std::max(msb, lsb);
    const long long low = std::min(msb, lsb);
    if (high - low + 1 >= UINT_MAX)
        return intermediate(0, newBSL(0, '0')); // wider than any value can be
    const unsigned width = static_cast<unsigned>(high - low + 1);
    char* out = newBSL(width, '0');
    for (long long position = high; position >= low; --position) {
        const bool inside = position >= 0 && position < static_cast<long long>(m_width);
        out[1 + high - position] = inside ? m_bsl[m_width - position] : 'X';
    }
    return intermediate(width, out);
}

void BigInt::clip(unsigned count) {
    if (count == 0 || count >= m_width)
        return;
    std::memmove(m_bsl.get() + 1, m_bsl.get() + 1 + (m_width - count), count);
    m_bsl[count + 1] = '\0';
    m_width = count;
}

BigInt& BigInt::combine(const BigInt& low) const {
    const unsigned width = m_width + low.m_width;
    char* out = newBSL(width, '0');
    if (m_width != 0)
        std::memcpy(out + 1, m_bsl.get() + 1, m_width);
    if (low.m_width != 0)
        std::memcpy(out + 1 + m_width, low.m_bsl.get() + 1, low.m_width);
    return intermediate(width, out);
}

// --- Conversion steps and intermediate slots ------------------------------------------------

void BigInt::twosComplement(char* bsl) {
    if (bsl == nullptr)
        return;
    std::size_t length = 0;
    for (char* c = bsl; *c != '\0'; ++c, ++length) {
        switch (*c) {
        case '0':
            *c = '1';
            break;
        case '1':
            *c = '0';
            break;
        case 'Z':
            *c = 'X';
            break;
        case 'z':
            *c = 'x';
            break;
        default:
            break;
        }
    }
    for (std::size_t i = length; i-- > 0;) {
        if (bsl[i] != '1') {
            if (bsl[i] == '0')
                bsl[i] = '1';
            break;
        }
        bsl[i] = '0';
    }
}

void BigInt::reconcileWidths(unsigned& a, unsigned& b) {
    if (b == 0 && a != 0)
        b = a;
    else if (a == 0 && b != 0)
        a = b;
}

BigInt& BigInt::nextIntermediateValue() {
    if (!v_shutDownRegistered) {
        TarqToolkit::setShutDownStep(TqShutDownStep::BigInt, [] { (void)BigInt::shutDown(); });
        v_shutDownRegistered = true;
    }
    v_intermediateIndex = (v_intermediateIndex + 1) % v_intermediateCount;
    BigInt& slot = v_intermediates[v_intermediateIndex];
    slot.m_width = 0;
    slot.m_bsl.reset();
    return slot;
}

char* BigInt::newBSL(unsigned width, char sign) {
    char* bsl = new char[std::size_t(width) + 2];
    bsl[0] = sign;
    bsl[width + 1] = '\0';
    return bsl;
}

BigInt& BigInt::intermediate(unsigned width, char* bsl) {
    BigInt& slot = nextIntermediateValue();
    slot.m_width = width;
    slot.m_bsl.reset(bsl);
    return slot;
}

bool BigInt::shutDown() {
    for (BigInt& slot : v_intermediates) {
        slot.m_bsl.reset();
        slot.m_width = 0;
    }
    v_shutDownRegistered = false;
    return true;
}
