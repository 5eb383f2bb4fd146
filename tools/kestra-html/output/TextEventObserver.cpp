#include "tools/kestra-html/output/TextEventObserver.h"

#include <fmt/format.h>

#include <array>

#include "tools/kestra-html/output/ResultText.h"
#include "tools/kestra-html/output/TextReport.h"

namespace Kestra::Tool {

namespace {

using HTML::StatelessHTMLParser;

/// By their identifiers.
constexpr std::array<TokenKind, StatelessHTMLParser::ID_STYLE + 1> EVENT_KINDS = {
    TokenKind::EVENT,      TokenKind::EVENT,      TokenKind::START_TAG,   TokenKind::END_TAG, TokenKind::SCRIPT,
    TokenKind::EXTERN_TAG, TokenKind::ENTITY_TAG, TokenKind::COMMENT_TAG, TokenKind::TEXT,    TokenKind::STYLE,
};

}  // namespace

TextEventObserver::TextEventObserver(LineSink* lineSink, const StatelessHTMLParser* observedParser, bool inColour,
                                     bool withOffsets)
    : Trace::EventLineObserver(TextReport::STRINGS), places(observedParser), report(lineSink, inColour, withOffsets) {}

void TextEventObserver::WriteSummary(const EventsPassResult& result, const std::string& size) {
    const std::string failures = DescribeFailures(result);
    report.Summarize("bytes", size);
    report.Summarize("events", report.DescribeCounts());
    report.Summarize("result", failures.empty() ? "0, success" : failures);
}

void TextEventObserver::OnLine(unsigned long event, const std::string& text) {
    const bool isEnd = event == StatelessHTMLParser::ID_STOP_PARSING;
    report.Write(EVENT_KINDS[event], isEnd ? places.TakeEnd() : places.TakeConstruct(), text);
}

}  // namespace Kestra::Tool
