#include "tools/kestra-html/TextEventObserver.h"

#include <fmt/format.h>

#include <array>

#include "tools/kestra-html/ResultText.h"
#include "tools/kestra-html/TokenKind.h"

namespace Kestra::Tool {

namespace {

using HTML::StatelessHTMLParser;

/// By their identifiers.
constexpr std::array<TokenKind, StatelessHTMLParser::ID_STYLE + 1> EVENT_KINDS = {
    TokenKind::EVENT,      TokenKind::EVENT,      TokenKind::START_TAG,   TokenKind::END_TAG, TokenKind::SCRIPT,
    TokenKind::EXTERN_TAG, TokenKind::ENTITY_TAG, TokenKind::COMMENT_TAG, TokenKind::TEXT,    TokenKind::STYLE,
};

}  // namespace

TextEventObserver::TextEventObserver(LineSink* lineSink, const StatelessHTMLParser* observedParser, bool inColour)
    : Trace::EventLineObserver(TextReport::STRINGS), parser(observedParser), report(lineSink, inColour) {}

void TextEventObserver::WriteSummary(const EventsPassResult& result, std::uint64_t size) {
    const std::string failures = DescribeFailures(result);
    report.Summarize("bytes", fmt::format("{}", size));
    report.Summarize("events", report.DescribeCounts());
    report.Summarize("result", failures.empty() ? "0, success" : failures);
}

void TextEventObserver::OnLine(unsigned long event, const std::string& text) {
    if (event == StatelessHTMLParser::ID_STOP_PARSING)
        MoveToParser();
    report.Write(EVENT_KINDS[event], line, column, text);
    MoveToParser();
}

void TextEventObserver::MoveToParser() {
    parser->GetCurrentLineNumber(&line);
    parser->GetCurrentColumnNumber(&column);
}

}  // namespace Kestra::Tool
