#pragma once

#include <string>

#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"

namespace Kestra::HTML {

/// The junk gathered so far: bytes in both flavours. The wide flavour stores the two bytes of each
/// character in memory order.
template <typename C, typename S>
struct KESTRA_HTML_API JunkSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::JUNK;  ///< by which others hand over to it

    std::string text;  ///< bytes, two for each character of the wide flavour
};

/// Reads what fits no construct, up to the next "<". Never fails.
template <typename C, typename S>
class KESTRA_HTML_API JunkSimpleParser final : public SimpleParser<C, S, JunkSimpleParserData<C, S>> {
public:
    using Data = JunkSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE before a "<"; SP_NEED_MORE_DATA when the piece is used up.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_TOKEN_COMPLETE
    std::uint32_t EndParse(Data* data) override;
};

}  // namespace Kestra::HTML
