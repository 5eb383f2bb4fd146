#include "html/tags/TokenSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/MoveText.h"
#include "html/framework/Scan.h"
#include "html/tags/TagGrammar.h"

namespace Kestra::HTML {

namespace {

enum State : std::uint32_t {
    PREFIX = 0,
    FIRST = 1,
    UNQUOTED = 2,
    SINGLE_QUOTED = 3,
    DOUBLE_QUOTED = 4,
};

}  // namespace

template <typename C, typename S>
std::uint32_t TokenSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = PREFIX;
    data->prefix.clear();
    data->value.clear();
    data->quote = QUOTE_NONE;
    data->iso2022 = false;
    whiteSpace.BeginParse(&whiteSpaceData);
    singleQuoted.BeginParse(&singleQuotedData);
    doubleQuoted.BeginParse(&doubleQuotedData);
    return SP_NEED_MORE_DATA;
}

//  state           "'"        '"'        ">"                white space        "<"                other
//  0 white space   as 1       as 1       as 1               keep               as 1               as 1
//  1 first         to 3       to 4       complete, unread   as 2               as 2               as 2
//  2 unquoted      keep       keep       complete, unread   complete, unread   complete, unread   keep
//  3 in "'"        complete   keep       keep               keep               keep               keep
//  4 in '"'        keep       complete   keep               keep               keep               keep
template <typename C, typename S>
std::uint32_t TokenSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        switch (static_cast<State>(data->state)) {
            case PREFIX:
                if (whiteSpace.Parse(context, &whiteSpaceData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                MoveText(&whiteSpaceData.text, &data->prefix);
                data->state = FIRST;
                continue;
            case FIRST:
                if (Scan::Next(*context) == '>')
                    return SP_TOKEN_COMPLETE;
                ParseFirst(context, data);
                continue;
            case UNQUOTED:
                data->value.append(Scan::ConsumeUntil(*context, TagGrammar::BARE_VALUE_STOPS));
                return Scan::AtEnd(*context) ? SP_NEED_MORE_DATA : SP_TOKEN_COMPLETE;
            case SINGLE_QUOTED: {
                const std::uint32_t result = singleQuoted.Parse(context, &singleQuotedData);
                if (result == SP_TOKEN_COMPLETE) {
                    MoveText(&singleQuotedData.text, &data->value);
                    data->quote = QUOTE_SINGLE;
                }
                return result;
            }
            case DOUBLE_QUOTED: {
                const std::uint32_t result = doubleQuoted.Parse(context, &doubleQuotedData);
                if (result == SP_TOKEN_COMPLETE) {
                    MoveText(&doubleQuotedData.text, &data->value);
                    data->quote = QUOTE_DOUBLE;
                }
                return result;
            }
        }
        return SP_MALFORMED;
    }
    return SP_NEED_MORE_DATA;
}

/// State 1 before anything but ">": consumes an opening quote, leaves every other character.
template <typename C, typename S>
void TokenSimpleParser<C, S>::ParseFirst(SimpleParserContext<C, S>* context, Data* data) {
    const C first = Scan::Next(*context);
    if (first == '\'') {
        Scan::Advance(*context);
        singleQuoted.BeginParse(&singleQuotedData);
        data->state = SINGLE_QUOTED;
    } else if (first == '"') {
        Scan::Advance(*context);
        doubleQuoted.BeginParse(&doubleQuotedData);
        doubleQuotedData.allowEscape2022 = data->iso2022;
        data->state = DOUBLE_QUOTED;
    } else {
        data->quote = QUOTE_NONE;
        data->state = UNQUOTED;
    }
}

template <typename C, typename S>
std::uint32_t TokenSimpleParser<C, S>::EndParse(Data*) {
    return SP_UNTERMINATED;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(Token);

}  // namespace Kestra::HTML
