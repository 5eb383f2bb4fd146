#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "platform/Processor.h"

/// @file
/// Several characters at once, where there are vectors; elsewhere loops over single characters do all the work. Not installed.

#if defined(KESTRA_HAS_VECTORS)

namespace Kestra::HTML::Scan {

/// The places in a block of characters of `WIDTH` bytes, the first one lowest.
template <unsigned WIDTH>
class Places {
public:
    explicit Places(std::uint32_t byteMask) : mask(byteMask) {}

    bool Any() const {
        return mask != 0;
    }
    std::size_t First() const {
        return static_cast<std::size_t>(std::countr_zero(mask)) / WIDTH;
    }
    std::size_t Last() const {
        return static_cast<std::size_t>(31 - std::countl_zero(mask)) / WIDTH;
    }
    /// One by one: there are few, and not every processor can count bits.
    std::size_t Count() const {
        std::size_t bits = 0;
        for (std::uint32_t left = mask; left != 0; left &= left - 1)
            ++bits;
        return bits / WIDTH;
    }
    /// Those in front of a place.
    Places Before(std::size_t place) const {
        return Places(mask & ((std::uint32_t{1} << (place * WIDTH)) - 1));
    }

private:
    std::uint32_t mask;
};

/// Which characters of a block are wanted.
template <unsigned WIDTH>
class Matches {
public:
    Matches() : vector(_mm_setzero_si128()) {}
    explicit Matches(__m128i equal) : vector(equal) {}

    Matches operator|(const Matches& other) const {
        return Matches(_mm_or_si128(vector, other.vector));
    }
    Places<WIDTH> GetPlaces() const {
        return Places<WIDTH>(static_cast<std::uint32_t>(_mm_movemask_epi8(vector)));
    }

private:
    __m128i vector;
};

/// Sixteen bytes of input.
template <typename C>
class Block {
public:
    static constexpr std::size_t LENGTH = 16 / sizeof(C);  ///< in characters

    /// @param characters  `LENGTH` of them, at any address
    explicit Block(const C* characters) : vector(_mm_loadu_si128(reinterpret_cast<const __m128i*>(characters))) {}

    Matches<sizeof(C)> Find(char character) const {
        if constexpr (sizeof(C) == 1)
            return Matches<1>(_mm_cmpeq_epi8(vector, _mm_set1_epi8(character)));
        else
            return Matches<2>(_mm_cmpeq_epi16(vector, _mm_set1_epi16(character)));
    }

    /// White space: all of it in ASCII, and when characters are wide all that is not ASCII, which may be white space.
    Matches<sizeof(C)> FindLikelyWhiteSpace() const {
        const Matches<sizeof(C)> space = Find(' ');
        // From "\t" to "\r", which one comparison tells when they are moved up to the highest signed numbers.
        if constexpr (sizeof(C) == 1) {
            const __m128i moved = _mm_add_epi8(vector, _mm_set1_epi8(0x7F - '\r'));
            return space | Matches<1>(_mm_cmpgt_epi8(moved, _mm_set1_epi8(0x7F - ('\r' - '\t') - 1)));
        } else {
            const __m128i moved = _mm_add_epi16(vector, _mm_set1_epi16(0x7FFF - '\r'));
            const __m128i controls = _mm_cmpgt_epi16(moved, _mm_set1_epi16(0x7FFF - ('\r' - '\t') - 1));
            const __m128i ascii = _mm_cmpeq_epi16(_mm_subs_epu16(vector, _mm_set1_epi16(0x7F)), _mm_setzero_si128());
            return space | Matches<2>(_mm_or_si128(controls, _mm_andnot_si128(ascii, _mm_set1_epi16(-1))));
        }
    }

private:
    __m128i vector;
};

}  // namespace Kestra::HTML::Scan

#endif
