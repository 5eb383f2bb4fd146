#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "html/framework/TokenPlace.h"
#include "tools/kestra-html/output/LineSink.h"
#include "tools/trace/TokenTrace.h"

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
    OTHER,  ///< a kind without a row of its own
    EVENT,  ///< what is not counted: start and end of the document, of scripts and styles; the mark and the charset
};

struct TokenKindInfo {
    std::string_view name;    ///< as the trace language spells it
    std::string_view colour;  ///< the terminal's escape sequence: ECMA-48, select graphic rendition
};

inline constexpr std::size_t TOKEN_KIND_COUNT = static_cast<std::size_t>(TokenKind::EVENT) + 1;

inline constexpr std::string_view BOLD = "\x1B[1m";
inline constexpr std::string_view FAINT = "\x1B[2m";
inline constexpr std::string_view RED = "\x1B[31m";
inline constexpr std::string_view GREEN = "\x1B[32m";
inline constexpr std::string_view YELLOW = "\x1B[33m";
inline constexpr std::string_view MAGENTA = "\x1B[35m";
inline constexpr std::string_view CYAN = "\x1B[36m";
inline constexpr std::string_view COLOUR_END = "\x1B[0m";

inline constexpr std::array<TokenKindInfo, TOKEN_KIND_COUNT> TOKEN_KINDS = {{
    {"text", BOLD},
    {"start", CYAN},
    {"short", CYAN},
    {"end", CYAN},
    {"comment", GREEN},
    {"cdata", MAGENTA},
    {"conditional", MAGENTA},
    {"entity", MAGENTA},
    {"extern", MAGENTA},
    {"c-comment", GREEN},
    {"cpp-comment", GREEN},
    {"s-string", YELLOW},
    {"d-string", YELLOW},
    {"script", YELLOW},
    {"style", YELLOW},
    {"junk", RED},
    {"other", BOLD},
    {"event", FAINT},
}};

constexpr const TokenKindInfo& GetTokenKindInfo(TokenKind kind) {
    return TOKEN_KINDS[static_cast<std::size_t>(kind)];
}

/// The kind of tokens with this word in the trace language, or `OTHER`.
constexpr TokenKind FindTokenKind(std::string_view word) {
    for (std::size_t i = 0; i < TOKEN_KIND_COUNT; ++i) {
        if (TOKEN_KINDS[i].name == word)
            return static_cast<TokenKind>(i);
    }
    return TokenKind::OTHER;
}

/// The text format: a line for each token or event, with its place, and the number of each kind.
class TextReport {
public:
    /// How strings and lists are shown: so many characters of each string, in UTF-8, and so many
    /// attributes.
    static constexpr Trace::Options STRINGS = {60, true, 20};

    /// @param withOffsets  lines also have the offsets of the place
    TextReport(LineSink* lineSink, bool inColour, bool withOffsets);

    /// Writes a line and counts it.
    /// @param text  in the trace language; begins with the word that is coloured
    void Write(TokenKind kind, const HTML::TokenPlace& place, std::string_view text);

    /// The same in two steps. @return where the text is to be appended, before `End`
    std::string* Begin(TokenKind kind, const HTML::TokenPlace& place);
    void End();

    /// Writes a line of the summary.
    /// @param title  at most eight letters
    void Summarize(std::string_view title, std::string_view text);

    /// The number of lines so far and, after it, that of each kind. Those of `TokenKind::EVENT` are
    /// not counted.
    std::string DescribeCounts() const;

private:
    void AppendNumber(std::uint64_t number);
    void PadTo(std::size_t size);

    LineSink* sink;
    bool colour;
    bool offsets;
    std::array<std::uint64_t, TOKEN_KIND_COUNT> counts{};
    std::string line;
    std::size_t textBegin = 0;  ///< in the line
    TokenKind kindOfLine = TokenKind::OTHER;
};

}  // namespace Kestra::Tool
