#include "tools/kestra-html/TextObserver.h"

#include <fmt/format.h>

#include "platform/Characters.h"
#include "tools/kestra-html/CharsetText.h"
#include "tools/kestra-html/ResultText.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Tool {

template <typename C, typename S>
TextObserver<C, S>::TextObserver(LineSink* lineSink, const HTML::GenericParser* observedParser, bool inColour, bool withOffsets)
    : parser(observedParser), report(lineSink, inColour, withOffsets) {}

template <typename C, typename S>
void TextObserver<C, S>::OnStartParsing() {
    Event(Trace::Format(Trace::Event::START_PARSING));
}

template <typename C, typename S>
void TextObserver<C, S>::OnEndParsing() {
    Event(Trace::Format(Trace::Event::END_PARSING));
}

template <typename C, typename S>
void TextObserver<C, S>::OnBOM(const void* bytes, std::uint64_t size) {
    report.Write(TokenKind::EVENT, parser->GetTokenPlace(), Trace::FormatBOM(bytes, size));
}

template <typename C, typename S>
void TextObserver<C, S>::OnCharset(StringNS::CharSet::Code code) {
    Event(Trace::FormatCharset(code));
}

template <typename C, typename S>
void TextObserver<C, S>::OnText(HTML::TextData<C, S>* data) {
    Token(TokenKind::TEXT, *data);
}

template <typename C, typename S>
void TextObserver<C, S>::OnCComment(HTML::CCommentData<C, S>* data) {
    Token(TokenKind::C_COMMENT, *data);
}

template <typename C, typename S>
void TextObserver<C, S>::OnCPPComment(HTML::CPPCommentData<C, S>* data) {
    Token(TokenKind::CPP_COMMENT, *data);
}

template <typename C, typename S>
void TextObserver<C, S>::OnSQuoteString(HTML::SQuoteStringData<C, S>* data) {
    Token(TokenKind::S_QUOTE_STRING, *data);
}

template <typename C, typename S>
void TextObserver<C, S>::OnDQuoteString(HTML::DQuoteStringData<C, S>* data) {
    Token(TokenKind::D_QUOTE_STRING, *data);
}

template <typename C, typename S>
void TextObserver<C, S>::OnStartTag(HTML::StartTagData<C, S>* data) {
    Token(TokenKind::START_TAG, *data);
}

template <typename C, typename S>
void TextObserver<C, S>::OnShortTag(HTML::ShortTagData<C, S>* data) {
    Token(TokenKind::SHORT_TAG, *data);
}

template <typename C, typename S>
void TextObserver<C, S>::OnEndTag(HTML::EndTagData<C, S>* data) {
    Token(TokenKind::END_TAG, *data);
}

template <typename C, typename S>
void TextObserver<C, S>::OnCDATATag(HTML::CDATATagData<C, S>* data) {
    Token(TokenKind::CDATA_TAG, *data);
}

template <typename C, typename S>
void TextObserver<C, S>::OnConditionalTag(HTML::ConditionalTagData<C, S>* data) {
    Token(TokenKind::CONDITIONAL_TAG, *data);
}

template <typename C, typename S>
void TextObserver<C, S>::OnCommentTag(HTML::CommentTagData<C, S>* data) {
    Token(TokenKind::COMMENT_TAG, *data);
}

template <typename C, typename S>
void TextObserver<C, S>::OnEntityTag(HTML::EntityTagData<C, S>* data) {
    Token(TokenKind::ENTITY_TAG, *data);
}

template <typename C, typename S>
void TextObserver<C, S>::OnExternTag(HTML::ExternTagData<C, S>* data) {
    Token(TokenKind::EXTERN_TAG, *data);
}

template <typename C, typename S>
void TextObserver<C, S>::OnJSTagStart() {
    Event(Trace::Format(Trace::Event::JS_TAG_START));
}

template <typename C, typename S>
void TextObserver<C, S>::OnJSTagEnd() {
    Event(Trace::Format(Trace::Event::JS_TAG_END));
}

template <typename C, typename S>
void TextObserver<C, S>::OnCSSTagStart() {
    Event(Trace::Format(Trace::Event::CSS_TAG_START));
}

template <typename C, typename S>
void TextObserver<C, S>::OnCSSTagEnd() {
    Event(Trace::Format(Trace::Event::CSS_TAG_END));
}

template <typename C, typename S>
void TextObserver<C, S>::OnJunkData(HTML::JunkData<C, S>* data) {
    Token(TokenKind::JUNK, *data);
}

template <typename C, typename S>
template <typename Record>
void TextObserver<C, S>::Token(TokenKind kind, const Record& data) {
    report.Write(kind, parser->GetTokenPlace(), Trace::Format(data, TextReport::STRINGS));
}

/// What has no record lies where the parser stands: after the tag that caused it.
template <typename C, typename S>
void TextObserver<C, S>::Event(std::string_view text) {
    const std::uint64_t offset = parser->GetTokenPlace().end;
    report.Write(TokenKind::EVENT, {offset, offset, parser->GetLine(), parser->GetColumn()}, text);
}

template <typename C, typename S>
void TextObserver<C, S>::WriteSummary(const ParsePassResult& result, std::uint64_t size, bool restarted) {
    report.Summarize("bytes", fmt::format("{}", size));
    report.Summarize("tokens", report.DescribeCounts());
    report.Summarize("charset",
                     fmt::format("{}{}{}{}", DescribeCharset(result.charset), result.isWParser ? ", 16-bit parser" : "",
                                 restarted ? ", found in a first pass" : "", result.hasCharsetErrors ? ", with decoding errors" : ""));
    report.Summarize("result", result.IsGood() ? "0, success" : DescribeFailures(result));
}

template class TextObserver<char, std::string>;
template class TextObserver<WideChar, WideString>;

}  // namespace Kestra::Tool
