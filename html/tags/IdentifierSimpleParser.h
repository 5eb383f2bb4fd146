#pragma once

#include "../framework/SimpleParser.h"

namespace Kestra::HTML {

/// The name gathered so far, and where it stops.
template <typename C, typename S>
struct KESTRA_HTML_API IdentifierSimpleParserData : SimpleParserData<C, S> {
    S text;                          ///< the name so far
    bool attributeNameMode = false;  ///< false: tag name; true: attribute name, to which "<", "[" and "]" belong
};

/// Reads a name, which may be empty. A tag name stops before white space, "=", "[", "]", ">" and
/// "<", an attribute name before white space, "=" and ">"; "/" belongs to both. Never fails.
template <typename C, typename S>
class KESTRA_HTML_API IdentifierSimpleParser final : public SimpleParser<C, S, IdentifierSimpleParserData<C, S>> {
public:
    using Data = IdentifierSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE before the stop character; SP_NEED_MORE_DATA when the piece is
    ///         used up.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_TOKEN_COMPLETE
    std::uint32_t EndParse(Data* data) override;
};

}  // namespace Kestra::HTML
