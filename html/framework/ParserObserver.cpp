#include "html/framework/ParserObserver.h"

#include "html/framework/Instantiate.h"
#include "html/framework/RecordFields.h"

namespace Kestra::HTML {

template <typename C, typename S>
ParserObserver<C, S>::ParserObserver() = default;

template <typename C, typename S>
ParserObserver<C, S>::ParserObserver(const ParserObserver&) = default;

template <typename C, typename S>
ParserObserver<C, S>& ParserObserver<C, S>::operator=(const ParserObserver&) = default;

#define DO_NOTHING_AT_EVENT(NAME, WORD) \
    template <typename C, typename S>   \
    void ParserObserver<C, S>::On##NAME() {}
KESTRA_HTML_FOR_EACH_EVENT(DO_NOTHING_AT_EVENT)
#undef DO_NOTHING_AT_EVENT

template <typename C, typename S>
void ParserObserver<C, S>::OnBOM(const void*, std::uint64_t) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnCharset(StringNS::CharSet::Code) {}

#define DO_NOTHING_AT_TOKEN(NAME, RECORD, WORD) \
    template <typename C, typename S>           \
    void ParserObserver<C, S>::On##NAME(RECORD<C, S>*) {}
KESTRA_HTML_FOR_EACH_KIND(DO_NOTHING_AT_TOKEN)
#undef DO_NOTHING_AT_TOKEN

KESTRA_HTML_INSTANTIATE(ParserObserver);

GenericParserObserver::GenericParserObserver() = default;

GenericParserObserver::GenericParserObserver(const GenericParserObserver&) = default;

GenericParserObserver& GenericParserObserver::operator=(const GenericParserObserver&) = default;

}  // namespace Kestra::HTML
