#include "html/framework/SimpleParser.h"

#include "html/framework/Instantiate.h"

namespace Kestra::HTML {

template <typename C, typename S>
SimpleParserData<C, S>::SimpleParserData() = default;

template <typename C, typename S>
SimpleParserData<C, S>::SimpleParserData(const SimpleParserData&) = default;

template <typename C, typename S>
SimpleParserData<C, S>& SimpleParserData<C, S>::operator=(const SimpleParserData&) = default;

template <typename C, typename S>
SimpleParserData<C, S>::~SimpleParserData() = default;

KESTRA_HTML_INSTANTIATE(SimpleParserData);

}  // namespace Kestra::HTML
