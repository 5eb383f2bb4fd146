#include "html/text/CCommentSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

namespace {

enum State : std::uint32_t {
    BODY = 0,
    AFTER_ASTERISK = 2,
};

}  // namespace

template <typename C, typename S>
std::uint32_t CCommentSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = BODY;
    data->text.clear();
    data->keyword.clear();
    data->nextParserName.clear();
    genericTag.BeginParse(&genericTagData);
    return SP_NEED_MORE_DATA;
}

//  state    "*"         "/"        other       end of input
//  0 body   to 2        keep       keep        unterminated
//  2 "*"    "*", as 0   complete   "*", as 0   unterminated
template <typename C, typename S>
std::uint32_t CCommentSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        switch (static_cast<State>(data->state)) {
            case BODY:
                data->text.append(Scan::ConsumeUntil<Scan::ASTERISK>(*context));
                if (!Scan::AtEnd(*context)) {
                    Scan::Advance(*context);
                    data->state = AFTER_ASTERISK;
                }
                continue;
            case AFTER_ASTERISK:
                if (Scan::Next(*context) == '/') {
                    Scan::Advance(*context);
                    return SP_TOKEN_COMPLETE;
                }
                data->text += '*';
                data->state = BODY;
                continue;
        }
        return SP_MALFORMED;
    }
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t CCommentSimpleParser<C, S>::EndParse(Data*) {
    return SP_UNTERMINATED;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(CComment);

}  // namespace Kestra::HTML
