#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "html/output/Crc32.h"
#include "platform/MemoryInputStream.h"
#include "platform/Results.h"
#include "platform/Services.h"
#include "tests/html/parser/DocumentRows.h"
#include "tests/support/Flavours.h"
#include "tests/support/TestStreams.h"

// The self-check: the tokens written back are compared with what was read, and kept on demand.

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

/// The CRC-32 of ISO 3309 bit by bit, without a table.
std::uint32_t SlowCrc32(std::uint32_t crc, std::string_view bytes) {
    std::uint32_t remainder = ~crc;
    for (const char byte : bytes) {
        remainder ^= static_cast<std::uint32_t>(static_cast<unsigned char>(byte));
        for (int bit = 0; bit < 8; ++bit)
            remainder = (remainder >> 1) ^ ((remainder & 1) != 0 ? 0xEDB88320U : 0U);
    }
    return ~remainder;
}

std::uint32_t FastCrc32(std::uint32_t crc, std::string_view bytes) {
    return HTML::UpdateCrc32(crc, bytes.data(), bytes.size());
}

TEST(Crc32Test, KnownValues) {
    struct Row {
        std::string bytes;
        std::uint32_t crc;
    };
    const Row rows[] = {
        {"", 0},
        {"123456789", 0xCBF43926},
        {"a", 0xE8B7BE43},
        {std::string(1, '\0'), 0xD202EF8D},
        {std::string(4, '\0'), 0x2144DF1C},
        {"\xFF\xFF\xFF\xFF", 0xFFFFFFFF},
        {"The quick brown fox jumps over the lazy dog", 0x414FA339},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(SlowCrc32(0, row.bytes), row.crc) << Trace::Escape(row.bytes);
        EXPECT_EQ(FastCrc32(0, row.bytes), row.crc) << Trace::Escape(row.bytes);
    }
}

TEST(Crc32Test, EveryLengthAndPlaceInMemory) {
    std::mt19937 engine(1);
    std::string bytes(80, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(engine() & 0xFF);
    for (std::size_t begin = 0; begin < 9; ++begin) {
        for (std::size_t length = 0; length <= 64; ++length) {
            // A block of its own, so that a byte too many shows.
            const std::vector<char> block(bytes.begin() + static_cast<std::ptrdiff_t>(begin),
                                          bytes.begin() + static_cast<std::ptrdiff_t>(begin + length));
            const std::string_view piece(block.data(), block.size());
            EXPECT_EQ(FastCrc32(0x12345678, piece), SlowCrc32(0x12345678, piece)) << begin << ", " << length;
            EXPECT_EQ(FastCrc32(0, std::string_view(bytes).substr(begin, length)), SlowCrc32(0, piece))
                << begin << ", " << length;
        }
    }
}

TEST(Crc32Test, PiecesGiveWhatTheWholeGives) {
    const std::string bytes = "any bytes, in one piece or in three";
    const std::uint32_t whole = SlowCrc32(0, bytes);
    for (std::size_t first = 0; first <= bytes.size(); ++first) {
        for (std::size_t second = first; second <= bytes.size(); ++second) {
            std::uint32_t crc = FastCrc32(0, std::string_view(bytes).substr(0, first));
            crc = FastCrc32(crc, std::string_view(bytes).substr(first, second - first));
            crc = FastCrc32(crc, std::string_view(bytes).substr(second));
            ASSERT_EQ(crc, whole) << first << ", " << second;
        }
    }
    EXPECT_EQ(HTML::UpdateCrc32(0xCBF43926, nullptr, 0), 0xCBF43926U);
}

/// A parser with the self-check that is fed step by step; its observers write down what they are
/// given.
struct Bench {
    explicit Bench(GenericParser::SelfCheck check = GenericParser::SELF_CHECK_COPY, bool observed = true)
        : narrow(&lines), wide(&lines) {
        if (observed)
            parser.SetObserver(&narrow, false);
        parser.SetSelfCheck(check);
    }

    void Start(GenericParser::DataStreamType type = GenericParser::DATA_STREAM_8BIT) {
        EXPECT_EQ(parser.StartParse(1252, type), 0U);
        lines.clear();
    }

    std::uint32_t Feed(std::string_view bytes) {
        return parser.ParseBuffer(bytes.data(), bytes.size());
    }

    /// Feeds the pieces; all results have to be 0.
    void FeedAll(std::string_view bytes, const Cuts& cuts) {
        for (const auto& [begin, end] : PiecesOf(cuts, bytes.size()))
            EXPECT_EQ(Feed(bytes.substr(begin, end - begin)), 0U);
    }

    /// Whether the last callback was that for the end of parsing.
    bool HasEnded() const {
        return !lines.empty() && lines.back() == "end-parsing";
    }

    /// All bytes of the copy; "none" when there is no stream.
    std::string Copy() {
        VFS::InputStream* const stream = parser.GetSelfCheckStream();
        if (stream == nullptr)
            return "none";
        EXPECT_EQ(stream->Seek(0), 0U);
        const StreamContent content = ReadAll(stream, 1000);
        EXPECT_EQ(content.result, static_cast<std::uint32_t>(RESULT_END_OF_DATA));
        return content.bytes;
    }

    Lines lines;
    HookedObserver<char, std::string> narrow;
    HookedObserver<WideChar, WideString> wide;
    GenericParser parser;
};

/// Documents that are fed by `ParseBuffer`; the wide serializer keeps all of them but the last one.
const char* const DOCUMENTS[] = {
    "",
    "text\r\nonly",
    "a<b c='d' e=f g h=\"i\"><j/></b k />l",
    "<br/ x><p <a></b<c>",
    "<!----><![CDATA]]><![if]><!DOCTYPE a 'b' \"c\" ><?xml d e='f'?><?g 'h'?>",
    "<script>'a'\"b\"/c/\n//d\n/*e*/</p f>g<h/i\n</script></script>",
    "<script>//a\n//b<!---->c</script><style>/**/</style></style>",
    "<!--a--><![CDATA[b]]><![CDATA[c]]d<![if e]>",
};

TEST(SelfCheckTest, TheThreeModes) {
    for (const std::string document : DOCUMENTS) {
        for (const bool observed : {true, false}) {
            SCOPED_TRACE(document);
            ForEverySplit(document, [&](const Cuts& cuts) {
                for (const GenericParser::SelfCheck mode :
                     {GenericParser::SELF_CHECK_OFF, GenericParser::SELF_CHECK_CRC, GenericParser::SELF_CHECK_COPY}) {
                    Bench bench(mode, observed);
                    bench.Start();
                    EXPECT_EQ(bench.parser.GetSelfCheck(), mode);
                    bench.FeedAll(document, cuts);
                    EXPECT_EQ(bench.parser.EndParse(), 0U);
                    EXPECT_EQ(bench.HasEnded(), observed);
                    EXPECT_EQ(bench.Copy(), mode == GenericParser::SELF_CHECK_COPY ? document : "none");
                    EXPECT_EQ(bench.Copy(), mode == GenericParser::SELF_CHECK_COPY ? document : "none");
                }
            });
        }
    }
}

TEST(SelfCheckTest, TheThreeModesOfAWideDocument) {
    for (const std::string_view document : DOCUMENTS) {
        SCOPED_TRACE(std::string(document));
        const bool passes = document != DOCUMENTS[std::size(DOCUMENTS) - 1];
        const std::string bytes = ToUtf16LE(document);
        ForEverySplit(document, [&](const Cuts& cuts) {
            for (const GenericParser::SelfCheck mode :
                 {GenericParser::SELF_CHECK_OFF, GenericParser::SELF_CHECK_CRC, GenericParser::SELF_CHECK_COPY}) {
                const bool checks = mode != GenericParser::SELF_CHECK_OFF;
                Bench bench(mode);
                bench.Start(GenericParser::DATA_STREAM_UTF16);
                bench.FeedAll(bytes, Scaled(cuts, 2));
                EXPECT_EQ(bench.parser.EndParse(), passes || !checks ? 0U : 704U);
                EXPECT_EQ(bench.HasEnded(), passes || !checks);
                if (mode != GenericParser::SELF_CHECK_COPY) {
                    EXPECT_EQ(bench.Copy(), "none");
                } else if (passes) {
                    EXPECT_EQ(bench.Copy(), bytes);
                } else {
                    EXPECT_LT(bench.Copy().size(), bytes.size());
                }
            }
        });
    }
}

TEST(SelfCheckTest, OnlyOneAndTwoSwitchItOn) {
    for (const std::uint32_t value : {0U, 3U, 4U, 0xFFFFFFFFU}) {
        Bench bench(static_cast<GenericParser::SelfCheck>(value));
        bench.Start();
        EXPECT_EQ(static_cast<std::uint32_t>(bench.parser.GetSelfCheck()), value);
        // A tail that is cut would give 704.
        EXPECT_EQ(bench.Feed("<![endif]-"), 0U);
        EXPECT_EQ(bench.Feed("->"), 0U);
        EXPECT_EQ(bench.parser.EndParse(), 0U);
        EXPECT_EQ(bench.Copy(), "none");
    }
}

TEST(SelfCheckTest, BodiesOfWideSections) {
    struct Row {
        const char* note;
        const char* document;
        const char* copy;  ///< the characters that are whole; "~" stands for the first byte of two characters
        bool passes;
    };
    const Row rows[] = {
        {"an empty comment", "<!---->", "", true},
        {"a comment", "<!--ab-->", "<!--a-->", false},
        {"an open comment", "<!--ab", "<!--a", false},
        {"an open comment without a body", "<!--", "", true},
        {"a CDATA section without a body", "<![CDATA]]>", "", true},
        {"with the bracket only, and one character", "<![CDATA[x]]>", "<![CDATA[]]>", false},
        {"a conditional section without a condition", "<![endif]>", "", true},
        {"with a condition", "<![if a]>", "<![if ]>", false},
        {"with a tail", "<![endif]-->", "<![endif]->", false},
        {"in a script", "<script><!--ab--></script>", "<script><!--a--></script>", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        const std::string bytes = ToUtf16LE(std::string_view(row.document));
        Bench bench;
        bench.Start(GenericParser::DATA_STREAM_UTF16);
        EXPECT_EQ(bench.Feed(bytes), 0U);
        EXPECT_EQ(bench.parser.EndParse(), row.passes ? 0U : 704U);
        // Bodies of two characters: half of their bytes are those of the first one.
        EXPECT_EQ(bench.Copy(), row.passes ? bytes : ToUtf16LE(std::string_view(row.copy)));

        Bench narrow;
        narrow.Start();
        EXPECT_EQ(narrow.Feed(row.document), 0U);
        EXPECT_EQ(narrow.parser.EndParse(), 0U);
        EXPECT_EQ(narrow.Copy(), row.document);
    }
}

TEST(SelfCheckTest, WhatIsNotWrittenBackAsItWasRead) {
    struct Row {
        const char* note;
        std::vector<std::string> pieces;
        std::string copy;
        std::uint32_t result;
    };
    const Row rows[] = {
        {"a conditional tail that is cut", {"<![endif]-", "->"}, "<![endif]->", 704},
        {"one that lies whole in a piece", {"<![endif]", "-->"}, "<![endif]-->", 0},
        {"one that is never closed", {"<![endif]--"}, "<![endif]", 704},
        {"the blank after the slash of an XML declaration", {"<?xml a/ >"}, "<?xml a />", 704},
        {"a blank before it", {"<?xml a />"}, "<?xml a />", 0},
        {"a CDATA section that two brackets ended", {"<![CDATA[a]]b"}, "<![CDATA[a]]b", 0},
        {"an open comment", {"<!--a-", "-"}, "<!--a--", 0},
        {"a cut opener of a comment in a script", {"<script>/", "*a*/"}, "<script>/*a*/", 0},
        {"a regular expression", {"<script>a=/b", "/g", "\n"}, "<script>a=/b/g\n", 0},
        {"an attribute that took words up", {"<a b='c' d", " e>"}, "<a b='c' d e>", 0},
        {"a blank after the slash of a short tag", {"<br", "/ >"}, "<br/ >", 0},
        {"an end tag that a \"<\" ended", {"</a", "<b>"}, "</a<b>", 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        Bench bench;
        bench.Start();
        for (const std::string& piece : row.pieces)
            EXPECT_EQ(bench.Feed(piece), 0U);
        EXPECT_EQ(bench.parser.EndParse(), row.result);
        EXPECT_EQ(bench.HasEnded(), row.result == 0);
        EXPECT_EQ(bench.Copy(), row.copy);
    }
}

TEST(SelfCheckTest, AMismatchTakesOnlyTheEndOfParsingAway) {
    for (const GenericParser::SelfCheck mode : {GenericParser::SELF_CHECK_CRC, GenericParser::SELF_CHECK_COPY}) {
        Bench bench(mode);
        bench.Start();
        EXPECT_EQ(bench.Feed("a<![endif]-"), 0U);
        EXPECT_EQ(bench.Feed("-><b>c"), 0U);
        EXPECT_EQ(bench.parser.EndParse(), 704U);
        EXPECT_EQ(Join(bench.lines), "text(a)\nconditional(endif||-)\nstart(|b||)\ntext(c)\n");
        EXPECT_EQ(bench.parser.EndParse(), 0U) << "the document has ended";
        EXPECT_EQ(Join(bench.lines), "text(a)\nconditional(endif||-)\nstart(|b||)\ntext(c)\n");
        // The next document is checked by itself.
        bench.Start();
        EXPECT_EQ(bench.Feed("a<b>"), 0U);
        EXPECT_EQ(bench.parser.EndParse(), 0U);
        EXPECT_EQ(Join(bench.lines), "text(a)\nstart(|b||)\nend-parsing\n");
    }
}

TEST(SelfCheckTest, AMarkBelongsToBothSides) {
    const std::string documents[] = {"\xEF\xBB\xBF<p>x", "\xFF\xFE" + ToUtf16LE(std::string_view("<p>x")),
                                     "\xEF\xBB\xBF", "\xFF\xFE"};
    for (const std::string& document : documents) {
        const bool wide = document[0] == '\xFF';
        for (const bool observed : {true, false}) {
            SCOPED_TRACE(Trace::Escape(document));
            ForEverySplit(document, [&](const Cuts& cuts) {
                for (const std::size_t cut : cuts) {
                    if (wide && cut % 2 != 0 && cut != 1)
                        return;
                }
                Bench bench(GenericParser::SELF_CHECK_COPY, observed);
                bench.Start(GenericParser::DATA_STREAM_AUTO);
                bench.FeedAll(document, cuts);
                EXPECT_EQ(bench.parser.EndParse(), 0U);
                EXPECT_EQ(bench.Copy(), document);
            });
        }
    }
}

TEST(SelfCheckTest, BytesOfAMarkThatWasNoneAreMissedByNobody) {
    struct Row {
        const char* note;
        std::vector<std::string> pieces;
        std::string copy;
    };
    const Row rows[] = {
        {"one byte", {"\xEF", "a<b>"}, "a<b>"},
        {"two bytes", {"\xEF\xBB", "a<b>"}, "a<b>"},
        {"two pieces", {"\xEF", "\xBB", "a<b>"}, "a<b>"},
        {"of a UTF-16 mark", {"\xFF", "a<b>"}, "a<b>"},
        {"in one piece with what follows",
         {"\xEF\xBB"
          "a<b>"},
         "\xEF\xBB"
         "a<b>"},
        {"nothing else", {"\xEF"}, "none"},
        {"nothing else, two bytes", {"\xEF\xBB"}, "none"},
        {"nothing at all", {}, "none"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        Bench bench;
        bench.Start(GenericParser::DATA_STREAM_AUTO);
        for (const std::string& piece : row.pieces)
            EXPECT_EQ(bench.Feed(piece), 0U);
        EXPECT_EQ(bench.parser.EndParse(), 0U);
        EXPECT_EQ(bench.Copy(), row.copy);
    }
}

TEST(SelfCheckTest, TheCopyIsOneStreamFromItsFirstByteOn) {
    Bench bench;
    bench.Start();
    EXPECT_EQ(bench.Feed("a<b>c"), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    VFS::InputStream* const stream = bench.parser.GetSelfCheckStream();
    ASSERT_NE(stream, nullptr);
    std::uint64_t position = 1;
    EXPECT_EQ(stream->GetPosition(&position), 0U);
    EXPECT_EQ(position, 0U);
    char buffer[2] = {};
    std::uint64_t count = 0;
    EXPECT_EQ(stream->Read(buffer, 2, &count), 0U);
    EXPECT_EQ(std::string(buffer, 2), "a<");
    // Later calls answer it where it stands.
    EXPECT_EQ(bench.parser.GetSelfCheckStream(), stream);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(bench.parser.GetSelfCheckStream(), stream);
    EXPECT_EQ(ReadAll(stream, 100).bytes, "b>c");
    EXPECT_TRUE(stream->IsEnd());
}

TEST(SelfCheckTest, AnEmptyDocumentHasAnEmptyCopy) {
    for (const GenericParser::DataStreamType type :
         {GenericParser::DATA_STREAM_8BIT, GenericParser::DATA_STREAM_UTF16}) {
        Bench bench;
        bench.Start(type);
        EXPECT_EQ(bench.parser.EndParse(), 0U);
        EXPECT_EQ(bench.Copy(), "");
    }
}

TEST(SelfCheckTest, AskedForInTheMiddleTheCopyEndsThereAndTheChecksumGoesOn) {
    Bench bench;
    bench.Start();
    EXPECT_EQ(bench.Feed("a<b>pending"), 0U);
    VFS::InputStream* const stream = bench.parser.GetSelfCheckStream();
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(bench.Copy(), "a<b>") << "text that is not yet a token is not in it";
    EXPECT_EQ(bench.Feed("<c>d"), 0U);
    EXPECT_EQ(bench.parser.GetSelfCheckStream(), stream);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(bench.parser.GetSelfCheckStream(), stream);
    EXPECT_EQ(bench.Copy(), "a<b>");

    // A mismatch after it is still found.
    Bench mismatch;
    mismatch.Start();
    EXPECT_EQ(mismatch.Feed("a<b>"), 0U);
    EXPECT_EQ(mismatch.Copy(), "a<b>");
    EXPECT_EQ(mismatch.Feed("<![endif]-"), 0U);
    EXPECT_EQ(mismatch.Feed("->"), 0U);
    EXPECT_EQ(mismatch.parser.EndParse(), 704U);
    EXPECT_EQ(mismatch.Copy(), "a<b>");

    // Before the first byte it ends empty.
    Bench early;
    early.Start();
    EXPECT_EQ(early.Copy(), "");
    EXPECT_EQ(early.Feed("a<b>"), 0U);
    EXPECT_EQ(early.parser.EndParse(), 0U);
    EXPECT_EQ(early.Copy(), "");
}

TEST(SelfCheckTest, AskedForInACallbackTheCopyEndsWithItsToken) {
    Bench bench;
    std::string copy;
    bench.narrow.hook = [&](const std::string& line) {
        if (line == "start(|b||)")
            copy = bench.Copy();
    };
    bench.Start();
    EXPECT_EQ(bench.Feed("a<b><c>"), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(copy, "a<b>");
    EXPECT_EQ(bench.Copy(), "a<b>");
}

TEST(SelfCheckTest, EveryDocumentHasItsOwnCopy) {
    Bench bench;
    bench.Start();
    EXPECT_EQ(bench.Feed("<first>"), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(bench.Copy(), "<first>");
    bench.Start();
    EXPECT_EQ(bench.Copy(), "");
    bench.Start();
    EXPECT_EQ(bench.Feed("<second>"), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(bench.Copy(), "<second>");
    // That of the other parser.
    bench.Start(GenericParser::DATA_STREAM_UTF16);
    EXPECT_EQ(bench.Feed(ToUtf16LE(std::string_view("<third>"))), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(bench.Copy(), ToUtf16LE(std::string_view("<third>")));
    // Nothing runs in automatic mode before the first byte.
    bench.Start(GenericParser::DATA_STREAM_AUTO);
    EXPECT_EQ(bench.Copy(), "none");
    EXPECT_EQ(bench.Feed("<fourth>"), 0U);
    EXPECT_EQ(bench.Copy(), "<fourth>");
    // Without one, there is none left of the document before.
    bench.parser.SetSelfCheck(GenericParser::SELF_CHECK_CRC);
    bench.Start();
    EXPECT_EQ(bench.Copy(), "none");
}

TEST(SelfCheckTest, AnUnfinishedDocumentLeavesNothing) {
    Bench bench;
    bench.Start();
    EXPECT_EQ(bench.Feed("a<![endif]-"), 0U);
    EXPECT_EQ(bench.Feed("-><b"), 0U);
    bench.Start();
    EXPECT_EQ(bench.Feed("c<d>"), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(bench.Copy(), "c<d>");
}

TEST(SelfCheckTest, BytesFedAfterTheEndGoOnWithBothSides) {
    Bench bench;
    bench.Start();
    EXPECT_EQ(bench.Feed("a<b>"), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(bench.Feed("c<d>"), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(bench.Copy(), "a<b>c<d>");
}

TEST(SelfCheckTest, SwitchedInTheMiddle) {
    struct Step {
        GenericParser::SelfCheck mode;
        const char* piece;
    };
    struct Row {
        const char* note;
        std::vector<Step> steps;
        std::uint32_t result;
        std::string copy;
    };
    constexpr GenericParser::SelfCheck OFF = GenericParser::SELF_CHECK_OFF;
    constexpr GenericParser::SelfCheck CRC = GenericParser::SELF_CHECK_CRC;
    constexpr GenericParser::SelfCheck COPY = GenericParser::SELF_CHECK_COPY;
    const Row rows[] = {
        {"on, between two tokens", {{OFF, "<a>"}, {CRC, "<b>"}}, 0, "none"},
        {"on, with a token pending: it is written and was not read", {{OFF, "<a>text"}, {CRC, "<b>"}}, 704, "none"},
        {"on inside of a tag", {{OFF, "<a "}, {CRC, "b>"}}, 704, "none"},
        {"on after everything, with a token pending", {{OFF, "<a>text"}, {CRC, ""}}, 704, "none"},
        {"on after everything", {{OFF, "<a>"}, {CRC, ""}}, 0, "none"},
        {"off, with a mismatch after it", {{CRC, "<![endif]-"}, {CRC, "->"}, {OFF, "<b>"}}, 0, "none"},
        {"off and on, between two tokens", {{CRC, "<a>"}, {OFF, "<b>"}, {CRC, "<c>"}}, 0, "none"},
        {"off and on, with a token pending", {{CRC, "<a>"}, {OFF, "text"}, {CRC, "<c>"}}, 704, "none"},
        {"no copy begins in the middle", {{OFF, "<a>"}, {COPY, "<b>"}}, 0, "none"},
        {"nor when the checksum is on already", {{CRC, "<a>"}, {COPY, "<b>"}}, 0, "none"},
        {"a copy that was begun goes on", {{COPY, "<a>"}, {CRC, "<b>"}}, 0, "<a><b>"},
        {"until the self-check is off", {{COPY, "<a>"}, {OFF, "<b>"}}, 0, "<a>"},
        {"and after that", {{COPY, "<a>"}, {OFF, "<b>"}, {COPY, "<c>"}}, 0, "<a><c>"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        Bench bench(row.steps.front().mode);
        bench.Start();
        for (const Step& step : row.steps) {
            EXPECT_EQ(bench.parser.SetSelfCheck(step.mode), 0U);
            EXPECT_EQ(bench.parser.GetSelfCheck(), step.mode);
            EXPECT_EQ(bench.Feed(step.piece), 0U);
        }
        EXPECT_EQ(bench.parser.EndParse(), row.result);
        EXPECT_EQ(bench.HasEnded(), row.result == 0);
        EXPECT_EQ(bench.Copy(), row.copy);
    }
}

TEST(SelfCheckTest, AFailedConstructHasItsOwnCode) {
    struct Row {
        const char* note;
        const char* document;
        std::uint32_t parseResult;
        const char* copy;
    };
    const Row rows[] = {
        {"a failure", "a<b><!-x", 11, "a<b>"},
        {"an open construct", "a<b><c", 0, "a<b>"},
        {"an open comment of a script", "<script>a/*b", 0, "<script>a"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        Bench bench;
        bench.Start();
        EXPECT_EQ(bench.Feed(row.document), row.parseResult);
        EXPECT_EQ(bench.parser.EndParse(), 16U);
        EXPECT_FALSE(bench.HasEnded());
        EXPECT_EQ(bench.Copy(), row.copy);
    }
}

TEST(SelfCheckTest, JunkIsWrittenBack) {
    const std::string document = "a<!-x<b / >c<!d<e><?xml>f<script>//<!-g\n</script><h '";
    for (const bool wide : {false, true}) {
        const std::string bytes = wide ? ToUtf16LE(std::string_view(document)) : document;
        for (const bool owned : {false, true}) {
            Bench bench;
            bench.Start(wide ? GenericParser::DATA_STREAM_UTF16 : GenericParser::DATA_STREAM_8BIT);
            auto stream = std::make_unique<VFS::MemoryInputStream>(bytes);
            EXPECT_EQ(bench.parser.ParseStream(owned ? stream.release() : stream.get(), owned), 0U);
            EXPECT_EQ(bench.parser.EndParse(), 0U);
            EXPECT_TRUE(bench.HasEnded());
            EXPECT_EQ(bench.Copy(), bytes);
        }
    }
}

TEST(SelfCheckTest, AStopForTheCharsetEndsTheCopyWithTheTag) {
    Bench bench;
    bench.parser.SetObserver(&bench.wide, false);
    EXPECT_EQ(bench.parser.StartParse(0, GenericParser::DATA_STREAM_8BIT), 0U);
    EXPECT_EQ(bench.Feed("a<meta charset=utf-8>b<c>"), 705U);
    EXPECT_EQ(bench.parser.EndParse(), 16U);
    EXPECT_EQ(bench.Copy(), "a<meta charset=utf-8>");
    // The second pass is checked by itself.
    EXPECT_EQ(bench.parser.StartParse(bench.parser.GetCharset(), GenericParser::DATA_STREAM_8BIT), 0U);
    EXPECT_EQ(bench.Feed("a<meta charset=utf-8>b<c>"), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(bench.Copy(), "a<meta charset=utf-8>b<c>");
}

TEST(SelfCheckTest, TheDetectorsSecondPassIsCheckedByItself) {
    Base::Services services = Base::PLATFORM_SERVICES;
    services.detectCharset = [](const void*, std::uint64_t, Base::DetectedCharset* detected, std::uint32_t* count) {
        *detected = {20866, 90};
        *count = 1;
        return std::uint32_t{0};
    };
    const Base::ServicesOverride replacement(services);
    Bench bench;
    EXPECT_EQ(bench.parser.StartParse(0, GenericParser::DATA_STREAM_AUTO), 0U);
    const std::string document = std::string(300, 'a') + "<b>";
    VFS::MemoryInputStream stream(document);
    EXPECT_EQ(bench.parser.ParseStream(&stream, false), 705U);
    ASSERT_EQ(stream.Seek(0), 0U);
    EXPECT_EQ(bench.parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(bench.Copy(), document);
}

TEST(SelfCheckTest, WhatAnObserverDoesNotGetIsWrittenBackAllTheSame) {
    // In a charset without a converter, a wide observer gets only events.
    Bench bench;
    bench.parser.SetObserver(&bench.wide, false);
    EXPECT_EQ(bench.parser.StartParse(4711, GenericParser::DATA_STREAM_8BIT), 0U);
    EXPECT_EQ(bench.Feed("a<b c='\xE9'>d"), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(Join(bench.lines), "start-parsing\ncharset(4711)\nend-parsing\n");
    EXPECT_EQ(bench.Copy(), "a<b c='\xE9'>d");
}

TEST(SelfCheckTest, CopiesOfAParserNeverShareAStream) {
    enum class When { WRITING, ASKED_FOR, ENDED };
    for (const When when : {When::WRITING, When::ASKED_FOR, When::ENDED}) {
        for (const bool assigned : {false, true}) {
            SCOPED_TRACE(static_cast<int>(when));
            auto bench = std::make_unique<Bench>();
            bench->Start();
            EXPECT_EQ(bench->Feed("a<b>"), 0U);
            if (when == When::ASKED_FOR) {
                EXPECT_EQ(bench->Copy(), "a<b>");
            } else if (when == When::ENDED) {
                EXPECT_EQ(bench->parser.EndParse(), 0U);
            }
            GenericParser copy(bench->parser);
            if (assigned) {
                GenericParser other;
                other.SetSelfCheck(GenericParser::SELF_CHECK_COPY);
                other.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
                EXPECT_EQ(other.ParseBuffer("other<one>", 10), 0U);
                copy = other;
                copy = bench->parser;
            }
            copy.SetObserver(static_cast<HTML::ParserObserver<char, std::string>*>(nullptr), false);
            // Both go on, each in its own way, and both checksums still hold.
            EXPECT_EQ(copy.ParseBuffer("<copy>", 6), 0U);
            EXPECT_EQ(bench->Feed("<original>"), 0U);
            EXPECT_EQ(copy.EndParse(), 0U);
            EXPECT_EQ(bench->parser.EndParse(), 0U);
            VFS::InputStream* const stream = bench->parser.GetSelfCheckStream();
            VFS::InputStream* const streamOfCopy = copy.GetSelfCheckStream();
            ASSERT_NE(stream, nullptr);
            EXPECT_NE(stream, streamOfCopy);
            EXPECT_EQ(bench->Copy(), when == When::ASKED_FOR ? "a<b>" : "a<b><original>");
            bench.reset();
            EXPECT_EQ(copy.GetSelfCheckStream(), streamOfCopy);
            if (streamOfCopy != nullptr) {
                EXPECT_EQ(ReadAll(streamOfCopy, 100).bytes, when == When::ASKED_FOR ? "a<b>" : "a<b><copy>");
            }
            // In its next document the copy keeps what it reads.
            EXPECT_EQ(copy.StartParse(1252, GenericParser::DATA_STREAM_8BIT), 0U);
            EXPECT_EQ(copy.ParseBuffer("<next>", 6), 0U);
            EXPECT_EQ(copy.EndParse(), 0U);
            ASSERT_NE(copy.GetSelfCheckStream(), nullptr);
            EXPECT_EQ(ReadAll(copy.GetSelfCheckStream(), 100).bytes, "<next>");
        }
    }
}

TEST(SelfCheckTest, ACopyOfAParserFindsItsOwnMismatch) {
    Bench bench(GenericParser::SELF_CHECK_CRC);
    bench.Start();
    EXPECT_EQ(bench.Feed("a<![endif]-"), 0U);
    GenericParser copy(bench.parser);
    copy.SetObserver(static_cast<HTML::ParserObserver<char, std::string>*>(nullptr), false);
    EXPECT_EQ(copy.ParseBuffer("->", 2), 0U);
    EXPECT_EQ(bench.Feed(">"), 0U);
    EXPECT_EQ(copy.EndParse(), 704U);
    EXPECT_EQ(bench.parser.EndParse(), 704U);
    GenericParser whole(bench.parser);
    EXPECT_EQ(whole.EndParse(), 0U) << "a copy of an ended document has ended too";
}

TEST(SelfCheckTest, AParserAssignedToItselfKeepsItsCopy) {
    Bench bench;
    bench.Start();
    EXPECT_EQ(bench.Feed("a<b>"), 0U);
    const GenericParser& self = bench.parser;
    bench.parser = self;
    EXPECT_EQ(bench.Feed("c"), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_EQ(bench.Copy(), "a<b>c");
}

/// A document of about `size` characters, with tokens of many kinds and lengths.
std::string MakeLongDocument(std::size_t size) {
    std::string document;
    for (std::size_t i = 0; document.size() < size; ++i) {
        document += "<p id='" + std::to_string(i) + "'>" + std::string(i % 700, 'x') + "</p>\n";
        if (i % 100 == 0)
            document += "<script>'" + std::string(20000, 's') + "'/*c*/</script><!---->";
    }
    return document;
}

TEST(SelfCheckTest, ALongCopyGoesBeyondTheMemoryKeptForIt) {
    // 8 MiB, twice what is kept in memory.
    const std::string document = MakeLongDocument(std::size_t{8} << 20);
    {
        Bench bench(GenericParser::SELF_CHECK_COPY, false);
        bench.Start();
        VFS::MemoryInputStream stream(document);
        EXPECT_EQ(bench.parser.ParseStream(&stream, false), 0U);
        EXPECT_EQ(bench.parser.EndParse(), 0U);
        EXPECT_TRUE(bench.Copy() == document);
    }
    const std::string wide = ToUtf16LE(MakeLongDocument(std::size_t{4} << 20));
    Bench bench(GenericParser::SELF_CHECK_COPY, false);
    bench.Start(GenericParser::DATA_STREAM_UTF16);
    VFS::MemoryInputStream stream(wide);
    EXPECT_EQ(bench.parser.ParseStream(&stream, false), 0U);
    EXPECT_EQ(bench.parser.EndParse(), 0U);
    EXPECT_TRUE(bench.Copy() == wide);
}

}  // namespace
}  // namespace Kestra::Test
