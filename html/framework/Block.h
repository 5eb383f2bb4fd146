#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "platform/Processor.h"

/// @file
/// Sixteen characters at once, where the processor has vectors; elsewhere loops over single
/// characters do all the work. Not installed.

#if defined(KESTRA_HAS_VECTORS)

namespace Kestra::HTML::Scan {

/// A set of places in a block, one bit each; the first character has the lowest bit.
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
    /// Counted one by one: there are few, and not every processor can count bits.
    std::size_t Count() const {
        std::size_t count = 0;
        for (std::uint32_t left = mask; left != 0; left &= left - 1)
            ++count;
        return count;
    }
    /// The places before `place`.
    Places Before(std::size_t place) const {
        return Places(mask & ((std::uint32_t{1} << place) - 1));
    }

private:
    std::uint32_t mask;
};

/// The result of a comparison: which characters of a block match.
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

/// Sixteen characters of input, a byte each. A wide character above 255 becomes 255, or 0 from
/// 0x8000 on; no character that is searched for is one of these two.
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

    Matches CompareWith(char character) const {
        return Matches(_mm_cmpeq_epi8(vector, _mm_set1_epi8(character)));
    }

    /// All white space of ASCII and, in the wide flavour, all characters beyond ASCII, since some
    /// of them are white space.
    Matches CompareWithWhiteSpace() const {
        // One comparison finds the characters from "\t" to "\r" when they are moved up to the
        // highest signed numbers.
        const __m128i moved = _mm_add_epi8(vector, _mm_set1_epi8(0x7F - '\r'));
        const Matches ascii =
            CompareWith(' ') | Matches(_mm_cmpgt_epi8(moved, _mm_set1_epi8(0x7F - ('\r' - '\t') - 1)));
        if constexpr (sizeof(C) == 1)
            return ascii;
        else
            return ascii | Matches(vector);  // the highest bit is what counts, and ASCII does not have it
    }

private:
    static __m128i Load(const C* characters) {
        return _mm_loadu_si128(reinterpret_cast<const __m128i*>(characters));
    }

    __m128i vector;
};

}  // namespace Kestra::HTML::Scan

#endif
