#pragma once

#include "html/framework/ParserObserver.h"
#include "html/framework/TokenKind.h"

/// @file
/// Between the parser and the observer of a host. Not installed.

namespace Kestra::HTML {

class RewriterEngine;

/// Hands every callback on to the engine and, through it, to the observer of the host.
template <typename C, typename S>
class RewriterObserver final : public ParserObserver<C, S> {
public:
    explicit RewriterObserver(RewriterEngine* owner);

    /// @param observer  borrowed; null for none
    void SetHost(ParserObserver<C, S>* observer);
    ParserObserver<C, S>* GetHost() const;

    void OnStartParsing() override;
    void OnEndParsing() override;
    void OnBOM(const void* bytes, std::uint64_t size) override;
    void OnCharset(StringNS::CharSet::Code code) override;
    void OnText(TextData<C, S>* data) override;
    void OnCComment(CCommentData<C, S>* data) override;
    void OnCPPComment(CPPCommentData<C, S>* data) override;
    void OnSQuoteString(SQuoteStringData<C, S>* data) override;
    void OnDQuoteString(DQuoteStringData<C, S>* data) override;
    void OnStartTag(StartTagData<C, S>* data) override;
    void OnShortTag(ShortTagData<C, S>* data) override;
    void OnEndTag(EndTagData<C, S>* data) override;
    void OnCDATATag(CDATATagData<C, S>* data) override;
    void OnConditionalTag(ConditionalTagData<C, S>* data) override;
    void OnCommentTag(CommentTagData<C, S>* data) override;
    void OnEntityTag(EntityTagData<C, S>* data) override;
    void OnExternTag(ExternTagData<C, S>* data) override;
    void OnJSTagStart() override;
    void OnJSTagEnd() override;
    void OnCSSTagStart() override;
    void OnCSSTagEnd() override;
    void OnJunkData(JunkData<C, S>* data) override;

private:
    template <typename Record>
    void Deliver(TokenKind kind, Record* record);
    template <typename Record>
    void DeliverOpeningTag(TokenKind kind, Record* record);
    template <typename Callback>
    void Notify(Callback callback);

    RewriterEngine* engine;
    ParserObserver<C, S>* host = nullptr;
};

}  // namespace Kestra::HTML
