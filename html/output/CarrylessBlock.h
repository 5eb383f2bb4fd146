#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/Processor.h"

/// @file
/// Sixteen bytes as a polynomial over GF(2), for processors that multiply such polynomials.
/// Elsewhere `KESTRA_HAS_CARRYLESS_BLOCKS` is not defined. Not installed.

#if defined(KESTRA_CARRYLESS_FUNCTION)
#define KESTRA_HAS_CARRYLESS_BLOCKS

namespace Kestra::HTML {

/// The first bit of the first byte is the coefficient of x^127.
class CarrylessBlock {
public:
    static constexpr std::size_t LENGTH = 16;  ///< in bytes

    /// @param bytes  `LENGTH` of them, at any address
    explicit CarrylessBlock(const unsigned char* bytes)
        : vector(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes))) {}

    /// Two polynomials below x^64, the one with the higher place first.
    CarrylessBlock(std::uint64_t first, std::uint64_t second)
        : vector(_mm_set_epi64x(static_cast<long long>(second), static_cast<long long>(first))) {}

    void Add(const CarrylessBlock& other) {
        vector = _mm_xor_si128(vector, other.vector);
    }

    /// Replaces each half by its product with the same half of `factors` and x, and adds both to
    /// `other`.
    KESTRA_CARRYLESS_FUNCTION void MultiplyAndAdd(const CarrylessBlock& factors, const CarrylessBlock& other) {
        const __m128i first = _mm_clmulepi64_si128(vector, factors.vector, 0x00);
        const __m128i second = _mm_clmulepi64_si128(vector, factors.vector, 0x11);
        vector = _mm_xor_si128(_mm_xor_si128(first, second), other.vector);
    }

    /// @param bytes  room for `LENGTH` of them, at any address
    void Store(unsigned char* bytes) const {
        _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), vector);
    }

private:
    __m128i vector;
};

}  // namespace Kestra::HTML

#endif
