#include "html/text/JunkSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

template <typename C, typename S>
std::uint32_t JunkSimpleParser<C, S>::BeginParse(Data* data) {
    data->text.clear();
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t JunkSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    const std::basic_string_view<C> run = Scan::ConsumeUntil<Scan::LESS_THAN>(*context);
    data->text.append(reinterpret_cast<const char*>(run.data()), run.size() * sizeof(C));
    return Scan::AtEnd(*context) ? SP_NEED_MORE_DATA : SP_TOKEN_COMPLETE;
}

template <typename C, typename S>
std::uint32_t JunkSimpleParser<C, S>::EndParse(Data*) {
    return SP_TOKEN_COMPLETE;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(Junk);

}  // namespace Kestra::HTML
