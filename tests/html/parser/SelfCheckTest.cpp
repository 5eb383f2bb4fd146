#include "platform/Services.h"
#include "tests/html/parser/DocumentRows.h"

// The self-check: the tokens written back are compared with what was read, and kept on demand.

namespace Kestra::Test {
namespace {

/// A parser with the self-check that is fed step by step; its observers write down what they are
/// given.
class Bench : public FedParser {
public:
    explicit Bench(SelfCheck check = SELF_CHECK_COPY, Observed observed = Observed::NARROW) : FedParser(observed) {
        SetSelfCheck(check);
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
        VFS::InputStream* const stream = GetSelfCheckStream();
        if (stream == nullptr)
            return "none";
        EXPECT_EQ(stream->Seek(0), 0U);
        const StreamContent content = ReadAll(stream, 1000);
        EXPECT_EQ(content.result, static_cast<std::uint32_t>(RESULT_END_OF_DATA));
        return content.bytes;
    }
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
                for (const GenericParser::SelfCheck mode : {SELF_CHECK_OFF, SELF_CHECK_CRC, SELF_CHECK_COPY}) {
                    Bench bench(mode, observed ? Observed::NARROW : Observed::NOBODY);
                    bench.StartSilently();
                    EXPECT_EQ(bench.GetSelfCheck(), mode);
                    bench.FeedAll(document, cuts);
                    EXPECT_EQ(bench.EndParse(), 0U);
                    EXPECT_EQ(bench.HasEnded(), observed);
                    EXPECT_EQ(bench.Copy(), mode == SELF_CHECK_COPY ? document : "none");
                    EXPECT_EQ(bench.Copy(), mode == SELF_CHECK_COPY ? document : "none");
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
            for (const GenericParser::SelfCheck mode : {SELF_CHECK_OFF, SELF_CHECK_CRC, SELF_CHECK_COPY}) {
                const bool checks = mode != SELF_CHECK_OFF;
                Bench bench(mode);
                bench.StartSilently(1252, DATA_STREAM_UTF16);
                bench.FeedAll(bytes, Scaled(cuts, 2));
                EXPECT_EQ(bench.EndParse(), passes || !checks ? 0U : 704U);
                EXPECT_EQ(bench.HasEnded(), passes || !checks);
                if (mode != SELF_CHECK_COPY) {
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
        bench.StartSilently();
        EXPECT_EQ(static_cast<std::uint32_t>(bench.GetSelfCheck()), value);
        // A tail that is cut would give 704.
        EXPECT_EQ(bench.Feed("<![endif]-"), 0U);
        EXPECT_EQ(bench.Feed("->"), 0U);
        EXPECT_EQ(bench.EndParse(), 0U);
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
        bench.StartSilently(1252, DATA_STREAM_UTF16);
        EXPECT_EQ(bench.Feed(bytes), 0U);
        EXPECT_EQ(bench.EndParse(), row.passes ? 0U : 704U);
        // Bodies of two characters: half of their bytes are those of the first one.
        EXPECT_EQ(bench.Copy(), row.passes ? bytes : ToUtf16LE(std::string_view(row.copy)));

        Bench narrow;
        narrow.StartSilently();
        EXPECT_EQ(narrow.Feed(row.document), 0U);
        EXPECT_EQ(narrow.EndParse(), 0U);
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
        bench.StartSilently();
        for (const std::string& piece : row.pieces)
            EXPECT_EQ(bench.Feed(piece), 0U);
        EXPECT_EQ(bench.EndParse(), row.result);
        EXPECT_EQ(bench.HasEnded(), row.result == 0);
        EXPECT_EQ(bench.Copy(), row.copy);
    }
}

TEST(SelfCheckTest, AMismatchTakesOnlyTheEndOfParsingAway) {
    for (const GenericParser::SelfCheck mode : {SELF_CHECK_CRC, SELF_CHECK_COPY}) {
        Bench bench(mode);
        bench.StartSilently();
        EXPECT_EQ(bench.Feed("a<![endif]-"), 0U);
        EXPECT_EQ(bench.Feed("-><b>c"), 0U);
        EXPECT_EQ(bench.EndParse(), 704U);
        EXPECT_EQ(Join(bench.lines), "text(a)\nconditional(endif||-)\nstart(|b||)\ntext(c)\n");
        EXPECT_EQ(bench.EndParse(), 0U) << "the document has ended";
        EXPECT_EQ(Join(bench.lines), "text(a)\nconditional(endif||-)\nstart(|b||)\ntext(c)\n");
        // The next document is checked by itself.
        bench.StartSilently();
        EXPECT_EQ(bench.Feed("a<b>"), 0U);
        EXPECT_EQ(bench.EndParse(), 0U);
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
                Bench bench(SELF_CHECK_COPY, observed ? Observed::NARROW : Observed::NOBODY);
                bench.StartSilently(1252, DATA_STREAM_AUTO);
                bench.FeedAll(document, cuts);
                EXPECT_EQ(bench.EndParse(), 0U);
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
        bench.StartSilently(1252, DATA_STREAM_AUTO);
        for (const std::string& piece : row.pieces)
            EXPECT_EQ(bench.Feed(piece), 0U);
        EXPECT_EQ(bench.EndParse(), 0U);
        EXPECT_EQ(bench.Copy(), row.copy);
    }
}

TEST(SelfCheckTest, TheCopyIsOneStreamFromItsFirstByteOn) {
    Bench bench;
    bench.StartSilently();
    EXPECT_EQ(bench.Feed("a<b>c"), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
    VFS::InputStream* const stream = bench.GetSelfCheckStream();
    ASSERT_NE(stream, nullptr);
    std::uint64_t position = 1;
    EXPECT_EQ(stream->GetPosition(&position), 0U);
    EXPECT_EQ(position, 0U);
    char buffer[2] = {};
    std::uint64_t count = 0;
    EXPECT_EQ(stream->Read(buffer, 2, &count), 0U);
    EXPECT_EQ(std::string(buffer, 2), "a<");
    // Later calls answer it where it stands.
    EXPECT_EQ(bench.GetSelfCheckStream(), stream);
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_EQ(bench.GetSelfCheckStream(), stream);
    EXPECT_EQ(ReadAll(stream, 100).bytes, "b>c");
    EXPECT_TRUE(stream->IsEnd());
}

TEST(SelfCheckTest, AnEmptyDocumentHasAnEmptyCopy) {
    for (const GenericParser::DataStreamType type : {DATA_STREAM_8BIT, DATA_STREAM_UTF16}) {
        Bench bench;
        bench.StartSilently(1252, type);
        EXPECT_EQ(bench.EndParse(), 0U);
        EXPECT_EQ(bench.Copy(), "");
    }
}

TEST(SelfCheckTest, AskedForInTheMiddleTheCopyEndsThereAndTheChecksumGoesOn) {
    Bench bench;
    bench.StartSilently();
    EXPECT_EQ(bench.Feed("a<b>pending"), 0U);
    VFS::InputStream* const stream = bench.GetSelfCheckStream();
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(bench.Copy(), "a<b>") << "text that is not yet a token is not in it";
    EXPECT_EQ(bench.Feed("<c>d"), 0U);
    EXPECT_EQ(bench.GetSelfCheckStream(), stream);
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_EQ(bench.GetSelfCheckStream(), stream);
    EXPECT_EQ(bench.Copy(), "a<b>");

    // A mismatch after it is still found.
    Bench mismatch;
    mismatch.StartSilently();
    EXPECT_EQ(mismatch.Feed("a<b>"), 0U);
    EXPECT_EQ(mismatch.Copy(), "a<b>");
    EXPECT_EQ(mismatch.Feed("<![endif]-"), 0U);
    EXPECT_EQ(mismatch.Feed("->"), 0U);
    EXPECT_EQ(mismatch.EndParse(), 704U);
    EXPECT_EQ(mismatch.Copy(), "a<b>");

    // Before the first byte it ends empty.
    Bench early;
    early.StartSilently();
    EXPECT_EQ(early.Copy(), "");
    EXPECT_EQ(early.Feed("a<b>"), 0U);
    EXPECT_EQ(early.EndParse(), 0U);
    EXPECT_EQ(early.Copy(), "");
}

TEST(SelfCheckTest, AskedForInACallbackTheCopyEndsWithItsToken) {
    Bench bench;
    std::string copy;
    bench.narrow.hook = [&](const std::string& line) {
        if (line == "start(|b||)")
            copy = bench.Copy();
    };
    bench.StartSilently();
    EXPECT_EQ(bench.Feed("a<b><c>"), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_EQ(copy, "a<b>");
    EXPECT_EQ(bench.Copy(), "a<b>");
}

TEST(SelfCheckTest, EveryDocumentHasItsOwnCopy) {
    Bench bench;
    bench.StartSilently();
    EXPECT_EQ(bench.Feed("<first>"), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_EQ(bench.Copy(), "<first>");
    bench.StartSilently();
    EXPECT_EQ(bench.Copy(), "");
    bench.StartSilently();
    EXPECT_EQ(bench.Feed("<second>"), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_EQ(bench.Copy(), "<second>");
    // That of the other parser.
    bench.StartSilently(1252, DATA_STREAM_UTF16);
    EXPECT_EQ(bench.Feed(ToUtf16LE(std::string_view("<third>"))), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_EQ(bench.Copy(), ToUtf16LE(std::string_view("<third>")));
    // Nothing runs in automatic mode before the first byte.
    bench.StartSilently(1252, DATA_STREAM_AUTO);
    EXPECT_EQ(bench.Copy(), "none");
    EXPECT_EQ(bench.Feed("<fourth>"), 0U);
    EXPECT_EQ(bench.Copy(), "<fourth>");
    // Without one, there is none left of the document before.
    bench.SetSelfCheck(SELF_CHECK_CRC);
    bench.StartSilently();
    EXPECT_EQ(bench.Copy(), "none");
}

TEST(SelfCheckTest, AnUnfinishedDocumentLeavesNothing) {
    Bench bench;
    bench.StartSilently();
    EXPECT_EQ(bench.Feed("a<![endif]-"), 0U);
    EXPECT_EQ(bench.Feed("-><b"), 0U);
    bench.StartSilently();
    EXPECT_EQ(bench.Feed("c<d>"), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_EQ(bench.Copy(), "c<d>");
}

TEST(SelfCheckTest, BytesFedAfterTheEndGoOnWithBothSides) {
    Bench bench;
    bench.StartSilently();
    EXPECT_EQ(bench.Feed("a<b>"), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_EQ(bench.Feed("c<d>"), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
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
    constexpr GenericParser::SelfCheck OFF = SELF_CHECK_OFF;
    constexpr GenericParser::SelfCheck CRC = SELF_CHECK_CRC;
    constexpr GenericParser::SelfCheck COPY = SELF_CHECK_COPY;
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
        bench.StartSilently();
        for (const Step& step : row.steps) {
            EXPECT_EQ(bench.SetSelfCheck(step.mode), 0U);
            EXPECT_EQ(bench.GetSelfCheck(), step.mode);
            EXPECT_EQ(bench.Feed(step.piece), 0U);
        }
        EXPECT_EQ(bench.EndParse(), row.result);
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
        bench.StartSilently();
        EXPECT_EQ(bench.Feed(row.document), row.parseResult);
        EXPECT_EQ(bench.EndParse(), 16U);
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
            bench.StartSilently(1252, TypeFor(wide));
            EXPECT_EQ(bench.FeedStream(bytes, owned), 0U);
            EXPECT_EQ(bench.EndParse(), 0U);
            EXPECT_TRUE(bench.HasEnded());
            EXPECT_EQ(bench.Copy(), bytes);
        }
    }
}

TEST(SelfCheckTest, AStopForTheCharsetEndsTheCopyWithTheTag) {
    Bench bench;
    bench.SetObserver(&bench.wide, false);
    bench.Start(0);
    EXPECT_EQ(bench.Feed("a<meta charset=utf-8>b<c>"), 705U);
    EXPECT_EQ(bench.EndParse(), 16U);
    EXPECT_EQ(bench.Copy(), "a<meta charset=utf-8>");
    // The second pass is checked by itself.
    bench.Start(bench.GetCharset());
    EXPECT_EQ(bench.Feed("a<meta charset=utf-8>b<c>"), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
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
    bench.Start(0, DATA_STREAM_AUTO);
    const std::string document = std::string(300, 'a') + "<b>";
    EXPECT_EQ(bench.FeedStream(document), 705U);
    EXPECT_EQ(bench.FeedStream(document), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_EQ(bench.Copy(), document);
}

TEST(SelfCheckTest, WhatAnObserverDoesNotGetIsWrittenBackAllTheSame) {
    // In a charset without a converter, a wide observer gets only events.
    Bench bench;
    bench.SetObserver(&bench.wide, false);
    bench.Start(4711);
    EXPECT_EQ(bench.Feed("a<b c='\xE9'>d"), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_EQ(Join(bench.lines), "start-parsing\ncharset(4711)\nend-parsing\n");
    EXPECT_EQ(bench.Copy(), "a<b c='\xE9'>d");
}

TEST(SelfCheckTest, CopiesOfAParserNeverShareAStream) {
    enum class When { WRITING, ASKED_FOR, ENDED };
    for (const When when : {When::WRITING, When::ASKED_FOR, When::ENDED}) {
        for (const bool assigned : {false, true}) {
            SCOPED_TRACE(static_cast<int>(when));
            auto bench = std::make_unique<Bench>();
            bench->StartSilently();
            EXPECT_EQ(bench->Feed("a<b>"), 0U);
            if (when == When::ASKED_FOR) {
                EXPECT_EQ(bench->Copy(), "a<b>");
            } else if (when == When::ENDED) {
                EXPECT_EQ(bench->EndParse(), 0U);
            }
            GenericParser copy(*bench);
            if (assigned) {
                GenericParser other;
                other.SetSelfCheck(SELF_CHECK_COPY);
                other.StartParse(1252, DATA_STREAM_8BIT);
                EXPECT_EQ(other.ParseBuffer("other<one>", 10), 0U);
                copy = other;
                copy = *bench;
            }
            UnbindObserver(&copy);
            // Both go on, each in its own way, and both checksums still hold.
            EXPECT_EQ(copy.ParseBuffer("<copy>", 6), 0U);
            EXPECT_EQ(bench->Feed("<original>"), 0U);
            EXPECT_EQ(copy.EndParse(), 0U);
            EXPECT_EQ(bench->EndParse(), 0U);
            VFS::InputStream* const stream = bench->GetSelfCheckStream();
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
            EXPECT_EQ(copy.StartParse(1252, DATA_STREAM_8BIT), 0U);
            EXPECT_EQ(copy.ParseBuffer("<next>", 6), 0U);
            EXPECT_EQ(copy.EndParse(), 0U);
            ASSERT_NE(copy.GetSelfCheckStream(), nullptr);
            EXPECT_EQ(ReadAll(copy.GetSelfCheckStream(), 100).bytes, "<next>");
        }
    }
}

TEST(SelfCheckTest, ACopyOfAParserFindsItsOwnMismatch) {
    Bench bench(SELF_CHECK_CRC);
    bench.StartSilently();
    EXPECT_EQ(bench.Feed("a<![endif]-"), 0U);
    GenericParser copy(bench);
    UnbindObserver(&copy);
    EXPECT_EQ(copy.ParseBuffer("->", 2), 0U);
    EXPECT_EQ(bench.Feed(">"), 0U);
    EXPECT_EQ(copy.EndParse(), 704U);
    EXPECT_EQ(bench.EndParse(), 704U);
    GenericParser whole(bench);
    EXPECT_EQ(whole.EndParse(), 0U) << "a copy of an ended document has ended too";
}

TEST(SelfCheckTest, AParserAssignedToItselfKeepsItsCopy) {
    Bench bench;
    bench.StartSilently();
    EXPECT_EQ(bench.Feed("a<b>"), 0U);
    const GenericParser& self = bench;
    bench.GenericParser::operator=(self);
    EXPECT_EQ(bench.Feed("c"), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
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
        Bench bench(SELF_CHECK_COPY, Observed::NOBODY);
        bench.StartSilently();
        EXPECT_EQ(bench.FeedStream(document), 0U);
        EXPECT_EQ(bench.EndParse(), 0U);
        EXPECT_TRUE(bench.Copy() == document);
    }
    const std::string wide = ToUtf16LE(MakeLongDocument(std::size_t{4} << 20));
    Bench bench(SELF_CHECK_COPY, Observed::NOBODY);
    bench.StartSilently(1252, DATA_STREAM_UTF16);
    EXPECT_EQ(bench.FeedStream(wide), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_TRUE(bench.Copy() == wide);
}

}  // namespace
}  // namespace Kestra::Test
