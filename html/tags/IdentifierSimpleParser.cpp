#include "html/tags/IdentifierSimpleParser.h"

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

namespace {

constexpr Scan::Classes ATTRIBUTE_NAME_STOPS = Scan::WHITE_SPACE | Scan::EQUALS_SIGN | Scan::GREATER_THAN;
constexpr Scan::Classes TAG_NAME_STOPS = ATTRIBUTE_NAME_STOPS | Scan::BRACKET | Scan::LESS_THAN;

}  // namespace

template <typename C, typename S>
std::uint32_t IdentifierSimpleParser<C, S>::BeginParse(Data* data) {
    data->text.clear();
    data->attributeNameMode = false;
    return SP_NEED_MORE_DATA;
}

template <typename C, typename S>
std::uint32_t IdentifierSimpleParser<C, S>::Parse(SimpleParserContext<C, S>* context, Data* data) {
    data->text.append(Scan::RunUntil(*context, data->attributeNameMode ? ATTRIBUTE_NAME_STOPS : TAG_NAME_STOPS));
    return Scan::AtEnd(*context) ? SP_NEED_MORE_DATA : SP_TOKEN_COMPLETE;
}

template <typename C, typename S>
std::uint32_t IdentifierSimpleParser<C, S>::EndParse(Data*) {
    return SP_TOKEN_COMPLETE;
}

KESTRA_HTML_INSTANTIATE_RECOGNIZER(Identifier);

}  // namespace Kestra::HTML
