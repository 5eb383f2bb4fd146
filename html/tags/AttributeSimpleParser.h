#pragma once

#include "../framework/SimpleParser.h"
#include "../text/WhiteSpaceSimpleParser.h"
#include "IdentifierSimpleParser.h"
#include "TokenSimpleParser.h"

namespace Kestra::HTML {

/// The values of `AttributeSimpleParserData::state`.
enum AttributeState : std::uint32_t {
    ATTRIBUTE_PREFIX = 0,         ///< in the white space before the name
    ATTRIBUTE_NAME = 1,           ///< in the name
    ATTRIBUTE_AFTER_NAME = 2,     ///< in the white space after the name
    ATTRIBUTE_EXPECT_EQUALS = 3,  ///< at "=", or at the end of an attribute without a value
    ATTRIBUTE_VALUE = 4,          ///< after "="
};

/// State of one attribute between two pieces of input; its strings are those of `Attribute`.
template <typename C, typename S>
struct KESTRA_HTML_API AttributeSimpleParserData : SimpleParserData<C, S> {
    std::uint32_t state = 0;           ///< an AttributeState
    std::uint32_t hasValue = 0;        ///< 1 when "=" and a value were read
    S prefix;                          ///< white space before the name
    S name;                            ///< as written
    S beforeEquals;                    ///< white space between the name and "="
    S afterEquals;                     ///< white space between "=" and the value
    S value;                           ///< without its quotes
    std::uint32_t quote = QUOTE_NONE;  ///< a QuoteKind
    bool iso2022 = false;              ///< handed on to the value
};

/// Reads one attribute: white space, a name that may be empty, and "=" with a value if there is
/// one. Without "=" it ends before the first character that is neither name nor white space, and
/// that white space is in `beforeEquals`.
///
/// An owner may, after `BeginParse`, preset `prefix` and set `state` to ATTRIBUTE_NAME to go on at
/// the name.
template <typename C, typename S>
class KESTRA_HTML_API AttributeSimpleParser final : public SimpleParser<C, S, AttributeSimpleParserData<C, S>> {
public:
    using Data = AttributeSimpleParserData<C, S>;  ///< its state between two pieces

    /// Clears `iso2022` as well: the owner sets it afterwards.
    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE; SP_NEED_MORE_DATA when the piece is used up, or after an escape
    ///         run in a quoted value; a code of the value recognizer, unchanged.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_TOKEN_COMPLETE
    std::uint32_t EndParse(Data* data) override;

    /// Defined inside the library only.
    struct Internals;

private:
    IdentifierSimpleParser<C, S> identifier;
    IdentifierSimpleParserData<C, S> identifierData;
    WhiteSpaceSimpleParser<C, S> whiteSpace;
    WhiteSpaceSimpleParserData<C, S> whiteSpaceData;
    TokenSimpleParser<C, S> token;
    TokenSimpleParserData<C, S> tokenData;
};

}  // namespace Kestra::HTML
