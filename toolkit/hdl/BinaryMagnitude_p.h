#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

/// BinaryMagnitude: an unsigned integer of any size in 32-bit limbs, the working form of the
/// conversions between decimal text and bit strings (nine decimal digits per step, not one).
class BinaryMagnitude {
public:
    /// Reads decimal digits, skipping underscores. Returns false at any other character; the
    /// value is then unspecified.
    [[nodiscard]] bool readDecimal(const char* digits, std::size_t length);
    /// Reads count '0'/'1' characters, the most significant first (any other reads as 0).
    void readBits(const char* bits, std::size_t count);

    /// The number of bits up to the highest set one; 0 for zero.
    std::size_t bitLength() const;
    /// Writes the low count bits as '0'/'1' characters, the most significant first.
    void writeBits(char* out, std::size_t count) const;
    /// Heap: the decimal text, with "-" in front when negative is set; the caller frees it with
    /// delete[]. Consumes the value (it is zero afterwards).
    char* takeDecimal(bool negative);

private:
    void multiplyAdd(std::uint32_t factor, std::uint32_t addend);
    ///@{
    /// Divides by 10^9 four times (a constant, so the compiler multiplies instead) and appends
    /// the four remainders, the first the least significant.
    void divideByChunks(std::vector<std::uint32_t>& chunks);
    void trim();
    ///@}

    std::vector<std::uint32_t> m_limbs; ///< least significant first, no zero limb on top
};
