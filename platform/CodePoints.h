#pragma once

#include <cstdint>

#include "platform/Characters.h"

/// @file
/// Code points, and how UTF-8 and UTF-16 write them. Not installed.

namespace Kestra {

constexpr char32_t REPLACEMENT_CHARACTER = 0xFFFD;
constexpr char32_t CODE_POINT_END = 0x110000;  ///< one past the last code point
constexpr char32_t ILL_FORMED = 0xFFFFFFFF;    ///< answered for what is no code point

constexpr bool IsHighSurrogate(char32_t unit) noexcept {
    return unit >= 0xD800 && unit <= 0xDBFF;
}

constexpr bool IsLowSurrogate(char32_t unit) noexcept {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

constexpr bool IsSurrogate(char32_t unit) noexcept {
    return unit >= 0xD800 && unit <= 0xDFFF;
}

constexpr char32_t JoinSurrogates(char32_t high, char32_t low) noexcept {
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

/// Whether a byte continues a UTF-8 sequence.
constexpr bool IsTrailingByte(char byte) noexcept {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80;
}

/// What the first byte of a UTF-8 sequence says about the others. Source: table 3-7 of the Unicode
/// Standard.
struct Utf8Lead {
    unsigned trailing;  ///< bytes to follow; 0 for a byte that starts no sequence of several bytes
    /// Bounds of the second byte. After four of the first bytes they are narrower, to exclude
    /// overlong forms, surrogates, and what is beyond the last code point.
    unsigned char smallest;
    unsigned char greatest;
};

constexpr Utf8Lead ClassifyUtf8Lead(unsigned char byte) noexcept {
    if (byte < 0xC2 || byte > 0xF4)
        return {0, 0, 0};
    if (byte < 0xE0)
        return {1, 0x80, 0xBF};
    const auto smallest = static_cast<unsigned char>(byte == 0xE0 ? 0xA0 : byte == 0xF0 ? 0x90 : 0x80);
    const auto greatest = static_cast<unsigned char>(byte == 0xED ? 0x9F : byte == 0xF4 ? 0x8F : 0xBF);
    const unsigned trailing = byte < 0xF0 ? 2 : 3;
    return {trailing, smallest, greatest};
}

/// Reads the code point at `*from`, which is before `end`, and moves after it.
/// @return ILL_FORMED for an invalid sequence, which is read up to the first byte that cannot
///         continue it (its maximal subpart)
constexpr char32_t ReadUtf8(const char** from, const char* end) noexcept {
    const auto first = static_cast<unsigned char>(*(*from)++);
    if (first < 0x80)
        return first;
    const Utf8Lead lead = ClassifyUtf8Lead(first);
    if (lead.trailing == 0 || *from == end)
        return ILL_FORMED;
    const auto second = static_cast<unsigned char>(**from);
    if (second < lead.smallest || second > lead.greatest)
        return ILL_FORMED;
    char32_t codePoint = first & (0x3FU >> lead.trailing);
    for (unsigned i = 0; i < lead.trailing; ++i) {
        if (*from == end || !IsTrailingByte(**from))
            return ILL_FORMED;
        codePoint = (codePoint << 6) | (static_cast<unsigned char>(*(*from)++) & 0x3FU);
    }
    return codePoint;
}

/// Hands `put` the UTF-8 bytes of a code point, one by one, as `char`.
template <typename Put>
constexpr void WriteUtf8(char32_t codePoint, Put put) {
    const auto putByte = [&put](char32_t byte) { put(static_cast<char>(static_cast<unsigned char>(byte))); };
    if (codePoint < 0x80) {
        putByte(codePoint);
        return;
    }
    if (codePoint < 0x800) {
        putByte(0xC0 | (codePoint >> 6));
    } else {
        if (codePoint < 0x10000) {
            putByte(0xE0 | (codePoint >> 12));
        } else {
            putByte(0xF0 | (codePoint >> 18));
            putByte(0x80 | ((codePoint >> 12) & 0x3F));
        }
        putByte(0x80 | ((codePoint >> 6) & 0x3F));
    }
    putByte(0x80 | (codePoint & 0x3F));
}

/// Reads the code point at `*from`, which is before `end`, and moves after it. A lone surrogate is
/// answered as it is.
constexpr char32_t ReadUtf16(const WideChar** from, const WideChar* end) noexcept {
    const char32_t unit = *(*from)++;
    if (!IsHighSurrogate(unit) || *from == end || !IsLowSurrogate(**from))
        return unit;
    return JoinSurrogates(unit, *(*from)++);
}

/// Hands `put` the one or two UTF-16 units of a code point.
template <typename Put>
constexpr void WriteUtf16(char32_t codePoint, Put put) {
    if (codePoint < 0x10000) {
        put(static_cast<WideChar>(codePoint));
    } else {
        put(static_cast<WideChar>(0xD7C0 + (codePoint >> 10)));  // 0xD800 - (0x10000 >> 10)
        put(static_cast<WideChar>(0xDC00 | (codePoint & 0x3FF)));
    }
}

}  // namespace Kestra
