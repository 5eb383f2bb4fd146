#include "tools/kestra-html/JsonEventObserver.h"

namespace Kestra::Tool {

JsonEventObserver::JsonEventObserver(LineSink* lineSink) : line(lineSink) {}

void JsonEventObserver::OnStartParsing() {
    Plain("StartParsing");
}

void JsonEventObserver::OnStopParsing() {
    Plain("StopParsing");
}

void JsonEventObserver::OnStartTag(const WideChar* name, const Attributes* attributes) {
    Tag("StartTag", name, attributes);
}

void JsonEventObserver::OnEndTag(const WideChar* name) {
    StringOnly("EndTag", "name", name);
}

void JsonEventObserver::OnScript(const Attributes* attributes, const WideChar* body) {
    Element("Script", attributes, body);
}

void JsonEventObserver::OnExternTag(const WideChar* name, const Attributes* attributes) {
    Tag("ExternTag", name, attributes);
}

void JsonEventObserver::OnEntityTag(const WideChar* name, const Tokens* tokens) {
    line.Begin("EntityTag");
    line.String("name", name);
    line.List("tokens", tokens);
    line.End();
}

void JsonEventObserver::OnComment(const WideChar* text) {
    StringOnly("Comment", "text", text);
}

void JsonEventObserver::OnText(const WideChar* text) {
    StringOnly("Text", "text", text);
}

void JsonEventObserver::OnStyle(const Attributes* attributes, const WideChar* body) {
    Element("Style", attributes, body);
}

void JsonEventObserver::WriteResult(const EventsPassResult& result, const std::string& inputName) {
    line.Begin("Result");
    line.Calls(result);
    line.File(inputName);
    line.End();
}

void JsonEventObserver::Plain(std::string_view event) {
    line.Begin(event);
    line.End();
}

void JsonEventObserver::Tag(std::string_view event, const WideChar* name, const Attributes* attributes) {
    line.Begin(event);
    line.String("name", name);
    line.List("attributes", attributes);
    line.End();
}

void JsonEventObserver::Element(std::string_view event, const Attributes* attributes, const WideChar* body) {
    line.Begin(event);
    line.List("attributes", attributes);
    line.String("body", body);
    line.End();
}

void JsonEventObserver::StringOnly(std::string_view event, const char* member, const WideChar* text) {
    line.Begin(event);
    line.String(member, text);
    line.End();
}

}  // namespace Kestra::Tool
