#include "html/text/CPPCommentSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/MoveText.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

namespace {

enum State : std::uint32_t {
    BODY = 0,
    CONSTRUCT = 1,
};

/// The characters consumed of a construct that does not interrupt the comment: they are content of
/// the comment.
struct PlainOpener {
    WideStringView parserName;
    const char* characters;
};

constexpr PlainOpener PLAIN_OPENERS[] = {
    {ParserNames::START_TAG, "<"},
    {ParserNames::END_TAG, "</"},
    {ParserNames::ENTITY_TAG, "<!"},
    {ParserNames::EXTERN_TAG, "<?"},
};

}  // namespace

template <typename C, typename S>
std::uint32_t CPPCommentSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = BODY;
    data->text.clear();
    data->keyword.clear();
    data->nextParserName.clear();
    genericTag.BeginParse(&genericTagData);
    return SP_NEED_MORE_DATA;
}

//  state         line feed          "<"    other   end of input
//  0 body        complete, unread   to 1   keep    unterminated
//  1 construct   the generic tag recognizer reads on: "!--": comment; "![CDATA" before "[": section;
//                "![if" before " ": conditional; before "a": "<", to 0; "/": "</", to 0; "!" before "a": "<!", to 0;
//                "?": "<?", to 0; "!-" before "a": fail; "![a" before "[": fail; end of input: unterminated
template <typename C, typename S>
std::uint32_t CPPCommentSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        std::uint32_t result = SP_MALFORMED;
        switch (static_cast<State>(data->state)) {
            case BODY:
                result = ParseBody(context, data);
                break;
            case CONSTRUCT:
                result = ParseConstruct(context, data);
                break;
        }
        if (result != SP_NEED_MORE_DATA)
            return result;
    }
    return SP_NEED_MORE_DATA;
}

/// State 0.
template <typename C, typename S>
std::uint32_t CPPCommentSimpleParser<C, S>::ParseBody(SimpleParserContext<C, S>* context, Data* data) {
    data->text.append(Scan::ConsumeUntil<Scan::LINE_FEED | Scan::LESS_THAN>(*context));
    if (Scan::AtEnd(*context))
        return SP_NEED_MORE_DATA;
    if (Scan::Next(*context) == '\n')
        return SP_TOKEN_COMPLETE;
    Scan::Advance(*context);
    data->state = CONSTRUCT;
    genericTag.BeginParse(&genericTagData);
    return SP_NEED_MORE_DATA;
}

/// State 1.
template <typename C, typename S>
std::uint32_t CPPCommentSimpleParser<C, S>::ParseConstruct(SimpleParserContext<C, S>* context, Data* data) {
    const std::uint32_t result = genericTag.Parse(context, &genericTagData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    const WideStringView name = genericTagData.nextParser;
    for (const PlainOpener& opener : PLAIN_OPENERS) {
        if (opener.parserName != name)
            continue;
        for (const char* next = opener.characters; *next != 0; ++next)
            data->text += static_cast<C>(*next);
        data->state = BODY;
        return SP_NEED_MORE_DATA;
    }
    if (name != ParserNames::COMMENT_TAG && name != ParserNames::CDATA_TAG && name != ParserNames::CONDITIONAL_TAG)
        return SP_MALFORMED;
    data->nextParserName = name;
    MoveText(&genericTagData.keyword, &data->keyword);
    return SP_TOKEN_COMPLETE;
}

template <typename C, typename S>
std::uint32_t CPPCommentSimpleParser<C, S>::EndParse(Data*) {
    return SP_UNTERMINATED;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(CPPComment);

}  // namespace Kestra::HTML
