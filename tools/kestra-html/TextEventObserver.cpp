#include "tools/kestra-html/TextEventObserver.h"

#include <fmt/format.h>

#include "tools/kestra-html/ResultText.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Tool {

namespace {

std::string Show(WideStringView text) {
    return Trace::Escape(text, TextReport::STRINGS);
}

std::string Show(const HTML::StatelessHTMLObserver::Attributes& attributes) {
    std::string text;
    for (const auto& [name, value] : attributes)
        text += fmt::format("{{{}={}}}", Show(name), Show(value));
    return text;
}

std::string Show(const HTML::StatelessHTMLObserver::Tokens& tokens) {
    std::string text;
    for (const WideString& token : tokens)
        text += fmt::format("{{{}}}", Show(token));
    return text;
}

}  // namespace

TextEventObserver::TextEventObserver(LineSink* lineSink, const HTML::StatelessHTMLParser* observedParser, bool inColour)
    : parser(observedParser), report(lineSink, inColour) {}

void TextEventObserver::OnStartParsing() {
    Print(TokenKind::EVENT, "start-parsing");
}

void TextEventObserver::OnStopParsing() {
    MoveToParser();
    Print(TokenKind::EVENT, "stop-parsing");
}

void TextEventObserver::OnStartTag(const WideChar* name, const Attributes* attributes) {
    Print(TokenKind::START_TAG, fmt::format("start({}|{})", Show(name), Show(*attributes)));
}

void TextEventObserver::OnEndTag(const WideChar* name) {
    Print(TokenKind::END_TAG, fmt::format("end({})", Show(name)));
}

void TextEventObserver::OnScript(const Attributes* attributes, const WideChar* body) {
    Print(TokenKind::SCRIPT, fmt::format("script({}|{})", Show(*attributes), Show(body)));
}

void TextEventObserver::OnExternTag(const WideChar* name, const Attributes* attributes) {
    Print(TokenKind::EXTERN_TAG, fmt::format("extern({}|{})", Show(name), Show(*attributes)));
}

void TextEventObserver::OnEntityTag(const WideChar* name, const Tokens* tokens) {
    Print(TokenKind::ENTITY_TAG, fmt::format("entity({}|{})", Show(name), Show(*tokens)));
}

void TextEventObserver::OnComment(const WideChar* text) {
    Print(TokenKind::COMMENT_TAG, fmt::format("comment({})", Show(text)));
}

void TextEventObserver::OnText(const WideChar* text) {
    Print(TokenKind::TEXT, fmt::format("text({})", Show(text)));
}

void TextEventObserver::OnStyle(const Attributes* attributes, const WideChar* body) {
    Print(TokenKind::STYLE, fmt::format("style({}|{})", Show(*attributes), Show(body)));
}

void TextEventObserver::WriteSummary(const EventsPassResult& result, std::uint64_t size) {
    const std::string failures = DescribeFailures(result);
    report.Summarize("bytes", fmt::format("{}", size));
    report.Summarize("events", report.DescribeCounts());
    report.Summarize("result", failures.empty() ? "0, success" : failures);
}

void TextEventObserver::Print(TokenKind kind, const std::string& text) {
    report.Write(kind, line, column, text);
    MoveToParser();
}

void TextEventObserver::MoveToParser() {
    parser->GetCurrentLineNumber(&line);
    parser->GetCurrentColumnNumber(&column);
}

}  // namespace Kestra::Tool
