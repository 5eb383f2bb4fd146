#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "html/rewrite/OpenElements.h"
#include "html/rewrite/Selectors.h"
#include "platform/Characters.h"
#include "tests/html/rewrite/TestTags.h"
#include "tests/support/RandomInput.h"

// Random selectors and random tags, beside a matcher that keeps all elements with their attributes,
// and tries each selector from right to left.

namespace Kestra::Test {
namespace {

using HTML::OpenElements;
using HTML::SelectorSet;

struct PlainCondition {
    std::string name;
    std::string operation;  ///< "#", ".", "" for its presence, "=", "~=", ...
    std::string value;
    bool ignoresCase;
};

struct PlainCompound {
    bool isChild;
    std::string type;  ///< "*" for any
    std::vector<PlainCondition> conditions;
};

using PlainSelector = std::vector<PlainCompound>;

struct PlainElement {
    TestTag tag;
    std::shared_ptr<PlainElement> parent;
};

std::string Fold(std::string text) {
    for (char& character : text)
        character = FoldAscii(character);
    return text;
}

std::vector<std::string> SplitWords(const std::string& list) {
    std::vector<std::string> words(1);
    for (const char character : list) {
        if (std::string_view(" \t\n\f\r").find(character) != std::string_view::npos)
            words.emplace_back();
        else
            words.back() += character;
    }
    words.erase(std::remove(words.begin(), words.end(), ""), words.end());
    return words;
}

bool MatchesPlainly(const PlainCondition& condition, const TestTag& tag) {
    const std::string name = condition.operation == "#"   ? "id"
                             : condition.operation == "." ? "class"
                                                          : Fold(condition.name);
    for (const auto& [attribute, written] : tag.attributes) {
        if (attribute != name)
            continue;
        const std::string value = condition.ignoresCase ? Fold(written) : written;
        const std::string expected = condition.ignoresCase ? Fold(condition.value) : condition.value;
        if (condition.operation.empty())
            return true;
        if (condition.operation == "=" || condition.operation == "#")
            return value == expected;
        if (condition.operation == "|=")
            return value == expected || value.rfind(expected + "-", 0) == 0;
        if (condition.operation == "~=" || condition.operation == ".") {
            const std::vector<std::string> words = SplitWords(value);
            return std::find(words.begin(), words.end(), expected) != words.end();
        }
        const std::size_t found = condition.operation == "$=" ? value.rfind(expected) : value.find(expected);
        if (expected.empty() || found == std::string::npos)
            return false;
        return condition.operation == "*=" ||
               found == (condition.operation == "^=" ? 0 : value.size() - expected.size());
    }
    return false;
}

bool MatchesPlainly(const PlainSelector& selector, std::size_t last, const PlainElement& element) {
    const PlainCompound& compound = selector[last];
    if (compound.type != "*" && Fold(compound.type) != element.tag.name)
        return false;
    for (const PlainCondition& condition : compound.conditions) {
        if (!MatchesPlainly(condition, element.tag))
            return false;
    }
    if (last == 0)
        return true;
    for (const PlainElement* outer = element.parent.get(); outer != nullptr; outer = outer->parent.get()) {
        if (MatchesPlainly(selector, last - 1, *outer))
            return true;
        if (compound.isChild)
            return false;
    }
    return false;
}

bool IsOneOf(std::string_view name, std::initializer_list<std::string_view> names) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// "" for html, "svg" or "math": how what is inside the element is read.
std::string GetContent(const PlainElement* element) {
    if (element == nullptr || IsOneOf(element->tag.name, {"svg", "math"}))
        return element == nullptr ? "" : element->tag.name;
    const std::string outer = GetContent(element->parent.get());
    return outer == "svg" && IsOneOf(element->tag.name, {"foreignobject", "desc", "title"}) ? "" : outer;
}

bool HasContent(const PlainElement& element) {
    if (IsOneOf(element.tag.name, {"br", "img", "keygen"}))
        return false;
    return !element.tag.isShort ||
           (!IsOneOf(element.tag.name, {"svg", "math"}) && GetContent(element.parent.get()).empty());
}

class Maker {
public:
    explicit Maker(std::uint32_t seed) : random(seed, {}) {}

    std::string Pick(const std::vector<std::string>& words) {
        return words[random.Below(words.size())];
    }

    std::string MakeValue() {
        static const std::vector<std::string> VALUES = {"",       "x",      "X",  "y",   "x y", "y\tX",   "x-y", "x-",
                                                        "-x",     "xy",     "yx", "xyx", "xxy", "xyxxy",  " x ", " ",
                                                        "\u00E9", "\u00C9", "1",  "-",   "--",  "x'\"\\", "x]"};
        return random.Below(4) > 0 ? Pick(VALUES) : Pick(VALUES) + Pick(VALUES);
    }

    TestTag MakeTag() {
        TestTag tag;
        static const std::vector<std::string> TAGS = {
            "a", "a", "b", "b", "c", "\u00E9", "br", "img", "keygen", "svg", "math", "foreignobject", "title", "desc"};
        tag.name = Pick(TAGS);
        tag.isEnd = random.Below(3) == 0;
        tag.isShort = random.Below(4) == 0;
        for (std::size_t count = random.Below(4); count > 0; --count)
            tag.attributes.emplace_back(Pick({"id", "class", "class", "h", "g"}), MakeValue());
        return tag;
    }

    PlainSelector MakeSelector() {
        PlainSelector selector;
        for (std::size_t count = 1 + random.Below(random.Flip() ? 2 : 5); count > 0; --count) {
            PlainCompound compound{random.Flip(), Pick({"a", "A", "b", "c", "\u00E9", "*", "*", "*", "svg", "br"}), {}};
            for (std::size_t conditions = random.Flip() ? 0 : random.Below(3); conditions > 0; --conditions)
                compound.conditions.push_back(MakeCondition());
            selector.push_back(std::move(compound));
        }
        return selector;
    }

    std::string Write(const PlainSelector& selector) {
        std::string text = WriteSpaces();
        for (const PlainCompound& compound : selector) {
            if (&compound != &selector.front())
                text += compound.isChild ? WriteSpaces() + '>' + WriteSpaces() : Pick({" ", "\n", "\t "});
            if (compound.type != "*")
                text += WriteName(compound.type);
            else if (compound.conditions.empty() || random.Flip())
                text += '*';
            for (const PlainCondition& condition : compound.conditions)
                text += Write(condition);
        }
        return text + WriteSpaces();
    }

    RandomInput random;

private:
    PlainCondition MakeCondition() {
        const std::string operation = Pick({"#", ".", ".", "", "=", "=", "~=", "|=", "^=", "$=", "*="});
        PlainCondition condition{Pick({"id", "class", "h", "H", "g"}), operation, MakeValue(), false};
        if (operation == "#" || operation == ".") {
            while (condition.value.empty())
                condition.value = MakeValue();
        } else {
            condition.ignoresCase = !operation.empty() && random.Below(3) == 0;
        }
        return condition;
    }

    std::string WriteSpaces() {
        return Pick({"", "", " ", "\t", "\r\n", "\f "});
    }

    std::string Write(const PlainCondition& condition) {
        if (condition.operation == "#" || condition.operation == ".")
            return condition.operation + WriteName(condition.value);
        std::string text = "[" + WriteSpaces() + WriteName(condition.name) + WriteSpaces();
        if (!condition.operation.empty()) {
            const bool isName = !condition.value.empty() && random.Flip();
            text += condition.operation + WriteSpaces() +
                    (isName ? WriteName(condition.value) : WriteString(condition.value));
            if (condition.ignoresCase)
                text += (isName ? " " : WriteSpaces()) + Pick({"i", "I"});
            else if (random.Below(4) == 0)
                text += (isName ? " " : WriteSpaces()) + Pick({"s", "S"});
            text += WriteSpaces();
        }
        return text + "]";
    }

    /// A character as an escape. The characters are those of ASCII; others are written as they are.
    std::string WriteEscape(char character) {
        const bool isHexDigit = std::string_view("0123456789abcdefABCDEF").find(character) != std::string_view::npos;
        if (!isHexDigit && static_cast<unsigned char>(character) > ' ' && random.Flip())
            return std::string("\\") + character;
        constexpr const char* DIGITS = "0123456789abcdef";
        const auto code = static_cast<unsigned char>(character);
        return std::string(random.Flip() ? "\\" : "\\00") + DIGITS[code / 16] + DIGITS[code % 16] +
               Pick({" ", "\t", "\r\n"});
    }

    std::string WriteName(const std::string& name) {
        std::string text;
        for (std::size_t i = 0; i < name.size(); ++i) {
            const char character = name[i];
            const char folded = FoldAscii(character);
            const bool isLetter = (folded >= 'a' && folded <= 'z') || static_cast<unsigned char>(folded) >= 0x80;
            const bool isPlain = isLetter || (i > 0 && (character == '-' || (character >= '0' && character <= '9')));
            const bool mayEscape = static_cast<unsigned char>(character) < 0x80;
            text +=
                isPlain && !(mayEscape && random.Below(6) == 0) ? std::string(1, character) : WriteEscape(character);
        }
        return text;
    }

    std::string WriteString(const std::string& value) {
        const char quote = random.Flip() ? '"' : '\'';
        std::string text(1, quote);
        for (const char character : value) {
            const bool mustEscape = character == quote || character == '\\';
            const bool mayEscape = static_cast<unsigned char>(character) < 0x80;
            text +=
                mustEscape || (mayEscape && random.Below(8) == 0) ? WriteEscape(character) : std::string(1, character);
        }
        return text + quote;
    }
};

void Compare(std::uint32_t seed, std::size_t selectorCount, std::size_t tagCount, std::size_t* matchCount) {
    SCOPED_TRACE(seed);
    Maker maker(seed);
    SelectorSet selectors;
    std::vector<PlainSelector> plainSelectors;
    std::vector<std::string> texts;
    const auto addSelector = [&] {
        plainSelectors.push_back(maker.MakeSelector());
        texts.push_back(maker.Write(plainSelectors.back()));
        std::string message;
        ASSERT_TRUE(selectors.Add(texts.back(), &message)) << texts.back() << ": " << message;
    };
    for (std::size_t i = 0; i < selectorCount; ++i)
        addSelector();

    OpenElements open(&selectors);
    std::shared_ptr<PlainElement> innermost;
    for (std::size_t i = 0; i < tagCount; ++i) {
        auto element = std::make_shared<PlainElement>();
        element->tag = maker.MakeTag();
        const std::string& name = element->tag.name;
        if (element->tag.isEnd) {
            auto closed = innermost;
            while (closed != nullptr && closed->tag.name != name)
                closed = closed->parent;
            if (closed != nullptr)
                innermost = closed->parent;
        } else {
            element->parent = innermost;
        }
        const std::vector<std::size_t> matches = Take(element->tag, &open);
        std::vector<std::size_t> openMatches;
        open.GetMatches(&openMatches);
        if (!element->tag.isEnd && HasContent(*element))
            innermost = element;

        std::vector<std::size_t> expected;
        std::vector<std::size_t> expectedOpen;
        std::size_t depth = 0;
        for (std::size_t selector = 0; selector < plainSelectors.size(); ++selector) {
            const std::size_t last = plainSelectors[selector].size() - 1;
            if (!element->tag.isEnd && MatchesPlainly(plainSelectors[selector], last, *element))
                expected.push_back(selector);
            bool isOpen = false;
            depth = 0;
            for (auto outer = innermost; outer != nullptr; outer = outer->parent, ++depth)
                isOpen = isOpen || MatchesPlainly(plainSelectors[selector], last, *outer);
            if (isOpen)
                expectedOpen.push_back(selector);
        }
        const auto list = [&] {
            std::string lines;
            for (const std::string& text : texts)
                lines += text + '\n';
            return lines;
        };
        ASSERT_EQ(Join(matches), Join(expected)) << "tag " << i << ", " << name << ", of\n" << list();
        ASSERT_EQ(Join(openMatches), Join(expectedOpen)) << "after tag " << i << ", " << name << ", of\n" << list();
        ASSERT_EQ(open.GetDepth(), depth);
        *matchCount += matches.size();
    }
    std::string names;
    for (auto element = innermost; element != nullptr; element = element->parent)
        names.insert(0, names.empty() ? element->tag.name : element->tag.name + ' ');
    ASSERT_EQ(JoinNames(open), names);
}

TEST(RandomSelectorsTest, FewSelectorsMatchAsByAPlainMatcher) {
    constexpr std::uint32_t COUNT = 20000;
    std::size_t matches = 0;
    for (std::uint32_t seed = 0; seed < COUNT && !HasFatalFailure(); ++seed)
        Compare(seed, 1 + seed % 3, 12, &matches);
    EXPECT_GT(matches, COUNT);
}

TEST(RandomSelectorsTest, ManySelectorsMatchAsByAPlainMatcher) {
    constexpr std::uint32_t COUNT = 80;
    std::size_t matches = 0;
    for (std::uint32_t seed = 0; seed < COUNT && !HasFatalFailure(); ++seed)
        Compare(100000 + seed, 20 + seed, 60, &matches);
    EXPECT_GT(matches, COUNT * 100);
}

}  // namespace
}  // namespace Kestra::Test
