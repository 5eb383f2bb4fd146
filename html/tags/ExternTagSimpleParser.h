#pragma once

#include "../../platform/Vector.h"
#include "../framework/Attribute.h"
#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"
#include "../text/WhiteSpaceSimpleParser.h"
#include "AttributeSimpleParser.h"
#include "ExternTagFreeStyleSimpleParser.h"
#include "IdentifierSimpleParser.h"

namespace Kestra::HTML {

/// State of one processing instruction between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API ExternTagSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::EXTERN_TAG;  ///< by which others hand over to it

    std::uint32_t state = 0;  ///< 0 white space, 1 target, 2 attributes, 3 expecting "?", 4 free style, 5 expecting ">"
    bool freeStyle = false;   ///< read as raw text: `text` has all of it
    bool slashBeforeClose = false;       ///< an XML declaration ended with "/>"
    S prefix;                            ///< white space between "<?" and the target
    S name;                              ///< the target as written
    S text;                              ///< a free-style instruction from "<?" to ">", inclusive
    Vector<Attribute<C, S>> attributes;  ///< of an XML declaration, in document order, not normalized
    S suffix;                            ///< white space after the last attribute
    /// Double-quoted strings may contain ISO-2022 escape runs; set by the owner after
    /// `BeginParse`.
    bool iso2022 = false;
};

/// Reads a processing instruction, from after its "<?" to its ">", inclusive.
///
/// The targets "xml", "xml:..." and "xml-..." make it an XML declaration with attributes; any other
/// one is raw text, in which quotes and script comments are recognized.
template <typename C, typename S>
class KESTRA_HTML_API ExternTagSimpleParser final : public SimpleParser<C, S, ExternTagSimpleParserData<C, S>> {
public:
    using Data = ExternTagSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE after ">"; SP_NEED_MORE_DATA when the piece is used up. In an XML
    ///         declaration SP_MALFORMED for anything but "?" after the attributes, anything but ">"
    ///         after the closing "?" or "/", an unquoted value that is only "?" before ">", and
    ///         white space after a name without a value that ends in "?". A code of a member,
    ///         unchanged. 711 for more attributes than the driver allows.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_UNTERMINATED
    std::uint32_t EndParse(Data* data) override;

    /// Defined inside the library only.
    struct Internals;

private:
    void ChooseStyle(Data* data);
    std::uint32_t ParseAttributes(SimpleParserContext<C, S>* context, Data* data);
    bool RemoveClosingSlash(Data* data);

    IdentifierSimpleParser<C, S> identifier;
    IdentifierSimpleParserData<C, S> identifierData;
    WhiteSpaceSimpleParser<C, S> whiteSpace;
    WhiteSpaceSimpleParserData<C, S> whiteSpaceData;
    AttributeSimpleParser<C, S> attribute;
    AttributeSimpleParserData<C, S> attributeData;
    ExternTagFreeStyleSimpleParser<C, S> freeStyle;
    ExternTagFreeStyleSimpleParserData<C, S> freeStyleData;
    std::size_t maxParts = SIZE_MAX;  // attributes that are not too many
};

}  // namespace Kestra::HTML
