// Addition, subtraction and negation of BigInt, in two's complement over the sign character
// and the bits, 64 bit characters per machine word.
#include "hdl/BigInt.h"

#include "hdl/FourStateKernels_p.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

// Whether the sum of two non-negative values carries out of their top bit, which widens it:
// the first position from the top where the two bits agree decides (two 1s carry out whatever
// comes from below, two 0s absorb it). narrow is 0 over the extended positions. The first
// 64 positions are looked at; past a run that long the answer is a guess that the caller
// checks.
bool carriesOut(const char* wide, const char* narrow, std::size_t extended, std::size_t width) {
    const std::size_t bound = std::min<std::size_t>(width, 64);
    for (std::size_t i = 0; i < bound; ++i) {
        const char left = wide[i], right = i < extended ? '0' : narrow[i - extended];
        if (left == right)
            return left == '1';
    }
    return false;
}

} // namespace

BigInt& BigInt::operator+(const BigInt& other) const {
    // Addition commutes, so the narrower operand can go second, extended with its sign.
    const BigInt& wide = m_width >= other.m_width ? *this : other;
    const BigInt& narrow = &wide == this ? other : *this;
    const unsigned width = wide.m_width;
    const std::size_t extended = width - narrow.m_width;
    const unsigned wideSign = wide.signCharacter() == '1';
    const unsigned narrowSign = narrow.signCharacter() == '1';

    // The sum is written where it ends up, one place further on when the result widens. Two
    // negative operands always widen and mixed signs never do; for two non-negative ones a
    // wrong guess moves the bits afterwards, into the spare character allocated for it.
    bool guess = wideSign && narrowSign;
    if (!wideSign && !narrowSign)
        guess = carriesOut(wide.bitChars(), narrow.bitChars(), extended, width);
    char* out = newBSL(width + 1, '0');
    char* bits = out + 1 + guess;
    const FourStateKernels& kernels = FourStateKernels::get();
    unsigned carry = 0;
    if (!kernels.addRuns(wide.bitChars() + extended, narrow.bitChars(), bits + extended,
                         narrow.m_width, carry) ||
        !kernels.addFill(wide.bitChars(), narrowSign ? '1' : '0', bits, extended, carry)) {
        std::memset(out + 1, 'X', width);
        out[width + 1] = '\0';
        return intermediate(width, out);
    }
    // The sign position adds the two sign characters and the carry out of the top bit.
    const unsigned total = wideSign + narrowSign + carry;
    const unsigned sign = total & 1, carryOut = total >> 1;
    const bool widens = (sign && !wideSign && !narrowSign) || (carryOut && wideSign && narrowSign);
    if (widens != guess)
        std::memmove(out + 1 + widens, bits, width);
    if (!widens) {
        out[0] = static_cast<char>('0' + sign);
        out[width + 1] = '\0';
        return intermediate(width, out);
    }
    // The whole string moved one place on: the final carry is the new sign character.
    out[0] = static_cast<char>('0' + carryOut);
    out[1] = static_cast<char>('0' + sign);
    return intermediate(width + 1, out);
}

BigInt& BigInt::operator+(long other) const {
    return *this + BigInt(other);
}

void BigInt::negate() {
    if (m_bsl == nullptr)
        return;
    if (hasNonNumericBit()) {
        m_bsl[0] = '0';
        std::memset(m_bsl.get() + 1, 'X', m_width);
    } else {
        twosComplement(m_bsl.get());
    }
}

BigInt& BigInt::operator-() const {
    // A value without a string still gives one, as every operator's result has.
    char* copy = newBSL(m_width, signCharacter());
    std::memcpy(copy + 1, bitChars(), m_width);
    BigInt negated(m_width, copy);
    negated.negate();
    return intermediate(std::exchange(negated.m_width, 0), negated.m_bsl.release());
}

// The negated operand is a local copy, not an intermediate slot: taking a slot here could
// free this value's string when this value is the slot taken next.
BigInt& BigInt::operator-(const BigInt& other) const {
    BigInt negated(other);
    negated.negate();
    return *this + negated;
}

BigInt& BigInt::operator-(long other) const {
    BigInt negated(other);
    negated.negate();
    return *this + negated;
}

BigInt& BigInt::operator+=(const BigInt& other) {
    return *this = std::move(*this + other);
}
BigInt& BigInt::operator+=(long other) {
    return *this = std::move(*this + other);
}
BigInt& BigInt::operator-=(const BigInt& other) {
    return *this = std::move(*this - other);
}
BigInt& BigInt::operator-=(long other) {
    return *this = std::move(*this - other);
}
