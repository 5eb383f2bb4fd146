#include "html/text/CDATATagSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

namespace {

enum State : std::uint32_t {
    BODY = 0,
    AFTER_BRACKET = 1,
    AFTER_TWO_BRACKETS = 2,
};

}  // namespace

template <typename C, typename S>
std::uint32_t CDATATagSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = BODY;
    data->keyword.clear();
    data->text.clear();
    data->closed = true;
    return SP_NEED_MORE_DATA;
}

//  state    "]"                                   ">"         other                          end of input
//  0 body   to 1                                  keep        keep                           complete, open
//  1 "]"    to 2                                  "]", as 0   "]", as 0                      "]", complete, open
//  2 "]]"   "]]", complete, unread, open (kept)   complete    "]]", complete, unread, open   "]]", complete, open
template <typename C, typename S>
std::uint32_t CDATATagSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        const C next = Scan::Next(*context);
        switch (static_cast<State>(data->state)) {
            case BODY:
                data->text.append(Scan::ConsumeUntil<Scan::CLOSING_BRACKET>(*context));
                if (!Scan::AtEnd(*context)) {
                    Scan::Advance(*context);
                    data->state = AFTER_BRACKET;
                }
                continue;
            case AFTER_BRACKET:
                if (next == ']') {
                    Scan::Advance(*context);
                    data->state = AFTER_TWO_BRACKETS;
                } else {
                    data->text += ']';
                    data->state = BODY;
                }
                continue;
            case AFTER_TWO_BRACKETS:
                if (next == '>') {
                    Scan::Advance(*context);
                } else {
                    data->text.append(2, ']');
                    data->closed = false;
                }
                return SP_TOKEN_COMPLETE;
        }
        return SP_MALFORMED;
    }
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t CDATATagSimpleParser<C, S>::EndParse(Data* data) {
    data->closed = false;
    if (data->state == AFTER_BRACKET)
        data->text += ']';
    else if (data->state == AFTER_TWO_BRACKETS)
        data->text.append(2, ']');
    return SP_TOKEN_COMPLETE;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(CDATATag);

}  // namespace Kestra::HTML
