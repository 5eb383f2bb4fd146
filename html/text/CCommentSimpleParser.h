#pragma once

#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"
#include "../tags/GenericTagSimpleParser.h"

namespace Kestra::HTML {

/// State of one script block comment between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API CCommentSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::C_COMMENT;  ///< by which others hand over to it

    std::uint32_t state = 0;    ///< 0 in the body, 2 "*" pending; a pending "*" is not yet in `text`
    S text;                     ///< the body between the delimiters
    S keyword;                  ///< always empty: a block comment hands over to nobody
    WideString nextParserName;  ///< always empty
};

/// Reads a script block comment, from after its opener to its closer, inclusive. Nothing interrupts
/// it, markup included. Never fails.
template <typename C, typename S>
class KESTRA_HTML_API CCommentSimpleParser final : public SimpleParser<C, S, CCommentSimpleParserData<C, S>> {
public:
    using Data = CCommentSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE after the closer; SP_NEED_MORE_DATA when the piece is used up.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_UNTERMINATED; the record stays as it is.
    std::uint32_t EndParse(Data* data) override;

    /// Defined inside the library only.
    struct Internals;

private:
    GenericTagSimpleParser<C, S> genericTag;
    GenericTagSimpleParserData<C, S> genericTagData;
};

}  // namespace Kestra::HTML
