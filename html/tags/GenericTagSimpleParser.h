#pragma once

#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"
#include "IdentifierSimpleParser.h"

namespace Kestra::HTML {

/// State of one decision between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API GenericTagSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::GENERIC_TAG;  ///< by which others hand over to it

    std::uint32_t state = 0;     ///< 0 first character after "<", 1 after "<!", 2 after "<!-", 3 keyword after "<!["
    std::uint32_t reserved = 0;  ///< always 0
    S text;                      ///< always empty
    S keyword;                   ///< "CDATA", "if" or "endif" after "<![", as written
    WideString nextParser;       ///< after SP_TOKEN_COMPLETE: who must run next
};

/// Reads the characters after a "<" that decide which recognizer must run, and no more: "/", "?",
/// "!", "!--", "![" with its keyword, or nothing for a start tag. After "![" and the keyword the
/// next character, normally "[", is left.
template <typename C, typename S>
class KESTRA_HTML_API GenericTagSimpleParser final : public SimpleParser<C, S, GenericTagSimpleParserData<C, S>> {
public:
    using Data = GenericTagSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE with `nextParser` set; SP_NEED_MORE_DATA when the piece is used
    ///         up; SP_MALFORMED for "<!-" without a second "-", and for "<![" with any other
    ///         keyword.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_UNTERMINATED
    std::uint32_t EndParse(Data* data) override;

    /// Defined inside the library only.
    struct Internals;

private:
    bool ParseFirst(SimpleParserContext<C, S>* context, Data* data);
    bool ParseAfterExclamationMark(SimpleParserContext<C, S>* context, Data* data);
    std::uint32_t ChooseByKeyword(Data* data);

    IdentifierSimpleParser<C, S> identifier;
    IdentifierSimpleParserData<C, S> identifierData;
};

}  // namespace Kestra::HTML
