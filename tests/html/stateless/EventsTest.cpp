#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/EventRun.h"
#include "tests/support/Splits.h"

// What the stateless parser reports, document by document.

namespace Kestra::Test {
namespace {

/// An input and its events between the first and the last. The input ends in a construct that is complete.
struct EventRow {
    const char* note;
    std::string input;
    std::string events;  ///< each ended by a line feed
    std::string place;   ///< line and column
};

std::string Expected(const std::string& events, const std::string& place) {
    return "start-parsing\n" + events + "stop-parsing\n" + place + "\n";
}

std::vector<std::string> Cut(const std::string& input, const Cuts& cuts) {
    std::vector<std::string> pieces;
    for (const auto& [begin, end] : PiecesOf(cuts, input.size()))
        pieces.push_back(input.substr(begin, end - begin));
    return pieces;
}

/// The rows whose events are the same however the input is cut.
TEST(StatelessEventsTest, HoweverTheInputIsCut) {
    const EventRow rows[] = {
        {"text and tags", "a<b>c</b>", "text(a)\nstart(b|)\ntext(c)\nend(b)\n", "line 1, column 12"},
        {"the text behind the last tag is dropped", "<b>c", "start(b|)\n", "line 1, column 6"},
        {"an attribute", "<p class=x>", "start(p|{class=x})\n", "line 1, column 12"},
        {"an attribute without a value", "<input checked>", "start(input|{checked=})\n", "line 1, column 16"},
        {"attributes twice", "<a b=1 b=2>", "start(a|{b=1}{b=2})\n", "line 1, column 12"},
        {"blanks around the equals sign", "<a b = 1>", "start(a|{b=1})\n", "line 1, column 10"},
        {"a blank in front of the name", "< a>", "start(a|)\n", "line 1, column 5"},
        {"an end tag", "</a>", "end(a)\n", "line 1, column 5"},
        {"an instruction", "<?xml version='1.0' ?>", "extern(xml|{version=1.0})\n", "line 1, column 23"},
        {"an unquoted value takes the question mark", "<?xml version=1.0?>", "extern(xml|{version=1.0?})\n", "line 1, column 20"},
        {"a declaration", "<!DOCTYPE html PUBLIC 'x' >", "entity(DOCTYPE|{html}{PUBLIC}{x})\n", "line 1, column 28"},
        {"a declaration without items", "<!DOCTYPE>", "entity(DOCTYPE|{})\n", "line 1, column 11"},
        {"a script", "<script>x=1</script>", "script(|x=1)\n", "line 1, column 32"},
        {"a script with an attribute", "<SCRIPT a=b>x</Script>", "script({a=b}|x)\n", "line 1, column 32"},
        {"an end tag in a string", "<script>x='</script>'</script>", "script(|x='</script>')\n", "line 1, column 41"},
        {"comments in a script", "<script>a/*b*/c//d\ne</script>", "script(|ace)\n", "line 1, column 43"},
        {"an escaped quote", "<script>'\\'</script>'</script>", "script(|'\\\\'</script>')\n", "line 1, column 39"},
        {"a style sheet", "<style>a<b</style>", "style(|ab)\n", "line 1, column 28"},
        {"two line breaks are one", "a\n\nb<p>", "text(a\\n\\nb)\nstart(p|)\n", "line 2, column 8"},
        {"CR and LF are one", "a\r\nb<p>", "text(a\\r\\nb)\nstart(p|)\n", "line 2, column 8"},
    };
    for (const EventRow& row : rows) {
        SCOPED_TRACE(std::string(row.note) + ": " + row.input);
        ForEverySplit(row.input, [&](const Cuts& cuts) {
            // A quote, "/" or "?" at the end of a piece changes what follows, and so does white space behind an item; see below.
            for (const std::size_t cut : cuts) {
                const std::string_view before = std::string_view(row.input).substr(0, cut);
                const bool isInTag = before.rfind('<') != std::string_view::npos && before.find('>', before.rfind('<')) == before.npos;
                const bool isInScript = before.find("cript>") != before.npos;
                if (isInTag && !isInScript &&
                    (before.ends_with('\'') || before.ends_with('?') || before.ends_with('/') || before.ends_with(' ')))
                    return;
            }
            EXPECT_EQ(ParseEvents(Cut(row.input, cuts)).Describe(), Expected(row.events, row.place));
        });
    }
}

/// An input in pieces, where the cut decides.
struct CutRow {
    const char* note;
    std::vector<std::string> pieces;
    std::string events;
};

TEST(StatelessEventsTest, WhereTheCutDecides) {
    const CutRow rows[] = {
        {"a comment is over with its piece", {"<!-- ab", "cd --><p>"}, "comment( ab)\ntext(cd -->)\nstart(p|)\n"},
        {"a quote that ends the piece goes on", {"<a b='1'", " c='2'>"}, "start(a|{b=1 c=})\n"},
        {"a tag is over at \"/\"", {"<br/", "><p>"}, "start(br|)\nend(br)\ntext(>)\nstart(p|)\n"},
        {"a declaration is over at \"/\"", {"<!a b /", "><p>"}, "entity(a|{b})\ntext(>)\nstart(p|)\n"},
        {"an instruction is over at \"?\"", {"<?a b ?", "><p>"}, "extern(a|{b=})\ntext(>)\nstart(p|)\n"},
        {"the byte in front of the cut is remembered", {"<?a b=c?", "><p>"}, "extern(a|{b=c?})\nstart(p|)\n"},
        {"white space behind an item", {"<!a b ", "><p>"}, "entity(a|{b}{})\nstart(p|)\n"},
        {"a name goes on", {"<p cla", "ss=x>"}, "start(p|{class=x})\n"},
        {"a bad attribute is forgotten", {"<a %x", " y=z>"}, "start(a|{y=z})\n"},
        {"a bad attribute in one piece", {"<a %x y=z>"}, "start(a|)\n"},
    };
    for (const CutRow& row : rows) {
        const EventRun run = ParseEvents(row.pieces);
        std::string events;
        for (const std::string& line : run.trace)
            events += line + "\n";
        EXPECT_EQ(events, "start-parsing\n" + row.events + "stop-parsing\n") << row.note;
    }
}

struct FailureRow {
    const char* note;
    std::string input;
    std::uint32_t result;
    std::string place;
};

TEST(StatelessEventsTest, Failures) {
    const FailureRow rows[] = {
        {"a blank behind the name of an end tag", "</a >", 702, "line 1, column 4"},
        {"no name behind \"</\"", "</>", 701, "line 1, column 3"},
        {"no construct behind \"<\"", "a <= b", 703, "line 1, column 6"},
        {"no construct behind \"<!\"", "<!>", 703, "line 1, column 3"},
        {"no second hyphen", "<!-x", 703, "line 1, column 4"},
        {"\"/\" and not \">\"", "<a /b>", 702, "line 1, column 5"},
        {"no end of an instruction", "<?a b>", 702, "line 1, column 6"},
    };
    for (const FailureRow& row : rows) {
        SCOPED_TRACE(row.note);
        const EventRun run = ParseEvents({row.input});
        ASSERT_EQ(run.parseResults, std::vector<std::uint32_t>{row.result});
        EXPECT_EQ("line " + std::to_string(run.line) + ", column " + std::to_string(run.column), row.place);
        EXPECT_EQ(run.endResult, 0U);
    }
}

TEST(StatelessEventsTest, TheMarkupChoosesTheCharset) {
    const std::string koi8 = "<meta content='text/html; charset=koi8-r' http-equiv=content-type>\xC1<p>";
    EXPECT_EQ(ParseEvents({koi8}).trace[2], "text(\\u0430)");
    EXPECT_EQ(ParseEvents({koi8}, 1252).trace[2], "text(\\u0430)");
    EXPECT_EQ(ParseEvents({koi8}, 1252, 0).trace[2], "text(\\u00C1)");
    EXPECT_EQ(ParseEvents({koi8}, 0, 0).trace[2], "text(\\u0430)");
    EXPECT_EQ(ParseEvents({"<meta charset=koi8-r>\xC1<p>"}).trace[2], "text(\\u00C1)");
    EXPECT_EQ(ParseEvents({"<?xml encoding='koi8-r' ?>\xC1<p>"}).trace[2], "text(\\u0430)");
    EXPECT_EQ(ParseEvents({"<meta content='charset=koi8-r' content='charset=' http-equiv=content-type>\xC1<p>"}).trace[2], "text(\\u00C1)");
}

TEST(StatelessEventsTest, OutsideOfADocument) {
    HTML::StatelessHTMLParser parser;
    EXPECT_EQ(parser.ParseBuffer("a", 1), 10U);
    EXPECT_EQ(parser.ParseBuffer(nullptr, 1), 10U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.StartParse(0), 0U);
    EXPECT_EQ(parser.ParseBuffer(nullptr, 1), 2U);
    EXPECT_EQ(parser.ParseBuffer(nullptr, 0), 0U);
    EXPECT_EQ(parser.ParseStream(nullptr, true), 2U);
}

}  // namespace
}  // namespace Kestra::Test
