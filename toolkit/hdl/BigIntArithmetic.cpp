// Addition, subtraction and negation of BigInt, in two's complement over the sign character
// and the bits, 64 bit characters per machine word.
#include "hdl/BigInt.h"

#include "hdl/BitChars_p.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace {

// Bits position .. position + 63 of a value (position 0 the least significant), positions at
// and above its width reading the fill bit. The bit characters must all be '0' or '1'.
std::uint64_t readWord(const char* bits, std::size_t width, std::size_t position, unsigned fill) {
    if (position + 64 <= width) {
        const char* end = bits + width - position; // one past the character of position
        std::uint64_t word = 0;
        for (int k = 7; k >= 0; --k)
            word = (word << 8) | bitchars::pack8(end - 8 * k - 8);
        return word;
    }
    std::uint64_t word = 0;
    for (unsigned k = 0; k < 64; ++k) {
        const std::size_t at = position + k;
        const unsigned bit = at < width ? (bits[width - 1 - at] == '1') : fill;
        word |= std::uint64_t(bit) << k;
    }
    return word;
}

// Writes the bits position .. of word below width as characters (position 0 last).
void writeWord(char* bits, std::size_t width, std::size_t position, std::uint64_t word) {
    if (position >= width)
        return;
    if (position + 64 <= width) {
        char* end = bits + width - position;
        for (int k = 0; k < 8; ++k)
            bitchars::unpack8(end - 8 * k - 8, static_cast<unsigned>(word >> (8 * k)));
        return;
    }
    for (std::size_t at = position; at < width; ++at)
        bits[width - 1 - at] = static_cast<char>('0' + ((word >> (at - position)) & 1));
}

} // namespace

BigInt& BigInt::operator+(const BigInt& other) const {
    const unsigned width = std::max(m_width, other.m_width);
    if (hasNonNumericBit() || other.hasNonNumericBit()) {
        char* out = newBSL(width, '0');
        std::memset(out + 1, 'X', width);
        return intermediate(width, out);
    }
    const unsigned leftSign = signCharacter() == '1';
    const unsigned rightSign = other.signCharacter() == '1';

    // Positions 0 .. width - 1 are the bits, width the sign and width + 1 its copy, from which
    // the carry out of the sign position follows. One spare character lets the result widen.
    char* buffer = new char[std::size_t(width) + 3];
    char* bits = buffer + 1;
    std::uint64_t carry = 0;
    unsigned sign = 0, beyond = 0;
    for (std::size_t position = 0; position < std::size_t(width) + 2; position += 64) {
        const std::uint64_t left = readWord(bitChars(), m_width, position, leftSign);
        const std::uint64_t right = readWord(other.bitChars(), other.m_width, position, rightSign);
        std::uint64_t sum = left + right;
        const std::uint64_t overflow = sum < left;
        sum += carry;
        carry = overflow | (sum < carry);
        writeWord(bits, width, position, sum);
        if (width - position < 64)
            sign = (sum >> (width - position)) & 1;
        if (width + 1 - position < 64)
            beyond = (sum >> (width + 1 - position)) & 1;
    }
    const unsigned carryOut = beyond ^ leftSign ^ rightSign;
    const bool widens = (sign && !leftSign && !rightSign) || (carryOut && leftSign && rightSign);
    if (!widens) {
        buffer[0] = static_cast<char>('0' + sign);
        buffer[width + 1] = '\0';
        return intermediate(width, buffer);
    }
    // The whole string moves one place on; the computed sign becomes the top bit.
    std::memmove(buffer + 2, bits, width);
    buffer[0] = static_cast<char>('0' + carryOut);
    buffer[1] = static_cast<char>('0' + sign);
    buffer[width + 2] = '\0';
    return intermediate(width + 1, buffer);
}

BigInt& BigInt::operator+(long other) const {
    return *this + BigInt(other);
}

BigInt& BigInt::operator-() const {
    char* out = newBSL(m_width, '0');
    if (hasNonNumericBit()) {
        std::memset(out + 1, 'X', m_width);
    } else {
        out[0] = signCharacter();
        std::memcpy(out + 1, bitChars(), m_width);
        twosComplement(out);
    }
    return intermediate(m_width, out);
}

BigInt& BigInt::operator-(const BigInt& other) const {
    return *this + -other;
}

BigInt& BigInt::operator-(long other) const {
    return *this + -BigInt(other);
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
