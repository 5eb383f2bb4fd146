#include "tests/support/EventRun.h"

#include <gtest/gtest.h>

#include <utility>

#include "tests/support/Pieces.h"

namespace Kestra::Test {

EventTraceObserver::EventTraceObserver(std::vector<std::string>* lines, std::string prefix)
    : tracedLines(lines), linePrefix(std::move(prefix)) {}

void EventTraceObserver::OnLine(unsigned long, const std::string& line) {
    tracedLines->push_back(linePrefix + line);
    const auto call = hook;  // which may replace itself
    if (call)
        call(tracedLines->back());
}

TracedParser::TracedParser() {
    Attach(&observer);
}

void TracedParser::Start(ScriptMode mode) {
    SetScriptMode(mode);
    StartParse(0);
    lines.clear();
}

std::uint32_t TracedParser::Feed(std::string_view bytes) {
    const HeapPiece<char> piece(bytes);
    return ParseBuffer(piece.Data(), piece.Size());
}

std::uint32_t TracedParser::Feed(std::string_view document, const Cuts& cuts) {
    std::uint32_t result = 0;
    for (const auto& [begin, end] : PiecesOf(cuts, document.size()))
        result = Feed(document.substr(begin, end - begin));
    return result;
}

std::uint64_t OffsetOf(const HTML::StatelessHTMLParser& parser) {
    std::uint64_t offset = 0;
    EXPECT_EQ(parser.GetCurrentOffset(&offset), 0U);
    return offset;
}

std::string PlaceOf(const HTML::StatelessHTMLParser& parser) {
    std::size_t line = 0;
    std::size_t column = 0;
    EXPECT_EQ(parser.GetCurrentLineNumber(&line), 0U);
    EXPECT_EQ(parser.GetCurrentColumnNumber(&column), 0U);
    return std::to_string(OffsetOf(parser)) + " " + std::to_string(line) + ":" + std::to_string(column);
}

std::string EventRun::Describe() const {
    std::string shown;
    for (const std::string& event : trace)
        shown.append(event).append("\n");
    for (const std::uint32_t result : parseResults) {
        if (result != 0 && result != 16)
            shown.append("result ").append(std::to_string(result)).append("\n");
    }
    shown.append("line ").append(std::to_string(line));
    return shown.append(", column ").append(std::to_string(column)).append("\n");
}

EventRun ParseEvents(const std::vector<std::string>& pieces, StringNS::CharSet::Code charset, unsigned long flags) {
    HTML::StatelessHTMLParser parser;
    return ParseEvents(&parser, pieces, charset, flags);
}

EventRun ParseEvents(HTML::StatelessHTMLParser* parser, const std::vector<std::string>& pieces,
                     StringNS::CharSet::Code charset, unsigned long flags) {
    EventRun run;
    EventTraceObserver observer(&run.trace);
    parser->Attach(&observer);
    parser->SetFlags(flags);
    parser->StartParse(charset);
    for (const std::string& text : pieces) {
        const HeapPiece<char> piece(text);
        run.parseResults.push_back(parser->ParseBuffer(piece.Data(), piece.Size()));
        if (run.parseResults.back() != 0 && run.parseResults.back() != 16)
            break;
    }
    std::size_t line = 0;
    std::size_t column = 0;
    parser->GetCurrentLineNumber(&line);
    parser->GetCurrentColumnNumber(&column);
    run.line = line;
    run.column = column;
    run.endResult = parser->EndParse();
    parser->Detach(&observer);
    return run;
}

}  // namespace Kestra::Test
