#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "tests/html/tags/AttributeModel.h"

namespace Kestra::Test {
namespace {

constexpr int ROUNDS = 10000;
constexpr std::string_view NAME_STOPS = "\t\n\v\f\r =[]<>";
constexpr std::string_view VALUE_STOPS = "\t\n\v\f\r <>";

/// A second opinion on "<!" and "<?": reads the whole input with plain searches. An outcome other
/// than 19 has no record.
class DeclarationModel {
public:
    DeclarationModel(std::string_view wholeInput, bool allowRuns) : input(wholeInput), iso2022(allowRuns) {}

    std::string ReadEntity() {
        if (!ReadTarget())
            return "end 16";
        std::string tokens;
        for (;;) {
            const std::string itemPrefix(ModelSpaces(input, &place));
            if (AtEnd())
                return "end 16";
            const char first = input[place];
            if (first == '<')
                return Fail();
            if (first == '>') {
                ++place;
                return "19 entity(" + Target() + tokens + "|" + Trace::Escape(itemPrefix) + ")" + Rest();
            }
            std::string value;
            std::string mark;
            if (first == '\'' || first == '"') {
                mark = first;
                if (!ModelQuoted(input, &place, iso2022, false, &value))
                    return "end 16";
            } else {
                value = ModelRun(input, &place, VALUE_STOPS);
                if (AtEnd())
                    return "end 16";
            }
            tokens += "{" + Trace::Escape(itemPrefix) + "|" + mark + Trace::Escape(value) + mark + "}";
        }
    }

    std::string ReadExtern() {
        if (!ReadTarget())
            return "end 16";
        std::string lower;
        for (const char character : name)
            lower += static_cast<char>(character >= 'A' && character <= 'Z' ? character + 'a' - 'A' : character);
        if (lower == "xml" || lower.starts_with("xml:") || lower.starts_with("xml-"))
            return ReadAttributes();
        return ReadFreeStyle();
    }

private:
    bool ReadTarget() {
        prefix = ModelSpaces(input, &place);
        if (AtEnd())
            return false;
        name = ModelRun(input, &place, NAME_STOPS);
        return !AtEnd();
    }

    /// A "?" is like any other character here: it is the ">" that ends the instruction.
    std::string ReadFreeStyle() {
        std::string text = "<?" + prefix + name;
        while (!AtEnd()) {
            const char character = input[place];
            if (character == '\'' || character == '"') {
                text += character;
                if (!ModelQuoted(input, &place, iso2022, true, &text))
                    return "end 16";
                text += character;
                continue;
            }
            text += character;
            ++place;
            if (character == '>')
                return "19 extern(" + Target() + "|) free(" + Trace::Escape(text) + ")" + Rest();
            const std::string_view after = input.substr(place);
            if (character != '/' || !(after.starts_with('/') || after.starts_with('*')))
                continue;
            // A block comment ends at the first "*", be it followed by "/" or not.
            text += after[0];
            ++place;
            const char last = after[0] == '/' ? '\n' : '*';
            text += ModelRun(input, &place, std::string_view(&last, 1));
            if (AtEnd())
                return "end 16";
            text += input[place++];
            if (last == '*' && input.substr(place).starts_with('/'))
                text += input[place++];
        }
        return "end 16";
    }

    std::string ReadAttributes() {
        std::string attributes;
        bool runs = iso2022;
        bool needsPrefix = true;
        ModelAttribute attribute;
        const auto finish = [&](const std::string& suffix, bool slash) {
            if (input[place] != '>')
                return Fail();
            ++place;
            return "19 extern(" + Target() + attributes + "|" + Trace::Escape(suffix) + (slash ? ", slash)" : ")") +
                   Rest();
        };
        for (;;) {
            if (needsPrefix)
                attribute.prefix = ModelSpaces(input, &place);
            if (!ModelAfterPrefix(input, &place, runs, &attribute))
                return "end 16";
            needsPrefix = attribute.hasValue;
            if (attribute.hasValue) {
                const bool closing = attribute.mark.empty() && attribute.value.ends_with('?') && input[place] == '>';
                if (closing) {
                    attribute.value.pop_back();
                    if (attribute.value.empty())
                        return Fail();
                }
                attributes += attribute.Describe();
                if (closing)
                    return finish("", false);
                // After a bare value the next attribute has no runs.
                runs = iso2022 && (!attribute.mark.empty() || attribute.value.empty());
                attribute = {};
                continue;
            }
            if (attribute.name.empty())
                return Fail();
            runs = iso2022;
            const std::string spaces = attribute.beforeEquals;
            const char last = attribute.name.back();
            if (last != '?' && last != '/') {
                attributes += attribute.Describe();
                attribute = {};
                attribute.prefix = spaces;
                continue;
            }
            if (last == '?' && !spaces.empty())
                return Fail();
            attribute.name.pop_back();
            if (!attribute.name.empty())
                attributes += attribute.Describe();
            return finish((attribute.name.empty() ? attribute.prefix : "") + spaces, last == '/');
        }
    }

    bool AtEnd() const {
        return place == input.size();
    }

    std::string Target() const {
        return Trace::Escape(prefix) + "|" + Trace::Escape(name) + "|";
    }

    std::string Fail() const {
        return "11" + Rest();
    }

    std::string Rest() const {
        return ModelRest(input, place);
    }

    std::string_view input;
    bool iso2022;
    std::size_t place = 0;
    std::string prefix;
    std::string name;
};

std::string ModelEntity(std::string_view input, const ModelOptions& options) {
    return DeclarationModel(input, options.Has("iso2022")).ReadEntity();
}

std::string ModelExtern(std::string_view input, const ModelOptions& options) {
    return DeclarationModel(input, options.Has("iso2022")).ReadExtern();
}

const RandomRow DECLARATIONS = {.rounds = ROUNDS,
                                .seed = 31,
                                .maxParts = 12,
                                .parts = {"D", "a", " ", " ", "\n", "=", "/", "[", "]", "-", "'", "'b'", "\"", "\"c\"",
                                          "''", "<", "\\", "\033$B", "\033(B"},
                                .options = {"iso2022"},
                                .ends = {">x", ""},
                                .alphabet = "a <>'=",
                                .maxLength = 5,
                                .shortBegin = "D"};

const RandomRow XML_DECLARATIONS = {.rounds = 2 * ROUNDS,
                                    .seed = 32,
                                    .maxParts = 12,
                                    .parts = {"a",  "b",  " ", " ", "\n",     "=",      "=",
                                              "?",  "?",  "/", "/", "'b'",    "\"c\"",  "'",
                                              "\"", "=d", "<", "[", "\033$B", "\033(B", " e=\"\033$B\""},
                                    .options = {"iso2022"},
                                    .begins = {"xml", "xml ", " XML ", "xml-a ", "Xml:"},
                                    .ends = {"?>x", "?>x", ">x", ""},
                                    .alphabet = "a =?/>'",
                                    .maxLength = 5,
                                    .shortBegin = "xml "};

const RandomRow INSTRUCTIONS = {.rounds = 2 * ROUNDS,
                                .seed = 33,
                                .maxParts = 12,
                                .parts = {"a",  " ",  "\n",  "?", "?", "/",    "/*",     "*/",     "*",   "//",  "'",
                                          "\"", "\\", "\\'", "<", "=", "\033", "\033$B", "\033(B", "php", "'b>'"},
                                .options = {"iso2022"},
                                .ends = {"?>x", "?>x", ">x", ""},
                                .alphabet = "/*>?'\n",
                                .maxLength = 5,
                                .shortBegin = "p "};

const auto ENTITY_SUITE = MakeModelSuite<HTML::EntityTagSimpleParser>("DeclarationModelTest", "RandomDeclarations",
                                                                      DECLARATIONS, ModelEntity);
const auto XML_SUITE = MakeModelSuite<HTML::ExternTagSimpleParser>("DeclarationModelTest", "RandomXmlDeclarations",
                                                                   XML_DECLARATIONS, ModelExtern);
const auto INSTRUCTION_SUITE = MakeModelSuite<HTML::ExternTagSimpleParser>("DeclarationModelTest", "RandomInstructions",
                                                                           INSTRUCTIONS, ModelExtern);

}  // namespace
}  // namespace Kestra::Test
