#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

#include "platform/Services.h"
#include "tests/support/EventRun.h"
#include "tests/support/Flavours.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestStreams.h"

// The stateless parser as a host uses it: streams, files, observers, copies.

namespace Kestra::Test {
namespace {

using HTML::StatelessHTMLParser;
using Lines = std::vector<std::string>;

TEST(StatelessHTMLParserTest, WithoutAnObserver) {
    StatelessHTMLParser parser;
    EXPECT_EQ(parser.StartParse(0), 0U);
    EXPECT_EQ(parser.ParseBuffer("a<b c=d>e</b><!--f--><script>g</script>", 39), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
}

TEST(StatelessHTMLParserTest, ACallThatIsNestedChangesNothing) {
    TracedParser parser;
    std::vector<std::uint32_t> results;
    int destructions = 0;
    auto stream = std::make_unique<FaultyInputStream>(std::string("<z>"));
    stream->CountDestructions(&destructions);
    parser.observer.hook = [&](const std::string&) {
        results = {parser.StartParse(0), parser.ParseBuffer("<z>", 3), parser.ParseStream(stream.get(), true),
                   parser.ParseFile(KESTRA_WIDE("x")), parser.EndParse()};
    };
    parser.StartParse(0);
    EXPECT_EQ(parser.Feed("a<b>c<d>"), 0U);
    EXPECT_EQ(results, std::vector<std::uint32_t>(5, 2));
    EXPECT_EQ(destructions, 0);  // a refused stream stays the caller's
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.lines, (Lines{"start-parsing", "text(a)", "start(b|)", "text(c)", "start(d|)", "stop-parsing"}));
}

TEST(StatelessHTMLParserTest, AnExceptionPassesThroughAndTheNextCallGoesOn) {
    TracedParser parser;
    parser.StartParse(0);
    parser.observer.hook = [](const std::string&) { throw 1; };
    EXPECT_THROW(parser.Feed("<a>"), int);
    parser.observer.hook = nullptr;
    EXPECT_EQ(parser.Feed("b<c>"), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.lines, (Lines{"start-parsing", "start(a|)", "text(b)", "start(c|)", "stop-parsing"}));
}

// What was reported does not come back, whoever throws: the next construct begins anew.
TEST(StatelessHTMLParserTest, AnExceptionOutOfAnyCallbackEndsItsConstruct) {
    const struct {
        std::string thrown;  ///< its last construct is the one whose callback throws
        std::string line;
    } rows[] = {
        {"<p a=b>", "start(p|{a=b})"},     {"</p>", "end(p)"},          {"<script>x=1</script>", "script(|x=1)"},
        {"<?a b=c ?>", "extern(a|{b=c})"}, {"<!a b>", "entity(a|{b})"}, {"<!--a-->", "comment(a)"},
        {"<style>a</style>", "style(|a)"}, {"a<", "text(a)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.thrown);
        TracedParser parser;
        parser.StartParse(0);
        parser.observer.hook = [](const std::string&) { throw 1; };
        EXPECT_THROW(parser.Feed(row.thrown), int);
        parser.observer.hook = nullptr;
        EXPECT_EQ(parser.Feed("y<b>"), 0U);
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(parser.lines, (Lines{"start-parsing", row.line, "text(y)", "start(b|)", "stop-parsing"}));
    }
}

TEST(StatelessHTMLParserTest, TwoObserversAndOneThatLeaves) {
    TracedParser parser;
    {
        EventTraceObserver other(&parser.lines);
        parser.Attach(&other);
        parser.StartParse(0);
        parser.Feed("<a>");
    }
    parser.Feed("<b>");
    EXPECT_EQ(parser.lines, (Lines{"start-parsing", "start-parsing", "start(a|)", "start(a|)", "start(b|)"}));
}

TEST(StatelessHTMLParserTest, ACopyGoesOnInTheMiddleOfATag) {
    const std::string document = "a<p b='c' d>e<!D x y><script>f='g'</script><?xml h=i?></p>";
    const EventRun whole = ParseEvents({document});
    for (std::size_t cut = 0; cut <= document.size(); ++cut) {
        const EventRun expected = ParseEvents({document.substr(0, cut), document.substr(cut)});
        Lines lines;
        EventTraceObserver observer(&lines);
        auto parser = std::make_unique<StatelessHTMLParser>();
        parser->Attach(&observer);
        parser->StartParse(0);
        parser->ParseBuffer(document.data(), cut);
        StatelessHTMLParser copy(*parser);
        parser = nullptr;
        StatelessHTMLParser assigned;
        assigned = copy;
        copy.Detach(&observer);
        assigned.ParseBuffer(document.data() + cut, document.size() - cut);
        assigned.EndParse();
        EXPECT_EQ(lines, expected.trace) << "cut at " << cut;
    }
    EXPECT_EQ(whole.trace.size(), 9U);
}

TEST(StatelessHTMLParserTest, AStreamIsReadToItsEnd) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{10}, std::size_t{65535}, std::size_t{65536},
                                   std::size_t{131072}, std::size_t{200000}}) {
        SCOPED_TRACE(size);
        std::string document(size, 'x');
        document += "<p>";
        if (size >= 65536)
            document.resize(size);
        TracedParser parser;
        parser.StartParse(0);
        int destructions = 0;
        auto* const stream = new FaultyInputStream(document);
        stream->CountDestructions(&destructions);
        EXPECT_EQ(parser.ParseStream(stream, true), 0U);
        EXPECT_EQ(destructions, 1);
        EXPECT_EQ(parser.Feed("<q>"), 0U);
        EXPECT_EQ(parser.lines.back(), "start(q|)");
    }
}

std::uint32_t NoBuffer(Base::DefaultBufferAllocPolicy*, std::uint64_t) {
    return 8;
}

TEST(StatelessHTMLParserTest, AStreamThatFails) {
    StatelessHTMLParser parser;
    int destructions = 0;
    const auto make = [&destructions] {
        auto* const stream = new FaultyInputStream(std::string("<a><b>"));
        stream->CountDestructions(&destructions);
        return stream;
    };
    EXPECT_EQ(parser.ParseStream(make(), true), 10U);  // by the first piece: nothing was started
    EXPECT_EQ(destructions, 1);
    FaultyInputStream slow(std::string("<a>"));
    slow.ReadNothing(1);
    EXPECT_EQ(parser.ParseStream(&slow, false), 10U);  // which may be empty
    EXPECT_EQ(slow.GetReadCalls(), 1U);
    parser.StartParse(0);
    auto* const failing = make();
    failing->ShortenRead(1, 3).FailRead(2, 77);
    EXPECT_EQ(parser.ParseStream(failing, true), 77U);
    EXPECT_EQ(destructions, 2);
    auto* const lying = make();
    lying->MisreportRead(1, 70000);
    EXPECT_EQ(parser.ParseStream(lying, true), 512U);
    EXPECT_EQ(destructions, 3);
    Base::Services services = Base::PLATFORM_SERVICES;
    services.adjustBuffer = NoBuffer;
    {
        const Base::ServicesOverride replacement(services);
        EXPECT_EQ(parser.ParseStream(make(), true), 8U);
        EXPECT_EQ(destructions, 4);
    }
    const std::unique_ptr<FaultyInputStream> borrowed(make());
    borrowed->ReadNothing(1);
    EXPECT_EQ(parser.ParseStream(borrowed.get(), false), 0U);
    EXPECT_EQ(destructions, 4);
    VFS::MemoryInputStream malformed(std::string("<a><%"));
    EXPECT_EQ(parser.ParseStream(&malformed, false), 703U);
    EXPECT_EQ(parser.ParseFile(KESTRA_WIDE("/no/such/file")), 506U);
    EXPECT_EQ(parser.ParseFile(nullptr), 506U);
}

TEST(StatelessHTMLParserTest, AStreamIsReadInPiecesOfTheBufferSize) {
    static_assert(std::is_same_v<decltype(StatelessHTMLParser::BUFFER_SIZE), const std::int32_t>);
    EXPECT_EQ(StatelessHTMLParser::BUFFER_SIZE, 65536);
    // Each construct lies across an end of a piece.
    const std::string fill(65536 - 3, 'x');
    const std::string document = fill + "<p cl" + std::string(65536 - 5, 'a') + "ss=y>" + "<!--bc-->";
    std::vector<std::uint64_t> sizes;
    BoundedInputStream stream(document, [&sizes](std::uint64_t size) {
        sizes.push_back(size);
        return size;
    });
    TracedParser parser;
    parser.Start();
    EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(parser.lines,
              (Lines{"text(" + fill + ")", "start(p|{cl" + std::string(65536 - 5, 'a') + "ss=y})", "comment(bc)"}));
    EXPECT_EQ(sizes, std::vector<std::uint64_t>(sizes.size(), 65536));
    EXPECT_EQ(sizes.size(), 4U);  // two whole pieces, the rest, and the end
}

TEST(StatelessHTMLParserTest, AStreamNeitherStartsNorEnds) {
    TracedParser parser;
    parser.StartParse(0);
    VFS::MemoryInputStream one(std::string("<a>b<c d='"));
    VFS::MemoryInputStream other(std::string("e'><f>"));
    EXPECT_EQ(parser.ParseStream(&one, false), 0U);  // also when it ends inside of a tag
    EXPECT_EQ(parser.ParseStream(&other, false), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.lines,
              (Lines{"start-parsing", "start(a|)", "text(b)", "start(c|{d=e})", "start(f|)", "stop-parsing"}));
}

/// The reads decide where a comment is cut.
TEST(StatelessHTMLParserTest, EachReadIsAPiece) {
    TracedParser parser;
    parser.Start();
    BoundedInputStream stream("<!-- abcd --><p>", InSizes({7, 0, 0, 100}));
    EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(parser.lines, (Lines{"comment( ab)", "text(cd -->)", "start(p|)"}));
}

TEST(StatelessHTMLParserTest, AStreamWithoutBytesForAWhileIsReadOn) {
    TracedParser parser;
    parser.StartParse(0);
    FaultyInputStream stream(std::string("<a>"));
    for (std::uint64_t call = 1; call <= 1000; ++call)
        stream.ReadNothing(call);
    EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(stream.GetReadCalls(), 1002U);
    EXPECT_EQ(parser.lines, (Lines{"start-parsing", "start(a|)"}));
}

TEST(StatelessHTMLParserTest, AnErrorLeavesTheParserStarted) {
    TracedParser parser;
    parser.StartParse(0);
    int destructions = 0;
    auto* const stream = new FaultyInputStream(std::string("a\n<b><%c>"));
    stream->CountDestructions(&destructions);
    EXPECT_EQ(parser.ParseStream(stream, true), 703U);
    EXPECT_EQ(destructions, 1);
    EXPECT_EQ(PlaceOf(parser), "6 2:6");
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.lines, (Lines{"start-parsing", "text(a\\n)", "start(b|)", "stop-parsing"}));
}

TEST(StatelessHTMLParserTest, AFile) {
    const TemporaryFolder folder;
    TracedParser parser;
    const auto parse = [&](const std::string& document) {
        return parser.ParseFile(folder.Write("page.html", document).string<WideChar>().c_str());
    };
    EXPECT_EQ(parse("<a>"), 10U);
    parser.StartParse(0);
    EXPECT_EQ(parse(""), 0U);
    EXPECT_EQ(parse("<a>b<c"), 0U);
    EXPECT_EQ(parse(" d>"), 0U);
    const std::string text(2 * 65536 - 3, 'x');
    EXPECT_EQ(parse(text + "<p>"), 0U);
    EXPECT_EQ(parse("<1>"), 703U);
    EXPECT_EQ(parser.lines,
              (Lines{"start-parsing", "start(a|)", "text(b)", "start(c|{d=})", "text(" + text + ")", "start(p|)"}));
    EXPECT_EQ(parser.ParseFile((folder.GetPath() / "missing.html").string<WideChar>().c_str()), 506U);
    EXPECT_EQ(parser.ParseFile(folder.GetPath().string<WideChar>().c_str()), 506U);
}

TEST(StatelessHTMLParserTest, FlagsKeep32Bits) {
    StatelessHTMLParser parser;
    EXPECT_EQ(parser.GetFlags(), 1U);
    EXPECT_EQ(parser.SetFlags(~0UL), 0U);
    EXPECT_EQ(parser.GetFlags(), 0xFFFFFFFFUL);
}

TEST(StatelessHTMLParserTest, FlagsStayFromOneDocumentToTheNext) {
    StatelessHTMLParser parser;
    parser.SetFlags(6);
    parser.StartParse(0);
    EXPECT_EQ(parser.GetFlags(), 6U);
    parser.EndParse();
    EXPECT_EQ(parser.GetFlags(), 6U);
    StatelessHTMLParser copy(parser);
    EXPECT_EQ(copy.GetFlags(), 6U);
    StatelessHTMLParser assigned;
    assigned = parser;
    EXPECT_EQ(assigned.GetFlags(), 6U);
}

TEST(StatelessHTMLParserTest, PlacesOfADocument) {
    TracedParser parser;
    EXPECT_EQ(PlaceOf(parser), "0 1:1");
    parser.StartParse(0);
    EXPECT_EQ(PlaceOf(parser), "0 1:1");
    parser.Feed("a\nb");
    EXPECT_EQ(PlaceOf(parser), "3 2:4");
    parser.Feed("");
    EXPECT_EQ(PlaceOf(parser), "3 2:4");
    const StatelessHTMLParser copy(parser);
    EXPECT_EQ(PlaceOf(copy), "3 2:4");
    parser.EndParse();
    EXPECT_EQ(PlaceOf(parser), "0 1:1");
    EXPECT_EQ(parser.Feed("abc"), 10U);
    EXPECT_EQ(PlaceOf(parser), "0 1:1");
}

/// In each callback, what can be got of the places of its attributes: the whole, the name and the
/// value between bars.
class AttributePlaceListener final : public HTML::StatelessHTMLObserver {
public:
    AttributePlaceListener(const StatelessHTMLParser* observedParser, std::string documentBytes)
        : parser(observedParser), document(std::move(documentBytes)) {}

    Lines lines;

private:
    void OnStartParsing() override {
        Add("start-parsing");
    }
    void OnStopParsing() override {
        Add("stop-parsing");
    }
    void OnStartTag(const WideChar*, const Attributes* attributes) override {
        Add("start", attributes->size());
    }
    void OnEndTag(const WideChar*) override {
        Add("end");
    }
    void OnScript(const Attributes* attributes, const WideChar*) override {
        Add("script", attributes->size());
    }
    void OnExternTag(const WideChar*, const Attributes* attributes) override {
        Add("extern", attributes->size());
    }
    void OnEntityTag(const WideChar*, const Tokens*) override {
        Add("entity");
    }
    void OnComment(const WideChar*) override {
        Add("comment");
    }
    void OnText(const WideChar*) override {
        Add("text");
    }
    void OnStyle(const Attributes* attributes, const WideChar*) override {
        Add("style", attributes->size());
    }

    std::string Cut(std::uint64_t begin, std::uint64_t end) const {
        return document.substr(begin, end - begin);
    }

    void Add(std::string line, std::size_t attributes = 0) {
        HTML::AttributePlace place;
        for (std::size_t i = 0; i < attributes; ++i) {
            EXPECT_EQ(parser->GetAttributePlace(i, &place), 0U) << line;
            line += " [" + Cut(place.begin, place.end) + "|" + Cut(place.nameBegin, place.nameEnd) + "|";
            line += place.valueBegin == place.nameEnd ? "none]" : "'" + Cut(place.valueBegin, place.valueEnd) + "']";
        }
        EXPECT_EQ(parser->GetAttributePlace(attributes, &place), 2U) << line;
        EXPECT_EQ(parser->GetAttributePlace(0, nullptr), 2U);
        lines.push_back(line);
    }

    const StatelessHTMLParser* parser;
    std::string document;
};

Lines AttributePlacesOf(const std::string& document, const Cuts& cuts) {
    StatelessHTMLParser parser;
    AttributePlaceListener listener(&parser, document);
    parser.Attach(&listener);
    parser.StartParse(0);
    for (const auto& [begin, end] : PiecesOf(cuts, document.size()))
        parser.ParseBuffer(document.data() + begin, end - begin);
    parser.EndParse();
    HTML::AttributePlace place;
    EXPECT_EQ(parser.GetAttributePlace(0, &place), 2U);
    return listener.lines;
}

TEST(StatelessHTMLParserTest, PlacesOfAttributes) {
    const std::string cuttable =
        "t<a b=c\n d  e = f  ><!g h i></a><script j k=></script><style l=m ></style><n o p=''q>r<";
    const Lines expected = {"start-parsing",
                            "text",
                            "start [ b=c|b|'c'] [\n d|d|none] [  e = f|e|'f']",
                            "entity",
                            "end",
                            "script [ j|j|none] [ k=|k|'']",
                            "style [ l=m|l|'m']",
                            "start [ o|o|none] [ p=''|p|''] [q|q|none]",
                            "text",
                            "stop-parsing"};
    ForEverySplit(cuttable.size(), [&](const Cuts& cuts) {
        const std::size_t quote = cuttable.find("q>");  // a value goes on after a cut there
        if (std::find(cuts.begin(), cuts.end(), quote) == cuts.end()) {
            EXPECT_EQ(AttributePlacesOf(cuttable, cuts), expected);
        }
    });
    EXPECT_EQ(AttributePlacesOf("<?xml a='1' b=\"2\"?><c d='e>\"f' g/>x<!--h-->", {}),
              (Lines{"start-parsing", "extern [ a='1'|a|'1'] [ b=\"2\"|b|'2']",
                     "start [ d='e>\"f'|d|'e>\"f'] [ g|g|none]", "end", "text", "comment", "stop-parsing"}));
    EXPECT_EQ(AttributePlacesOf("<a b @c d>", {}), (Lines{"start-parsing", "start [ b|b|none]", "stop-parsing"}));
    EXPECT_EQ(AttributePlacesOf("<a b='c'd='e'>", {8}),
              (Lines{"start-parsing", "start [ b='c'd='|b|'c'd='] [e|e|none]", "stop-parsing"}))
        << "a closing quote that ends a piece does not count";
    EXPECT_EQ(AttributePlacesOf("<a @b c=d>", {5}), (Lines{"start-parsing", "start [ c=d|c|'d']", "stop-parsing"}))
        << "what is bad ends with its piece";
    EXPECT_EQ(AttributePlacesOf("<a b %c=d e>", {4, 8}),
              (Lines{"start-parsing", "start [ b|b|none] [d|d|none] [ e|e|none]", "stop-parsing"}));
}

TEST(StatelessHTMLParserTest, TheOffsetCountsBytesFromTheStartOfTheDocument) {
    StatelessHTMLParser parser;
    EXPECT_EQ(OffsetOf(parser), 0U);
    parser.StartParse(0);
    parser.ParseBuffer("a\r\n\n\xC3\xA9", 6);
    EXPECT_EQ(OffsetOf(parser), 6U);
    parser.ParseBuffer("", 0);
    EXPECT_EQ(OffsetOf(parser), 6U);
    EXPECT_EQ(parser.ParseBuffer(nullptr, 1), 2U);
    EXPECT_EQ(OffsetOf(parser), 6U);
    parser.ParseBuffer("<b>c", 4);
    EXPECT_EQ(OffsetOf(parser), 10U);
    StatelessHTMLParser copy(parser);
    EXPECT_EQ(copy.ParseBuffer("<%", 2), 703U);
    EXPECT_EQ(OffsetOf(copy), 11U) << "the byte that does not fit";
    copy.ParseBuffer("<d>", 3);
    EXPECT_EQ(OffsetOf(copy), 12U) << "bytes that were fed and not read count all the same";
    parser = copy;
    EXPECT_EQ(OffsetOf(parser), 12U);
    parser.StartParse(0);
    EXPECT_EQ(OffsetOf(parser), 0U);
    parser.ParseBuffer("x", 1);
    parser.EndParse();
    EXPECT_EQ(OffsetOf(parser), 0U);
}

/// The first and the last event come while the place is still, or already, that of the document.
TEST(StatelessHTMLParserTest, PlacesInACallback) {
    const std::string page = "ab<p>\n<!m d><b e><script>c</script><style></style></p>";
    const Lines expected = {"0 1:1",   "2 1:5",   "5 1:8",   "6 2:2",   "12 2:8",
                            "17 2:13", "35 2:40", "50 2:62", "54 2:66", "54 2:66"};
    for (std::size_t pieceSize = 1; pieceSize <= page.size(); ++pieceSize) {
        TracedParser parser;
        Lines places;
        parser.observer.hook = [&](const std::string&) { places.push_back(PlaceOf(parser)); };
        parser.StartParse(0);
        parser.Feed(page, CutsEvery(pieceSize, page.size()));
        parser.EndParse();
        EXPECT_EQ(places, expected) << pieceSize;
    }
}

TEST(StatelessHTMLParserTest, PlacesAndRefusalsInCallbacksOfTwoDocuments) {
    TracedParser parser;
    Lines places;
    std::vector<std::uint32_t> results;
    parser.observer.hook = [&](const std::string&) {
        places.push_back(PlaceOf(parser));
        results.push_back(parser.Feed("<z>"));
        results.push_back(parser.EndParse());
    };
    parser.StartParse(0);
    parser.Feed("x");
    EXPECT_EQ(parser.StartParse(0), 0U);  // of another document
    EXPECT_EQ(parser.Feed("a\nb<c>d"), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(places, (Lines{"0 1:1", "0 1:1", "3 2:4", "6 2:7", "7 2:9"}));
    EXPECT_EQ(results, std::vector<std::uint32_t>(10, 2));
}

TEST(StatelessHTMLParserTest, OutsideOfADocument) {
    TracedParser parser;
    EXPECT_EQ(parser.Feed("<a>"), 10U);
    EXPECT_EQ(parser.Feed(""), 10U);
    EXPECT_EQ(parser.ParseBuffer(nullptr, 1), 10U);
    EXPECT_EQ(parser.ParseStream(nullptr, true), 2U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.lines, Lines());
    EXPECT_EQ(parser.StartParse(0), 0U);
    EXPECT_EQ(parser.ParseBuffer(nullptr, 1), 2U);
    EXPECT_EQ(parser.ParseBuffer(nullptr, 0), 0U);
    EXPECT_EQ(parser.ParseStream(nullptr, false), 2U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.Feed("<a>"), 10U);
    EXPECT_EQ(parser.lines, (Lines{"start-parsing", "stop-parsing"}));
}

/// Whatever a document was in the middle of, the next one begins with text on line 1.
TEST(StatelessHTMLParserTest, AnotherDocumentBeginsAnew) {
    for (const std::string unfinished : {"a",
                                         "\n",
                                         "<",
                                         "<?",
                                         "</",
                                         "<!",
                                         "<!-",
                                         "<!--",
                                         "<a",
                                         "<a b='",
                                         "<a %",
                                         "</a",
                                         "<?a b=?",
                                         "<!a b ",
                                         "<!a 'b",
                                         "<script>",
                                         "<script>a/",
                                         "<script>'",
                                         "<script></scr",
                                         "<style>a",
                                         "<style></st",
                                         "<1"}) {
        for (const bool ends : {true, false}) {
            SCOPED_TRACE(unfinished);
            TracedParser parser;
            parser.Detach(&parser.observer);
            parser.StartParse(0);
            parser.Feed(unfinished);
            if (ends)
                parser.EndParse();
            parser.Attach(&parser.observer);
            EXPECT_EQ(parser.StartParse(0), 0U);
            EXPECT_EQ(parser.Feed("\nb<c d=e><!f g><?h i=?><script>j</script><style>k</style><!--l--></m>"), 0U);
            Lines expected = {"start-parsing", "text(\\nb)", "start(c|{d=e})", "entity(f|{g})", "extern(h|{i=?})",
                              "script(|j)",    "style(|k)",  "comment(l)",     "end(m)"};
            EXPECT_EQ(parser.lines, expected);
            EXPECT_EQ(PlaceOf(parser), "69 2:88");
        }
    }
}

/// Of the lines of the events, by their identifiers.
constexpr const char* BEGINNINGS[] = {"start-parsing", "stop-parsing", "start(",   "end(",  "script(",
                                      "extern(",       "entity(",      "comment(", "text(", "style("};

/// Bound to one event only.
class OneEventObserver final : public Trace::EventLineObserver {
public:
    OneEventObserver(unsigned long boundEvent, Lines* lines) : event(boundEvent), tracedLines(lines) {
        EventLineObserver::RegisterCalls(&all);
    }

    void RegisterCalls(Base::MultiDelegate* delegate) override {
        delegate->Bind(event, this, [](Base::Observer* observer, const void* const* arguments) {
            auto* const self = static_cast<OneEventObserver*>(observer);
            self->all.Call(self->event, arguments);
        });
    }

private:
    void OnLine(unsigned long, const std::string& line) override {
        tracedLines->push_back(line);
    }

    unsigned long event;
    Lines* tracedLines;
    Base::MultiDelegate all;
};

// Who is bound to one event gets what everybody gets: tags nobody is bound to choose the charset
// all the same, and a short tag still ends.
TEST(StatelessHTMLParserTest, AnEventDoesNotNeedTheOthers) {
    // The byte C1 is U+00C1 in the ANSI code page, U+0430 in KOI8-R and U+0411 in Windows-1251.
    const std::string tokens =
        "\xC1<!d \xC1><p a=\xC1/><br/></p><!--\xC1--><?x a=\xC1?><script a=\xC1>b</script><style a=\xC1>b</style>";
    const std::string document = tokens + "<?xml encoding='koi8-r'?>" + tokens +
                                 "<meta http-equiv=Content-Type content='charset=windows-1251'>" + tokens +
                                 "<META http-equiv=Content-Type content='charset=koi8-r'/>" + tokens;
    for (unsigned long event = StatelessHTMLParser::ID_START_PARSING; event <= StatelessHTMLParser::ID_STYLE; ++event) {
        SCOPED_TRACE(event);
        TracedParser all;
        Lines lines;
        OneEventObserver observer(event, &lines);
        StatelessHTMLParser parser;
        parser.Attach(&observer);
        for (StatelessHTMLParser* const each : {static_cast<StatelessHTMLParser*>(&all), &parser}) {
            EXPECT_EQ(each->StartParse(0), 0U);
            EXPECT_EQ(each->ParseBuffer(document.data(), document.size()), 0U);
            EXPECT_EQ(each->EndParse(), 0U);
        }
        Lines expected;
        std::copy_if(all.lines.begin(), all.lines.end(), std::back_inserter(expected),
                     [&](const std::string& line) { return line.starts_with(BEGINNINGS[event]); });
        EXPECT_FALSE(expected.empty());
        EXPECT_EQ(lines, expected);
        if (event == StatelessHTMLParser::ID_TEXT) {
            EXPECT_EQ(lines, (Lines{"text(\\u00C1)", "text(\\u0430)", "text(\\u0411)", "text(\\u0430)"}));
        } else if (event == StatelessHTMLParser::ID_END_TAG) {
            EXPECT_EQ(Lines(lines.end() - 3, lines.end()), (Lines{"end(META)", "end(br)", "end(p)"}));
        }
    }
}

// The character before is that of this string or comment, never one of the document before.
TEST(StatelessHTMLParserTest, AStringOrACommentLeavesNothingForTheNextDocument) {
    const struct {
        const char* script;
        const char* line;
    } rows[] = {
        {"<script>''</script>", "script(|'')"},
        {"<script>\"\"</script>", "script(|\"\")"},
        {"<script>/*/a*/b</script>", "script(|b)"},
    };
    for (const std::string unfinished :
         {"<script>'\\", "<script>\"\\", "<script>'a\\", "<script>/*\\", "<script>/**", "<script>/*a*"}) {
        for (const auto& row : rows) {
            for (const bool ends : {true, false}) {
                SCOPED_TRACE(unfinished + " and then " + row.script);
                TracedParser parser;
                parser.Detach(&parser.observer);
                parser.StartParse(0);
                EXPECT_EQ(parser.Feed(unfinished), 16U);
                if (ends)
                    parser.EndParse();
                parser.Attach(&parser.observer);
                EXPECT_EQ(parser.StartParse(0), 0U);
                EXPECT_EQ(parser.Feed(row.script), 0U);
                EXPECT_EQ(parser.lines, (Lines{"start-parsing", row.line}));
            }
        }
    }
}

TEST(StatelessHTMLParserTest, AnObserverThatComesLateGetsNothingFromBefore) {
    TracedParser parser;
    parser.Detach(&parser.observer);
    parser.StartParse(0);
    EXPECT_EQ(parser.Feed("a<b>c<!--d--><script>e</script>f<!g h>"), 0U);
    parser.Attach(&parser.observer);
    EXPECT_EQ(parser.Feed("i<!--j--><script>k</script>l<b>"), 0U);
    EXPECT_EQ(parser.lines, (Lines{"text(i)", "comment(j)", "script(|k)", "text(l)", "start(b|)"}));
}

// So long that the buffers are given back as soon as they are no longer of use.
TEST(StatelessHTMLParserTest, LongStringsThatAreCutLoseNothing) {
    const auto longString = [](std::size_t size) { return std::string(size, 'x'); };
    const std::string value = longString(500000);
    const std::string text = longString(700000);
    const struct {
        std::string begin;
        std::string end;
        Lines lines;
    } rows[] = {
        {"<p a='" + value + "' b='" + value + "' ", "c='d'>", {"start(p|{a=" + value + "}{b=" + value + "}{c=d})"}},
        {"<!a '" + value + "' '" + value + "' ", "b>", {"entity(a|{" + value + "}{" + value + "}{b})"}},
        {"<p a='" + value + "' b='" + value + "'><script>" + text,
         "y</script>",
         {"start(p|{a=" + value + "}{b=" + value + "})", "script(|" + text + "y)"}},
        {"<p a='" + longString(150000) + "'>" + text,
         "y<q>",
         {"start(p|{a=" + longString(150000) + "})", "text(" + text + "y)", "start(q|)"}},
    };
    for (const auto& row : rows) {
        TracedParser parser;
        parser.Start();
        EXPECT_NE(parser.Feed(row.begin), 2U);
        EXPECT_EQ(parser.Feed(row.end), 0U);
        EXPECT_TRUE(parser.lines == row.lines) << row.begin.substr(0, 10);
    }
}

/// The byte that does not fit is not consumed, and everything else stays as it was: what fits goes
/// on after it.
TEST(StatelessHTMLParserTest, GoesOnAfterAFailure) {
    const struct {
        const char* note;
        std::string failing;
        std::uint32_t result;
        std::string rest;
        std::string event;
    } rows[] = {
        {"after \"<\"", "<=", 703, "a>", "start(a|)"},
        {"after \"<!\"", "<!=", 703, "a b>", "entity(a|{b})"},
        {"after \"<!-\"", "<!-=", 703, "-a", "comment(a)"},
        {"after \"</\"", "</=", 701, "a>", "end(a)"},
        {"after \"<?\"", "<?=", 701, "a b=?>", "extern(a|{b=?})"},
        {"after a blank", "< =", 701, "a>", "start(a|)"},
        {"after the name of an end tag", "</a ", 702, ">", "end(a)"},
        {"after an attribute", "<a b?", 702, ">", "start(a|{b=})"},
        {"after a slash", "<a b/=", 702, ">", "start(a|{b=})"},
        {"after a question mark", "<?a b?=", 702, ">", "extern(a|{b=})"},
        {"without a question mark", "<?a b>", 702, "?>", "extern(a|{b=})"},
        {"after the slash of a declaration", "<!a b /=", 702, ">", "entity(a|{b})"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.note);
        TracedParser parser;
        parser.Start();
        EXPECT_EQ(parser.Feed(row.failing), row.result);
        // All but the last byte is consumed; what was fed without being read counts all the same.
        const std::size_t size = row.failing.size();
        EXPECT_EQ(PlaceOf(parser), std::to_string(size - 1) + " 1:" + std::to_string(size));
        EXPECT_EQ(parser.Feed(row.failing.substr(size - 1)), row.result);
        EXPECT_EQ(PlaceOf(parser), std::to_string(size) + " 1:" + std::to_string(size));
        EXPECT_EQ(parser.lines, Lines());
        EXPECT_EQ(parser.Feed(row.rest), 0U);
        ASSERT_FALSE(parser.lines.empty());
        EXPECT_EQ(parser.lines.front(), row.event);
    }
}

TEST(StatelessHTMLParserTest, NulsEndWhatACallbackSeesExceptInValues) {
    const std::string document("a\0b<p c='d\0e'>", 14);
    EXPECT_EQ(ParseEvents({document}).trace,
              (Lines{"start-parsing", "text(a)", "start(p|{c=d\\x00e})", "stop-parsing"}));
    EXPECT_EQ(ParseEvents({std::string("<!p a\0b>", 9)}).trace,
              (Lines{"start-parsing", "entity(p|{a\\x00b})", "stop-parsing"}));
}

}  // namespace
}  // namespace Kestra::Test
