#include <stdexcept>

#include "tests/html/parser/DocumentRows.h"

namespace Kestra::Test {
namespace {

using HTML::TokenPlace;

constexpr std::uint32_t STOPPED = HTML::PARSER_STOPPED;
constexpr std::uint32_t OVER = HTML::PARSER_LIMIT_EXCEEDED;

bool IsSame(const TokenPlace& one, const TokenPlace& other) {
    return one.begin == other.begin && one.end == other.end && one.line == other.line && one.column == other.column;
}

/// A parser with an observer that stops it in one of its callbacks.
class StoppedParser : public FedParser {
public:
    explicit StoppedParser(bool isWide = false)
        : FedParser(isWide ? Observed::WIDE : Observed::NARROW), forWide(isWide) {}

    void StopIn(std::size_t callback) {
        SetHook([this, callback](const std::string&) {
            if (lines.size() == callback + 1) {
                EXPECT_EQ(Stop(), 0U);
                place = GetTokenPlace();
            }
        });
    }

    const bool forWide;
    std::string document = EVERY_CALLBACK;
    TokenPlace place;  // in the callback that stopped
};

/// The results of a document, in the order of the calls: StartParse, the calls that feed, EndParse.
using Results = std::vector<std::uint32_t>;

/// Makes every callback, from a stream or from buffers of some size.
/// @param beforeEnd  receives the number of callbacks before `EndParse`
Results Play(StoppedParser* parser, bool hasMark, std::size_t pieceSize, std::size_t* beforeEnd) {
    const bool wide = parser->forWide;
    Results results = {parser->StartParse(1252, hasMark ? DATA_STREAM_AUTO : TypeFor(wide))};
    if (results.back() != 0)
        return results;
    const std::string bytes = (!hasMark ? "" : wide ? "\xFF\xFE" : "\xEF\xBB\xBF") + BytesFor(parser->document, wide);
    if (pieceSize == 0) {
        VFS::MemoryInputStream stream(bytes);
        results.push_back(parser->ParseStream(&stream, false));
        *beforeEnd = parser->lines.size();
        results.push_back(parser->EndParse());
        return results;
    }
    for (std::size_t i = 0; i < bytes.size() && results.back() == 0; i += pieceSize)
        results.push_back(parser->ParseBuffer(bytes.data() + i, std::min(pieceSize, bytes.size() - i)));
    *beforeEnd = parser->lines.size();
    results.push_back(parser->EndParse());
    return results;
}

void CheckStops(bool wide, const std::string& document, GenericParser::ScriptMode scriptMode) {
    for (const bool hasMark : {false, true}) {
        for (const std::size_t pieceSize : {0, 2, 1000}) {
            SCOPED_TRACE("pieces of " + std::to_string(pieceSize) + (hasMark ? ", with a mark" : ""));
            StoppedParser whole(wide);
            whole.document = document;
            whole.SetScriptMode(scriptMode);
            std::size_t beforeEnd = 0;
            const Results wholeResults = Play(&whole, hasMark, pieceSize, &beforeEnd);
            ASSERT_GT(whole.lines.size(), 15U);
            for (std::size_t i = 0; i < whole.lines.size(); ++i) {
                SCOPED_TRACE("in " + whole.lines[i]);
                StoppedParser stopped(wide);
                stopped.document = document;
                stopped.SetScriptMode(scriptMode);
                stopped.StopIn(i);
                std::size_t ignored = 0;
                const Results results = Play(&stopped, hasMark, pieceSize, &ignored);
                const bool isInEnd = i >= beforeEnd;
                // One call answers 710; `EndParse` after it answers 0.
                ASSERT_EQ(std::count(results.begin(), results.end(), STOPPED), 1);
                EXPECT_EQ(results.back(), isInEnd || results.size() == 1 ? STOPPED : 0U);
                EXPECT_TRUE(results.size() == 1 || isInEnd || results[results.size() - 2] == STOPPED);
                const Lines delivered(whole.lines.begin(), whole.lines.begin() + static_cast<std::ptrdiff_t>(i) + 1);
                EXPECT_EQ(stopped.lines, delivered);
                EXPECT_TRUE(IsSame(stopped.GetTokenPlace(), stopped.place));
                // It stays stopped, and no stream is read.
                stopped.SetHook(nullptr);
                EXPECT_EQ(stopped.Stop(), 2U);
                EXPECT_EQ(stopped.ParseBuffer("<p>", 3), STOPPED);
                EXPECT_EQ(stopped.ParseBuffer(nullptr, 0), 0U);
                FaultyInputStream stream("<p>");
                EXPECT_EQ(stopped.ParseStream(&stream, false), STOPPED);
                EXPECT_EQ(stream.GetReadCalls(), 0U);
                EXPECT_EQ(stopped.EndParse(), 0U);
                GenericParser copy(stopped);
                EXPECT_EQ(copy.ParseBuffer("<p>", 3), STOPPED);
                EXPECT_EQ(stopped.lines, delivered);
                EXPECT_TRUE(IsSame(stopped.GetTokenPlace(), stopped.place));
                // The next document is as fresh.
                stopped.lines.clear();
                EXPECT_EQ(Play(&stopped, hasMark, pieceSize, &ignored), wholeResults);
                EXPECT_EQ(stopped.lines, whole.lines);
            }
        }
    }
}

TEST(StopTest, InEveryCallback) {
    for (const bool wide : {false, true}) {
        SCOPED_TRACE(wide ? "wide" : "8-bit");
        CheckStops(wide, EVERY_CALLBACK, SCRIPT_AS_TOKENS);
    }
}

TEST(StopTest, AroundScriptsAsText) {
    for (const bool wide : {false, true}) {
        SCOPED_TRACE(wide ? "wide" : "8-bit");
        CheckStops(wide, "<title>a</title><script>b</script><style>c</style><xmp></xmp><title>d</titled</title>e",
                   SCRIPT_AS_TEXT);
    }
}

TEST(StopTest, AnExceptionPassesAndTheStopHolds) {
    for (const bool wide : {false, true}) {
        SCOPED_TRACE(wide ? "wide" : "8-bit");
        StoppedParser stopped(wide);
        stopped.SetHook([&stopped](const std::string& line) {
            if (line == "start(|a||)") {
                EXPECT_EQ(stopped.Stop(), 0U);
                throw std::runtime_error("an observer's own");
            }
        });
        std::size_t ignored = 0;
        EXPECT_THROW(Play(&stopped, false, 1000, &ignored), std::runtime_error);
        const Lines lines = stopped.lines;
        EXPECT_EQ(lines.back(), "start(|a||)");
        EXPECT_EQ(stopped.Feed("text"), STOPPED);
        EXPECT_EQ(stopped.EndParse(), 0U);
        EXPECT_EQ(stopped.lines, lines);
    }
}

TEST(StopTest, WithoutADocument) {
    GenericParser parser;
    EXPECT_EQ(parser.Stop(), 2U);
    EXPECT_EQ(parser.StartParse(1252, DATA_STREAM_8BIT), 0U);
    EXPECT_EQ(parser.Stop(), 2U);
    EXPECT_EQ(parser.ParseBuffer("a<b>", 4), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
}

TEST(StopTest, InACharsetThatComesTooLate) {
    constexpr std::string_view DOCUMENT = "<p><meta charset=utf-8>text";
    for (const bool stops : {false, true}) {
        FedParser parser(Observed::WIDE);
        parser.wide.hook = [&](const std::string& line) {
            if (stops && line == "charset(65001)") {
                EXPECT_EQ(parser.Stop(), 0U);
            }
        };
        parser.Start(0);
        EXPECT_EQ(parser.Feed(DOCUMENT), stops ? STOPPED : HTML::PARSER_PARSE_AGAIN);
        EXPECT_TRUE(parser.NeedsReparsing());
        EXPECT_EQ(parser.lines.back(), "charset(65001)");
    }
}

TEST(StopTest, InTheContentOfAScriptThatIsText) {
    for (const std::size_t cut : {9, 10, 11, 12, 15, 18, 30}) {
        SCOPED_TRACE(cut);
        StoppedParser stopped;
        stopped.SetScriptMode(SCRIPT_AS_TEXT);
        stopped.StopIn(4);
        const std::string document = "<script>ab</script>c<b>d<e>f<g>h";
        EXPECT_EQ(stopped.StartParse(1252, DATA_STREAM_8BIT), 0U);
        std::uint32_t result = stopped.ParseBuffer(document.data(), cut);
        if (result == 0)
            result = stopped.ParseBuffer(document.data() + cut, document.size() - cut);
        EXPECT_EQ(result, STOPPED);
        EXPECT_EQ(stopped.EndParse(), 0U);
        EXPECT_EQ(stopped.lines, (Lines{"start-parsing", "charset(1252)", "start(|script||)", "js-start", "text(ab)"}));
        EXPECT_EQ(stopped.place.begin, 8U);
        EXPECT_EQ(stopped.place.end, 10U);
        EXPECT_EQ(stopped.GetColumn(), 12U);
    }
}

TEST(StopTest, InJunkThatTheEndOfTheInputMakes) {
    for (const bool wide : {false, true}) {
        SCOPED_TRACE(wide ? "wide" : "8-bit");
        StoppedParser stopped(wide);
        stopped.document = "a<b";
        stopped.StopIn(3);
        std::size_t beforeEnd = 0;
        EXPECT_EQ(Play(&stopped, false, 0, &beforeEnd), (Results{0, 0, STOPPED}));
        EXPECT_EQ(beforeEnd, 3U);
        ASSERT_EQ(stopped.lines.size(), 4U);
        EXPECT_TRUE(stopped.lines.back().starts_with("junk("));
        EXPECT_TRUE(IsSame(stopped.GetTokenPlace(), stopped.place));
        EXPECT_EQ(stopped.EndParse(), 0U);
        EXPECT_EQ(stopped.lines.size(), 4U);
    }
}

TEST(StopTest, AnOwnedStreamIsDeleted) {
    StoppedParser stopped;
    stopped.StopIn(0);
    EXPECT_EQ(stopped.StartParse(1252, DATA_STREAM_8BIT), STOPPED);
    int destructions = 0;
    auto stream = std::make_unique<FaultyInputStream>("<p>");
    stream->CountDestructions(&destructions);
    EXPECT_EQ(stopped.ParseStream(stream.release(), true), STOPPED);
    EXPECT_EQ(destructions, 1);
}

TEST(StopTest, TheSelfCheckOfAStoppedDocumentSaysNothing) {
    StoppedParser stopped;
    stopped.SetSelfCheck(SELF_CHECK_CRC);
    stopped.StopIn(2);
    stopped.StartParse(1252, DATA_STREAM_8BIT);
    EXPECT_EQ(stopped.ParseBuffer("a<b>c", 5), STOPPED);
    EXPECT_EQ(stopped.EndParse(), 0U);
}

/// A token between others that are shorter.
struct LimitRow {
    const char* note;
    std::string before;
    Tokens tokensBefore;
    std::string token;
    std::string after;
    bool isKnownAtEnd = false;  ///< that it is so long, only when the input ends
    bool needsStream = false;
    GenericParser::ScriptMode scriptMode = SCRIPT_AS_TOKENS;
};

void CheckLimits(const LimitRow& row, const Route& route, Feed feed) {
    const std::string document = row.before + row.token + row.after;
    const std::uint64_t size = row.token.size() * (route.wideInput ? 2 : 1);
    ForEverySplit(document.size(), [&](const Cuts& cuts) {
        DocumentSettings settings = SettingsFor(route, feed);
        settings.scriptMode = row.scriptMode;
        const DocumentRun whole = ParseBy(route, document, cuts, settings);
        settings.prepare = [size](GenericParser* parser) { parser->SetMaxTokenSize(size); };
        const DocumentRun allowed = ParseBy(route, document, cuts, settings);
        EXPECT_EQ(allowed.Lines(), whole.Lines()) << "of its size";
        EXPECT_EQ(allowed.parseResult, whole.parseResult);
        EXPECT_EQ(allowed.endResult, whole.endResult);
        settings.prepare = [size](GenericParser* parser) { parser->SetMaxTokenSize(size - 1); };
        const DocumentRun over = ParseBy(route, document, cuts, settings);
        EXPECT_EQ(Join(Comparable(over.trace, route)), Join(OpenTrace(row.tokensBefore, route))) << "one less";
        EXPECT_EQ(over.parseResult, row.isKnownAtEnd ? 0 : OVER);
        EXPECT_EQ(over.endResult, row.isKnownAtEnd ? OVER : 0);
        EXPECT_EQ(over.lineAfterEnd, 1U);
        EXPECT_EQ(over.columnAfterEnd, row.before.size() + 1);
    });
}

TEST(LimitTest, EveryKindOfToken) {
    const Lines tag = {"start(|a||)"};
    const Lines script = {"start(|script||)", "js-start"};
    const Lines style = {"start(|style||)", "css-start"};
    const Lines title = {"start(|title||)"};
    constexpr GenericParser::ScriptMode AS_TEXT = SCRIPT_AS_TEXT;
    const LimitRow rows[] = {
        {"text", "<a>", tag, "bcdefghijklm", "<e>"},
        {"text at the end of the input", "<a>", tag, "bcdefghijklm", ""},
        {"the first token", "", {}, "bcdefghijklm", "<e>"},
        {"a start tag", "<a>", tag, "<bcdefgh ijk=lm>", "n"},
        {"a short tag", "<a>", tag, "<bcdefghijklm/>", "n"},
        {"an end tag", "<a>", tag, "</bcdefghijklm>", "n"},
        {"a comment", "<a>", tag, "<!--bcdefghijklm-->", "n"},
        {"a comment that is not closed", "<a>", tag, "<!--bcdefghijklm--", ""},
        {"a section", "<a>", tag, "<![CDATA[bcdefg]]>", "n"},
        {"a section that ends open", "<a>", tag, "<![CDATA[bcdefg]]", "]"},
        {"a declaration", "<a>", tag, "<!bcdefgh ijk 'l m'>", "n"},
        {"an XML declaration", "<a>", tag, "<?xml bcdefgh='i'?>", "n"},
        {"an instruction", "<a>", tag, "<?bcdefgh i?>", "n"},
        {"text of a script", "<script>", script, "bcdefghijklm", "'n'"},
        {"text of a script before a comment", "<script>", script, "bcdefghijklm", "/*n*/"},
        {"text of a script with a slash", "<style>", style, "bcdef/ghijklm", "/*n*/"},
        {"text of a style sheet that ends in a slash", "<style>", style, "bcdefghijklm/", "", true},
        {"text of a style sheet with a slash before a tag", "<style>", style, "bcdefghijklm/", "</style>"},
        {"what looks like a tag in a script", "<script>", script, "<bcdefghijklm>", "'n'"},
        {"an end tag in a script, and the text after it", "<script>", script, "</bcdefghijklm>n", "'o'"},
        {"a string in single quotes", "<script>", script, "'bcdefghijklm'", "n"},
        {"a string in double quotes", "<script>", script, "\"bcdefghijklm\"", "n"},
        {"a block comment", "<script>", script, "/*bcdefghij*klm*/", "n"},
        {"a line comment", "<script>", script, "//bcdefghij<klm", "\nn"},
        {"a line comment before a comment", "<script>", script, "//bcdefghijklm", "<!--n-->"},
        {"a line comment before a section", "<script>", script, "//bcdefghijklm", "<![CDATA[]]>"},
        {"a line comment before a condition", "<script>", script, "//bcdefghijklm", "<![endif]>"},
        {"a regular expression", "<script>", script, "/bcdefghijklm", "\nn"},
        {"a script as text", "<script>", script, "b'defgh//klm", "</script>", false, false, AS_TEXT},
        {"a script in a script", "<script>", script, "<!--<script></script>-->", "</script >n", false, false, AS_TEXT},
        {"a style sheet as text", "<style>", style, "b/*def'ghijklm", "</STYLE/>n", false, false, AS_TEXT},
        {"a title that does not end at once", "<title>", title, "bc</title</tit</titles>", "</title>n", false, false,
         AS_TEXT},
        {"a title that the input ends", "<title>", title, "bcdefghijklmn", "", false, false, AS_TEXT},
        {"and what could begin its end tag", "<title>", title, "bcdefghi</title", "", true, false, AS_TEXT},
        {"the end tag after a title", "<title>b", "start(|title||)\ntext(b)", "</title cdefghijklm>", "n", false, false,
         AS_TEXT},
        {"a construct that fails", "<a>", tag, "<bcdefgh ijk / ", ">l", false, true},
        {"the rest of its junk", "<a><b c / ", "start(|a||)\njunk(<b c / )", "defghijklmno", "<p>", false, true},
        {"an instruction that stays open", "<a>", tag, "<?bcdefghijklm", "", false, true},
    };
    for (const LimitRow& row : rows) {
        SCOPED_TRACE(row.note);
        CheckLimits(row, NARROW_TO_WIDE, Feed::STREAM);
        CheckLimits(row, WIDE_TO_WIDE, Feed::STREAM);
        if (row.needsStream)
            continue;
        CheckLimits(row, NARROW_TO_NARROW, Feed::BUFFER);
        CheckLimits(row, WIDE_TO_NARROW, Feed::BUFFER);
    }
}

// What is scanned of a tail in an earlier piece is no part of its record, so that a cut decides
// about it.
TEST(LimitTest, AConditionIsReadAsWithoutALimit) {
    for (const std::size_t fill : {0, 1000, 1020, 1023, 1024, 2040, 5000}) {
        SCOPED_TRACE(fill);
        const std::string document = "<a><![if " + std::string(fill, 'b') + "]" + std::string(3000, 'c') + "><d>";
        for (const Cuts& cuts : {Cuts{}, Cuts{2000}, CutsEvery(700, document.size())}) {
            for (const Route& route : ROUTES) {
                DocumentSettings settings = SettingsFor(route);
                const DocumentRun whole = ParseBy(route, document, cuts, settings);
                settings.prepare = [](GenericParser* parser) { parser->SetMaxTokenSize(100000); };
                EXPECT_EQ(ParseBy(route, document, cuts, settings).Lines(), whole.Lines());
                settings.prepare = [](GenericParser* parser) { parser->SetMaxTokenSize(500); };
                EXPECT_EQ(ParseBy(route, document, cuts, settings).parseResult, OVER);
            }
        }
    }
}

TEST(LimitTest, Attributes) {
    struct Row {
        const char* note;
        std::string document;
        std::uint64_t count;
    };
    const Row rows[] = {
        {"a start tag", "<a b c=d e='f'>", 3},
        {"bare words that become a part of a value", "<a b=c d e f>", 4},
        {"a short tag", "<a b c d/>", 3},
        {"a short tag with a value", "<a b c=d/>", 2},
        {"a long list", "<a b c d e f g h i j k l m n='o' p=q>", 14},
        {"an end tag", "</a b c=d/>", 2},
        {"an end tag in a script", "<script></a b c=d></script>", 2},
        {"an instruction", "<?xml b='c' d=\"e\" f?>", 3},
        {"an instruction that ends in a slash", "<?xml b='c' d/>", 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        for (const Route& route : ROUTES) {
            ForEverySplit(row.document.size(), [&](const Cuts& cuts) {
                DocumentSettings settings = SettingsFor(route);
                const DocumentRun whole = ParseBy(route, row.document, cuts, settings);
                EXPECT_EQ(whole.parseResult, 0U);
                settings.prepare = [&row](GenericParser* parser) { parser->SetMaxAttributes(row.count); };
                EXPECT_EQ(ParseBy(route, row.document, cuts, settings).Lines(), whole.Lines());
                settings.prepare = [&row](GenericParser* parser) { parser->SetMaxAttributes(row.count - 1); };
                const DocumentRun over = ParseBy(route, row.document, cuts, settings);
                EXPECT_EQ(over.parseResult, OVER);
                EXPECT_EQ(over.endResult, 0U);
                EXPECT_LT(over.trace.size(), whole.trace.size());
            });
        }
    }
}

std::string Repeat(std::string_view part, std::size_t count) {
    std::string text;
    for (std::size_t i = 0; i < count; ++i)
        text += part;
    return text;
}

TEST(LimitTest, ALimitOfTheSizeBoundsTheNumberOfAttributesAndItems) {
    struct Row {
        const char* note;
        std::string start;
        std::string end;
        std::uint64_t size;
        std::uint64_t attributes;
        std::size_t most;
    };
    const Row rows[] = {
        {"24 attributes and one in 128 bytes", "<a", ">", 200, 0, 25},
        {"of a longer tag", "<a", ">", 12800, 0, 124},
        {"of an end tag", "</a", ">", 200, 0, 25},
        {"as many as the host says", "<a", ">", 400, 60, 60},
        {"items of a declaration", "<!a", ">", 200, 0, 25},
        {"of which the host says nothing", "<!a", ">", 400, 60, 27},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        for (const Route& route : ROUTES) {
            DocumentSettings settings = SettingsFor(route);
            const std::uint64_t factor = route.wideInput ? 2 : 1;
            settings.prepare = [&row](GenericParser* parser) {
                parser->SetMaxTokenSize(row.size);
                parser->SetMaxAttributes(row.attributes);
            };
            const std::string allowed = row.start + Repeat(" b", row.most) + row.end;
            const std::string oneMore = row.start + Repeat(" b", row.most + 1) + row.end;
            ASSERT_LE(oneMore.size() * factor, row.size);
            for (const Cuts& cuts : {Cuts{}, CutsEvery(1, allowed.size())}) {
                EXPECT_EQ(ParseBy(route, allowed, cuts, settings).parseResult, 0U);
                EXPECT_EQ(ParseBy(route, oneMore, cuts, settings).parseResult, OVER);
            }
        }
    }
}

TEST(LimitTest, AHostGoesOn) {
    FedParser parser;
    parser.SetSelfCheck(SELF_CHECK_CRC);
    parser.SetMaxTokenSize(9);
    parser.Start();
    const std::string document = "a\n<script>'0123456789'b</script>c";
    EXPECT_EQ(parser.Feed(document), OVER);
    EXPECT_EQ(parser.GetTokenPlace().end, 10U);
    EXPECT_EQ(parser.GetLine(), 2U);
    EXPECT_EQ(parser.GetColumn(), 9U);
    EXPECT_EQ(parser.EndParse(), 0U);
    const Lines before = {"start-parsing", "charset(1252)", "text(a\\n)", "start(|script||)", "js-start"};
    EXPECT_EQ(parser.lines, before);
    // Again, it goes over again.
    EXPECT_EQ(parser.ParseBuffer(document.data() + 10, document.size() - 10), OVER);
    EXPECT_EQ(parser.GetTokenPlace().end, 10U);
    EXPECT_EQ(parser.lines, before);
    GenericParser copy(parser);
    // With another limit it does not, and the string is still one of a script.
    parser.SetMaxTokenSize(12);
    EXPECT_EQ(parser.ParseBuffer(document.data() + 10, document.size() - 10), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.lines,
              (Lines{"start-parsing", "charset(1252)", "text(a\\n)", "start(|script||)", "js-start",
                     "s-string(0123456789)", "text(b)", "end(|script|||)", "js-end", "text(c)", "end-parsing"}));
    EXPECT_EQ(parser.GetTokenPlace().end, document.size());
    EXPECT_EQ(parser.GetLine(), 2U);
    // A copy goes on as well, and may skip what it likes.
    parser.lines.clear();
    EXPECT_EQ(copy.ParseBuffer(document.data() + 22, document.size() - 22), 0U);
    EXPECT_EQ(copy.EndParse(), 0U);
    EXPECT_EQ(parser.lines, (Lines{"text(b)", "end(|script|||)", "js-end", "text(c)", "end-parsing"}));
    EXPECT_EQ(copy.GetTokenPlace().end, document.size() - 12);
}

TEST(LimitTest, TheCopyOfTheSelfCheckHasWhatWasDelivered) {
    GenericParser parser;
    parser.SetSelfCheck(SELF_CHECK_COPY);
    parser.SetMaxTokenSize(3);
    parser.StartParse(1252, DATA_STREAM_8BIT);
    EXPECT_EQ(parser.ParseBuffer("a<b>cdef", 8), OVER);
    ASSERT_NE(parser.GetSelfCheckStream(), nullptr);
    EXPECT_EQ(ReadAll(parser.GetSelfCheckStream(), 100).bytes, "a<b>");
    EXPECT_EQ(parser.ParseBuffer("c<d>", 4), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    ASSERT_NE(parser.GetSelfCheckStream(), nullptr);
    EXPECT_EQ(ReadAll(parser.GetSelfCheckStream(), 100).bytes, "c<d>");
}

TEST(LimitTest, SettersAndGetters) {
    GenericParser parser;
    EXPECT_EQ(parser.GetMaxTokenSize(), 0U);
    EXPECT_EQ(parser.GetMaxAttributes(), 0U);
    EXPECT_EQ(parser.SetMaxTokenSize(7), 0U);
    EXPECT_EQ(parser.SetMaxAttributes(1), 0U);
    for (const auto type : {DATA_STREAM_8BIT, DATA_STREAM_UTF16}) {
        const bool wide = type == DATA_STREAM_UTF16;
        parser.SetMaxTokenSize(wide ? 15 : 7);
        EXPECT_EQ(parser.StartParse(1252, type), 0U);
        EXPECT_EQ(parser.GetMaxAttributes(), 1U);
        GenericParser copy(parser);
        GenericParser assigned;
        assigned = parser;
        for (GenericParser* const each : {&parser, &copy, &assigned}) {
            EXPECT_EQ(each->GetMaxTokenSize(), wide ? 15U : 7U);
            const std::string fine = BytesFor("<a bcd>", wide);
            EXPECT_EQ(each->ParseBuffer(fine.data(), fine.size()), 0U);
            const std::string many = BytesFor("<a b c>", wide);
            EXPECT_EQ(each->ParseBuffer(many.data(), many.size()), OVER);
            const std::string longer = BytesFor("<a bcde>", wide);
            EXPECT_EQ(each->ParseBuffer(longer.data(), longer.size()), OVER);
        }
    }
    parser.SetMaxTokenSize(UINT64_MAX);
    parser.SetMaxAttributes(UINT64_MAX);
    EXPECT_EQ(parser.StartParse(1252, DATA_STREAM_8BIT), 0U);
    EXPECT_EQ(parser.ParseBuffer("<a b c>", 7), 0U);
}

TEST(LimitTest, ACallbackSetsThem) {
    FedParser parser;
    parser.narrow.hook = [&](const std::string& line) {
        if (line == "start(|a||)")
            parser.SetMaxTokenSize(4);
        if (line == "start(|b||)")
            parser.SetMaxTokenSize(0);
    };
    parser.Start();
    EXPECT_EQ(parser.Feed("12345678<a>1234<b>12345678<a>12345678<b>"), OVER);
    EXPECT_EQ(parser.GetTokenPlace().end, 29U);
    EXPECT_EQ(parser.lines.back(), "start(|a||)");
}

}  // namespace
}  // namespace Kestra::Test
