#include "html/framework/ParserObserver.h"

#include "html/framework/Instantiate.h"

namespace Kestra::HTML {

template <typename C, typename S>
ParserObserver<C, S>::ParserObserver() = default;

template <typename C, typename S>
ParserObserver<C, S>::ParserObserver(const ParserObserver&) = default;

template <typename C, typename S>
ParserObserver<C, S>& ParserObserver<C, S>::operator=(const ParserObserver&) = default;

template <typename C, typename S>
void ParserObserver<C, S>::OnStartParsing() {}

template <typename C, typename S>
void ParserObserver<C, S>::OnEndParsing() {}

template <typename C, typename S>
void ParserObserver<C, S>::OnBOM(const void*, std::uint64_t) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnCharset(StringNS::CharSet::Code) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnText(TextData<C, S>*) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnCComment(CCommentData<C, S>*) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnCPPComment(CPPCommentData<C, S>*) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnSQuoteString(SQuoteStringData<C, S>*) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnDQuoteString(DQuoteStringData<C, S>*) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnStartTag(StartTagData<C, S>*) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnShortTag(ShortTagData<C, S>*) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnEndTag(EndTagData<C, S>*) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnCDATATag(CDATATagData<C, S>*) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnConditionalTag(ConditionalTagData<C, S>*) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnCommentTag(CommentTagData<C, S>*) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnEntityTag(EntityTagData<C, S>*) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnExternTag(ExternTagData<C, S>*) {}

template <typename C, typename S>
void ParserObserver<C, S>::OnJSTagStart() {}

template <typename C, typename S>
void ParserObserver<C, S>::OnJSTagEnd() {}

template <typename C, typename S>
void ParserObserver<C, S>::OnCSSTagStart() {}

template <typename C, typename S>
void ParserObserver<C, S>::OnCSSTagEnd() {}

template <typename C, typename S>
void ParserObserver<C, S>::OnJunkData(JunkData<C, S>*) {}

KESTRA_HTML_INSTANTIATE(ParserObserver);

GenericParserObserver::GenericParserObserver() = default;

GenericParserObserver::GenericParserObserver(const GenericParserObserver&) = default;

GenericParserObserver& GenericParserObserver::operator=(const GenericParserObserver&) = default;

}  // namespace Kestra::HTML
