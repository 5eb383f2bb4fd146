#include "tools/kestra-html/output/JsonLine.h"

#include "html/framework/RecordFields.h"
#include "platform/CharSet.h"
#include "platform/StringHelper.h"

namespace Kestra::Tool {

JsonLine::JsonLine(LineSink* lineSink) : sink(lineSink) {}

void JsonLine::Begin() {
    text.Clear();
    text.OpenObject();
}

void JsonLine::Begin(std::string_view event) {
    Begin();
    text.Name("event");
    text.PlainString(event);
}

void JsonLine::End() {
    text.CloseObject();
    sink->Line(text.Get());
}

void JsonLine::String(const char* name, const WideChar* value) {
    if (value == nullptr)
        return Null(name);
    text.Name(name);
    text.String(WideStringView(value));
}

void JsonLine::Calls(const CallResults& results) {
    Number("startParse", results.startParse);
    Number("parse", results.parse);
    Number("endParse", results.endParse);
    Number("line", results.line);
    Number("column", results.column);
}

void JsonLine::File(const std::string& inputName) {
    WideString file;
    StringNS::StringHelper::GetWideFromGeneric(StringNS::CharSet::UTF8, inputName.data(), inputName.size(), &file);
    String("file", &file);
}

template <typename T>
void JsonLine::Items(const Vector<T>& items) {
    text.OpenArray();
    for (const T& item : items)
        Item(item);
    text.CloseArray();
}

template <typename C, typename S>
void JsonLine::PlacedAttributes(const char* name, const Vector<HTML::Attribute<C, S>>* attributes,
                                const HTML::GenericParser& parser) {
    text.Name(name);
    if (attributes == nullptr) {
        text.Null();
        return;
    }
    text.OpenArray();
    std::uint64_t index = 0;
    for (const HTML::Attribute<C, S>& attribute : *attributes) {
        HTML::AttributePlace place;
        parser.GetAttributePlace(index, &place);
        text.OpenObject();
        Fields(attribute);
        Place(place, attribute.hasValue);
        text.CloseObject();
        ++index;
    }
    text.CloseArray();
}

void JsonLine::Place(const HTML::TokenPlace& place) {
    Number("begin", place.begin);
    Number("end", place.end);
    Number("line", place.line);
    Number("column", place.column);
}

void JsonLine::Place(const HTML::AttributePlace& place, bool hasValue) {
    Number("begin", place.begin);
    Number("end", place.end);
    Number("nameBegin", place.nameBegin);
    Number("nameEnd", place.nameEnd);
    if (hasValue) {
        Number("valueBegin", place.valueBegin);
        Number("valueEnd", place.valueEnd);
    } else {
        Null("valueBegin");
        Null("valueEnd");
    }
}

/// An attribute, or a part of a declaration.
template <template <typename, typename> class Part, typename C, typename S>
void JsonLine::Item(const Part<C, S>& part) {
    text.OpenObject();
    Fields(part);
    text.CloseObject();
}

template <template <typename, typename> class Part, typename C, typename S>
void JsonLine::Fields(const Part<C, S>& part) {
    HTML::ForEachField(part, [this](const char* name, const auto& value) { this->Field(name, value); });
}

template <typename S>
void JsonLine::Item(const std::pair<S, S>& nameAndValue) {
    text.OpenArray();
    text.String(nameAndValue.first);
    text.String(nameAndValue.second);
    text.CloseArray();
}

void JsonLine::Item(const WideString& value) {
    text.String(value);
}

void JsonLine::Item(const HTML::AttributePlace& place) {
    text.OpenObject();
    Place(place, place.valueBegin != place.nameEnd);
    text.CloseObject();
}

template void JsonLine::Items(const Vector<HTML::AttributePlace>& items);
template void JsonLine::Items(const Vector<HTML::Attribute<char, std::string>>& items);
template void JsonLine::Items(const Vector<HTML::Attribute<WideChar, WideString>>& items);
template void JsonLine::PlacedAttributes(const char* name, const Vector<HTML::Attribute<char, std::string>>* attributes,
                                         const HTML::GenericParser& parser);
template void JsonLine::PlacedAttributes(const char* name,
                                         const Vector<HTML::Attribute<WideChar, WideString>>* attributes,
                                         const HTML::GenericParser& parser);
template void JsonLine::Items(const Vector<HTML::EntityToken<char, std::string>>& items);
template void JsonLine::Items(const Vector<HTML::EntityToken<WideChar, WideString>>& items);
template void JsonLine::Items(const Vector<std::pair<WideString, WideString>>& items);
template void JsonLine::Items(const Vector<WideString>& items);

}  // namespace Kestra::Tool
