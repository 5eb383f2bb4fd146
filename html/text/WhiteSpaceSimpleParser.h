#pragma once

#include "../framework/SimpleParser.h"

namespace Kestra::HTML {

/// The white space gathered so far.
template <typename C, typename S>
struct KESTRA_HTML_API WhiteSpaceSimpleParserData : SimpleParserData<C, S> {
    S text;  ///< as written
};

/// Reads a run of white space, which may be empty. Never fails.
template <typename C, typename S>
class KESTRA_HTML_API WhiteSpaceSimpleParser final : public SimpleParser<C, S, WhiteSpaceSimpleParserData<C, S>> {
public:
    using Data = WhiteSpaceSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE before the first other character; SP_NEED_MORE_DATA when the piece
    ///         is used up.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_TOKEN_COMPLETE
    std::uint32_t EndParse(Data* data) override;
};

}  // namespace Kestra::HTML
