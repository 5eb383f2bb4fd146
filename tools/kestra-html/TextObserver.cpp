#include "tools/kestra-html/TextObserver.h"

#include <fmt/format.h>

#include <type_traits>

#include "platform/Characters.h"
#include "tools/kestra-html/CharsetText.h"
#include "tools/kestra-html/ResultText.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Tool {

template <typename C, typename S>
TextObserver<C, S>::TextObserver(LineSink* lineSink, const HTML::GenericParser* observedParser, bool inColour, std::string_view input,
                                 std::uint64_t firstByte)
    : parser(observedParser), hiddenComments(observedParser, input, firstByte), report(lineSink, inColour) {}

template <typename C, typename S>
void TextObserver<C, S>::OnStartParsing() {
    Print(TokenKind::EVENT, Trace::Format(Trace::Event::START_PARSING));
}

template <typename C, typename S>
void TextObserver<C, S>::OnEndParsing() {
    Print(TokenKind::EVENT, Trace::Format(Trace::Event::END_PARSING));
}

template <typename C, typename S>
void TextObserver<C, S>::OnBOM(const void* bytes, std::uint64_t size) {
    Print(TokenKind::EVENT, Trace::FormatBOM(bytes, size));
    hiddenComments.PassMark(size);
}

template <typename C, typename S>
void TextObserver<C, S>::OnCharset(StringNS::CharSet::Code code) {
    Print(TokenKind::EVENT, Trace::FormatCharset(code));
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
    Print(TokenKind::EVENT, Trace::Format(Trace::Event::JS_TAG_START));
    hiddenComments.SetInScript(true);
}

template <typename C, typename S>
void TextObserver<C, S>::OnJSTagEnd() {
    Print(TokenKind::EVENT, Trace::Format(Trace::Event::JS_TAG_END));
    hiddenComments.SetInScript(false);
}

template <typename C, typename S>
void TextObserver<C, S>::OnCSSTagStart() {
    Print(TokenKind::EVENT, Trace::Format(Trace::Event::CSS_TAG_START));
}

template <typename C, typename S>
void TextObserver<C, S>::OnCSSTagEnd() {
    Print(TokenKind::EVENT, Trace::Format(Trace::Event::CSS_TAG_END));
}

template <typename C, typename S>
void TextObserver<C, S>::OnJunkData(HTML::JunkData<C, S>* data) {
    PassHiddenComment(TokenKind::JUNK, 0);
    Print(TokenKind::JUNK, Trace::Format(*data, TextReport::STRINGS));
    place.PassJunk(*data);
}

template <typename C, typename S>
template <typename Record>
void TextObserver<C, S>::Token(TokenKind kind, const Record& data) {
    std::uint64_t size = 0;
    if constexpr (std::is_same_v<Record, HTML::TextData<C, S>>)
        size = data.text == nullptr ? 0 : data.text->size();
    PassHiddenComment(kind, size);
    Print(kind, Trace::Format(data, TextReport::STRINGS));
    place.Pass(data);
}

template <typename C, typename S>
void TextObserver<C, S>::Print(TokenKind kind, std::string_view text) {
    report.Write(kind, place.GetLine(), place.GetColumn(), text);
}

/// Before a token. Only the 8-bit parser hides comments, and only from an 8-bit observer.
template <typename C, typename S>
void TextObserver<C, S>::PassHiddenComment(TokenKind kind, std::uint64_t size) {
    const bool isUtf16 = parser->IsWParser();
    place.SetUtf16(isUtf16);
    if (sizeof(C) == 1 && !isUtf16)
        place.Skip(hiddenComments.Pass(kind, size));
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
