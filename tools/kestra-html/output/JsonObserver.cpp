#include "tools/kestra-html/output/JsonObserver.h"

namespace Kestra::Tool {

template <typename C, typename S>
JsonObserver<C, S>::JsonObserver(LineSink* lineSink, const HTML::GenericParser* placesParser)
    : parser(placesParser), line(lineSink) {}

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
void JsonObserver<C, S>::OnEvent(HTML::ObserverEvent event) {
    line.Begin(HTML::GetEventNames(event).name);
    End();
}

template <typename C, typename S>
template <template <typename, typename> class Record>
void JsonObserver<C, S>::OnToken(Record<C, S>* record) {
    line.Begin(HTML::RecordKind<Record>::NAME);
    HTML::ForEachField(*record, [this](const char* name, const auto& value) { this->Member(name, value); });
    End();
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
void JsonObserver<C, S>::Member(const char* name, const Vector<HTML::Attribute<C, S>>* attributes) {
    if (parser == nullptr)
        line.List(name, attributes);
    else
        line.PlacedAttributes(name, attributes, *parser);
}

template <typename C, typename S>
void JsonObserver<C, S>::Member(const char* name, const Vector<HTML::EntityToken<C, S>>* tokens) {
    line.List(name, tokens);
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

#define INSTANTIATE(NAME, RECORD, WORD)                                                       \
    template void JsonObserver<char, std::string>::OnToken(HTML::RECORD<char, std::string>*); \
    template void JsonObserver<WideChar, WideString>::OnToken(HTML::RECORD<WideChar, WideString>*);
KESTRA_HTML_FOR_EACH_KIND(INSTANTIATE)
#undef INSTANTIATE

}  // namespace Kestra::Tool
