#pragma once

#include "html/framework/ParserObserver.h"
#include "html/framework/TokenObserver.h"

/// @file
/// The observer between the parser and the observer of a host. Not installed.

namespace Kestra::HTML {

class RewriterEngine;

/// Forwards every callback to the engine and, through it, to the observer of the host.
template <typename C, typename S>
class RewriterObserver final : public EventObserver<RewriterObserver<C, S>, C, S> {
public:
    explicit RewriterObserver(RewriterEngine* owner);

    /// @param observer  borrowed; null for none
    void SetHost(ParserObserver<C, S>* observer);
    ParserObserver<C, S>* GetHost() const;

    void OnBOM(const void* bytes, std::uint64_t size) override;
    void OnCharset(StringNS::CharSet::Code code) override;
    void OnEvent(ObserverEvent event);
    template <template <typename, typename> class Record>
    void OnToken(Record<C, S>* record);

private:
    template <typename Record>
    void CallBack(Record* record);
    template <typename Callback>
    void Notify(Callback callback);

    RewriterEngine* engine;
    ParserObserver<C, S>* host = nullptr;
};

}  // namespace Kestra::HTML
