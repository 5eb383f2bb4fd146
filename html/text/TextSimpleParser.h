#pragma once

#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"
#include "Escape2022SimpleParser.h"

namespace Kestra::HTML {

/// State of one text run between two pieces of input. The six flags are set by the driver before
/// every `Parse`.
template <typename C, typename S>
struct KESTRA_HTML_API TextSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::TEXT;  ///< by which others hand over to it

    std::uint32_t state = 0;       ///< 0 text, 1 a "/" is consumed and not yet judged, 2 inside an ISO-2022 escape run
    bool allowCComment = false;    ///< "/*" starts a script block comment
    bool allowCPPComment = false;  ///< "//" starts a script line comment
    bool allowSQuoteString = false;  ///< "'" starts a script string
    bool allowDQuoteString = false;  ///< a quotation mark starts a script string
    /// A "/" that opens no comment starts a regular expression. It stops text only where comments
    /// are allowed too.
    bool allowJSRegEx = false;
    bool allowEscape2022 = false;  ///< ESC starts an ISO-2022 run; 8-bit flavour only
    S text;                        ///< the text so far, without the opener of what follows
    WideString nextParserName;     ///< after SP_TOKEN_COMPLETE: who must run next
};

/// Reads character data and names the recognizer that must run next, from the first character of
/// the text to the opener of what follows, inclusive ("<", a quote, "/*", "//", or the "/" of a
/// regular expression). Never rejects input.
template <typename C, typename S>
class KESTRA_HTML_API TextSimpleParser final : public SimpleParser<C, S, TextSimpleParserData<C, S>> {
public:
    using Data = TextSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE after an opener, with `nextParserName` set; SP_NEED_MORE_DATA when
    ///         the piece is used up; a code of the escape recognizer, unchanged.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// Completes a pending "/" or escape run.
    /// @return SP_TOKEN_COMPLETE, or a code of the escape recognizer.
    std::uint32_t EndParse(Data* data) override;

    /// Defined inside the library only.
    struct Internals;

private:
    /// State 0 up to "<" or a quote, inclusive, without naming the recognizer that runs next.
    /// Returns that opener, or 0 when something else stops the text: then call `Parse`.
    C ReadUntilOpener(SimpleParserContext<C, S>* context, Data* data);
    bool ParseText(SimpleParserContext<C, S>* context, Data* data);
    bool ParseAfterSlash(SimpleParserContext<C, S>* context, Data* data);

    Escape2022SimpleParser<C, S> escape;
    Escape2022SimpleParserData<C, S> escapeData;
};

}  // namespace Kestra::HTML
