#pragma once

#include "../../platform/Vector.h"
#include "../framework/Attribute.h"
#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"
#include "../text/WhiteSpaceSimpleParser.h"
#include "AttributeSimpleParser.h"
#include "IdentifierSimpleParser.h"

namespace Kestra::HTML {

/// The values of `StartTagSimpleParserData::state`.
enum StartTagState : std::uint32_t {
    START_TAG_PREFIX = 0,             ///< in the white space before the name
    START_TAG_NAME = 1,               ///< in the name
    START_TAG_ATTRIBUTES = 2,         ///< in an attribute
    START_TAG_END_OF_ATTRIBUTES = 3,  ///< where a tag without a closing "/" stays when it is complete
    START_TAG_AFTER_SLASH = 4,        ///< where a tag stays that has a "/" after its attributes
};

/// State of one start tag between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API StartTagSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::START_TAG;  ///< by which others hand over to it

    std::uint32_t state = 0;             ///< a StartTagState
    S prefix;                            ///< white space between "<" and the name
    S name;                              ///< as written
    Vector<Attribute<C, S>> attributes;  ///< in document order
    S suffix;                            ///< white space after the last attribute, before "/" or ">"
    WideString wideName;                 ///< reserved; always empty
    bool selfClosing = false;            ///< the tag ends with "/>"
    bool closed = true;                  ///< false when a "<" ended the tag
    bool iso2022 = false;  ///< double-quoted values may hold ISO-2022 escape runs; `BeginParse` leaves it alone
};

/// Reads a start tag or a short tag, from after its "<" to its ">", inclusive.
///
/// A "/" belongs to a name: "br/>" is the tag "br/". It makes a short tag only at the end of the
/// attribute list: "br />", "a href=x/>".
template <typename C, typename S>
class KESTRA_HTML_API StartTagSimpleParser final : public SimpleParser<C, S, StartTagSimpleParserData<C, S>> {
public:
    using Data = StartTagSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE after ">", or after a "<" after the attributes, with the
    ///         attributes normalized; SP_NEED_MORE_DATA when the piece is used up;
    ///         SP_NOT_THIS_TOKEN when the name is "<"; SP_MALFORMED for a lone "/" as an unquoted
    ///         value before ">", a "/" after white space and before more of it, and anything but
    ///         ">" after "/"; a code of a member, unchanged; 711 for more attributes than the
    ///         driver allows.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_UNTERMINATED
    std::uint32_t EndParse(Data* data) override;

    /// Defined inside the library only.
    struct Internals;

private:
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
