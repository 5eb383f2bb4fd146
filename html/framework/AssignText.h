#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// @file
/// Copies short runs, as most strings of a token are, without a library call. Not installed.

namespace Kestra::HTML {

/// Copies `sizeof(Word)` to `2 * sizeof(Word)` bytes by two moves, which may overlap.
template <typename Word>
inline void CopyByTwo(void* to, const void* from, std::size_t bytes) {
    Word first;
    Word last;
    std::memcpy(&first, from, sizeof(Word));
    std::memcpy(&last, static_cast<const char*>(from) + bytes - sizeof(Word), sizeof(Word));
    std::memcpy(to, &first, sizeof(Word));
    std::memcpy(static_cast<char*>(to) + bytes - sizeof(Word), &last, sizeof(Word));
}

/// As `std::memcpy`, for sizes that are mostly small.
inline void CopyShort(void* to, const void* from, std::size_t bytes) {
    struct Sixteen {
        std::uint64_t halves[2];
    };
    struct ThirtyTwo {
        std::uint64_t quarters[4];
    };
    if (bytes > 2 * sizeof(ThirtyTwo))
        std::memcpy(to, from, bytes);
    else if (bytes > sizeof(ThirtyTwo))
        CopyByTwo<ThirtyTwo>(to, from, bytes);
    else if (bytes >= sizeof(Sixteen))
        CopyByTwo<Sixteen>(to, from, bytes);
    else if (bytes >= sizeof(std::uint64_t))
        CopyByTwo<std::uint64_t>(to, from, bytes);
    else if (bytes >= sizeof(std::uint32_t))
        CopyByTwo<std::uint32_t>(to, from, bytes);
    else if (bytes >= sizeof(std::uint16_t))
        CopyByTwo<std::uint16_t>(to, from, bytes);
    else if (bytes != 0)
        std::memcpy(to, from, 1);
}

/// Assigns a run to a string. A string that is at least as long already needs no library call, so
/// do not clear it before.
template <typename S>
inline void AssignText(const typename S::value_type* begin, const typename S::value_type* end, S* text) {
    const auto length = static_cast<std::size_t>(end - begin);
    if (length <= text->size()) {
        text->erase(length);
        CopyShort(text->data(), begin, length * sizeof(*begin));
    } else {
        text->clear();
        text->append(begin, length);
    }
}

/// The same for runs that are mostly empty or one character long, as white space in tags is.
template <typename S>
inline void AssignSpace(const typename S::value_type* begin, const typename S::value_type* end, S* text) {
    if (begin == end)
        text->clear();
    else if (end - begin == 1 && text->size() == 1)
        text->front() = *begin;
    else
        AssignText(begin, end, text);
}

}  // namespace Kestra::HTML
