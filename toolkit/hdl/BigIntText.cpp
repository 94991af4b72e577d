// The text side of BigInt: building a value from a digit string and writing it back in
// binary, octal, hexadecimal or decimal. The converters build their text directly in the
// block they return, not in a ring buffer first: a wide value would otherwise grow a ring
// buffer for the rest of the run.
#include "hdl/BigInt.h"

#include "hdl/BinaryMagnitude_p.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

namespace {

bool isDefinite(char bit) {
    return bit == '0' || bit == '1';
}

// The bits of one binary, octal or hexadecimal digit, the most significant first: X and Z
// digits give X and Z bits, and so does any character that is not a digit of the radix.
const char* digitBits(char digit, unsigned bitsPerDigit) {
    static const char* const hexadecimal[] = {"0000", "0001", "0010", "0011", "0100", "0101",
                                              "0110", "0111", "1000", "1001", "1010", "1011",
                                              "1100", "1101", "1110", "1111"};
    // A digit's bits are the low bitsPerDigit characters of its four.
    const char* const unknown = "XXXX";
    const char* const highZ = "ZZZZ";
    const int value = BigInt::asDigit(digit);
    const char* bits = digit == 'Z' || digit == 'z'                ? highZ
                       : value >= 0 && value < (1 << bitsPerDigit) ? hexadecimal[value]
                                                                   : unknown;
    return bits + (4 - bitsPerDigit);
}

// Inserts "_" after every group characters counted from the right, in place; text has room
// for the separators.
void insertSeparators(char* text, std::size_t length, unsigned group) {
    if (group == 0 || length == 0)
        return;
    const std::size_t separators = (length - 1) / group;
    std::size_t to = length + separators;
    text[to] = '\0';
    for (std::size_t from = length, count = 0; from > 0;) {
        if (count == group) {
            text[--to] = '_';
            count = 0;
        }
        text[--to] = text[--from];
        ++count;
    }
}

std::size_t withSeparators(std::size_t length, unsigned group) {
    return group == 0 || length == 0 ? length : length + (length - 1) / group;
}

} // namespace

// --- Construction from text -----------------------------------------------------------------

BigInt::BigInt(const char* text, Radix radix, unsigned width) {
    if (text == nullptr || radix < RadixBinary || radix > RadixPlainDecimal)
        return;
    const std::size_t length = std::strlen(text);
    const std::unique_ptr<char[]> digits(new char[length + 1]);
    std::memcpy(digits.get(), text, length + 1);
    removeUnderscores(digits.get());
    if (digits[0] == '\0' && width == 0)
        return;
    bool negative = false;
    switch (radix) {
    case RadixBinary:
        m_bsl.reset(binToBSL(digits.get(), width));
        break;
    case RadixOctal:
        m_bsl.reset(octToBSL(digits.get(), width));
        break;
    case RadixHexadecimal:
        m_bsl.reset(hexToBSL(digits.get(), width));
        break;
    default:
        negative = removeNegativeSign(digits.get());
        m_bsl.reset(decToBSL(digits.get(), width));
        break;
    }
    m_width = width;
    // The magnitude was zero-extended to the width, so the complement extends it by its sign.
    if (negative && !hasNonNumericBit())
        twosComplement(m_bsl.get());
}

char* BigInt::binToBSL(const char* digits, unsigned& width) {
    return digitsToBSL(digits, 1, width);
}

char* BigInt::octToBSL(const char* digits, unsigned& width) {
    return digitsToBSL(digits, 3, width);
}

char* BigInt::hexToBSL(const char* digits, unsigned& width) {
    return digitsToBSL(digits, 4, width);
}

char* BigInt::digitsToBSL(const char* digits, unsigned bitsPerDigit, unsigned& width) {
    const std::size_t count = std::strlen(digits);
    if (width == 0)
        width = static_cast<unsigned>(std::min<std::size_t>(count * bitsPerDigit, UINT_MAX));
    char* bsl = newBSL(width, '0');
    // From the least significant digit up, as far as the width reaches.
    char* out = bsl + 1 + width;
    std::size_t written = 0;
    for (std::size_t d = count; d-- > 0 && written < width;) {
        const char* bits = digitBits(digits[d], bitsPerDigit);
        for (unsigned k = bitsPerDigit; k-- > 0 && written < width; ++written)
            *--out = bits[k];
    }
    if (written < width) {
        // Every digit went in; the last bit written is the digits' most significant one.
        const char msb = written != 0 ? *out : '0';
        std::memset(bsl + 1, msb == '1' ? '0' : msb, width - written);
    }
    return bsl;
}

char* BigInt::decToBSL(const char* digits, unsigned& width) {
    BinaryMagnitude magnitude;
    const std::size_t length = std::strlen(digits);
    if (length == 0 || !magnitude.readDecimal(digits, length)) {
        width = std::max(width, 1U);
        char* bsl = newBSL(width, '0');
        std::memset(bsl + 1, 'X', width);
        return bsl;
    }
    if (width == 0)
        width = static_cast<unsigned>(std::max<std::size_t>(magnitude.bitLength(), 1));
    char* bsl = newBSL(width, '0');
    magnitude.writeBits(bsl + 1, width);
    return bsl;
}

char* BigInt::removeUnderscores(char* text) {
    if (text == nullptr)
        return nullptr;
    char* to = text;
    for (const char* from = text; *from != '\0'; ++from)
        if (*from != '_')
            *to++ = *from;
    *to = '\0';
    return text;
}

bool BigInt::removeNegativeSign(char* text) {
    if (text == nullptr || text[0] != '-')
        return false;
    std::memmove(text, text + 1, std::strlen(text));
    return true;
}

int BigInt::asDigit(char c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// --- Text -----------------------------------------------------------------------------------

char* BigInt::asNumericString(Radix radix, unsigned width, unsigned group, bool upper) const {
    switch (radix) {
    case RadixBinary:
        return BSLToBinary(width, group, upper);
    case RadixDecimal:
        return BSLToDecimal(width, group, false);
    case RadixHexadecimal:
        return BSLToHexadecimal(width, group, upper);
    case RadixOctal:
        return BSLToOctal(width, group, upper);
    case RadixPlainDecimal:
        return BSLToDecimal(width, group, true);
    default:
        return nullptr;
    }
}

char BigInt::fillCharacter() const {
    const char msb = m_bsl[1];
    return isDefinite(msb) ? '0' : msb;
}

char* BigInt::BSLToBinary(unsigned width, unsigned group, bool upper) const {
    if (m_width == 0)
        return nullptr;
    const std::size_t length = width != 0 ? width : m_width;
    char* text = new char[withSeparators(length, group) + 1];
    const std::size_t filled = length > m_width ? length - m_width : 0;
    std::memset(text, fillCharacter(), filled);
    const char* bits = m_bsl.get() + 1 + (m_width - (length - filled));
    const char unknown = upper ? 'X' : 'x', highZ = upper ? 'Z' : 'z';
    for (std::size_t i = filled; i < length; ++i, ++bits)
        text[i] = isDefinite(*bits) ? *bits : (*bits == 'Z' || *bits == 'z') ? highZ : unknown;
    text[length] = '\0';
    insertSeparators(text, length, group);
    return text;
}

char* BigInt::BSLToOctal(unsigned width, unsigned group, bool upper) const {
    return groupedDigits(3, width, group, upper);
}

char* BigInt::BSLToHexadecimal(unsigned width, unsigned group, bool upper) const {
    return groupedDigits(4, width, group, upper);
}

char* BigInt::groupedDigits(unsigned bitsPerDigit, unsigned width, unsigned group,
                            bool upper) const {
    if (m_width == 0)
        return nullptr;
    const std::size_t length = width != 0 ? width : m_width; // bits covered
    const std::size_t digits = (length - 1) / bitsPerDigit + 1;
    char* text = new char[withSeparators(digits, group) + 1];
    const char fill = fillCharacter();
    const char* letters = upper ? "0123456789ABCDEF" : "0123456789abcdef";
    const char unknown = upper ? 'X' : 'x', highZ = upper ? 'Z' : 'z';
    auto bitAt = [this, fill](std::size_t position) {
        return position < m_width ? m_bsl[m_width - position] : fill;
    };

    for (std::size_t d = 0; d < digits; ++d) {
        const std::size_t low = d * bitsPerDigit;
        char& out = text[digits - 1 - d];
        if (low >= m_width) {
            out = fill;
            continue;
        }
        const std::size_t high = std::min<std::size_t>(low + bitsPerDigit, length);
        // The common case first: a whole hexadecimal digit of 0 and 1 bits inside the value.
        if (bitsPerDigit == 4 && high == low + 4 && high <= m_width) {
            std::uint32_t word;
            std::memcpy(&word, m_bsl.get() + m_width - low - 3, 4);
            if ((word & 0xFEFEFEFEU) == 0x30303030U) {
                // Each character's bit lands at its own place in the top byte.
                out = letters[((word & 0x01010101U) * 0x08040201U) >> 24 & 0xF];
                continue;
            }
        }
        unsigned value = 0;
        bool allZ = true, definite = true;
        for (std::size_t position = low; position < high; ++position) {
            const char bit = bitAt(position);
            allZ = allZ && bit == 'Z';
            definite = definite && isDefinite(bit);
            value |= unsigned(bit == '1') << (position - low);
        }
        out = definite ? letters[value] : allZ ? highZ : unknown;
    }
    text[digits] = '\0';
    insertSeparators(text, digits, group);
    return text;
}

char* BigInt::BSLToDecimal(unsigned width, unsigned, bool isSigned) const {
    if (m_width == 0)
        return nullptr;
    if (hasNonNumericBit()) {
        char* text = new char[2];
        std::memcpy(text, "#", 2);
        return text;
    }
    const bool negative = isSigned && m_bsl[0] == '1';
    const std::size_t count = width != 0 && width < m_width ? width : m_width;
    BinaryMagnitude magnitude;
    if (negative) {
        // The magnitude is the two's complement of the whole string, sign included.
        std::string copy(m_bsl.get(), m_width + 1);
        twosComplement(copy.data());
        magnitude.readBits(copy.data() + 1 + (m_width - count), count);
    } else {
        magnitude.readBits(m_bsl.get() + 1 + (m_width - count), count);
    }
    return magnitude.takeDecimal(negative);
}
