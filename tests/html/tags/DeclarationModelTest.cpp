#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>

#include "html/tags/EntityTagSimpleParser.h"
#include "html/tags/ExternTagSimpleParser.h"
#include "tests/html/text/LiteralModel.h"
#include "tests/support/Flavours.h"
#include "tests/support/RandomInput.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

constexpr int ROUNDS = 10000;
constexpr std::string_view NAME_STOPS = "\t\n\v\f\r =[]<>";
constexpr std::string_view ATTRIBUTE_NAME_STOPS = "\t\n\v\f\r =>";
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
                if (!ReadQuoted(iso2022, false, &value))
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

    /// From the opening quote to after the closing one. False when the input ends first.
    bool ReadQuoted(bool runs, bool escapes, std::string* content) {
        const char quote = input[place++];
        for (bool escaped = false; !AtEnd();) {
            const char character = input[place++];
            if (!escaped && character == quote)
                return true;
            if (!escaped && runs && quote == '"' && character == '\033') {
                if (!ModelEscapeRun(input, &place, content))
                    return false;
                continue;
            }
            *content += character;
            escaped = escapes && !escaped && character == '\\';
        }
        return false;
    }

    /// A "?" is like any other character here: it is the ">" that ends the instruction.
    std::string ReadFreeStyle() {
        std::string text = "<?" + prefix + name;
        while (!AtEnd()) {
            const char character = input[place];
            if (character == '\'' || character == '"') {
                text += character;
                if (!ReadQuoted(iso2022, true, &text))
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
        bool afterName = false;
        std::string attributePrefix;
        const auto append = [&](const std::string& attribute, const std::string& rest) {
            attributes += "{" + Trace::Escape(attributePrefix) + "|" + Trace::Escape(attribute) + rest + "}";
        };
        const auto finish = [&](const std::string& suffix, bool slash) {
            if (input[place] != '>')
                return Fail();
            ++place;
            return "19 extern(" + Target() + attributes + "|" + Trace::Escape(suffix) + (slash ? ", slash)" : ")") +
                   Rest();
        };
        for (;;) {
            if (!afterName)
                attributePrefix = ModelSpaces(input, &place);
            std::string attribute(ModelRun(input, &place, ATTRIBUTE_NAME_STOPS));
            const std::string spaces(ModelSpaces(input, &place));
            if (AtEnd())
                return "end 16";
            afterName = input[place] != '=';
            if (!afterName) {
                ++place;
                const std::string after(ModelSpaces(input, &place));
                if (AtEnd())
                    return "end 16";
                const std::string begin = "|" + Trace::Escape(spaces) + "=" + Trace::Escape(after) + "|";
                std::string value;
                if (input[place] == '\'' || input[place] == '"') {
                    const std::string mark(1, input[place]);
                    if (!ReadQuoted(runs, false, &value))
                        return "end 16";
                    append(attribute, begin + mark + Trace::Escape(value) + mark);
                    runs = iso2022;
                    continue;
                }
                value = ModelRun(input, &place, VALUE_STOPS);
                if (AtEnd())
                    return "end 16";
                const bool closing = value.ends_with('?') && input[place] == '>';
                if (closing) {
                    value.pop_back();
                    if (value.empty())
                        return Fail();
                }
                append(attribute, begin + Trace::Escape(value));
                if (closing)
                    return finish("", false);
                // After a bare value the next attribute has no runs.
                runs = iso2022 && value.empty();
                continue;
            }
            if (attribute.empty())
                return Fail();
            runs = iso2022;
            const char last = attribute.back();
            if (last != '?' && last != '/') {
                append(attribute, "");
                attributePrefix = spaces;
                continue;
            }
            if (last == '?' && !spaces.empty())
                return Fail();
            attribute.pop_back();
            if (!attribute.empty())
                append(attribute, "");
            return finish((attribute.empty() ? attributePrefix : "") + spaces, last == '/');
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
        return AtEnd() ? "" : " rest(" + Trace::Escape(input.substr(place)) + ")";
    }

    std::string_view input;
    bool iso2022;
    std::size_t place = 0;
    std::string prefix;
    std::string name;
};

template <typename Flavour>
class DeclarationModelTest : public testing::Test {
protected:
    static void CheckEntity(const std::string& input, bool iso2022, RandomInput* random) {
        using EntityTag = HTML::EntityTagSimpleParser<typename Flavour::C, typename Flavour::S>;
        CheckRandomly<EntityTag>(input, DeclarationModel(input, iso2022).ReadEntity(), random,
                                 [iso2022](auto* data) { data->iso2022 = iso2022; });
    }

    static void CheckExtern(const std::string& input, bool iso2022, RandomInput* random) {
        using ExternTag = HTML::ExternTagSimpleParser<typename Flavour::C, typename Flavour::S>;
        CheckRandomly<ExternTag>(input, DeclarationModel(input, iso2022).ReadExtern(), random,
                                 [iso2022](auto* data) { data->iso2022 = iso2022; });
    }

    /// Checks `begin` followed by each string of up to 5 characters of the alphabet.
    template <typename Check>
    static void CheckEveryEnd(const std::string& begin, std::string_view alphabet, const Check& check) {
        std::size_t count = 1;
        for (std::size_t length = 0; length <= 5; ++length, count *= alphabet.size()) {
            for (std::size_t number = 0; number < count; ++number) {
                std::string end(length, ' ');
                std::size_t digits = number;
                for (char& character : end) {
                    character = alphabet[digits % alphabet.size()];
                    digits /= alphabet.size();
                }
                ASSERT_NO_FATAL_FAILURE(check(begin + end));
            }
        }
    }
};

TYPED_TEST_SUITE(DeclarationModelTest, Flavours);

TYPED_TEST(DeclarationModelTest, RandomDeclarations) {
    RandomInput random(31, {"D", "a", " ", " ", "\n", "=", "/", "[", "]", "-", "'", "'b'", "\"", "\"c\"", "''", "<",
                            "\\", "\033$B", "\033(B"});
    for (int round = 0; round < ROUNDS; ++round) {
        const std::string input = random.Next(12) + (random.Flip() ? ">x" : "");
        ASSERT_NO_FATAL_FAILURE(this->CheckEntity(input, random.Flip(), &random));
    }
    this->CheckEveryEnd("D", "a <>'=", [&](const std::string& input) { this->CheckEntity(input, false, &random); });
}

TYPED_TEST(DeclarationModelTest, RandomXmlDeclarations) {
    RandomInput random(32, {"a",  "b",  " ", " ", "\n",     "=",      "=",
                            "?",  "?",  "/", "/", "'b'",    "\"c\"",  "'",
                            "\"", "=d", "<", "[", "\033$B", "\033(B", " e=\"\033$B\""});
    constexpr std::string_view TARGETS[] = {"xml", "xml ", " XML ", "xml-a ", "Xml:"};
    for (int round = 0; round < 2 * ROUNDS; ++round) {
        const std::string target(TARGETS[random.Below(std::size(TARGETS))]);
        const std::string input = target + random.Next(12) + (random.Flip() ? "?>x" : random.Flip() ? ">x" : "");
        ASSERT_NO_FATAL_FAILURE(this->CheckExtern(input, random.Flip(), &random));
    }
    this->CheckEveryEnd("xml ", "a =?/>'", [&](const std::string& input) { this->CheckExtern(input, false, &random); });
}

TYPED_TEST(DeclarationModelTest, RandomInstructions) {
    RandomInput random(33, {"a",  " ",  "\n",  "?", "?", "/",    "/*",     "*/",     "*",   "//",  "'",
                            "\"", "\\", "\\'", "<", "=", "\033", "\033$B", "\033(B", "php", "'b>'"});
    for (int round = 0; round < 2 * ROUNDS; ++round) {
        const std::string input = random.Next(12) + (random.Flip() ? "?>x" : random.Flip() ? ">x" : "");
        ASSERT_NO_FATAL_FAILURE(this->CheckExtern(input, random.Flip(), &random));
    }
    this->CheckEveryEnd("p ", "/*>?'\n", [&](const std::string& input) { this->CheckExtern(input, false, &random); });
}

}  // namespace
}  // namespace Kestra::Test
