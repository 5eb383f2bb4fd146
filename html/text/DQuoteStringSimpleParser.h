#pragma once

#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"
#include "Escape2022SimpleParser.h"

namespace Kestra::HTML {

/// State of one double-quoted string between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API DQuoteStringSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::D_QUOTE_STRING;  ///< by which others hand over to it

    std::uint32_t state = 0;  ///< 0 in the string, 1 inside an ISO-2022 escape run
    S text;                   ///< the content without its quotes, escapes as written
    C lastChar = '*';  ///< the previous content character, "*" after an escaped pair; used only with `allowEscapes`
    bool allowEscapes = false;     ///< a backslash takes the next character's meaning away
    bool allowEscape2022 = false;  ///< ESC starts an ISO-2022 run
};

/// Reads a double-quoted string, from after its opening quotation mark to the closing one,
/// inclusive.
template <typename C, typename S>
class KESTRA_HTML_API DQuoteStringSimpleParser final : public SimpleParser<C, S, DQuoteStringSimpleParserData<C, S>> {
public:
    using Data = DQuoteStringSimpleParserData<C, S>;  ///< its state between two pieces

    /// Clears both flags as well: the owner sets them afterwards.
    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE after the closing quotation mark; SP_NEED_MORE_DATA when the piece
    ///         is used up, and also after an escape run with characters left in the piece: the
    ///         owner calls again; a code of the escape recognizer, unchanged.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_UNTERMINATED; `text` is what was read.
    std::uint32_t EndParse(Data* data) override;

    /// Defined inside the library only.
    struct Internals;

private:
    std::uint32_t ParseEscape(SimpleParserContext<C, S>* context, Data* data);

    Escape2022SimpleParser<C, S> escape;
    Escape2022SimpleParserData<C, S> escapeData;
};

}  // namespace Kestra::HTML
