// Addition, subtraction and negation of BigInt, in two's complement over the sign character
// and the bits, 64 bit characters per machine word.
#include "hdl/BigInt.h"

#include "hdl/FourStateKernels_p.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

namespace {

// Word storage for the adder: on the stack up to 2048 bits, else on the heap; not cleared.
class WordBuffer {
public:
    explicit WordBuffer(std::size_t count)
        : m_heap(count > inlineWords ? new std::uint64_t[count] : nullptr),
          m_words(m_heap ? m_heap.get() : m_inline) {}
    std::uint64_t* data() { return m_words; }

private:
    static constexpr std::size_t inlineWords = 32;
    std::uint64_t m_inline[inlineWords];
    std::unique_ptr<std::uint64_t[]> m_heap;
    std::uint64_t* m_words;
};

// Packs a value's bits into count words, extended above its width with its sign bit.
// False if a bit is neither 0 nor 1.
bool packExtended(const char* bits, std::size_t width, unsigned sign, std::uint64_t* words,
                  std::size_t count) {
    const std::size_t own = (width + 63) / 64;
    if (!FourStateKernels::get().packBits(bits, width, words))
        return false;
    const std::uint64_t fill = sign ? ~std::uint64_t(0) : 0;
    if (sign && width % 64 != 0)
        words[own - 1] |= fill << (width % 64);
    for (std::size_t i = own; i < count; ++i)
        words[i] = fill;
    return true;
}

} // namespace

BigInt& BigInt::operator+(const BigInt& other) const {
    const unsigned width = std::max(m_width, other.m_width);
    const unsigned leftSign = signCharacter() == '1';
    const unsigned rightSign = other.signCharacter() == '1';

    // Positions 0 .. width - 1 are the bits, width the sign and width + 1 its copy, from which
    // the carry out of the sign position follows.
    const std::size_t count = (std::size_t(width) + 2 + 63) / 64;
    WordBuffer left(count), right(count);
    if (!packExtended(bitChars(), m_width, leftSign, left.data(), count) ||
        !packExtended(other.bitChars(), other.m_width, rightSign, right.data(), count)) {
        char* out = newBSL(width, '0');
        std::memset(out + 1, 'X', width);
        return intermediate(width, out);
    }
    std::uint64_t* sum = left.data();
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t a = sum[i], b = right.data()[i];
        std::uint64_t s = a + b;
        const std::uint64_t overflow = s < a;
        s += carry;
        carry = overflow | (s < carry);
        sum[i] = s;
    }
    auto bitAt = [sum](std::size_t position) {
        return static_cast<unsigned>((sum[position / 64] >> (position % 64)) & 1);
    };
    const unsigned sign = bitAt(width);
    const unsigned carryOut = bitAt(std::size_t(width) + 1) ^ leftSign ^ rightSign;
    const bool widens = (sign && !leftSign && !rightSign) || (carryOut && leftSign && rightSign);
    if (!widens) {
        char* out = newBSL(width, static_cast<char>('0' + sign));
        FourStateKernels::get().unpackBits(sum, width, out + 1);
        return intermediate(width, out);
    }
    // The whole string moves one place on; the computed sign becomes the top bit.
    char* out = newBSL(width + 1, static_cast<char>('0' + carryOut));
    out[1] = static_cast<char>('0' + sign);
    FourStateKernels::get().unpackBits(sum, width, out + 2);
    return intermediate(width + 1, out);
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
