#include <gtest/gtest.h>

#include <cstddef>
#include <initializer_list>
#include <random>
#include <string>
#include <string_view>
#include <type_traits>

#include "html/output/AttributesNormalizer.h"
#include "html/output/ParserObserverOutput.h"
#include "html/output/StringOutputStreamParserObserverOutputHandler.h"
#include "platform/Vector.h"
#include "tests/support/Flavours.h"
#include "tools/trace/TokenTrace.h"

namespace Kestra::Test {
namespace {

/// An attribute, its strings in Latin-1.
struct Item {
    std::string_view prefix;
    std::string_view name;
    std::string_view beforeEquals = {};
    bool hasValue = false;
    std::string_view afterEquals = {};
    std::string_view value = {};
    std::uint32_t quote = 0;
};

Item Bare(std::string_view prefix, std::string_view name, std::string_view beforeEquals = {}) {
    return {prefix, name, beforeEquals};
}

Item Valued(std::string_view prefix, std::string_view name, std::uint32_t quote, std::string_view value) {
    return {prefix, name, {}, true, {}, value, quote};
}

template <typename Flavour>
using AttributeOf = HTML::Attribute<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Normalizer = HTML::AttributesNormalizer<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
AttributeOf<Flavour> Make(const Item& item) {
    using S = typename Flavour::S;
    AttributeOf<Flavour> attribute;
    attribute.prefix = To<S>(item.prefix);
    attribute.name = To<S>(item.name);
    attribute.beforeEquals = To<S>(item.beforeEquals);
    attribute.afterEquals = To<S>(item.afterEquals);
    attribute.value = To<S>(item.value);
    attribute.quote = item.quote;
    attribute.hasValue = item.hasValue;
    return attribute;
}

template <typename Flavour>
Vector<AttributeOf<Flavour>> MakeList(std::initializer_list<Item> items) {
    Vector<AttributeOf<Flavour>> list;
    for (const Item& item : items)
        list.push_back(Make<Flavour>(item));
    return list;
}

/// Every field of every attribute, whether it means something or not.
template <typename C, typename S>
std::string DumpAll(const Vector<HTML::Attribute<C, S>>& list) {
    std::string text;
    for (const HTML::Attribute<C, S>& attribute : list) {
        text += "[" + Trace::Escape(attribute.prefix) + "|" + Trace::Escape(attribute.name) + "|" +
                Trace::Escape(attribute.beforeEquals) + "|" + Trace::Escape(attribute.afterEquals) + "|" +
                Trace::Escape(attribute.value) + "|" + std::to_string(attribute.quote) +
                (attribute.hasValue ? "|value]" : "|bare]");
    }
    return text;
}

template <typename Flavour>
class AttributesNormalizerTest : public testing::Test {};

TYPED_TEST_SUITE(AttributesNormalizerTest, Flavours);

TYPED_TEST(AttributesNormalizerTest, Folding) {
    struct Case {
        const char* note;
        std::initializer_list<Item> list;
        std::string_view expected;
    };
    const Case CASES[] = {
        {"an empty list is left alone", {}, ""},
        {"one bare word stays", {Bare(" ", "a")}, "[ |a||||0|bare]"},
        {"bare words alone stay, with all their fields",
         {Bare(" ", "a", "\t"), {"\n", "b", " ", false, "x", "y", 2}},
         "[ |a|\\t|||0|bare][\\n|b| |x|y|2|bare]"},
        {"title=hello world",
         {Valued(" ", "title", 0, "hello"), Bare(" ", "world")},
         "[ |title|||hello world|0|value]"},
        {"title=\"a b\" c d",
         {Valued(" ", "title", 2, "a b"), Bare(" ", "c"), Bare(" ", "d")},
         "[ |title|||\"a b\" c d|0|value]"},
        {"title='a b' c", {Valued(" ", "title", 1, "a b"), Bare("", "c")}, "[ |title|||'a b'c|0|value]"},
        {"checked title=x",
         {Bare(" ", "checked"), Valued(" ", "title", 0, "x")},
         "[ |checked||||0|bare][ |title|||x|0|value]"},
        {"a=1 b=2 stays", {Valued("", "a", 0, "1"), Valued(" ", "b", 0, "2")}, "[|a|||1|0|value][ |b|||2|0|value]"},
        {"quoted values without words keep their quotes",
         {Valued("", "a", 1, "1"), Valued(" ", "b", 2, "2")},
         "[|a|||1|1|value][ |b|||2|2|value]"},
        {"each value takes the words after it",
         {Bare("", "x"), Valued(" ", "a", 0, "1"), Bare(" ", "b"), Valued(" ", "c", 2, "2"), Bare(" ", "d"),
          Bare("\n", "e"), Valued(" ", "f", 0, "3")},
         "[|x||||0|bare][ |a|||1 b|0|value][ |c|||\"2\" d\\ne|0|value][ |f|||3|0|value]"},
        {"an empty bare value takes words too", {Valued(" ", "a", 0, ""), Bare(" ", "b")}, "[ |a||| b|0|value]"},
        {"an empty quoted value keeps its quotes inside",
         {Valued(" ", "a", 1, ""), Bare(" ", "b")},
         "[ |a|||'' b|0|value]"},
        {"the white space after the word is taken up",
         {Valued(" ", "a", 0, "1"), Bare(" ", "b", "\n ")},
         "[ |a|||1 b\\n |0|value]"},
        {"value and white space of a bare record are never copied",
         {Valued(" ", "a", 0, "1"), {" ", "b", "\t", false, "AFTER", "VALUE", 2}},
         "[ |a|||1 b\\t|0|value]"},
        {"the other fields of the value's attribute stay",
         {{" ", "a", "\t", true, "\n", "1", 2}, Bare(" ", "b")},
         "[ |a|\\t|\\n|\"1\" b|0|value]"},
        {"an unknown kind of quotes stays and adds nothing",
         {Valued(" ", "a", 7, "1"), Bare(" ", "b")},
         "[ |a|||1 b|7|value]"},
        {"words without names", {Valued(" ", "a", 2, "1"), Bare("", ""), Bare(" ", "")}, "[ |a|||\"1\" |0|value]"},
        {"quotes inside the words stay", {Valued(" ", "a", 1, "1"), Bare(" ", "'\"")}, "[ |a|||'1' '\"|0|value]"},
    };
    for (const Case& c : CASES) {
        SCOPED_TRACE(c.note);
        Vector<AttributeOf<TypeParam>> list = MakeList<TypeParam>(c.list);
        Normalizer<TypeParam>::Normalize(&list);
        EXPECT_EQ(DumpAll(list), c.expected);
    }
}

TYPED_TEST(AttributesNormalizerTest, ANormalizedListStaysAsItIs) {
    Vector<AttributeOf<TypeParam>> list =
        MakeList<TypeParam>({Bare(" ", "x"), Valued(" ", "a", 1, "1"), Bare(" ", "b"), Valued(" ", "c", 2, "2")});
    Normalizer<TypeParam>::Normalize(&list);
    const std::string once = DumpAll(list);
    Normalizer<TypeParam>::Normalize(&list);
    EXPECT_EQ(DumpAll(list), once);
}

TYPED_TEST(AttributesNormalizerTest, HalfAMillionWordsAfterOneValue) {
    using S = typename TypeParam::S;
    constexpr std::size_t COUNT = 500000;
    Vector<AttributeOf<TypeParam>> list;
    list.push_back(Make<TypeParam>(Bare(" ", "first")));
    list.push_back(Make<TypeParam>(Valued(" ", "a", 1, "v")));
    S expected = To<S>("'v'");
    for (std::size_t i = 0; i < COUNT; ++i) {
        const std::string name = "w" + std::to_string(i);
        list.push_back(Make<TypeParam>(Bare(" ", name)));
        expected += To<S>(" " + name);
    }
    list.push_back(Make<TypeParam>(Valued(" ", "z", 2, "last")));
    Normalizer<TypeParam>::Normalize(&list);
    ASSERT_EQ(list.size(), 3U);
    EXPECT_FALSE(list[0].hasValue);
    EXPECT_TRUE(list[1].value == expected);
    EXPECT_EQ(list[1].quote, 0U);
    EXPECT_EQ(list[2].value, To<S>("last"));
    EXPECT_EQ(list[2].quote, 2U);
}

/// What the list is when written back as the attributes of a tag.
template <typename C, typename S>
S WriteBack(const Vector<HTML::Attribute<C, S>>& list) {
    const S empty;
    HTML::StringOutputStreamParserObserverOutputHandler<C, S> sink;
    const HTML::StartTagData<C, S> tag = {&empty, &empty, &list, &empty, true};
    HTML::ParserObserverOutput<C, S>::GetStartTagOutput(&tag, &sink);
    return sink.GetString();
}

TYPED_TEST(AttributesNormalizerTest, WrittenBackTheListGivesTheSameCharacters) {
    std::mt19937 random(20240607);
    const auto pick = [&random](std::initializer_list<std::string_view> choices) {
        return choices.begin()[random() % choices.size()];
    };
    for (int round = 0; round < 3000; ++round) {
        Vector<AttributeOf<TypeParam>> list;
        const auto length = random() % 9;
        for (std::size_t i = 0; i < length; ++i) {
            Item item = Bare(pick({"", " ", "\n\t"}), pick({"a", "", "'", "x/y"}));
            item.hasValue = random() % 3 == 0;
            if (item.hasValue) {
                item.beforeEquals = pick({"", " "});
                item.afterEquals = pick({"", " "});
                item.value = pick({"", "v", "v w", "<"});
                item.quote = static_cast<std::uint32_t>(random() % 3);
            }
            list.push_back(Make<TypeParam>(item));
        }
        const typename TypeParam::S before = WriteBack(list);
        const std::string dump = DumpAll(list);
        Normalizer<TypeParam>::Normalize(&list);
        ASSERT_EQ(WriteBack(list), before) << dump;
        bool hasAnchor = false;
        for (const AttributeOf<TypeParam>& attribute : list) {
            ASSERT_TRUE(attribute.hasValue || !hasAnchor) << dump;
            hasAnchor = attribute.hasValue;
        }
    }
}

TYPED_TEST(AttributesNormalizerTest, Splitting) {
    const std::string_view runOfQuotes = "\"\x1B$B\"\"\x1B(B\" d";
    struct Case {
        const char* note;
        Item folded;
        std::uint32_t options;
        std::string expected;
    };
    const Case CASES[] = {
        {"a bare word", Bare(" ", "a"), HTML::SPLIT_PLAIN, "[ |a||||0|bare]"},
        {"a quoted value took nothing up", Valued(" ", "a", 2, "b c"), HTML::SPLIT_PLAIN, "[ |a|||b c|2|value]"},
        {"nor did one without white space", Valued(" ", "a", 0, "b=c'd"), HTML::SPLIT_PLAIN, "[ |a|||b=c'd|0|value]"},
        {"an empty value", Valued(" ", "a", 0, ""), HTML::SPLIT_PLAIN, "[ |a||||0|value]"},
        {"quotation marks and a word",
         {" ", "href", "\t", true, "\n", "\"/one\" download"},
         HTML::SPLIT_PLAIN,
         "[ |href|\\t|\\n|/one|2|value][ |download||||0|bare]"},
        {"apostrophes", Valued(" ", "a", 0, "'b c' d"), HTML::SPLIT_PLAIN, "[ |a|||b c|1|value][ |d||||0|bare]"},
        {"an empty quoted value", Valued(" ", "a", 0, "'' d"), HTML::SPLIT_PLAIN, "[ |a||||1|value][ |d||||0|bare]"},
        {"a word right after the quote", Valued(" ", "a", 0, "\"b\"c"), HTML::SPLIT_PLAIN,
         "[ |a|||b|2|value][|c||||0|bare]"},
        {"no quotes", Valued(" ", "a", 0, "b c\n d"), HTML::SPLIT_PLAIN,
         "[ |a|||b|0|value][ |c||||0|bare][\\n |d||||0|bare]"},
        {"quotes inside of words", Valued(" ", "a", 0, "b\"c d\""), HTML::SPLIT_PLAIN,
         "[ |a|||b\"c|0|value][ |d\"||||0|bare]"},
        {"a value ends before \"<\"", Valued(" ", "a", 0, "b<c <d"), HTML::SPLIT_PLAIN,
         "[ |a|||b|0|value][|<c||||0|bare][ |<d||||0|bare]"},
        {"an empty value before \"<\"", Valued(" ", "a", 0, "<c"), HTML::SPLIT_PLAIN,
         "[ |a||||0|value][|<c||||0|bare]"},
        {"white space after the last word", Valued(" ", "a", 0, "b c \n"), HTML::SPLIT_PLAIN,
         "[ |a|||b|0|value][ |c| \\n|||0|bare]"},
        {"nothing but white space", Valued(" ", "a", 0, "\"b\" "), HTML::SPLIT_PLAIN,
         "[ |a|||b|2|value][ |||||0|bare]"},
        {"a quote that nothing closes is a character", Valued(" ", "a", 0, "\"b c"), HTML::SPLIT_PLAIN,
         "[ |a|||\"b|0|value][ |c||||0|bare]"},
        {"a quotation mark in an escape run", Valued(" ", "a", 0, runOfQuotes), HTML::SPLIT_ESCAPE_RUNS,
         "[ |a|||\\x1B$B\"\"\\x1B(B|2|value][ |d||||0|bare]"},
        {"which is none unless there are such runs", Valued(" ", "a", 0, runOfQuotes), HTML::SPLIT_PLAIN,
         "[ |a|||\\x1B$B|2|value][|\"\\x1B(B\"||||0|bare][ |d||||0|bare]"},
    };
    for (const Case& c : CASES) {
        SCOPED_TRACE(c.note);
        Vector<AttributeOf<TypeParam>> parts = MakeList<TypeParam>({Valued("x", "y", 2, "z"), Bare("u", "v", "w")});
        Normalizer<TypeParam>::Split(Make<TypeParam>(c.folded), c.options, &parts);
        EXPECT_EQ(DumpAll(parts), c.expected);
    }
}

TYPED_TEST(AttributesNormalizerTest, WhiteSpaceOfTextThatWasConverted) {
    Vector<AttributeOf<TypeParam>> parts;
    const AttributeOf<TypeParam> attribute = Make<TypeParam>(Valued(" ", "a", 0,
                                                                    "b\xA0"
                                                                    "c\x85"
                                                                    "d e"));
    Normalizer<TypeParam>::Split(attribute, HTML::SPLIT_NARROW_SPACES, &parts);
    EXPECT_EQ(parts.size(), 2U);
    Normalizer<TypeParam>::Split(attribute, HTML::SPLIT_PLAIN, &parts);
    EXPECT_EQ(parts.size(), sizeof(typename TypeParam::C) == 1 ? 2U : 4U);
}

TYPED_TEST(AttributesNormalizerTest, SplittingUndoesFolding) {
    std::mt19937 random(20261122);
    const auto pick = [&random](std::initializer_list<std::string_view> choices) {
        return choices.begin()[random() % choices.size()];
    };
    std::size_t folded = 0;
    for (int round = 0; round < 3000; ++round) {
        // As tags are read: what may follow what, and which characters end what.
        Vector<AttributeOf<TypeParam>> list;
        bool mayTouch = false;
        for (auto count = random() % 9; count > 0; --count) {
            Item item = Bare(mayTouch ? pick({"", " "}) : pick({" ", "\n\t"}), pick({"a", "'", "b\"c", "<d", "/e"}));
            item.hasValue = random() % 3 == 0;
            mayTouch = false;
            if (item.hasValue) {
                item.quote = static_cast<std::uint32_t>(random() % 3);
                item.value = item.quote == 0   ? pick({"v", "=", "v'w\"", "/"})
                             : item.quote == 1 ? pick({"", "v w", "<\""})
                                               : pick({"", "'> v"});
                mayTouch = item.quote != 0;
            }
            if (!list.empty() && list.back().hasValue && list.back().quote == 0 && item.prefix.empty())
                item.prefix = " ";
            list.push_back(Make<TypeParam>(item));
        }
        const std::string expected = DumpAll(list);
        Normalizer<TypeParam>::Normalize(&list);
        std::string found;
        Vector<AttributeOf<TypeParam>> parts;
        for (const AttributeOf<TypeParam>& attribute : list) {
            Normalizer<TypeParam>::Split(attribute, HTML::SPLIT_PLAIN, &parts);
            folded += parts.size() - 1;
            found += DumpAll(parts);
        }
        ASSERT_EQ(found, expected);
    }
    EXPECT_GT(folded, 1000U);
}

TYPED_TEST(AttributesNormalizerTest, HasNoData) {
    static_assert(std::is_empty_v<Normalizer<TypeParam>>);
    static_assert(std::is_default_constructible_v<Normalizer<TypeParam>>);
    static_assert(std::is_copy_constructible_v<Normalizer<TypeParam>>);
    static_assert(std::is_copy_assignable_v<Normalizer<TypeParam>>);
    static_assert(
        std::is_same_v<decltype(&Normalizer<TypeParam>::Normalize), void (*)(Vector<AttributeOf<TypeParam>>*)>);
}

}  // namespace
}  // namespace Kestra::Test
