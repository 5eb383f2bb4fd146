#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "platform/Processor.h"

/// @file
/// Several characters at once, where there are vectors; elsewhere loops over single characters do
/// all the work. Not installed.

#if defined(KESTRA_HAS_VECTORS)

namespace Kestra::HTML::Scan {

/// Places in a block, the first one lowest.
class Places {
public:
    explicit Places(std::uint32_t oneBitForEach) : mask(oneBitForEach) {}

    bool Any() const {
        return mask != 0;
    }
    std::size_t First() const {
        return static_cast<std::size_t>(std::countr_zero(mask));
    }
    std::size_t Last() const {
        return static_cast<std::size_t>(31 - std::countl_zero(mask));
    }
    /// One by one: there are few, and not every processor can count bits.
    std::size_t Count() const {
        std::size_t count = 0;
        for (std::uint32_t left = mask; left != 0; left &= left - 1)
            ++count;
        return count;
    }
    /// Those before a place.
    Places Before(std::size_t place) const {
        return Places(mask & ((std::uint32_t{1} << place) - 1));
    }

private:
    std::uint32_t mask;
};

/// Which characters of a block are wanted.
class Matches {
public:
    Matches() : vector(_mm_setzero_si128()) {}
    explicit Matches(__m128i equal) : vector(equal) {}

    Matches operator|(const Matches& other) const {
        return Matches(_mm_or_si128(vector, other.vector));
    }
    Places GetPlaces() const {
        return Places(static_cast<std::uint32_t>(_mm_movemask_epi8(vector)));
    }

private:
    __m128i vector;
};

/// Sixteen characters of input, a byte each. Of a wide one the byte says whether it is ASCII, and
/// which: what is above 255 becomes 255, or 0 from 0x8000 on, and no character that anybody looks
/// for is either.
template <typename C>
class Block {
public:
    static constexpr std::size_t LENGTH = 16;

    /// @param characters  `LENGTH` of them, at any address
    explicit Block(const C* characters) {
        if constexpr (sizeof(C) == 1)
            vector = Load(characters);
        else
            vector = _mm_packus_epi16(Load(characters), Load(characters + LENGTH / 2));
    }

    Matches Find(char character) const {
        return Matches(_mm_cmpeq_epi8(vector, _mm_set1_epi8(character)));
    }

    /// White space: all of it in ASCII, and when characters are wide what may be white space
    /// beyond.
    Matches FindLikelyWhiteSpace() const {
        // From "\t" to "\r", which one comparison finds when they are moved up to the highest
        // signed numbers.
        const __m128i moved = _mm_add_epi8(vector, _mm_set1_epi8(0x7F - '\r'));
        const Matches ascii = Find(' ') | Matches(_mm_cmpgt_epi8(moved, _mm_set1_epi8(0x7F - ('\r' - '\t') - 1)));
        if constexpr (sizeof(C) == 1)
            return ascii;
        else
            return ascii | Matches(vector);  // the places go by the highest bit, which ASCII does not have
    }

private:
    static __m128i Load(const C* characters) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(characters));
    }

    __m128i vector;
};

}  // namespace Kestra::HTML::Scan

#endif
