#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "platform/Characters.h"

/// @file
/// What both parsers know of the elements in which the HTML standard sees no markup. Not installed.

namespace Kestra::HTML {

/// An element whose content is text up to its own end tag.
enum class RawTextElement : std::uint32_t {
    NONE,
    SCRIPT,
    STYLE,
    TEXTAREA,
    TITLE,
    XMP,
    IFRAME,
    NOEMBED,
    NOFRAMES,
    PLAINTEXT,  ///< nothing ends it
};

/// How their end tags begin, in the order of `RawTextElement`.
inline constexpr std::string_view RAW_TEXT_ENDS[] = {"",      "</script", "</style",   "</textarea", "</title",
                                                     "</xmp", "</iframe", "</noembed", "</noframes", "</plaintext"};

/// Opens the part of a script in which scripts may lie.
inline constexpr std::string_view SCRIPT_ESCAPE_OPENER = "<!--";

constexpr std::string_view GetRawTextEnd(RawTextElement element) {
    return RAW_TEXT_ENDS[static_cast<std::size_t>(element)];
}

/// @param element  not `NONE`
constexpr std::string_view GetRawTextName(RawTextElement element) {
    return GetRawTextEnd(element).substr(2);
}

/// Whether browsers end a name at the character: the tags of this library know more white space.
template <typename C>
constexpr bool EndsRawTextName(C character) {
    return character == '>' || character == '/' || character == ' ' || character == '\t' || character == '\n' ||
           character == '\f' || character == '\r';
}

/// The element of a name, compared without case, or `NONE`.
template <typename C>
RawTextElement FindRawTextElement(std::basic_string_view<C> name) {
    const auto* const found = std::find_if(std::begin(RAW_TEXT_ENDS) + 1, std::end(RAW_TEXT_ENDS),
                                           [name](std::string_view end) { return EqualsKeyword(name, end.substr(2)); });
    return found == std::end(RAW_TEXT_ENDS) ? RawTextElement::NONE
                                            : static_cast<RawTextElement>(found - std::begin(RAW_TEXT_ENDS));
}

}  // namespace Kestra::HTML
