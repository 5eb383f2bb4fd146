#pragma once

#include <cstdint>

namespace Kestra::HTML {

/// What an edit answers, besides 0, 2 for text that is not well-formed UTF-8 or UTF-16 (or another
/// bad argument), and 8 when memory is lacking. An edit that is not answered with 0 changes
/// nothing.
enum RewriteResult : std::uint32_t {
    REWRITE_OK = 0,              ///< the edit is made
    REWRITE_OVER = 720,          ///< the callback that the token or the element was given to has returned
    REWRITE_WRONG_KIND = 721,    ///< this token has no attributes, no text of its own, or cannot be edited there
    REWRITE_NO_ATTRIBUTE = 722,  ///< the tag has no attribute of that name
    /// An attribute's name is empty, or has a character that ends it or that the charset lacks.
    REWRITE_BAD_NAME = 723,
    REWRITE_NO_CONTENT = 724,      ///< a void element, or a short tag that closes itself, has no content
    REWRITE_ENDS_EARLY = 725,      ///< the text would end its script, style sheet or comment, or hide its end
    REWRITE_NOT_IN_CHARSET = 726,  ///< the charset lacks a character, in a script or comment, which has no references
    REWRITE_BAD_SELECTOR = 727,    ///< a selector that cannot be read, or has a part that is not supported
};

}  // namespace Kestra::HTML
