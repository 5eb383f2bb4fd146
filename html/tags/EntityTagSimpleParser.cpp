#include "html/tags/EntityTagSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/MoveText.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

namespace {

enum State : std::uint32_t {
    PREFIX = 0,
    KEYWORD = 1,
    ITEMS = 2,
};

}  // namespace

template <typename C, typename S>
std::uint32_t EntityTagSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = PREFIX;
    data->prefix.clear();
    data->name.clear();
    data->tokens.clear();
    data->suffix.clear();
    data->iso2022 = false;
    identifier.BeginParse(&identifierData);
    whiteSpace.BeginParse(&whiteSpaceData);
    token.BeginParse(&tokenData);
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
void EntityTagSimpleParser<C, S>::RestartToken(const Data& data) {
    token.BeginParse(&tokenData);
    tokenData.iso2022 = data.iso2022;
}

//  state       white space   ">"    "<"    "=", "[", "]"   other
//  0 prefix    keep          as 1   as 1   as 1            as 1
//  1 keyword   as 2          as 2   as 2   as 2            keep
//  2 items     the value recognizer reads on: "a ": hold; "'>'": hold; ">": complete; "a>": complete; before "<": fail;
//              "a" before "<": fail
template <typename C, typename S>
std::uint32_t EntityTagSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        switch (static_cast<State>(data->state)) {
            case PREFIX:
                if (whiteSpace.Parse(context, &whiteSpaceData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                MoveText(&whiteSpaceData.text, &data->prefix);
                data->state = KEYWORD;
                identifier.BeginParse(&identifierData);
                continue;
            case KEYWORD:
                if (identifier.Parse(context, &identifierData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                MoveText(&identifierData.text, &data->name);
                data->state = ITEMS;
                RestartToken(*data);
                continue;
            case ITEMS: {
                const std::uint32_t result = ParseItem(context, data);
                if (result != SP_NEED_MORE_DATA)
                    return result;
                continue;
            }
        }
        return SP_MALFORMED;
    }
    return SP_NEED_MORE_DATA;
}

/// State 2, one item. An empty bare word ends the list: it is before a ">", or before a "<", which
/// must not come here.
template <typename C, typename S>
std::uint32_t EntityTagSimpleParser<C, S>::ParseItem(SimpleParserContext<C, S>* context, Data* data) {
    const std::uint32_t result = token.Parse(context, &tokenData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    if (!tokenData.value.empty() || tokenData.quote != QUOTE_NONE) {
        EntityToken<C, S>& item = data->tokens.AppendRecycled();
        MoveText(&tokenData.prefix, &item.prefix);
        MoveText(&tokenData.value, &item.value);
        item.quote = tokenData.quote;
        RestartToken(*data);
        return data->tokens.size() > maxParts ? std::uint32_t{PARSER_LIMIT_EXCEEDED} : std::uint32_t{SP_NEED_MORE_DATA};
    }
    if (Scan::Next(*context) != '>')
        return SP_MALFORMED;
    MoveText(&tokenData.prefix, &data->suffix);
    Scan::Advance(*context);
    return SP_TOKEN_COMPLETE;
}

template <typename C, typename S>
std::uint32_t EntityTagSimpleParser<C, S>::EndParse(Data*) {
    return SP_UNTERMINATED;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(EntityTag);

}  // namespace Kestra::HTML
