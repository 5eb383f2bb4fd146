#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "html/framework/TokenRecords.h"
#include "html/output/ParserObserverOutputHandler.h"

namespace Kestra::Tool {

/// Line and column, from 1, of the next token, in the characters of the observer; of a UTF-16 document, in its units for either observer.
///
/// A token's extent is what the serializer writes for it, so each record is written back and its characters are counted. A line ends
/// behind its line feed.
template <typename C, typename S>
class Place final : private HTML::ParserObserverOutputHandler {
public:
    std::uint64_t GetLine() const;
    std::uint64_t GetColumn() const;

    /// The document is UTF-16: the strings of an 8-bit observer have two bytes for each unit.
    void SetUtf16(bool isUtf16Document);

    void Pass(const HTML::TextData<C, S>& data);
    void Pass(const HTML::CCommentData<C, S>& data);
    void Pass(const HTML::CPPCommentData<C, S>& data);
    void Pass(const HTML::SQuoteStringData<C, S>& data);
    void Pass(const HTML::DQuoteStringData<C, S>& data);
    void Pass(const HTML::StartTagData<C, S>& data);
    void Pass(const HTML::ShortTagData<C, S>& data);
    void Pass(const HTML::EndTagData<C, S>& data);
    void Pass(const HTML::CDATATagData<C, S>& data);
    void Pass(const HTML::ConditionalTagData<C, S>& data);
    void Pass(const HTML::CommentTagData<C, S>& data);
    void Pass(const HTML::EntityTagData<C, S>& data);
    void Pass(const HTML::ExternTagData<C, S>& data);

    /// Characters that no record has, without a line feed.
    void Skip(std::uint64_t characters);

    /// Junk is bytes in both flavours.
    void PassJunk(const HTML::JunkData<C, S>& data);

private:
    void Write(const void* data, std::uint64_t byteCount, bool isMarkup) override;
    void Pass(const char* punctuation);
    void Pass(const S* text);
    void PassBytes(const char* bytes, std::uint64_t size);
    void Count(bool isLineFeed);

    bool isUtf16 = false;
    std::uint64_t line = 1;
    std::uint64_t column = 1;
};

}  // namespace Kestra::Tool
