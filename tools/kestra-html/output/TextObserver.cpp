#include "tools/kestra-html/output/TextObserver.h"

#include <fmt/format.h>

#include "platform/Characters.h"
#include "tools/kestra-html/output/CharsetText.h"
#include "tools/kestra-html/output/ResultText.h"
#include "tools/kestra-html/output/TextReport.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Tool {

template <typename C, typename S>
TextObserver<C, S>::TextObserver(LineSink* lineSink, const HTML::GenericParser* observedParser, bool inColour,
                                 bool withOffsets)
    : parser(observedParser), report(lineSink, inColour, withOffsets) {}

template <typename C, typename S>
void TextObserver<C, S>::OnBOM(const void* bytes, std::uint64_t size) {
    report.Write(TokenKind::EVENT, parser->GetTokenPlace(), Trace::FormatBOM(bytes, size));
}

template <typename C, typename S>
void TextObserver<C, S>::OnCharset(StringNS::CharSet::Code code) {
    WriteEvent(Trace::FormatCharset(code));
}

template <typename C, typename S>
void TextObserver<C, S>::OnEvent(HTML::ObserverEvent event) {
    WriteEvent(Trace::Format(event));
}

template <typename C, typename S>
template <template <typename, typename> class Record>
void TextObserver<C, S>::OnToken(Record<C, S>* record) {
    constexpr TokenKind KIND = FindTokenKind(HTML::RecordKind<Record>::WORD);
    Trace::Append(report.Begin(KIND, parser->GetTokenPlace()), *record, TextReport::STRINGS);
    report.End();
}

/// What has no record lies where the parser is: after the tag that caused it.
template <typename C, typename S>
void TextObserver<C, S>::WriteEvent(std::string_view text) {
    const std::uint64_t offset = parser->GetTokenPlace().end;
    report.Write(TokenKind::EVENT, {offset, offset, parser->GetLine(), parser->GetColumn()}, text);
}

template <typename C, typename S>
void TextObserver<C, S>::WriteSummary(const ParsePassResult& result, const std::string& size, bool restarted) {
    report.Summarize("bytes", size);
    report.Summarize("tokens", report.DescribeCounts());
    // For a narrow observer nothing is decoded.
    const bool isAssumed = sizeof(C) > 1 && result.charset == StringNS::CharSet::UNKNOWN;
    const std::string charset = isAssumed ? DescribeAssumedCharset() : DescribeCharset(result.charset);
    report.Summarize("charset", fmt::format("{}{}{}{}", charset, result.isWParser ? ", 16-bit parser" : "",
                                            restarted ? ", found in a first pass" : "",
                                            result.hasCharsetErrors ? ", with decoding errors" : ""));
    report.Summarize("result", result.IsGood() ? "0, success" : DescribeFailures(result));
}

template class TextObserver<char, std::string>;
template class TextObserver<WideChar, WideString>;

#define INSTANTIATE(NAME, RECORD, WORD)                                                       \
    template void TextObserver<char, std::string>::OnToken(HTML::RECORD<char, std::string>*); \
    template void TextObserver<WideChar, WideString>::OnToken(HTML::RECORD<WideChar, WideString>*);
KESTRA_HTML_FOR_EACH_KIND(INSTANTIATE)
#undef INSTANTIATE

}  // namespace Kestra::Tool
