#pragma once

#include "../framework/ParserNames.h"
#include "../framework/SimpleParser.h"
#include "../tags/GenericTagSimpleParser.h"

namespace Kestra::HTML {

/// State of one script line comment between two pieces of input.
template <typename C, typename S>
struct KESTRA_HTML_API CPPCommentSimpleParserData : SimpleParserData<C, S> {
    static constexpr WideStringView PARSER_NAME = ParserNames::CPP_COMMENT;  ///< by which others hand over to it

    std::uint32_t state = 0;    ///< 0 in the body, 1 after a "<" whose construct is not yet known
    S text;                     ///< the body, from after "//" on, without the line feed
    S keyword;                  ///< on a hand-over to a CDATA or conditional section: the word after "<!["
    WideString nextParserName;  ///< after SP_TOKEN_COMPLETE: who must run next; empty after a line feed
};

/// Reads a script line comment, from after "//" to the line feed, exclusive.
///
/// A markup comment, a CDATA or a conditional section that opens inside it ends it and takes over;
/// every other "<" is content, that of "</script>" included.
template <typename C, typename S>
class KESTRA_HTML_API CPPCommentSimpleParser final : public SimpleParser<C, S, CPPCommentSimpleParserData<C, S>> {
public:
    using Data = CPPCommentSimpleParserData<C, S>;  ///< its state between two pieces

    std::uint32_t BeginParse(Data* data) override;

    /// @return SP_TOKEN_COMPLETE before a line feed, or after the opener of a section that takes
    ///         over; SP_NEED_MORE_DATA when the piece is used up; SP_MALFORMED for "<!-" without a
    ///         second "-", and for "<![" with an unknown keyword: `state` is then 1.
    std::uint32_t Parse(SimpleParserContext<C, S>* context, Data* data) override;

    /// @return SP_UNTERMINATED; the record stays as it is.
    std::uint32_t EndParse(Data* data) override;

    /// Defined inside the library only.
    struct Internals;

private:
    std::uint32_t ParseBody(SimpleParserContext<C, S>* context, Data* data);
    std::uint32_t ParseConstruct(SimpleParserContext<C, S>* context, Data* data);

    GenericTagSimpleParser<C, S> genericTag;
    GenericTagSimpleParserData<C, S> genericTagData;
};

}  // namespace Kestra::HTML
