// The comparisons of BigInt: three-valued equality and ordering, decided at the first position
// from the top that does not hold the same definite bit, and literal case equality.
#include "hdl/BigInt.h"

#include "hdl/BitChars_p.h"
#include "hdl/FourStateKernels_p.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

bool isDefinite(char bit) {
    return bit == '0' || bit == '1';
}

// The index of the first of n positions where a does not hold the definite fill, or n.
std::size_t firstMismatch(const char* a, char fill, std::size_t n) {
    if (!isDefinite(fill))
        return 0;
    std::size_t i = 0;
    while (i < n && a[i] == fill)
        ++i;
    return i;
}

// The index of the first of n positions where a and b do not hold the same 0 or 1, or n.
// A short run is scanned here a word at a time, the last word overlapping the one before; a
// longer one is worth the vector kernel's call.
std::size_t firstUndecidedRun(const char* a, const char* b, std::size_t n) {
    if (n > 64)
        return FourStateKernels::get().firstUndecided(a, b, n);
    std::size_t i = 0;
    if (n >= 8) {
        while (i + 8 <= n && bitchars::sameBinary8(a + i, b + i))
            i += 8;
        if (i + 8 > n && bitchars::sameBinary8(a + n - 8, b + n - 8))
            return n;
    }
    while (i < n && a[i] == b[i] && isDefinite(a[i]))
        ++i;
    return i;
}

// The character an operand extends with in equality and ordering: its sign character, or its
// leading bit when that is not a definite one.
char comparisonFill(char sign, unsigned width, const char* bits) {
    return width != 0 && !isDefinite(bits[0]) ? bits[0] : sign;
}

BIGINTBOOLEAN negation(BIGINTBOOLEAN answer) {
    return answer == BIGINT_UNKNOWN ? BIGINT_UNKNOWN
                                    : (answer == BIGINT_TRUE ? BIGINT_FALSE : BIGINT_TRUE);
}

BIGINTBOOLEAN literalEquality(const char* a, const char* b) {
    if (a == nullptr || b == nullptr)
        return BIGINT_FALSE;
    return std::strcmp(a, b) == 0 ? BIGINT_TRUE : BIGINT_FALSE;
}

bool oppositeSigns(char a, char b) {
    return (a == '0' && b == '1') || (a == '1' && b == '0');
}

const char* bitsOf(const BigInt& value) {
    return value.bsl() != nullptr ? value.bsl() + 1 : "";
}

char signOf(const BigInt& value) {
    return value.bsl() != nullptr ? value.bsl()[0] : '0';
}

// The index of the first bit from the top, both values extended to the larger width, that
// does not hold the same 0 or 1 in both; -1 when there is none. Reports the two bits there.
long long firstUndecided(const BigInt& left, const BigInt& right, char& leftBit, char& rightBit) {
    const bool leftWider = left.size() >= right.size();
    const BigInt& wide = leftWider ? left : right;
    const BigInt& narrow = leftWider ? right : left;
    const char* wideBits = bitsOf(wide);
    const char* narrowBits = bitsOf(narrow);
    const std::size_t extended = wide.size() - narrow.size();
    const char fill = comparisonFill(signOf(narrow), narrow.size(), narrowBits);

    std::size_t at = firstMismatch(wideBits, fill, extended);
    char narrowBit = fill;
    if (at == extended) {
        at = extended + firstUndecidedRun(wideBits + extended, narrowBits, narrow.size());
        if (at == wide.size())
            return -1;
        narrowBit = narrowBits[at - extended];
    }
    leftBit = leftWider ? wideBits[at] : narrowBit;
    rightBit = leftWider ? narrowBit : wideBits[at];
    return static_cast<long long>(at);
}

} // namespace

BIGINTBOOLEAN BigInt::operator==(const BigInt& other) const {
    if (m_width == 0 || other.m_width == 0)
        return literalEquality(m_bsl.get(), other.m_bsl.get());
    if (oppositeSigns(m_bsl[0], other.m_bsl[0]))
        return BIGINT_FALSE;
    char leftBit, rightBit;
    if (m_width == other.m_width) {
        // Nothing to extend: the common case goes straight to the scan.
        const std::size_t at = firstUndecidedRun(m_bsl.get() + 1, other.m_bsl.get() + 1, m_width);
        if (at == m_width)
            return BIGINT_TRUE;
        leftBit = m_bsl[1 + at];
        rightBit = other.m_bsl[1 + at];
    } else if (firstUndecided(*this, other, leftBit, rightBit) < 0) {
        return BIGINT_TRUE;
    }
    return isDefinite(leftBit) && isDefinite(rightBit) ? BIGINT_FALSE : BIGINT_UNKNOWN;
}

BIGINTBOOLEAN BigInt::operator>(const BigInt& other) const {
    const char leftSign = signCharacter(), rightSign = other.signCharacter();
    if (oppositeSigns(leftSign, rightSign))
        return leftSign == '0' ? BIGINT_TRUE : BIGINT_FALSE;
    char leftBit, rightBit;
    if (firstUndecided(*this, other, leftBit, rightBit) < 0)
        return m_width == 0 || other.m_width == 0 ? BIGINT_UNKNOWN : BIGINT_FALSE;
    if (!isDefinite(leftBit) || !isDefinite(rightBit))
        return BIGINT_UNKNOWN;
    return leftBit == '1' ? BIGINT_TRUE : BIGINT_FALSE;
}

BIGINTBOOLEAN BigInt::operator>=(const BigInt& other) const {
    return (*this == other) == BIGINT_TRUE ? BIGINT_TRUE : *this > other;
}

BIGINTBOOLEAN BigInt::operator!=(const BigInt& other) const {
    return negation(*this == other);
}

BIGINTBOOLEAN BigInt::operator<(const BigInt& other) const {
    return negation(*this >= other);
}

BIGINTBOOLEAN BigInt::operator<=(const BigInt& other) const {
    return negation(*this > other);
}

BIGINTBOOLEAN BigInt::case_eq(const BigInt& other) const {
    if (m_width == 0 || other.m_width == 0)
        return literalEquality(m_bsl.get(), other.m_bsl.get());
    const bool leftWider = m_width >= other.m_width;
    const BigInt& wide = leftWider ? *this : other;
    const BigInt& narrow = leftWider ? other : *this;
    const std::size_t extended = wide.m_width - narrow.m_width;
    const char* bits = wide.bitChars();
    for (std::size_t i = 0; i < extended; ++i)
        if (bits[i] != '0')
            return BIGINT_FALSE;
    return bitchars::sameChars(bits + extended, narrow.bitChars(), narrow.m_width) ? BIGINT_TRUE
                                                                                   : BIGINT_FALSE;
}

BIGINTBOOLEAN BigInt::case_neq(const BigInt& other) const {
    return negation(case_eq(other));
}

BIGINTBOOLEAN BigInt::case_eq(long other) const {
    return case_eq(BigInt(other));
}
BIGINTBOOLEAN BigInt::case_neq(long other) const {
    return case_neq(BigInt(other));
}
BIGINTBOOLEAN BigInt::operator==(long other) const {
    return *this == BigInt(other);
}
BIGINTBOOLEAN BigInt::operator!=(long other) const {
    return *this != BigInt(other);
}
BIGINTBOOLEAN BigInt::operator>(long other) const {
    return *this > BigInt(other);
}
BIGINTBOOLEAN BigInt::operator>=(long other) const {
    return *this >= BigInt(other);
}
BIGINTBOOLEAN BigInt::operator<(long other) const {
    return *this < BigInt(other);
}
BIGINTBOOLEAN BigInt::operator<=(long other) const {
    return *this <= BigInt(other);
}
