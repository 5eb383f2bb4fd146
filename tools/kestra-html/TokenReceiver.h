#pragma once

#include <cstdint>

#include "html/framework/ParserObserver.h"
#include "html/framework/TokenRecords.h"
#include "platform/Characters.h"
#include "tools/kestra-html/TokenKind.h"

namespace Kestra::Tool {

/// A wide observer that treats all kinds of tokens alike: calls `OnToken(kind, record)` of the class that derives from it, a template
/// over the record.
///
/// It is a wide one because only a wide observer is given every token of both parsers: the 8-bit parser keeps script line comments from
/// an 8-bit observer.
template <typename Receiver>
class TokenReceiver : public HTML::ParserObserver<WideChar, WideString> {
public:
    using C = WideChar;
    using S = WideString;

    void OnText(HTML::TextData<C, S>* data) override {
        Pass(TokenKind::TEXT, *data);
    }
    void OnCComment(HTML::CCommentData<C, S>* data) override {
        Pass(TokenKind::C_COMMENT, *data);
    }
    void OnCPPComment(HTML::CPPCommentData<C, S>* data) override {
        Pass(TokenKind::CPP_COMMENT, *data);
    }
    void OnSQuoteString(HTML::SQuoteStringData<C, S>* data) override {
        Pass(TokenKind::S_QUOTE_STRING, *data);
    }
    void OnDQuoteString(HTML::DQuoteStringData<C, S>* data) override {
        Pass(TokenKind::D_QUOTE_STRING, *data);
    }
    void OnStartTag(HTML::StartTagData<C, S>* data) override {
        Pass(TokenKind::START_TAG, *data);
    }
    void OnShortTag(HTML::ShortTagData<C, S>* data) override {
        Pass(TokenKind::SHORT_TAG, *data);
    }
    void OnEndTag(HTML::EndTagData<C, S>* data) override {
        Pass(TokenKind::END_TAG, *data);
    }
    void OnCDATATag(HTML::CDATATagData<C, S>* data) override {
        Pass(TokenKind::CDATA_TAG, *data);
    }
    void OnConditionalTag(HTML::ConditionalTagData<C, S>* data) override {
        Pass(TokenKind::CONDITIONAL_TAG, *data);
    }
    void OnCommentTag(HTML::CommentTagData<C, S>* data) override {
        Pass(TokenKind::COMMENT_TAG, *data);
    }
    void OnEntityTag(HTML::EntityTagData<C, S>* data) override {
        Pass(TokenKind::ENTITY_TAG, *data);
    }
    void OnExternTag(HTML::ExternTagData<C, S>* data) override {
        Pass(TokenKind::EXTERN_TAG, *data);
    }
    void OnJunkData(HTML::JunkData<C, S>* data) override {
        Pass(TokenKind::JUNK, *data);
    }

private:
    template <typename Record>
    void Pass(TokenKind kind, const Record& record) {
        static_cast<Receiver*>(this)->OnToken(kind, record);
    }
};

/// Counts the tokens of a parse.
class TokenCounter final : public TokenReceiver<TokenCounter> {
public:
    std::uint64_t GetCount() const {
        return count;
    }

    template <typename Record>
    void OnToken(TokenKind, const Record&) {
        ++count;
    }

private:
    std::uint64_t count = 0;
};

}  // namespace Kestra::Tool
