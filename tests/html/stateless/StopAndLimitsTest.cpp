#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "tests/support/EventRun.h"
#include "tests/support/TestStreams.h"

namespace Kestra::Test {
namespace {

using HTML::StatelessHTMLParser;
using Lines = std::vector<std::string>;
using Results = std::vector<std::uint32_t>;

constexpr std::uint32_t STOPPED = HTML::STATELESS_STOPPED;
constexpr std::uint32_t OVER = HTML::STATELESS_LIMIT_EXCEEDED;

constexpr std::string_view EVERY_EVENT =
    "t<a b=c><d/></a><?e f='g'?><!h i><!--j--><script k='l'>m</script><style n='o'>p</style>q<r>s";

/// From `StartParse` on, for as long as the parser takes the pieces.
Results Feed(TracedParser* parser, std::string_view document, std::size_t pieceSize) {
    Results results = {parser->StartParse(0)};
    for (std::size_t i = 0; i < document.size() && (results.back() == 0 || results.back() == 16); i += pieceSize)
        results.push_back(parser->Feed(document.substr(i, pieceSize)));
    return results;
}

Results Play(TracedParser* parser, std::string_view document, std::size_t pieceSize) {
    Results results = Feed(parser, document, pieceSize);
    results.push_back(parser->EndParse());
    return results;
}

TEST(StatelessStopTest, InEveryCallback) {
    for (const std::size_t pieceSize : {1000U, 9U}) {
        TracedParser whole;
        const Results wholeResults = Play(&whole, EVERY_EVENT, pieceSize);
        ASSERT_GE(whole.lines.size(), 10U);
        for (std::size_t i = 0; i < whole.lines.size(); ++i) {
            SCOPED_TRACE("in " + whole.lines[i] + ", pieces of " + std::to_string(pieceSize));
            TracedParser parser;
            parser.observer.hook = [&](const std::string&) {
                if (parser.lines.size() == i + 1) {
                    EXPECT_EQ(parser.Stop(), 0U);
                }
            };
            const Results results = Play(&parser, EVERY_EVENT, pieceSize);
            EXPECT_EQ(std::count(results.begin(), results.end(), STOPPED), 1);
            EXPECT_EQ(results.back(), whole.lines[i] == "stop-parsing" ? STOPPED : 0U);
            const Lines delivered(whole.lines.begin(), whole.lines.begin() + static_cast<std::ptrdiff_t>(i) + 1);
            EXPECT_EQ(parser.lines, delivered);
            // The next document is as fresh.
            parser.observer.hook = nullptr;
            parser.lines.clear();
            EXPECT_EQ(parser.Stop(), 2U);
            EXPECT_EQ(Play(&parser, EVERY_EVENT, pieceSize), wholeResults);
            EXPECT_EQ(parser.lines, whole.lines);
        }
    }
}

TEST(StatelessStopTest, ItStaysStopped) {
    TracedParser parser;
    parser.observer.hook = [&](const std::string& line) {
        if (line == "start(a|)") {
            EXPECT_EQ(parser.Stop(), 0U);
            throw 1;
        }
    };
    EXPECT_EQ(parser.StartParse(0), 0U);
    EXPECT_THROW(parser.ParseBuffer("<a><b>", 6), int);
    EXPECT_EQ(parser.ParseBuffer("<b>", 3), STOPPED);
    EXPECT_EQ(parser.ParseBuffer(nullptr, 0), 0U);
    FaultyInputStream stream("<b>");
    EXPECT_EQ(parser.ParseStream(&stream, false), STOPPED);
    EXPECT_EQ(stream.GetReadCalls(), 0U);
    StatelessHTMLParser copy(parser);
    EXPECT_EQ(copy.ParseBuffer("<b>", 3), STOPPED);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.ParseBuffer("<b>", 3), 10U);
    EXPECT_EQ(parser.lines, (Lines{"start-parsing", "start(a|)"}));
}

/// A token between others that are shorter. All of it is in one event, or in two.
struct LimitRow {
    const char* note;
    std::string before;
    Lines events;
    std::string token;
    std::string after;
    bool isCuttable = true;  ///< false: a cut changes what it is
    bool scriptsAsText = false;
    std::size_t contentBefore = 0;  ///< bytes that count twice in columns
};

TEST(StatelessLimitTest, EveryKindOfToken) {
    const Lines tag = {"start-parsing", "start(a|)"};
    const LimitRow rows[] = {
        {"text", "<a>", tag, "bcdefghijklm", "<e>"},
        {"text after the last tag", "<a>", tag, "bcdefghijklm", ""},
        {"the first token", "", {"start-parsing"}, "bcdefghijklm", "<e>"},
        {"a start tag", "<a>", tag, "<bcdef g = hi   >", "n"},
        {"a start tag with a string", "<a>", tag, "<bcdef g='h'i>", "n", false},
        {"a start tag with an attribute that is none", "<a>", tag, "<bcdef 123456>", "n"},
        {"a short tag", "<a>", tag, "<bcdefghijk />", "n", false},
        {"an end tag", "<a>", tag, "</bcdefghijkl>", "n"},
        {"a comment", "<a>", tag, "<!--bcd-efghijk-->", "n", false},
        {"a declaration", "<a>", tag, "<!bcdefg hijkl>", "n"},
        {"an instruction", "<a>", tag, "<?bcdef g=h ?>", "n", false},
        {"a script", "<a>", tag, "<script>bc'd\\'e'\"f\"/*g*///h\n<i</script>", "n"},
        {"an open script", "<a>", tag, "<script>'0123456789", ""},
        {"a style sheet", "<a>", tag, "<style>bcd<efg</style>", "n"},
        {"a tag that fails", "<a>", tag, "<bcdefghijklmn ", "?=", false},
        {"a script as text", "<a>", tag, "<script>b'</b></script>", "n", true, true},
        {"with much after the name of its end tag", "<a>", tag, "<style></style        >", "n", true, true},
        {"a script that is open before its end tag", "<a>", tag, "<script>0123456789", "</script", true, true},
        {"a text as content", "<xmp>", {"start-parsing", "start(xmp|)"}, "bcde</b>fghijk", "</xmp>n<o>", true, true},
        {"one that looks like its end tag",
         "<xmp>",
         {"start-parsing", "start(xmp|)"},
         "bcde</xm</xmfg",
         "</xmp >n<o>",
         true,
         true},
        {"an open one", "<xmp>", {"start-parsing", "start(xmp|)"}, "bcdefghijklm", "</xm", true, true},
        {"the end tag of a content",
         "<xmp>b",
         {"start-parsing", "start(xmp|)", "text(b)"},
         "</xmp b=c d >",
         "n<o>",
         true,
         true,
         1},
        {"of an empty one", "<xmp>", {"start-parsing", "start(xmp|)"}, "</xmp b=c d >", "n<o>", true, true},
        {"plain text", "<plaintext>", {"start-parsing", "start(plaintext|)"}, "b<c></plaintext>", "", true, true},
    };
    for (const LimitRow& row : rows) {
        SCOPED_TRACE(row.note);
        const std::string document = row.before + row.token + row.after;
        ForEverySplit(document.size(), [&](const Cuts& cuts) {
            if (!row.isCuttable && !cuts.empty())
                return;
            for (const bool isOver : {false, true}) {
                TracedParser unlimited;
                TracedParser parser;
                for (TracedParser* const each : {&unlimited, &parser}) {
                    each->SetScriptMode(row.scriptsAsText ? StatelessHTMLParser::SCRIPT_AS_TEXT
                                                          : StatelessHTMLParser::SCRIPT_AS_TOKENS);
                    each->StartParse(0);
                }
                parser.SetMaxTokenSize(row.token.size() - (isOver ? 1 : 0));
                std::uint32_t wholeResult = 0;
                std::uint32_t result = 0;
                for (const auto& [begin, end] : PiecesOf(cuts, document.size())) {
                    wholeResult = unlimited.Feed(document.substr(begin, end - begin));
                    if (result == 0 || result == 16)
                        result = parser.Feed(document.substr(begin, end - begin));
                }
                if (!isOver) {
                    EXPECT_EQ(result, wholeResult);
                    EXPECT_EQ(parser.lines, unlimited.lines);
                    continue;
                }
                EXPECT_EQ(result, OVER);
                EXPECT_EQ(parser.lines, row.events);
                EXPECT_EQ(PlaceOf(parser), std::to_string(row.before.size()) +
                                               " 1:" + std::to_string(row.before.size() + row.contentBefore + 1));
                // A host goes on at the first byte of the token.
                StatelessHTMLParser copy(parser);
                EXPECT_EQ(copy.EndParse(), 0U);
                EXPECT_EQ(parser.lines, row.events);
                parser.SetMaxTokenSize(0);
                result = parser.Feed(document.substr(row.before.size()));
                if (cuts.empty()) {
                    EXPECT_EQ(result, wholeResult);
                    EXPECT_EQ(parser.lines, unlimited.lines);
                    EXPECT_EQ(PlaceOf(parser), PlaceOf(unlimited));
                }
            }
        });
    }
}

TEST(StatelessLimitTest, Attributes) {
    struct Row {
        const char* note;
        std::string document;
        std::uint64_t count;
    };
    const Row rows[] = {
        {"a start tag", "<a b c=d e=f >", 3},
        {"a short tag", "<a b c=d />", 2},
        {"a script", "<script b=c d=e></script>", 2},
        {"an instruction", "<?xml b=c d=e ?>", 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        for (const std::size_t pieceSize : {100U, 5U, 1U}) {
            TracedParser parser;
            parser.SetMaxAttributes(row.count);
            const Results allowed = Play(&parser, row.document, pieceSize);
            EXPECT_EQ(std::count(allowed.begin(), allowed.end(), OVER), 0);
            parser.SetMaxAttributes(row.count - 1);
            const Results over = Play(&parser, row.document, pieceSize);
            EXPECT_EQ(std::count(over.begin(), over.end(), OVER), 1);
        }
    }
}

TEST(StatelessLimitTest, ALimitOfTheSizeBoundsTheNumberOfAttributesAndItems) {
    for (const std::string start : {"<a", "<!a", "<?a"}) {
        SCOPED_TRACE(start);
        for (const std::size_t count : {31U, 32U}) {
            std::string document = start;
            for (std::size_t i = 0; i < count; ++i)
                document += " b";
            document += start == "<?a" ? " ?>" : ">";
            StatelessHTMLParser parser;
            parser.SetMaxTokenSize(1000);
            parser.StartParse(0);
            EXPECT_EQ(parser.ParseBuffer(document.data(), document.size()), count == 31 ? 0U : OVER);
        }
    }
}

TEST(StatelessLimitTest, SettersAndGetters) {
    StatelessHTMLParser parser;
    EXPECT_EQ(parser.GetMaxTokenSize(), 0U);
    EXPECT_EQ(parser.GetMaxAttributes(), 0U);
    EXPECT_EQ(parser.SetMaxTokenSize(7), 0U);
    EXPECT_EQ(parser.SetMaxAttributes(1), 0U);
    StatelessHTMLParser copy(parser);
    StatelessHTMLParser assigned;
    assigned = parser;
    for (StatelessHTMLParser* const each : {&parser, &copy, &assigned}) {
        EXPECT_EQ(each->StartParse(0), 0U);
        EXPECT_EQ(each->GetMaxTokenSize(), 7U);
        EXPECT_EQ(each->GetMaxAttributes(), 1U);
        EXPECT_EQ(each->ParseBuffer("<a bcd>", 7), 0U);
        EXPECT_EQ(PlaceOf(*each), "7 1:8");
        EXPECT_EQ(each->ParseBuffer("<a b c>", 7), OVER);
        EXPECT_EQ(PlaceOf(*each), "7 1:8");
        EXPECT_EQ(each->ParseBuffer("<a bcde>", 8), OVER);
        EXPECT_EQ(PlaceOf(*each), "7 1:8");
    }
}

/// What became of a document that is read in some pieces.
struct Reading {
    Lines lines;
    std::uint32_t result = 0;
    std::uint64_t end = 0;
};

Reading Read(std::string_view document, std::size_t pieceSize, std::uint64_t maxTokenSize,
             StatelessHTMLParser::ScriptMode scriptMode) {
    TracedParser parser;
    parser.SetScriptMode(scriptMode);
    parser.SetMaxTokenSize(maxTokenSize);
    const Results results = Feed(&parser, document, pieceSize);
    const std::uint64_t end = OffsetOf(parser);
    EXPECT_EQ(parser.EndParse(), 0U);
    return {parser.lines, results.back(), end};
}

// A cut decides about quotes, comments, marks that close a tag, and attributes that are none: only
// where it changes no event is the document compared.
TEST(StatelessLimitTest, RandomDocuments) {
    constexpr std::string_view PARTS[] = {"<a", "<b c",     " d=e",      "=f",     ">",        "</g>", "text", " ",
                                          "\n", "<script>", "</script>", "<style", "</style>", "//",   "\\",   "<!h i",
                                          "<",  "12",       "<xmp>",     "</xmp",  "</xm",     "<!--", "--"};
    std::mt19937 engine(1);
    const auto below = [&engine](std::size_t bound) { return engine() % bound; };
    std::size_t timesOver = 0;
    std::size_t compared = 0;
    for (int i = 0; i < 4000; ++i) {
        std::string document;
        for (std::size_t count = 1 + below(24); count > 0; --count)
            document += PARTS[below(std::size(PARTS))];
        const std::uint64_t limit = 1 + below(30);
        SCOPED_TRACE(Trace::Escape(document) + ", at most " + std::to_string(limit));
        const auto mode = i % 2 == 0 ? StatelessHTMLParser::SCRIPT_AS_TOKENS : StatelessHTMLParser::SCRIPT_AS_TEXT;
        const Reading whole = Read(document, document.size(), 0, mode);
        const Reading limited = Read(document, document.size(), limit, mode);
        timesOver += limited.result == OVER ? 1 : 0;
        if (limited.result != OVER) {
            ASSERT_EQ(limited.lines, whole.lines);
            ASSERT_EQ(limited.result, whole.result);
        }
        ASSERT_LE(limited.lines.size(), whole.lines.size());
        ASSERT_TRUE(std::equal(limited.lines.begin(), limited.lines.end(), whole.lines.begin()));
        for (const std::size_t pieceSize : {1U, 2U, 7U}) {
            const Reading cutWhole = Read(document, pieceSize, 0, mode);
            if (cutWhole.lines != whole.lines || cutWhole.result != whole.result)
                continue;
            ++compared;
            const Reading cut = Read(document, pieceSize, limit, mode);
            ASSERT_EQ(cut.result, limited.result) << pieceSize;
            ASSERT_EQ(cut.lines, limited.lines) << pieceSize;
            ASSERT_EQ(cut.end, limited.end) << pieceSize;
        }
    }
    EXPECT_GT(compared, 4000U);
    EXPECT_GT(timesOver, 500U);
    EXPECT_LT(timesOver, 3900U);
}

}  // namespace
}  // namespace Kestra::Test
