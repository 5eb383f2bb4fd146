#include "html/rewrite/RewriterObserver.h"

#include "html/framework/Instantiate.h"
#include "html/parser/RecordCalls.h"
#include "html/rewrite/RewriterEngine.h"

namespace Kestra::HTML {

template <typename C, typename S>
RewriterObserver<C, S>::RewriterObserver(RewriterEngine* owner) : engine(owner) {}

template <typename C, typename S>
void RewriterObserver<C, S>::SetHost(ParserObserver<C, S>* observer) {
    host = observer;
}

template <typename C, typename S>
ParserObserver<C, S>* RewriterObserver<C, S>::GetHost() const {
    return host;
}

/// A callback without a record.
template <typename C, typename S>
template <typename Callback>
void RewriterObserver<C, S>::Notify(Callback callback) {
    if (host == nullptr || engine->IsOverLimit())
        return;
    engine->BeginToken(TOKEN_NONE, false);
    engine->Call([&] { callback(host); });
    engine->FinishToken();
}

template <typename C, typename S>
template <typename Record>
void RewriterObserver<C, S>::Deliver(TokenKind kind, Record* record) {
    if (engine->IsOverLimit())
        return;
    bool hasAttributes = false;
    if constexpr (std::is_same_v<Record, EndTagData<C, S>>)
        hasAttributes = true;
    else if constexpr (std::is_same_v<Record, ExternTagData<C, S>>)
        hasAttributes = !record->freeStyle;
    engine->BeginToken(kind, hasAttributes);
    if constexpr (std::is_same_v<Record, EndTagData<C, S>>)
        engine->CloseElements(*record->name);
    const bool hasCallbacks = engine->HasCallbacks();
    if (hasCallbacks)
        engine->FindCallbacks();
    engine->Call([&] {
        if (host != nullptr)
            CallObserver(host, record);
        if (hasCallbacks)
            engine->CallBack();
    });
    engine->FinishToken();
}

template <typename C, typename S>
template <typename Record>
void RewriterObserver<C, S>::DeliverOpeningTag(TokenKind kind, Record* record) {
    if (engine->IsOverLimit())
        return;
    engine->BeginToken(kind, true);
    if (!engine->OpenElement(*record->name, record->attributes->size()))
        return;
    const bool hasCallbacks = engine->HasCallbacks();
    if (hasCallbacks)
        engine->FindCallbacks();
    engine->Call([&] {
        if (host != nullptr)
            CallObserver(host, record);
        if (hasCallbacks)
            engine->CallBack();
    });
    engine->FinishToken();
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnStartParsing() {
    engine->BindFlavour();
    Notify([](auto* observer) { observer->OnStartParsing(); });
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnEndParsing() {
    Notify([](auto* observer) { observer->OnEndParsing(); });
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnBOM(const void* bytes, std::uint64_t size) {
    Notify([bytes, size](auto* observer) { observer->OnBOM(bytes, size); });
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnCharset(StringNS::CharSet::Code code) {
    Notify([code](auto* observer) { observer->OnCharset(code); });
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnText(TextData<C, S>* data) {
    Deliver(TOKEN_TEXT, data);
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnCComment(CCommentData<C, S>* data) {
    Deliver(TOKEN_C_COMMENT, data);
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnCPPComment(CPPCommentData<C, S>* data) {
    Deliver(TOKEN_CPP_COMMENT, data);
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnSQuoteString(SQuoteStringData<C, S>* data) {
    Deliver(TOKEN_S_QUOTE_STRING, data);
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnDQuoteString(DQuoteStringData<C, S>* data) {
    Deliver(TOKEN_D_QUOTE_STRING, data);
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnStartTag(StartTagData<C, S>* data) {
    DeliverOpeningTag(TOKEN_START_TAG, data);
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnShortTag(ShortTagData<C, S>* data) {
    DeliverOpeningTag(TOKEN_SHORT_TAG, data);
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnEndTag(EndTagData<C, S>* data) {
    Deliver(TOKEN_END_TAG, data);
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnCDATATag(CDATATagData<C, S>* data) {
    Deliver(TOKEN_CDATA_TAG, data);
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnConditionalTag(ConditionalTagData<C, S>* data) {
    Deliver(TOKEN_CONDITIONAL_TAG, data);
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnCommentTag(CommentTagData<C, S>* data) {
    Deliver(TOKEN_COMMENT_TAG, data);
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnEntityTag(EntityTagData<C, S>* data) {
    Deliver(TOKEN_ENTITY_TAG, data);
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnExternTag(ExternTagData<C, S>* data) {
    Deliver(TOKEN_EXTERN_TAG, data);
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnJSTagStart() {
    Notify([](auto* observer) { observer->OnJSTagStart(); });
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnJSTagEnd() {
    Notify([](auto* observer) { observer->OnJSTagEnd(); });
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnCSSTagStart() {
    Notify([](auto* observer) { observer->OnCSSTagStart(); });
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnCSSTagEnd() {
    Notify([](auto* observer) { observer->OnCSSTagEnd(); });
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnJunkData(JunkData<C, S>* data) {
    Deliver(TOKEN_JUNK, data);
}

KESTRA_HTML_INSTANTIATE(RewriterObserver);

}  // namespace Kestra::HTML
