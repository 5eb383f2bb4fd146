#include "tests/html/parser/DocumentRows.h"
#include "tests/support/Pieces.h"

namespace Kestra::Test {
namespace {

constexpr Observed OBSERVED[] = {Observed::NARROW, Observed::WIDE};

DocumentSettings Automatic(StringNS::CharSet::Code charset, Observed observed, Feed feed = Feed::BUFFER) {
    DocumentSettings settings;
    settings.charset = charset;
    settings.type = DATA_STREAM_AUTO;
    settings.observed = observed;
    settings.feed = feed;
    return settings;
}

TEST(ByteOrderMarkTest, AWholeUtf8MarkAtEverySplit) {
    const std::string bytes = "\xEF\xBB\xBF<p>";
    for (const Observed observed : OBSERVED) {
        for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
            ForEverySplit(bytes, [&](const Cuts& cuts) {
                const DocumentRun run = ParseDocument(bytes, cuts, Automatic(1252, observed, feed));
                EXPECT_EQ(run.Lines(), Join({"start-parsing", "bom(EF BB BF)", "start(|p||)", "end-parsing"}));
                ExpectSuccess(run);
                EXPECT_EQ(run.charset, 65001U);
                EXPECT_FALSE(run.isWide);
                EXPECT_EQ(run.line, 1U);
                EXPECT_EQ(run.column, 4U);
                EXPECT_EQ(run.output,
                          observed == Observed::NARROW ? bytes : "\xEF\xBB\xBF" + ToUtf16LE(std::string_view("<p>")));
            });
        }
    }
}

TEST(ByteOrderMarkTest, AWholeUtf16MarkAtEverySplit) {
    const std::string bytes = "\xFF\xFE" + ToUtf16LE(std::string_view("<p>\n"));
    for (const Observed observed : OBSERVED) {
        for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
            ForEverySplit(bytes, [&](const Cuts& cuts) {
                for (const std::size_t cut : cuts) {
                    if (cut % 2 != 0 && cut != 1)
                        return;
                }
                const DocumentRun run = ParseDocument(bytes, cuts, Automatic(0, observed, feed));
                const Lines expected =
                    observed == Observed::WIDE
                        ? Lines{"start-parsing", "bom(FF FE)", "start(|p||)", "text(\\n)", "end-parsing"}
                        : Lines{"start-parsing", "bom(FF FE)", "start(|p\\x00||)", "text(\\n\\x00)", "end-parsing"};
                EXPECT_EQ(run.Lines(), Join(expected));
                ExpectSuccess(run);
                EXPECT_EQ(run.charset, 1200U);
                EXPECT_TRUE(run.isWide);
                EXPECT_EQ(run.line, 2U);
                EXPECT_EQ(run.column, 1U);
            });
        }
    }
}

TEST(ByteOrderMarkTest, MarksAndWhatIsNone) {
    struct Row {
        const char* note;
        std::vector<std::string> pieces;
        Tokens lines;  ///< for an 8-bit observer, without the end
        std::uint32_t result;
        StringNS::CharSet::Code charset;
    };
    const Row rows[] = {
        {"a mark alone", {"\xEF\xBB\xBF"}, "start-parsing\nbom(EF BB BF)", 0, 65001},
        {"a UTF-16 mark alone", {"\xFF\xFE"}, "start-parsing\nbom(FF FE)", 0, 1200},
        {"a second mark is text", {"\xEF\xBB\xBF\xEF\xBB\xBF"}, "start-parsing\nbom(EF BB BF)", 0, 65001},
        {"EF and no mark",
         {"\xEF"
          "A<b>"},
         "start-parsing\ntext(\\xEFA)\nstart(|b||)",
         0,
         1252},
        {"EF BB and no mark",
         {"\xEF\xBB"
          "A<b>"},
         "start-parsing\ntext(\\xEF\\xBBA)\nstart(|b||)",
         0,
         1252},
        {"FF and no mark",
         {"\xFF"
          "A<b>"},
         "start-parsing\ntext(\\xFFA)\nstart(|b||)",
         0,
         1252},
        {"FF FF", {"\xFF\xFF\xFE<b>"}, "start-parsing\ntext(\\xFF\\xFF\\xFE)\nstart(|b||)", 0, 1252},
        {"EF in a piece of its own is lost when no mark follows",
         {"\xEF", "A<b>"},
         "start-parsing\ntext(A)\nstart(|b||)",
         0,
         1252},
        {"so are EF BB", {"\xEF\xBB", "A<b>"}, "start-parsing\ntext(A)\nstart(|b||)", 0, 1252},
        {"of EF, BB A the first byte is lost",
         {"\xEF",
          "\xBB"
          "A<b>"},
         "start-parsing\ntext(\\xBBA)\nstart(|b||)",
         0,
         1252},
        {"of EF, BB, A two bytes are", {"\xEF", "\xBB", "A<b>"}, "start-parsing\ntext(A)\nstart(|b||)", 0, 1252},
        {"FF in a piece of its own is lost", {"\xFF", "A<b>"}, "start-parsing\ntext(A)\nstart(|b||)", 0, 1252},
        {"EF, then a mark of its own is text",
         {"\xEF", "\xEF\xBB\xBF<b>"},
         "start-parsing\ntext(\\xEF\\xBB\\xBF)\nstart(|b||)",
         0,
         1252},
        {"FF, then EF BB BF",
         {"\xFF", "\xEF\xBB\xBF<b>"},
         "start-parsing\ntext(\\xEF\\xBB\\xBF)\nstart(|b||)",
         0,
         1252},
        {"a big-endian mark is none", {"\xFE\xFF<b>"}, "start-parsing\ntext(\\xFE\\xFF)\nstart(|b||)", 0, 1252},
        {"a mark after a character is none",
         {"A\xEF\xBB\xBF<b>"},
         "start-parsing\ntext(A\\xEF\\xBB\\xBF)\nstart(|b||)",
         0,
         1252},
        {"empty pieces before and inside the mark",
         {"", "\xEF", "", "\xBB", "", "\xBF", "", "<b>"},
         "start-parsing\nbom(EF BB BF)\nstart(|b||)",
         0,
         65001},
        {"the mark in three pieces, the document in the last",
         {"\xEF", "\xBB", "\xBF<b>"},
         "start-parsing\nbom(EF BB BF)\nstart(|b||)",
         0,
         65001},
        {"an odd number of bytes after a UTF-16 mark", {"\xFF\xFE<"}, "start-parsing\nbom(FF FE)", 2, 1200},
        {"an odd number in the piece that ends the mark", {"\xFF", "\xFE<"}, "start-parsing\nbom(FF FE)", 2, 1200},
        {"a later piece with an odd number",
         {"\xFF\xFE", std::string("<\0p\0>", 5)},
         "start-parsing\nbom(FF FE)",
         2,
         1200},
        {"nothing but empty pieces", {"", ""}, {}, 0, 1252},
        {"the first byte of a mark alone", {"\xEF"}, {}, 0, 1252},
        {"two bytes of a mark alone", {"\xEF\xBB"}, {}, 0, 1252},
        {"the first byte of a UTF-16 mark alone", {"\xFF"}, {}, 0, 1252},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        FedParser parser;
        parser.Start(1252, DATA_STREAM_AUTO);
        std::uint32_t result = 0;
        for (const std::string& bytes : row.pieces) {
            EXPECT_EQ(result, 0U);
            const HeapPiece<char> piece{std::string_view(bytes)};
            result = parser.ParseBuffer(piece.Data(), piece.Size());
        }
        EXPECT_EQ(result, row.result);
        EXPECT_EQ(parser.GetCharset(), row.charset);
        EXPECT_EQ(Join(parser.lines), Join(row.lines));
        const bool running = !row.lines.empty();
        parser.lines.clear();
        EXPECT_EQ(parser.EndParse(), 0U);
        if (!running)
            EXPECT_EQ(Join(parser.lines), "");
        else
            EXPECT_EQ(parser.lines.back(), "end-parsing");
        EXPECT_EQ(parser.GetCurrentParserName().empty(), !running);
    }
}

TEST(ByteOrderMarkTest, ASecondMarkIsText) {
    const std::string bytes = "\xEF\xBB\xBF\xEF\xBB\xBF";
    ForEverySplit(bytes, [&](const Cuts& cuts) {
        const DocumentRun narrow = ParseDocument(bytes, cuts, Automatic(0, Observed::NARROW));
        EXPECT_EQ(narrow.Lines(), Join({"start-parsing", "bom(EF BB BF)", "text(\\xEF\\xBB\\xBF)", "end-parsing"}));
        const DocumentRun wide = ParseDocument(bytes, cuts, Automatic(0, Observed::WIDE));
        EXPECT_EQ(wide.Lines(), Join({"start-parsing", "bom(EF BB BF)", "text(\\uFEFF)", "end-parsing"}));
    });
}

TEST(ByteOrderMarkTest, ThePlaceOfTheMarkIsNotCounted) {
    const DocumentRun run = ParseDocument(
        "\xEF\xBB\xBF"
        "ab",
        {}, Automatic(0, Observed::NARROW));
    EXPECT_EQ(run.line, 1U);
    EXPECT_EQ(run.column, 3U);
}

TEST(ByteOrderMarkTest, WithAKnownTypeAMarkIsText) {
    DocumentSettings settings = SettingsFor(NARROW_TO_NARROW);
    const DocumentRun narrow = ParseDocument("\xEF\xBB\xBF<p>", {}, settings);
    EXPECT_EQ(narrow.Lines(),
              Join({"start-parsing", "charset(1252)", "text(\\xEF\\xBB\\xBF)", "start(|p||)", "end-parsing"}));
    settings = SettingsFor(WIDE_TO_WIDE);
    const DocumentRun wide = ParseDocument("\xFF\xFE" + ToUtf16LE(std::string_view("<p>")), {}, settings);
    EXPECT_EQ(wide.Lines(), Join({"start-parsing", "charset(1200)", "text(\\uFEFF)", "start(|p||)", "end-parsing"}));
}

TEST(StartParseTest, CharsetAndTypeDecideTheParser) {
    struct Row {
        const char* note;
        StringNS::CharSet::Code code;
        std::uint32_t type;
        Tokens lines;  ///< for an 8-bit observer of the input "a", "\0"
        StringNS::CharSet::Code charset;
        bool wide;
    };
    const Row rows[] = {
        {"8-bit in a charset", 1251, 1, "start-parsing\ncharset(1251)\ntext(a\\x00)", 1251, false},
        {"8-bit, charset unknown", 0, 1, "start-parsing\ncharset(0)\ntext(a\\x00)", 0, false},
        {"UTF-7 is read as 1252", 65000, 1, "start-parsing\ncharset(1252)\ntext(a\\x00)", 1252, false},
        {"UTF-16", 1200, 2, "start-parsing\ncharset(1200)\ntext(a\\x00)", 1200, true},
        {"UTF-16 whatever the charset says", 65001, 2, "start-parsing\ncharset(1200)\ntext(a\\x00)", 1200, true},
        {"automatic: the charset is not announced", 1251, 0, "start-parsing\ntext(a\\x00)", 1251, false},
        {"automatic and unknown", 0, 0, "start-parsing\ntext(a\\x00)", 0, false},
        {"automatic: UTF-7 is read as 1252", 65000, 0, "start-parsing\ntext(a\\x00)", 1252, false},
        {"every other type is automatic", 1251, 3, "start-parsing\ntext(a\\x00)", 1251, false},
        {"the highest type too", 1251, 0xFFFFFFFF, "start-parsing\ntext(a\\x00)", 1251, false},
        {"a charset that nobody knows", 4711, 1, "start-parsing\ncharset(4711)\ntext(a\\x00)", 4711, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        FedParser parser;
        parser.Start(row.code, static_cast<GenericParser::DataStreamType>(row.type));
        const bool automatic = row.type != 1 && row.type != 2;
        EXPECT_EQ(Join(parser.lines), automatic ? "" : row.lines[0] + "\n" + row.lines[1] + "\n");
        EXPECT_EQ(parser.IsWParser(), row.wide);
        EXPECT_EQ(parser.GetCharset(), automatic ? row.code : row.charset);
        EXPECT_EQ(parser.ParseBuffer("a\0", 2), 0U);
        EXPECT_EQ(parser.GetCharset(), row.charset);
        EXPECT_EQ(parser.IsWParser(), row.wide);
        EXPECT_FALSE(parser.WasCharsetDetectorUsed());
        EXPECT_FALSE(parser.NeedsReparsing());
        EXPECT_EQ(parser.EndParse(), 0U);
        Lines expected = row.lines;
        expected.push_back("end-parsing");
        EXPECT_EQ(Join(parser.lines), Join(expected));
    }
}

TEST(StartParseTest, WideObserversHearTheSameEvents) {
    for (const Observed observed : OBSERVED) {
        DocumentSettings settings = Automatic(65000, observed);
        settings.type = DATA_STREAM_8BIT;
        EXPECT_EQ(ParseDocument("", {}, settings).Lines(), Join({"start-parsing", "charset(1252)", "end-parsing"}));
        settings.type = DATA_STREAM_UTF16;
        EXPECT_EQ(ParseDocument("", {}, settings).Lines(), Join({"start-parsing", "charset(1200)", "end-parsing"}));
    }
}

TEST(StartParseTest, WithoutAnObserverADocumentIsParsedAllTheSame) {
    for (const Route& route : {Route{"8-bit", false, Observed::NOBODY}, Route{"wide", true, Observed::NOBODY}}) {
        const std::string document = EVERY_CALLBACK;
        ForEverySplit(document, [&](const Cuts& cuts) {
            const DocumentRun run = ParseBy(route, document, cuts, SettingsFor(route, Feed::STREAM));
            ExpectSuccess(run);
            EXPECT_EQ(run.column, document.size() + 1);
        });
        EXPECT_EQ(ParseBy(route, document, {}, SettingsFor(route)).parseResult, 11U);
    }
}

TEST(StartParseTest, WithoutARunningParserTheQueriesHaveTheirOwnAnswers) {
    const auto expectNoParser = [](GenericParser* parser, StringNS::CharSet::Code charset) {
        EXPECT_EQ(parser->GetLine(), 1U);
        EXPECT_EQ(parser->GetColumn(), 1U);
        EXPECT_TRUE(parser->GetCurrentParserName().empty());
        EXPECT_EQ(parser->GetCharset(), charset);
        EXPECT_EQ(parser->GetSelfCheck(), SELF_CHECK_OFF);
        EXPECT_FALSE(parser->HasCharsetErrors());
        EXPECT_FALSE(parser->NeedsReparsing());
        EXPECT_FALSE(parser->WasCharsetDetectorUsed());
        EXPECT_FALSE(parser->GetDetectCharsetErrors());
        EXPECT_FALSE(parser->IsWParser());
        EXPECT_EQ(parser->GetSelfCheckStream(), nullptr);
    };
    GenericParser parser;
    EXPECT_EQ(parser.SetDetectCharsetErrors(true), 0U);
    EXPECT_EQ(parser.SetSelfCheck(SELF_CHECK_CRC), 0U);
    expectNoParser(&parser, 0);
    EXPECT_EQ(parser.GetChrDetMinConfidence(), GenericParser::DETECTCHARSET_MIN_CONFIDENCE);

    // `EndParse` and `StartParse` in automatic mode do not make one run.
    EXPECT_EQ(parser.EndParse(), 0U);
    expectNoParser(&parser, 0);
    EXPECT_EQ(parser.StartParse(1251, DATA_STREAM_AUTO), 0U);
    expectNoParser(&parser, 1251);
    EXPECT_EQ(parser.ParseBuffer("\xEF", 1), 0U);
    expectNoParser(&parser, 1251);
    EXPECT_EQ(parser.StartParse(65000, DATA_STREAM_AUTO), 0U);
    expectNoParser(&parser, 65000);

    // The setters have reached both parsers.
    for (const GenericParser::DataStreamType type : {DATA_STREAM_8BIT, DATA_STREAM_UTF16}) {
        EXPECT_EQ(parser.StartParse(1252, type), 0U);
        EXPECT_TRUE(parser.GetDetectCharsetErrors());
        EXPECT_EQ(parser.GetSelfCheck(), SELF_CHECK_CRC);
        const WideString name = parser.GetCurrentParserName();
        EXPECT_EQ(std::string(name.begin(), name.end()), "TextSimpleParser");
    }

    // A parser that ran no longer runs after an automatic `StartParse`.
    EXPECT_EQ(parser.ParseBuffer("a\n\n\0", 4), 0U);
    EXPECT_EQ(parser.StartParse(1250, DATA_STREAM_AUTO), 0U);
    expectNoParser(&parser, 1250);
}

TEST(StartParseTest, Settings) {
    GenericParser parser;
    EXPECT_EQ(parser.SetChrDetMinConfidence(77), 0U);
    EXPECT_EQ(parser.GetChrDetMinConfidence(), 77U);
    EXPECT_EQ(parser.StartParse(1252, DATA_STREAM_8BIT), 0U);
    EXPECT_EQ(parser.GetChrDetMinConfidence(), 77U);
    for (const GenericParser::SelfCheck check : {SELF_CHECK_CRC, SELF_CHECK_COPY, SELF_CHECK_OFF}) {
        EXPECT_EQ(parser.SetSelfCheck(check), 0U);
        EXPECT_EQ(parser.GetSelfCheck(), check);
    }
    EXPECT_FALSE(parser.GetDetectCharsetErrors());
    EXPECT_EQ(parser.SetDetectCharsetErrors(true), 0U);
    EXPECT_TRUE(parser.GetDetectCharsetErrors());
    EXPECT_EQ(parser.SetDetectCharsetErrors(false), 0U);
    EXPECT_FALSE(parser.GetDetectCharsetErrors());
    EXPECT_EQ(GenericParser::BUFFER_SIZE, 16384U);
    EXPECT_EQ(GenericParser::DETECTCHARSET_MIN_CONFIDENCE, 50U);
    EXPECT_EQ(GenericParser::DETECTCHARSET_MIN_SIZE, 256U);
}

TEST(StartParseTest, TheSelfCheckChangesNoToken) {
    for (const GenericParser::SelfCheck check : {SELF_CHECK_CRC, SELF_CHECK_COPY}) {
        for (const Route& route : ROUTES) {
            SCOPED_TRACE(route.name);
            const std::string document = EVERY_CALLBACK;
            DocumentSettings settings = SettingsFor(route, Feed::STREAM);
            settings.selfCheck = check;
            const DocumentRun run = ParseBy(route, document, {}, settings);
            ExpectTokens(run, EVERY_CALLBACK_TOKENS, route);
        }
    }
}

TEST(ParseBufferTest, NullAndEmptyPieces) {
    for (const GenericParser::DataStreamType type : {DATA_STREAM_AUTO, DATA_STREAM_8BIT, DATA_STREAM_UTF16}) {
        FedParser parser;
        parser.StartSilently(1252, type);
        EXPECT_EQ(parser.ParseBuffer(nullptr, 0), 0U);
        EXPECT_EQ(parser.ParseBuffer("x", 0), 0U);
        EXPECT_EQ(parser.ParseBuffer(nullptr, 1), 2U);
        EXPECT_EQ(parser.ParseBuffer(nullptr, 2), 2U);
        EXPECT_EQ(Join(parser.lines), "");
        EXPECT_EQ(parser.GetColumn(), 1U);
        // They left no trace: the document goes on.
        EXPECT_EQ(parser.ParseBuffer("a\0", 2), 0U);
        EXPECT_EQ(parser.ParseBuffer(nullptr, 2), 2U);
        EXPECT_EQ(parser.Feed(""), 0U);
        EXPECT_EQ(parser.ParseBuffer("b\0", 2), 0U);
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(Join(parser.lines),
                  (type == DATA_STREAM_AUTO ? "start-parsing\n" : std::string()) + "text(a\\x00b\\x00)\nend-parsing\n");
    }
}

TEST(ParseBufferTest, WithoutStartParseTheFirstBytesDecide) {
    FedParser parser;
    EXPECT_EQ(parser.ParseBuffer("\xEF\xBB\xBF"
                                 "a",
                                 4),
              0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(Join(parser.lines), "start-parsing\nbom(EF BB BF)\ntext(a)\nend-parsing\n");
}

TEST(ParseBufferTest, HalfACharacterOfUtf16IsRejectedAndChangesNothing) {
    FedParser parser(Observed::WIDE);
    parser.Start(1200, DATA_STREAM_UTF16);
    EXPECT_EQ(parser.ParseBuffer("a\0b", 3), 2U);
    EXPECT_EQ(parser.Feed("c"), 2U);
    EXPECT_EQ(parser.GetColumn(), 1U);
    EXPECT_EQ(parser.ParseBuffer("d\0", 2), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(Join(parser.lines), "start-parsing\ncharset(1200)\ntext(d)\nend-parsing\n");
}

TEST(ParseBufferTest, Utf16MayStartAtAnOddAddress) {
    const std::string document = ToUtf16LE(std::string_view("a<b c='d'>e</b>\n"));
    for (std::size_t size = 2; size <= document.size(); size += 2) {
        FedParser parser(Observed::WIDE);
        parser.Start(1200, DATA_STREAM_UTF16);
        for (std::size_t at = 0; at < document.size(); at += size) {
            // A block that begins with one byte that is not part of the piece.
            const std::string piece = "x" + document.substr(at, size);
            const HeapPiece<char> block{std::string_view(piece)};
            EXPECT_EQ(parser.ParseBuffer(block.Data() + 1, block.Size() - 1), 0U);
        }
        EXPECT_EQ(parser.GetLine(), 2U);
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(Join(parser.lines),
                  "start-parsing\ncharset(1200)\ntext(a)\nstart(|b|{ "
                  "|c|=|'d'}|)\ntext(e)\nend(|b|||)\ntext(\\n)\nend-parsing\n");
    }
}

TEST(ParseBufferTest, Utf16BehindItsMarkMayStartAtAnOddAddress) {
    const std::string document = "\xFE" + ToUtf16LE(std::string_view("<b>"));
    for (std::size_t offset = 0; offset < 2; ++offset) {
        FedParser parser(Observed::WIDE);
        parser.Start(0, DATA_STREAM_AUTO);
        EXPECT_EQ(parser.Feed("\xFF"), 0U);
        const std::string piece = std::string(offset, 'x') + document;
        const HeapPiece<char> block{std::string_view(piece)};
        EXPECT_EQ(parser.ParseBuffer(block.Data() + offset, document.size()), 0U);
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(Join(parser.lines), "start-parsing\nbom(FF FE)\nstart(|b||)\nend-parsing\n");
    }
}

TEST(EndParseTest, ASecondCallDoesNothing) {
    FedParser parser;
    parser.Start(1251);
    EXPECT_EQ(parser.Feed("a\nb"), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(Join(parser.lines), "start-parsing\ncharset(1251)\ntext(a\\nb)\nend-parsing\n");
    parser.lines.clear();
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.Feed(""), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(Join(parser.lines), "");
    // The queries still answer.
    EXPECT_EQ(parser.GetLine(), 2U);
    EXPECT_EQ(parser.GetColumn(), 2U);
    EXPECT_EQ(parser.GetCharset(), 1251U);
    const WideString name = parser.GetCurrentParserName();
    EXPECT_EQ(std::string(name.begin(), name.end()), "TextSimpleParser");
}

TEST(EndParseTest, ASecondCallDoesNothingAfterAFailureEither) {
    FedParser parser;
    parser.Start();
    EXPECT_EQ(parser.Feed("a<b"), 0U);
    EXPECT_EQ(parser.EndParse(), 16U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(Join(parser.lines), "start-parsing\ncharset(1252)\ntext(a)\n");
}

TEST(EndParseTest, BytesFedAfterItContinueTheDocument) {
    struct Row {
        const char* note;
        const char* first;
        std::uint32_t firstEnd;
        const char* second;
        std::uint32_t secondEnd;
        const char* lines;
        std::uint64_t line;
        std::uint64_t column;
    };
    const Row rows[] = {
        {"text", "a", 0, "b", 0, "text(a)\nend-parsing\ntext(b)\nend-parsing\n", 1, 3},
        {"tags and lines", "a<b>\nc", 0, "\nd</b>", 0,
         "text(a)\nstart(|b||)\ntext(\\nc)\nend-parsing\ntext(\\nd)\nend(|b|||)\nend-parsing\n", 3, 6},
        {"after an open tag the text state is left", "<a", 16, "b>", 0, "text(b>)\nend-parsing\n", 1, 5},
        {"after an open end tag too", "</a", 16, "b>", 0, "text(b>)\nend-parsing\n", 1, 6},
        {"after a \"<\" too", "x<", 16, "b>", 0, "text(x)\ntext(b>)\nend-parsing\n", 1, 5},
        {"a script goes on", "<script>a", 0, "'</b>'", 0,
         "start(|script||)\njs-start\ntext(a)\nend-parsing\ns-string(</b>)\nend-parsing\n", 1, 16},
        {"after an open string the script goes on", "<script>'a", 16, "b'c'", 0,
         "start(|script||)\njs-start\ntext(b)\ns-string(c)\nend-parsing\n", 1, 15},
        {"a pending slash is not taken along", "<style>a/", 0, "*b", 0,
         "start(|style||)\ncss-start\ntext(a/)\nend-parsing\ntext(*b)\nend-parsing\n", 1, 12},
        {"a construct that is open again", "a<b", 16, "c<d", 16, "text(a)\ntext(c)\n", 1, 7},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        FedParser parser;
        parser.StartSilently();
        EXPECT_EQ(parser.Feed(row.first), 0U);
        EXPECT_EQ(parser.EndParse(), row.firstEnd);
        EXPECT_EQ(parser.Feed(row.second), 0U);
        EXPECT_EQ(parser.EndParse(), row.secondEnd);
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(Join(parser.lines), row.lines);
        EXPECT_EQ(parser.GetLine(), row.line);
        EXPECT_EQ(parser.GetColumn(), row.column);
    }
}

TEST(EndParseTest, AStreamFedAfterItContinuesTheDocument) {
    FedParser parser;
    parser.Start();
    VFS::MemoryInputStream first("a<b / >c");
    VFS::MemoryInputStream second("d<e / >f<g");
    EXPECT_EQ(parser.ParseStream(&first, false), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.ParseStream(&second, false), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(Join(parser.lines),
              "start-parsing\ncharset(1252)\ntext(a)\njunk(<b / )\njunk(>c)\nend-parsing\ntext(d)\njunk(<e / "
              ")\njunk(>f)\njunk(<g)\n"
              "end-parsing\n");
}

TEST(EndParseTest, AfterJunkAtTheEndTheTextStateIsLeft) {
    FedParser parser;
    parser.Start();
    EXPECT_EQ(parser.FeedStream("<b"), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.Feed("c<d>"), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(Join(parser.lines),
              "start-parsing\ncharset(1252)\njunk(<b)\nend-parsing\ntext(c)\nstart(|d||)\nend-parsing\n");
}

TEST(StartParseTest, DropsWhatAnUnfinishedDocumentLeft) {
    const char* const unfinished[] = {"a",        "a<",        "<b",         "<b c='",      "</b",
                                      "<script>", "<script>'", "<script>\"", "<script>x/y", "<script>x/",
                                      "<style>",  "<style>a/", "\n\nx"};
    for (const char* const document : unfinished) {
        SCOPED_TRACE(document);
        for (const GenericParser::DataStreamType type : {DATA_STREAM_8BIT, DATA_STREAM_AUTO}) {
            FedParser parser;
            parser.Start();
            EXPECT_EQ(parser.Feed(document), 0U);
            parser.lines.clear();
            parser.Start(1252, type);
            EXPECT_EQ(parser.Feed("a'b'/c<d>"), 0U);
            EXPECT_EQ(parser.GetLine(), 1U);
            EXPECT_EQ(parser.GetColumn(), 10U);
            EXPECT_EQ(parser.EndParse(), 0U);
            EXPECT_EQ(Join(parser.lines), std::string("start-parsing\n") +
                                              (type == DATA_STREAM_8BIT ? "charset(1252)\n" : "") +
                                              "text(a'b'/c)\nstart(|d||)\nend-parsing\n");
        }
    }
}

TEST(StartParseTest, OneParserReadsDocumentsOfBothFlavoursInTurn) {
    FedParser parser(Observed::WIDE);
    const std::string wide = ToUtf16LE(std::string_view("<script>a"));
    for (int i = 0; i < 2; ++i) {
        parser.Start();
        EXPECT_EQ(parser.Feed("<style>b"), 0U);
        parser.Start(0, DATA_STREAM_UTF16);
        EXPECT_EQ(parser.Feed(wide), 0U);
        EXPECT_EQ(parser.EndParse(), 0U);
    }
    const std::string once =
        "start-parsing\ncharset(1252)\nstart(|style||)\ncss-start\n"
        "start-parsing\ncharset(1200)\nstart(|script||)\njs-start\ntext(a)\nend-parsing\n";
    EXPECT_EQ(Join(parser.lines), once + once);
}

}  // namespace
}  // namespace Kestra::Test
