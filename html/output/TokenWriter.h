#pragma once

#include <cstddef>
#include <cstdint>

#include "html/framework/RecordFields.h"
#include "html/framework/TokenRecords.h"

/// @file
/// The serializer's code, for any sink. Not installed.

namespace Kestra::HTML {

/// Writes records back as markup, part by part. A sink has two operations:
///
///     void Punctuation(const C (&characters)[COUNT]);                      // for every `COUNT` from 1 on
///     void Piece(const void* data, std::size_t byteCount, bool isMarkup);  // a string or "", never null
template <typename C, typename S, typename Sink>
class TokenWriter {
public:
    explicit TokenWriter(Sink* receivingSink) : sink(receivingSink) {}

    /// A record of a kind without an overload of its own: its strings and lists in their order.
    template <template <typename, typename> class Record>
    void Write(const Record<C, S>& data) {
        ForEachField(data, [this](const char*, const auto& value) { this->Field(value); });
    }

    void Write(const CCommentData<C, S>& data) {
        Punctuation("/*");
        String(data.text);
        Punctuation("*/");
    }

    void Write(const CPPCommentData<C, S>& data) {
        Punctuation("//");
        String(data.text);
    }

    void Write(const SQuoteStringData<C, S>& data) {
        Punctuation("'");
        String(data.text);
        Punctuation("'");
    }

    void Write(const DQuoteStringData<C, S>& data) {
        Punctuation("\"");
        String(data.text);
        Punctuation("\"");
    }

    void Write(const StartTagData<C, S>& data) {
        Punctuation("<");
        String(data.prefix);
        String(data.name);
        Attributes(data.attributes);
        if (data.closed) {
            String(data.suffix);
            Punctuation(">");
        }
    }

    void Write(const ShortTagData<C, S>& data) {
        Punctuation("<");
        String(data.prefix);
        String(data.name);
        Attributes(data.attributes);
        String(data.suffix);
        Punctuation("/");
        if (data.closed)
            Punctuation(">");
    }

    void Write(const EndTagData<C, S>& data) {
        Punctuation("</");
        String(data.prefix);
        String(data.name);
        String(data.afterName);
        if (data.attributes != nullptr && !data.attributes->empty()) {
            Attributes(data.attributes);
            String(data.suffix);
        }
        if (data.slashBeforeClose)
            Punctuation("/");
        if (data.closed)
            Punctuation(">");
    }

    void Write(const CDATATagData<C, S>& data) {
        Punctuation("<![");
        String(data.keyword);
        Body(data.text);
        if (data.closed)
            Punctuation("]]>");
    }

    void Write(const ConditionalTagData<C, S>& data) {
        Punctuation("<![");
        String(data.keyword);
        Body(data.condition);
        if (data.bracketClosed)
            Punctuation("]");
        if (data.tagClosed) {
            Body(data.tail);
            Punctuation(">");
        }
    }

    void Write(const CommentTagData<C, S>& data) {
        Punctuation("<!--");
        Body(data.text);
        if (data.closed)
            Punctuation("-->");
    }

    void Write(const EntityTagData<C, S>& data) {
        Punctuation("<!");
        String(data.prefix);
        String(data.name);
        Tokens(data.tokens);
        String(data.suffix);
        Punctuation(">");
    }

    void Write(const ExternTagData<C, S>& data) {
        if (data.freeStyle) {
            String(data.text);
            return;
        }
        Punctuation("<?");
        String(data.prefix);
        String(data.name);
        Attributes(data.attributes);
        String(data.suffix);
        if (data.slashBeforeClose)
            Punctuation("/>");
        else
            Punctuation("?>");
    }

    void Write(const JunkData<C, S>& data) {
        Body(data.text);
    }

private:
    template <std::size_t SIZE>
    void Punctuation(const char (&text)[SIZE]) {
        C characters[SIZE - 1];
        for (std::size_t i = 0; i < SIZE - 1; ++i)
            characters[i] = static_cast<C>(text[i]);
        sink->Punctuation(characters);
    }

    void String(const S* text) {
        Part(text, sizeof(C), true);
    }

    void Field(const S* text) {
        String(text);
    }

    void Field(const Vector<Attribute<C, S>>* attributes) {
        Attributes(attributes);
    }

    void Field(const Vector<EntityToken<C, S>>* tokens) {
        Tokens(tokens);
    }

    void Field(bool) {}

    /// The body of a section: as many bytes as it has characters, so only the first half of a wide
    /// one (kept).
    template <typename Text>
    void Body(const Text* text) {
        Part(text, 1, false);
    }

    template <typename Text>
    void Part(const Text* text, std::size_t bytesPerCharacter, bool isMarkup) {
        static constexpr typename Text::value_type NOTHING[1] = {};
        if (text == nullptr)
            sink->Piece(NOTHING, 0, isMarkup);
        else
            sink->Piece(text->data(), text->size() * bytesPerCharacter, isMarkup);
    }

    void Quoted(const S& value, std::uint32_t quote) {
        switch (quote) {
            case QUOTE_NONE:
                String(&value);
                break;
            case QUOTE_SINGLE:
                Punctuation("'");
                String(&value);
                Punctuation("'");
                break;
            case QUOTE_DOUBLE:
                Punctuation("\"");
                String(&value);
                Punctuation("\"");
                break;
        }
    }

    void Attributes(const Vector<Attribute<C, S>>* attributes) {
        if (attributes == nullptr)
            return;
        for (const Attribute<C, S>& attribute : *attributes) {
            String(&attribute.prefix);
            String(&attribute.name);
            if (!attribute.hasValue)
                continue;
            String(&attribute.beforeEquals);
            Punctuation("=");
            String(&attribute.afterEquals);
            Quoted(attribute.value, attribute.quote);
        }
    }

    void Tokens(const Vector<EntityToken<C, S>>* tokens) {
        if (tokens == nullptr)
            return;
        for (const EntityToken<C, S>& token : *tokens) {
            String(&token.prefix);
            Quoted(token.value, token.quote);
        }
    }

    Sink* sink;
};

}  // namespace Kestra::HTML
