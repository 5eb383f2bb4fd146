#include "tools/kestra-html/output/JsonEventObserver.h"

namespace Kestra::Tool {

JsonEventObserver::JsonEventObserver(LineSink* lineSink, const HTML::StatelessHTMLParser* placesParser)
    : line(lineSink) {
    if (placesParser != nullptr)
        places.emplace(placesParser);
}

void JsonEventObserver::OnStartParsing() {
    line.Begin("StartParsing");
    End();
}

void JsonEventObserver::OnStopParsing() {
    line.Begin("StopParsing");
    if (places)
        line.Place(places->TakeEnd());
    line.End();
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
    End();
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

void JsonEventObserver::End() {
    if (places)
        line.Place(places->TakeConstruct());
    line.End();
}

/// A list is written as pairs, so the places of its items are a list beside it.
void JsonEventObserver::EndWith(const Attributes& attributes) {
    if (places) {
        line.Place(places->TakeConstruct());
        if (!attributes.empty()) {
            const Vector<HTML::AttributePlace> attributePlaces = places->GetAttributes(attributes.size());
            line.List("attributePlaces", &attributePlaces);
        }
    }
    line.End();
}

void JsonEventObserver::Tag(std::string_view event, const WideChar* name, const Attributes* attributes) {
    line.Begin(event);
    line.String("name", name);
    line.List("attributes", attributes);
    EndWith(*attributes);
}

void JsonEventObserver::Element(std::string_view event, const Attributes* attributes, const WideChar* body) {
    line.Begin(event);
    line.List("attributes", attributes);
    line.String("body", body);
    EndWith(*attributes);
}

void JsonEventObserver::StringOnly(std::string_view event, const char* member, const WideChar* text) {
    line.Begin(event);
    line.String(member, text);
    End();
}

}  // namespace Kestra::Tool
