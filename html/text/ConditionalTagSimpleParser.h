#pragma once

#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"

namespace Kestra::HTML {

/// State of one conditional section marker between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API ConditionalTagSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::CONDITIONAL_TAG;  ///< by which others hand over to it

    std::uint32_t state = 0;    ///< 0 before the "]", 1 after it
    S keyword;                  ///< "if" or "endif" as written; the owner sets it after `BeginParse`
    S condition;                ///< everything after the keyword up to the first "]"
    S tail;                     ///< between that "]" and the closing ">", as far as it lies in the piece of the ">"
    bool bracketClosed = true;  ///< false only when the input ended before the "]"
    bool tagClosed = true;      ///< false only when the input ended before the ">"
};

/// Reads a conditional section marker such as "<![if !IE]>" or "<![endif]-->", from after its
/// keyword to its ">", inclusive. Never fails.
template <typename C, typename S>
class KESTRA_HTML_API ConditionalTagSimpleParser final
    : public SimpleParser<C, S, ConditionalTagSimpleParserData<C, S>> {
public:
    using Data = ConditionalTagSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE after ">"; SP_NEED_MORE_DATA when the piece is used up.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// Leaves the marker open.
    /// @return SP_TOKEN_COMPLETE
    std::uint32_t EndParse(Data* data) override;

    /// Defined inside the library only.
    struct Internals;

private:
    // The context ends within a piece: what is scanned up to there is in the piece of the ">".
    bool pieceContinues = false;
};

}  // namespace Kestra::HTML
