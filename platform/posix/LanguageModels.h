#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "platform/CharSet.h"

namespace Kestra::Base {

/// From here up, the numbers of charsets that have no code page: VISCII, TCVN 5712, KZ-1048 and
/// PTCP154. None of them is an answer, but they keep text in them from being taken for a code page.
constexpr StringNS::CharSet::Code FIRST_WITHOUT_CODE_PAGE = 70001;

/// The upper half of a charset of single bytes.
struct LetterPage {
    StringNS::CharSet::Code code = 0;  ///< the code page, or a number from `FIRST_WITHOUT_CODE_PAGE` up
    char16_t units[128] = {};          ///< what the bytes from 0x80 up are; U+FFFD for none
};

/// A page that a language is written in.
struct PageOfLanguage {
    StringNS::CharSet::Code code = 0;  ///< 0 after the last one
    std::uint32_t rarity = 0;          ///< what speaks against it before any text is seen, in bits
};

constexpr std::size_t MOST_PAGES_OF_LANGUAGE = 7;

/// How often the letters of a language follow each other.
///
/// Its symbols are numbered: 0 is the edge of a word (anything that is not listed), 1 to 26 are the
/// ASCII letters, and the letters beyond ASCII follow. Where these are not Latin, all ASCII letters
/// are the symbol 1.
struct LanguageModel {
    std::string_view language;  ///< ISO 639-1; with a suffix where it is written in another way
    bool latin = false;
    PageOfLanguage pages[MOST_PAGES_OF_LANGUAGE];
    std::u16string_view lower;  ///< the letters beyond ASCII, and some signs
    std::u16string_view upper;  ///< the same in upper case, as far as they have one
    /// A row for each symbol: what the symbols cost after it, in quarters of a bit, as digits from
    /// "0-9A-Za-z+-".
    std::string_view costs;
};

/// What the characters of two bytes cost in one code page.
struct LeadByteModel {
    StringNS::CharSet::Code code = 0;
    std::string_view costs;  ///< of the lead bytes 0x80 to 0xFF, in quarters of a bit, digits as above
};

std::span<const LetterPage> LetterPages();
std::span<const LanguageModel> LanguageModels();
std::span<const LeadByteModel> LeadByteModels();

/// The value of a digit of the tables, 0 to 63.
constexpr std::uint32_t ReadCostDigit(char digit) {
    if (digit >= '0' && digit <= '9')
        return static_cast<std::uint32_t>(digit - '0');
    if (digit >= 'A' && digit <= 'Z')
        return static_cast<std::uint32_t>(digit - 'A') + 10;
    if (digit >= 'a' && digit <= 'z')
        return static_cast<std::uint32_t>(digit - 'a') + 36;
    return digit == '+' ? 62 : 63;
}

}  // namespace Kestra::Base
