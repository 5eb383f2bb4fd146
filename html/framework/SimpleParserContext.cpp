#include "html/framework/SimpleParserContext.h"

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"

namespace Kestra::HTML {

template <typename C, typename S>
void SimpleParserContext<C, S>::Init() {
    buffer = nullptr;
    position = 0;
    length = 0;
    line = 1;
    column = 1;
}

template <typename C, typename S>
void SimpleParserContext<C, S>::MovePointer(std::uint64_t n) {
    for (; n > 0 && position < length; --n)
        Scan::Advance(*this);
}

KESTRA_HTML_INSTANTIATE_STRUCT(SimpleParserContext);

}  // namespace Kestra::HTML
