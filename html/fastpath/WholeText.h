#pragma once

#include <string_view>

#include "html/framework/Scan.h"

/// @file
/// Text that only a "<" ends, read by one search. `WholeTag.h` says when. Not installed.

namespace Kestra::HTML {

/// A run of text up to the "<" that ends it, or to the end of the piece.
template <typename C>
struct WholeText {
    std::basic_string_view<C> characters;  ///< in the piece
    bool endsAtTag;                        ///< the "<" has been read too
};

template <typename C, typename S>
inline WholeText<C> ReadWholeText(SimpleParserContext<C, S>* context) {
    const std::basic_string_view<C> characters = Scan::ConsumeUntil<Scan::LESS_THAN>(*context);
    const bool endsAtTag = !Scan::AtEnd(*context);
    if (endsAtTag)
        Scan::Advance(*context);
    return {characters, endsAtTag};
}

}  // namespace Kestra::HTML
