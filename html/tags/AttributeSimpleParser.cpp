#include "html/tags/AttributeSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/MoveText.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

template <typename C, typename S>
std::uint32_t AttributeSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = ATTRIBUTE_PREFIX;
    data->hasValue = 0;
    data->prefix.clear();
    data->name.clear();
    data->beforeEquals.clear();
    data->afterEquals.clear();
    data->value.clear();
    data->quote = QUOTE_NONE;
    data->iso2022 = false;
    identifier.BeginParse(&identifierData);
    identifierData.attributeNameMode = true;
    whiteSpace.BeginParse(&whiteSpaceData);
    token.BeginParse(&tokenData);
    return SP_NEED_MORE_DATA;
}

//  state              white space        "="    ">"                other
//  0 prefix           keep               as 1   as 1               as 1
//  1 name             as 2               as 2   as 2               keep
//  2 after the name   keep               as 3   as 3               as 3
//  3 "=" or not       complete, unread   to 4   complete, unread   complete, unread
//  4 value            the value recognizer reads on: " a": hold; "a" before " ": complete; "a" before ">": complete;
//                     before ">": complete; "'a": hold; "'a>'": complete
template <typename C, typename S>
std::uint32_t AttributeSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        switch (static_cast<AttributeState>(data->state)) {
            case ATTRIBUTE_PREFIX:
                if (whiteSpace.Parse(context, &whiteSpaceData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                MoveText(&whiteSpaceData.text, &data->prefix);
                data->state = ATTRIBUTE_NAME;
                identifier.BeginParse(&identifierData);
                identifierData.attributeNameMode = true;
                continue;
            case ATTRIBUTE_NAME:
                if (identifier.Parse(context, &identifierData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                MoveText(&identifierData.text, &data->name);
                data->state = ATTRIBUTE_AFTER_NAME;
                whiteSpace.BeginParse(&whiteSpaceData);
                continue;
            case ATTRIBUTE_AFTER_NAME:
                if (whiteSpace.Parse(context, &whiteSpaceData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                MoveText(&whiteSpaceData.text, &data->beforeEquals);
                data->state = ATTRIBUTE_EXPECT_EQUALS;
                continue;
            case ATTRIBUTE_EXPECT_EQUALS:
                if (Scan::Next(*context) != '=') {
                    data->hasValue = 0;
                    return SP_TOKEN_COMPLETE;
                }
                Scan::Advance(*context);
                data->state = ATTRIBUTE_VALUE;
                token.BeginParse(&tokenData);
                tokenData.iso2022 = data->iso2022;
                continue;
            case ATTRIBUTE_VALUE: {
                const std::uint32_t result = token.Parse(context, &tokenData);
                if (result == SP_TOKEN_COMPLETE) {
                    data->hasValue = 1;
                    MoveText(&tokenData.prefix, &data->afterEquals);
                    MoveText(&tokenData.value, &data->value);
                    data->quote = tokenData.quote;
                }
                return result;
            }
        }
        return SP_MALFORMED;
    }
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t AttributeSimpleParser<C, S>::EndParse(Data*) {
    return SP_TOKEN_COMPLETE;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(Attribute);

}  // namespace Kestra::HTML
