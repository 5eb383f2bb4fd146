#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "platform/AsciiRuns.h"
#include "platform/Processor.h"

/// @file
/// Copies runs of text that is written as it is: printable ASCII, but for what a notation escapes.
/// Sixteen characters at once where the processor has vectors, elsewhere one by one.

namespace Kestra::Trace {

/// Printable ASCII without some characters.
template <char... ESCAPED>
struct PlainText {
    template <typename C>
    static constexpr bool Has(C character) {
        const auto unit = static_cast<std::make_unsigned_t<C>>(character);
        return unit >= 0x20 && unit < 0x7F && ((unit != static_cast<unsigned char>(ESCAPED)) && ...);
    }

#if defined(KESTRA_HAS_VECTORS)
    /// Blocks for `CopyAsciiInBlocks`: each function copies a block and answers a bit for each
    /// character that is not plain.
    template <typename C>
    struct Blocks {
        static unsigned CopySixteen(const C* from, char* to) {
            const __m128i bytes = sizeof(C) == 1 ? Load(from) : _mm_packus_epi16(Load(from), Load(from + 8));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
            return FindOthers(bytes);
        }
        static unsigned CopyEight(const C* from, char* to) {
            const __m128i bytes = sizeof(C) == 1 ? LoadHalf(from) : _mm_packus_epi16(Load(from), _mm_setzero_si128());
            _mm_storel_epi64(reinterpret_cast<__m128i*>(to), bytes);
            return FindOthers(bytes) & 0xFF;
        }
        static unsigned CopyFour(const C* from, char* to) {
            const __m128i bytes =
                sizeof(C) == 1 ? LoadFour(from) : _mm_packus_epi16(LoadHalf(from), _mm_setzero_si128());
            const std::int32_t word = _mm_cvtsi128_si32(bytes);
            std::memcpy(to, &word, sizeof word);
            return FindOthers(bytes) & 0xF;
        }

    private:
        static __m128i Load(const void* from) {
            return _mm_loadu_si128(static_cast<const __m128i*>(from));
        }
        static __m128i LoadHalf(const void* from) {
            return _mm_loadl_epi64(static_cast<const __m128i*>(from));
        }
        static __m128i LoadFour(const void* from) {
            std::int32_t word;
            std::memcpy(&word, from, sizeof word);
            return _mm_cvtsi32_si128(word);
        }

        /// A unit beyond U+00FF has become 0 or 255; neither is plain.
        static unsigned FindOthers(__m128i bytes) {
            __m128i isPlain =
                _mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8(0x1F)), _mm_cmpgt_epi8(_mm_set1_epi8(0x7F), bytes));
            ((isPlain = _mm_andnot_si128(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(ESCAPED)), isPlain)), ...);
            return static_cast<unsigned>(_mm_movemask_epi8(isPlain)) ^ 0xFFFFU;
        }
    };
#endif

    /// Copies the run at the beginning of `size` characters.
    /// @param to  all of `[to, to + size)` may be written; what follows the run there is unspecified
    /// @return its length
    template <typename C>
    static std::size_t CopyRun(const C* from, std::size_t size, char* to) {
#if defined(KESTRA_HAS_VECTORS)
        if (size >= 4)
            return StringNS::CopyAsciiInBlocks<Blocks<C>>(from, size, to);
#endif
        return CopyOneByOne(from, size, to);
    }

    /// The same without vectors.
    template <typename C>
    static std::size_t CopyOneByOne(const C* from, std::size_t size, char* to) {
        std::size_t done = 0;
        for (; done < size && Has(from[done]); ++done)
            to[done] = static_cast<char>(from[done]);
        return done;
    }
};

}  // namespace Kestra::Trace
