#include "html/tags/ExternTagFreeStyleSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

namespace {

constexpr Scan::Classes FREE_TEXT_STOPS =
    Scan::QUESTION_MARK | Scan::APOSTROPHE | Scan::QUOTATION_MARK | Scan::SLASH | Scan::GREATER_THAN;

}  // namespace

template <typename C, typename S>
std::uint32_t ExternTagFreeStyleSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = FREE_STYLE_TEXT;
    data->questionPending = false;
    data->text.clear();
    data->iso2022 = false;
    RestartSQuoteString();
    RestartDQuoteString(*data);
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
void ExternTagFreeStyleSimpleParser<C, S>::RestartSQuoteString() {
    sQuoteString.BeginParse(&sQuoteStringData);
    sQuoteStringData.allowEscapes = true;
}

template <typename C, typename S>
void ExternTagFreeStyleSimpleParser<C, S>::RestartDQuoteString(const Data& data) {
    dQuoteString.BeginParse(&dQuoteStringData);
    dQuoteStringData.allowEscapes = true;
    dQuoteStringData.allowEscape2022 = data.iso2022;
}

//  state        "?"         "'"    '"'    "/"         "*"         line feed   ">"                      other
//  0 text       hold, to 7  to 5   to 6   to 1        keep        keep        as 7                     keep
//  1 after "/"  other       other  other  "//", to 4  "/*", to 2  other       other                    "/", as 0
//  2 block      keep        keep   keep   keep        to 3        keep        keep                     keep
//  3 after "*"  other       other  other  "*/", to 0  other       other       other                    "*", as 0 (kept)
//  4 line       keep        keep   keep   keep        keep        keep, to 0  keep                     keep
//  5 in "'"     the string recognizer reads on: '>"': hold; "a'": "'a'", to 0; "a\'": hold
//  6 in '"'     the string recognizer reads on: ">'": hold; 'a"': '"a"', to 0; 'a\"': hold
//  7 after "?"  other       other  other  other       other       other       release, keep, complete  release, as 0
//
// States 2 and 3 are a block comment, state 4 a line comment.
template <typename C, typename S>
std::uint32_t ExternTagFreeStyleSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        std::uint32_t result = SP_MALFORMED;
        switch (static_cast<ExternTagFreeStyleState>(data->state)) {
            case FREE_STYLE_TEXT:
                result = ParseFreeText(context, data);
                break;
            case FREE_STYLE_AFTER_SLASH:
                result = ParseAfterSlash(context, data);
                break;
            case FREE_STYLE_BLOCK_COMMENT:
                result = ParseBlockComment(context, data);
                break;
            case FREE_STYLE_AFTER_ASTERISK:
                result = ParseAfterAsterisk(context, data);
                break;
            case FREE_STYLE_LINE_COMMENT:
                result = ParseLineComment(context, data);
                break;
            case FREE_STYLE_SINGLE_QUOTED:
                result = ParseString(context, data, &sQuoteString, &sQuoteStringData, '\'');
                break;
            case FREE_STYLE_DOUBLE_QUOTED:
                result = ParseString(context, data, &dQuoteString, &dQuoteStringData, '"');
                break;
            case FREE_STYLE_AFTER_QUESTION_MARK:
                result = ParseQuestionMark(context, data);
                break;
        }
        if (result != SP_NEED_MORE_DATA)
            return result;
    }
    return SP_NEED_MORE_DATA;
}

/// State 0. Consumes the character that stops it, except for ">".
template <typename C, typename S>
std::uint32_t ExternTagFreeStyleSimpleParser<C, S>::ParseFreeText(SimpleParserContext<C, S>* context, Data* data) {
    data->text.append(Scan::ConsumeUntil<FREE_TEXT_STOPS>(*context));
    if (Scan::AtEnd(*context))
        return SP_NEED_MORE_DATA;
    const C stop = Scan::Next(*context);
    if (stop == '>') {
        data->state = FREE_STYLE_AFTER_QUESTION_MARK;
        data->questionPending = false;
        return SP_NEED_MORE_DATA;
    }
    if (stop == '\'') {
        RestartSQuoteString();
        data->state = FREE_STYLE_SINGLE_QUOTED;
    } else if (stop == '"') {
        RestartDQuoteString(*data);
        data->state = FREE_STYLE_DOUBLE_QUOTED;
    } else if (stop == '/') {
        data->state = FREE_STYLE_AFTER_SLASH;
    } else if (stop == '?') {
        data->state = FREE_STYLE_AFTER_QUESTION_MARK;
        data->questionPending = true;
    } else {
        return SP_UNEXPECTED_CHAR;  // a guard: no other character stops the run
    }
    Scan::Advance(*context);
    return SP_NEED_MORE_DATA;
}

/// State 1.
template <typename C, typename S>
std::uint32_t ExternTagFreeStyleSimpleParser<C, S>::ParseAfterSlash(SimpleParserContext<C, S>* context, Data* data) {
    const C next = Scan::Next(*context);
    data->text += '/';
    data->state = FREE_STYLE_TEXT;
    if (next == '*' || next == '/') {
        Scan::Advance(*context);
        data->text += next;
        data->state = next == '*' ? FREE_STYLE_BLOCK_COMMENT : FREE_STYLE_LINE_COMMENT;
    }
    return SP_NEED_MORE_DATA;
}

/// State 2.
template <typename C, typename S>
std::uint32_t ExternTagFreeStyleSimpleParser<C, S>::ParseBlockComment(SimpleParserContext<C, S>* context, Data* data) {
    data->text.append(Scan::ConsumeUntil<Scan::ASTERISK>(*context));
    if (!Scan::AtEnd(*context)) {
        Scan::Advance(*context);
        data->state = FREE_STYLE_AFTER_ASTERISK;
    }
    return SP_NEED_MORE_DATA;
}

/// State 3.
template <typename C, typename S>
std::uint32_t ExternTagFreeStyleSimpleParser<C, S>::ParseAfterAsterisk(SimpleParserContext<C, S>* context, Data* data) {
    data->text += '*';
    if (Scan::Next(*context) == '/') {
        Scan::Advance(*context);
        data->text += '/';
    }
    data->state = FREE_STYLE_TEXT;
    return SP_NEED_MORE_DATA;
}

/// State 4.
template <typename C, typename S>
std::uint32_t ExternTagFreeStyleSimpleParser<C, S>::ParseLineComment(SimpleParserContext<C, S>* context, Data* data) {
    data->text.append(Scan::ConsumeUntil<Scan::LINE_FEED>(*context));
    if (!Scan::AtEnd(*context)) {
        Scan::Advance(*context);
        data->text += '\n';
        data->state = FREE_STYLE_TEXT;
    }
    return SP_NEED_MORE_DATA;
}

/// State 7.
template <typename C, typename S>
std::uint32_t ExternTagFreeStyleSimpleParser<C, S>::ParseQuestionMark(SimpleParserContext<C, S>* context, Data* data) {
    if (data->questionPending)
        data->text += '?';
    if (Scan::Next(*context) == '>') {
        Scan::Advance(*context);
        data->text += '>';
        return SP_TOKEN_COMPLETE;
    }
    data->questionPending = false;
    data->state = FREE_STYLE_TEXT;
    return SP_NEED_MORE_DATA;
}

/// States 5 and 6.
template <typename C, typename S>
template <typename Parser, typename ParserData>
std::uint32_t ExternTagFreeStyleSimpleParser<C, S>::ParseString(SimpleParserContext<C, S>* context, Data* data,
                                                                Parser* parser, ParserData* parserData, C quote) {
    const std::uint32_t result = parser->Parse(context, parserData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    data->text += quote;
    data->text += parserData->text;
    data->text += quote;
    data->state = FREE_STYLE_TEXT;
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t ExternTagFreeStyleSimpleParser<C, S>::EndParse(Data*) {
    return SP_UNTERMINATED;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(ExternTagFreeStyle);

}  // namespace Kestra::HTML
