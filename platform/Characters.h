#pragma once

#include <string>
#include <string_view>

/// @file
/// The 16-bit character flavour. It is named here once, and nothing else asks for the platform.

/// The library. Its parsers are in `Kestra::HTML`; here is what all its parts share.
namespace Kestra {

/// A unit of UTF-16: `wchar_t` on Windows, `char16_t` elsewhere.
#if defined(_WIN32)
using WideChar = wchar_t;
#define KESTRA_WIDE(text) L##text
#else
using WideChar = char16_t;
#define KESTRA_WIDE(text) u##text
#endif

/// @def KESTRA_WIDE(text)
/// A literal of the 16-bit flavour: `KESTRA_WIDE("page.html")`.

/// A string of UTF-16: `std::wstring` on Windows, `std::u16string` elsewhere.
using WideString = std::basic_string<WideChar>;
/// A part of such a string, borrowed.
using WideStringView = std::basic_string_view<WideChar>;

static_assert(sizeof(WideChar) == 2, "the wide flavour is UTF-16 on every platform");

/// White space of the 8-bit flavour: 9 to 13 and 32, as in the "C" locale. Bytes from 128 up never
/// are.
constexpr bool IsSpace(char character) noexcept {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

/// White space of the 16-bit flavour: one fixed table, never the host's locale. Source: the
/// characters with the property White_Space in the Unicode Character Database, the controls 28 to
/// 31 left out.
constexpr bool IsSpace(WideChar character) noexcept {
    const auto code = static_cast<unsigned>(character);
    if (code < 0x80)
        return code == 0x20 || (code >= 0x09 && code <= 0x0D);
    return code == 0x85 || code == 0xA0 || code == 0x1680 || (code >= 0x2000 && code <= 0x200A) || code == 0x2028 ||
           code == 0x2029 || code == 0x202F || code == 0x205F || code == 0x3000;
}

/// The lower-case form of "A" to "Z"; every other character is its own.
template <typename C>
constexpr C FoldAscii(C character) noexcept {
    return character >= 'A' && character <= 'Z' ? static_cast<C>(character + ('a' - 'A')) : character;
}

/// Compares a word with an ASCII keyword written in lower case, "A" to "Z" folded, over the full
/// length: a NUL is a character like any other.
template <typename C>
constexpr bool EqualsKeyword(std::basic_string_view<C> word, std::string_view lowerCaseKeyword) noexcept {
    if (word.size() != lowerCaseKeyword.size())
        return false;
    for (std::size_t i = 0; i < word.size(); ++i) {
        if (FoldAscii(word[i]) != static_cast<C>(lowerCaseKeyword[i]))
            return false;
    }
    return true;
}

/// The same for a string.
template <typename C>
constexpr bool EqualsKeyword(const std::basic_string<C>& word, std::string_view lowerCaseKeyword) noexcept {
    return EqualsKeyword(std::basic_string_view<C>(word), lowerCaseKeyword);
}

}  // namespace Kestra
