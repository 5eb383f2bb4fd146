#include "html/output/ParserObserverOutput.h"

#include "html/framework/Instantiate.h"

namespace Kestra::HTML {

namespace {

/// Puts the parts of a record out to a handler, piece by piece.
template <typename C, typename S>
class Pieces {
public:
    explicit Pieces(ParserObserverOutputHandler* sink) : handler(sink) {}

    /// Fixed characters, one piece each.
    void Punctuation(const char* characters) {
        for (; *characters != 0; ++characters) {
            const C character = static_cast<C>(*characters);
            handler->Write(&character, sizeof(C), true);
        }
    }

    void String(const S* text) {
        Write(text, sizeof(C), true);
    }

    /// The body of a section: as many bytes as it has characters, so only the first half of a wide one; hosts rely on it.
    void Body(const S* text) {
        Write(text, 1, false);
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

private:
    void Write(const S* text, std::uint64_t bytesPerCharacter, bool isMarkup) {
        static constexpr C NOTHING[1] = {};
        if (text == nullptr)
            handler->Write(NOTHING, 0, isMarkup);
        else
            handler->Write(text->data(), text->size() * bytesPerCharacter, isMarkup);
    }

    ParserObserverOutputHandler* handler;
};

}  // namespace

template <typename C, typename S>
ParserObserverOutput<C, S>::MyParserObserverOutputHandler::MyParserObserverOutputHandler(ParserObserverOutput* owningOutput)
    : owner(owningOutput) {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::MyParserObserverOutputHandler::Bind(ParserObserverOutput* newOwner) {
    owner = newOwner;
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::MyParserObserverOutputHandler::Write(const void* data, std::uint64_t byteCount, bool isMarkup) {
    if (owner != nullptr)
        owner->OnOutput(data, byteCount, isMarkup);
}

template <typename C, typename S>
ParserObserverOutput<C, S>::ParserObserverOutput() : handler(this) {}

template <typename C, typename S>
ParserObserverOutput<C, S>::ParserObserverOutput(const ParserObserverOutput& other) : ParserObserver<C, S>(other), handler(this) {}

template <typename C, typename S>
ParserObserverOutput<C, S>& ParserObserverOutput<C, S>::operator=(const ParserObserverOutput& other) {
    ParserObserver<C, S>::operator=(other);
    return *this;
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetTextOutput(const TextData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<C, S> pieces(sink);
    pieces.String(data->text);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetCCommentOutput(const CCommentData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<C, S> pieces(sink);
    pieces.Punctuation("/*");
    pieces.String(data->text);
    pieces.Punctuation("*/");
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetCPPCommentOutput(const CPPCommentData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<C, S> pieces(sink);
    pieces.Punctuation("//");
    pieces.String(data->text);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetSQuoteStringOutput(const SQuoteStringData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<C, S> pieces(sink);
    pieces.Punctuation("'");
    pieces.String(data->text);
    pieces.Punctuation("'");
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetDQuoteStringOutput(const DQuoteStringData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<C, S> pieces(sink);
    pieces.Punctuation("\"");
    pieces.String(data->text);
    pieces.Punctuation("\"");
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetStartTagOutput(const StartTagData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<C, S> pieces(sink);
    pieces.Punctuation("<");
    pieces.String(data->prefix);
    pieces.String(data->name);
    pieces.Attributes(data->attributes);
    if (data->closed) {
        pieces.String(data->suffix);
        pieces.Punctuation(">");
    }
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetShortTagOutput(const ShortTagData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<C, S> pieces(sink);
    pieces.Punctuation("<");
    pieces.String(data->prefix);
    pieces.String(data->name);
    pieces.Attributes(data->attributes);
    pieces.String(data->suffix);
    pieces.Punctuation("/");
    if (data->closed)
        pieces.Punctuation(">");
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetEndTagOutput(const EndTagData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<C, S> pieces(sink);
    pieces.Punctuation("</");
    pieces.String(data->prefix);
    pieces.String(data->name);
    pieces.String(data->afterName);
    if (data->attributes != nullptr && !data->attributes->empty()) {
        pieces.Attributes(data->attributes);
        pieces.String(data->suffix);
    }
    if (data->slashBeforeClose)
        pieces.Punctuation("/");
    if (data->closed)
        pieces.Punctuation(">");
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetCDATATagOutput(const CDATATagData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<C, S> pieces(sink);
    pieces.Punctuation("<![");
    pieces.String(data->keyword);
    pieces.Body(data->text);
    if (data->closed)
        pieces.Punctuation("]]>");
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetConditionalTagOutput(const ConditionalTagData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<C, S> pieces(sink);
    pieces.Punctuation("<![");
    pieces.String(data->keyword);
    pieces.Body(data->condition);
    if (data->bracketClosed)
        pieces.Punctuation("]");
    if (data->tagClosed) {
        pieces.Body(data->tail);
        pieces.Punctuation(">");
    }
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetCommentTagOutput(const CommentTagData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<C, S> pieces(sink);
    pieces.Punctuation("<!--");
    pieces.Body(data->text);
    if (data->closed)
        pieces.Punctuation("-->");
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetEntityTagOutput(const EntityTagData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<C, S> pieces(sink);
    pieces.Punctuation("<!");
    pieces.String(data->prefix);
    pieces.String(data->name);
    if (data->tokens != nullptr) {
        for (const EntityToken<C, S>& token : *data->tokens) {
            pieces.String(&token.prefix);
            pieces.Quoted(token.value, token.quote);
        }
    }
    pieces.String(data->suffix);
    pieces.Punctuation(">");
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetExternTagOutput(const ExternTagData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<C, S> pieces(sink);
    if (data->freeStyle) {
        pieces.String(data->text);
        return;
    }
    pieces.Punctuation("<?");
    pieces.String(data->prefix);
    pieces.String(data->name);
    pieces.Attributes(data->attributes);
    pieces.String(data->suffix);
    pieces.Punctuation(data->slashBeforeClose ? "/>" : "?>");
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::GetJunkDataOutput(const JunkData<C, S>* data, ParserObserverOutputHandler* sink) {
    Pieces<char, std::string>(sink).Body(data->text);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnStartParsing() {
    handler.Bind(this);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnEndParsing() {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnBOM(const void* bytes, std::uint64_t size) {
    handler.Write(bytes, size, false);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCharset(StringNS::CharSet::Code) {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnText(TextData<C, S>* data) {
    GetTextOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCComment(CCommentData<C, S>* data) {
    GetCCommentOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCPPComment(CPPCommentData<C, S>* data) {
    GetCPPCommentOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnSQuoteString(SQuoteStringData<C, S>* data) {
    GetSQuoteStringOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnDQuoteString(DQuoteStringData<C, S>* data) {
    GetDQuoteStringOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnStartTag(StartTagData<C, S>* data) {
    GetStartTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnShortTag(ShortTagData<C, S>* data) {
    GetShortTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnEndTag(EndTagData<C, S>* data) {
    GetEndTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCDATATag(CDATATagData<C, S>* data) {
    GetCDATATagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnConditionalTag(ConditionalTagData<C, S>* data) {
    GetConditionalTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCommentTag(CommentTagData<C, S>* data) {
    GetCommentTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnEntityTag(EntityTagData<C, S>* data) {
    GetEntityTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnExternTag(ExternTagData<C, S>* data) {
    GetExternTagOutput(data, &handler);
}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnJSTagStart() {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnJSTagEnd() {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCSSTagStart() {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnCSSTagEnd() {}

template <typename C, typename S>
void ParserObserverOutput<C, S>::OnJunkData(JunkData<C, S>* data) {
    GetJunkDataOutput(data, &handler);
}

KESTRA_HTML_INSTANTIATE(ParserObserverOutput);

GenericParserObserverOutput::GenericParserObserverOutput() = default;

GenericParserObserverOutput::GenericParserObserverOutput(const GenericParserObserverOutput&) = default;

GenericParserObserverOutput& GenericParserObserverOutput::operator=(const GenericParserObserverOutput&) = default;

}  // namespace Kestra::HTML
