#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "html/rewrite/OpenElements.h"
#include "html/rewrite/Selectors.h"
#include "tests/html/rewrite/TestTags.h"

// Which start tags a selector matches.

namespace Kestra::Test {
namespace {

using HTML::OpenElements;
using HTML::SelectorSet;

struct Row {
    const char* note;
    const char* selector;
    const char* document;
    const char* matches;  // which start tags, counted from 1
};

constexpr Row ROWS[] = {
    {"a type", "b", "<a><b><b></b></b><c>", "2 3"},
    {"a type in any case", "B", "<a><b>", "2"},
    {"only A to Z are compared without their case", "\u00C9", "<\u00E9><\u00C9>", "2"},
    {"any type", "*", "<a><br><b/></a><svg>", "1 2 3 4"},
    {"a type is no beginning of a name", "b", "<br><bb>", ""},
    {"an id", "#x", "<a id='x'><a id='y'><a><b id='x'>", "1 4"},
    {"an id with its case", "#x", "<a id='X'>", ""},
    {"an id is the whole value", "#x", "<a id='x y'><a id=' x'>", ""},
    {"a type and an id", "a#x", "<b id='x'><a id='x'>", "2"},
    {"any type and an id", "*#x", "<b id='x'><a id='y'>", "1"},
    {"two ids", "#x#y", "<a id='x'><a id='y'><a id='x y'>", ""},
    {"a class", ".x", "<a class='x'><a class='y x z'><a class='xy'><a class><a>", "1 2"},
    {"a class with its case", ".x", "<a class='X'>", ""},
    {"classes between any white space", ".x", "<a class='\tx'><a class='y\nx\ry'><a class='x\f'>", "1 2 3"},
    {"classes between no other white space", ".x", "<a class='x\v'><a class='x\u00A0y'>", ""},
    {"two classes in any order", ".x.y", "<a class='y x'><a class='x y'><a class='x'><a class='x x'>", "1 2"},
    {"a class, an id, an attribute, a type", "a.x[h]#y",
     "<a class='x' h id='y'><a class='x' id='y'><b class='x' h id='y'>", "1"},
    {"a class with a space in its name is never there", ".a\\ b", "<a class='a b'>", ""},

    {"an attribute", "[h]", "<a h><a h=''><a h='x'><a x='h'><a>", "1 2 3"},
    {"an attribute in any case", "[H]", "<a h><a>", "1"},
    {"an attribute with a colon", "[xlink\\:href]", "<a xlink:href='x'><a href='x'>", "1"},
    {"a value", "[h=x]", "<a h='x'><a h='X'><a h='xx'><a h><a>", "1"},
    {"an empty value", "[h='']", "<a h><a h=''><a h=' '><a>", "1 2"},
    {"a value without its case", "[h=X-y I]", "<a h='x-Y'><a h='x-z'><a h='x'>", "1"},
    {"only A to Z without their case", "[h='\u00C9k'i]", "<a h='\u00E9k'><a h='\u00C9K'><a h='\u00C9\u212A'>", "2"},
    {"a value with its case, said twice", "[h=x s]", "<a h='x'><a h='X'>", "1"},
    {"other characters beside letters are no letters", "[h='@[`{' i]", "<a h='@[`{'><a h='`{@['>", "1"},
    {"a type attribute too", "[type=text]", "<input type='text'><input type='TEXT'>", "1"},

    {"a word", "[h~=x]", "<a h='x'><a h='y x'><a h='x\ty'><a h='xy'><a h='X'><a h><a>", "1 2 3"},
    {"a word without its case", "[h~=X i]", "<a h='y x'><a h='y X'><a h='yx'>", "1 2"},
    {"no empty word", "[h~='']", "<a h><a h=' '><a h='x  y'>", ""},
    {"no word with white space", "[h~='x y']", "<a h='x y'><a h='x'>", ""},
    {"a begin before a dash", "[h|=x]", "<a h='x'><a h='x-'><a h='x-y'><a h='xy'><a h='y-x'><a h='X-y'><a h>", "1 2 3"},
    {"a begin before a dash without its case", "[h|=X i]", "<a h='x'><a h='x-y'><a h='xy'>", "1 2"},
    {"an empty begin before a dash", "[h|='']", "<a h><a h='-'><a h='-x'><a h='x'><a>", "1 2 3"},
    {"a begin", "[h^=xy]", "<a h='xy'><a h='xyz'><a h='x'><a h='zxy'><a h='XYZ'><a h>", "1 2"},
    {"a begin without its case", "[h^=xY i]", "<a h='Xyz'><a h='X'>", "1"},
    {"no empty begin", "[h^='']", "<a h><a h='x'>", ""},
    {"an end", "[h$='.js']", "<a h='.js'><a h='a.js'><a h='js'><a h='a.js '><a h='a.JS'>", "1 2"},
    {"an end without its case", "[h$='.js' i]", "<a h='a.JS'><a h='JS'>", "1"},
    {"no empty end", "[h$='']", "<a h><a h='x'>", ""},
    {"a part", "[h*=abab]", "<a h='abab'><a h='abaabab'><a h='xababx'><a h='ababab'><a h='abaaba'><a h='ABAB'><a h>",
     "1 2 3 4"},
    {"a part that begins again in itself", "[h*=aab]", "<a h='aaab'><a h='aaaaaac'><a h='aacaab'>", "1 3"},
    {"a part without its case", "[h*=AbA i]", "<a h='xaBAx'><a h='abba'>", "1"},
    {"no empty part", "[h*='']", "<a h><a h='x'>", ""},
    {"two conditions on one attribute", "[h^=a][h$=z]", "<a h='az'><a h='a'><a h='z'><a h='a-z'>", "1 4"},
    {"the first of two attributes of a name", "[h=x]", "<a h='x' h='y'><a h='y' h='x'>", "1"},
    {"a value beyond ASCII", "[h=\u00E9\U0001F600]", "<a h='\u00E9\U0001F600'><a h='\u00E9'>", "1"},

    {"a descendant", "a b", "<b><a><b><c><b></b></c></b></a><b>", "3 5"},
    {"a descendant of the same type", "a a", "<a><a><b><a>", "2 4"},
    {"a descendant in void elements", "a br", "<br><a><br></a><br>", "3"},
    {"a void element has no descendants", "br b", "<br><b></br><b>", ""},
    {"a child", "a > b", "<b><a><b><b></b></b><c><b>", "3"},
    {"a child without white space", "a>b", "<a><b><b>", "2"},
    {"a child in an element after another one", "a > b", "<a><b></b><b></b><c></c><b>", "2 3 5"},
    {"a child of a descendant", "a b > c", "<a><c><b><c><c></c></c></b></c><b><c>", "4 7"},
    {"a descendant of a child", "a > b c", "<a><c></c><b><c></c><d><c></c></d></b><d><b><c>", "4 6"},
    {"another ancestor than the nearest one", "a > b c", "<a><b><x><b><c>", "5"},
    {"the same compound three times", "a a a", "<a><a><a><a>", "3 4"},
    {"a chain of children", "a > b > c > d", "<a><b><c><d></d></c></b><x><b><c><d>", "4"},
    {"a parent by its class", ".x > b", "<a class='x'><b><b></b></b></a><a><b>", "2"},
    {"an ancestor by its attribute", "[h='1'] c", "<a h='1'><b h='2'><c></c></b></a><b h='2'><c>", "3"},
    {"white space of every kind", "\t a\n>\f\rb \n c\r\n", "<a><b><c>", "3"},
    {"any element in another one", "* > *", "<a><b></b></a><c><br>", "2 4"},
    {"the root", "a *", "<a></a><b><c>", ""},
    {"a closed parent", "a b", "<a></a><b>", ""},
    {"a parent that was closed from outside", "b c", "<a><b></a><c>", ""},
    {"an element in foreign content", "svg title", "<title></title><svg><title>", "3"},
};

TEST(SelectorsTest, MatchStartTags) {
    for (const Row& row : ROWS) {
        SelectorSet selectors;
        std::string message;
        ASSERT_TRUE(selectors.Add(row.selector, &message)) << row.note << ": " << message;
        EXPECT_EQ(selectors.GetCount(), 1U);
        OpenElements open(&selectors);
        std::vector<std::size_t> matching;
        std::size_t number = 0;
        for (const TestTag& tag : ReadTags(row.document)) {
            number += tag.isEnd ? 0 : 1;
            if (!Take(tag, &open).empty())
                matching.push_back(number);
        }
        EXPECT_EQ(Join(matching), row.matches) << row.note << ": " << row.selector;
    }
}

TEST(SelectorsTest, HaveNumbersInTheOrderTheyCame) {
    SelectorSet selectors;
    for (const char* const selector : {"a b", "b", ".x", "b", "c > b", "*"})
        ASSERT_TRUE(selectors.Add(selector, nullptr));
    EXPECT_FALSE(selectors.Add("b,", nullptr));
    ASSERT_TRUE(selectors.Add("b.x", nullptr));
    EXPECT_EQ(selectors.GetCount(), 7U);
    OpenElements open(&selectors);
    const std::vector<TestTag> tags = ReadTags("<a><b class='x'><c class='x'><b>");
    const char* const expected[] = {"5", "0 1 2 3 5 6", "2 5", "0 1 3 4 5"};
    for (std::size_t i = 0; i < tags.size(); ++i)
        EXPECT_EQ(Join(Take(tags[i], &open)), expected[i]) << i;
}

TEST(SelectorsTest, MatchAcrossWords) {
    // Chains that begin and end in any of four words, each of which must not reach into the next.
    for (std::size_t before = 0; before < 200; ++before) {
        SelectorSet selectors;
        for (std::size_t i = 0; i < before; ++i)
            ASSERT_TRUE(selectors.Add("x", nullptr));
        ASSERT_TRUE(selectors.Add("a > b c", nullptr));
        ASSERT_TRUE(selectors.Add("d > c", nullptr));
        ASSERT_TRUE(selectors.Add("d c", nullptr));
        OpenElements open(&selectors);
        std::string matches;
        for (const TestTag& tag : ReadTags("<a><b><c></c><d><c></c></d></b></a><b><c>")) {
            for (const std::size_t match : Take(tag, &open))
                matches +=
                    ' ' + std::to_string(static_cast<std::ptrdiff_t>(match) - static_cast<std::ptrdiff_t>(before));
        }
        EXPECT_EQ(matches, " 0 0 1 2") << before;
    }
}

TEST(SelectorsTest, AskForWhatTheyNeedAndOnlyOnce) {
    struct {
        const char* note;
        std::vector<const char*> selectors;
        const char* tag;
        std::vector<std::string> questions;
    } const rows[] = {
        {"nothing without selectors", {}, "<a id='x'>", {}},
        {"nothing for a type", {"a", "*", "b c"}, "<a id='x'>", {}},
        {"nothing for another type", {"b[h=x]", "b.x", "b#x"}, "<a h='x'>", {}},
        {"nothing where the ancestor is missing", {"b a[h=x]", "b > a.x"}, "<a h='x'>", {}},
        {"no value where its presence is enough", {"[h]", "a[h]"}, "<a h='x'>", {"h"}},
        {"a value once", {"[h=x]", "[h=y]", "[h]", "[h~=y]"}, "<a h='x'>", {"h="}},
        {"a value after its presence", {"[h]", "[h=x]", "[h=x]"}, "<a h='x'>", {"h", "h="}},
        {"no value of an attribute that is missing", {"[h]", "[h=x]"}, "<a>", {"h"}},
        {"all classes at once", {".x", ".y.z", "[class~=x]"}, "<a class='x y'>", {"class="}},
        {"no classes twice where there are none", {".x", ".y"}, "<a>", {"class="}},
        {"nothing after what fails", {"[h=x][g=y]"}, "<a g='y'>", {"h="}},
        {"nothing for what is never true", {"[h^=''][g]", "[h~='a b']"}, "<a g='y' h='y'>", {}},
        {"names in lower case", {"[HREF]"}, "<a href='x'>", {"href"}},
    };
    for (const auto& row : rows) {
        SelectorSet selectors;
        for (const char* const selector : row.selectors)
            ASSERT_TRUE(selectors.Add(selector, nullptr)) << selector;
        OpenElements open(&selectors);
        const std::vector<TestTag> tags = ReadTags(row.tag);
        for (int times = 0; times < 2; ++times) {
            tags.front().questions.clear();
            Take(tags.front(), &open);
            EXPECT_EQ(tags.front().questions, row.questions) << row.note;
        }
    }
}

TEST(SelectorsTest, KnowNothingOfTheTagBefore) {
    SelectorSet selectors;
    for (const char* const selector : {".x", "[h=y]", "[g]"})
        ASSERT_TRUE(selectors.Add(selector, nullptr));
    OpenElements open(&selectors);
    EXPECT_EQ(Join(Take(ReadTags("<a class='x' h='y' g>").front(), &open)), "0 1 2");
    EXPECT_EQ(Join(Take(ReadTags("<a>").front(), &open)), "");
    EXPECT_EQ(Join(Take(ReadTags("<a class='z' h='z'>").front(), &open)), "");
}

TEST(SelectorsTest, SearchLongValuesInLinearTime) {
    // A plain search takes a quarter of 10^12 steps for this, and a minute for each 10^11.
    constexpr std::size_t LENGTH = 1000000;
    SelectorSet selectors;
    ASSERT_TRUE(selectors.Add("[h*='" + std::string(LENGTH / 2, 'a') + "b']", nullptr));
    ASSERT_TRUE(selectors.Add("[h*='" + std::string(LENGTH / 2, 'A') + "B' i]", nullptr));
    OpenElements open(&selectors);
    TestTag tag;
    tag.name = "a";
    tag.attributes.emplace_back("h", std::string(LENGTH, 'a'));
    EXPECT_EQ(Join(Take(tag, &open)), "");
    tag.attributes.front().second.back() = 'b';
    EXPECT_EQ(Join(Take(tag, &open)), "0 1");
}

TEST(SelectorsTest, LookUpManyClassesInLinearTime) {
    // Every class of the tag compared with every class of the selectors would be 10^10 comparisons.
    constexpr std::size_t COUNT = 100000;
    SelectorSet selectors;
    TestTag tag;
    tag.name = "a";
    tag.attributes.emplace_back("class", "");
    for (std::size_t i = 0; i < COUNT; ++i) {
        ASSERT_TRUE(selectors.Add(".c" + std::to_string(i), nullptr));
        tag.attributes.front().second += " c" + std::to_string(2 * i);
    }
    OpenElements open(&selectors);
    const std::vector<std::size_t> matches = Take(tag, &open);
    ASSERT_EQ(matches.size(), COUNT / 2);
    EXPECT_EQ(matches.back(), COUNT - 2);
}

}  // namespace
}  // namespace Kestra::Test
