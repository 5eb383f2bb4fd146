#include "html/text/ConditionalTagSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

namespace {

enum State : std::uint32_t {
    CONDITION = 0,
    TAIL = 1,
};

}  // namespace

template <typename C, typename S>
std::uint32_t ConditionalTagSimpleParser<C, S>::BeginParse(Data* data) {
    data->state = CONDITION;
    data->keyword.clear();
    data->condition.clear();
    data->tail.clear();
    data->bracketClosed = true;
    data->tagClosed = true;
    return SP_NEED_MORE_DATA;
}

//  state         "]"    ">"        other   end of piece   end of input
//  0 condition   to 1   keep       keep    keep           complete, open, no bracket
//  1 tail        keep   complete   keep    drop (kept)    complete, open
template <typename C, typename S>
std::uint32_t ConditionalTagSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    while (!Scan::AtEnd(*context)) {
        switch (static_cast<State>(data->state)) {
            case CONDITION:
                data->condition.append(Scan::ConsumeUntil<Scan::CLOSING_BRACKET>(*context));
                if (!Scan::AtEnd(*context)) {
                    Scan::Advance(*context);
                    data->state = TAIL;
                }
                continue;
            case TAIL: {
                const std::basic_string_view<C> run = Scan::ConsumeUntil<Scan::GREATER_THAN>(*context);
                if (Scan::AtEnd(*context) && !pieceContinues) {
                    data->tail.clear();
                    continue;
                }
                data->tail.append(run);
                if (Scan::AtEnd(*context))
                    continue;
                Scan::Advance(*context);
                return SP_TOKEN_COMPLETE;
            }
        }
        return SP_MALFORMED;
    }
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t ConditionalTagSimpleParser<C, S>::EndParse(Data* data) {
    data->bracketClosed = data->state == TAIL;
    data->tagClosed = false;
    return SP_TOKEN_COMPLETE;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(ConditionalTag);

}  // namespace Kestra::HTML
