/// \file
/// HDL constants: recognition of Verilog, VHDL and plain decimal constant texts, the digit
/// predicates that check and size their digit strings, and the formatting that writes a digit
/// string back as a constant. A BigInt is built from the digit strings these parsers return.
#pragma once

#include "core/TqExport.h"

/// The language a constant was written in.
enum HDLanguage : int {
    HDLNone = 0, ///< none or unknown
    HDLVerilog = 1,
    HDLVHDL = 2,
};

/// The radix of a constant or of a text conversion. Plain decimal is an unprefixed number;
/// where a conversion distinguishes the two, only plain decimal shows a minus sign.
enum Radix : int {
    RadixNone = 0,
    RadixBinary = 1,
    RadixDecimal = 2,
    RadixHexadecimal = 3,
    RadixOctal = 4,
    RadixPlainDecimal = 5,
};

// --- Parsers --------------------------------------------------------------------------------
/// All three return the bare digit string on the heap (the caller frees it with delete[]), or
/// null when the text is not a constant of their kind. They report the language, the radix,
/// whether the radix letter was upper case (1) or not (0), the declared size (0 when none) and
/// the number of bits the digits need.

/// Any constant: a plain decimal number first ("12", "-3": radix RadixPlainDecimal, upper case
/// 0, size 0; language becomes HDLVerilog only if it was HDLNone, so a caller's HDLVHDL stays),
/// then a Verilog constant, then a VHDL constant. For a plain decimal the bit count is added to
/// bits, which the caller passes as 0. Null text or no match sets all five outputs to 0.
TQ_EXPORT char* parseHDLConstant(const char* text, HDLanguage& language, Radix& radix,
                                 char& upperCase, unsigned& size, unsigned& bits);
/// A Verilog constant: optional blanks, an optional decimal size and blanks, an apostrophe,
/// one base letter of b B d D h H o O and the digits directly after it ("8'hFF", "4 'b1010",
/// "'B10xz"). There is no signed form. Language becomes HDLVerilog, or HDLNone on failure.
/// A size beyond the range of int reads as INT_MAX.
TQ_EXPORT char* parseVerilogConstant(const char* text, HDLanguage& language, Radix& radix,
                                     char& upperCase, unsigned& size, unsigned& bits);
/// A VHDL constant: optional blanks, an optional decimal size and blanks, then one of B O X b o
/// x with optional blanks before a double-quoted digit string, or a bare double-quoted string,
/// which reads as decimal (radix RadixDecimal, upper case 1). The closing quote ends the text.
/// Language becomes HDLVHDL, or HDLNone on failure.
TQ_EXPORT char* parseVHDLConstant(const char* text, HDLanguage& language, Radix& radix,
                                  char& upperCase, unsigned& size, unsigned& bits);

// --- Digit predicates -----------------------------------------------------------------------
/// Each checks a whole digit string and, when it passes, adds the bits its digits need to bits
/// (which it does not reset); on failure bits is left alone. "_" is accepted only directly
/// after a digit: a leading underscore or two in a row fail, a trailing one passes.

/// 0 1 X Z x z, one bit each. Null or empty is false.
TQ_EXPORT bool isBinary(const char* digits, unsigned& bits);
/// 0-7 X Z x z, three bits each. Null or empty is true, with 0 bits: an empty octal digit
/// string is a valid constant, kept for compatibility with existing design files.
TQ_EXPORT bool isOctal(const char* digits, unsigned& bits);
/// 0-9, an optional leading "-" and "_" after a digit; no X or Z. Null or empty is false. The
/// count is the bit length of the magnitude, 1 for zero ("5" counts 3, "8" counts 4);
/// underscores do not change the value, so "1_000" counts as 1000 does.
TQ_EXPORT bool isDecimal(const char* digits, unsigned& bits);
/// 0-9 A-F a-f, four bits each. X Z x z (four bits each) and "_" pass only with allowXZ.
/// Null or empty is false.
TQ_EXPORT bool isHexadecimal(const char* digits, unsigned& bits, bool allowXZ);

// --- Formatting -----------------------------------------------------------------------------

/// The radix letter for a constant of this radix in this language, upper or lower case by
/// upperCase: b d h o in Verilog (and for HDLNone), b d o x in VHDL, where d stands for the bare
/// quoted decimal string. Returns '\0' for plain decimal, which has no letter, and for a radix
/// outside the enumeration.
TQ_EXPORT char radixCharacter(Radix radix, HDLanguage language, char upperCase);
/// Ring: digits written as a constant with a letter from radixCharacter and, when size is not 0,
/// the size in front: "8'hFF" and "'b1010" in Verilog, "8X\"FF\"" and "\"12\"" (for d or D) in
/// VHDL. A '\0' letter gives the bare digits, a plain decimal number. Parsing the result gives
/// back the radix, the language and the upper-case flag the letter came from, except where the
/// notation fixes the flag: a plain decimal always reads as lower case and a VHDL decimal as
/// upper case. Null digits, or digits too long for a ring buffer (2 GB), give null.
TQ_EXPORT char* formatHDLString(const char* digits, HDLanguage language, char radixLetter,
                                unsigned size);
