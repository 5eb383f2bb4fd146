#pragma once

#include "../framework/SimpleParser.h"
#include "../text/DQuoteStringSimpleParser.h"
#include "../text/SQuoteStringSimpleParser.h"

namespace Kestra::HTML {

/// The values of `ExternTagFreeStyleSimpleParserData::state`.
enum ExternTagFreeStyleState : std::uint32_t {
    FREE_STYLE_TEXT = 0,                 ///< in the text, outside of everything below
    FREE_STYLE_AFTER_SLASH = 1,          ///< after a "/", which may open a comment
    FREE_STYLE_BLOCK_COMMENT = 2,        ///< in a comment that "*/" ends
    FREE_STYLE_AFTER_ASTERISK = 3,       ///< in a block comment
    FREE_STYLE_LINE_COMMENT = 4,         ///< in a comment that the line ends
    FREE_STYLE_SINGLE_QUOTED = 5,        ///< in a string in "'"
    FREE_STYLE_DOUBLE_QUOTED = 6,        ///< in a string in quotation marks
    FREE_STYLE_AFTER_QUESTION_MARK = 7,  ///< after a "?", which may belong to "?>"
};

/// State of the raw text of one processing instruction between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API ExternTagFreeStyleSimpleParserData : SimpleParserData<C, S> {
    std::uint32_t state = 0;       ///< an ExternTagFreeStyleState
    bool questionPending = false;  ///< a "?" has been read that is not yet in `text`
    S text;                        ///< the raw text
    /// Double-quoted strings may contain ISO-2022 escape runs; set by the owner after
    /// `BeginParse`.
    bool iso2022 = false;
};

/// Reads the raw text of a processing instruction, from after its target to its ">", inclusive.
///
/// "?>" and a bare ">" end it, but not inside quotes, where a backslash escapes, and not inside
/// script comments.
template <typename C, typename S>
class KESTRA_HTML_API ExternTagFreeStyleSimpleParser final
    : public SimpleParser<C, S, ExternTagFreeStyleSimpleParserData<C, S>> {
public:
    using Data = ExternTagFreeStyleSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE after ">"; SP_NEED_MORE_DATA when the piece is used up; a code of
    ///         a quoted string, unchanged.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_UNTERMINATED
    std::uint32_t EndParse(Data* data) override;

    /// Defined inside the library only.
    struct Internals;

private:
    void RestartSQuoteString();
    void RestartDQuoteString(const Data& data);
    std::uint32_t ParseFreeText(SimpleParserContext<C, S>* context, Data* data);
    std::uint32_t ParseAfterSlash(SimpleParserContext<C, S>* context, Data* data);
    std::uint32_t ParseBlockComment(SimpleParserContext<C, S>* context, Data* data);
    std::uint32_t ParseAfterAsterisk(SimpleParserContext<C, S>* context, Data* data);
    std::uint32_t ParseLineComment(SimpleParserContext<C, S>* context, Data* data);
    std::uint32_t ParseQuestionMark(SimpleParserContext<C, S>* context, Data* data);
    template <typename Parser, typename ParserData>
    std::uint32_t ParseString(SimpleParserContext<C, S>* context, Data* data, Parser* parser, ParserData* parserData,
                              C quote);

    SQuoteStringSimpleParser<C, S> sQuoteString;
    SQuoteStringSimpleParserData<C, S> sQuoteStringData;
    DQuoteStringSimpleParser<C, S> dQuoteString;
    DQuoteStringSimpleParserData<C, S> dQuoteStringData;
};

}  // namespace Kestra::HTML
