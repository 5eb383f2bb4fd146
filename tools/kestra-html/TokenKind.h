#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace Kestra::Tool {

/// The kinds of tokens and of events that a summary counts, in its order.
enum class TokenKind {
    TEXT,
    START_TAG,
    SHORT_TAG,
    END_TAG,
    COMMENT_TAG,
    CDATA_TAG,
    CONDITIONAL_TAG,
    ENTITY_TAG,
    EXTERN_TAG,
    C_COMMENT,
    CPP_COMMENT,
    S_QUOTE_STRING,
    D_QUOTE_STRING,
    SCRIPT,  ///< a whole script, from its start tag to its end tag
    STYLE,   ///< a whole style sheet
    JUNK,
    EVENT,  ///< what is not counted: start and end of the document, of scripts and styles; the mark and the charset
};

inline constexpr std::size_t TOKEN_KIND_COUNT = static_cast<std::size_t>(TokenKind::EVENT) + 1;

struct TokenKindInfo {
    std::string_view name;    ///< as the trace language spells it
    std::string_view colour;  ///< the terminal's escape sequence
};

const TokenKindInfo& GetTokenKindInfo(TokenKind kind);

inline constexpr std::string_view COLOUR_END = "\x1B[0m";

}  // namespace Kestra::Tool
