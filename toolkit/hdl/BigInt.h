/// \file
/// BigInt: a hardware-description value of any width whose every bit is 0, 1, X (unknown) or
/// Z (high impedance), with the bitwise, arithmetic and comparison operators of an HDL and
/// conversions to and from binary, octal, decimal and hexadecimal text.
#pragma once

#include "core/TqExport.h"
#include "hdl/HDLConstant.h"

#include <memory>

/// The answer of a comparison: false, true or unknown (an X or Z bit decided it).
enum BIGINTBOOLEAN : int {
    BIGINT_FALSE = 0,
    BIGINT_TRUE = 1,
    BIGINT_UNKNOWN = 2,
};

/// Representation: a width and a heap string bsl of width + 1 characters. Character 0 is the
/// sign character, '0' for a non-negative value and '1' for a negative one; characters
/// 1..width are the bits, the most significant first, each '0', '1', 'X' or 'Z'. When decoded
/// for logic, any character other than '0', '1' and 'Z' counts as X (so the lower-case "x" a
/// reduction writes does too). A width of 0 means no value yet.
///
/// Intermediate values: an operator that builds a new value returns a reference to one of 8
/// static slots, taken in turn. The result stays valid until eight more intermediate values
/// have been taken; copy it into a BigInt to keep it. One thread at a time.
///
/// Extension: where an operand is narrower than the result, its missing high bits are
/// extended. The bitwise operators use the four-state rule (a leading 1 extends as 0, a leading
/// 0, X or Z extends as itself); the arithmetic extends with the sign character; equality and
/// ordering extend with the sign character unless the leading bit is X or Z. An operand of
/// width 0 reads as 0 in the bitwise and arithmetic operators.
class TQ_EXPORT BigInt {
public:
    // --- Construction -----------------------------------------------------------------------

    /// No value: width 0, no string.
    BigInt() = default;
    /// From a digit string as the HDL constant parsers return it: "_" is removed, a decimal or
    /// plain decimal text loses a leading "-", and the digits go through binToBSL, octToBSL,
    /// hexToBSL or decToBSL with width (0 keeps the digits' own width). A negative number is
    /// then the two's complement of its magnitude, with sign character '1' ("-5" is 1011);
    /// a decimal text that is not a number stays all X with sign '0'. Null text, a width of 0
    /// with a text that is empty once "_" is removed, or a radix outside 1..5 give no value.
    BigInt(const char* text, Radix radix, unsigned width);
    /// The bit length of value (at least 1), sign character '0'. A negative value is the two's
    /// complement of its magnitude's form (-5 is sign '1' and bits 011); LONG_MIN works.
    BigInt(long value);
    ///@{
    /// Copies own their string; a moved-from value has no value.
    BigInt(const BigInt& other);
    BigInt(BigInt&& other) noexcept;
    BigInt& operator=(const BigInt& other);
    BigInt& operator=(BigInt&& other) noexcept;
    BigInt& operator=(long value);
    ~BigInt();
    ///@}

    // --- Queries ----------------------------------------------------------------------------

    /// The width in bits.
    unsigned size() const { return m_width; }
    /// True when the width is not 0.
    bool hasValue() const { return m_width != 0; }
    /// True when the value has a width and only 0 and 1 bits.
    bool isInteger() const;
    /// True for an integer whose sign character is '1'.
    bool isNegative() const;
    /// True for an integer whose sign character is '0' and that has a 1 bit.
    bool isPositive() const;
    /// False for width 0. Otherwise true unless the first character after the leading '0's of
    /// the whole string (sign included) is '1': a value whose first non-zero bit is X or Z
    /// counts as zero ("0X1" is zero).
    bool isZero() const;
    /// True if some bit is neither '0' nor '1'.
    bool hasNonNumericBit() const;
    /// In place: the representation string (sign character and bits), null when there is none.
    const char* bsl() const { return m_bsl.get(); }

    // --- Text -------------------------------------------------------------------------------
    /// The converters return null for a value of width 0; otherwise the text is on the heap and
    /// the caller frees it with delete[]. The text covers width bits, or the value's own width
    /// when width is 0: extra high positions take the fill character ('0' when the leading bit
    /// is 0 or 1, else the leading bit's character as stored), fewer keep the low bits. With a
    /// non-zero group an "_" separates every group characters counted from the right. upper
    /// chooses X/Z or x/z for unknown digits and A-F or a-f for hexadecimal ones.

    /// Heap: a copy of bsl (null when there is none); the caller frees it with delete[].
    char* asString() const;
    /// Heap: the text in a radix: binary, decimal (unsigned), hexadecimal, octal or plain
    /// decimal (with a minus sign for a negative value). Null for any other radix.
    char* asNumericString(Radix radix, unsigned width, unsigned group, bool upper) const;
    /// Heap: one character per bit.
    char* BSLToBinary(unsigned width, unsigned group, bool upper) const;
    /// Heap: one digit per three bits from the right. A group with an X, Z or other character
    /// is X, except that a group of only Z bits is Z.
    char* BSLToOctal(unsigned width, unsigned group, bool upper) const;
    /// Heap: one digit per four bits from the right, X and Z as for octal.
    char* BSLToHexadecimal(unsigned width, unsigned group, bool upper) const;
    /// Heap: the decimal value of the low width bits (all bits when width is 0 or not below
    /// the value's width), "#" if any bit is not 0 or 1. With isSigned, a value with sign
    /// character '1' shows the magnitude of its two's complement after "-". group is unused.
    char* BSLToDecimal(unsigned width, unsigned group, bool isSigned) const;

    // --- Bitwise ----------------------------------------------------------------------------
    ///@{
    /// Intermediate: the larger width, sign character '0', each bit from the operator's
    /// four-state table (X and Z behave alike; no result bit is ever Z). Two operands of width
    /// 0 give width 0 with the string "0".
    BigInt& operator&(const BigInt& other) const;
    BigInt& operator&(long other) const;
    BigInt& operator|(const BigInt& other) const;
    BigInt& operator|(long other) const;
    BigInt& operator^(const BigInt& other) const;
    BigInt& operator^(long other) const;
    BigInt& nor(const BigInt& other) const;
    BigInt& nor(long other) const;
    BigInt& nand(const BigInt& other) const;
    BigInt& nand(long other) const;
    ///@}
    /// Intermediate: the same width, sign character '0', 0 and 1 swapped, X and Z give X.
    BigInt& operator~() const;
    ///@{
    /// Assign the result of the binary operator to this value; return it.
    BigInt& operator&=(const BigInt& other);
    BigInt& operator&=(long other);
    BigInt& operator|=(const BigInt& other);
    BigInt& operator|=(long other);
    BigInt& operator^=(const BigInt& other);
    BigInt& operator^=(long other);
    ///@}

    // --- Reductions -------------------------------------------------------------------------
    ///@{
    /// Intermediate: width 1, the result bit both as sign character and as the bit. An X or Z
    /// that decides the answer writes a lower-case "x"; a width-0 value leaves a blank.
    /// reductionAnd of "1X1" is x and of "1X0" is 0.
    BigInt& reductionAnd() const;
    BigInt& reductionOr() const;
    BigInt& reductionXor() const;
    ///@}
    ///@{
    /// The negations of the three above: 0 and 1 swap, "x" and a blank stay.
    BigInt& reductionNand() const;
    BigInt& reductionNor() const;
    BigInt& reductionXnor() const;
    ///@}

    // --- Arithmetic -------------------------------------------------------------------------

    ///@{
    /// Intermediate: the two's-complement sum over the larger width w, sign character included;
    /// all X bits (width w, sign '0') if either operand has a bit that is not 0 or 1. The
    /// result widens by one bit when two non-negative operands overflow and whenever both are
    /// negative: 3-bit 111 + 3-bit 001 (both non-negative) is the 4-bit 1000.
    BigInt& operator+(const BigInt& other) const;
    BigInt& operator+(long other) const;
    ///@}
    ///@{
    /// Intermediate: this plus the negation of other.
    BigInt& operator-(const BigInt& other) const;
    BigInt& operator-(long other) const;
    ///@}
    /// Intermediate: the two's complement of the whole string, the same width (the most
    /// negative value of a width negates to itself); all X if a bit is not 0 or 1.
    BigInt& operator-() const;
    ///@{
    /// Assign the sum or difference to this value; return it.
    BigInt& operator+=(const BigInt& other);
    BigInt& operator+=(long other);
    BigInt& operator-=(const BigInt& other);
    BigInt& operator-=(long other);
    ///@}

    // --- Shifts -----------------------------------------------------------------------------

    /// Intermediate: the same width and sign character '0'; the bits move towards the most
    /// significant end by count, 0 bits come in from the right, X and Z give X.
    BigInt& operator<<(unsigned count) const;
    /// Intermediate: the same width and sign character '0' (a logical shift, even for a
    /// negative value); 0 bits come in from the left and Z becomes X, even for a count of 0.
    BigInt& operator>>(unsigned count) const;

    // --- Comparisons ------------------------------------------------------------------------

    ///@{
    /// Three-valued equality. With a width-0 operand the two strings are compared literally
    /// (false if either is null). Different sign characters give false. Otherwise the first
    /// position from the top that is not the same definite bit decides: a left X or Z, or a
    /// definite left bit facing X or Z, gives unknown; two different definite bits give false.
    /// So 1X0 == 100 is unknown, and 0X1 == 1X0 is false.
    BIGINTBOOLEAN operator==(const BigInt& other) const;
    BIGINTBOOLEAN operator==(long other) const;
    ///@}
    ///@{
    /// True and false of == swapped; unknown stays.
    BIGINTBOOLEAN operator!=(const BigInt& other) const;
    BIGINTBOOLEAN operator!=(long other) const;
    ///@}
    ///@{
    /// Sign characters '0' against '1' decide first; then the first position from the top that
    /// is not the same definite bit decides as for ==, a 1 facing a 0 giving true. Equal values
    /// are false, or unknown when either width is 0.
    BIGINTBOOLEAN operator>(const BigInt& other) const;
    BIGINTBOOLEAN operator>(long other) const;
    ///@}
    ///@{
    /// True if == is true, otherwise the answer of >.
    BIGINTBOOLEAN operator>=(const BigInt& other) const;
    BIGINTBOOLEAN operator>=(long other) const;
    ///@}
    ///@{
    /// The three-valued negation of >=.
    BIGINTBOOLEAN operator<(const BigInt& other) const;
    BIGINTBOOLEAN operator<(long other) const;
    ///@}
    ///@{
    /// The three-valued negation of >.
    BIGINTBOOLEAN operator<=(const BigInt& other) const;
    BIGINTBOOLEAN operator<=(long other) const;
    ///@}
    ///@{
    /// Literal equality of the bits after zero-extension to the larger width: X matches only X
    /// and Z only Z. Never unknown. With a width-0 operand the strings are compared literally
    /// (false if either is null).
    BIGINTBOOLEAN case_eq(const BigInt& other) const;
    BIGINTBOOLEAN case_eq(long other) const;
    ///@}
    ///@{
    /// The negation of case_eq.
    BIGINTBOOLEAN case_neq(const BigInt& other) const;
    BIGINTBOOLEAN case_neq(long other) const;
    ///@}

    // --- Bit selection and assembly ---------------------------------------------------------

    /// Intermediate: the bit at position (0 the least significant) as a 1-bit value with sign
    /// character '0'; X when the position is outside the value.
    BigInt& operator[](int position) const;
    /// Intermediate: bits msb down to lsb (the two ends may come in either order), sign
    /// character '0'; positions outside the value read X. A range of UINT_MAX bits or more
    /// gives a value of width 0.
    BigInt& bits(int msb, int lsb) const;
    /// In place: keeps the low count bits (the sign character stays). Nothing changes when
    /// count is 0 or not below the width.
    void clip(unsigned count);
    /// Intermediate: this value's bits followed by low's, sign character '0'.
    BigInt& combine(const BigInt& low) const;

    // --- Conversion steps and intermediate slots --------------------------------------------

    ///@{
    /// Heap: the representation (sign character '0', then the bits) of binary, octal or
    /// hexadecimal digits without underscores, 1, 3 or 4 bits a digit, for the caller to free
    /// with delete[]. An X or Z digit gives that many X or Z bits, any other character that is
    /// not a digit of the radix that many X bits. width is the number of bits wanted (0: the
    /// digits' own) and returns the width built: more bits extend by the four-state rule (a
    /// leading 1 as 0, a leading 0, X or Z as itself), fewer keep the low bits.
    static char* binToBSL(const char* digits, unsigned& width);
    static char* octToBSL(const char* digits, unsigned& width);
    static char* hexToBSL(const char* digits, unsigned& width);
    ///@}
    /// Heap: the representation of unsigned decimal digits ("_" skipped, no sign) as a
    /// binary number of width bits (0: its bit length, at least 1), zero-extended or cut to the
    /// low bits; width returns the width built. Empty text or a character other than 0-9 gives
    /// all X bits (width bits, or 1).
    static char* decToBSL(const char* digits, unsigned& width);
    /// In place: removes every "_" from text and returns it; null gives null.
    static char* removeUnderscores(char* text);
    /// In place: removes a leading "-" from text; true if there was one (false for null).
    static bool removeNegativeSign(char* text);
    /// The value of a digit character: 0-9 for '0'-'9', 10-15 for 'a'-'f' and 'A'-'F'; -1 for
    /// any other character.
    static int asDigit(char c);

    /// In place: two's complement of a whole string, sign character included: 0 and 1 swap, Z
    /// becomes X and z becomes x, then 1 is added from the end, stopping at the first
    /// character that is not '1'. Null is ignored.
    static void twosComplement(char* bsl);
    /// If b is 0 and a is not, b takes a; if a is 0 and b is not, a takes b.
    static void reconcileWidths(unsigned& a, unsigned& b);
    /// Takes the next intermediate slot (its old value is freed) and returns it, with no value.
    static BigInt& nextIntermediateValue();
    /// Frees the intermediate slots' strings; returns true. Runs in the toolkit's shutdown.
    static bool shutDown();

private:
    /// Takes bsl (from newBSL) as its own.
    BigInt(unsigned width, char* bsl) : m_width(width), m_bsl(bsl) {}
    void assignFromLong(long value);
    /// In place: the two's complement of the whole string, or all X bits with sign character
    /// '0' when a bit is neither 0 nor 1.
    void negate();
    /// Heap: the representation of digits at bitsPerDigit (1, 3 or 4) bits each, fitted to
    /// width as binToBSL says.
    static char* digitsToBSL(const char* digits, unsigned bitsPerDigit, unsigned& width);
    /// Heap: a string for width bits with the sign character and the terminator in place.
    static char* newBSL(unsigned width, char sign);
    ///@{
    /// Puts a finished string into the next slot. Results are built before the slot is taken,
    /// so an operand that is itself the slot being reused stays valid while it is read.
    static BigInt& intermediate(unsigned width, char* bsl);
    char signCharacter() const { return m_bsl != nullptr ? m_bsl[0] : '0'; }
    ///@}
    /// The bit characters, or an empty string for a value without one.
    const char* bitChars() const { return m_bsl != nullptr ? m_bsl.get() + 1 : ""; }
    /// The common step of the five bitwise operators; table is a FourStateTable.
    static BigInt& bitWise(int table, const BigInt& left, const BigInt& right);
    /// The character the text converters fill extra high positions with.
    char fillCharacter() const;
    /// Heap: the octal (3) or hexadecimal (4) text of the value.
    char* groupedDigits(unsigned bitsPerDigit, unsigned width, unsigned group, bool upper) const;
    /// A reduction result: the bit as sign character and as the only bit.
    static BigInt& reduction(char bit);

    static constexpr int v_intermediateCount = 8;
    static BigInt v_intermediates[v_intermediateCount];
    static int v_intermediateIndex;
    static bool v_shutDownRegistered;

    unsigned m_width = 0;
    std::unique_ptr<char[]> m_bsl;
};
