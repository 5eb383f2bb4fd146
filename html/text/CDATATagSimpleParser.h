#pragma once

#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"

namespace Kestra::HTML {

/// State of one CDATA section between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API CDATATagSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::CDATA_TAG;  ///< by which others hand over to it

    std::uint32_t state = 0;  ///< 0 in the body, 1 "]" pending, 2 "]]" pending; pending brackets are not yet in `text`
    S keyword;                ///< the word after "<![" as written; the owner sets it after `BeginParse`
    S text;                   ///< the body, from the "[" after the keyword on
    bool closed = true;       ///< false when "]]" was not followed by ">", or the input ended before
};

/// Reads a CDATA section, from after its keyword to "]]>", inclusive. Never fails.
///
/// "]]" ends the section whatever follows; anything but ">" is left unread and the section stays
/// open.
template <typename C, typename S>
class KESTRA_HTML_API CDATATagSimpleParser final : public SimpleParser<C, S, CDATATagSimpleParserData<C, S>> {
public:
    using Data = CDATATagSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE after "]]>", or before the character after any other "]]";
    ///         SP_NEED_MORE_DATA when the piece is used up.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// Leaves the section open, with its pending brackets in `text`.
    /// @return SP_TOKEN_COMPLETE
    std::uint32_t EndParse(Data* data) override;
};

}  // namespace Kestra::HTML
