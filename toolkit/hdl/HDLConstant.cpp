#include "hdl/HDLConstant.h"

#include "core/StringFunctions.h"
#include "core/TqObject.h"
#include "hdl/BinaryMagnitude_p.h"

#include <climits>
#include <cstdio>
#include <cstring>

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

const char* skipBlanks(const char* s) {
    while (isBlank(*s))
        ++s;
    return s;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

// Walks a digit string under the common underscore rule ("_" only directly after a digit)
// and counts its digits. digitOf says whether a character is a digit of the notation.
template <typename IsDigit>
bool countDigits(const char* s, IsDigit digitOf, bool allowUnderscore, unsigned& digits) {
    bool afterDigit = false;
    digits = 0;
    for (; *s != '\0'; ++s) {
        if (*s == '_') {
            if (!allowUnderscore || !afterDigit)
                return false;
            afterDigit = false;
        } else if (digitOf(*s)) {
            ++digits;
            afterDigit = true;
        } else {
            return false;
        }
    }
    return true;
}

bool isXZ(char c) {
    return c == 'X' || c == 'Z' || c == 'x' || c == 'z';
}

// Reads an optional decimal size as atoi would, saturating at INT_MAX, and the blanks after
// it. Returns the position after them.
const char* readSize(const char* s, unsigned& size) {
    s = skipBlanks(s);
    if (!isDigit(*s))
        return s;
    unsigned value = 0;
    for (; isDigit(*s); ++s) {
        const unsigned digit = static_cast<unsigned>(*s - '0');
        value = value > (INT_MAX - digit) / 10 ? INT_MAX : value * 10 + digit;
    }
    size = value;
    return skipBlanks(s);
}

void clearOutputs(HDLanguage& language, Radix& radix, char& upperCase, unsigned& size,
                  unsigned& bits) {
    language = HDLNone;
    radix = RadixNone;
    upperCase = 0;
    size = 0;
    bits = 0;
}

bool isLower(char c) {
    return c >= 'a' && c <= 'z';
}

// The radix a base letter stands for, in either case: b and o in both languages, d and h in
// Verilog, x in VHDL. RadixNone for any other character.
Radix radixOfLetter(char letter, HDLanguage language) {
    switch (letter) {
    case 'b':
    case 'B':
        return RadixBinary;
    case 'o':
    case 'O':
        return RadixOctal;
    case 'd':
    case 'D':
        return language == HDLVerilog ? RadixDecimal : RadixNone;
    case 'h':
    case 'H':
        return language == HDLVerilog ? RadixHexadecimal : RadixNone;
    case 'x':
    case 'X':
        return language == HDLVHDL ? RadixHexadecimal : RadixNone;
    default:
        return RadixNone;
    }
}

// Checks digits with the predicate of the radix, adding their bits on success.
bool digitsPass(Radix radix, const char* digits, unsigned& bits) {
    switch (radix) {
    case RadixBinary:
        return isBinary(digits, bits);
    case RadixOctal:
        return isOctal(digits, bits);
    case RadixHexadecimal:
        return isHexadecimal(digits, bits, true);
    default:
        return isDecimal(digits, bits);
    }
}

} // namespace

bool isBinary(const char* digits, unsigned& bits) {
    if (digits == nullptr || *digits == '\0')
        return false;
    unsigned count = 0;
    if (!countDigits(
            digits, [](char c) { return c == '0' || c == '1' || isXZ(c); }, true, count))
        return false;
    bits += count;
    return true;
}

bool isOctal(const char* digits, unsigned& bits) {
    if (digits == nullptr)
        return true;
    unsigned count = 0;
    if (!countDigits(
            digits, [](char c) { return (c >= '0' && c <= '7') || isXZ(c); }, true, count))
        return false;
    bits += 3 * count;
    return true;
}

bool isHexadecimal(const char* digits, unsigned& bits, bool allowXZ) {
    if (digits == nullptr || *digits == '\0')
        return false;
    auto hexDigit = [allowXZ](char c) {
        return isDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f') ||
               (allowXZ && isXZ(c));
    };
    unsigned count = 0;
    if (!countDigits(digits, hexDigit, allowXZ, count))
        return false;
    bits += 4 * count;
    return true;
}

bool isDecimal(const char* digits, unsigned& bits) {
    if (digits == nullptr)
        return false;
    const char* magnitude = *digits == '-' ? digits + 1 : digits;
    unsigned count = 0;
    if (*magnitude == '\0' || !countDigits(magnitude, isDigit, true, count))
        return false;
    BinaryMagnitude value;
    if (!value.readDecimal(magnitude, std::strlen(magnitude)))
        return false;
    const std::size_t length = value.bitLength();
    bits += length == 0 ? 1 : static_cast<unsigned>(length);
    return true;
}

char* parseVerilogConstant(const char* text, HDLanguage& language, Radix& radix, char& upperCase,
                           unsigned& size, unsigned& bits) {
    clearOutputs(language, radix, upperCase, size, bits);
    if (text == nullptr)
        return nullptr;
    const char* s = readSize(text, size);
    if (*s != '\'')
        return nullptr;
    const char letter = s[1];
    const char* digits = s + 2;
    radix = radixOfLetter(letter, HDLVerilog);
    if (radix == RadixNone)
        return nullptr;
    upperCase = isLower(letter) ? 0 : 1;
    if (!digitsPass(radix, digits, bits))
        return nullptr;
    language = HDLVerilog;
    return mem_strndup(digits, std::strlen(digits));
}

char* parseVHDLConstant(const char* text, HDLanguage& language, Radix& radix, char& upperCase,
                        unsigned& size, unsigned& bits) {
    clearOutputs(language, radix, upperCase, size, bits);
    if (text == nullptr)
        return nullptr;
    const char* s = readSize(text, size);
    char letter = '\0'; // none: a bare quoted string, which is a decimal number
    radix = RadixDecimal;
    if (*s != '"') {
        letter = *s;
        radix = radixOfLetter(letter, HDLVHDL);
        if (radix == RadixNone)
            return nullptr;
        s = skipBlanks(s + 1);
        if (*s != '"')
            return nullptr;
    }
    const char* open = s + 1;
    const char* close = std::strchr(open, '"');
    if (close == nullptr || close[1] != '\0')
        return nullptr;

    char* digits = mem_strndup(open, static_cast<std::size_t>(close - open));
    upperCase = isLower(letter) ? 0 : 1;
    if (!digitsPass(radix, digits, bits)) {
        delete[] digits;
        return nullptr;
    }
    language = HDLVHDL;
    return digits;
}

char* parseHDLConstant(const char* text, HDLanguage& language, Radix& radix, char& upperCase,
                       unsigned& size, unsigned& bits) {
    if (text == nullptr) {
        clearOutputs(language, radix, upperCase, size, bits);
        return nullptr;
    }
    const char* s = skipBlanks(text);
    if (isDecimal(s, bits)) {
        radix = RadixPlainDecimal;
        upperCase = 0;
        size = 0;
        if (language == HDLNone)
            language = HDLVerilog;
        return mem_strndup(s, std::strlen(s));
    }
    if (char* digits = parseVerilogConstant(s, language, radix, upperCase, size, bits))
        return digits;
    if (char* digits = parseVHDLConstant(s, language, radix, upperCase, size, bits))
        return digits;
    clearOutputs(language, radix, upperCase, size, bits);
    return nullptr;
}

char radixCharacter(Radix radix, HDLanguage language, char upperCase) {
    char letter = '\0';
    switch (radix) {
    case RadixBinary:
        letter = 'b';
        break;
    case RadixDecimal:
        letter = 'd';
        break;
    case RadixHexadecimal:
        letter = language == HDLVHDL ? 'x' : 'h';
        break;
    case RadixOctal:
        letter = 'o';
        break;
    default:
        return '\0';
    }
    return upperCase ? static_cast<char>(letter - 'a' + 'A') : letter;
}

char* formatHDLString(const char* digits, HDLanguage language, char radixLetter, unsigned size) {
    if (digits == nullptr)
        return nullptr;
    const std::size_t length = std::strlen(digits);
    // Size (at most 10 digits), letter, two quotes or an apostrophe, and the terminator.
    constexpr std::size_t notation = 16;
    if (length > std::size_t(INT_MAX) - notation)
        return nullptr; // more than a ring buffer can be grown to
    TqObject::nextStaticBuffer();
    char* out = TqObject::fitStaticBuffer(static_cast<int>(length + notation));
    if (radixLetter == '\0') {
        std::memcpy(out, digits, length + 1);
        return out;
    }
    int used = size != 0 ? std::snprintf(out, 12, "%u", size) : 0;
    if (language == HDLVHDL) {
        if (radixLetter != 'd' && radixLetter != 'D')
            out[used++] = radixLetter;
        out[used++] = '"';
        std::memcpy(out + used, digits, length);
        used += static_cast<int>(length);
        out[used++] = '"';
        out[used] = '\0';
    } else {
        out[used++] = '\'';
        out[used++] = radixLetter;
        std::memcpy(out + used, digits, length + 1);
    }
    return out;
}
