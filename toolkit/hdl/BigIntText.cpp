// The text side of BigInt: building a value from a digit string and writing it back in
// binary, octal, hexadecimal or decimal. The converters build their text directly in the
// block they return, not in a ring buffer first: a wide value would otherwise grow a ring
// buffer for the rest of the run.
#include "hdl/BigInt.h"

#include "hdl/BinaryMagnitude_p.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

namespace {

bool isDefinite(char bit) {
    return bit == '0' || bit == '1';
}

// The bits of one binary, octal or hexadecimal digit, or null for a character that is not
// one; X and Z digits give X and Z bits.
const char* digitBits(char digit, unsigned bitsPerDigit) {
    static const char* const binary[] = {"0", "1"};
    static const char* const octal[] = {"000", "001", "010", "011", "100", "101", "110", "111"};
    static const char* const hexadecimal[] = {"0000", "0001", "0010", "0011", "0100", "0101",
                                              "0110", "0111", "1000", "1001", "1010", "1011",
                                              "1100", "1101", "1110", "1111"};
    static const char* const unknown[] = {"X", "XXX", "XXXX"};
    static const char* const highZ[] = {"Z", "ZZZ", "ZZZZ"};
    const int kind = bitsPerDigit == 1 ? 0 : bitsPerDigit == 3 ? 1 : 2;
    if (digit == 'X' || digit == 'x')
        return unknown[kind];
    if (digit == 'Z' || digit == 'z')
        return highZ[kind];
    int value = -1;
    if (digit >= '0' && digit <= '9')
        value = digit - '0';
    else if (digit >= 'a' && digit <= 'f')
        value = digit - 'a' + 10;
    else if (digit >= 'A' && digit <= 'F')
        value = digit - 'A' + 10;
    if (value < 0 || value >= (1 << bitsPerDigit))
        return nullptr;
    return bitsPerDigit == 1   ? binary[value]
           : bitsPerDigit == 3 ? octal[value]
                               : hexadecimal[value];
}

// The bits of a binary, octal or hexadecimal digit string, "_" skipped; a character that is
// not a digit gives X bits.
std::string expandDigits(const char* text, unsigned bitsPerDigit) {
    std::string bits;
    bits.reserve(std::strlen(text) * bitsPerDigit);
    for (const char* c = text; *c != '\0'; ++c) {
        if (*c == '_')
            continue;
        const char* digit = digitBits(*c, bitsPerDigit);
        bits.append(digit != nullptr ? digit : digitBits('X', bitsPerDigit), bitsPerDigit);
    }
    return bits;
}

unsigned bitsPerDigitOf(Radix radix) {
    switch (radix) {
    case RadixBinary:
        return 1;
    case RadixOctal:
        return 3;
    case RadixHexadecimal:
        return 4;
    default:
        return 0;
    }
}

bool hasDigit(const char* text) {
    for (; *text != '\0'; ++text)
        if (*text != '_')
            return true;
    return false;
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

void BigInt::buildFromText(const char* text, Radix radix, unsigned width) {
    const bool decimal = radix == RadixDecimal || radix == RadixPlainDecimal;
    const unsigned bitsPerDigit = bitsPerDigitOf(radix);
    if (text == nullptr || (!decimal && bitsPerDigit == 0))
        return;
    if (!hasDigit(text) && width == 0)
        return;

    // No digits but a width gives that many 0 bits.
    std::string bits;
    bool negative = false;
    if (decimal && hasDigit(text)) {
        negative = *text == '-';
        const char* digits = negative ? text + 1 : text;
        BinaryMagnitude magnitude;
        if (!hasDigit(digits) || !magnitude.readDecimal(digits, std::strlen(digits))) {
            // Not a number: every bit unknown.
            const unsigned unknownWidth = std::max(width, 1U);
            m_bsl = newBSL(unknownWidth, '0');
            std::memset(m_bsl + 1, 'X', unknownWidth);
            m_width = unknownWidth;
            return;
        }
        bits.assign(std::max<std::size_t>(magnitude.bitLength(), 1), '0');
        magnitude.writeBits(bits.data(), bits.size());
    } else if (!decimal) {
        bits = expandDigits(text, bitsPerDigit);
    }

    const std::size_t own = bits.size();
    m_width = width != 0 ? width : static_cast<unsigned>(own);
    m_bsl = newBSL(m_width, '0');
    if (m_width <= own) {
        std::memcpy(m_bsl + 1, bits.data() + (own - m_width), m_width);
    } else {
        // A negative number extends its magnitude with 0 before the complement, which makes
        // the extension a sign extension.
        const char msb = own != 0 ? bits[0] : '0';
        const char fill = negative || msb == '1' ? '0' : msb;
        std::memset(m_bsl + 1, fill, m_width - own);
        std::memcpy(m_bsl + 1 + (m_width - own), bits.data(), own);
    }
    if (negative)
        twosComplement(m_bsl);
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
    const char* bits = m_bsl + 1 + (m_width - (length - filled));
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
            std::memcpy(&word, m_bsl + m_width - low - 3, 4);
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
        std::string copy(m_bsl, m_width + 1);
        twosComplement(copy.data());
        magnitude.readBits(copy.data() + 1 + (m_width - count), count);
    } else {
        magnitude.readBits(m_bsl + 1 + (m_width - count), count);
    }
    return magnitude.takeDecimal(negative);
}
