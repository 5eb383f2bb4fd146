#include "html/tags/IdentifierSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"
#include "html/tags/TagGrammar.h"

namespace Kestra::HTML {

template <typename C, typename S>
std::uint32_t IdentifierSimpleParser<C, S>::BeginParse(Data* data) {
    data->text.clear();
    data->attributeNameMode = false;
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t IdentifierSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    const Scan::Classes stops = data->attributeNameMode ? TagGrammar::ATTRIBUTE_NAME_STOPS : TagGrammar::TAG_NAME_STOPS;
    data->text.append(Scan::ConsumeUntil(*context, stops));
    return Scan::AtEnd(*context) ? SP_NEED_MORE_DATA : SP_TOKEN_COMPLETE;
}

template <typename C, typename S>
std::uint32_t IdentifierSimpleParser<C, S>::EndParse(Data*) {
    return SP_TOKEN_COMPLETE;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(Identifier);

}  // namespace Kestra::HTML
