#include "tests/support/EventRun.h"

#include "tests/support/Pieces.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Test {

namespace {

std::string Describe(const HTML::StatelessHTMLObserver::Attributes& attributes) {
    std::string line;
    for (const auto& [name, value] : attributes) {
        line += '{';
        line += Trace::Escape(name);
        line += '=';
        line += Trace::Escape(value);
        line += '}';
    }
    return line;
}

std::string Describe(const HTML::StatelessHTMLObserver::Tokens& tokens) {
    std::string line;
    for (const WideString& token : tokens) {
        line += '{';
        line += Trace::Escape(token);
        line += '}';
    }
    return line;
}

std::string Line(const char* event, const std::string& first) {
    std::string line = event;
    line += '(';
    line += first;
    line += ')';
    return line;
}

std::string Line(const char* event, const std::string& first, const std::string& second) {
    std::string both = first;
    both += '|';
    both += second;
    return Line(event, both);
}

}  // namespace

EventTraceObserver::EventTraceObserver(std::vector<std::string>* lines) : tracedLines(lines) {}

void EventTraceObserver::OnStartParsing() {
    tracedLines->emplace_back("start-parsing");
}

void EventTraceObserver::OnStopParsing() {
    tracedLines->emplace_back("stop-parsing");
}

void EventTraceObserver::OnStartTag(const WideChar* name, const Attributes* attributes) {
    tracedLines->push_back(Line("start", Trace::Escape(name), Describe(*attributes)));
}

void EventTraceObserver::OnEndTag(const WideChar* name) {
    tracedLines->push_back(Line("end", Trace::Escape(name)));
}

void EventTraceObserver::OnScript(const Attributes* attributes, const WideChar* body) {
    tracedLines->push_back(Line("script", Describe(*attributes), Trace::Escape(body)));
}

void EventTraceObserver::OnExternTag(const WideChar* name, const Attributes* attributes) {
    tracedLines->push_back(Line("extern", Trace::Escape(name), Describe(*attributes)));
}

void EventTraceObserver::OnEntityTag(const WideChar* name, const Tokens* tokens) {
    tracedLines->push_back(Line("entity", Trace::Escape(name), Describe(*tokens)));
}

void EventTraceObserver::OnComment(const WideChar* text) {
    tracedLines->push_back(Line("comment", Trace::Escape(text)));
}

void EventTraceObserver::OnText(const WideChar* text) {
    tracedLines->push_back(Line("text", Trace::Escape(text)));
}

void EventTraceObserver::OnStyle(const Attributes* attributes, const WideChar* body) {
    tracedLines->push_back(Line("style", Describe(*attributes), Trace::Escape(body)));
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
    EventRun run;
    EventTraceObserver observer(&run.trace);
    HTML::StatelessHTMLParser parser;
    parser.Attach(&observer);
    parser.SetFlags(flags);
    parser.StartParse(charset);
    for (const std::string& text : pieces) {
        const HeapPiece<char> piece(text);
        run.parseResults.push_back(parser.ParseBuffer(piece.Data(), piece.Size()));
        if (run.parseResults.back() != 0 && run.parseResults.back() != 16)
            break;
    }
    std::size_t line = 0;
    std::size_t column = 0;
    parser.GetCurrentLineNumber(&line);
    parser.GetCurrentColumnNumber(&column);
    run.line = line;
    run.column = column;
    run.endResult = parser.EndParse();
    return run;
}

}  // namespace Kestra::Test
