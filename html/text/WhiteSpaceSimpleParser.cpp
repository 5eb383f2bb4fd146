#include "html/text/WhiteSpaceSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

template <typename C, typename S>
std::uint32_t WhiteSpaceSimpleParser<C, S>::BeginParse(Data* data) {
    data->text.clear();
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t WhiteSpaceSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    data->text.append(Scan::ConsumeWhiteSpace(*context));
    return Scan::AtEnd(*context) ? SP_NEED_MORE_DATA : SP_TOKEN_COMPLETE;
}

template <typename C, typename S>
std::uint32_t WhiteSpaceSimpleParser<C, S>::EndParse(Data*) {
    return SP_TOKEN_COMPLETE;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(WhiteSpace);

}  // namespace Kestra::HTML
