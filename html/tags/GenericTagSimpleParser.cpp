#include "html/tags/GenericTagSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/MoveText.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

namespace {

enum State : std::uint32_t {
    FIRST = 0,
    AFTER_EXCLAMATION_MARK = 1,
    AFTER_HYPHEN = 2,
    KEYWORD = 3,
};

}  // namespace

template <typename C, typename S>
std::uint32_t GenericTagSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = FIRST;
    data->reserved = 0;
    data->text.clear();
    data->keyword.clear();
    data->nextParser.clear();
    identifier.BeginParse(&identifierData);
    return SP_NEED_MORE_DATA;
}

//  state     "/"       "?"           "!"     "-"       "["     other
//  0 "<"     end tag   instruction   to 1    other     other   start tag, unread
//  1 "<!"    other     other         other   to 2      to 3    declaration, unread
//  2 "<!-"   fail      fail          fail    comment   fail    fail
//  3 "<!["   the name recognizer reads on: "CD": hold; "CDATA" before "[": section; "if" before " ": conditional;
//            "EndIf" before "]": conditional; "ifs" before "[": fail; before "[": fail
template <typename C, typename S>
std::uint32_t GenericTagSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        switch (static_cast<State>(data->state)) {
            case FIRST:
                if (ParseFirst(context, data))
                    return SP_TOKEN_COMPLETE;
                continue;
            case AFTER_EXCLAMATION_MARK:
                if (ParseAfterExclamationMark(context, data))
                    return SP_TOKEN_COMPLETE;
                continue;
            case AFTER_HYPHEN:
                if (Scan::Next(*context) != '-')
                    return SP_MALFORMED;
                Scan::Advance(*context);
                data->nextParser = ParserNames::COMMENT_TAG;
                return SP_TOKEN_COMPLETE;
            case KEYWORD:
                if (identifier.Parse(context, &identifierData) != SP_TOKEN_COMPLETE)
                    return SP_NEED_MORE_DATA;
                return ChooseByKeyword(data);
        }
        return SP_MALFORMED;
    }
    return SP_NEED_MORE_DATA;
}

/// State 0. True when the recognizer is named.
template <typename C, typename S>
bool GenericTagSimpleParser<C, S>::ParseFirst(SimpleParserContext<C, S>* context, Data* data) {
    const C next = Scan::Next(*context);
    if (next == '!') {
        Scan::Advance(*context);
        data->state = AFTER_EXCLAMATION_MARK;
        return false;
    }
    if (next == '/') {
        Scan::Advance(*context);
        data->nextParser = ParserNames::END_TAG;
    } else if (next == '?') {
        Scan::Advance(*context);
        data->nextParser = ParserNames::EXTERN_TAG;
    } else {
        data->nextParser = ParserNames::START_TAG;
    }
    return true;
}

/// State 1. True when the recognizer is named.
template <typename C, typename S>
bool GenericTagSimpleParser<C, S>::ParseAfterExclamationMark(SimpleParserContext<C, S>* context, Data* data) {
    const C next = Scan::Next(*context);
    if (next == '-') {
        Scan::Advance(*context);
        data->state = AFTER_HYPHEN;
        return false;
    }
    if (next == '[') {
        Scan::Advance(*context);
        identifier.BeginParse(&identifierData);
        data->state = KEYWORD;
        return false;
    }
    data->nextParser = ParserNames::ENTITY_TAG;
    return true;
}

/// State 3, with the word read.
template <typename C, typename S>
std::uint32_t GenericTagSimpleParser<C, S>::ChooseByKeyword(Data* data) {
    const S& keyword = identifierData.text;
    if (EqualsKeyword(keyword, "cdata"))
        data->nextParser = ParserNames::CDATA_TAG;
    else if (EqualsKeyword(keyword, "if") || EqualsKeyword(keyword, "endif"))
        data->nextParser = ParserNames::CONDITIONAL_TAG;
    else
        return SP_MALFORMED;
    MoveText(&identifierData.text, &data->keyword);
    return SP_TOKEN_COMPLETE;
}

template <typename C, typename S>
std::uint32_t GenericTagSimpleParser<C, S>::EndParse(Data*) {
    return SP_UNTERMINATED;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(GenericTag);

}  // namespace Kestra::HTML
