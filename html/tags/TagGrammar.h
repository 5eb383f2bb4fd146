#pragma once

#include <cstdint>
#include <string_view>

#include "html/framework/Scan.h"

/// @file
/// The decisions that the recognizers of tags and the fast path share: where names and values stop,
/// and whether a "/" closes the tag. Not installed.

namespace Kestra::HTML::TagGrammar {

constexpr Scan::Classes ATTRIBUTE_NAME_STOPS = Scan::WHITE_SPACE | Scan::EQUALS_SIGN | Scan::GREATER_THAN;
constexpr Scan::Classes TAG_NAME_STOPS = ATTRIBUTE_NAME_STOPS | Scan::BRACKET | Scan::LESS_THAN;
constexpr Scan::Classes BARE_VALUE_STOPS = Scan::WHITE_SPACE | Scan::GREATER_THAN | Scan::LESS_THAN;

/// Says whether the last character of a word is the closing mark: "/", or "?" of an XML
/// declaration.
enum class ClosingMark {
    NONE,      ///< no mark, or one that belongs to the word
    CLOSES,    ///< the word ends before the mark, and so does the list: ">" must follow
    LONE,      ///< nothing but the mark is there where a value is expected
    DETACHED,  ///< white space separates the mark from the end of the tag
};

/// @param value      unquoted; may be empty
/// @param following  the character after the value
template <typename C>
inline ClosingMark FindMarkOfBareValue(std::basic_string_view<C> value, C following, C mark) {
    if (value.empty() || value.back() != mark || following != '>')
        return ClosingMark::NONE;
    return value.size() == 1 ? ClosingMark::LONE : ClosingMark::CLOSES;
}

/// @param name  of an attribute without a value; a name that is only the mark closes the tag too
template <typename C>
inline ClosingMark FindMarkOfName(std::basic_string_view<C> name, bool whiteSpaceFollows, C mark) {
    if (name.empty() || name.back() != mark)
        return ClosingMark::NONE;
    return whiteSpaceFollows ? ClosingMark::DETACHED : ClosingMark::CLOSES;
}

/// Makes a short tag of "<br/>", which the recognizer reads as the tag "br/". Only a tag that is
/// nothing but a name changes: "<br/ >" stays the tag "br/".
/// @param data  the record of a complete start tag
template <typename Data>
inline void SettleShortTag(Data* data) {
    using C = typename decltype(data->name)::value_type;
    if (data->selfClosing || !data->closed || !data->attributes.empty() || data->name.size() <= 1)
        return;
    if (FindMarkOfName<C>(data->name, !data->suffix.empty(), '/') == ClosingMark::CLOSES) {
        data->name.pop_back();
        data->selfClosing = true;
    }
}

}  // namespace Kestra::HTML::TagGrammar
