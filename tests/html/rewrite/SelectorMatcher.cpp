// Matches the selectors of standard input with the tags that follow them, for the comparison with another matcher. Each line is a letter
// and words, every text being the UTF-8 of it in hexadecimal:
//
//     n                              a new document, without selectors
//     s =SELECTOR                    the next selector
//     o =NAME SHORT (NAME=VALUE)*    a start tag; SHORT is 0 or 1
//     c =NAME                        an end tag
//
// The answer to each is a line: "read" or "refused" to a selector, and to a start tag the numbers of the selectors that match. Others get
// an empty one.
#include <cstdlib>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "html/rewrite/OpenElements.h"
#include "html/rewrite/Selectors.h"
#include "tests/html/rewrite/TestTags.h"

using namespace Kestra;

namespace {

std::string FromHexadecimal(std::string_view digits) {
    const auto valueOf = [](char digit) { return digit <= '9' ? digit - '0' : digit - 'a' + 10; };
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes.push_back(static_cast<char>(valueOf(digits[i]) * 16 + valueOf(digits[i + 1])));
    return bytes;
}

struct Document {
    HTML::SelectorSet selectors;
    HTML::OpenElements open{&selectors};
};

}  // namespace

int main() {
    auto document = std::make_unique<Document>();
    std::string line;
    while (std::getline(std::cin, line)) {
        std::istringstream words(line);
        std::string kind;
        std::vector<std::pair<std::string, std::string>> texts;
        std::string word;
        bool isShort = false;
        words >> kind;
        while (words >> word) {
            const std::size_t equals = word.find('=');
            if (equals == std::string::npos)
                isShort = word == "1";
            else
                texts.emplace_back(FromHexadecimal(word.substr(0, equals)), FromHexadecimal(word.substr(equals + 1)));
        }
        if (kind == "n") {
            document = std::make_unique<Document>();
            std::cout << '\n';
            continue;
        }
        if (texts.empty())
            return EXIT_FAILURE;
        if (kind == "s") {
            std::cout << (document->selectors.Add(texts.front().second, nullptr) ? "read\n" : "refused\n");
            continue;
        }
        Test::TestTag tag;
        tag.name = texts.front().second;
        tag.isEnd = kind == "c";
        tag.isShort = isShort;
        tag.attributes.assign(texts.begin() + 1, texts.end());
        std::cout << Test::Join(Test::Take(tag, &document->open)) << '\n';
    }
    return EXIT_SUCCESS;
}
