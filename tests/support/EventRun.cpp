#include "tests/support/EventRun.h"

#include "tests/support/Pieces.h"

namespace Kestra::Test {

EventTraceObserver::EventTraceObserver(std::vector<std::string>* lines) : tracedLines(lines) {}

void EventTraceObserver::OnLine(unsigned long, const std::string& line) {
    tracedLines->push_back(line);
}

std::string EventRun::Describe() const {
    std::string shown;
    for (const std::string& event : trace) {
        shown += event;
        shown += '\n';
    }
    for (const std::uint32_t result : parseResults) {
        if (result != 0 && result != 16) {
            shown += "result ";
            shown += std::to_string(result);
            shown += '\n';
        }
    }
    shown += "line ";
    shown += std::to_string(line);
    shown += ", column ";
    shown += std::to_string(column);
    shown += '\n';
    return shown;
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
