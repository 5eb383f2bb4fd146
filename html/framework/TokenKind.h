#pragma once

#include <cstdint>

namespace Kestra::HTML {

/// The kinds of tokens, by their records, in the order of the operations of `ParserObserver`.
enum TokenKind : std::uint32_t {
    TOKEN_NONE = 0,              ///< no token
    TOKEN_TEXT = 1,              ///< `TextData`
    TOKEN_C_COMMENT = 2,         ///< `CCommentData`
    TOKEN_CPP_COMMENT = 3,       ///< `CPPCommentData`
    TOKEN_S_QUOTE_STRING = 4,    ///< `SQuoteStringData`
    TOKEN_D_QUOTE_STRING = 5,    ///< `DQuoteStringData`
    TOKEN_START_TAG = 6,         ///< `StartTagData`
    TOKEN_SHORT_TAG = 7,         ///< `ShortTagData`
    TOKEN_END_TAG = 8,           ///< `EndTagData`
    TOKEN_CDATA_TAG = 9,         ///< `CDATATagData`
    TOKEN_CONDITIONAL_TAG = 10,  ///< `ConditionalTagData`
    TOKEN_COMMENT_TAG = 11,      ///< `CommentTagData`
    TOKEN_ENTITY_TAG = 12,       ///< `EntityTagData`
    TOKEN_EXTERN_TAG = 13,       ///< `ExternTagData`
    TOKEN_JUNK = 14,             ///< `JunkData`
};

}  // namespace Kestra::HTML
