#include "hdl/BinaryMagnitude_p.h"

#include "hdl/FourStateKernels_p.h"

#include <bit>
#include <cstdio>

namespace {
constexpr std::uint32_t v_decimalChunk = 1000000000; // 10^9, the largest power of ten in 32 bits
constexpr int v_decimalChunkDigits = 9;
} // namespace

bool BinaryMagnitude::readDecimal(const char* digits, std::size_t length) {
    m_limbs.clear();
    std::uint32_t chunk = 0;
    std::uint32_t scale = 1;
    for (std::size_t i = 0; i < length; ++i) {
        const char c = digits[i];
        if (c == '_')
            continue;
        if (c < '0' || c > '9')
            return false;
        chunk = chunk * 10 + static_cast<std::uint32_t>(c - '0');
        scale *= 10;
        if (scale == v_decimalChunk) {
            multiplyAdd(v_decimalChunk, chunk);
            chunk = 0;
            scale = 1;
        }
    }
    if (scale != 1)
        multiplyAdd(scale, chunk);
    return true;
}

void BinaryMagnitude::readBits(const char* bits, std::size_t count) {
    std::vector<std::uint64_t> words((count + 63) / 64);
    (void)FourStateKernels::get().packBits(bits, count, words.data());
    m_limbs.resize(2 * words.size());
    for (std::size_t i = 0; i < words.size(); ++i) {
        m_limbs[2 * i] = static_cast<std::uint32_t>(words[i]);
        m_limbs[2 * i + 1] = static_cast<std::uint32_t>(words[i] >> 32);
    }
    trim();
}

std::size_t BinaryMagnitude::bitLength() const {
    if (m_limbs.empty())
        return 0;
    return 32 * (m_limbs.size() - 1) + std::bit_width(m_limbs.back());
}

void BinaryMagnitude::writeBits(char* out, std::size_t count) const {
    std::vector<std::uint64_t> words((count + 63) / 64);
    for (std::size_t i = 0; i < m_limbs.size() && i / 2 < words.size(); ++i)
        words[i / 2] |= std::uint64_t(m_limbs[i]) << (32 * (i % 2));
    FourStateKernels::get().unpackBits(words.data(), count, out);
}

char* BinaryMagnitude::takeDecimal(bool negative) {
    std::vector<std::uint32_t> chunks; // least significant first
    chunks.reserve(m_limbs.size() * 32 / 29 + 1);
    while (!m_limbs.empty())
        divideByChunks(chunks);
    // The last passes may have divided a value that had already reached zero.
    while (chunks.size() > 1 && chunks.back() == 0)
        chunks.pop_back();
    if (chunks.empty())
        chunks.push_back(0);

    char* text = new char[chunks.size() * v_decimalChunkDigits + 2];
    char* out = text;
    if (negative)
        *out++ = '-';
    out += std::snprintf(out, v_decimalChunkDigits + 1, "%u", chunks.back());
    for (std::size_t i = chunks.size() - 1; i-- > 0;) {
        std::uint32_t chunk = chunks[i];
        for (int k = v_decimalChunkDigits - 1; k >= 0; --k) {
            out[k] = static_cast<char>('0' + chunk % 10);
            chunk /= 10;
        }
        out += v_decimalChunkDigits;
    }
    *out = '\0';
    return text;
}

void BinaryMagnitude::multiplyAdd(std::uint32_t factor, std::uint32_t addend) {
    std::uint64_t carry = addend;
    for (std::uint32_t& limb : m_limbs) {
        const std::uint64_t product = std::uint64_t(limb) * factor + carry;
        limb = static_cast<std::uint32_t>(product);
        carry = product >> 32;
    }
    if (carry != 0)
        m_limbs.push_back(static_cast<std::uint32_t>(carry));
}

void BinaryMagnitude::divideByChunks(std::vector<std::uint32_t>& chunks) {
    // Pass p handles limb i one step after pass p - 1 has left its quotient there, so the four
    // remainder chains run side by side instead of one after the other.
    constexpr std::size_t passes = 4;
    std::uint64_t remainders[passes] = {};
    const std::size_t count = m_limbs.size();
    auto divide = [&](std::size_t step, std::size_t pass) {
        std::uint32_t& limb = m_limbs[count - 1 - (step - pass)];
        const std::uint64_t current = (remainders[pass] << 32) | limb;
        limb = static_cast<std::uint32_t>(current / v_decimalChunk);
        remainders[pass] = current % v_decimalChunk;
    };
    auto divideWhereStarted = [&](std::size_t step) {
        for (std::size_t pass = 0; pass < passes; ++pass)
            if (step >= pass && step - pass < count)
                divide(step, pass);
    };
    std::size_t step = 0;
    for (; step < passes - 1; ++step)
        divideWhereStarted(step);
    for (; step < count; ++step)
        for (std::size_t pass = 0; pass < passes; ++pass)
            divide(step, pass);
    for (; step < count + passes - 1; ++step)
        divideWhereStarted(step);
    for (std::uint64_t remainder : remainders)
        chunks.push_back(static_cast<std::uint32_t>(remainder));
    trim();
}

void BinaryMagnitude::trim() {
    while (!m_limbs.empty() && m_limbs.back() == 0)
        m_limbs.pop_back();
}
