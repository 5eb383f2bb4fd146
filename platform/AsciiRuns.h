#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "platform/Characters.h"
#include "platform/Processor.h"

/// @file
/// Converts runs of ASCII between bytes and UTF-16: sixteen characters at once where the processor
/// has vectors, elsewhere one by one. Not installed.
///
/// Each function copies the run at the beginning of `size` characters and answers its length. It
/// may write to all of `[to, to + size)`; what follows the run there is unspecified.

namespace Kestra::StringNS {

/// One by one. The blocks must give the same result.
template <typename From, typename To>
std::size_t CopyAsciiOneByOne(const From* from, std::size_t size, To* to) {
    std::size_t done = 0;
    while (done < size && static_cast<std::make_unsigned_t<From>>(from[done]) < 0x80) {
        to[done] = static_cast<To>(from[done]);
        ++done;
    }
    return done;
}

#if defined(KESTRA_HAS_VECTORS)

/// Blocks of bytes to UTF-16. Each function copies a block, ASCII or not, and answers a bit for
/// each character that is not ASCII.
struct WidenedBlocks {
    static unsigned CopySixteen(const char* from, WideChar* to) {
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        const __m128i zero = _mm_setzero_si128();
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(bytes, zero));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to + 8), _mm_unpackhi_epi8(bytes, zero));
        return static_cast<unsigned>(_mm_movemask_epi8(bytes));
    }
    static unsigned CopyEight(const char* from, WideChar* to) {
        const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
        return static_cast<unsigned>(_mm_movemask_epi8(bytes));
    }
    static unsigned CopyFour(const char* from, WideChar* to) {
        std::int32_t word;
        std::memcpy(&word, from, sizeof word);
        const __m128i bytes = _mm_cvtsi32_si128(word);
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
        return static_cast<unsigned>(_mm_movemask_epi8(bytes));
    }
};

/// The same from UTF-16 to bytes.
struct NarrowedBlocks {
    static unsigned CopySixteen(const WideChar* from, char* to) {
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + 8));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(low, high));
        return FindOthers(low, high);
    }
    static unsigned CopyEight(const WideChar* from, char* to) {
        const __m128i units = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to), _mm_packus_epi16(units, units));
        return FindOthers(units, _mm_setzero_si128());
    }
    static unsigned CopyFour(const WideChar* from, char* to) {
        const __m128i units = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(from));
        const std::int32_t word = _mm_cvtsi128_si32(_mm_packus_epi16(units, units));
        std::memcpy(to, &word, sizeof word);
        return FindOthers(units, _mm_setzero_si128());
    }

private:
    static unsigned FindOthers(__m128i low, __m128i high) {
        const __m128i beyond = _mm_set1_epi16(static_cast<short>(0xFF80));
        const __m128i zero = _mm_setzero_si128();
        const __m128i isLow = _mm_cmpeq_epi16(_mm_and_si128(low, beyond), zero);
        const __m128i isHigh = _mm_cmpeq_epi16(_mm_and_si128(high, beyond), zero);
        return static_cast<unsigned>(_mm_movemask_epi8(_mm_packs_epi16(isLow, isHigh))) ^ 0xFFFFU;
    }
};

/// The last block ends at the last character, so it overlaps the block before it. Strings of up to
/// 15 characters, as most are, need at most two blocks.
template <typename Blocks, typename From, typename To>
std::size_t CopyAsciiInBlocks(const From* from, std::size_t size, To* to) {
    const auto copyLast = [=](std::size_t length, auto copy) {
        const std::size_t last = size - length;
        const unsigned others = copy(from + last, to + last);
        return others == 0 ? size : last + static_cast<std::size_t>(std::countr_zero(others));
    };
    const auto copyTwo = [=](std::size_t length, auto copy) {
        const unsigned others = copy(from, to);
        return others == 0 ? copyLast(length, copy) : static_cast<std::size_t>(std::countr_zero(others));
    };
    if (size < 4)
        return CopyAsciiOneByOne(from, size, to);
    if (size < 8)
        return copyTwo(4, Blocks::CopyFour);
    if (size < 16)
        return copyTwo(8, Blocks::CopyEight);
    for (std::size_t done = 0; done < size - 16; done += 16) {
        const unsigned others = Blocks::CopySixteen(from + done, to + done);
        if (others != 0)
            return done + static_cast<std::size_t>(std::countr_zero(others));
    }
    return copyLast(16, Blocks::CopySixteen);
}

#endif

/// Bytes to UTF-16.
inline std::size_t CopyAscii(const char* from, std::size_t size, WideChar* to) {
#if defined(KESTRA_HAS_VECTORS)
    return CopyAsciiInBlocks<WidenedBlocks>(from, size, to);
#else
    return CopyAsciiOneByOne(from, size, to);
#endif
}

/// UTF-16 to bytes.
inline std::size_t CopyAscii(const WideChar* from, std::size_t size, char* to) {
#if defined(KESTRA_HAS_VECTORS)
    return CopyAsciiInBlocks<NarrowedBlocks>(from, size, to);
#else
    return CopyAsciiOneByOne(from, size, to);
#endif
}

}  // namespace Kestra::StringNS
