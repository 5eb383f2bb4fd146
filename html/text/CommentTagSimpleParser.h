#pragma once

#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"

namespace Kestra::HTML {

/// State of one markup comment between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API CommentTagSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::COMMENT_TAG;  ///< by which others hand over to it

    std::uint32_t state = 0;  ///< 0 in the body, 1 "-" pending, 2 "--" pending; pending hyphens are not yet in `text`
    S text;                   ///< the body between "<!--" and "-->"
    bool closed = true;       ///< false only when the input ended before "-->"
};

/// Reads the body of a markup comment, from after "<!--" to "-->", inclusive. Never fails.
template <typename C, typename S>
class KESTRA_HTML_API CommentTagSimpleParser final : public SimpleParser<C, S, CommentTagSimpleParserData<C, S>> {
public:
    using Data = CommentTagSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE after "-->"; SP_NEED_MORE_DATA when the piece is used up.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// Leaves the comment open, with its pending hyphens in `text`.
    /// @return SP_TOKEN_COMPLETE
    std::uint32_t EndParse(Data* data) override;
};

}  // namespace Kestra::HTML
