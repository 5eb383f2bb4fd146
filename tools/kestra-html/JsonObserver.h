#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "html/framework/Attribute.h"
#include "html/framework/ParserObserver.h"
#include "html/framework/TokenRecords.h"
#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "platform/Vector.h"
#include "tools/kestra-html/JsonLine.h"
#include "tools/kestra-html/LineSink.h"
#include "tools/kestra-html/ParsePass.h"

namespace Kestra::Tool {

/// Writes one object for each callback: `event` is the callback's name without "On", the other members are the fields of its record.
template <typename C, typename S>
class JsonObserver final : public HTML::ParserObserver<C, S> {
public:
    /// @param placesParser  borrowed; asked for the place of each token and attribute. Null: no places are written
    explicit JsonObserver(LineSink* lineSink, const HTML::GenericParser* placesParser = nullptr);

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
    void WriteResult(const ParsePassResult& result, const std::string& inputName);

private:
    void Plain(std::string_view event);
    template <typename T>
    void TextOnly(std::string_view event, const T* text);
    void Attributes(const Vector<HTML::Attribute<C, S>>* attributes);
    void End();

    const HTML::GenericParser* parser;
    JsonLine line;
};

}  // namespace Kestra::Tool
