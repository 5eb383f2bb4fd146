#pragma once

#include "../framework/SimpleParser.h"

namespace Kestra::HTML {

/// State of one ISO-2022 escape run between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API Escape2022SimpleParserData : SimpleParserData<C, S> {
    std::uint32_t state = 0;  ///< 0 designation after the opening ESC, 1 encoded run, 2 sequence after a later ESC
    S text;                   ///< everything collected, ESC characters included
    S pending;                ///< the escape sequence read so far, without its ESC
};

/// Reads an ISO-2022 run, from after its opening ESC to the end of the sequence that returns to a
/// single-byte set. Fits any input.
///
/// Inside the run "<", quotes and "/" are data. It is owned by the recognizers of text and of
/// double-quoted strings, which append what it collected to their own text. Source of the
/// sequences: ISO 2022 designations as registered for ISO-2022-JP, -KR and -CN (RFC 1468, 1554,
/// 1557 and 1922), and those of JIS X 0213 and JIS X 0201.
template <typename C, typename S>
class KESTRA_HTML_API Escape2022SimpleParser final : public SimpleParser<C, S, Escape2022SimpleParserData<C, S>> {
public:
    using Data = Escape2022SimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE after a returning sequence, or after an escape that designates
    ///         nothing; SP_NEED_MORE_DATA when the piece is used up; SP_MALFORMED for a state that
    ///         does not exist.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// Keeps a sequence that the input cut off, up to its first NUL.
    /// @return SP_TOKEN_COMPLETE
    std::uint32_t EndParse(Data* data) override;
};

}  // namespace Kestra::HTML
