#include "html/rewrite/RewriterObserver.h"

#include "html/framework/Instantiate.h"
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
template <template <typename, typename> class Record>
void RewriterObserver<C, S>::OnToken(Record<C, S>* record) {
    constexpr bool IS_OPENING =
        std::is_same_v<Record<C, S>, StartTagData<C, S>> || std::is_same_v<Record<C, S>, ShortTagData<C, S>>;
    constexpr bool IS_END = std::is_same_v<Record<C, S>, EndTagData<C, S>>;
    if (engine->IsOverLimit())
        return;
    bool hasAttributes = IS_OPENING || IS_END;
    if constexpr (std::is_same_v<Record<C, S>, ExternTagData<C, S>>)
        hasAttributes = !record->freeStyle;
    engine->BeginToken(RecordKind<Record>::KIND_OF_TOKEN, hasAttributes);
    if constexpr (IS_OPENING) {
        if (!engine->OpenElement(*record->name, record->attributes->size()))
            return;
    } else if constexpr (IS_END) {
        engine->CloseElements(*record->name);
    }
    CallBack(record);
    engine->FinishToken();
}

/// First the observer of the host, then its callbacks for this token.
template <typename C, typename S>
template <typename Record>
void RewriterObserver<C, S>::CallBack(Record* record) {
    const bool hasCallbacks = engine->HasCallbacks();
    if (hasCallbacks)
        engine->FindCallbacks();
    engine->Call([&] {
        if (host != nullptr)
            CallObserver(host, record);
        if (hasCallbacks)
            engine->CallBack();
    });
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnEvent(ObserverEvent event) {
    if (event == ObserverEvent::StartParsing)
        engine->BindFlavour();
    Notify([event](auto* observer) { CallObserver(observer, event); });
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnBOM(const void* bytes, std::uint64_t size) {
    Notify([bytes, size](auto* observer) { observer->OnBOM(bytes, size); });
}

template <typename C, typename S>
void RewriterObserver<C, S>::OnCharset(StringNS::CharSet::Code code) {
    Notify([code](auto* observer) { observer->OnCharset(code); });
}

KESTRA_HTML_INSTANTIATE(RewriterObserver);

#define INSTANTIATE(NAME, RECORD, WORD)                                                     \
    template void RewriterObserver<char, std::string>::OnToken(RECORD<char, std::string>*); \
    template void RewriterObserver<WideChar, WideString>::OnToken(RECORD<WideChar, WideString>*);
KESTRA_HTML_FOR_EACH_KIND(INSTANTIATE)
#undef INSTANTIATE

}  // namespace Kestra::HTML
