#include "html/tags/StartTagSimpleParser.h"

#include "html/fastpath/WholeAttributes.h"
#include "html/framework/Instantiate.h"
#include "html/framework/MoveText.h"
#include "html/framework/Scan.h"
#include "html/output/AttributesNormalizer.h"
#include "html/tags/AttributeList.h"

namespace Kestra::HTML {

namespace {

/// After this many attributes, those that are in the piece as a whole are read without their
/// recognizer. The first ones go through it, so that its strings have the capacity for most
/// attributes before the end of a piece cuts a longer one.
constexpr std::size_t LONG_LIST = 8;

}  // namespace

template <typename C, typename S>
std::uint32_t StartTagSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = START_TAG_PREFIX;
    data->prefix.clear();
    data->name.clear();
    data->attributes.clear();
    data->suffix.clear();
    data->wideName.clear();
    data->selfClosing = false;
    data->closed = true;
    identifier.BeginParse(&identifierData);
    whiteSpace.BeginParse(&whiteSpaceData);
    attribute.BeginParse(&attributeData);
    return SP_NEED_MORE_DATA;
}

//  state                 white space   "/"    ">"        "<"              "=", "[", "]"   other
//  0 prefix              keep          as 1   as 1       as 1             as 1            as 1
//  1 name                as 2          keep   as 2       as 2             as 2            keep
//  2 attributes          the attribute recognizer reads on: "a ": hold; "a='>' ": hold; " " before ">": to 3;
//                        "a/" before ">": to 4; "/" before ">": to 4; "a=b/" before ">": to 4;
//                        "a=/" before ">": to 4, fail; "/ " before "a": fail
//  3 end of attributes   fail          to 4   complete   complete, open   fail            fail
//  4 after "/"           fail          fail   complete   fail             fail            fail
template <typename C, typename S>
std::uint32_t StartTagSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        switch (static_cast<StartTagState>(data->state)) {
            case START_TAG_PREFIX:
                if (whiteSpace.Parse(context, &whiteSpaceData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                MoveText(&whiteSpaceData.text, &data->prefix);
                data->state = START_TAG_NAME;
                identifier.BeginParse(&identifierData);
                continue;
            case START_TAG_NAME:
                if (identifier.Parse(context, &identifierData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                MoveText(&identifierData.text, &data->name);
                if (data->name.size() == 1 && data->name[0] == '<')
                    return SP_NOT_THIS_TOKEN;
                data->state = START_TAG_ATTRIBUTES;
                RestartAttribute(&attribute, &attributeData, data->iso2022);
                continue;
            case START_TAG_ATTRIBUTES: {
                const std::uint32_t result = ParseAttributes(context, data);
                if (data->attributes.size() > maxParts)
                    return PARSER_LIMIT_EXCEEDED;
                if (result != SP_NEED_MORE_DATA)
                    return result;
                continue;
            }
            case START_TAG_END_OF_ATTRIBUTES: {
                const std::uint32_t result = ParseEndOfAttributes(context, data);
                if (result != SP_NEED_MORE_DATA)
                    return result;
                continue;
            }
            case START_TAG_AFTER_SLASH:
                if (Scan::Next(*context) != '>')
                    return SP_MALFORMED;
                Scan::Advance(*context);
                AttributesNormalizer<C, S>::Normalize(&data->attributes);
                return SP_TOKEN_COMPLETE;
        }
        return SP_MALFORMED;
    }
    return SP_NEED_MORE_DATA;
}

/// State 2, one attribute. An unquoted value leaves `iso2022` off for the attribute after it
/// (kept).
template <typename C, typename S>
std::uint32_t StartTagSimpleParser<C, S>::ParseAttributes(SimpleParserContext<C, S>* context, Data* data) {
    const std::uint32_t result = attribute.Parse(context, &attributeData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    AttributeListStep step = AttributeList<C, S>(&attribute, &attributeData, data).Settle(*context, '/', false);
    if (step == AttributeListStep::NEXT_ATTRIBUTE && data->attributes.size() >= LONG_LIST && !data->iso2022)
        step = WholeAttributes<C, S>(context).ContinueList(&attributeData, data, maxParts);
    if (HasClosingMark(step))
        data->selfClosing = true;
    return LeaveAttribute(step, {START_TAG_AFTER_SLASH, START_TAG_END_OF_ATTRIBUTES}, &data->state);
}

/// State 3. A "<" that ends the tag is swallowed: the driver goes on as if it had been read for the
/// next tag.
template <typename C, typename S>
std::uint32_t StartTagSimpleParser<C, S>::ParseEndOfAttributes(SimpleParserContext<C, S>* context, Data* data) {
    const C next = Scan::Next(*context);
    if (next == '/') {
        Scan::Advance(*context);
        data->selfClosing = true;
        data->state = START_TAG_AFTER_SLASH;
        return SP_NEED_MORE_DATA;
    }
    if (next != '>' && next != '<')
        return SP_MALFORMED;
    Scan::Advance(*context);
    AttributesNormalizer<C, S>::Normalize(&data->attributes);
    data->closed = next == '>';
    return SP_TOKEN_COMPLETE;
}

template <typename C, typename S>
std::uint32_t StartTagSimpleParser<C, S>::EndParse(Data*) {
    return SP_UNTERMINATED;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(StartTag);

}  // namespace Kestra::HTML
