#include "tests/reference/EditedDocument.h"

#include <utility>

namespace Kestra::Test {

namespace {

using HTML::RewriterToken;

constexpr std::string_view TEXTS[] = {"text", "a b", " ", "\xE4\xF6", "x & y", "1 > 0\n", "&amp;", "(longer than a few characters)"};
constexpr std::string_view NAMES[] = {"a", "p", "x-y", "B", "td", "h1"};
constexpr std::string_view WORDS[] = {"href", "Class", "id", "data-x", "hidden", "q"};
constexpr std::string_view VALUES[] = {"v", "/path?x=1", "\xE9", "2"};
constexpr std::string_view QUOTED_VALUES[] = {"v", "", "two words", "a>b", "/x/", "&lt;=", "\xE9\xE8"};
constexpr std::string_view SPACES[] = {" ", "  ", "\n", "\t "};
constexpr std::string_view MARKUP[] = {"<i>", "", "<!--new-->", "x</i>y", "&copy;"};

/// What is written as a value in some quotes.
std::string Escaped(std::string_view value, char quote) {
    std::string escaped;
    for (const char character : value) {
        if (character == '&')
            escaped += "&amp;";
        else if (character == quote)
            escaped += quote == '"' ? "&quot;" : "&#39;";
        else
            escaped += character;
    }
    return escaped;
}

/// Writes a document token by token.
class Maker {
public:
    explicit Maker(std::uint64_t seed) : dice(seed) {}

    EditedDocument Make() {
        const std::size_t tokens = dice.Between(1, 12);
        bool wasText = false;
        for (std::size_t i = 0; i < tokens; ++i) {
            const std::size_t kind = dice.Below(wasText ? 4 : 5);
            wasText = kind == 4;
            const std::size_t begin = document.bytes.size();
            if (kind <= 1) {
                AddTag();
                continue;
            }
            if (kind == 2)
                document.bytes += "</" + std::string(dice.Pick(NAMES)) + ">";
            else if (kind == 3)
                document.bytes += "<!--" + std::string(dice.Pick(TEXTS)) + "-->";
            else
                document.bytes += dice.Pick(TEXTS);
            EditToken(begin);
        }
        return std::move(document);
    }

private:
    /// An attribute that stands in the document.
    struct Written {
        std::string name;
        std::size_t begin;
        std::size_t nameBegin;
        std::size_t nameEnd;
        std::size_t valueBegin;
        std::size_t end;
        char quote;  // 0 for none
        bool hasValue;
    };

    void AddTag() {
        std::string& bytes = document.bytes;
        const std::size_t begin = bytes.size();
        bytes += "<" + std::string(dice.Pick(NAMES));
        std::vector<Written> attributes;
        for (std::size_t i = dice.Below(5); i > 0; --i) {
            Written attribute{};
            attribute.begin = bytes.size();
            bytes += dice.Pick(SPACES);
            attribute.nameBegin = bytes.size();
            // A number makes it the only one of its name.
            attribute.name = std::string(dice.Pick(WORDS)) + std::to_string(i);
            bytes += attribute.name;
            attribute.nameEnd = attribute.valueBegin = attribute.end = bytes.size();
            attribute.hasValue = !dice.OneIn(4);
            if (attribute.hasValue) {
                constexpr std::string_view EQUALS[] = {"=", "=", "=", " = ", "\n="};
                constexpr char QUOTES[] = {'\0', '\'', '"', '"'};
                bytes += dice.Pick(EQUALS);
                attribute.quote = QUOTES[dice.Below(4)];
                const std::string quote(attribute.quote == '\0' ? 0 : 1, attribute.quote);
                attribute.valueBegin = bytes.size() + quote.size();
                bytes += quote + std::string(quote.empty() ? dice.Pick(VALUES) : dice.Pick(QUOTED_VALUES)) + quote;
                attribute.end = bytes.size();
            }
            attributes.push_back(attribute);
        }
        const std::size_t listEnd = bytes.size();
        constexpr std::string_view ENDS[] = {">", ">", " >", " />"};
        bytes += dice.Pick(ENDS);
        if (dice.OneIn(3))
            return;
        if (attributes.empty() || dice.OneIn(4))
            EditToken(begin);
        else
            EditAttribute(begin, listEnd, attributes[dice.Below(attributes.size())]);
    }

    /// One edit of a whole token, or two.
    void EditToken(std::size_t begin) {
        const std::size_t end = document.bytes.size();
        const std::string markup(dice.Pick(MARKUP));
        const auto add = [&](std::function<std::uint32_t(RewriterToken)> edit) { document.edits.push_back({begin, std::move(edit)}); };
        switch (dice.Below(6)) {
            case 0:
                document.splices.push_back({begin, end, markup});
                add([markup](RewriterToken token) { return token.Replace(markup, HTML::CONTENT_MARKUP); });
                break;
            case 1:
                document.splices.push_back({begin, end, ""});
                add([](RewriterToken token) { return token.Remove(); });
                break;
            case 2:
                document.splices.push_back({begin, begin, markup});
                add([markup](RewriterToken token) { return token.InsertBefore(markup, HTML::CONTENT_MARKUP); });
                break;
            case 3:
                document.splices.push_back({end, end, markup + "2"});
                add([markup](RewriterToken token) {
                    return token.InsertAfter(markup, HTML::CONTENT_MARKUP) + token.InsertAfter("2", HTML::CONTENT_MARKUP);
                });
                break;
            case 4:
                document.splices.push_back({begin, begin, "&lt;"});
                document.splices.push_back({begin, end, markup});
                add([markup](RewriterToken token) {
                    return token.Replace(markup, HTML::CONTENT_MARKUP) + token.InsertBefore("<", HTML::CONTENT_TEXT);
                });
                break;
            default:
                break;
        }
    }

    void EditAttribute(std::size_t begin, std::size_t listEnd, const Written& attribute) {
        constexpr std::string_view NEW_VALUES[] = {"new", "two words", "\"&'", "", "a/b"};
        const std::string value(dice.Pick(NEW_VALUES));
        const std::string name = attribute.name;
        const auto add = [&](std::function<std::uint32_t(RewriterToken)> edit) { document.edits.push_back({begin, std::move(edit)}); };
        switch (dice.Below(4)) {
            case 0: {
                const bool staysBare = attribute.quote == '\0' && (value == "new" || value == "a/b");
                const char quote = attribute.quote != '\0' ? attribute.quote : '"';
                if (!attribute.hasValue)
                    document.splices.push_back({attribute.nameEnd, attribute.nameEnd, "=\"" + Escaped(value, '"') + "\""});
                else if (attribute.quote != '\0')
                    document.splices.push_back({attribute.valueBegin, attribute.end - 1, Escaped(value, quote)});
                else
                    document.splices.push_back({attribute.valueBegin, attribute.end, staysBare ? value : '"' + Escaped(value, '"') + '"'});
                add([name, value](RewriterToken token) { return token.SetAttribute(name, value); });
                break;
            }
            case 1:
                document.splices.push_back({attribute.nameBegin, attribute.nameEnd, "renamed"});
                add([name](RewriterToken token) { return token.RenameAttribute(name, "renamed"); });
                break;
            case 2:
                document.splices.push_back({attribute.begin, attribute.end, ""});
                add([name](RewriterToken token) { return token.RemoveAttribute(name); });
                break;
            default:
                document.splices.push_back({listEnd, listEnd, " added=\"" + Escaped(value, '"') + "\""});
                add([value](RewriterToken token) { return token.AddAttribute("added", value); });
                break;
        }
    }

    Dice dice;
    EditedDocument document;
};

}  // namespace

EditedDocument MakeEditedDocument(std::uint64_t seed) {
    return Maker(seed).Make();
}

std::string ApplySplices(std::string_view bytes, const std::vector<Splice>& splices) {
    std::string result;
    std::size_t place = 0;
    for (const Splice& splice : splices) {
        result.append(bytes.substr(place, splice.begin - place)).append(splice.text);
        place = splice.end;
    }
    return result.append(bytes.substr(place));
}

}  // namespace Kestra::Test
