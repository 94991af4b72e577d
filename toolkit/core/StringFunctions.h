/// \file
/// The toolkit's free string functions. Each says where its result lives: in place (the
/// argument itself), the static ring of TqObject (valid until eight more ring buffers are
/// taken), the shared 256-byte scratch buffer (valid until the next strReplaceStr or
/// strExtractField), or the heap (allocated with new[], the caller frees it with delete[]).
/// Ring and scratch results are process-wide and unlocked: one thread at a time.
#pragma once

#include "core/TqExport.h"

#include <cstddef>

class QString;

/// In place: skips the leading characters of s that are in set and moves the rest, with its
/// terminator, to the start. Returns s, or null if either argument is null.
TQ_EXPORT char* stripLeading(char* s, const char* set);
/// In place: cuts the trailing characters of s that are in set. Returns s, or null if either
/// argument is null. A string made only of such characters becomes empty.
TQ_EXPORT char* stripTrailing(char* s, const char* set);
///@{
/// In place: removes trailing zeros of a fraction and then a bare point: "1.500" gives "1.5",
/// "2.000" gives "2", "3." gives "3"; a text without a point is left alone. Returns s.
TQ_EXPORT char* stripZeroFraction(char* s);
TQ_EXPORT QString* stripZeroFraction(QString* s);
///@}
/// In place: cuts s at its first point. Returns s (null for null).
TQ_EXPORT char* stripFraction(char* s);
/// True if c occurs in set before its terminator; the terminator never matches.
TQ_EXPORT bool strIncludes(const char* set, char c);

/// Heap: a copy of s in a block with room for extra more characters and the terminator.
/// Null for null. A negative extra never makes the block smaller than the copy.
TQ_EXPORT char* strdupn(const char* s, short extra);
/// Heap: a followed by b; null if either is null.
TQ_EXPORT char* strcatdup(const char* a, const char* b);
/// Heap: a copy of s; null for null.
TQ_EXPORT char* mem_strdup(const char* s);
/// Heap: the first length bytes of s (which must hold that many) and a terminator; null for
/// null. The one heap copy of the library: every function that returns a string for the
/// caller to free makes it here.
TQ_EXPORT char* mem_strndup(const char* s, std::size_t length);
/// Heap: s in double quotes, with tab, newline, carriage return, double quote and backslash
/// written as `\t`, `\n`, `\r`, `\"` and `\\`. Null for null.
TQ_EXPORT char* strAsQuotedString(const char* s);
/// Heap: the inverse of strAsQuotedString. An opening double quote is dropped, an unescaped
/// closing one ends the text, `\t` `\n` `\r` become the control characters and a backslash before
/// any other character yields that character. Text without quotes is read the same way to
/// its end. Null for null.
TQ_EXPORT char* strExpandQuotedString(const char* s);

/// True if some character is graphic (neither blank nor control); bytes of 128 and above
/// (UTF-8 sequences) count as graphic. False for null.
TQ_EXPORT bool hasVisibleCharacters(const char* s);
/// True for optional leading white space, an optional sign, digits and, with allowFraction, a
/// point followed by digits only. A lone sign is numeric; trailing white space is not.
TQ_EXPORT bool isNumericString(const char* s, bool allowFraction);
/// Pointer into text: the start of line n, counted from 1; null if text has fewer lines, n is
/// below 1 or text is null.
TQ_EXPORT char* lineNumber(int n, char* text);
/// 1 plus the number of newlines; 0 for null.
TQ_EXPORT int numLines(const char* text);
///@{
/// The ASCII case of one character: only a to z and A to Z change; every other byte, those of
/// 128 and above included, is returned as it is, whatever locale the application set.
constexpr char asciiUpper(char c) {
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
constexpr char asciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
///@}
///@{
/// In place: ASCII case conversion (asciiUpper, asciiLower). Return s.
TQ_EXPORT char* strToUpper(char* s);
TQ_EXPORT char* strToLower(char* s);
///@}
/// In place: reverses s. Returns s.
TQ_EXPORT char* strReverse(char* s);

/// Shared scratch: s with every find replaced by repl, scanned left to right without
/// rescanning a character that broke a partial match ("aab" with find "ab" is unchanged).
/// At most 255 characters. An empty find never matches. Null for null s.
TQ_EXPORT char* strReplaceStr(const char* s, const char* find, const char* repl);
/// Shared scratch: field n of s, fields counted from -1 (the text before the first sep is
/// field -1). At most 255 characters. The terminator is written only when the sep ending the
/// field is reached: a field that runs to the end of s is followed by whatever the scratch
/// held before. Null for null s.
TQ_EXPORT char* strExtractField(int n, const char* s, char sep);

/// Ring: s with its trailing decimal number increased by n ("a007" + 1 gives "a8"), or with n
/// appended when it has none ("net" + 1 gives "net1"). The number saturates at the int range.
TQ_EXPORT char* incrementOfString(const char* s, int n);
/// Ring: the low width bits of value (0 means 32), least significant first, as '0'/'1'.
/// Positions beyond 32 bits are '0'.
TQ_EXPORT char* asBinReversed(unsigned value, unsigned width);
/// Ring: as asBinReversed, most significant bit first.
TQ_EXPORT char* asBin(unsigned value, unsigned width);
