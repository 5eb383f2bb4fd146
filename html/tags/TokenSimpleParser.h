#pragma once

#include "../framework/QuoteKind.h"
#include "../framework/SimpleParser.h"
#include "../text/DQuoteStringSimpleParser.h"
#include "../text/SQuoteStringSimpleParser.h"
#include "../text/WhiteSpaceSimpleParser.h"

namespace Kestra::HTML {

/// State of one value between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API TokenSimpleParserData : SimpleParserData<C, S> {
    std::uint32_t state = 0;           ///< 0 white space, 1 first character, 2 unquoted, 3 in "'", 4 in quotation marks
    S prefix;                          ///< white space before the value
    S value;                           ///< without its quotes
    std::uint32_t quote = QUOTE_NONE;  ///< a QuoteKind
    bool iso2022 = false;              ///< a double-quoted value may hold ISO-2022 escape runs
};

/// Reads the value of an attribute, or one item of a declaration: white space, then a quoted string
/// up to its closing quote, inclusive, or a bare word up to white space, ">" or "<", exclusive.
/// Before ">" the value is empty.
template <typename C, typename S>
class KESTRA_HTML_API TokenSimpleParser final : public SimpleParser<C, S, TokenSimpleParserData<C, S>> {
public:
    using Data = TokenSimpleParserData<C, S>;  ///< its state between two pieces

    /// Clears `iso2022` as well: the owner sets it afterwards.
    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE; SP_NEED_MORE_DATA when the piece is used up, or after an escape
    ///         run in a quoted value; a code of the quoted-string recognizers, unchanged.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_UNTERMINATED
    std::uint32_t EndParse(Data* data) override;

    /// Defined inside the library only.
    struct Internals;

private:
    void ParseFirst(SimpleParserContext<C, S>* context, Data* data);

    WhiteSpaceSimpleParser<C, S> whiteSpace;
    WhiteSpaceSimpleParserData<C, S> whiteSpaceData;
    SQuoteStringSimpleParser<C, S> singleQuoted;
    SQuoteStringSimpleParserData<C, S> singleQuotedData;
    DQuoteStringSimpleParser<C, S> doubleQuoted;
    DQuoteStringSimpleParserData<C, S> doubleQuotedData;
};

}  // namespace Kestra::HTML
