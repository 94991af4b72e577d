#pragma once

#include "core/TqExport.h"

/// ScanType: the classes of characters in a scanner's table, which are also the types of the
/// tokens the scanner returns. The numeric values are stored in application tables and must
/// not change.
enum ScanType : int {
    ST_PLUS = 0,
    ST_MINUS = 1,
    ST_STAR = 2,
    ST_SLASH = 3,
    ST_LPAREN = 4,
    ST_RPAREN = 5,
    ST_LBRACKET = 6,
    ST_RBRACKET = 7,
    ST_LETTER = 8,
    ST_NUMBER = 9,
    ST_SPACE = 10,
    ST_COLON = 11,
    ST_WORD = 12,
    ST_COMMA = 13,
    ST_NONE = 14,
    ST_END = 15,
    ST_LESS = 16,
    ST_GREATER = 17,
    ST_NEWLINE = 18,
    ST_QUOTE = 19,
    ST_DOUBLEQUOTE = 20,
    ST_AT = 21,
    ST_POINT = 22,
    ST_HASH = 23,
    ST_BACKSLASH = 24,
    ST_STRING = 25,
    ST_SEMICOLON = 26,
    ST_CARET = 27,
    ST_AT_SLASH = 28,
    ST_AT_MINUS = 29,
    ST_CR = 30,
    ST_BASE_HEX = 31,
    ST_BASE_DEC = 32,
    ST_BASE_BIN = 33,
    ST_BASE_OCT = 34,
    ST_LBRACE = 35,
    ST_RBRACE = 36,
    ST_TILDE = 37,
    ST_AMPERSAND = 38,
    ST_BAR = 39,
    ST_KEYWORD = 40,
    ST_DOLLAR = 41,
    ST_EQUALS = 42,
    ST_DOTDOT = 43,
    ST_SLASH2 = 44,
    ST_EXCLAMATION = 45,
    ST_GREATER2 = 46,
    ST_LESS2 = 47,
    ST_GREATER_EQUAL = 48,
    ST_LESS_EQUAL = 49,
    ST_EQUAL_EQUAL = 50,
    ST_NOT_EQUAL = 51,
    ST_QUESTION = 52,
    ST_CASE_EQUAL = 53,
    ST_CASE_NOT_EQUAL = 54,
};

/// The number of ScanType values (0 to 54).
inline constexpr int ST_COUNT = 55;

/// The display text of a type, as syntax errors quote it ("letter", "(", "'h", ...). Static
/// text; a value outside 0..54 gives "?".
TQ_EXPORT const char* scanTypeText(ScanType type);

/// True for the four Verilog base classes 'h, 'd, 'b and 'o (31 to 34).
inline bool scanTypeIsBase(ScanType type) {
    return type >= ST_BASE_HEX && type <= ST_BASE_OCT;
}
