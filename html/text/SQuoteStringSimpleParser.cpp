#include "html/text/SQuoteStringSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/text/LiteralScan.h"

namespace Kestra::HTML {

template <typename C, typename S>
std::uint32_t SQuoteStringSimpleParser<C, S>::BeginParse(Data* data) {
    data->text.clear();
    data->lastChar = '*';
    data->allowEscapes = false;
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t SQuoteStringSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    if (!ReadLiteral<0, Scan::APOSTROPHE>(context, data))
        return SP_NEED_MORE_DATA;
    Scan::Advance(*context);
    return SP_TOKEN_COMPLETE;
}

template <typename C, typename S>
std::uint32_t SQuoteStringSimpleParser<C, S>::EndParse(Data*) {
    return SP_UNTERMINATED;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(SQuoteString);

}  // namespace Kestra::HTML
