#pragma once

#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"

namespace Kestra::HTML {

/// State of one single-quoted string between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API SQuoteStringSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::S_QUOTE_STRING;  ///< by which others hand over to it

    S text;            ///< the content without its quotes, escapes as written
    C lastChar = '*';  ///< the previous content character, "*" after an escaped pair; used only with `allowEscapes`
    bool allowEscapes = false;  ///< a backslash takes the next character's meaning away
};

/// Reads a single-quoted string, from after its opening "'" to the closing one, inclusive. Any
/// length, line feeds included.
template <typename C, typename S>
class KESTRA_HTML_API SQuoteStringSimpleParser final : public SimpleParser<C, S, SQuoteStringSimpleParserData<C, S>> {
public:
    using Data = SQuoteStringSimpleParserData<C, S>;  ///< its state between two pieces

    /// Clears `allowEscapes` as well: the owner sets it afterwards.
    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE after the closing "'"; SP_NEED_MORE_DATA when the piece is used
    ///         up.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_UNTERMINATED; `text` is what was read.
    std::uint32_t EndParse(Data* data) override;
};

}  // namespace Kestra::HTML
