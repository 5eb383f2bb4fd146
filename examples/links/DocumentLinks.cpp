// Prints where the links of a page lead, one a line, in UTF-8. Malformed markup is passed over.
#include <kestra/html/DocumentParser.h>
#include <kestra/platform/StringHelper.h>

#include <filesystem>
#include <iostream>

using namespace Kestra;

class LinkPrinter final : public HTML::ParserObserver<WideChar, WideString> {
public:
    void OnStartTag(HTML::StartTagData<WideChar, WideString>* tag) override {
        Print(*tag->name, *tag->attributes);
    }
    void OnShortTag(HTML::ShortTagData<WideChar, WideString>* tag) override {
        Print(*tag->name, *tag->attributes);
    }

private:
    static void Print(const WideString& name, const Vector<HTML::Attribute<WideChar, WideString>>& attributes) {
        for (const auto& attribute : attributes) {
            if (EqualsKeyword(name, "a") && EqualsKeyword(attribute.name, "href")) {
                std::string text;
                StringNS::StringHelper::GetStringFromWide(StringNS::CharSet::UTF8, attribute.value.data(),
                                                          attribute.value.size(), &text);
                std::cout << text << '\n';
            }
        }
    }
};

int main(int argc, char** argv) try {
    if (argc != 2) {
        std::cerr << "usage: document-links PAGE\n";
        return 2;
    }
    LinkPrinter printer;
    HTML::GenericParser parser;
    parser.SetObserver(&printer, false);
    parser.StartParse(StringNS::CharSet::UTF8, HTML::GenericParser::DATA_STREAM_AUTO);
    std::uint32_t result = parser.ParseFile(std::filesystem::path(argv[1]).string<WideChar>().c_str());
    if (result == HTML::PARSER_OK)
        result = parser.EndParse();
    if (result == HTML::PARSER_INVALID_ARGUMENT)
        std::cerr << argv[1] << ": cannot be opened\n";
    else if (result != HTML::PARSER_OK)
        std::cerr << argv[1] << ": parsing ended with " << result << '\n';
    return result == HTML::PARSER_OK ? 0 : 1;
} catch (const std::filesystem::filesystem_error& failure) {
    std::cerr << failure.what() << '\n';  // a file name that is no text
    return 1;
}
