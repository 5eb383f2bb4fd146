#pragma once

#include "../../platform/Vector.h"
#include "../framework/Attribute.h"
#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"
#include "../text/WhiteSpaceSimpleParser.h"
#include "AttributeSimpleParser.h"
#include "IdentifierSimpleParser.h"

namespace Kestra::HTML {

/// The values of `EndTagSimpleParserData::state`.
enum EndTagState : std::uint32_t {
    END_TAG_PREFIX = 0,             ///< in the white space before the name
    END_TAG_NAME = 1,               ///< in the name
    END_TAG_AFTER_NAME = 2,         ///< in the white space after the name
    END_TAG_ATTRIBUTES = 3,         ///< in an attribute
    END_TAG_END_OF_ATTRIBUTES = 4,  ///< where a tag with attributes and without a closing "/" stays when it is complete
    END_TAG_DECIDE = 5,             ///< what comes next; where any other tag stays
};

/// State of one end tag between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API EndTagSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::END_TAG;  ///< by which others hand over to it

    std::uint32_t state = 0;             ///< an EndTagState
    S prefix;                            ///< white space between "</" and the name
    S name;                              ///< as written
    S afterName;                         ///< white space after the name
    S suffix;                            ///< white space after the last attribute
    Vector<Attribute<C, S>> attributes;  ///< in document order
    bool slashBeforeClose = false;       ///< there was a "/" after the attributes
    bool closed = true;                  ///< false when a "<" ended the tag
    bool iso2022 = false;                ///< double-quoted values may contain ISO-2022 escape runs
};

/// Reads an end tag, from after its "</" to its ">", inclusive, or to a "<" in its place,
/// exclusive. Attributes and a stray "/" are kept.
template <typename C, typename S>
class KESTRA_HTML_API EndTagSimpleParser final : public SimpleParser<C, S, EndTagSimpleParserData<C, S>> {
public:
    using Data = EndTagSimpleParserData<C, S>;  ///< its state between two pieces

    /// Clears `iso2022` as well, unlike the start tag: the owner sets it afterwards.
    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE with the attributes normalized; SP_NEED_MORE_DATA when the piece
    ///         is used up, and also after a closing "/" that follows the attributes; SP_MALFORMED
    ///         for a lone "/" as an unquoted value before ">", a "/" after white space and before
    ///         more of it, and anything but "/" or ">" after the attributes; a code of a member,
    ///         unchanged; 711 for more attributes than the driver allows.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_UNTERMINATED
    std::uint32_t EndParse(Data* data) override;

    /// Defined inside the library only.
    struct Internals;

private:
    bool ParseNext(SimpleParserContext<C, S>* context, Data* data);
    std::uint32_t ParseAttributes(SimpleParserContext<C, S>* context, Data* data);
    std::uint32_t ParseEndOfAttributes(SimpleParserContext<C, S>* context, Data* data);

    IdentifierSimpleParser<C, S> identifier;
    IdentifierSimpleParserData<C, S> identifierData;
    WhiteSpaceSimpleParser<C, S> whiteSpace;
    WhiteSpaceSimpleParserData<C, S> whiteSpaceData;
    AttributeSimpleParser<C, S> attribute;
    AttributeSimpleParserData<C, S> attributeData;
    std::size_t maxParts = SIZE_MAX;  // attributes that are not too many
};

}  // namespace Kestra::HTML
