#include "html/tags/EndTagSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/MoveText.h"
#include "html/framework/Scan.h"
#include "html/output/AttributesNormalizer.h"
#include "html/tags/AttributeList.h"

namespace Kestra::HTML {

template <typename C, typename S>
std::uint32_t EndTagSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = END_TAG_PREFIX;
    data->prefix.clear();
    data->name.clear();
    data->afterName.clear();
    data->suffix.clear();
    data->attributes.clear();
    data->slashBeforeClose = false;
    data->closed = true;
    data->iso2022 = false;
    identifier.BeginParse(&identifierData);
    whiteSpace.BeginParse(&whiteSpaceData);
    attribute.BeginParse(&attributeData);
    return SP_NEED_MORE_DATA;
}

//  state                 white space   "/"    ">"        "<"                      "=", "[", "]"   other
//  0 prefix              keep          as 1   as 1       as 1                     as 1            as 1
//  1 name                as 2          keep   as 2       as 2                     as 2            keep
//  2 after the name      keep          as 5   as 5       as 5                     as 5            as 5
//  5 what comes next     as 3          as 3   complete   complete, unread, open   as 3            as 3
//  3 attributes          the attribute recognizer reads on: "a ": hold; "a='>' ": hold; " " before ">": to 4;
//                        "a/" before ">": to 5; "/" before ">": to 5; "a=b/" before ">": to 5;
//                        "a=/" before ">": to 5, fail; "/ " before "a": fail
//  4 end of attributes   fail          to 5   complete   fail                     fail            fail
//
// The "<" that ends a tag in state 5 is left for the next token, unlike the one that a start tag
// swallows.
template <typename C, typename S>
std::uint32_t EndTagSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        switch (static_cast<EndTagState>(data->state)) {
            case END_TAG_PREFIX:
                if (whiteSpace.Parse(context, &whiteSpaceData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                MoveText(&whiteSpaceData.text, &data->prefix);
                data->state = END_TAG_NAME;
                identifier.BeginParse(&identifierData);
                continue;
            case END_TAG_NAME:
                if (identifier.Parse(context, &identifierData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                MoveText(&identifierData.text, &data->name);
                data->state = END_TAG_AFTER_NAME;
                whiteSpace.BeginParse(&whiteSpaceData);
                continue;
            case END_TAG_AFTER_NAME:
                if (whiteSpace.Parse(context, &whiteSpaceData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                MoveText(&whiteSpaceData.text, &data->afterName);
                data->state = END_TAG_DECIDE;
                continue;
            case END_TAG_DECIDE:
                if (ParseNext(context, data))
                    return SP_TOKEN_COMPLETE;
                continue;
            case END_TAG_ATTRIBUTES: {
                const std::uint32_t result = ParseAttributes(context, data);
                if (data->attributes.size() > maxParts)
                    return PARSER_LIMIT_EXCEEDED;
                if (result != SP_NEED_MORE_DATA || data->state == END_TAG_DECIDE)
                    return result;
                continue;
            }
            case END_TAG_END_OF_ATTRIBUTES:
                return ParseEndOfAttributes(context, data);
        }
        return SP_MALFORMED;
    }
    return SP_NEED_MORE_DATA;
}

/// State 5. True when the tag is complete.
template <typename C, typename S>
bool EndTagSimpleParser<C, S>::ParseNext(SimpleParserContext<C, S>* context, Data* data) {
    const C next = Scan::Next(*context);
    if (next != '>' && next != '<') {
        data->state = END_TAG_ATTRIBUTES;
        RestartAttribute(&attribute, &attributeData, data->iso2022);
        return false;
    }
    if (next == '>')
        Scan::Advance(*context);
    else
        data->closed = false;
    AttributesNormalizer<C, S>::Normalize(&data->attributes);
    return true;
}

/// State 3, one attribute. A closing "/" ends the call even with characters left (kept).
template <typename C, typename S>
std::uint32_t EndTagSimpleParser<C, S>::ParseAttributes(SimpleParserContext<C, S>* context, Data* data) {
    const std::uint32_t result = attribute.Parse(context, &attributeData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    const AttributeListStep step = AttributeList<C, S>(&attribute, &attributeData, data).Settle(*context, '/', true);
    if (HasClosingMark(step))
        data->slashBeforeClose = true;
    return LeaveAttribute(step, {END_TAG_DECIDE, END_TAG_END_OF_ATTRIBUTES}, &data->state);
}

/// State 4. A "/" ends the call even with characters left (kept).
template <typename C, typename S>
std::uint32_t EndTagSimpleParser<C, S>::ParseEndOfAttributes(SimpleParserContext<C, S>* context, Data* data) {
    const C next = Scan::Next(*context);
    if (next != '/' && next != '>')
        return SP_MALFORMED;
    Scan::Advance(*context);
    if (next == '/') {
        data->slashBeforeClose = true;
        data->state = END_TAG_DECIDE;
        return SP_NEED_MORE_DATA;
    }
    AttributesNormalizer<C, S>::Normalize(&data->attributes);
    return SP_TOKEN_COMPLETE;
}

template <typename C, typename S>
std::uint32_t EndTagSimpleParser<C, S>::EndParse(Data*) {
    return SP_UNTERMINATED;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(EndTag);

}  // namespace Kestra::HTML
