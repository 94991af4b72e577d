#include "hdl/BinaryMagnitude_p.h"

#include "hdl/BitChars_p.h"

#include <bit>
#include <cstdio>

namespace {
constexpr std::uint32_t decimalChunk = 1000000000; // 10^9, the largest power of ten in 32 bits
constexpr int decimalChunkDigits = 9;
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
        if (scale == decimalChunk) {
            multiplyAdd(decimalChunk, chunk);
            chunk = 0;
            scale = 1;
        }
    }
    if (scale != 1)
        multiplyAdd(scale, chunk);
    return true;
}

void BinaryMagnitude::readBits(const char* bits, std::size_t count) {
    m_limbs.assign((count + 31) / 32, 0);
    std::size_t position = 0; // bit position of the next character from the end
    for (; position + 8 <= count; position += 8) {
        const unsigned byte = bitchars::pack8(bits + count - position - 8);
        m_limbs[position / 32] |= std::uint32_t(byte) << (position % 32);
    }
    for (; position < count; ++position)
        if (bits[count - position - 1] == '1')
            m_limbs[position / 32] |= std::uint32_t(1) << (position % 32);
    trim();
}

std::size_t BinaryMagnitude::bitLength() const {
    if (m_limbs.empty())
        return 0;
    return 32 * (m_limbs.size() - 1) + std::bit_width(m_limbs.back());
}

void BinaryMagnitude::writeBits(char* out, std::size_t count) const {
    auto bitAt = [this](std::size_t position) -> unsigned {
        const std::size_t limb = position / 32;
        return limb < m_limbs.size() ? (m_limbs[limb] >> (position % 32)) & 1 : 0;
    };
    std::size_t position = 0;
    for (; position + 8 <= count; position += 8) {
        const std::size_t limb = position / 32;
        const unsigned byte = limb < m_limbs.size() ? (m_limbs[limb] >> (position % 32)) : 0;
        bitchars::unpack8(out + count - position - 8, byte);
    }
    for (; position < count; ++position)
        out[count - position - 1] = static_cast<char>('0' + bitAt(position));
}

char* BinaryMagnitude::takeDecimal(bool negative) {
    std::vector<std::uint32_t> chunks; // least significant first
    chunks.reserve(m_limbs.size() * 32 / 29 + 1);
    while (!m_limbs.empty())
        chunks.push_back(divideByChunk());
    if (chunks.empty())
        chunks.push_back(0);

    char* text = new char[chunks.size() * decimalChunkDigits + 2];
    char* out = text;
    if (negative)
        *out++ = '-';
    out += std::snprintf(out, decimalChunkDigits + 1, "%u", chunks.back());
    for (std::size_t i = chunks.size() - 1; i-- > 0;) {
        std::uint32_t chunk = chunks[i];
        for (int k = decimalChunkDigits - 1; k >= 0; --k) {
            out[k] = static_cast<char>('0' + chunk % 10);
            chunk /= 10;
        }
        out += decimalChunkDigits;
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

std::uint32_t BinaryMagnitude::divideByChunk() {
    std::uint64_t remainder = 0;
    for (std::size_t i = m_limbs.size(); i-- > 0;) {
        const std::uint64_t current = (remainder << 32) | m_limbs[i];
        m_limbs[i] = static_cast<std::uint32_t>(current / decimalChunk);
        remainder = current % decimalChunk;
    }
    trim();
    return static_cast<std::uint32_t>(remainder);
}

void BinaryMagnitude::trim() {
    while (!m_limbs.empty() && m_limbs.back() == 0)
        m_limbs.pop_back();
}
