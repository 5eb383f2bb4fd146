#include "html/rewrite/Rewriter.h"

#include <utility>

#include "html/rewrite/RewriterEngine.h"

namespace Kestra::HTML {

Rewriter::Rewriter(ParserObserverOutputHandler* output) : engine(std::make_unique<RewriterEngine>(output)) {}

Rewriter::~Rewriter() = default;

std::uint32_t Rewriter::SetObserver(ParserObserver<char, std::string>* observer) {
    return engine->SetObserver(observer, nullptr);
}

std::uint32_t Rewriter::SetObserver(ParserObserver<WideChar, WideString>* observer) {
    return engine->SetObserver(nullptr, observer);
}

std::uint32_t Rewriter::OnElement(std::string_view selector, ElementCallback callback, std::string* message) {
    return engine->OnElement(selector, std::move(callback), message);
}

std::uint32_t Rewriter::OnContent(std::string_view selector, TokenCallback callback, std::string* message) {
    return engine->OnContent(selector, std::move(callback), message);
}

RewriterToken Rewriter::GetToken() {
    return engine->GetToken();
}

std::uint32_t Rewriter::StartParse(StringNS::CharSet::Code code, GenericParser::DataStreamType type) {
    return engine->StartParse(code, type);
}

std::uint32_t Rewriter::ParseBuffer(const char* data, std::uint64_t size) {
    return engine->ParseBuffer(data, size);
}

std::uint32_t Rewriter::ParseStream(VFS::InputStream* stream, bool ownsStream) {
    return engine->ParseStream(stream, ownsStream);
}

std::uint32_t Rewriter::ParseFile(const WideChar* path) {
    return engine->ParseFile(path);
}

std::uint32_t Rewriter::EndParse() {
    return engine->EndParse();
}

const GenericParser& Rewriter::GetParser() const {
    return engine->GetParser();
}

std::uint32_t Rewriter::SetSelfCheck(GenericParser::SelfCheck selfCheck) {
    return engine->GetParser().SetSelfCheck(selfCheck);
}

std::uint32_t Rewriter::SetDetectCharsetErrors(bool detect) {
    return engine->GetParser().SetDetectCharsetErrors(detect);
}

std::uint32_t Rewriter::SetScriptMode(GenericParser::ScriptMode scriptMode) {
    return engine->GetParser().SetScriptMode(scriptMode);
}

std::uint32_t Rewriter::SetMaxTokenSize(std::uint64_t bytes) {
    return engine->GetParser().SetMaxTokenSize(bytes);
}

std::uint32_t Rewriter::SetMaxAttributes(std::uint64_t count) {
    return engine->GetParser().SetMaxAttributes(count);
}

std::uint32_t Rewriter::Stop() {
    return engine->GetParser().Stop();
}

std::uint32_t Rewriter::SetMaxDepth(std::uint64_t count) {
    engine->SetMaxDepth(count);
    return PARSER_OK;
}

std::uint32_t Rewriter::SetMaxOpenAttributes(std::uint64_t count) {
    engine->SetMaxOpenAttributes(count);
    return PARSER_OK;
}

}  // namespace Kestra::HTML
