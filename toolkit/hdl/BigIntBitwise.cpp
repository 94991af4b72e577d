// The bitwise operators, shifts and reductions of BigInt. The tables run over 16 bit
// characters at a time: each character is decoded into "is 0" and "is 1" byte masks (X, Z
// and every other character being neither), the operator combines the masks, and the result
// masks select '0', '1' or 'X'.
#include "hdl/BigInt.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace {

using Bytes = signed char __attribute__((vector_size(16)));
constexpr std::size_t lanes = sizeof(Bytes);

Bytes load(const char* p) {
    Bytes v;
    std::memcpy(&v, p, lanes);
    return v;
}

void store(char* p, Bytes v) {
    std::memcpy(p, &v, lanes);
}

// Builds the result character from the two disjoint masks: '0' where r0, '1' where r1, else
// 'X'. Works for vectors and for single characters alike.
template <typename T>
T select(T r0, T r1) {
    return static_cast<T>('X' ^ (r0 & ('X' ^ '0')) ^ (r1 & ('X' ^ '1')));
}

// The five tables in mask form: r0 says the result is 0, r1 that it is 1. All five are
// symmetric in their operands, which the operators rely on to put the wider one first.
struct AndTable {
    template <typename T>
    static void apply(T z0, T o0, T z1, T o1, T& r0, T& r1) {
        r0 = z0 | z1;
        r1 = o0 & o1;
    }
};
struct OrTable {
    template <typename T>
    static void apply(T z0, T o0, T z1, T o1, T& r0, T& r1) {
        r0 = z0 & z1;
        r1 = o0 | o1;
    }
};
struct XorTable {
    template <typename T>
    static void apply(T z0, T o0, T z1, T o1, T& r0, T& r1) {
        r0 = (z0 & z1) | (o0 & o1);
        r1 = (z0 & o1) | (o0 & z1);
    }
};
struct NorTable {
    template <typename T>
    static void apply(T z0, T o0, T z1, T o1, T& r0, T& r1) {
        r0 = o0 | o1;
        r1 = z0 & z1;
    }
};
struct NandTable {
    template <typename T>
    static void apply(T z0, T o0, T z1, T o1, T& r0, T& r1) {
        r0 = o0 & o1;
        r1 = z0 | z1;
    }
};

template <typename Table>
signed char combineOne(char a, char b) {
    const signed char z0 = a == '0' ? -1 : 0, o0 = a == '1' ? -1 : 0;
    const signed char z1 = b == '0' ? -1 : 0, o1 = b == '1' ? -1 : 0;
    signed char r0, r1;
    Table::apply(z0, o0, z1, o1, r0, r1);
    return select(r0, r1);
}

// out[i] = table(a[i], b[i]) for n characters.
template <typename Table>
void combineRuns(const char* a, const char* b, char* out, std::size_t n) {
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes) {
        const Bytes va = load(a + i), vb = load(b + i);
        Bytes r0, r1;
        Table::apply(Bytes(va == '0'), Bytes(va == '1'), Bytes(vb == '0'), Bytes(vb == '1'), r0,
                     r1);
        store(out + i, select(r0, r1));
    }
    for (; i < n; ++i)
        out[i] = combineOne<Table>(a[i], b[i]);
}

// out[i] = table(a[i], fill) for n characters: the run where the narrower operand is extended.
template <typename Table>
void combineWithFill(const char* a, char fill, char* out, std::size_t n) {
    const Bytes z1 = fill == '0' ? ~Bytes{} : Bytes{};
    const Bytes o1 = fill == '1' ? ~Bytes{} : Bytes{};
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes) {
        const Bytes va = load(a + i);
        Bytes r0, r1;
        Table::apply(Bytes(va == '0'), Bytes(va == '1'), z1, o1, r0, r1);
        store(out + i, select(r0, r1));
    }
    for (; i < n; ++i)
        out[i] = combineOne<Table>(a[i], fill);
}

// out[i] is '0' for '0', '1' for '1' and 'X' for anything else; with invert 0 and 1 swap.
template <bool invert>
void decodeRun(const char* a, char* out, std::size_t n) {
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes) {
        const Bytes va = load(a + i);
        const Bytes z = va == '0', o = va == '1';
        store(out + i, invert ? select(o, z) : select(z, o));
    }
    for (; i < n; ++i) {
        const signed char z = a[i] == '0' ? -1 : 0, o = a[i] == '1' ? -1 : 0;
        out[i] = invert ? select(o, z) : select(z, o);
    }
}

// Copies n characters with Z turned into X and z into x (they differ from X and x in one bit).
void copyZAsX(const char* a, char* out, std::size_t n) {
    std::size_t i = 0;
    for (; i + lanes <= n; i += lanes) {
        const Bytes va = load(a + i);
        store(out + i, va ^ (Bytes((va | 0x20) == 'z') & ('Z' ^ 'X')));
    }
    for (; i < n; ++i)
        out[i] = (a[i] | 0x20) == 'z' ? static_cast<char>(a[i] ^ ('Z' ^ 'X')) : a[i];
}

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

template <typename Table>
BigInt& BigInt::bitWise(const BigInt& left, const BigInt& right) {
    const BigInt& wide = left.m_width >= right.m_width ? left : right;
    const BigInt& narrow = &wide == &left ? right : left;
    const unsigned width = wide.m_width;
    const unsigned extended = width - narrow.m_width;
    char* out = newBSL(width, '0');
    combineWithFill<Table>(wide.bitChars(), extensionBit(narrow), out + 1, extended);
    if (narrow.m_width != 0)
        combineRuns<Table>(wide.bitChars() + extended, narrow.bitChars(), out + 1 + extended,
                           narrow.m_width);
    return intermediate(width, out);
}

BigInt& BigInt::operator&(const BigInt& other) const {
    return bitWise<AndTable>(*this, other);
}
BigInt& BigInt::operator&(long other) const {
    return bitWise<AndTable>(*this, BigInt(other));
}
BigInt& BigInt::operator|(const BigInt& other) const {
    return bitWise<OrTable>(*this, other);
}
BigInt& BigInt::operator|(long other) const {
    return bitWise<OrTable>(*this, BigInt(other));
}
BigInt& BigInt::operator^(const BigInt& other) const {
    return bitWise<XorTable>(*this, other);
}
BigInt& BigInt::operator^(long other) const {
    return bitWise<XorTable>(*this, BigInt(other));
}
BigInt& BigInt::nor(const BigInt& other) const {
    return bitWise<NorTable>(*this, other);
}
BigInt& BigInt::nor(long other) const {
    return bitWise<NorTable>(*this, BigInt(other));
}
BigInt& BigInt::nand(const BigInt& other) const {
    return bitWise<NandTable>(*this, other);
}
BigInt& BigInt::nand(long other) const {
    return bitWise<NandTable>(*this, BigInt(other));
}

BigInt& BigInt::operator~() const {
    char* out = newBSL(m_width, '0');
    decodeRun<true>(bitChars(), out + 1, m_width);
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
    decodeRun<false>(bitChars() + shift, out + 1, m_width - shift);
    std::memset(out + 1 + (m_width - shift), '0', shift);
    return intermediate(m_width, out);
}

BigInt& BigInt::operator>>(unsigned count) const {
    const unsigned shift = std::min(count, m_width);
    char* out = newBSL(m_width, '0');
    std::memset(out + 1, '0', shift);
    copyZAsX(bitChars(), out + 1 + shift, m_width - shift);
    return intermediate(m_width, out);
}

// --- Reductions -----------------------------------------------------------------------------

namespace {

// The result bit before any bit is seen; a width-0 value keeps it.
constexpr char noBit = ' ';

bool isUnknown(char bit) {
    return bit != '0' && bit != '1';
}

// Scans the bits from the least significant upwards.
char reduceAnd(const char* bits, unsigned width) {
    char result = noBit;
    for (unsigned i = width; i > 0; --i) {
        const char bit = bits[i - 1];
        if (bit == '0')
            return '0';
        if (bit == '1') {
            if (result == noBit || result == '1')
                result = '1';
        } else {
            result = 'x';
        }
    }
    return result;
}

char reduceOr(const char* bits, unsigned width) {
    char result = noBit;
    for (unsigned i = width; i > 0; --i) {
        const char bit = bits[i - 1];
        if (bit == '1')
            return '1';
        if (bit == '0') {
            if (result == noBit || result == '0')
                result = '0';
        } else {
            result = 'x';
        }
    }
    return result;
}

char reduceXor(const char* bits, unsigned width) {
    char result = noBit;
    for (unsigned i = width; i > 0; --i) {
        const char bit = bits[i - 1];
        if (isUnknown(bit))
            return 'x';
        if (bit == '1')
            result = result == '1' ? '0' : '1';
        else if (result == noBit)
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
