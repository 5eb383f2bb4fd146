#include "html/stateless/StatelessHTMLObserver.h"

#include <cstddef>

#include "html/stateless/StatelessHTMLParser.h"

namespace Kestra::HTML {

namespace {

/// Calls a callback with the values of an event. The virtual call reaches the overrides of a host.
template <auto CALLBACK>
struct Trampoline;

template <typename... Arguments, void (StatelessHTMLObserver::*CALLBACK)(const Arguments*...)>
struct Trampoline<CALLBACK> {
    static void Call(Base::Observer* observer, const void* const* arguments) {
        CallWith(static_cast<StatelessHTMLObserver*>(observer), arguments, std::index_sequence_for<Arguments...>());
    }

private:
    template <std::size_t... INDEX>
    static void CallWith(StatelessHTMLObserver* observer, [[maybe_unused]] const void* const* arguments,
                         std::index_sequence<INDEX...>) {
        (observer->*CALLBACK)(static_cast<const Arguments*>(arguments[INDEX])...);
    }
};

template <auto CALLBACK>
void Bind(Base::MultiDelegate* delegate, unsigned long id, Base::Observer* observer) {
    delegate->Bind(id, observer, &Trampoline<CALLBACK>::Call);
}

}  // namespace

StatelessHTMLObserver::StatelessHTMLObserver() = default;

StatelessHTMLObserver::StatelessHTMLObserver(const StatelessHTMLObserver&) = default;

StatelessHTMLObserver& StatelessHTMLObserver::operator=(const StatelessHTMLObserver&) = default;

StatelessHTMLObserver::~StatelessHTMLObserver() = default;

void StatelessHTMLObserver::RegisterCalls(Base::MultiDelegate* delegate) {
    Bind<&StatelessHTMLObserver::OnStartParsing>(delegate, StatelessHTMLParser::ID_START_PARSING, this);
    Bind<&StatelessHTMLObserver::OnStopParsing>(delegate, StatelessHTMLParser::ID_STOP_PARSING, this);
    Bind<&StatelessHTMLObserver::OnStartTag>(delegate, StatelessHTMLParser::ID_START_TAG, this);
    Bind<&StatelessHTMLObserver::OnEndTag>(delegate, StatelessHTMLParser::ID_END_TAG, this);
    Bind<&StatelessHTMLObserver::OnScript>(delegate, StatelessHTMLParser::ID_SCRIPT, this);
    Bind<&StatelessHTMLObserver::OnExternTag>(delegate, StatelessHTMLParser::ID_EXTERN_TAG, this);
    Bind<&StatelessHTMLObserver::OnEntityTag>(delegate, StatelessHTMLParser::ID_ENTITY_TAG, this);
    Bind<&StatelessHTMLObserver::OnComment>(delegate, StatelessHTMLParser::ID_COMMENT, this);
    Bind<&StatelessHTMLObserver::OnText>(delegate, StatelessHTMLParser::ID_TEXT, this);
    Bind<&StatelessHTMLObserver::OnStyle>(delegate, StatelessHTMLParser::ID_STYLE, this);
}

void StatelessHTMLObserver::OnStartParsing() {}

void StatelessHTMLObserver::OnStopParsing() {}

void StatelessHTMLObserver::OnStartTag(const WideChar*, const Attributes*) {}

void StatelessHTMLObserver::OnEndTag(const WideChar*) {}

void StatelessHTMLObserver::OnScript(const Attributes*, const WideChar*) {}

void StatelessHTMLObserver::OnExternTag(const WideChar*, const Attributes*) {}

void StatelessHTMLObserver::OnEntityTag(const WideChar*, const Tokens*) {}

void StatelessHTMLObserver::OnComment(const WideChar*) {}

void StatelessHTMLObserver::OnText(const WideChar*) {}

void StatelessHTMLObserver::OnStyle(const Attributes*, const WideChar*) {}

}  // namespace Kestra::HTML
