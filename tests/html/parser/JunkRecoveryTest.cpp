#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "html/framework/ResultCodes.h"
#include "platform/MemoryInputStream.h"
#include "platform/Results.h"
#include "platform/Services.h"
#include "tests/html/parser/DocumentRows.h"
#include "tests/support/Flavours.h"
#include "tests/support/TestStreams.h"

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

constexpr std::uint32_t HOST_CODE = 4711;  // a failure that only the host's stream knows

TEST(JunkRecoveryTest, ConstructsThatFail) {
    const BrokenRow rows[] = {
        {"a slash and a blank after an attribute",
         "x<a b / >y<c>",
         {"text(x)", "junk(<a b / )", "junk(>y)", "start(|c||)"},
         {"text(x)"},
         11,
         16},
        {"the same after a value", "<a b=1 / c>d", {"junk(<a b=1 / )", "junk(c>d)"}, {}, 11, 16},
        {"a value that is a slash", "<a href=/>y", {"junk(<a href=/)", "junk(>y)"}, {}, 11, 16},
        {"a slash that is followed by a blank, not by \">\"", "<a b/ c>d", {"junk(<a b/ )", "junk(c>d)"}, {}, 11, 16},
        {"an end tag with a slash and a blank", "</div / >x", {"junk(</div / )", "junk(>x)"}, {}, 11, 16},
        {"an end tag with a value that is a slash", "</a b=/>x", {"junk(</a b=/)", "junk(>x)"}, {}, 11, 16},
        {"a \"<!-\" without a second dash",
         "a<!-x>b<c>",
         {"text(a)", "junk(<!-)", "junk(x>b)", "start(|c||)"},
         {"text(a)"},
         11,
         16},
        {"a \"<![\" with an unknown word",
         "a<![x[<c>",
         {"text(a)", "junk(<![x)", "junk([)", "start(|c||)"},
         {"text(a)"},
         11,
         16},
        {"a \"<![\" without a word", "<![[x]]>", {"junk(<![)", "junk([x]]>)"}, {}, 11, 16},
        {"two failures in a row", "<!-<!-<a>", {"junk(<!-)", "junk(<!-)", "start(|a||)"}, {}, 11, 16},
        {"junk after junk up to the next \"<\"",
         "<a b / >1<a b / >2",
         {"junk(<a b / )", "junk(>1)", "junk(<a b / )", "junk(>2)"},
         {},
         11,
         16},
        {"an end tag after junk", "<a b / ></a>", {"junk(<a b / )", "junk(>)", "end(|a|||)"}, {}, 11, 16},
        {"a script after junk", "<!-<script>'", {"junk(<!-)", "start(|script||)", "js-start", "junk(')"}, {}, 11, 16},
        {"text never comes right after junk", "<!-x'y", {"junk(<!-)", "junk(x'y)"}, {}, 11, 16},
        {"line feeds in junk are counted",
         "<a\nb\n/\n>\n\n<c>\n",
         {"junk(<a\\nb\\n/\\n)", "junk(>\\n\\n)", "start(|c||)", "text(\\n)"},
         {},
         11,
         16},
        {"bytes from 128 up and backslashes",
         "<\xE9 \\ / >\xE9\\",
         {"junk(<\\xE9 \\\\ / )", "junk(>\\xE9\\\\)"},
         {},
         11,
         16},
    };
    CheckRows(rows);
}

TEST(JunkRecoveryTest, ConstructsThatTheInputLeavesOpen) {
    const BrokenRow rows[] = {
        {"a \"<\"", "a<", {"text(a)", "junk(<)"}, {"text(a)"}, 0, 16},
        {"only a \"<\"", "<", {"junk(<)"}, {}, 0, 16},
        {"a tag name", "<b", {"junk(<b)"}, {}, 0, 16},
        {"a tag name after a blank", "< b", {"junk(< b)"}, {}, 0, 16},
        {"an attribute", "x<div class=", {"text(x)", "junk(<div class=)"}, {"text(x)"}, 0, 16},
        {"a value", "<div class=a", {"junk(<div class=a)"}, {}, 0, 16},
        {"a quoted value", "<div class='a>\n</div>", {"junk(<div class='a>\\n</div>)"}, {}, 0, 16},
        {"a slash of a short tag", "<br /", {"junk(<br /)"}, {}, 0, 16},
        {"a slash after a name", "<br/", {"junk(<br/)"}, {}, 0, 16},
        {"an end tag without a name", "</", {"junk(</)"}, {}, 0, 16},
        {"an end tag", "<a></div", {"start(|a||)", "junk(</div)"}, {"start(|a||)"}, 0, 16},
        {"an end tag with a slash", "</div a /", {"junk(</div a /)"}, {}, 0, 16},
        {"an end tag with a quoted value", "</div a=\"/>", {"junk(</div a=\"/>)"}, {}, 0, 16},
        {"a \"<!\"", "a<!", {"text(a)", "junk(<!)"}, {"text(a)"}, 0, 16},
        {"a \"<!-\"", "a<!-", {"text(a)", "junk(<!-)"}, {"text(a)"}, 0, 16},
        {"a \"<![\"", "a<![", {"text(a)", "junk(<![)"}, {"text(a)"}, 0, 16},
        {"a word after \"<![\"", "a<![cd", {"text(a)", "junk(<![cd)"}, {"text(a)"}, 0, 16},
    };
    CheckRows(rows);
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

/// Notes the reads of what has been read before.
class ReadAgainStream final : public VFS::InputStream {
public:
    struct Reading {
        std::uint64_t offset = 0;
        std::uint64_t size = 0;  ///< as asked for
    };

    ReadAgainStream(const std::string& bytes, std::vector<Reading>* target) : content(bytes), readings(target) {}

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        std::uint64_t offset = 0;
        content.GetPosition(&offset);
        if (offset < furthest)
            readings->push_back({offset, size});
        const std::uint32_t result = content.Read(buffer, size, bytesRead);
        furthest = std::max(furthest, offset + *bytesRead);
        return result;
    }
    std::uint32_t GetPosition(std::uint64_t* position) override {
        return content.GetPosition(position);
    }
    std::uint32_t Seek(std::uint64_t position) override {
        return content.Seek(position);
    }
    bool IsEnd() override {
        return content.IsEnd();
    }

private:
    VFS::MemoryInputStream content;
    std::vector<Reading>* readings;
    std::uint64_t furthest = 0;
};

TEST(JunkRecoveryTest, ReadsAgainBy16384Bytes) {
    constexpr std::uint64_t READ_SIZE = 16384;
    const std::string start = "<a b='";
    const std::string end = "' / ";
    for (const Route& route : ROUTES) {
        SCOPED_TRACE(route.name);
        for (const std::size_t length : {11U, 8191U, 8192U, 8193U, 16383U, 16384U, 16385U, 32768U, 40000U}) {
            SCOPED_TRACE(length);
            const std::string construct = start + std::string(length - start.size() - end.size(), 'v') + end;
            std::vector<ReadAgainStream::Reading> readings;
            DocumentSettings settings = SettingsFor(route, Feed::STREAM);
            settings.makeStream = [&readings](const std::string& bytes, const Cuts&) {
                return std::make_unique<ReadAgainStream>(bytes, &readings);
            };
            const DocumentRun run = ParseBy(route, "x" + construct + ">y<c>", {}, settings);
            EXPECT_EQ(Join(Comparable(run.trace, route)),
                      Join(WholeTrace({"text(x)", "junk(" + construct + ")", "junk(>y)", "start(|c||)"}, route)));
            const std::uint64_t width = route.wideInput ? 2 : 1;
            const std::uint64_t bytes = length * width;
            std::vector<ReadAgainStream::Reading> expected;
            for (std::uint64_t read = 0; read < bytes; read += READ_SIZE)
                expected.push_back({width + read, std::min(READ_SIZE, bytes - read)});
            ASSERT_EQ(readings.size(), expected.size());
            for (std::size_t i = 0; i < expected.size(); ++i) {
                EXPECT_EQ(readings[i].offset, expected[i].offset) << "read " << i;
                EXPECT_EQ(readings[i].size, expected[i].size) << "read " << i;
            }
        }
    }
}

TEST(JunkRecoveryTest, LongConstructsAreReadAgainInSeveralReads) {
    // 40,000 characters: three reads of at most 16,384 bytes, and pieces of the same size in
    // between.
    const std::string value(40000, 'v');
    const std::string input = "x<a b='" + value + "' / >y<c>";
    for (const Route& route : ROUTES) {
        SCOPED_TRACE(route.name);
        for (const Feed feed : {Feed::STREAM, Feed::OWNED_STREAM}) {
            DocumentSettings settings = SettingsFor(route, feed);
            settings.makeStream = [](const std::string& bytes, const Cuts&) {
                return std::make_unique<VFS::MemoryInputStream>(bytes);
            };
            const DocumentRun run = ParseBy(route, input, {}, settings);
            EXPECT_EQ(Join(Comparable(run.trace, route)),
                      Join(WholeTrace({"text(x)", "junk(<a b='" + value + "' / )", "junk(>y)", "start(|c||)"}, route)));
            EXPECT_EQ(run.parseResult, 0U);
            EXPECT_EQ(run.endResult, 0U);
        }
    }
}

TEST(JunkRecoveryTest, LongOpenConstructsAreKeptFromAnOwnedStream) {
    const std::string value(40000, 'v');
    const std::string input = "x<a b='" + value;
    for (const Route& route : ROUTES) {
        SCOPED_TRACE(route.name);
        DocumentSettings settings = SettingsFor(route, Feed::OWNED_STREAM);
        settings.makeStream = [](const std::string& bytes, const Cuts&) {
            return std::make_unique<VFS::MemoryInputStream>(bytes);
        };
        const DocumentRun run = ParseBy(route, input, {}, settings);
        EXPECT_EQ(Join(Comparable(run.trace, route)),
                  Join(WholeTrace({"text(x)", "junk(<a b='" + value + ")"}, route)));
        EXPECT_EQ(run.endResult, 0U);
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
                    EXPECT_EQ(Join(Comparable(run.trace, route)), Join(WholeTrace(tokens, route)));
                    EXPECT_EQ(run.parseResult, 0U);
                    EXPECT_EQ(run.endResult, 0U);
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
                settings.type = GenericParser::DATA_STREAM_AUTO;
                const DocumentRun run = ParseDocument(row.bytes, cuts, settings);
                EXPECT_EQ(Join(Comparable(run.trace, row.route)), Join(expected));
                EXPECT_EQ(run.parseResult, 0U);
                EXPECT_EQ(run.endResult, 0U);
            });
        }
    }
}

/// A parser with a trace, for tests that feed it step by step.
struct Bench {
    explicit Bench(StringNS::CharSet::Code charset = 1252,
                   GenericParser::DataStreamType type = GenericParser::DATA_STREAM_8BIT)
        : observer(&lines) {
        parser.SetObserver(&observer, false);
        EXPECT_EQ(parser.StartParse(charset, type), 0U);
        lines.clear();
    }

    std::uint32_t Feed(const std::string& piece) {
        return parser.ParseBuffer(piece.data(), piece.size());
    }

    /// The lines since the last call.
    std::string Take() {
        const std::string taken = Join(lines);
        lines.clear();
        return taken;
    }

    Lines lines;
    Trace::TraceObserver<char, std::string> observer;
    GenericParser parser;
};

TEST(JunkRecoveryTest, AHostsPieceAfterAStreamCannotBeReadAgain) {
    Bench bench;
    VFS::MemoryInputStream stream("x<a b");
    EXPECT_EQ(bench.parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(bench.Feed(" / >y"), 11U);
    EXPECT_EQ(bench.Take(), "text(x)\n");
    EXPECT_EQ(bench.parser.EndParse(), 16U);
    EXPECT_EQ(bench.Take(), "");
}

TEST(JunkRecoveryTest, AnOpenConstructThatReachesIntoAHostsPieceCannotBeReadAgain) {
    for (const bool owned : {false, true}) {
        Bench bench;
        auto stream = std::make_unique<VFS::MemoryInputStream>("x<a b");
        VFS::InputStream* const fed = owned ? stream.release() : stream.get();
        EXPECT_EQ(bench.parser.ParseStream(fed, owned), 0U);
        EXPECT_EQ(bench.Feed("c"), 0U);
        EXPECT_EQ(bench.parser.EndParse(), 16U);
        EXPECT_EQ(bench.Take(), "text(x)\n");
    }
}

TEST(JunkRecoveryTest, AnEmptyPieceAfterAStreamChangesNothing) {
    for (const bool owned : {false, true}) {
        Bench bench;
        auto stream = std::make_unique<VFS::MemoryInputStream>("x<a b");
        VFS::InputStream* const fed = owned ? stream.release() : stream.get();
        EXPECT_EQ(bench.parser.ParseStream(fed, owned), 0U);
        EXPECT_EQ(bench.Feed(""), 0U);
        EXPECT_EQ(bench.parser.ParseBuffer(nullptr, 0), 0U);
        EXPECT_EQ(bench.parser.EndParse(), 0U);
        EXPECT_EQ(bench.Take(), "text(x)\njunk(<a b)\nend-parsing\n");
    }
}

TEST(JunkRecoveryTest, AConstructThatBeganInAHostsPieceCannotBeReadAgain) {
    Bench bench;
    EXPECT_EQ(bench.Feed("x<a b"), 0U);
    VFS::MemoryInputStream stream(" / >y");
    EXPECT_EQ(bench.parser.ParseStream(&stream, false), 11U);
    EXPECT_EQ(bench.Take(), "text(x)\n");
    EXPECT_EQ(bench.parser.EndParse(), 16U);

    Bench open;
    EXPECT_EQ(open.Feed("x<a b"), 0U);
    VFS::MemoryInputStream rest("c");
    EXPECT_EQ(open.parser.ParseStream(&rest, false), 0U);
    EXPECT_EQ(open.parser.EndParse(), 16U);
    EXPECT_EQ(open.Take(), "text(x)\n");
}

TEST(JunkRecoveryTest, AConstructThatBeginsAfterAHostsPieceIsReadAgain) {
    Bench bench;
    EXPECT_EQ(bench.Feed("xyz<b>"), 0U);
    VFS::MemoryInputStream stream("x<a b / >y<c");
    EXPECT_EQ(bench.parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(bench.Take(), "text(xyz)\nstart(|b||)\ntext(x)\njunk(<a b / )\njunk(>y)\njunk(<c)\nend-parsing\n");
}

TEST(JunkRecoveryTest, TwoStreamsInOneDocument) {
    for (const bool owned : {false, true}) {
        SCOPED_TRACE(owned ? "owned" : "borrowed");
        {
            // Each construct lies in one stream.
            Bench bench;
            auto first = std::make_unique<VFS::MemoryInputStream>("a<b / >c<d>");
            auto second = std::make_unique<VFS::MemoryInputStream>("e<f / >g<h");
            EXPECT_EQ(bench.parser.ParseStream(owned ? first.release() : first.get(), owned), 0U);
            EXPECT_EQ(bench.parser.ParseStream(owned ? second.release() : second.get(), owned), 0U);
            EXPECT_EQ(bench.parser.EndParse(), 0U);
            EXPECT_EQ(
                bench.Take(),
                "text(a)\njunk(<b / )\njunk(>c)\nstart(|d||)\ntext(e)\njunk(<f / )\njunk(>g)\njunk(<h)\nend-parsing\n");
        }
        {
            // A construct that reaches from one stream into the other is parsed, but cannot be read
            // again.
            Bench bench;
            auto first = std::make_unique<VFS::MemoryInputStream>("a<b c");
            auto second = std::make_unique<VFS::MemoryInputStream>("=d><e f");
            auto third = std::make_unique<VFS::MemoryInputStream>(" / >");
            EXPECT_EQ(bench.parser.ParseStream(owned ? first.release() : first.get(), owned), 0U);
            EXPECT_EQ(bench.parser.ParseStream(owned ? second.release() : second.get(), owned), 0U);
            EXPECT_EQ(bench.Take(), "text(a)\nstart(|b|{ |c|=|d}|)\n");
            EXPECT_EQ(bench.parser.ParseStream(owned ? third.release() : third.get(), owned), 11U);
            EXPECT_EQ(bench.parser.EndParse(), 16U);
            EXPECT_EQ(bench.Take(), "");
        }
        {
            // Nor can it be at the end of the input.
            Bench bench;
            auto first = std::make_unique<VFS::MemoryInputStream>("a<b c");
            auto second = std::make_unique<VFS::MemoryInputStream>("=d");
            EXPECT_EQ(bench.parser.ParseStream(owned ? first.release() : first.get(), owned), 0U);
            EXPECT_EQ(bench.parser.ParseStream(owned ? second.release() : second.get(), owned), 0U);
            EXPECT_EQ(bench.parser.EndParse(), 16U);
            EXPECT_EQ(bench.Take(), "text(a)\n");
        }
    }
}

TEST(JunkRecoveryTest, AnEmptySecondStreamLeavesAnOpenConstructAlone) {
    // The junk may still come from the first stream, or not at all; what never comes is the junk of
    // the wrong stream.
    Bench bench;
    VFS::MemoryInputStream first("a<b c");
    VFS::MemoryInputStream second("");
    EXPECT_EQ(bench.parser.ParseStream(&first, false), 0U);
    EXPECT_EQ(bench.parser.ParseStream(&second, false), 0U);
    const std::uint32_t result = bench.parser.EndParse();
    EXPECT_EQ(bench.Take(), result == 0 ? "text(a)\njunk(<b c)\nend-parsing\n" : "text(a)\n");
    EXPECT_TRUE(result == 0 || result == 16) << result;
}

TEST(JunkRecoveryTest, AJunkStateGoesOnInTheNextPiece) {
    Bench bench;
    VFS::MemoryInputStream stream("<a / >b");
    EXPECT_EQ(bench.parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(bench.Take(), "junk(<a / )\n");
    EXPECT_EQ(bench.Feed("c"), 0U);
    EXPECT_EQ(bench.Feed("d<e>f"), 0U);
    EXPECT_EQ(bench.Take(), "junk(>bcd)\nstart(|e||)\n");
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(bench.Take(), "text(f)\nend-parsing\n");
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
        HookedObserver<char, std::string> observer(&lines);
        GenericParser parser;
        std::string name;
        observer.hook = [&](const std::string& line) {
            if (line == row.junk) {
                const WideString wideName = parser.GetCurrentParserName();
                name.assign(wideName.begin(), wideName.end());
            }
        };
        parser.SetObserver(&observer, false);
        parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
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
                    GenericParser::DataStreamType type = GenericParser::DATA_STREAM_8BIT) {
    StreamRun run;
    stream->CountDestructions(&run.destructions);
    Bench bench(charset, type);
    run.parseResult = bench.parser.ParseStream(owned ? stream.release() : stream.get(), owned);
    run.destructionsBeforeEnd = run.destructions;
    run.endResult = bench.parser.EndParse();
    run.lines = bench.Take();
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
    EXPECT_EQ(run.parseResult, 0U);
    EXPECT_EQ(run.endResult, 0U);
    EXPECT_EQ(run.lines, "start(|a|{ |b}|)\ntext(text )\njunk(<c / )\njunk(>)\nend-parsing\n");
}

TEST(JunkRecoveryTest, APieceInTheMiddleOfAConstructNeedsNoPosition) {
    // Pieces of three characters; the construct begins in the first piece, passes through the
    // second and fails in the third.
    std::unique_ptr<FaultyInputStream> stream = MakeFaulty("<a b / >", 3);
    stream->FailGetPosition(2, HOST_CODE);
    const StreamRun run = RunStream(std::move(stream), false);
    EXPECT_EQ(run.parseResult, 0U);
    EXPECT_EQ(run.endResult, 0U);
    EXPECT_EQ(run.lines, "junk(<a b / )\njunk(>)\nend-parsing\n");
}

TEST(JunkRecoveryTest, AFailedLastReadDoesNotMoveThePiece) {
    // `IsEnd` stays false, so a read that finds nothing, or fails, follows the last piece.
    for (const bool owned : {false, true}) {
        std::unique_ptr<FaultyInputStream> stream = MakeFaulty("x<a b", 2);
        stream->NeverEnd();
        const StreamRun run = RunStream(std::move(stream), owned);
        EXPECT_EQ(run.parseResult, 0U);
        EXPECT_EQ(run.endResult, 0U);
        EXPECT_EQ(run.lines, "text(x)\njunk(<a b)\nend-parsing\n");
        EXPECT_EQ(run.destructions, 1);
    }
    std::unique_ptr<FaultyInputStream> stream = MakeFaulty("x<a b", 2);
    stream->NeverEnd().FailGetPosition(4, HOST_CODE);
    const StreamRun run = RunStream(std::move(stream), false);
    EXPECT_EQ(run.parseResult, 0U);
    EXPECT_EQ(run.endResult, 0U);
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
        EXPECT_EQ(run.parseResult, 0U);
        EXPECT_EQ(run.endResult, 0U);
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
                Bench bench(1252, wide ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT);
                std::uint64_t readAgain = 0;
                auto stream = std::make_unique<LyingStream>(pieces, positions, &readAgain);
                VFS::InputStream* const fed = owned ? stream.release() : stream.get();
                EXPECT_EQ(bench.parser.ParseStream(fed, owned), row.parseResult);
                EXPECT_EQ(bench.parser.EndParse(), row.endResult);
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
    const Lines tokensAfterRead[] = {{}, {"text(a)"}, {"text(a)", "start(|b||)"}};
    for (std::uint64_t call = 1; call <= 3; ++call) {
        std::unique_ptr<FaultyInputStream> stream = MakeFaulty(document, 2);
        stream->FailRead(call, HOST_CODE);
        Bench bench;
        EXPECT_EQ(bench.parser.ParseStream(stream.get(), false), HOST_CODE);
        EXPECT_EQ(bench.Take(), Join(tokensAfterRead[call - 1]));
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
    Bench bench;
    EXPECT_EQ(bench.Feed("x<a b / >y"), 11U);
    EXPECT_EQ(bench.parser.EndParse(), 16U);
    EXPECT_EQ(bench.parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT), 0U);
    VFS::MemoryInputStream stream("<script>'</b>'</script><a b / >");
    EXPECT_EQ(bench.parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(
        bench.Take(),
        "text(x)\nstart-parsing\ncharset(1252)\nstart(|script||)\njs-start\ns-string(</b>)\nend(|script|||)\njs-end\n"
        "junk(<a b / )\njunk(>)\nend-parsing\n");
}

TEST(JunkRecoveryTest, WhateverFollowsAFailureHasACodeAndAnEnd) {
    // Bytes fed after a failure give a result code, and nothing but a new document is promised;
    // nothing may break.
    for (const char* const broken : {"<a b / >", "</a / >", "<!-x", "<![x[", "<!x<", "<?xml>", "<script>//<!-x"}) {
        for (const char* const more : {"x", ">", "<a>", "/", "'", "<", "</script>"}) {
            SCOPED_TRACE(std::string(broken) + " and then " + more);
            Bench bench;
            EXPECT_EQ(bench.Feed(broken), 11U);
            bench.Feed(more);
            bench.Feed(more);
            bench.parser.EndParse();
            EXPECT_EQ(bench.parser.EndParse(), 0U);
            bench.Take();
            EXPECT_EQ(bench.parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT), 0U);
            EXPECT_EQ(bench.Feed("a<b>c"), 0U);
            EXPECT_EQ(bench.parser.EndParse(), 0U);
            EXPECT_EQ(bench.Take(), "start-parsing\ncharset(1252)\ntext(a)\nstart(|b||)\ntext(c)\nend-parsing\n");
        }
    }
}

}  // namespace
}  // namespace Kestra::Test
