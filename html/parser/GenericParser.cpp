#include "html/parser/GenericParser.h"

#include "html/parser/GenericParserEngine.h"

namespace Kestra::HTML {

GenericParser::GenericParser() : engine(std::make_unique<GenericParserEngine>()) {}

GenericParser::GenericParser(const GenericParser& other)
    : engine(std::make_unique<GenericParserEngine>(*other.engine)) {}

/// All that may fail is done before anything changes.
GenericParser& GenericParser::operator=(const GenericParser& other) {
    if (this != &other) {
        std::unique_ptr<GenericParserEngine> copy = std::make_unique<GenericParserEngine>(*other.engine);
        engine.swap(copy);
    }
    return *this;
}

GenericParser::~GenericParser() = default;

std::uint32_t GenericParser::SetObserver(ParserObserver<char, std::string>* observer, bool owns) {
    engine->BindObserver(observer, owns);
    return PARSER_OK;
}

std::uint32_t GenericParser::SetObserver(ParserObserver<WideChar, WideString>* observer, bool owns) {
    engine->BindObserver(observer, owns);
    return PARSER_OK;
}

std::uint32_t GenericParser::StartParse(StringNS::CharSet::Code code, DataStreamType type) {
    return engine->StartParse(code, type);
}

std::uint32_t GenericParser::ParseBuffer(const char* data, std::uint64_t size) {
    return engine->ParseBuffer(data, size);
}

std::uint32_t GenericParser::ParseStream(VFS::InputStream* stream, bool ownsStream) {
    return engine->ParseStream(stream, ownsStream);
}

std::uint32_t GenericParser::ParseFile(const WideChar* path) {
    return engine->ParseFile(path);
}

std::uint32_t GenericParser::EndParse() {
    return engine->EndParse();
}

std::uint32_t GenericParser::Stop() {
    return engine->Stop();
}

std::uint32_t GenericParser::DetectCharset(const void* data, std::uint64_t size, StringNS::CharSet::Code* out) {
    return engine->GetDetection().Detect(data, size, out);
}

std::uint32_t GenericParser::DetectCharset(VFS::InputStream* stream, StringNS::CharSet::Code* out) {
    return engine->GetDetection().Detect(stream, out);
}

std::uint32_t GenericParser::SetMaxTokenSize(std::uint64_t bytes) {
    engine->ForEachParser([bytes](auto& parser) { parser.SetMaxTokenSize(bytes); });
    return PARSER_OK;
}

std::uint64_t GenericParser::GetMaxTokenSize() const {
    return engine->QuerySetting([](const auto& parser) { return parser.GetMaxTokenSize(); });
}

std::uint32_t GenericParser::SetMaxAttributes(std::uint64_t count) {
    engine->ForEachParser([count](auto& parser) { parser.SetMaxAttributes(count); });
    return PARSER_OK;
}

std::uint64_t GenericParser::GetMaxAttributes() const {
    return engine->QuerySetting([](const auto& parser) { return parser.GetMaxAttributes(); });
}

TokenPlace GenericParser::GetTokenPlace() const {
    return engine->QueryRunning([](const auto& parser) { return parser.GetTokenPlace(); }, TokenPlace());
}

std::uint32_t GenericParser::GetAttributePlace(std::uint64_t index, AttributePlace* place) const {
    if (place == nullptr)
        return PARSER_INVALID_ARGUMENT;
    const auto find = [index, place](const auto& parser) {
        return parser.GetAttributePlace(static_cast<std::size_t>(index), place);
    };
    return engine->QueryRunning(find, false) ? PARSER_OK : PARSER_INVALID_ARGUMENT;
}

std::uint32_t GenericParser::GetAttributeParts(std::uint64_t index, std::vector<AttributePlace>* places) const {
    if (places == nullptr)
        return PARSER_INVALID_ARGUMENT;
    const auto find = [index, places](const auto& parser) {
        return parser.GetAttributeParts(static_cast<std::size_t>(index), places);
    };
    return engine->QueryRunning(find, false) ? PARSER_OK : PARSER_INVALID_ARGUMENT;
}

std::uint64_t GenericParser::GetLine() const {
    return engine->QueryRunning([](const auto& parser) { return parser.GetLine(); }, std::uint64_t{1});
}

std::uint64_t GenericParser::GetColumn() const {
    return engine->QueryRunning([](const auto& parser) { return parser.GetColumn(); }, std::uint64_t{1});
}

WideString GenericParser::GetCurrentParserName() const {
    return WideString(
        engine->QueryRunning([](const auto& parser) { return parser.GetCurrentParserName(); }, WideStringView()));
}

StringNS::CharSet::Code GenericParser::GetCharset() const {
    return engine->GetCharset();
}

bool GenericParser::IsWParser() const {
    return engine->IsWide();
}

bool GenericParser::HasCharsetErrors() const {
    return engine->QueryRunning([](const auto& parser) { return parser.GetDelivery().HasCharsetErrors(); }, false);
}

std::uint32_t GenericParser::GetConversionError() const {
    return engine->QueryRunning([](const auto& parser) { return parser.GetDelivery().GetConversionError(); },
                                std::uint32_t{PARSER_OK});
}

bool GenericParser::NeedsReparsing() const {
    return engine->QueryRunning([](const auto& parser) { return parser.GetMarkupCharset().NeedsReparsing(); }, false);
}

bool GenericParser::WasCharsetDetectorUsed() const {
    return engine->QueryRunning([](const auto& parser) { return parser.GetMarkupCharset().WasDetectorUsed(); }, false);
}

VFS::InputStream* GenericParser::GetSelfCheckStream() {
    return engine->CallRunning([](auto& parser) { return parser.GetDelivery().GetSelfCheckStream(); },
                               static_cast<VFS::InputStream*>(nullptr));
}

std::uint32_t GenericParser::SetSelfCheck(SelfCheck selfCheck) {
    engine->ForEachParser([selfCheck](auto& parser) { parser.GetDelivery().SetSelfCheckMode(selfCheck); });
    return PARSER_OK;
}

GenericParser::SelfCheck GenericParser::GetSelfCheck() const {
    return static_cast<SelfCheck>(engine->QueryRunning(
        [](const auto& parser) { return parser.GetDelivery().GetSelfCheckMode(); }, std::uint32_t{SELF_CHECK_OFF}));
}

std::uint32_t GenericParser::SetScriptMode(ScriptMode scriptMode) {
    if (scriptMode != SCRIPT_AS_TOKENS && scriptMode != SCRIPT_AS_TEXT)
        return PARSER_INVALID_ARGUMENT;
    engine->ForEachParser([scriptMode](auto& parser) { parser.SetScriptsAsText(scriptMode == SCRIPT_AS_TEXT); });
    return PARSER_OK;
}

GenericParser::ScriptMode GenericParser::GetScriptMode() const {
    return engine->QuerySetting([](const auto& parser) { return parser.AreScriptsAsText(); }) ? SCRIPT_AS_TEXT
                                                                                              : SCRIPT_AS_TOKENS;
}

std::uint32_t GenericParser::SetDetectCharsetErrors(bool detect) {
    engine->ForEachParser([detect](auto& parser) { parser.GetDelivery().SetDetectCharsetErrors(detect); });
    return PARSER_OK;
}

bool GenericParser::GetDetectCharsetErrors() const {
    return engine->QueryRunning([](const auto& parser) { return parser.GetDelivery().GetDetectCharsetErrors(); },
                                false);
}

std::uint32_t GenericParser::SetChrDetMinConfidence(std::uint64_t confidence) {
    engine->GetDetection().SetMinConfidence(confidence);
    return PARSER_OK;
}

std::uint64_t GenericParser::GetChrDetMinConfidence() const {
    return engine->GetDetection().GetMinConfidence();
}

std::uint32_t GenericParser::SetChrDetMaxSize(std::uint64_t bytes) {
    engine->GetDetection().SetMaxSize(bytes);
    return PARSER_OK;
}

std::uint64_t GenericParser::GetChrDetMaxSize() const {
    return engine->GetDetection().GetMaxSize();
}

std::uint64_t GenericParser::GetDetectedConfidence() const {
    return engine->GetDetection().GetConfidence();
}

}  // namespace Kestra::HTML
