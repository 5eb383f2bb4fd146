#include "html/tags/ExternTagSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/MoveText.h"
#include "html/framework/Scan.h"
#include "html/tags/AttributeList.h"

namespace Kestra::HTML {

namespace {

enum State : std::uint32_t {
    PREFIX = 0,
    TARGET = 1,
    ATTRIBUTES = 2,
    EXPECT_QUESTION_MARK = 3,
    FREE_STYLE = 4,
    EXPECT_END = 5,
};

/// "xml", or anything that begins with "xml:" or "xml-".
template <typename S>
bool IsXmlTarget(const S& target) {
    const std::basic_string_view<typename S::value_type> word(target);
    return EqualsKeyword(word.substr(0, 3), "xml") && (word.size() == 3 || word[3] == ':' || word[3] == '-');
}

}  // namespace

template <typename C, typename S>
std::uint32_t ExternTagSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = PREFIX;
    data->freeStyle = false;
    data->slashBeforeClose = false;
    data->prefix.clear();
    data->name.clear();
    data->text.clear();
    data->attributes.clear();
    data->suffix.clear();
    data->iso2022 = false;
    identifier.BeginParse(&identifierData);
    whiteSpace.BeginParse(&whiteSpaceData);
    attribute.BeginParse(&attributeData);
    freeStyle.BeginParse(&freeStyleData);
    return SP_NEED_MORE_DATA;
}

//  state             white space   "?"    ">"         "=", "[", "]", "<"   other
//  0 prefix          keep          as 1   as 1        as 1                 as 1
//  1 target          as 2 or 4     keep   as 2 or 4   as 2 or 4            keep
//  2 attributes      the attribute recognizer reads on: "a ": hold; " " before ">": to 3; "a?" before ">": to 5;
//                    "?" before ">": to 5; "a=b?" before ">": to 5; "a/" before ">": to 5; "/ " before ">": to 5
//                    (kept); "a=?" before ">": to 5, fail; "? " before "a": fail
//  3 expecting "?"   fail          to 5   fail        fail                 fail
//  4 free style      the free-style recognizer reads on: "a": hold; "'>'": hold; "a?": hold; "a?>": complete;
//                    ">": complete
//  5 expecting ">"   fail          fail   complete    fail                 fail
//
// State 1 goes to 2 with the targets "xml", "xml:..." and "xml-...".
template <typename C, typename S>
std::uint32_t ExternTagSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        switch (static_cast<State>(data->state)) {
            case PREFIX:
                if (whiteSpace.Parse(context, &whiteSpaceData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                MoveText(&whiteSpaceData.text, &data->prefix);
                data->state = TARGET;
                identifier.BeginParse(&identifierData);
                continue;
            case TARGET:
                if (identifier.Parse(context, &identifierData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                MoveText(&identifierData.text, &data->name);
                ChooseStyle(data);
                continue;
            case ATTRIBUTES: {
                const std::uint32_t result = ParseAttributes(context, data);
                if (data->attributes.size() > maxParts)
                    return PARSER_LIMIT_EXCEEDED;
                if (result != SP_NEED_MORE_DATA)
                    return result;
                continue;
            }
            case EXPECT_QUESTION_MARK:
                if (Scan::Next(*context) != '?')
                    return SP_MALFORMED;
                Scan::Advance(*context);
                data->state = EXPECT_END;
                continue;
            case FREE_STYLE: {
                const std::uint32_t result = freeStyle.Parse(context, &freeStyleData);
                if (result == SP_TOKEN_COMPLETE) {
                    data->freeStyle = true;
                    MoveText(&freeStyleData.text, &data->text);
                }
                return result;
            }
            case EXPECT_END:
                if (Scan::Next(*context) != '>')
                    return SP_MALFORMED;
                Scan::Advance(*context);
                return SP_TOKEN_COMPLETE;
        }
        return SP_MALFORMED;
    }
    return SP_NEED_MORE_DATA;
}

/// State 1, with the target read. A target takes the "?" of "?>" with it.
template <typename C, typename S>
void ExternTagSimpleParser<C, S>::ChooseStyle(Data* data) {
    if (IsXmlTarget(data->name)) {
        data->state = ATTRIBUTES;
        RestartAttribute(&attribute, &attributeData, data->iso2022);
        return;
    }
    data->state = FREE_STYLE;
    freeStyle.BeginParse(&freeStyleData);
    freeStyleData.iso2022 = data->iso2022;
    freeStyleData.text += '<';
    freeStyleData.text += '?';
    freeStyleData.text += data->prefix;
    freeStyleData.text += data->name;
    if (!data->name.empty() && data->name.back() == '?')
        freeStyleData.state = FREE_STYLE_AFTER_QUESTION_MARK;
}

/// State 2, one attribute. An unquoted value leaves `iso2022` off for the attribute after it
/// (kept).
template <typename C, typename S>
std::uint32_t ExternTagSimpleParser<C, S>::ParseAttributes(SimpleParserContext<C, S>* context, Data* data) {
    const std::uint32_t result = attribute.Parse(context, &attributeData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    if (RemoveClosingSlash(data))
        return SP_NEED_MORE_DATA;
    const AttributeListStep step = AttributeList<C, S>(&attribute, &attributeData, data).Settle(*context, '?', false);
    return LeaveAttribute(step, {EXPECT_END, EXPECT_QUESTION_MARK}, &data->state);
}

/// A name without a value that ends in "/" ends the declaration. White space after that "/" moves
/// before it (kept).
template <typename C, typename S>
bool ExternTagSimpleParser<C, S>::RemoveClosingSlash(Data* data) {
    constexpr bool WHITE_SPACE_COUNTS = false;
    const auto mark = TagGrammar::FindMarkOfName<C>(attributeData.name, WHITE_SPACE_COUNTS, '/');
    if (attributeData.hasValue != 0 || mark != TagGrammar::ClosingMark::CLOSES)
        return false;
    attributeData.name.pop_back();
    AttributeList<C, S>(&attribute, &attributeData, data).AppendNameOrSuffix();
    data->suffix += attributeData.beforeEquals;
    data->slashBeforeClose = true;
    RestartAttribute(&attribute, &attributeData, data->iso2022);
    data->state = EXPECT_END;
    return true;
}

template <typename C, typename S>
std::uint32_t ExternTagSimpleParser<C, S>::EndParse(Data*) {
    return SP_UNTERMINATED;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(ExternTag);

}  // namespace Kestra::HTML
