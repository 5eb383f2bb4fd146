#pragma once

#include <cstdint>
#include <type_traits>

#include "html/framework/TokenObserver.h"
#include "html/stateless/StatelessHTMLObserver.h"

namespace Kestra::Bench {

/// Does nothing at a token.
struct NoQuestion {
    void operator()() {}
};

/// Counts tokens, attributes and the characters of texts and names, so that every record is
/// read.
/// @tparam Question  called at every token
template <typename C, typename S, typename Question = NoQuestion>
class CountingObserver final : public HTML::TokenObserver<CountingObserver<C, S, Question>, C, S> {
public:
    template <typename Record>
    void OnToken(const Record* record) {
        ++tokens;
        if constexpr (std::is_same_v<Record, HTML::JunkData<C, S>>)
            junk += record->text->size();
        else
            characters += GetMainText(*record).size();
        if constexpr (requires { record->attributes; })
            attributes += record->attributes->size();
        else if constexpr (requires { record->tokens; })
            attributes += record->tokens->size();
        question();
    }

    std::uint64_t tokens = 0;
    std::uint64_t attributes = 0;  ///< and the items of declarations
    std::uint64_t characters = 0;
    std::uint64_t junk = 0;  ///< bytes
    Question question;

private:
    /// The name of a tag, a condition, or else the text.
    template <typename Record>
    static const S& GetMainText(const Record& record) {
        if constexpr (requires { record.name; })
            return *record.name;
        else if constexpr (requires { record.condition; })
            return *record.condition;
        else
            return *record.text;
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
