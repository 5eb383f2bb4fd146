#include <cstring>

#include "html/framework/ResultCodes.h"
#include "platform/Services.h"
#include "tests/html/parser/DocumentRows.h"
#include "tests/html/parser/SpyStreams.h"

namespace Kestra::Test {
namespace {

constexpr std::uint32_t HOST_CODE = 4711;  // a failure that only the host's stream knows

TEST(JunkRecoveryTest, ConstructsThatFail) {
    const BrokenRow rows[] = {
        {"a slash and a blank after an attribute", "x<a b / >y<c>", "text(x)\njunk(<a b / )\njunk(>y)\nstart(|c||)"},
        {"the same after a value", "<a b=1 / c>d", "junk(<a b=1 / )\njunk(c>d)"},
        {"a value that is a slash", "<a href=/>y", "junk(<a href=/)\njunk(>y)"},
        {"a slash that is followed by a blank, not by \">\"", "<a b/ c>d", "junk(<a b/ )\njunk(c>d)"},
        {"an end tag with a slash and a blank", "</div / >x", "junk(</div / )\njunk(>x)"},
        {"an end tag with a value that is a slash", "</a b=/>x", "junk(</a b=/)\njunk(>x)"},
        {"a \"<!-\" without a second dash", "a<!-x>b<c>", "text(a)\njunk(<!-)\njunk(x>b)\nstart(|c||)"},
        {"a \"<![\" with an unknown word", "a<![x[<c>", "text(a)\njunk(<![x)\njunk([)\nstart(|c||)"},
        {"a \"<![\" without a word", "<![[x]]>", "junk(<![)\njunk([x]]>)"},
        {"two failures in a row", "<!-<!-<a>", "junk(<!-)\njunk(<!-)\nstart(|a||)"},
        {"junk after junk up to the next \"<\"", "<a b / >1<a b / >2",
         "junk(<a b / )\njunk(>1)\njunk(<a b / )\njunk(>2)"},
        {"an end tag after junk", "<a b / ></a>", "junk(<a b / )\njunk(>)\nend(|a|||)"},
        {"a script after junk", "<!-<script>'", "junk(<!-)\nstart(|script||)\njs-start\njunk(')"},
        {"text never comes right after junk", "<!-x'y", "junk(<!-)\njunk(x'y)"},
        {"line feeds in junk are counted", "<a\nb\n/\n>\n\n<c>\n",
         "junk(<a\\nb\\n/\\n)\njunk(>\\n\\n)\nstart(|c||)\ntext(\\n)"},
        {"bytes from 128 up and backslashes", "<\xE9 \\ / >\xE9\\", "junk(<\\xE9 \\\\ / )\njunk(>\\xE9\\\\)"},
    };
    CheckFailing(rows);
}

TEST(JunkRecoveryTest, ConstructsThatTheInputLeavesOpen) {
    const BrokenRow rows[] = {
        {"a \"<\"", "a<", "text(a)\njunk(<)"},
        {"only a \"<\"", "<", "junk(<)"},
        {"a tag name", "<b", "junk(<b)"},
        {"a tag name after a blank", "< b", "junk(< b)"},
        {"an attribute", "x<div class=", "text(x)\njunk(<div class=)"},
        {"a value", "<div class=a", "junk(<div class=a)"},
        {"a quoted value", "<div class='a>\n</div>", "junk(<div class='a>\\n</div>)"},
        {"a slash of a short tag", "<br /", "junk(<br /)"},
        {"a slash after a name", "<br/", "junk(<br/)"},
        {"an end tag without a name", "</", "junk(</)"},
        {"an end tag", "<a></div", "start(|a||)\njunk(</div)"},
        {"an end tag with a slash", "</div a /", "junk(</div a /)"},
        {"an end tag with a quoted value", "</div a=\"/>", "junk(</div a=\"/>)"},
        {"a \"<!\"", "a<!", "text(a)\njunk(<!)"},
        {"a \"<!-\"", "a<!-", "text(a)\njunk(<!-)"},
        {"a \"<![\"", "a<![", "text(a)\njunk(<![)"},
        {"a word after \"<![\"", "a<![cd", "text(a)\njunk(<![cd)"},
    };
    CheckOpen(rows);
}

TEST(JunkRecoveryTest, WideJunkIsBytes) {
    const WideString input = KESTRA_WIDE("<\u3042 / >\u00E9");
    for (const Route& route : {WIDE_TO_WIDE, WIDE_TO_NARROW}) {
        ForEverySplit(WideStringView(input), [&](const Cuts& cuts) {
            const DocumentRun run = ParseDocument(input, cuts, SettingsFor(route, Feed::STREAM));
            EXPECT_EQ(run.Lines(), Join({"start-parsing", "charset(1200)", "junk(<\\x00B0 \\x00/\\x00 \\x00)",
                                         "junk(>\\x00\\xE9\\x00)", "end-parsing"}));
        });
    }
}

TEST(JunkRecoveryTest, NulsInJunkAreKept) {
    const std::string input("<a\0 b / \0>", 10);
    for (const Route& route : {NARROW_TO_NARROW, NARROW_TO_WIDE}) {
        ForEverySplit(input, [&](const Cuts& cuts) {
            const DocumentRun run = ParseBy(route, input, cuts, SettingsFor(route, Feed::STREAM));
            EXPECT_EQ(run.Lines(),
                      Join({"start-parsing", "charset(1252)", "junk(<a\\x00 b / )", "junk(\\x00>)", "end-parsing"}));
        });
    }
}

TEST(JunkRecoveryTest, ReadsAgainBy16384Bytes) {
    constexpr std::uint64_t READ_SIZE = 16384;
    const std::string start = "<a b='";
    const std::string end = "' / ";
    for (const Route& route : ROUTES) {
        SCOPED_TRACE(route.name);
        for (const std::size_t length : {11U, 8191U, 8192U, 8193U, 16383U, 16384U, 16385U, 32768U, 40000U}) {
            SCOPED_TRACE(length);
            const std::string construct = start + std::string(length - start.size() - end.size(), 'v') + end;
            // The reads of what has been read before: their offsets, and the sizes asked for.
            std::vector<std::pair<std::uint64_t, std::uint64_t>> readings;
            DocumentSettings settings = SettingsFor(route, Feed::STREAM);
            settings.makeStream = [&readings](const std::string& bytes, const Cuts&) {
                return std::make_unique<SpyStream>(bytes, [&readings, size = bytes.size(), furthest = std::uint64_t{0}](
                                                              std::uint64_t offset, std::uint64_t asked) mutable {
                    if (offset < furthest)
                        readings.emplace_back(offset, asked);
                    furthest = std::max(furthest, std::min<std::uint64_t>(size, offset + asked));
                });
            };
            const DocumentRun run = ParseBy(route, "x" + construct + ">y<c>", {}, settings);
            ExpectTokens(run, "text(x)\njunk(" + construct + ")\njunk(>y)\nstart(|c||)", route);
            const std::uint64_t width = route.wideInput ? 2 : 1;
            const std::uint64_t bytes = length * width;
            std::vector<std::pair<std::uint64_t, std::uint64_t>> expected;
            for (std::uint64_t read = 0; read < bytes; read += READ_SIZE)
                expected.emplace_back(width + read, std::min(READ_SIZE, bytes - read));
            EXPECT_EQ(readings, expected);
        }
    }
}

TEST(JunkRecoveryTest, LongConstructsAreReadAgainInSeveralReads) {
    // 40,000 characters: three reads of at most 16,384 bytes, and pieces of the same size in
    // between. An open construct is kept from an owned stream.
    const std::string value(40000, 'v');
    const auto check = [](const Route& route, Feed feed, const std::string& input, const std::string& tokens) {
        SCOPED_TRACE(route.name);
        DocumentSettings settings = SettingsFor(route, feed);
        settings.makeStream = [](const std::string& bytes, const Cuts&) {
            return std::make_unique<VFS::MemoryInputStream>(bytes);
        };
        ExpectTokens(ParseBy(route, input, {}, settings), tokens, route);
    };
    for (const Route& route : ROUTES) {
        for (const Feed feed : {Feed::STREAM, Feed::OWNED_STREAM})
            check(route, feed, "x<a b='" + value + "' / >y<c>",
                  "text(x)\njunk(<a b='" + value + "' / )\njunk(>y)\nstart(|c||)");
        check(route, Feed::OWNED_STREAM, "x<a b='" + value, "text(x)\njunk(<a b='" + value + ")");
    }
}

TEST(JunkRecoveryTest, OffsetsCountFromTheStartOfTheStream) {
    // The stream stands after 1,000 bytes that are not part of the document, or its first byte has
    // a high offset.
    const std::string document = "ab<c d / >e<f g='";
    const Lines tokens = {"text(ab)", "junk(<c d / )", "junk(>e)", "junk(<f g=')"};
    for (const Route& route : ROUTES) {
        SCOPED_TRACE(route.name);
        for (const Feed feed : {Feed::STREAM, Feed::OWNED_STREAM}) {
            for (const std::uint64_t offset : {std::uint64_t{1000}, std::uint64_t{1001}, std::uint64_t{0x100000000}}) {
                ForEverySplit(document, [&](const Cuts& cuts) {
                    DocumentSettings settings = SettingsFor(route, feed);
                    settings.makeStream = [&](const std::string& bytes, const Cuts& byteCuts) {
                        std::vector<std::uint64_t> sizes;
                        for (const auto& [begin, end] : PiecesOf(byteCuts, bytes.size()))
                            sizes.push_back(end - begin);
                        ReadBound bound = OnlyFrom(GenericParser::BUFFER_SIZE, InSizes(std::move(sizes)));
                        if (offset > 2000)
                            return std::make_unique<BoundedInputStream>(bytes, std::move(bound), offset);
                        const std::string front(static_cast<std::size_t>(offset), '<');
                        auto stream = std::make_unique<BoundedInputStream>(front + bytes, std::move(bound));
                        EXPECT_EQ(stream->Seek(offset), 0U);
                        return stream;
                    };
                    const DocumentRun run = ParseBy(route, document, cuts, settings);
                    ExpectTokens(run, tokens, route);
                });
            }
        }
    }
}

TEST(JunkRecoveryTest, OffsetsCountAfterAMark) {
    struct Row {
        const char* note;
        std::string bytes;
        std::string front;  // of the trace
        Route route;
    };
    const std::string document = "ab<c d / >e<f g='";
    const Lines tokens = {"text(ab)", "junk(<c d / )", "junk(>e)", "junk(<f g=')"};
    const Row rows[] = {
        {"UTF-8", "\xEF\xBB\xBF" + document, "bom(EF BB BF)", NARROW_TO_NARROW},
        {"UTF-8 for a wide observer", "\xEF\xBB\xBF" + document, "bom(EF BB BF)", NARROW_TO_WIDE},
        {"UTF-16", "\xFF\xFE" + ToUtf16LE(std::string_view(document)), "bom(FF FE)", WIDE_TO_WIDE},
        {"UTF-16 for an 8-bit observer", "\xFF\xFE" + ToUtf16LE(std::string_view(document)), "bom(FF FE)",
         WIDE_TO_NARROW},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        Lines expected = WholeTrace(tokens, row.route);
        expected[1] = row.front;
        for (const Feed feed : {Feed::STREAM, Feed::OWNED_STREAM}) {
            ForEverySplit(row.bytes, [&](const Cuts& cuts) {
                // The wide parser takes no half characters.
                for (const std::size_t cut : cuts) {
                    if (row.route.wideInput && cut % 2 != 0 && cut != 1)
                        return;
                }
                DocumentSettings settings = SettingsFor(row.route, feed);
                settings.type = DATA_STREAM_AUTO;
                const DocumentRun run = ParseDocument(row.bytes, cuts, settings);
                EXPECT_EQ(Join(Comparable(run.trace, row.route)), Join(expected));
                ExpectSuccess(run);
            });
        }
    }
}

/// Steps after the start of a document. Its streams are owned as well as borrowed.
struct StepsRow {
    const char* note;
    std::vector<Step> steps;
};

TEST(JunkRecoveryTest, PiecesOfAHostAndStreams) {
    const StepsRow rows[] = {
        {"a host's piece after a stream cannot be read again",
         {{FEED_STREAM, "x<a b", 0, "text(x)"}, {FEED, " / >y", 11}, {END, "", 16}}},
        {"an open construct that reaches into a host's piece cannot be read again",
         {{FEED_STREAM, "x<a b", 0, "text(x)"}, {FEED, "c"}, {END, "", 16}}},
        {"an empty piece after a stream changes nothing",
         {{FEED_STREAM, "x<a b", 0, "text(x)"}, {FEED, ""}, {END, "", 0, "junk(<a b)\nend-parsing"}}},
        {"a construct that began in a host's piece cannot be read again",
         {{FEED, "x<a b", 0, "text(x)"}, {FEED_STREAM, " / >y", 11}, {END, "", 16}}},
        {"nor can an open one", {{FEED, "x<a b", 0, "text(x)"}, {FEED_STREAM, "c"}, {END, "", 16}}},
        {"a construct that begins after a host's piece is read again",
         {{FEED, "xyz<b>", 0, "text(xyz)\nstart(|b||)"},
          {FEED_STREAM, "x<a b / >y<c", 0, "text(x)\njunk(<a b / )\njunk(>y)"},
          {END, "", 0, "junk(<c)\nend-parsing"}}},
        {"each construct lies in one stream",
         {{FEED_STREAM, "a<b / >c<d>", 0, "text(a)\njunk(<b / )\njunk(>c)\nstart(|d||)"},
          {FEED_STREAM, "e<f / >g<h", 0, "text(e)\njunk(<f / )\njunk(>g)"},
          {END, "", 0, "junk(<h)\nend-parsing"}}},
        {"a construct that reaches from one stream into the other is parsed, but cannot be read again",
         {{FEED_STREAM, "a<b c", 0, "text(a)"},
          {FEED_STREAM, "=d><e f", 0, "start(|b|{ |c|=|d}|)"},
          {FEED_STREAM, " / >", 11},
          {END, "", 16}}},
        {"nor can it be at the end of the input",
         {{FEED_STREAM, "a<b c", 0, "text(a)"}, {FEED_STREAM, "=d"}, {END, "", 16}}},
        {"a junk state goes on in the next piece",
         {{FEED_STREAM, "<a / >b", 0, "junk(<a / )"},
          {FEED, "c"},
          {FEED, "d<e>f", 0, "junk(>bcd)\nstart(|e||)"},
          {END, "", 0, "text(f)\nend-parsing"}}},
    };
    for (const StepsRow& row : rows) {
        for (const bool owned : {false, true}) {
            SCOPED_TRACE(std::string(row.note) + (owned ? ", owned" : ", borrowed"));
            std::vector<Step> steps = row.steps;
            for (Step& step : steps)
                step.call = step.call == FEED_STREAM && owned ? FEED_OWNED_STREAM : step.call;
            StartedParser().Check(steps);
        }
    }
}

TEST(JunkRecoveryTest, ANullPieceAfterAStreamChangesNothing) {
    for (const bool owned : {false, true}) {
        StartedParser parser;
        EXPECT_EQ(parser.FeedStream("x<a b", owned), 0U);
        EXPECT_EQ(parser.ParseBuffer(nullptr, 0), 0U);
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(parser.TakeLines(), "text(x)\njunk(<a b)\nend-parsing\n");
    }
}

TEST(JunkRecoveryTest, AnEmptySecondStreamLeavesAnOpenConstructAlone) {
    // The junk may still come from the first stream, or not at all; what never comes is the junk of
    // the wrong stream.
    StartedParser bench;
    VFS::MemoryInputStream first("a<b c");
    VFS::MemoryInputStream second("");
    EXPECT_EQ(bench.ParseStream(&first, false), 0U);
    EXPECT_EQ(bench.ParseStream(&second, false), 0U);
    const std::uint32_t result = bench.EndParse();
    EXPECT_EQ(bench.TakeLines(), result == 0 ? "text(a)\njunk(<b c)\nend-parsing\n" : "text(a)\n");
    EXPECT_TRUE(result == 0 || result == 16) << result;
}

TEST(JunkRecoveryTest, InJunkTheNameIsThatOfTheRecognizerThatFailed) {
    struct Row {
        const char* input;
        const char* name;
    };
    const Row rows[] = {
        {"<a b / >", "StartTagSimpleParser"},         {"</a / >", "EndTagSimpleParser"},
        {"<!-x", "GenericTagSimpleParser"},           {"<?xml>", "ExternTagSimpleParser"},
        {"<script>//<!-x", "CPPCommentSimpleParser"},
    };
    for (const Row& row : rows) {
        for (const Route& route : ROUTES) {
            const DocumentRun run = ParseBy(route, row.input, {}, SettingsFor(route, Feed::STREAM));
            EXPECT_EQ(run.parserName, row.name);
        }
    }
}

TEST(JunkRecoveryTest, InTheCallbackForJunkTheNameIsThatOfTheRecognizerThatFailed) {
    struct Row {
        const char* input;
        const char* junk;
        const char* name;
    };
    const Row rows[] = {
        {"<a b / ><c>", "junk(<a b / )", "StartTagSimpleParser"},
        {"</a / ><c>", "junk(</a / )", "EndTagSimpleParser"},
        {"<![x<c>", "junk(<![x)", "GenericTagSimpleParser"},
        {"<!a<c>", "junk(<!a)", "EntityTagSimpleParser"},
        {"<?xml><c>", "junk(<?xml)", "ExternTagSimpleParser"},
        {"<script>//<!-<c>", "junk(//<!-)", "CPPCommentSimpleParser"},
        // At the end of the input.
        {"<", "junk(<)", "GenericTagSimpleParser"},
        {"<a", "junk(<a)", "StartTagSimpleParser"},
        {"</a", "junk(</a)", "EndTagSimpleParser"},
        {"<!a", "junk(<!a)", "EntityTagSimpleParser"},
        {"<?a ", "junk(<?a )", "ExternTagSimpleParser"},
        {"<?xml a", "junk(<?xml a)", "ExternTagSimpleParser"},
        {"<script>/*a", "junk(/*a)", "CCommentSimpleParser"},
        {"<script>//a", "junk(//a)", "CPPCommentSimpleParser"},
        {"<script>'a", "junk('a)", "SQuoteStringSimpleParser"},
        {"<script>\"a", "junk(\"a)", "DQuoteStringSimpleParser"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.input);
        Lines lines;
        NarrowObserver observer(&lines);
        GenericParser parser;
        std::string name;
        observer.hook = [&](const std::string& line) {
            if (line == row.junk) {
                const WideString wideName = parser.GetCurrentParserName();
                name.assign(wideName.begin(), wideName.end());
            }
        };
        parser.SetObserver(&observer, false);
        parser.StartParse(1252, DATA_STREAM_8BIT);
        VFS::MemoryInputStream stream(row.input);
        EXPECT_EQ(parser.ParseStream(&stream, false), 0U);
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(name, row.name);
    }
}

/// Feeds one stream of a kind and ends the document.
struct StreamRun {
    std::uint32_t parseResult = 0;
    std::uint32_t endResult = 0;
    std::string lines;
    int destructions = 0;
    int destructionsBeforeEnd = 0;
};

StreamRun RunStream(std::unique_ptr<FaultyInputStream> stream, bool owned, StringNS::CharSet::Code charset = 1252,
                    GenericParser::DataStreamType type = DATA_STREAM_8BIT) {
    StreamRun run;
    stream->CountDestructions(&run.destructions);
    StartedParser bench(charset, type);
    run.parseResult = bench.ParseStream(owned ? stream.release() : stream.get(), owned);
    run.destructionsBeforeEnd = run.destructions;
    run.endResult = bench.EndParse();
    run.lines = bench.TakeLines();
    // A borrowed stream is not needed after `EndParse`.
    stream.reset();
    return run;
}

std::unique_ptr<FaultyInputStream> MakeFaulty(const std::string& bytes,
                                              std::uint64_t pieceSize = GenericParser::BUFFER_SIZE) {
    return std::make_unique<FaultyInputStream>(
        std::make_unique<BoundedInputStream>(bytes, OnlyFrom(GenericParser::BUFFER_SIZE, AtMost(pieceSize))));
}

/// A document and the lines before the construct that would have to be read again.
struct Started {
    const char* bytes;
    const char* lines;
};

const Started OPEN_DOCUMENTS[] = {
    {"x<!", "text(x)\n"},
    {"x<a b", "text(x)\n"},
    {"x</a", "text(x)\n"},
    {"x<!a", "text(x)\n"},
    {"x<?a b", "text(x)\n"},
    {"x<?xml a", "text(x)\n"},
    {"<script>/*a", "start(|script||)\njs-start\n"},
    {"<script>//a", "start(|script||)\njs-start\n"},
    {"<style>/*a", "start(|style||)\ncss-start\n"},
    {"<script>'a", "start(|script||)\njs-start\n"},
    {"<script>\"a", "start(|script||)\njs-start\n"},
};

TEST(JunkRecoveryTest, AFailureWhileReadingAgainLeavesTheRecognizersCode) {
    struct Row {
        const char* note;
        void (*spoil)(FaultyInputStream*);
    };
    // The first read is the piece, the second one reads the construct again. The first seek goes to
    // the construct, the second one back. The first position is that of the piece.
    const Row rows[] = {
        {"the position cannot be remembered", [](FaultyInputStream* stream) { stream->FailGetPosition(2, HOST_CODE); }},
        {"the seek to the construct fails", [](FaultyInputStream* stream) { stream->FailSeek(1, HOST_CODE); }},
        {"the read fails", [](FaultyInputStream* stream) { stream->FailRead(2, HOST_CODE); }},
        {"the read finds no data", [](FaultyInputStream* stream) { stream->FailRead(2, RESULT_END_OF_DATA); }},
        {"the read is short", [](FaultyInputStream* stream) { stream->ShortenRead(2, 3); }},
        {"the read delivers nothing", [](FaultyInputStream* stream) { stream->ReadNothing(2); }},
        {"the seek back fails", [](FaultyInputStream* stream) { stream->FailSeek(2, HOST_CODE); }},
    };
    const Started documents[] = {
        {"x<a b / >y", "text(x)\n"}, {"x</a / >y", "text(x)\n"}, {"x<![y[", "text(x)\n"},
        {"x<!abc<y>", "text(x)\n"},  {"x<?xml>y", "text(x)\n"},  {"<script>//<!-y", "start(|script||)\njs-start\n"},
    };
    for (const Row& row : rows) {
        for (const Started& document : documents) {
            SCOPED_TRACE(std::string(row.note) + ": " + document.bytes);
            for (const bool owned : {false, true}) {
                std::unique_ptr<FaultyInputStream> stream = MakeFaulty(document.bytes);
                row.spoil(stream.get());
                const StreamRun run = RunStream(std::move(stream), owned);
                EXPECT_EQ(run.parseResult, 11U);
                EXPECT_EQ(run.endResult, 16U);
                EXPECT_EQ(run.lines, document.lines);
                EXPECT_EQ(run.destructionsBeforeEnd, owned ? 1 : 0);
                EXPECT_EQ(run.destructions, 1);
            }
        }
    }
}

TEST(JunkRecoveryTest, AFailureWhileReadingAgainAtTheEndLeaves16) {
    struct Row {
        const char* note;
        void (*spoil)(FaultyInputStream*);
    };
    const Row rows[] = {
        {"the position cannot be remembered",
         [](FaultyInputStream* stream) { stream->FailGetPositionsFrom(2, HOST_CODE); }},
        {"the seek to the construct fails", [](FaultyInputStream* stream) { stream->FailSeeksFrom(1, HOST_CODE); }},
        {"the read fails", [](FaultyInputStream* stream) { stream->FailReadsFrom(2, HOST_CODE); }},
        {"the seek back fails", [](FaultyInputStream* stream) { stream->FailSeeksFrom(2, HOST_CODE); }},
    };
    for (const Row& row : rows) {
        for (const Started& document : OPEN_DOCUMENTS) {
            SCOPED_TRACE(std::string(row.note) + ": " + document.bytes);
            std::unique_ptr<FaultyInputStream> stream = MakeFaulty(document.bytes);
            row.spoil(stream.get());
            const StreamRun run = RunStream(std::move(stream), false);
            EXPECT_EQ(run.parseResult, 0U);
            EXPECT_EQ(run.endResult, 16U);
            EXPECT_EQ(run.lines, document.lines);
        }
    }
}

TEST(JunkRecoveryTest, AFailureWhileKeepingTheOpenConstructOfAnOwnedStreamLeaves16) {
    struct Row {
        const char* note;
        void (*spoil)(FaultyInputStream*);
    };
    const Row rows[] = {
        {"the seek fails", [](FaultyInputStream* stream) { stream->FailSeeksFrom(1, HOST_CODE); }},
        {"the read fails", [](FaultyInputStream* stream) { stream->FailReadsFrom(2, HOST_CODE); }},
        {"the read is short", [](FaultyInputStream* stream) { stream->ShortenRead(2, 1).FailReadsFrom(3, HOST_CODE); }},
    };
    for (const Row& row : rows) {
        for (const Started& document : OPEN_DOCUMENTS) {
            SCOPED_TRACE(std::string(row.note) + ": " + document.bytes);
            std::unique_ptr<FaultyInputStream> stream = MakeFaulty(document.bytes);
            row.spoil(stream.get());
            const StreamRun run = RunStream(std::move(stream), true);
            EXPECT_EQ(run.parseResult, 0U);
            EXPECT_EQ(run.endResult, 16U);
            EXPECT_EQ(run.lines, document.lines);
            EXPECT_EQ(run.destructionsBeforeEnd, 1);
            EXPECT_EQ(run.destructions, 1);
        }
    }
}

TEST(JunkRecoveryTest, APieceWithoutAPositionCannotBeReadAgain) {
    // Pieces of six characters: "x<a b ", "/ >y<c", " / >z".
    struct Row {
        const char* note;
        std::uint64_t lostPosition;
    };
    const Row rows[] = {
        {"the piece in which the construct began", 1},
        {"the piece in which it fails", 2},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        std::unique_ptr<FaultyInputStream> stream = MakeFaulty("x<a b / >y<c / >z", 6);
        stream->FailGetPosition(row.lostPosition, HOST_CODE);
        const StreamRun run = RunStream(std::move(stream), false);
        EXPECT_EQ(run.parseResult, 11U);
        EXPECT_EQ(run.endResult, 16U);
        EXPECT_EQ(run.lines, "text(x)\n");
    }
}

TEST(JunkRecoveryTest, APieceWithoutAPositionDoesNotDisturbOtherPieces) {
    // Pieces of five characters: "<a b>", "text ", "<c / ", ">". The second piece holds no
    // construct.
    std::unique_ptr<FaultyInputStream> stream = MakeFaulty("<a b>text <c / >", 5);
    stream->FailGetPosition(2, HOST_CODE);
    const StreamRun run = RunStream(std::move(stream), false);
    ExpectSuccess(run);
    EXPECT_EQ(run.lines, "start(|a|{ |b}|)\ntext(text )\njunk(<c / )\njunk(>)\nend-parsing\n");
}

TEST(JunkRecoveryTest, APieceInTheMiddleOfAConstructNeedsNoPosition) {
    // Pieces of three characters; the construct begins in the first piece, passes through the
    // second and fails in the third.
    std::unique_ptr<FaultyInputStream> stream = MakeFaulty("<a b / >", 3);
    stream->FailGetPosition(2, HOST_CODE);
    const StreamRun run = RunStream(std::move(stream), false);
    ExpectSuccess(run);
    EXPECT_EQ(run.lines, "junk(<a b / )\njunk(>)\nend-parsing\n");
}

TEST(JunkRecoveryTest, AFailedLastReadDoesNotMoveThePiece) {
    // `IsEnd` stays false, so a read that finds nothing, or fails, follows the last piece.
    for (const bool owned : {false, true}) {
        std::unique_ptr<FaultyInputStream> stream = MakeFaulty("x<a b", 2);
        stream->NeverEnd();
        const StreamRun run = RunStream(std::move(stream), owned);
        ExpectSuccess(run);
        EXPECT_EQ(run.lines, "text(x)\njunk(<a b)\nend-parsing\n");
        EXPECT_EQ(run.destructions, 1);
    }
    std::unique_ptr<FaultyInputStream> stream = MakeFaulty("x<a b", 2);
    stream->NeverEnd().FailGetPosition(4, HOST_CODE);
    const StreamRun run = RunStream(std::move(stream), false);
    ExpectSuccess(run);
    EXPECT_EQ(run.lines, "text(x)\njunk(<a b)\nend-parsing\n");
}

TEST(JunkRecoveryTest, AnEmptyReadDoesNotMoveThePiece) {
    for (std::uint64_t call = 1; call <= 4; ++call) {
        std::unique_ptr<FaultyInputStream> stream = MakeFaulty("x<a b / >y", 3);
        stream->ReadNothing(call);
        const StreamRun run = RunStream(std::move(stream), false);
        if (call == 4) {
            // The fourth read is the one that reads the construct again: nothing instead of seven
            // bytes.
            EXPECT_EQ(run.parseResult, 11U);
            continue;
        }
        ExpectSuccess(run);
        EXPECT_EQ(run.lines, "text(x)\njunk(<a b / )\njunk(>y)\nend-parsing\n");
    }
}

/// Delivers pieces, states any positions, and has as many bytes as are asked for when it has been
/// repositioned.
class LyingStream final : public VFS::InputStream {
public:
    LyingStream(std::vector<std::string> readPieces, std::vector<std::uint64_t> statedPositions,
                std::uint64_t* bytesReadAgain)
        : pieces(std::move(readPieces)), positions(std::move(statedPositions)), readAgain(bytesReadAgain) {}

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        if (isRepositioned) {
            std::memset(buffer, 'x', static_cast<std::size_t>(size));
            *bytesRead = size;
            *readAgain += size;
            return RESULT_OK;
        }
        const std::string& piece = pieces[reads++];
        std::memcpy(buffer, piece.data(), piece.size());
        *bytesRead = piece.size();
        return RESULT_OK;
    }
    std::uint32_t GetPosition(std::uint64_t* position) override {
        *position = positions[std::min(reads, positions.size() - 1)];
        return RESULT_OK;
    }
    std::uint32_t Seek(std::uint64_t) override {
        isRepositioned = true;
        return RESULT_OK;
    }
    bool IsEnd() override {
        return reads == pieces.size();
    }

private:
    std::vector<std::string> pieces;
    std::vector<std::uint64_t> positions;
    std::uint64_t* readAgain;
    std::size_t reads = 0;
    bool isRepositioned = false;
};

TEST(JunkRecoveryTest, NoMoreIsReadAgainThanHasBeenFed) {
    struct Row {
        const char* note;
        std::vector<std::string> pieces;
        std::vector<std::uint64_t> positions;
        std::uint32_t parseResult;
        std::uint32_t endResult;
        std::uint64_t readAgain;
    };
    constexpr std::uint64_t FAR = std::uint64_t{1} << 40;
    const Row rows[] = {
        {"as many bytes as were fed", {"<a b", " / >"}, {0, 4}, 0, 0, 7},
        {"one byte more", {"<a b", " / >"}, {0, 5}, 11, 16, 0},
        {"far more", {"<a b", " / >"}, {0, FAR}, 11, 16, 0},
        {"far more, after a token", {"x<c>", "<a b", " / >"}, {0, 4, FAR}, 11, 16, 0},
        {"what came before the token does not count", {"0123456789<a b", " / >"}, {0, 15}, 11, 16, 0},
        {"a construct that stays open", {"<a b", "c"}, {0, FAR}, 0, 16, 0},
        {"an open construct within the bound", {"<a b", "c"}, {0, 4}, 0, 0, 5},
    };
    for (const Row& row : rows) {
        for (const bool wide : {false, true}) {
            for (const bool owned : {false, true}) {
                SCOPED_TRACE(std::string(row.note) + (wide ? ", wide" : ", 8-bit") +
                             (owned ? ", owned stream" : ", borrowed stream"));
                const std::uint64_t characterSize = wide ? 2 : 1;
                std::vector<std::string> pieces = row.pieces;
                std::vector<std::uint64_t> positions = row.positions;
                for (std::string& piece : pieces)
                    piece = wide ? ToUtf16LE(piece) : piece;
                for (std::uint64_t& position : positions)
                    position *= characterSize;
                StartedParser bench(1252, TypeFor(wide));
                std::uint64_t readAgain = 0;
                auto stream = std::make_unique<LyingStream>(pieces, positions, &readAgain);
                VFS::InputStream* const fed = owned ? stream.release() : stream.get();
                EXPECT_EQ(bench.ParseStream(fed, owned), row.parseResult);
                EXPECT_EQ(bench.EndParse(), row.endResult);
                EXPECT_EQ(readAgain, row.readAgain * characterSize);
            }
        }
    }
}

TEST(JunkRecoveryTest, AStreamErrorForgetsTheStream) {
    for (const bool owned : {false, true}) {
        std::unique_ptr<FaultyInputStream> stream = MakeFaulty("x<a b", 3);
        stream->FailRead(2, HOST_CODE);
        const StreamRun run = RunStream(std::move(stream), owned);
        EXPECT_EQ(run.parseResult, HOST_CODE);
        EXPECT_EQ(run.endResult, 16U);
        EXPECT_EQ(run.lines, "text(x)\n");
        EXPECT_EQ(run.destructionsBeforeEnd, owned ? 1 : 0);
        EXPECT_EQ(run.destructions, 1);
    }
}

TEST(JunkRecoveryTest, StreamErrorsInEveryReadAreReturned) {
    const std::string document = "a<b>c</d>";
    const Tokens tokensAfterRead[] = {{}, "text(a)", "text(a)\nstart(|b||)"};
    for (std::uint64_t call = 1; call <= 3; ++call) {
        std::unique_ptr<FaultyInputStream> stream = MakeFaulty(document, 2);
        stream->FailRead(call, HOST_CODE);
        StartedParser bench;
        EXPECT_EQ(bench.ParseStream(stream.get(), false), HOST_CODE);
        EXPECT_EQ(bench.TakeLines(), Join(tokensAfterRead[call - 1]));
    }
}

std::uint64_t adjustCalls = 0;
std::uint64_t failingAdjustCall = 0;

std::uint32_t AdjustUntilFailure(Base::DefaultBufferAllocPolicy* buffer, std::uint64_t size) {
    ++adjustCalls;
    if (adjustCalls == failingAdjustCall)
        return RESULT_OUT_OF_MEMORY;
    return Base::PLATFORM_SERVICES.adjustBuffer(buffer, size);
}

/// Lets the n-th request for a read buffer fail.
class FailingBuffer {
public:
    explicit FailingBuffer(std::uint64_t call) : services(WithFailure()), replacement(services) {
        adjustCalls = 0;
        failingAdjustCall = call;
    }

private:
    static Base::Services WithFailure() {
        Base::Services failing = Base::PLATFORM_SERVICES;
        failing.adjustBuffer = AdjustUntilFailure;
        return failing;
    }

    Base::Services services;
    Base::ServicesOverride replacement;
};

TEST(JunkRecoveryTest, WithoutAReadBufferTheStreamIsNotRead) {
    for (const bool owned : {false, true}) {
        const FailingBuffer failing(1);
        std::unique_ptr<FaultyInputStream> stream = MakeFaulty("x<a>");
        const StreamRun run = RunStream(std::move(stream), owned);
        EXPECT_EQ(run.parseResult, static_cast<std::uint32_t>(RESULT_OUT_OF_MEMORY));
        EXPECT_EQ(run.destructionsBeforeEnd, owned ? 1 : 0);
        EXPECT_EQ(run.destructions, 1);
        EXPECT_EQ(run.lines, "end-parsing\n");
    }
}

TEST(JunkRecoveryTest, WithoutABufferToReadAgainTheRecognizersCodeIsLeft) {
    {
        const FailingBuffer failing(2);
        const StreamRun run = RunStream(MakeFaulty("x<a b / >y"), false);
        EXPECT_EQ(run.parseResult, 11U);
        EXPECT_EQ(run.lines, "text(x)\n");
    }
    {
        const FailingBuffer failing(2);
        const StreamRun run = RunStream(MakeFaulty("x<a b"), false);
        EXPECT_EQ(run.parseResult, 0U);
        EXPECT_EQ(run.endResult, 16U);
        EXPECT_EQ(run.lines, "text(x)\n");
    }
}

TEST(JunkRecoveryTest, AfterAFailureTheNextDocumentIsSound) {
    StartedParser bench;
    EXPECT_EQ(bench.Feed("x<a b / >y"), 11U);
    EXPECT_EQ(bench.EndParse(), 16U);
    bench.Start();
    EXPECT_EQ(bench.FeedStream("<script>'</b>'</script><a b / >"), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_EQ(
        bench.TakeLines(),
        "text(x)\nstart-parsing\ncharset(1252)\nstart(|script||)\njs-start\ns-string(</b>)\nend(|script|||)\njs-end\n"
        "junk(<a b / )\njunk(>)\nend-parsing\n");
}

TEST(JunkRecoveryTest, WhateverFollowsAFailureHasACodeAndAnEnd) {
    // Bytes fed after a failure give a result code, and nothing but a new document is promised;
    // nothing may break.
    for (const char* const broken : {"<a b / >", "</a / >", "<!-x", "<![x[", "<!x<", "<?xml>", "<script>//<!-x"}) {
        for (const char* const more : {"x", ">", "<a>", "/", "'", "<", "</script>"}) {
            SCOPED_TRACE(std::string(broken) + " and then " + more);
            StartedParser bench;
            EXPECT_EQ(bench.Feed(broken), 11U);
            bench.Feed(more);
            bench.Feed(more);
            bench.EndParse();
            EXPECT_EQ(bench.EndParse(), 0U);
            bench.TakeLines();
            bench.Start();
            EXPECT_EQ(bench.Feed("a<b>c"), 0U);
            EXPECT_EQ(bench.EndParse(), 0U);
            EXPECT_EQ(bench.TakeLines(), "start-parsing\ncharset(1252)\ntext(a)\nstart(|b||)\ntext(c)\nend-parsing\n");
        }
    }
}

}  // namespace
}  // namespace Kestra::Test
