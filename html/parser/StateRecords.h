#pragma once

#include <type_traits>

#include "html/framework/TokenRecords.h"

/// @file
/// From the state record of a recognizer to the record of a token. Not installed.

namespace Kestra::HTML {

/// The record of a token that a recognizer has read: it shows the strings and lists of the state.
template <template <typename, typename> class Record, template <typename, typename> class State, typename C, typename S>
Record<C, S> MakeRecord(const State<C, S>& state) {
    using R = Record<C, S>;
    if constexpr (std::is_same_v<R, StartTagData<C, S>> || std::is_same_v<R, ShortTagData<C, S>>)
        return {&state.prefix, &state.name, &state.attributes, &state.suffix, state.closed};
    else if constexpr (std::is_same_v<R, EndTagData<C, S>>)
        return {&state.prefix, &state.name, &state.afterName, state.closed, &state.attributes, state.slashBeforeClose, &state.suffix};
    else if constexpr (std::is_same_v<R, CommentTagData<C, S>>)
        return {&state.text, state.closed};
    else if constexpr (std::is_same_v<R, CDATATagData<C, S>>)
        return {&state.keyword, &state.text, state.closed};
    else if constexpr (std::is_same_v<R, ConditionalTagData<C, S>>)
        return {&state.keyword, &state.condition, &state.tail, state.bracketClosed, state.tagClosed};
    else if constexpr (std::is_same_v<R, EntityTagData<C, S>>)
        return {&state.prefix, &state.name, &state.tokens, &state.suffix};
    else if constexpr (std::is_same_v<R, ExternTagData<C, S>>)
        return {&state.prefix, &state.name, &state.attributes, &state.suffix, state.freeStyle, &state.text, state.slashBeforeClose};
    else
        return {&state.text};
}

}  // namespace Kestra::HTML
