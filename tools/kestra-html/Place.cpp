#include "tools/kestra-html/Place.h"

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "html/output/ParserObserverOutput.h"
#include "platform/Characters.h"

namespace Kestra::Tool {

template <typename C, typename S>
std::uint64_t Place<C, S>::GetLine() const {
    return line;
}

template <typename C, typename S>
std::uint64_t Place<C, S>::GetColumn() const {
    return column;
}

template <typename C, typename S>
void Place<C, S>::SetUtf16(bool isUtf16Document) {
    isUtf16 = isUtf16Document;
}

template <typename C, typename S>
void Place<C, S>::Pass(const HTML::TextData<C, S>& data) {
    HTML::ParserObserverOutput<C, S>::GetTextOutput(&data, this);
}

template <typename C, typename S>
void Place<C, S>::Pass(const HTML::CCommentData<C, S>& data) {
    HTML::ParserObserverOutput<C, S>::GetCCommentOutput(&data, this);
}

template <typename C, typename S>
void Place<C, S>::Pass(const HTML::CPPCommentData<C, S>& data) {
    HTML::ParserObserverOutput<C, S>::GetCPPCommentOutput(&data, this);
}

template <typename C, typename S>
void Place<C, S>::Pass(const HTML::SQuoteStringData<C, S>& data) {
    HTML::ParserObserverOutput<C, S>::GetSQuoteStringOutput(&data, this);
}

template <typename C, typename S>
void Place<C, S>::Pass(const HTML::DQuoteStringData<C, S>& data) {
    HTML::ParserObserverOutput<C, S>::GetDQuoteStringOutput(&data, this);
}

template <typename C, typename S>
void Place<C, S>::Pass(const HTML::StartTagData<C, S>& data) {
    HTML::ParserObserverOutput<C, S>::GetStartTagOutput(&data, this);
}

template <typename C, typename S>
void Place<C, S>::Pass(const HTML::ShortTagData<C, S>& data) {
    HTML::ParserObserverOutput<C, S>::GetShortTagOutput(&data, this);
}

template <typename C, typename S>
void Place<C, S>::Pass(const HTML::EndTagData<C, S>& data) {
    HTML::ParserObserverOutput<C, S>::GetEndTagOutput(&data, this);
}

// The serializer writes only the first half of a wide body of the next three kinds, so these are counted from their parts.

template <typename C, typename S>
void Place<C, S>::Pass(const HTML::CDATATagData<C, S>& data) {
    Pass("<![");
    Pass(data.keyword);
    Pass(data.text);
    Pass(data.closed ? "]]>" : "");
}

template <typename C, typename S>
void Place<C, S>::Pass(const HTML::ConditionalTagData<C, S>& data) {
    Pass("<![");
    Pass(data.keyword);
    Pass(data.condition);
    Pass(data.bracketClosed ? "]" : "");
    if (data.tagClosed) {
        Pass(data.tail);
        Pass(">");
    }
}

template <typename C, typename S>
void Place<C, S>::Pass(const HTML::CommentTagData<C, S>& data) {
    Pass("<!--");
    Pass(data.text);
    Pass(data.closed ? "-->" : "");
}

template <typename C, typename S>
void Place<C, S>::Pass(const HTML::EntityTagData<C, S>& data) {
    HTML::ParserObserverOutput<C, S>::GetEntityTagOutput(&data, this);
}

template <typename C, typename S>
void Place<C, S>::Pass(const HTML::ExternTagData<C, S>& data) {
    HTML::ParserObserverOutput<C, S>::GetExternTagOutput(&data, this);
}

template <typename C, typename S>
void Place<C, S>::Skip(std::uint64_t characters) {
    column += characters;
}

template <typename C, typename S>
void Place<C, S>::PassJunk(const HTML::JunkData<C, S>& data) {
    if (data.text != nullptr)
        PassBytes(data.text->data(), data.text->size());
}

/// What has one byte in an 8-bit observer's record of a UTF-16 document is punctuation, which the serializer adds.
template <typename C, typename S>
void Place<C, S>::Write(const void* data, std::uint64_t byteCount, bool) {
    if constexpr (std::is_same_v<C, char>) {
        if (byteCount == 1)
            Count(*static_cast<const char*>(data) == '\n');
        else
            PassBytes(static_cast<const char*>(data), byteCount);
        return;
    }
    const char* next = static_cast<const char*>(data);
    for (std::uint64_t left = byteCount / sizeof(C); left > 0; --left) {
        C character;
        std::memcpy(&character, next, sizeof(C));
        Count(character == '\n');
        next += sizeof(C);
    }
}

/// Bytes of the document.
template <typename C, typename S>
void Place<C, S>::PassBytes(const char* bytes, std::uint64_t size) {
    const std::uint64_t step = isUtf16 ? 2 : 1;
    for (std::uint64_t i = 0; i + step <= size; i += step)
        Count(bytes[i] == '\n' && (step == 1 || bytes[i + 1] == 0));  // UTF-16 is low byte first
}

template <typename C, typename S>
void Place<C, S>::Pass(const char* punctuation) {
    column += std::strlen(punctuation);
}

template <typename C, typename S>
void Place<C, S>::Pass(const S* text) {
    if (text != nullptr)
        Write(text->data(), text->size() * sizeof(C), false);
}

template <typename C, typename S>
void Place<C, S>::Count(bool isLineFeed) {
    if (isLineFeed) {
        ++line;
        column = 1;
    } else {
        ++column;
    }
}

template class Place<char, std::string>;
template class Place<WideChar, WideString>;

}  // namespace Kestra::Tool
