#include "html/text/JSRegExSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/text/LiteralScan.h"

namespace Kestra::HTML {

template <typename C, typename S>
std::uint32_t JSRegExSimpleParser<C, S>::BeginParse(Data* data) {
    data->text.assign(1, '/');
    data->lastChar = '*';
    data->allowEscapes = false;
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t JSRegExSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    if (!ReadLiteral<Scan::LESS_THAN | Scan::LINE_FEED | Scan::CARRIAGE_RETURN, Scan::SLASH>(context, data))
        return SP_NEED_MORE_DATA;
    // The scan never leaves "/" in `lastChar`, so only a record set by a caller has its closing
    // character read here.
    if (data->lastChar == '/') {
        Scan::Advance(*context);
        data->text += '/';
    }
    return SP_TOKEN_COMPLETE;
}

template <typename C, typename S>
std::uint32_t JSRegExSimpleParser<C, S>::EndParse(Data*) {
    return SP_TOKEN_COMPLETE;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(JSRegEx);

}  // namespace Kestra::HTML
