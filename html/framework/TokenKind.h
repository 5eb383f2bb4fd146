#pragma once

#include <cstdint>

namespace Kestra::HTML {

/// The kinds of tokens, in the order of the operations of `ParserObserver`.
enum TokenKind : std::uint32_t {
    TOKEN_NONE = 0,
    TOKEN_TEXT = 1,
    TOKEN_C_COMMENT = 2,
    TOKEN_CPP_COMMENT = 3,
    TOKEN_S_QUOTE_STRING = 4,
    TOKEN_D_QUOTE_STRING = 5,
    TOKEN_START_TAG = 6,
    TOKEN_SHORT_TAG = 7,
    TOKEN_END_TAG = 8,
    TOKEN_CDATA_TAG = 9,
    TOKEN_CONDITIONAL_TAG = 10,
    TOKEN_COMMENT_TAG = 11,
    TOKEN_ENTITY_TAG = 12,
    TOKEN_EXTERN_TAG = 13,
    TOKEN_JUNK = 14,
};

}  // namespace Kestra::HTML
