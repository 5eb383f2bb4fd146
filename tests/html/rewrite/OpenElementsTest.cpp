#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <stdexcept>
#include <string>
#include <vector>

#include "html/rewrite/OpenElements.h"
#include "html/rewrite/Selectors.h"
#include "tests/html/parser/CountedAllocations.h"
#include "tests/html/rewrite/TestTags.h"

// The stack of open elements, and what they match together.

namespace Kestra::Test {
namespace {

using HTML::OpenElements;
using HTML::SelectorSet;

constexpr std::uint64_t MOST = std::numeric_limits<std::uint64_t>::max();

struct Row {
    const char* note;
    const char* document;
    const char* names;  // of the elements that are open at its end
};

constexpr Row ROWS[] = {
    {"nothing", "", ""},
    {"start tags", "<a><b><a>", "a b a"},
    {"an end tag", "<a><b></b>", "a"},
    {"an end tag closes what is inside", "<a><b><c></b>", "a"},
    {"an end tag closes the innermost of its name", "<a><a><b></a>", "a"},
    {"an end tag closes the outermost", "<a><b><c></a>", ""},
    {"a stray end tag", "<a></b>", "a"},
    {"a stray end tag alone", "</a>", ""},
    {"an end tag of what was closed from outside", "<a><b></a></b>", ""},
    {"the same name again and again", "<a></a><a></a></a><a>", "a"},
    {"no end tag is implied", "<p><p><li><li><table><td><td>", "p p li li table td td"},
    {"void elements are not open",
     "<a><area><base><br><col><embed><hr><img><input><link><meta><param><source><track><wbr>", "a"},
    {"obsolete ones neither", "<a><basefont><bgsound><command><frame><keygen>", "a"},
    {"the end tag of a void element is a stray one", "<a></br><br></br>", "a"},
    {"a short tag of a void element", "<br/><a>", "a"},
    {"names that begin like void ones", "<b><colgroup><h><framese><iframe><image>",
     "b colgroup h framese iframe image"},
    {"a short tag opens an element", "<b/><a>", "b a"},
    {"a short svg or math closes itself", "<svg/><math/><a>", "a"},
    {"short tags in svg", "<svg><b/><g/><a><b/>", "svg a"},
    {"short tags in math", "<math><mi/><mrow><b/>", "math mrow"},
    {"short tags after svg", "<svg><b/></svg><b/>", "b"},
    {"short tags in a foreign object", "<svg><foreignobject><b/>", "svg foreignobject b"},
    {"short tags in desc and title", "<svg><desc><b/></desc><title><b/>", "svg title b"},
    {"a short foreign object closes itself", "<svg><foreignobject/><desc/><title/><b/>", "svg"},
    {"svg in a foreign object", "<svg><foreignobject><svg><b/></svg><b/>", "svg foreignobject b"},
    {"math in a foreign object", "<svg><foreignobject><math><b/>", "svg foreignobject math"},
    {"svg in math, and math in svg", "<math><svg><title><b/></title></svg><title/><b/>", "math"},
    {"a title in math is no title of svg", "<svg><math><title><b/>", "svg math title"},
    {"a title in html is one of html", "<title><b/><foreignobject/>", "title b foreignobject"},
    {"void elements in svg", "<svg><br><link><image/>", "svg"},
    {"an svg closed from outside", "<a><svg><g></a><b/>", "b"},
};

TEST(OpenElementsTest, OpenAndClose) {
    for (const Row& row : ROWS) {
        const SelectorSet selectors;
        OpenElements open(&selectors);
        for (const TestTag& tag : ReadTags(row.document))
            EXPECT_EQ(Join(Take(tag, &open)), "");
        EXPECT_EQ(JoinNames(open), row.names) << row.note;
    }
}

TEST(OpenElementsTest, SayWhatHasContent) {
    const SelectorSet selectors;
    OpenElements open(&selectors);
    struct {
        const char* tag;
        bool hasContent;
        std::size_t depth;
    } const rows[] = {{"<a>", true, 1},     {"<br>", false, 1}, {"<b/>", true, 2},
                      {"<svg/>", false, 2}, {"<svg>", true, 3}, {"<g/>", false, 3}};
    for (const auto& row : rows) {
        const TestTag tag = ReadTags(row.tag).front();
        std::vector<std::size_t> matches{1, 2, 3};
        const OpenElements::OpenedElement opened = open.Open(tag.name, tag.isShort, 0, tag, &matches);
        EXPECT_EQ(opened.hasContent, row.hasContent) << row.tag;
        EXPECT_FALSE(opened.isOverLimit) << row.tag;
        EXPECT_TRUE(matches.empty()) << row.tag;
        EXPECT_EQ(open.GetDepth(), row.depth) << row.tag;
    }
}

TEST(OpenElementsTest, CountWhatAnEndTagCloses) {
    const SelectorSet selectors;
    OpenElements open(&selectors);
    for (const TestTag& tag : ReadTags("<a><b><a><c><d></d>"))
        Take(tag, &open);
    EXPECT_EQ(open.CountClosedBy("a"), 2U);
    EXPECT_EQ(open.CountClosedBy("b"), 3U);
    EXPECT_EQ(open.CountClosedBy("c"), 1U);
    EXPECT_EQ(open.CountClosedBy("d"), 0U);
    EXPECT_EQ(open.CountClosedBy("e"), 0U);
    EXPECT_EQ(open.CountClosedBy(""), 0U);
    open.CloseInnermost();
    open.CloseInnermost();
    EXPECT_EQ(open.CountClosedBy("a"), 2U);
    EXPECT_EQ(open.CountClosedBy("b"), 1U);
    EXPECT_EQ(open.CountClosedBy("c"), 0U);
}

TEST(OpenElementsTest, KeepPayloads) {
    const SelectorSet selectors;
    OpenElements open(&selectors);
    for (const TestTag& tag : ReadTags("<a><b>"))
        Take(tag, &open);
    EXPECT_EQ(open.GetPayload(1), 0U);
    open.SetPayload(0, 7);
    open.SetPayload(1, 8);
    Take(ReadTags("<c>").front(), &open);
    EXPECT_EQ(open.GetPayload(0), 7U);
    EXPECT_EQ(open.GetPayload(1), 8U);
    EXPECT_EQ(open.GetPayload(2), 0U);
    Take(ReadTags("</b>").front(), &open);
    Take(ReadTags("<b>").front(), &open);
    EXPECT_EQ(open.GetPayload(1), 0U);
}

TEST(OpenElementsTest, KnowWhatOpenElementsMatch) {
    SelectorSet selectors;
    for (const char* const selector : {"a", "a > b", "b c", "br", ".x", "#y"})
        ASSERT_TRUE(selectors.Add(selector, nullptr));
    OpenElements open(&selectors);
    struct {
        const char* tag;
        const char* matches;
    } const rows[] = {
        {"<z>", ""},      {"<a>", "0"},          {"<b>", "0 1"},    {"<br>", "0 1"},   {"<br class='x'>", "0 1"},
        {"<c>", "0 1 2"}, {"<b>", "0 1 2"},      {"</q>", "0 1 2"}, {"</b>", "0 1 2"}, {"</c>", "0 1"},
        {"</b>", "0"},    {"<c id='y'>", "0 5"}, {"</a>", ""},      {"<b>", ""},       {"<c class='x'>", "2 4"},
        {"</z>", ""},
    };
    for (const auto& row : rows) {
        Take(ReadTags(row.tag).front(), &open);
        std::vector<std::size_t> matches{9};
        open.GetMatches(&matches);
        EXPECT_EQ(Join(matches), row.matches) << row.tag;
        EXPECT_EQ(open.HasMatches(), !matches.empty()) << row.tag;
    }
}

TEST(OpenElementsTest, SelectorsThatComeLaterMatchWhatOpensLater) {
    // More and more, so that the sets get more words in the middle of a document.
    SelectorSet selectors;
    OpenElements open(&selectors);
    for (const TestTag& tag : ReadTags("<a><b>"))
        Take(tag, &open);
    EXPECT_FALSE(open.HasMatches());
    ASSERT_TRUE(selectors.Add("a c", nullptr));
    ASSERT_TRUE(selectors.Add("c", nullptr));
    EXPECT_FALSE(open.HasMatches());
    EXPECT_EQ(Join(Take(ReadTags("<c>").front(), &open)), "1");
    EXPECT_EQ(Join(Take(ReadTags("<a>").front(), &open)), "");
    for (int i = 0; i < 1000; ++i) {
        ASSERT_TRUE(selectors.Add("a > x > c", nullptr));
        std::vector<std::size_t> matches;
        open.GetMatches(&matches);
        EXPECT_EQ(Join(matches), "1");
        EXPECT_EQ(Join(Take(ReadTags("<c>").front(), &open)), "0 1");
        Take(ReadTags("</c>").front(), &open);
    }
    Take(ReadTags("<a>").front(), &open);
    Take(ReadTags("<x>").front(), &open);
    EXPECT_EQ(Take(ReadTags("<c>").front(), &open).size(), 1002U);
    EXPECT_EQ(open.GetDepth(), 7U);
}

TEST(OpenElementsTest, LimitTheDepth) {
    SelectorSet selectors;
    ASSERT_TRUE(selectors.Add("*", nullptr));
    OpenElements open(&selectors);
    open.SetMaxDepth(2);
    const TestTag tag = ReadTags("<a h='x'>").front();
    std::vector<std::size_t> matches;
    EXPECT_FALSE(open.Open("a", false, 1, tag, &matches).isOverLimit);
    EXPECT_FALSE(open.Open("b", false, 1, tag, &matches).isOverLimit);
    EXPECT_EQ(Join(matches), "0");
    const OpenElements::OpenedElement third = open.Open("c", false, 1, tag, &matches);
    EXPECT_TRUE(third.isOverLimit);
    EXPECT_FALSE(third.hasContent);
    EXPECT_TRUE(matches.empty());
    EXPECT_EQ(JoinNames(open), "a b");
    EXPECT_EQ(open.CountClosedBy("c"), 0U);
    // Void elements are not open, nor are short tags in svg.
    EXPECT_FALSE(open.Open("br", false, 1, tag, &matches).isOverLimit);
    EXPECT_EQ(Join(matches), "0");
    EXPECT_FALSE(open.Open("svg", true, 1, tag, &matches).isOverLimit);
    open.CloseInnermost();
    EXPECT_FALSE(open.Open("c", false, 1, tag, &matches).isOverLimit);
    EXPECT_TRUE(open.Open("c", false, 1, tag, &matches).isOverLimit);
    open.SetMaxDepth(0);
    EXPECT_FALSE(open.Open("c", false, 1, tag, &matches).isOverLimit);
    EXPECT_EQ(JoinNames(open), "a c c");
}

TEST(OpenElementsTest, LimitTheAttributes) {
    const SelectorSet selectors;
    OpenElements open(&selectors);
    open.SetMaxOpenAttributes(5);
    const TestTag tag;
    std::vector<std::size_t> matches;
    const auto isOver = [&](const char* name, std::uint64_t count) {
        return open.Open(name, false, count, tag, &matches).isOverLimit;
    };
    EXPECT_TRUE(isOver("a", 6));
    EXPECT_TRUE(isOver("a", MOST));
    EXPECT_FALSE(isOver("a", 3));
    EXPECT_TRUE(isOver("b", 3));
    EXPECT_FALSE(isOver("b", 2));
    EXPECT_FALSE(isOver("c", 0));
    EXPECT_TRUE(isOver("d", 1));
    EXPECT_TRUE(isOver("d", MOST - 4));
    EXPECT_FALSE(isOver("br", 100));
    EXPECT_EQ(JoinNames(open), "a b c");
    open.CloseInnermost();
    open.CloseInnermost();
    EXPECT_FALSE(isOver("d", 2));
    EXPECT_TRUE(isOver("e", 1));
    // A limit that was lowered closes nothing.
    open.SetMaxOpenAttributes(1);
    EXPECT_TRUE(isOver("e", 0));
    open.Clear();
    EXPECT_FALSE(isOver("e", 1));
}

TEST(OpenElementsTest, ClearsAllButTheSelectors) {
    SelectorSet selectors;
    ASSERT_TRUE(selectors.Add("a b", nullptr));
    OpenElements open(&selectors);
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(open.GetDepth(), 0U);
        EXPECT_FALSE(open.HasMatches());
        EXPECT_EQ(open.CountClosedBy("a"), 0U);
        EXPECT_EQ(Join(Take(ReadTags("<b>").front(), &open)), "");
        EXPECT_EQ(Join(Take(ReadTags("<a>").front(), &open)), "");
        EXPECT_EQ(Join(Take(ReadTags("<b>").front(), &open)), "0");
        EXPECT_TRUE(open.HasMatches());
        open.Clear();
    }
}

/// Its answer is an exception.
struct ThrowingTag final : HTML::TagAttributes {
    bool Find(std::string_view, std::string*) const override {
        throw std::runtime_error("no answer");
    }
};

TEST(OpenElementsTest, AnExceptionChangesNothing) {
    SelectorSet selectors;
    ASSERT_TRUE(selectors.Add("a", nullptr));
    ASSERT_TRUE(selectors.Add("[h=x]", nullptr));
    OpenElements open(&selectors);
    EXPECT_EQ(Join(Take(ReadTags("<a h='x'>").front(), &open)), "0 1");
    std::vector<std::size_t> matches{5};
    EXPECT_THROW(open.Open("a", false, 0, ThrowingTag(), &matches), std::runtime_error);
    EXPECT_EQ(Join(matches), "5");
    EXPECT_EQ(JoinNames(open), "a");
    EXPECT_EQ(open.CountClosedBy("a"), 1U);
    EXPECT_EQ(Join(Take(ReadTags("<b>").front(), &open)), "");
    EXPECT_EQ(Join(Take(ReadTags("<b h='x'>").front(), &open)), "1");
}

TEST(OpenElementsTest, TakeAMillionOfEverything) {
    // A step for each open element would be 10^12 of them.
    constexpr std::size_t COUNT = 1000000;
    SelectorSet selectors;
    for (const char* const selector : {"a a", "b > a", "c a[h]"})
        ASSERT_TRUE(selectors.Add(selector, nullptr));
    OpenElements open(&selectors);
    const TestTag a = ReadTags("<a>").front();
    const TestTag b = ReadTags("<b>").front();
    const TestTag endOfA = ReadTags("</a>").front();
    const TestTag endOfB = ReadTags("</b>").front();
    const TestTag stray = ReadTags("</x>").front();
    for (std::size_t i = 0; i < COUNT; ++i) {
        Take(i % 2 == 0 ? a : b, &open);
        Take(stray, &open);
    }
    EXPECT_EQ(open.GetDepth(), COUNT);
    EXPECT_EQ(Join(Take(a, &open)), "0 1");
    EXPECT_TRUE(a.questions.empty());
    for (std::size_t i = 0; i < COUNT; ++i) {
        Take(stray, &open);
        Take(a, &open);
        Take(endOfA, &open);
    }
    EXPECT_EQ(open.GetDepth(), COUNT + 1);
    while (open.CountClosedBy("b") > 0)
        Take(endOfB, &open);
    EXPECT_EQ(JoinNames(open), "a");
}

/// What a call adds to the bytes in use.
template <typename Function>
std::ptrdiff_t MeasureHeap(Function function) {
    const auto before = static_cast<std::ptrdiff_t>(GetHeapSize());
    function();
    return static_cast<std::ptrdiff_t>(GetHeapSize()) - before;
}

constexpr std::ptrdiff_t LITTLE = 65536;

TEST(OpenElementsTest, ForgetNamesThatAreNoLongerOpen) {
    constexpr std::size_t OPEN = 20;
    const SelectorSet selectors;
    OpenElements open(&selectors);
    const TestTag tag;
    std::vector<std::size_t> matches;
    for (std::size_t i = 0; i < OPEN; ++i)
        open.Open("open" + std::to_string(i), false, 0, tag, &matches);
    const auto comeAndGo = [&](const std::string& beginning) {
        return MeasureHeap([&] {
            for (int i = 0; i < 20000; ++i) {
                const std::string name = beginning + std::to_string(i);
                open.Open(name, false, 0, tag, &matches);
                EXPECT_EQ(open.CountClosedBy(name), 1U);
                open.CloseInnermost();
                EXPECT_EQ(open.CountClosedBy(name), 0U);
            }
        });
    };
    EXPECT_LT(comeAndGo("short"), LITTLE);
    EXPECT_LT(comeAndGo(std::string(1000, 'l')), LITTLE);
    EXPECT_LT(comeAndGo("again"), LITTLE);
    // Those that are open stay.
    for (std::size_t i = 0; i < OPEN; ++i)
        EXPECT_EQ(open.CountClosedBy("open" + std::to_string(i)), OPEN - i);
    for (std::size_t i = OPEN; i > 0; --i) {
        EXPECT_EQ(open.GetName(i - 1), "open" + std::to_string(i - 1));
        open.CloseInnermost();
    }
    EXPECT_EQ(open.CountClosedBy("open0"), 0U);
}

TEST(OpenElementsTest, KeepManyOpenNames) {
    constexpr std::size_t COUNT = 20000;
    const SelectorSet selectors;
    OpenElements open(&selectors);
    const TestTag tag;
    std::vector<std::size_t> matches;
    for (std::size_t i = 0; i < COUNT; ++i)
        open.Open("open" + std::to_string(i), false, 0, tag, &matches);
    for (std::size_t i = 0; i < COUNT; ++i)
        ASSERT_EQ(open.CountClosedBy("open" + std::to_string(i)), COUNT - i);
    EXPECT_LT(MeasureHeap([&] { open.Clear(); }), -static_cast<std::ptrdiff_t>(COUNT * 64));
}

TEST(OpenElementsTest, KeepNoValues) {
    SelectorSet selectors;
    ASSERT_TRUE(selectors.Add("[h*=y]", nullptr));
    ASSERT_TRUE(selectors.Add(".y", nullptr));
    OpenElements open(&selectors);
    TestTag tag;
    tag.name = "a";
    for (const char* const name : {"h", "class"})
        tag.attributes.emplace_back(name, std::string(1000000, 'x') + " y");
    EXPECT_LT(MeasureHeap([&] { EXPECT_EQ(Join(Take(tag, &open)), "0 1"); }), LITTLE);
}

TEST(OpenElementsTest, ShareWhatElementsMatch) {
    // A set of all these compounds takes 2,500 bytes; an element with sets of its own has up to
    // two.
    constexpr std::size_t COUNT = 1000;
    SelectorSet selectors;
    for (int i = 0; i < 10000; ++i)
        ASSERT_TRUE(selectors.Add("a > b", nullptr));
    struct {
        const char* note;
        const char* tags;
    } const rows[] = {{"nothing", "<c>"}, {"the same as the parent", "<a>"}, {"nothing again", "<c>"}};
    OpenElements open(&selectors);
    for (const auto& row : rows) {
        const TestTag tag = ReadTags(row.tags).front();
        Take(tag, &open);
        const std::ptrdiff_t taken = MeasureHeap([&] {
            for (std::size_t i = 0; i < COUNT; ++i)
                Take(tag, &open);
        });
        EXPECT_LT(taken, static_cast<std::ptrdiff_t>(COUNT * 256)) << row.note;
    }
    Take(ReadTags("<a>").front(), &open);
    EXPECT_EQ(Take(ReadTags("<b>").front(), &open).size(), 10000U);
}

}  // namespace
}  // namespace Kestra::Test
