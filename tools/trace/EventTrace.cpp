#include "tools/trace/EventTrace.h"

#include <string_view>

#include "html/stateless/StatelessHTMLParser.h"

namespace Kestra::Trace {

namespace {

using HTML::StatelessHTMLParser;

}  // namespace

EventLineObserver::EventLineObserver(const Options& options) : stringOptions(options) {}

template <typename... Parts>
void EventLineObserver::MakeLine(unsigned long event, std::string_view word, Parts... parts) {
    built = word;
    char mark = '(';
    const auto add = [this, &mark](auto part) {
        built += mark;
        Append(part);
        mark = '|';
    };
    (add(parts), ...);
    built += ')';
    OnLine(event, built);
}

void EventLineObserver::OnStartParsing() {
    OnLine(StatelessHTMLParser::ID_START_PARSING, "start-parsing");
}

void EventLineObserver::OnStopParsing() {
    OnLine(StatelessHTMLParser::ID_STOP_PARSING, "stop-parsing");
}

void EventLineObserver::OnStartTag(const WideChar* name, const Attributes* attributes) {
    MakeLine(StatelessHTMLParser::ID_START_TAG, "start", name, attributes);
}

void EventLineObserver::OnEndTag(const WideChar* name) {
    MakeLine(StatelessHTMLParser::ID_END_TAG, "end", name);
}

void EventLineObserver::OnScript(const Attributes* attributes, const WideChar* body) {
    MakeLine(StatelessHTMLParser::ID_SCRIPT, "script", attributes, body);
}

void EventLineObserver::OnExternTag(const WideChar* name, const Attributes* attributes) {
    MakeLine(StatelessHTMLParser::ID_EXTERN_TAG, "extern", name, attributes);
}

void EventLineObserver::OnEntityTag(const WideChar* name, const Tokens* tokens) {
    MakeLine(StatelessHTMLParser::ID_ENTITY_TAG, "entity", name, tokens);
}

void EventLineObserver::OnComment(const WideChar* text) {
    MakeLine(StatelessHTMLParser::ID_COMMENT, "comment", text);
}

void EventLineObserver::OnText(const WideChar* text) {
    MakeLine(StatelessHTMLParser::ID_TEXT, "text", text);
}

void EventLineObserver::OnStyle(const Attributes* attributes, const WideChar* body) {
    MakeLine(StatelessHTMLParser::ID_STYLE, "style", attributes, body);
}

void EventLineObserver::Append(const WideChar* text) {
    AppendEscaped(&built, text, stringOptions);
}

void EventLineObserver::Append(const Attributes* attributes) {
    for (const auto& [name, value] : *attributes) {
        built += '{';
        AppendEscaped(&built, name, stringOptions);
        built += '=';
        AppendEscaped(&built, value, stringOptions);
        built += '}';
    }
}

void EventLineObserver::Append(const Tokens* tokens) {
    for (const WideString& token : *tokens) {
        built += '{';
        AppendEscaped(&built, token, stringOptions);
        built += '}';
    }
}

}  // namespace Kestra::Trace
