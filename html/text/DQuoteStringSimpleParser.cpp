#include "html/text/DQuoteStringSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/text/LiteralScan.h"

namespace Kestra::HTML {

namespace {

enum State : std::uint32_t {
    IN_STRING = 0,
    ESCAPE_RUN = 1,
};

}  // namespace

template <typename C, typename S>
std::uint32_t DQuoteStringSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = IN_STRING;
    data->text.clear();
    data->lastChar = '*';
    data->allowEscapes = false;
    data->allowEscape2022 = false;
    escape.BeginParse(&escapeData);
    return SP_NEED_MORE_DATA;
}

//  state          '"'        ESC    other   end of input
//  0 string       complete   to 1   keep    unterminated
//  1 escape run   the escape recognizer reads on: "a": ESC "a", to 0; "$B": hold;
//                 '$B"' ESC "(B": ESC '$B"' ESC "(B", to 0; end of input: unterminated
//
// ESC is another character when escape runs are not allowed.
template <typename C, typename S>
std::uint32_t DQuoteStringSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    if (Scan::AtEnd(*context))
        return SP_NEED_MORE_DATA;
    switch (static_cast<State>(data->state)) {
        case IN_STRING: {
            const bool stopped = data->allowEscape2022
                                     ? ReadLiteral<0, Scan::QUOTATION_MARK | Scan::ESCAPE>(context, data)
                                     : ReadLiteral<0, Scan::QUOTATION_MARK>(context, data);
            if (!stopped)
                return SP_NEED_MORE_DATA;
            const C stop = Scan::Next(*context);
            Scan::Advance(*context);
            if (stop == '"')
                return SP_TOKEN_COMPLETE;
            data->state = ESCAPE_RUN;
            escape.BeginParse(&escapeData);
            return ParseEscape(context, data);
        }
        case ESCAPE_RUN:
            return ParseEscape(context, data);
    }
    return SP_MALFORMED;
}

/// State 1. A finished run answers SP_NEED_MORE_DATA even with characters left (kept).
template <typename C, typename S>
std::uint32_t DQuoteStringSimpleParser<C, S>::ParseEscape(SimpleParserContext<C, S>* context, Data* data) {
    const std::uint32_t result = escape.Parse(context, &escapeData);
    if (result != SP_TOKEN_COMPLETE)
        return result;
    data->text += escapeData.text;
    data->state = IN_STRING;
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t DQuoteStringSimpleParser<C, S>::EndParse(Data*) {
    return SP_UNTERMINATED;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(DQuoteString);

}  // namespace Kestra::HTML
