#include "html/text/CommentTagSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

namespace {

enum State : std::uint32_t {
    BODY = 0,
    AFTER_HYPHEN = 1,
    AFTER_TWO_HYPHENS = 2,
};

}  // namespace

template <typename C, typename S>
std::uint32_t CommentTagSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = BODY;
    data->text.clear();
    data->closed = true;
    return SP_NEED_MORE_DATA;
}

//  state    "-"    ">"         other        end of input
//  0 body   to 1   keep        keep         complete, open
//  1 "-"    to 2   "-", as 0   "-", as 0    "-", complete, open
//  2 "--"   keep   complete    "--", as 0   "--", complete, open
template <typename C, typename S>
std::uint32_t CommentTagSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        const C next = Scan::Next(*context);
        switch (static_cast<State>(data->state)) {
            case BODY:
                data->text.append(Scan::ConsumeUntil<Scan::HYPHEN>(*context));
                if (!Scan::AtEnd(*context)) {
                    Scan::Advance(*context);
                    data->state = AFTER_HYPHEN;
                }
                continue;
            case AFTER_HYPHEN:
                if (next == '-') {
                    Scan::Advance(*context);
                    data->state = AFTER_TWO_HYPHENS;
                } else {
                    data->text += '-';
                    data->state = BODY;
                }
                continue;
            case AFTER_TWO_HYPHENS:
                if (next == '>') {
                    Scan::Advance(*context);
                    return SP_TOKEN_COMPLETE;
                }
                if (next == '-') {
                    Scan::Advance(*context);
                    data->text += '-';
                } else {
                    data->text.append(2, '-');
                    data->state = BODY;
                }
                continue;
        }
        return SP_MALFORMED;
    }
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t CommentTagSimpleParser<C, S>::EndParse(Data* data) {
    data->closed = false;
    if (data->state == AFTER_HYPHEN)
        data->text += '-';
    else if (data->state == AFTER_TWO_HYPHENS)
        data->text.append(2, '-');
    return SP_TOKEN_COMPLETE;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(CommentTag);

}  // namespace Kestra::HTML
