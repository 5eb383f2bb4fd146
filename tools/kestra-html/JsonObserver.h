#pragma once

#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "html/framework/ParserObserver.h"
#include "html/framework/TokenRecords.h"
#include "platform/CharSet.h"
#include "platform/Characters.h"
#include "platform/Vector.h"
#include "tools/kestra-html/LineSink.h"
#include "tools/kestra-html/TokensPass.h"

namespace Kestra::Tool {

/// One JSON object on one line, member by member in the order of the calls.
class JsonLine {
public:
    explicit JsonLine(LineSink* lineSink);

    void Begin(std::string_view event);
    void End();

    void Bool(const char* name, bool value);
    void Number(const char* name, std::uint64_t value);
    /// A null pointer is written as `null`.
    void String(const char* name, const std::string* bytes);
    void String(const char* name, const WideString* text);
    /// A null list is written as `null`.
    template <typename T>
    void List(const char* name, const Vector<T>* items);

private:
    template <typename C, typename S>
    void Item(const HTML::Attribute<C, S>& attribute);
    template <typename C, typename S>
    void Item(const HTML::EntityToken<C, S>& token);
    template <typename S>
    void Text(const char* name, const S* text);

    LineSink* sink;
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer;
    std::string scratch;
};

/// Writes one object for each callback: `event` is the callback's name without "On", the other members are the fields of its record.
template <typename C, typename S>
class JsonObserver final : public HTML::ParserObserver<C, S> {
public:
    explicit JsonObserver(LineSink* lineSink);

    void OnStartParsing() override;
    void OnEndParsing() override;
    void OnBOM(const void* bytes, std::uint64_t size) override;
    void OnCharset(StringNS::CharSet::Code code) override;
    void OnText(HTML::TextData<C, S>* data) override;
    void OnCComment(HTML::CCommentData<C, S>* data) override;
    void OnCPPComment(HTML::CPPCommentData<C, S>* data) override;
    void OnSQuoteString(HTML::SQuoteStringData<C, S>* data) override;
    void OnDQuoteString(HTML::DQuoteStringData<C, S>* data) override;
    void OnStartTag(HTML::StartTagData<C, S>* data) override;
    void OnShortTag(HTML::ShortTagData<C, S>* data) override;
    void OnEndTag(HTML::EndTagData<C, S>* data) override;
    void OnCDATATag(HTML::CDATATagData<C, S>* data) override;
    void OnConditionalTag(HTML::ConditionalTagData<C, S>* data) override;
    void OnCommentTag(HTML::CommentTagData<C, S>* data) override;
    void OnEntityTag(HTML::EntityTagData<C, S>* data) override;
    void OnExternTag(HTML::ExternTagData<C, S>* data) override;
    void OnJSTagStart() override;
    void OnJSTagEnd() override;
    void OnCSSTagStart() override;
    void OnCSSTagEnd() override;
    void OnJunkData(HTML::JunkData<C, S>* data) override;

    /// Writes the last line of an input. @param inputName  as given on the command line
    void WriteResult(const TokensPassResult& result, const std::string& inputName);

private:
    void Plain(std::string_view event);
    template <typename T>
    void TextOnly(std::string_view event, const T* text);

    JsonLine line;
};

}  // namespace Kestra::Tool
