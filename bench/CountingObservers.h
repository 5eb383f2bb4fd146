#pragma once

#include <cstdint>

#include "html/framework/ParserObserver.h"
#include "html/stateless/StatelessHTMLObserver.h"

namespace Kestra::Bench {

/// Asks nothing at a token.
struct NoQuestion {
    void operator()() {}
};

/// Counts tokens, attributes and the characters of texts and names, so that every record is looked at.
/// @tparam Question  called at every token
template <typename C, typename S, typename Question = NoQuestion>
class CountingObserver final : public HTML::ParserObserver<C, S> {
public:
    void OnText(HTML::TextData<C, S>* data) override {
        Count(*data->text);
    }
    void OnCComment(HTML::CCommentData<C, S>* data) override {
        Count(*data->text);
    }
    void OnCPPComment(HTML::CPPCommentData<C, S>* data) override {
        Count(*data->text);
    }
    void OnSQuoteString(HTML::SQuoteStringData<C, S>* data) override {
        Count(*data->text);
    }
    void OnDQuoteString(HTML::DQuoteStringData<C, S>* data) override {
        Count(*data->text);
    }
    void OnStartTag(HTML::StartTagData<C, S>* data) override {
        Count(*data->name);
        attributes += data->attributes->size();
    }
    void OnShortTag(HTML::ShortTagData<C, S>* data) override {
        Count(*data->name);
        attributes += data->attributes->size();
    }
    void OnEndTag(HTML::EndTagData<C, S>* data) override {
        Count(*data->name);
        attributes += data->attributes->size();
    }
    void OnCDATATag(HTML::CDATATagData<C, S>* data) override {
        Count(*data->text);
    }
    void OnConditionalTag(HTML::ConditionalTagData<C, S>* data) override {
        Count(*data->condition);
    }
    void OnCommentTag(HTML::CommentTagData<C, S>* data) override {
        Count(*data->text);
    }
    void OnEntityTag(HTML::EntityTagData<C, S>* data) override {
        Count(*data->name);
        attributes += data->tokens->size();
    }
    void OnExternTag(HTML::ExternTagData<C, S>* data) override {
        Count(*data->name);
        attributes += data->attributes->size();
    }
    void OnJunkData(HTML::JunkData<C, S>* data) override {
        ++tokens;
        junk += data->text->size();
        question();
    }

    std::uint64_t tokens = 0;
    std::uint64_t attributes = 0;  ///< and the items of declarations
    std::uint64_t characters = 0;
    std::uint64_t junk = 0;  ///< bytes
    Question question;

private:
    void Count(const S& text) {
        ++tokens;
        characters += text.size();
        question();
    }
};

/// The same for the events of the stateless parser.
class CountingEventObserver final : public HTML::StatelessHTMLObserver {
public:
    void OnStartTag(const WideChar* name, const Attributes* list) override {
        Count(name);
        attributes += list->size();
    }
    void OnEndTag(const WideChar* name) override {
        Count(name);
    }
    void OnScript(const Attributes* list, const WideChar* body) override {
        Count(body);
        attributes += list->size();
    }
    void OnEntityTag(const WideChar* name, const Tokens* list) override {
        Count(name);
        attributes += list->size();
    }
    void OnExternTag(const WideChar* name, const Attributes* list) override {
        Count(name);
        attributes += list->size();
    }
    void OnComment(const WideChar* text) override {
        Count(text);
    }
    void OnText(const WideChar* text) override {
        Count(text);
    }
    void OnStyle(const Attributes* list, const WideChar* body) override {
        Count(body);
        attributes += list->size();
    }

    std::uint64_t tokens = 0;
    std::uint64_t attributes = 0;  ///< and the items of declarations
    std::uint64_t characters = 0;

private:
    void Count(WideStringView text) {
        ++tokens;
        characters += text.size();
    }
};

}  // namespace Kestra::Bench
