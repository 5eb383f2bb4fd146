#pragma once

#include <cstdint>
#include <string_view>

#include "html/framework/ParserObserver.h"
#include "html/framework/TokenRecords.h"
#include "html/parser/GenericParser.h"
#include "platform/CharSet.h"
#include "tools/kestra-html/LineSink.h"
#include "tools/kestra-html/ParsePass.h"
#include "tools/kestra-html/TextReport.h"
#include "tools/kestra-html/TokenKind.h"

namespace Kestra::Tool {

/// Writes one line for each callback, for reading: where the token starts, and the token in the trace language with its long texts cut.
template <typename C, typename S>
class TextObserver final : public HTML::ParserObserver<C, S> {
public:
    /// @param observedParser  borrowed; asked for the place of each token
    /// @param withOffsets     lines also tell the offsets in bytes
    TextObserver(LineSink* lineSink, const HTML::GenericParser* observedParser, bool inColour, bool withOffsets = false);

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

    /// Writes what became of the input: bytes, tokens by kind, charset, result.
    /// @param restarted  an earlier pass was abandoned because it found the charset
    void WriteSummary(const ParsePassResult& result, std::uint64_t size, bool restarted);

private:
    template <typename Record>
    void Token(TokenKind kind, const Record& data);
    void Event(std::string_view text);

    const HTML::GenericParser* parser;
    TextReport report;
};

}  // namespace Kestra::Tool
