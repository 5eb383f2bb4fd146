#pragma once

#include "../../platform/Vector.h"
#include "../framework/EntityToken.h"
#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"
#include "../text/WhiteSpaceSimpleParser.h"
#include "IdentifierSimpleParser.h"
#include "TokenSimpleParser.h"

namespace Kestra::HTML {

/// State of one declaration between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API EntityTagSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::ENTITY_TAG;  ///< by which others hand over to it

    std::uint32_t state = 0;           ///< 0 white space, 1 keyword, 2 items
    S prefix;                          ///< white space between "<!" and the keyword
    S name;                            ///< the keyword as written, for example "DOCTYPE"
    Vector<EntityToken<C, S>> tokens;  ///< words and quoted strings in document order
    S suffix;                          ///< white space before the closing ">"
    /// Double-quoted strings may contain ISO-2022 escape runs; set by the owner after
    /// `BeginParse`.
    bool iso2022 = false;
};

/// Reads a declaration such as "<!DOCTYPE html>", from after its "<!" to its ">", inclusive.
///
/// "=" and "/" belong to bare words, and so do quotes after the first character. An empty quoted
/// string is an item.
template <typename C, typename S>
class KESTRA_HTML_API EntityTagSimpleParser final : public SimpleParser<C, S, EntityTagSimpleParserData<C, S>> {
public:
    using Data = EntityTagSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE after ">"; SP_NEED_MORE_DATA when the piece is used up;
    ///         SP_MALFORMED for a "<" where an item or the ">" may be; a code of a quoted
    ///         string, unchanged; 711 for more items than the driver allows.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_UNTERMINATED
    std::uint32_t EndParse(Data* data) override;

    /// Defined inside the library only.
    struct Internals;

private:
    void RestartToken(const Data& data);
    std::uint32_t ParseItem(SimpleParserContext<C, S>* context, Data* data);

    IdentifierSimpleParser<C, S> identifier;
    IdentifierSimpleParserData<C, S> identifierData;
    WhiteSpaceSimpleParser<C, S> whiteSpace;
    WhiteSpaceSimpleParserData<C, S> whiteSpaceData;
    TokenSimpleParser<C, S> token;
    TokenSimpleParserData<C, S> tokenData;
    std::size_t maxParts = SIZE_MAX;  // items that are not too many
};

}  // namespace Kestra::HTML
