#include "tools/trace/EventTrace.h"

#include <string_view>

#include "html/stateless/StatelessHTMLParser.h"

namespace Kestra::Trace {

namespace {

using HTML::StatelessHTMLParser;

std::string Line(std::string_view word, std::string_view only) {
    std::string line(word);
    line += '(';
    line += only;
    line += ')';
    return line;
}

std::string Line(std::string_view word, std::string_view first, std::string_view second) {
    std::string line(word);
    line += '(';
    line += first;
    line += '|';
    line += second;
    line += ')';
    return line;
}

}  // namespace

EventLineObserver::EventLineObserver(const Options& options) : stringOptions(options) {}

void EventLineObserver::OnStartParsing() {
    OnLine(StatelessHTMLParser::ID_START_PARSING, "start-parsing");
}

void EventLineObserver::OnStopParsing() {
    OnLine(StatelessHTMLParser::ID_STOP_PARSING, "stop-parsing");
}

void EventLineObserver::OnStartTag(const WideChar* name, const Attributes* attributes) {
    OnLine(StatelessHTMLParser::ID_START_TAG, Line("start", Show(name), Show(*attributes)));
}

void EventLineObserver::OnEndTag(const WideChar* name) {
    OnLine(StatelessHTMLParser::ID_END_TAG, Line("end", Show(name)));
}

void EventLineObserver::OnScript(const Attributes* attributes, const WideChar* body) {
    OnLine(StatelessHTMLParser::ID_SCRIPT, Line("script", Show(*attributes), Show(body)));
}

void EventLineObserver::OnExternTag(const WideChar* name, const Attributes* attributes) {
    OnLine(StatelessHTMLParser::ID_EXTERN_TAG, Line("extern", Show(name), Show(*attributes)));
}

void EventLineObserver::OnEntityTag(const WideChar* name, const Tokens* tokens) {
    OnLine(StatelessHTMLParser::ID_ENTITY_TAG, Line("entity", Show(name), Show(*tokens)));
}

void EventLineObserver::OnComment(const WideChar* text) {
    OnLine(StatelessHTMLParser::ID_COMMENT, Line("comment", Show(text)));
}

void EventLineObserver::OnText(const WideChar* text) {
    OnLine(StatelessHTMLParser::ID_TEXT, Line("text", Show(text)));
}

void EventLineObserver::OnStyle(const Attributes* attributes, const WideChar* body) {
    OnLine(StatelessHTMLParser::ID_STYLE, Line("style", Show(*attributes), Show(body)));
}

std::string EventLineObserver::Show(const WideChar* text) const {
    return Escape(text, stringOptions);
}

std::string EventLineObserver::Show(const Attributes& attributes) const {
    std::string line;
    for (const auto& [name, value] : attributes) {
        line += '{';
        line += Escape(name, stringOptions);
        line += '=';
        line += Escape(value, stringOptions);
        line += '}';
    }
    return line;
}

std::string EventLineObserver::Show(const Tokens& tokens) const {
    std::string line;
    for (const WideString& token : tokens) {
        line += '{';
        line += Escape(token, stringOptions);
        line += '}';
    }
    return line;
}

}  // namespace Kestra::Trace
