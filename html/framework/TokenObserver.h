#pragma once

#include "html/framework/ParserObserver.h"
#include "html/framework/RecordFields.h"

/// @file
/// Observers that treat all kinds of tokens alike. Not installed.

namespace Kestra::HTML {

/// Passes the record of each token to `OnToken(record)` of `Derived`, a template over the record.
template <typename Derived, typename C, typename S>
class TokenObserver : public ParserObserver<C, S> {
public:
#define OVERRIDE(NAME, RECORD, WORD)                  \
    void On##NAME(RECORD<C, S>* record) override {    \
        static_cast<Derived*>(this)->OnToken(record); \
    }
    KESTRA_HTML_FOR_EACH_KIND(OVERRIDE)
#undef OVERRIDE
};

/// Passes the operations without record and argument as well, to `OnEvent(event)`.
template <typename Derived, typename C, typename S>
class EventObserver : public TokenObserver<Derived, C, S> {
public:
#define OVERRIDE(NAME, WORD)                                       \
    void On##NAME() override {                                     \
        static_cast<Derived*>(this)->OnEvent(ObserverEvent::NAME); \
    }
    KESTRA_HTML_FOR_EACH_EVENT(OVERRIDE)
#undef OVERRIDE
};

/// Passes every operation to `OnCallback(call)`: `call(observer)` is the same call for another
/// observer.
template <typename Derived, typename C, typename S>
class CallbackObserver : public EventObserver<CallbackObserver<Derived, C, S>, C, S> {
public:
    void OnBOM(const void* bytes, std::uint64_t size) override {
        Forward([bytes, size](ParserObserver<C, S>* observer) { observer->OnBOM(bytes, size); });
    }

    void OnCharset(StringNS::CharSet::Code code) override {
        Forward([code](ParserObserver<C, S>* observer) { observer->OnCharset(code); });
    }

    void OnEvent(ObserverEvent event) {
        Forward([event](ParserObserver<C, S>* observer) { CallObserver(observer, event); });
    }

    template <typename Record>
    void OnToken(Record* record) {
        Forward([record](ParserObserver<C, S>* observer) { CallObserver(observer, record); });
    }

private:
    template <typename Call>
    void Forward(Call call) {
        static_cast<Derived*>(this)->OnCallback(call);
    }
};

}  // namespace Kestra::HTML
