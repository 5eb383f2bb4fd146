// Prints a page with its http: links made https: links. Everything else comes out as it came in.
#include <kestra/html/DocumentParser.h>

#include <filesystem>
#include <fstream>
#include <iostream>

using namespace Kestra;

class Output final : public HTML::ParserObserverOutputHandler {
public:
    explicit Output(const char* path) : file(path, std::ios::binary) {}

    void Write(const void* data, std::uint64_t byteCount, bool) override {
        file.write(static_cast<const char*>(data), static_cast<std::streamsize>(byteCount));
    }

    std::ofstream file;
};

void MakeSafe(HTML::RewriterToken tag, std::string_view name) {
    constexpr std::string_view UNSAFE = "http:";
    std::string link;
    tag.GetAttribute(name, &link);
    if (EqualsKeyword(std::string_view(link).substr(0, UNSAFE.size()), UNSAFE))
        tag.SetAttribute(name, "https:" + link.substr(UNSAFE.size()));
}

int main(int argc, char** argv) try {
    if (argc != 3) {
        std::cerr << "usage: safe-links PAGE OUTPUT\n";
        return 2;
    }
    Output output(argv[2]);
    HTML::Rewriter rewriter(&output);
    for (const char* name : {"href", "src", "action"})
        rewriter.OnElement("[" + std::string(name) + "]",
                           [name](HTML::RewriterElement element) { MakeSafe(element.GetStartTag(), name); });
    rewriter.SetScriptMode(HTML::GenericParser::SCRIPT_AS_TEXT);  // as browsers read them
    rewriter.StartParse(StringNS::CharSet::UNKNOWN, HTML::GenericParser::DATA_STREAM_AUTO);
    const std::uint32_t result = rewriter.ParseFile(std::filesystem::path(argv[1]).string<WideChar>().c_str());
    if (result == HTML::PARSER_OK && rewriter.EndParse() == HTML::PARSER_OK && output.file.flush())
        return 0;
    std::cerr << argv[1] << ": cannot be rewritten\n";
    return 1;
} catch (const std::filesystem::filesystem_error& failure) {
    std::cerr << failure.what() << '\n';  // a file name that is no text
    return 1;
}
