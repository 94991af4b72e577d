// The word-wise and vector paths of BigInt against the algorithms written out one character at
// a time, on random operands of widths around the word and vector sizes.
#include "hdl/BigInt.h"

#include "BigIntTestSupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

namespace {

using namespace bigint_test;

// --- The algorithms one character at a time, on representation strings -----------------------

bool definite(char c) {
    return c == '0' || c == '1';
}

std::size_t widthOf(const std::string& a, const std::string& b) {
    return std::max(a.size(), b.size()) - 1;
}

// The representation brought to width bits, the missing high bits filled with fill.
std::string widened(const std::string& bsl, std::size_t width, char fill) {
    return cat(bsl.substr(0, 1), std::string(width - (bsl.size() - 1), fill), bsl.substr(1));
}

std::string bitwiseOf(int op, const std::string& a, const std::string& b) {
    const std::size_t w = widthOf(a, b);
    auto fill = [](const std::string& v) { return v[1] == '1' ? '0' : v[1]; };
    const std::string l = widened(a, w, fill(a)), r = widened(b, w, fill(b));
    std::string out = "0";
    for (std::size_t i = 1; i <= w; ++i)
        out += tableBit(op, l[i], r[i]);
    return out;
}

// Both operands extend with their sign characters, which are added as the top position.
std::string sumOf(const std::string& a, const std::string& b) {
    const std::size_t w = widthOf(a, b);
    if (!std::all_of(a.begin() + 1, a.end(), definite) ||
        !std::all_of(b.begin() + 1, b.end(), definite))
        return cat("0", std::string(w, 'X'));
    const std::string l = widened(a, w, a[0]), r = widened(b, w, b[0]);
    std::string out(w + 1, '0');
    int carry = 0;
    for (std::size_t p = w + 1; p-- > 0;) {
        const int total = (l[p] == '1') + (r[p] == '1') + carry;
        out[p] = static_cast<char>('0' + total % 2);
        carry = total / 2;
    }
    const bool positive = a[0] == '0' && b[0] == '0', negative = a[0] == '1' && b[0] == '1';
    if ((out[0] == '1' && positive) || (carry && negative))
        out.insert(out.begin(), static_cast<char>('0' + carry));
    return out;
}

std::string negationOf(std::string v) {
    if (!std::all_of(v.begin() + 1, v.end(), definite))
        return cat("0", std::string(v.size() - 1, 'X'));
    BigInt::twosComplement(v.data());
    return v;
}

// == when ordering is false, > when it is true.
BIGINTBOOLEAN comparisonOf(const std::string& a, const std::string& b, bool ordering) {
    if (a[0] != b[0])
        return ordering && a[0] == '0' ? BIGINT_TRUE : BIGINT_FALSE;
    const std::size_t w = widthOf(a, b);
    auto fill = [](const std::string& v) { return definite(v[1]) ? v[0] : v[1]; };
    const std::string l = widened(a, w, fill(a)), r = widened(b, w, fill(b));
    for (std::size_t i = 1; i <= w; ++i) {
        if (!definite(l[i]) || !definite(r[i]))
            return BIGINT_UNKNOWN;
        if (l[i] != r[i])
            return ordering && l[i] == '1' ? BIGINT_TRUE : BIGINT_FALSE;
    }
    return ordering ? BIGINT_FALSE : BIGINT_TRUE;
}

// Zero extension, then the characters as they are.
BIGINTBOOLEAN caseEqualityOf(const std::string& a, const std::string& b) {
    const std::size_t w = widthOf(a, b);
    const bool same = widened(a, w, '0').substr(1) == widened(b, w, '0').substr(1);
    return same ? BIGINT_TRUE : BIGINT_FALSE;
}

// The bits as >> copies them (Z becomes X), as << decodes them (anything but 0 and 1 becomes
// X), or as ~ inverts them.
std::string mapped(std::string bits, char how) {
    for (char& c : bits)
        c = how == '>' ? (c == 'Z' ? 'X' : c) : !definite(c) ? 'X' : how == '~' ? c ^ 1 : c;
    return bits;
}

// --- Random operands ----------------------------------------------------------------------------

// Operands of the kinds the fast paths tell apart: four-state bits; 0 and 1 bits of either
// sign; a copy with one bit changed, so that a comparison decides deep down; a value and its
// own low bits, which only the extension tells apart; the complement, whose sum with the first
// is a run of disagreeing bits as long as the width.
std::pair<std::string, std::string> operands(std::mt19937_64& random, unsigned wa, unsigned wb) {
    auto numeric = [&](unsigned w) {
        std::string bits = randomBits(random, w, "01");
        const char sign = bits.find('1') != std::string::npos && random() % 2 ? '1' : '0';
        return cat(std::string(1, sign), bits);
    };
    switch (random() % 5) {
    case 0:
        return {cat("0", randomBits(random, wa)), cat("0", randomBits(random, wb))};
    case 1:
        return {numeric(wa), numeric(wb)};
    case 2: {
        std::string a = numeric(wa), b = a;
        char& changed = b[1 + random() % wa];
        changed = random() % 2 ? 'X' : changed == '0' ? '1' : '0';
        if (changed == 'X' || b.find('1', 1) == std::string::npos)
            b[0] = '0'; // what fromRepresentation can build
        return {a, b};
    }
    case 3: { // the low bits lose one to three of the top ones
        const std::string a = cat("0", randomBits(random, wa));
        const unsigned dropped = wa > 1 ? 1 + random() % std::min(wa - 1, 3u) : 0;
        return {a, cat("0", a.substr(1 + dropped))};
    }
    default: {
        const std::string a = cat("0", randomBits(random, wa, "01"));
        std::string b = a;
        std::transform(b.begin() + 1, b.end(), b.begin() + 1, [](char c) { return c ^ 1; });
        b[1 + random() % wa] = a[1 + random() % wa];
        return {a, b};
    }
    }
}

TEST(BigIntFastPaths, MatchTheAlgorithmsCharacterByCharacter) {
    std::mt19937_64 random(31);
    const unsigned widths[] = {1, 2, 7, 8, 9, 31, 32, 33, 63, 64, 65, 127, 128, 129, 1000};
    for (unsigned wa : widths)
        for (int round = 0; round < 24; ++round) {
            const unsigned wb = round % 3 ? wa : widths[random() % std::size(widths)];
            const auto [ra, rb] = operands(random, wa, wb);
            const BigInt a = fromRepresentation(ra), b = fromRepresentation(rb);
            ASSERT_EQ(bslOf(a), ra);
            ASSERT_EQ(bslOf(b), rb);
            SCOPED_TRACE(cat("a ", ra, "\nb ", rb));
            for (int op = And; op <= Nand; ++op)
                EXPECT_EQ(bslOf(bitwise[op].first(a, b)), bitwiseOf(op, ra, rb)) << "op " << op;
            EXPECT_EQ(bslOf(a + b), sumOf(ra, rb));
            EXPECT_EQ(bslOf(a - b), sumOf(ra, negationOf(rb)));
            EXPECT_EQ(a == b, comparisonOf(ra, rb, false));
            EXPECT_EQ(a > b, comparisonOf(ra, rb, true));
            EXPECT_EQ(a.case_eq(b), caseEqualityOf(ra, rb));
            const unsigned count = static_cast<unsigned>(random() % (wa + 2));
            const std::string bits = ra.substr(1);
            const unsigned shift = std::min(count, wa);
            EXPECT_EQ(bslOf(a >> count),
                      cat("0", std::string(shift, '0'), mapped(bits.substr(0, wa - shift), '>')));
            EXPECT_EQ(bslOf(a << count),
                      cat("0", mapped(bits.substr(shift), '<'), std::string(shift, '0')));
            EXPECT_EQ(bslOf(~a), cat("0", mapped(bits, '~')));
            if (HasFailure())
                return;
        }
}

} // namespace
