#include "html/text/TextSimpleParser.h"

#include <type_traits>

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

namespace {

enum State : std::uint32_t {
    IN_TEXT = 0,
    AFTER_SLASH = 1,
    ESCAPE_RUN = 2,
};

template <typename C, typename Data>
Scan::Classes StopsOf(const Data& data) {
    Scan::Classes stops = Scan::LESS_THAN;
    if (data.allowCComment || data.allowCPPComment)
        stops |= Scan::SLASH;
    if (data.allowSQuoteString)
        stops |= Scan::APOSTROPHE;
    if (data.allowDQuoteString)
        stops |= Scan::QUOTATION_MARK;
    if (data.allowEscape2022 && std::is_same_v<C, char>)
        stops |= Scan::ESCAPE;
    return stops;
}

constexpr Scan::Classes STOPS_IN_SCRIPT = Scan::LESS_THAN | Scan::SLASH | Scan::APOSTROPHE | Scan::QUOTATION_MARK;

/// The recognizer after an opener of one character.
template <typename C>
WideStringView NameOf(C opener) {
    if (opener == '<')
        return ParserNames::GENERIC_TAG;
    return opener == '"' ? ParserNames::D_QUOTE_STRING : ParserNames::S_QUOTE_STRING;
}

/// The characters up to the next one that stops text.
template <typename C, typename S>
std::basic_string_view<C> RunOfText(SimpleParserContext<C, S>& context, Scan::Classes stops) {
    if (stops == Scan::LESS_THAN)
        return Scan::ConsumeUntil<Scan::LESS_THAN>(context);
    if (stops == STOPS_IN_SCRIPT)
        return Scan::ConsumeUntil<STOPS_IN_SCRIPT>(context);
    return Scan::ConsumeUntil(context, stops);
}

}  // namespace

template <typename C, typename S>
std::uint32_t TextSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = IN_TEXT;
    data->allowCComment = false;
    data->allowCPPComment = false;
    data->allowSQuoteString = false;
    data->allowDQuoteString = false;
    data->allowJSRegEx = false;
    data->allowEscape2022 = false;
    data->text.clear();
    data->nextParserName.clear();
    escape.BeginParse(&escapeData);
    return SP_NEED_MORE_DATA;
}

//  state         "<"    "'"     '"'     "/"           "*"            ESC    other               end of input
//  0 text        tag    single  double  to 1          keep           to 2   keep                complete
//  1 "/", RegEx  other  other   other   line comment  block comment  other  expression, unread  "/", complete
//  1 "/", none   other  other   other   line comment  block comment  other  "/", as 0           "/", complete
//  2 escape run  the escape recognizer reads on: "a": ESC "a", to 0; "$B": hold;
//                "$B<" ESC "(B": ESC "$B<" ESC "(B", to 0; end of input: ESC, complete
//
// "single" and "double" are the recognizers of quoted strings; "RegEx" is for texts in which
// regular expressions are allowed. A quote or an ESC that is not allowed is another character. A
// "/" goes to 1 when one of the two comments is allowed; the opener of the other one is another
// character there.
template <typename C, typename S>
std::uint32_t TextSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        switch (static_cast<State>(data->state)) {
            case IN_TEXT:
                if (ParseText(context, data))
                    return SP_TOKEN_COMPLETE;
                continue;
            case AFTER_SLASH:
                if (ParseAfterSlash(context, data))
                    return SP_TOKEN_COMPLETE;
                continue;
            case ESCAPE_RUN: {
                const std::uint32_t result = escape.Parse(context, &escapeData);
                if (result != SP_TOKEN_COMPLETE)
                    return result;
                data->text += escapeData.text;
                data->state = IN_TEXT;
                continue;
            }
        }
        return SP_MALFORMED;
    }
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
C TextSimpleParser<C, S>::ReadUntilOpener(SimpleParserContext<C, S>* context, Data* data) {
    if (data->state != IN_TEXT)
        return 0;
    data->text.append(RunOfText(*context, StopsOf<C>(*data)));
    if (Scan::AtEnd(*context))
        return 0;
    const C stop = Scan::Next(*context);
    if (stop != '<' && stop != '\'' && stop != '"')
        return 0;
    Scan::Advance(*context);
    return stop;
}

/// State 0. True when an opener has been consumed and the next recognizer is named.
template <typename C, typename S>
bool TextSimpleParser<C, S>::ParseText(SimpleParserContext<C, S>* context, Data* data) {
    const C opener = ReadUntilOpener(context, data);
    if (opener != 0) {
        data->nextParserName = NameOf(opener);
        return true;
    }
    if (Scan::AtEnd(*context))
        return false;
    const C stop = Scan::Next(*context);
    Scan::Advance(*context);
    if (stop == '/') {
        data->state = AFTER_SLASH;
    } else {
        data->state = ESCAPE_RUN;
        escape.BeginParse(&escapeData);
    }
    return false;
}

/// State 1. True when a recognizer is named.
template <typename C, typename S>
bool TextSimpleParser<C, S>::ParseAfterSlash(SimpleParserContext<C, S>* context, Data* data) {
    const C next = Scan::Next(*context);
    if (next == '*' && data->allowCComment) {
        Scan::Advance(*context);
        data->nextParserName = ParserNames::C_COMMENT;
        return true;
    }
    if (next == '/' && data->allowCPPComment) {
        Scan::Advance(*context);
        data->nextParserName = ParserNames::CPP_COMMENT;
        return true;
    }
    if (data->allowJSRegEx) {
        data->nextParserName = ParserNames::JS_REG_EX;
        return true;
    }
    data->text += '/';
    data->state = IN_TEXT;
    return false;
}

template <typename C, typename S>
std::uint32_t TextSimpleParser<C, S>::EndParse(Data* data) {
    if (data->state == AFTER_SLASH)
        data->text += '/';
    if (data->state == ESCAPE_RUN) {
        const std::uint32_t result = escape.EndParse(&escapeData);
        if (result != SP_TOKEN_COMPLETE)
            return result;
        data->text += escapeData.text;
    }
    return SP_TOKEN_COMPLETE;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(Text);

}  // namespace Kestra::HTML
