// The bitwise operators, shifts and reductions of BigInt. Results are written straight into
// the new value's string, with no scratch copy in between.
#include "hdl/BigInt.h"

#include "hdl/FourStateKernels_p.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

// The four-state extension of a narrower operand: a leading 1 extends as 0, anything else as
// itself; a value without bits reads as 0.
char extensionBit(const BigInt& value) {
    if (value.size() == 0)
        return '0';
    const char msb = value.bsl()[1];
    return msb == '1' ? '0' : msb;
}

} // namespace

// --- Bitwise --------------------------------------------------------------------------------

BigInt& BigInt::bitWise(int table, const BigInt& left, const BigInt& right) {
    // All five tables are symmetric, so the wider operand can go first.
    const BigInt& wide = left.m_width >= right.m_width ? left : right;
    const BigInt& narrow = &wide == &left ? right : left;
    const unsigned width = wide.m_width;
    const unsigned extended = width - narrow.m_width;
    char* out = newBSL(width, '0');
    const FourStateKernels& kernels = FourStateKernels::get();
    kernels.fill[table](wide.bitChars(), extensionBit(narrow), out + 1, extended);
    if (narrow.m_width != 0)
        kernels.runs[table](wide.bitChars() + extended, narrow.bitChars(), out + 1 + extended,
                            narrow.m_width);
    return intermediate(width, out);
}

BigInt& BigInt::operator&(const BigInt& other) const {
    return bitWise(TableAnd, *this, other);
}
BigInt& BigInt::operator&(long other) const {
    return bitWise(TableAnd, *this, BigInt(other));
}
BigInt& BigInt::operator|(const BigInt& other) const {
    return bitWise(TableOr, *this, other);
}
BigInt& BigInt::operator|(long other) const {
    return bitWise(TableOr, *this, BigInt(other));
}
BigInt& BigInt::operator^(const BigInt& other) const {
    return bitWise(TableXor, *this, other);
}
BigInt& BigInt::operator^(long other) const {
    return bitWise(TableXor, *this, BigInt(other));
}
BigInt& BigInt::nor(const BigInt& other) const {
    return bitWise(TableNor, *this, other);
}
BigInt& BigInt::nor(long other) const {
    return bitWise(TableNor, *this, BigInt(other));
}
BigInt& BigInt::nand(const BigInt& other) const {
    return bitWise(TableNand, *this, other);
}
BigInt& BigInt::nand(long other) const {
    return bitWise(TableNand, *this, BigInt(other));
}

BigInt& BigInt::operator~() const {
    char* out = newBSL(m_width, '0');
    FourStateKernels::get().invert(bitChars(), out + 1, m_width);
    return intermediate(m_width, out);
}

BigInt& BigInt::operator&=(const BigInt& other) {
    return *this = std::move(*this & other);
}
BigInt& BigInt::operator&=(long other) {
    return *this = std::move(*this & other);
}
BigInt& BigInt::operator|=(const BigInt& other) {
    return *this = std::move(*this | other);
}
BigInt& BigInt::operator|=(long other) {
    return *this = std::move(*this | other);
}
BigInt& BigInt::operator^=(const BigInt& other) {
    return *this = std::move(*this ^ other);
}
BigInt& BigInt::operator^=(long other) {
    return *this = std::move(*this ^ other);
}

// --- Shifts ---------------------------------------------------------------------------------

BigInt& BigInt::operator<<(unsigned count) const {
    const unsigned shift = std::min(count, m_width);
    char* out = newBSL(m_width, '0');
    FourStateKernels::get().decode(bitChars() + shift, out + 1, m_width - shift);
    std::memset(out + 1 + (m_width - shift), '0', shift);
    return intermediate(m_width, out);
}

BigInt& BigInt::operator>>(unsigned count) const {
    const unsigned shift = std::min(count, m_width);
    char* out = newBSL(m_width, '0');
    std::memset(out + 1, '0', shift);
    FourStateKernels::get().copyZAsX(bitChars(), out + 1 + shift, m_width - shift);
    return intermediate(m_width, out);
}

// --- Reductions -----------------------------------------------------------------------------

namespace {

// The result bit before any bit is seen; a width-0 value keeps it.
constexpr char v_noBit = ' ';

bool isUnknown(char bit) {
    return bit != '0' && bit != '1';
}

// Scans the bits from the least significant upwards.
char reduceAnd(const char* bits, unsigned width) {
    char result = v_noBit;
    for (unsigned i = width; i > 0; --i) {
        const char bit = bits[i - 1];
        if (bit == '0')
            return '0';
        if (bit == '1') {
            if (result == v_noBit || result == '1')
                result = '1';
        } else {
            result = 'x';
        }
    }
    return result;
}

char reduceOr(const char* bits, unsigned width) {
    char result = v_noBit;
    for (unsigned i = width; i > 0; --i) {
        const char bit = bits[i - 1];
        if (bit == '1')
            return '1';
        if (bit == '0') {
            if (result == v_noBit || result == '0')
                result = '0';
        } else {
            result = 'x';
        }
    }
    return result;
}

char reduceXor(const char* bits, unsigned width) {
    char result = v_noBit;
    for (unsigned i = width; i > 0; --i) {
        const char bit = bits[i - 1];
        if (isUnknown(bit))
            return 'x';
        if (bit == '1')
            result = result == '1' ? '0' : '1';
        else if (result == v_noBit)
            result = '0';
    }
    return result;
}

char negated(char bit) {
    return bit == '0' ? '1' : bit == '1' ? '0' : bit;
}

} // namespace

BigInt& BigInt::reduction(char bit) {
    char* out = newBSL(1, bit);
    out[1] = bit;
    return intermediate(1, out);
}

BigInt& BigInt::reductionAnd() const {
    return reduction(reduceAnd(bitChars(), m_width));
}
BigInt& BigInt::reductionOr() const {
    return reduction(reduceOr(bitChars(), m_width));
}
BigInt& BigInt::reductionXor() const {
    return reduction(reduceXor(bitChars(), m_width));
}
BigInt& BigInt::reductionNand() const {
    return reduction(negated(reduceAnd(bitChars(), m_width)));
}
BigInt& BigInt::reductionNor() const {
    return reduction(negated(reduceOr(bitChars(), m_width)));
}
BigInt& BigInt::reductionXnor() const {
    return reduction(negated(reduceXor(bitChars(), m_width)));
}
