#include "tools/kestra-html/JsonObserver.h"

namespace Kestra::Tool {

template <typename C, typename S>
JsonObserver<C, S>::JsonObserver(LineSink* lineSink, const HTML::GenericParser* placesParser) : parser(placesParser), line(lineSink) {}

template <typename C, typename S>
void JsonObserver<C, S>::OnStartParsing() {
    Plain("StartParsing");
}

template <typename C, typename S>
void JsonObserver<C, S>::OnEndParsing() {
    Plain("EndParsing");
}

template <typename C, typename S>
void JsonObserver<C, S>::OnBOM(const void* bytes, std::uint64_t size) {
    const std::string mark(static_cast<const char*>(bytes), static_cast<std::size_t>(size));
    line.Begin("BOM");
    line.String("bytes", &mark);
    End();
}

template <typename C, typename S>
void JsonObserver<C, S>::OnCharset(StringNS::CharSet::Code code) {
    line.Begin("Charset");
    line.Number("code", code);
    End();
}

template <typename C, typename S>
void JsonObserver<C, S>::OnText(HTML::TextData<C, S>* data) {
    TextOnly("Text", data->text);
}

template <typename C, typename S>
void JsonObserver<C, S>::OnCComment(HTML::CCommentData<C, S>* data) {
    TextOnly("CComment", data->text);
}

template <typename C, typename S>
void JsonObserver<C, S>::OnCPPComment(HTML::CPPCommentData<C, S>* data) {
    TextOnly("CPPComment", data->text);
}

template <typename C, typename S>
void JsonObserver<C, S>::OnSQuoteString(HTML::SQuoteStringData<C, S>* data) {
    TextOnly("SQuoteString", data->text);
}

template <typename C, typename S>
void JsonObserver<C, S>::OnDQuoteString(HTML::DQuoteStringData<C, S>* data) {
    TextOnly("DQuoteString", data->text);
}

template <typename C, typename S>
void JsonObserver<C, S>::OnStartTag(HTML::StartTagData<C, S>* data) {
    line.Begin("StartTag");
    line.String("prefix", data->prefix);
    line.String("name", data->name);
    Attributes(data->attributes);
    line.String("suffix", data->suffix);
    line.Bool("closed", data->closed);
    End();
}

template <typename C, typename S>
void JsonObserver<C, S>::OnShortTag(HTML::ShortTagData<C, S>* data) {
    line.Begin("ShortTag");
    line.String("prefix", data->prefix);
    line.String("name", data->name);
    Attributes(data->attributes);
    line.String("suffix", data->suffix);
    line.Bool("closed", data->closed);
    End();
}

template <typename C, typename S>
void JsonObserver<C, S>::OnEndTag(HTML::EndTagData<C, S>* data) {
    line.Begin("EndTag");
    line.String("prefix", data->prefix);
    line.String("name", data->name);
    line.String("afterName", data->afterName);
    line.Bool("closed", data->closed);
    Attributes(data->attributes);
    line.Bool("slashBeforeClose", data->slashBeforeClose);
    line.String("suffix", data->suffix);
    End();
}

template <typename C, typename S>
void JsonObserver<C, S>::OnCDATATag(HTML::CDATATagData<C, S>* data) {
    line.Begin("CDATATag");
    line.String("keyword", data->keyword);
    line.String("text", data->text);
    line.Bool("closed", data->closed);
    End();
}

template <typename C, typename S>
void JsonObserver<C, S>::OnConditionalTag(HTML::ConditionalTagData<C, S>* data) {
    line.Begin("ConditionalTag");
    line.String("keyword", data->keyword);
    line.String("condition", data->condition);
    line.String("tail", data->tail);
    line.Bool("bracketClosed", data->bracketClosed);
    line.Bool("tagClosed", data->tagClosed);
    End();
}

template <typename C, typename S>
void JsonObserver<C, S>::OnCommentTag(HTML::CommentTagData<C, S>* data) {
    line.Begin("CommentTag");
    line.String("text", data->text);
    line.Bool("closed", data->closed);
    End();
}

template <typename C, typename S>
void JsonObserver<C, S>::OnEntityTag(HTML::EntityTagData<C, S>* data) {
    line.Begin("EntityTag");
    line.String("prefix", data->prefix);
    line.String("name", data->name);
    line.List("tokens", data->tokens);
    line.String("suffix", data->suffix);
    End();
}

template <typename C, typename S>
void JsonObserver<C, S>::OnExternTag(HTML::ExternTagData<C, S>* data) {
    line.Begin("ExternTag");
    line.String("prefix", data->prefix);
    line.String("name", data->name);
    Attributes(data->attributes);
    line.String("suffix", data->suffix);
    line.Bool("freeStyle", data->freeStyle);
    line.String("text", data->text);
    line.Bool("slashBeforeClose", data->slashBeforeClose);
    End();
}

template <typename C, typename S>
void JsonObserver<C, S>::OnJSTagStart() {
    Plain("JSTagStart");
}

template <typename C, typename S>
void JsonObserver<C, S>::OnJSTagEnd() {
    Plain("JSTagEnd");
}

template <typename C, typename S>
void JsonObserver<C, S>::OnCSSTagStart() {
    Plain("CSSTagStart");
}

template <typename C, typename S>
void JsonObserver<C, S>::OnCSSTagEnd() {
    Plain("CSSTagEnd");
}

template <typename C, typename S>
void JsonObserver<C, S>::OnJunkData(HTML::JunkData<C, S>* data) {
    TextOnly("JunkData", data->text);
}

template <typename C, typename S>
void JsonObserver<C, S>::WriteResult(const ParsePassResult& result, const std::string& inputName) {
    line.Begin("Result");
    line.Calls(result);
    line.String("currentParserName", &result.currentParserName);
    line.Number("charset", result.charset);
    line.Bool("isWParser", result.isWParser);
    line.Bool("hasCharsetErrors", result.hasCharsetErrors);
    line.Bool("needsReparsing", result.needsReparsing);
    line.File(inputName);
    line.End();
}

template <typename C, typename S>
void JsonObserver<C, S>::Plain(std::string_view event) {
    line.Begin(event);
    End();
}

template <typename C, typename S>
template <typename T>
void JsonObserver<C, S>::TextOnly(std::string_view event, const T* text) {
    line.Begin(event);
    line.String("text", text);
    End();
}

template <typename C, typename S>
void JsonObserver<C, S>::Attributes(const Vector<HTML::Attribute<C, S>>* attributes) {
    if (parser == nullptr)
        line.List("attributes", attributes);
    else
        line.PlacedAttributes("attributes", attributes, *parser);
}

/// Of an object of a callback.
template <typename C, typename S>
void JsonObserver<C, S>::End() {
    if (parser != nullptr)
        line.Place(parser->GetTokenPlace());
    line.End();
}

template class JsonObserver<char, std::string>;
template class JsonObserver<WideChar, WideString>;

}  // namespace Kestra::Tool
