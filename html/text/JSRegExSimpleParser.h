#pragma once

#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"

namespace Kestra::HTML {

/// State of one script regular expression between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API JSRegExSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::JS_REG_EX;  ///< by which others hand over to it

    S text;            ///< the expression from its opening "/" on
    C lastChar = '*';  ///< the previous content character, "*" after an escaped pair; used only with `allowEscapes`
    bool allowEscapes = false;  ///< a backslash takes the meaning of a following "/" away
};

/// Reads a script regular expression, from after its opening "/" to the character that ends it,
/// exclusive: an unescaped "/", or a "<", line feed or carriage return, escaped or not. The closing
/// "/" is thus read as what follows (kept). Classes in brackets and flags are not recognized.
template <typename C, typename S>
class KESTRA_HTML_API JSRegExSimpleParser final : public SimpleParser<C, S, JSRegExSimpleParserData<C, S>> {
public:
    using Data = JSRegExSimpleParserData<C, S>;  ///< its state between two pieces

    /// Puts the "/" into `text` and clears `allowEscapes`: the owner sets it afterwards.
    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE before the character that ends it; SP_NEED_MORE_DATA when the
    ///         piece is used up.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_TOKEN_COMPLETE
    std::uint32_t EndParse(Data* data) override;
};

}  // namespace Kestra::HTML
