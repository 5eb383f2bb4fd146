// Lists the tokens of documents, with scripts as text, for the comparison with another tokenizer. A
// document on standard input is its length, four bytes with the low one first, and its bytes. The
// answer is a line of tokens, each a letter, where it begins and where it ends, in bytes: "s" a
// start or short tag, "e" an end tag, "t" text, "j" junk, "m" other markup. The document is read
// whole in 8 bits, and once more in pieces in UTF-16; the answers must agree.
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>

#include "html/framework/ParserObserver.h"
#include "html/parser/GenericParser.h"
#include "tests/reference/DocumentFeeding.h"
#include "tests/support/Flavours.h"
#include "tests/support/Splits.h"

using namespace Kestra;

namespace {

template <typename C, typename S>
class Lister final : public HTML::ParserObserver<C, S> {
public:
    explicit Lister(const HTML::GenericParser* observedParser) : parser(observedParser) {}

    void OnText(HTML::TextData<C, S>*) override {
        Add('t');
    }
    void OnStartTag(HTML::StartTagData<C, S>*) override {
        Add('s');
    }
    void OnShortTag(HTML::ShortTagData<C, S>*) override {
        Add('s');
    }
    void OnEndTag(HTML::EndTagData<C, S>*) override {
        Add('e');
    }
    void OnCDATATag(HTML::CDATATagData<C, S>*) override {
        Add('m');
    }
    void OnConditionalTag(HTML::ConditionalTagData<C, S>*) override {
        Add('m');
    }
    void OnCommentTag(HTML::CommentTagData<C, S>*) override {
        Add('m');
    }
    void OnEntityTag(HTML::EntityTagData<C, S>*) override {
        Add('m');
    }
    void OnExternTag(HTML::ExternTagData<C, S>*) override {
        Add('m');
    }
    void OnJunkData(HTML::JunkData<C, S>*) override {
        Add('j');
    }

    std::string list;

private:
    void Add(char kind) {
        const HTML::TokenPlace place = parser->GetTokenPlace();
        list += kind + std::to_string(place.begin / sizeof(C)) + '-' + std::to_string(place.end / sizeof(C)) + ' ';
    }

    const HTML::GenericParser* parser;
};

template <typename C, typename S>
std::string List(std::string_view latin1, const Test::Cuts& cuts) {
    constexpr bool IS_WIDE = sizeof(C) == 2;
    const std::string bytes = IS_WIDE ? Test::ToUtf16LE(latin1) : std::string(latin1);
    HTML::GenericParser parser;
    Lister<C, S> lister(&parser);
    parser.SetObserver(&lister, false);
    parser.SetScriptMode(HTML::GenericParser::SCRIPT_AS_TEXT);
    parser.StartParse(1252, IS_WIDE ? HTML::GenericParser::DATA_STREAM_UTF16 : HTML::GenericParser::DATA_STREAM_8BIT);
    Test::CutInputStream stream;
    const Test::Cuts byteCuts = Test::Scaled(cuts, sizeof(C));
    stream.Reset(bytes, byteCuts);
    if (parser.ParseStream(&stream, false) != 0 || parser.EndParse() != 0)
        return "a result other than 0";
    return lister.list;
}

}  // namespace

int main() {
    std::ios::sync_with_stdio(false);
    unsigned char head[4];
    for (std::uint64_t number = 0; std::cin.read(reinterpret_cast<char*>(head), sizeof(head)); ++number) {
        std::string document(head[0] | head[1] << 8 | head[2] << 16 | static_cast<std::size_t>(head[3]) << 24, '\0');
        if (!std::cin.read(document.data(), static_cast<std::streamsize>(document.size())))
            return EXIT_FAILURE;
        const Test::Cuts cuts = Test::CutsEvery(number % 7 + 1, document.size());
        const std::string list = List<char, std::string>(document, {});
        const bool isSame = List<WideChar, WideString>(document, cuts) == list;
        std::cout << (isSame ? list : "other tokens in pieces of UTF-16") << '\n';
    }
    return EXIT_SUCCESS;
}
