#include "tools/kestra-html/output/JsonLine.h"

#include "html/framework/RecordFields.h"
#include "platform/CharSet.h"
#include "platform/StringHelper.h"
#include "tools/kestra-html/output/JsonText.h"

namespace Kestra::Tool {

JsonLine::JsonLine(LineSink* lineSink) : sink(lineSink), writer(buffer) {}

void JsonLine::Begin() {
    buffer.Clear();
    writer.Reset(buffer);
    writer.StartObject();
}

void JsonLine::Begin(std::string_view event) {
    Begin();
    writer.Key("event");
    writer.String(event.data(), static_cast<rapidjson::SizeType>(event.size()));
}

void JsonLine::End() {
    writer.EndObject();
    sink->Line(std::string_view(buffer.GetString(), buffer.GetSize()));
}

void JsonLine::Null(const char* name) {
    writer.Key(name);
    writer.Null();
}

void JsonLine::Bool(const char* name, bool value) {
    writer.Key(name);
    writer.Bool(value);
}

void JsonLine::Number(const char* name, std::uint64_t value) {
    writer.Key(name);
    writer.Uint64(value);
}

void JsonLine::String(const char* name, const std::string* bytes) {
    Text(name, bytes);
}

void JsonLine::String(const char* name, const WideString* text) {
    Text(name, text);
}

void JsonLine::String(const char* name, const WideChar* text) {
    const WideStringView characters = text == nullptr ? WideStringView() : WideStringView(text);
    Text(name, text == nullptr ? nullptr : &characters);
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

template <typename S>
void JsonLine::Text(const char* name, const S* text) {
    writer.Key(name);
    if (text == nullptr) {
        writer.Null();
        return;
    }
    Value(*text);
}

template <typename S>
void JsonLine::Value(const S& text) {
    scratch.clear();
    AppendJsonString(&scratch, text);
    writer.RawValue(scratch.data(), scratch.size(), rapidjson::kStringType);
}

template <typename T>
void JsonLine::List(const char* name, const Vector<T>* items) {
    writer.Key(name);
    if (items == nullptr) {
        writer.Null();
        return;
    }
    writer.StartArray();
    for (const T& item : *items)
        Item(item);
    writer.EndArray();
}

template <typename C, typename S>
void JsonLine::PlacedAttributes(const char* name, const Vector<HTML::Attribute<C, S>>* attributes,
                                const HTML::GenericParser& parser) {
    writer.Key(name);
    if (attributes == nullptr) {
        writer.Null();
        return;
    }
    writer.StartArray();
    std::uint64_t index = 0;
    for (const HTML::Attribute<C, S>& attribute : *attributes) {
        HTML::AttributePlace place;
        parser.GetAttributePlace(index, &place);
        writer.StartObject();
        Fields(attribute);
        Place(place, attribute.hasValue);
        writer.EndObject();
        ++index;
    }
    writer.EndArray();
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
    writer.StartObject();
    Fields(part);
    writer.EndObject();
}

template <template <typename, typename> class Part, typename C, typename S>
void JsonLine::Fields(const Part<C, S>& part) {
    HTML::ForEachField(part, [this](const char* name, const auto& value) { this->Field(name, value); });
}

template <typename S>
void JsonLine::Field(const char* name, const S& text) {
    String(name, &text);
}

void JsonLine::Field(const char* name, std::uint32_t number) {
    Number(name, number);
}

void JsonLine::Field(const char* name, bool value) {
    Bool(name, value);
}

template <typename S>
void JsonLine::Item(const std::pair<S, S>& nameAndValue) {
    writer.StartArray();
    Value(nameAndValue.first);
    Value(nameAndValue.second);
    writer.EndArray();
}

void JsonLine::Item(const WideString& text) {
    Value(text);
}

void JsonLine::Item(const HTML::AttributePlace& place) {
    writer.StartObject();
    Place(place, place.valueBegin != place.nameEnd);
    writer.EndObject();
}

template void JsonLine::List(const char* name, const Vector<HTML::AttributePlace>* items);
template void JsonLine::List(const char* name, const Vector<HTML::Attribute<char, std::string>>* items);
template void JsonLine::List(const char* name, const Vector<HTML::Attribute<WideChar, WideString>>* items);
template void JsonLine::PlacedAttributes(const char* name, const Vector<HTML::Attribute<char, std::string>>* attributes,
                                         const HTML::GenericParser& parser);
template void JsonLine::PlacedAttributes(const char* name,
                                         const Vector<HTML::Attribute<WideChar, WideString>>* attributes,
                                         const HTML::GenericParser& parser);
template void JsonLine::List(const char* name, const Vector<HTML::EntityToken<char, std::string>>* items);
template void JsonLine::List(const char* name, const Vector<HTML::EntityToken<WideChar, WideString>>* items);
template void JsonLine::List(const char* name, const Vector<std::pair<WideString, WideString>>* items);
template void JsonLine::List(const char* name, const Vector<WideString>* items);

}  // namespace Kestra::Tool
