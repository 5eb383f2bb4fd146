// Prints where the links of a page lead, one a line, in UTF-8. The first malformed markup ends the
// list.
#include <kestra/html/StatelessParser.h>
#include <kestra/platform/StringHelper.h>

#include <filesystem>
#include <iostream>

using namespace Kestra;

class LinkPrinter final : public HTML::StatelessHTMLObserver {
public:
    void OnStartTag(const WideChar* name, const Attributes* attributes) override {
        for (const auto& [attribute, value] : *attributes) {
            if (EqualsKeyword(WideStringView(name), "a") && EqualsKeyword(attribute, "href")) {
                std::string text;
                StringNS::StringHelper::GetStringFromWide(StringNS::CharSet::UTF8, value.data(), value.size(), &text);
                std::cout << text << '\n';
            }
        }
    }
};

int main(int argc, char** argv) try {
    if (argc != 2) {
        std::cerr << "usage: stateless-links PAGE\n";
        return 2;
    }
    LinkPrinter printer;
    HTML::StatelessHTMLParser parser;
    parser.Attach(&printer);
    parser.StartParse(StringNS::CharSet::UTF8);
    const std::uint32_t result = parser.ParseFile(std::filesystem::path(argv[1]).string<WideChar>().c_str());
    std::size_t line = 0;
    parser.GetCurrentLineNumber(&line);
    parser.EndParse();
    if (result == HTML::STATELESS_FILE_NOT_OPENED)
        std::cerr << argv[1] << ": cannot be opened\n";
    else if (result != HTML::STATELESS_OK)
        std::cerr << argv[1] << ": parsing ended with " << result << " near line " << line << '\n';
    return result == HTML::STATELESS_OK ? 0 : 1;
} catch (const std::filesystem::filesystem_error& failure) {
    std::cerr << failure.what() << '\n';  // a file name that is no text
    return 1;
}
