#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"
#include "tests/html/text/LiteralModel.h"
#include "tests/support/Flavours.h"
#include "tests/support/RandomInput.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

struct ModelAttribute {
    std::string prefix;
    std::string name;
    std::string beforeEquals;
    std::string afterEquals;
    std::string value;
    std::uint32_t quote = 0;
    bool hasValue = false;
};

/// A second opinion on tags: reads the whole input with plain searches, one character class at a
/// time.
class TagModel {
public:
    TagModel(std::string_view wholeInput, bool allowRuns, bool isEndTag)
        : input(wholeInput), iso2022(allowRuns), endTag(isEndTag) {}

    /// The line of the outcome, without a record when the tag fails or stays open.
    std::string Read() {
        prefix = ModelSpaces(input, &place);
        if (AtEnd())
            return "end 16";
        name = ModelRun(input, &place, "\t\n\v\f\r =[]<>");
        if (AtEnd())
            return "end 16";
        if (endTag) {
            afterName = ModelSpaces(input, &place);
            if (AtEnd())
                return "end 16";
            if (input[place] == '<')
                return Finish(false);
            if (input[place] == '>') {
                ++place;
                return Finish(true);
            }
        }
        return ReadAttributes();
    }

private:
    std::string ReadAttributes() {
        ModelAttribute attribute;
        bool runs = iso2022;
        for (;;) {
            if (!ReadAttribute(&attribute, runs))
                return "end 16";
            std::string carry;
            bool slash = false;
            runs = iso2022;
            if (attribute.hasValue) {
                if (attribute.quote == 0 && attribute.value.ends_with('/') && input[place] == '>') {
                    attribute.value.pop_back();
                    if (attribute.value.empty())
                        return Fail();
                    slash = true;
                }
                // After a bare value a start tag forgets about escape runs for one attribute.
                runs = iso2022 && (endTag || attribute.quote != 0 || attribute.value.empty());
                attributes.push_back(attribute);
            } else if (attribute.name.empty()) {
                suffix = attribute.prefix;
                ++place;  // only ">" can stand here
                return Finish(true);
            } else {
                carry = attribute.beforeEquals;
                attribute.beforeEquals.clear();
                if (attribute.name.ends_with('/')) {
                    if (!carry.empty())
                        return Fail();
                    slash = true;
                    attribute.name.pop_back();
                }
                if (attribute.name.empty())
                    suffix = attribute.prefix;
                else
                    attributes.push_back(attribute);
            }
            if (slash) {
                hasSlash = true;
                ++place;  // only ">" can stand here
                return Finish(true);
            }
            const bool goesOnAtTheName = !attribute.hasValue;
            attribute = {};
            attribute.prefix = carry;
            if (!goesOnAtTheName)
                needsPrefix = true;
        }
    }

    /// False when the input ends first. A quoted value is complete at the end of the input, too.
    bool ReadAttribute(ModelAttribute* attribute, bool runs) {
        if (needsPrefix) {
            attribute->prefix = ModelSpaces(input, &place);
            if (AtEnd())
                return false;
        }
        needsPrefix = false;
        attribute->name = ModelRun(input, &place, "\t\n\v\f\r =>");
        if (AtEnd())
            return false;
        attribute->beforeEquals = ModelSpaces(input, &place);
        if (AtEnd())
            return false;
        if (input[place] != '=')
            return true;
        ++place;
        attribute->afterEquals = ModelSpaces(input, &place);
        if (AtEnd())
            return false;
        attribute->hasValue = true;
        const char first = input[place];
        if (first == '\'' || first == '"') {
            ++place;
            attribute->quote = first == '\'' ? 1 : 2;
            const std::string_view stops = first == '\'' ? "'" : runs ? "\"\033" : "\"";
            for (;;) {
                attribute->value += ModelRun(input, &place, stops);
                if (AtEnd())
                    return false;
                if (input[place++] == first)
                    return true;
                if (!ModelEscapeRun(input, &place, &attribute->value))
                    return false;
            }
        }
        attribute->value = ModelRun(input, &place, "\t\n\v\f\r <>");
        return !AtEnd();
    }

    bool AtEnd() const {
        return place == input.size();
    }

    std::string Fail() const {
        return "11" + Rest();
    }

    std::string Rest() const {
        return AtEnd() ? "" : " rest(" + Trace::Escape(input.substr(place)) + ")";
    }

    std::string Finish(bool closed) {
        std::string list;
        for (std::size_t i = 0; i < attributes.size();) {
            ModelAttribute& anchor = attributes[i++];
            if (anchor.hasValue) {
                const std::string mark = anchor.quote == 1 ? "'" : anchor.quote == 2 ? "\"" : "";
                anchor.value = mark + anchor.value + mark;
                for (; i < attributes.size() && !attributes[i].hasValue; ++i)
                    anchor.value += attributes[i].prefix + attributes[i].name;
            }
            list += "{" + Trace::Escape(anchor.prefix) + "|" + Trace::Escape(anchor.name);
            if (anchor.hasValue) {
                list += "|" + Trace::Escape(anchor.beforeEquals) + "=" + Trace::Escape(anchor.afterEquals) + "|" +
                        Trace::Escape(anchor.value);
            }
            list += "}";
        }
        std::string line = endTag ? "19 end(" : "19 start(";
        line += Trace::Escape(prefix) + "|" + Trace::Escape(name) + "|";
        if (endTag)
            line += Trace::Escape(afterName) + "|";
        line += list + "|" + Trace::Escape(suffix);
        if (hasSlash)
            line += endTag ? ", slash" : ", short";
        return line + (closed ? "" : ", open") + ")" + Rest();
    }

    std::string_view input;
    bool iso2022;
    bool endTag;
    std::size_t place = 0;
    bool needsPrefix = true;
    std::string prefix;
    std::string name;
    std::string afterName;
    std::string suffix;
    std::vector<ModelAttribute> attributes;
    bool hasSlash = false;
};

template <typename Flavour>
class TagModelTest : public testing::Test {
protected:
    static void Check(const std::string& input, bool iso2022, RandomInput* random) {
        using StartTag = HTML::StartTagSimpleParser<typename Flavour::C, typename Flavour::S>;
        using EndTag = HTML::EndTagSimpleParser<typename Flavour::C, typename Flavour::S>;
        const auto prepare = [iso2022](auto* data) { data->iso2022 = iso2022; };
        ASSERT_NO_FATAL_FAILURE(
            CheckRandomly<StartTag>(input, TagModel(input, iso2022, false).Read(), random, prepare));
        ASSERT_NO_FATAL_FAILURE(CheckRandomly<EndTag>(input, TagModel(input, iso2022, true).Read(), random, prepare));
    }
};

TYPED_TEST_SUITE(TagModelTest, Flavours);

TYPED_TEST(TagModelTest, RandomTags) {
    RandomInput random(5, {"a", "b", "bc", " ", " ", "\n",  "=",  "=",     "/",  "/",
                           ">", "<", "[",  "]", "'", "'x'", "\"", "\"y\"", "=z", "\\"});
    for (int round = 0; round < 10000; ++round)
        ASSERT_NO_FATAL_FAILURE(this->Check(random.Next(14) + (random.Flip() ? ">x" : ""), false, &random));
}

TYPED_TEST(TagModelTest, RandomTagsWithEscapeRuns) {
    RandomInput random(6, {"a", " ", " b", "=", "=", "/", ">", "<", "'", "\"", "\"", "\033", "\033$B", "\033(B", "$B",
                           " c=\"\033$B\"", "=z"});
    for (int round = 0; round < 10000; ++round)
        ASSERT_NO_FATAL_FAILURE(this->Check(random.Next(14) + (random.Flip() ? "\">" : ""), random.Flip(), &random));
}

TYPED_TEST(TagModelTest, EveryShortTag) {
    constexpr std::string_view ALPHABET = "a =/><'";
    RandomInput random(7, {});
    std::string input;
    for (std::size_t length = 0; length <= 5; ++length) {
        std::size_t count = 1;
        for (std::size_t i = 0; i < length; ++i)
            count *= ALPHABET.size();
        for (std::size_t number = 0; number < count; ++number) {
            input.assign(length, ' ');
            std::size_t digits = number;
            for (char& character : input) {
                character = ALPHABET[digits % ALPHABET.size()];
                digits /= ALPHABET.size();
            }
            ASSERT_NO_FATAL_FAILURE(this->Check("t" + input, false, &random));
        }
    }
}

}  // namespace
}  // namespace Kestra::Test
