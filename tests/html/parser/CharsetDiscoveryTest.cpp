#include <stdexcept>

#include "platform/Services.h"
#include "tests/html/parser/DocumentRows.h"

// Charset declarations in `meta` tags.

namespace Kestra::Test {
namespace {

/// Settings for a document whose charset the host does not know.
DocumentSettings Unknown(Observed observed, Feed feed = Feed::BUFFER) {
    DocumentSettings settings;
    settings.charset = 0;
    settings.observed = observed;
    settings.feed = feed;
    return settings;
}

/// One `meta` tag and the charset that it sets, 0 for none.
struct MetaRow {
    const char* note;
    std::string input;
    StringNS::CharSet::Code charset;
};

/// The row, and after the tag text, for an 8-bit observer: the charset in force, and one
/// `OnCharset` right after the tag or none.
void CheckMeta(const MetaRow& row) {
    for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
        for (const GenericParser::DataStreamType type : {DATA_STREAM_8BIT, DATA_STREAM_AUTO}) {
            SCOPED_TRACE(std::string(row.note) + ": " + Trace::Escape(row.input));
            const std::string document = row.input + "x";
            ForEverySplit(document, [&](const Cuts& cuts) {
                DocumentSettings settings = Unknown(Observed::NARROW, feed);
                settings.type = type;
                const DocumentRun run = ParseDocument(document, cuts, settings);
                EXPECT_EQ(run.charset, row.charset);
                ExpectSuccess(run);
                EXPECT_FALSE(run.needsReparsing);
                EXPECT_FALSE(run.wasCharsetDetectorUsed);
                Lines front{"start-parsing"};
                if (type == DATA_STREAM_8BIT)
                    front.push_back("charset(0)");
                Lines expected = front;
                const std::size_t tag = front.size();
                ASSERT_GT(run.trace.size(), tag);
                expected.push_back(run.trace[tag]);
                EXPECT_TRUE(run.trace[tag].substr(0, 6) == "start(" || run.trace[tag].substr(0, 6) == "short(")
                    << run.trace[tag];
                if (row.charset != 0)
                    expected.push_back(Trace::FormatCharset(row.charset));
                expected.push_back("text(x)");
                expected.push_back("end-parsing");
                EXPECT_EQ(run.Lines(), Join(expected));
            });
        }
    }
}

template <std::size_t N>
void CheckMetas(const MetaRow (&rows)[N]) {
    for (const MetaRow& row : rows)
        CheckMeta(row);
}

TEST(CharsetDiscoveryTest, TheTag) {
    const MetaRow rows[] = {
        {"a start tag", "<meta charset=utf-8>", 65001},
        {"a short tag", "<meta charset='utf-8' />", 65001},
        {"a short tag whose value has no quotes", "<meta charset=utf-8/>", 65001},
        {"any case", "<MeTa CHARset=UTF-8>", 65001},
        {"a blank before the name", "< meta charset=utf-8>", 65001},
        {"blanks around \"=\"", "<meta charset = utf-8>", 65001},
        {"a line feed after the name", "<meta\ncharset=\"utf-8\">", 65001},
        {"a longer name", "<metal charset=utf-8>", 0},
        {"a shorter name", "<met charset=utf-8>", 0},
        {"a name with a slash", "<meta/ charset=utf-8>", 0},
        {"a name with a NUL", std::string("<meta\0 charset=utf-8>", 21), 0},
        {"another name", "<link charset=utf-8>", 0},
        {"no attribute", "<meta>", 0},
        {"no attribute in a short tag", "<meta/>", 0},
        {"other attributes", "<meta name=charset value='charset=utf-8' xcharset=utf-8 charsetx=utf-8>", 0},
        {"a NUL in the attribute's name", std::string("<meta charset\0=utf-8>", 21), 0},
    };
    CheckMetas(rows);
}

TEST(CharsetDiscoveryTest, TheCharsetAttribute) {
    const MetaRow rows[] = {
        {"without quotes", "<meta charset=koi8-r>", 20866},
        {"in single quotes", "<meta charset='koi8-r'>", 20866},
        {"in double quotes", "<meta charset=\"koi8-r\">", 20866},
        {"an alias in any case", "<meta charset=X-SJis>", 932},
        {"an unknown name", "<meta charset=x-unknown>", 0},
        {"blanks are not stripped", "<meta charset=' utf-8'>", 0},
        {"nor at the end", "<meta charset='utf-8 '>", 0},
        {"a value is not split", "<meta charset='utf-8;koi8-r'>", 0},
        {"nor is a parameter read out of it", "<meta charset='charset=utf-8'>", 0},
        {"UTF-16 cannot be", "<meta charset=utf-16>", 0},
        {"by whatever name", "<meta charset=utf-16le>", 0},
        {"big-endian UTF-16 is a code like any other", "<meta charset=utf-16be>", 1201},
        {"UTF-7 is applied as it is", "<meta charset=utf-7>", 65000},
        {"the older name of ISO-8859-1", "<meta charset=latin1>", 28591},
        {"an empty value", "<meta charset=''>", 0},
        {"an empty value without quotes", "<meta charset=>", 0},
        {"no value", "<meta charset>", 0},
        {"a name beyond ASCII", "<meta charset='utf-8\xE9'>", 0},
        {"the later one of two counts", "<meta charset=koi8-r charset=utf-8>", 65001},
        {"whatever the case of the names", "<meta charset=koi8-r CHARSET='utf-8'>", 65001},
        {"also when it is unknown", "<meta charset=koi8-r charset=x-unknown>", 0},
        {"also when it is empty", "<meta charset=koi8-r charset=''>", 0},
        {"an earlier one without a value is replaced", "<meta charset charset=utf-8>", 65001},
        {"a bare word after the value belongs to it", "<meta charset=utf-8 x>", 0},
        {"a name without a value too", "<meta charset=utf-8 charset>", 0},
        {"after a quoted value too", "<meta charset='utf-8' x>", 0},
        {"but not after the next attribute", "<meta charset=utf-8 a=b x>", 65001},
        {"nor before it", "<meta x charset=utf-8>", 65001},
    };
    CheckMetas(rows);
}

TEST(CharsetDiscoveryTest, TheContentAttribute) {
    const MetaRow rows[] = {
        {"the usual one", "<meta http-equiv='Content-Type' content='text/html; charset=koi8-r'>", 20866},
        {"in the other order", "<meta content='text/html; charset=koi8-r' http-equiv=content-type>", 20866},
        {"without \"http-equiv\"", "<meta content='text/html; charset=koi8-r'>", 20866},
        {"whatever \"http-equiv\" says", "<meta http-equiv=refresh content='5; charset=koi8-r'>", 20866},
        {"whatever the name says", "<meta name=keywords content='charset=koi8-r'>", 20866},
        {"\"http-equiv\" alone", "<meta http-equiv='text/html; charset=koi8-r'>", 0},
        {"any case", "<meta CONTENT='TEXT/HTML; CHARSET=KOI8-R'>", 20866},
        {"without quotes", "<meta content=text/html;charset=koi8-r>", 20866},
        {"without quotes and after a blank it is an attribute of its own", "<meta content=text/html; charset=koi8-r>",
         20866},
        {"no parameter", "<meta content='text/html'>", 0},
        {"an empty value", "<meta content=''>", 0},
        {"no value", "<meta content>", 0},
        {"the later one of two counts", "<meta content='charset=koi8-r' content='charset=utf-8'>", 65001},
        {"even without a charset", "<meta content='charset=koi8-r' content='text/html'>", 0},
        {"a bare word after it belongs to it, its quotes too", "<meta content='charset=koi8-r' x>", 0},
        {"which leaves other parameters alone", "<meta content='a;charset=koi8-r;b' x>", 20866},
        {"the charset attribute comes first", "<meta charset=utf-8 content='charset=koi8-r'>", 65001},
        {"in any order", "<meta content='charset=koi8-r' charset=utf-8>", 65001},
        {"also when it is unknown", "<meta content='charset=koi8-r' charset=x-unknown>", 0},
        {"also when it is UTF-16", "<meta content='charset=koi8-r' charset=utf-16>", 0},
        {"but not when it is empty", "<meta charset='' content='charset=koi8-r'>", 20866},
        {"nor without a value", "<meta charset content='charset=koi8-r'>", 20866},
    };
    CheckMetas(rows);
}

TEST(CharsetDiscoveryTest, TheParametersOfContent) {
    struct Row {
        const char* note;
        const char* content;
        StringNS::CharSet::Code charset;
    };
    const Row rows[] = {
        {"alone", "charset=koi8-r", 20866},
        {"before others", "charset=koi8-r; text/html", 20866},
        {"between empty ones", ";;charset=koi8-r;;", 20866},
        {"blanks around it", "  charset=koi8-r  ", 20866},
        {"blanks around both parts", "a;  charset  =  koi8-r  ;b", 20866},
        {"a tab is no blank, before it", "\tcharset=koi8-r", 0},
        {"after the name", "charset\t=koi8-r", 0},
        {"before the value", "charset=\tkoi8-r", 0},
        {"after it", "charset=koi8-r\t", 0},
        {"nor is a line feed", "a;\ncharset=koi8-r", 0},
        {"a blank inside the name", "char set=koi8-r", 0},
        {"quotes are part of the value", "charset=\"koi8-r\"", 0},
        {"a longer name", "xcharset=koi8-r; charsetx=koi8-r", 0},
        {"another separator", "text/html, charset=koi8-r", 0},
        {"no \"=\"", "charset koi8-r", 0},
        {"two \"=\" make three parts", "charset==koi8-r", 0},
        {"also when the last one is empty", "charset=koi8-r=", 0},
        {"or the first one", "=charset=koi8-r", 0},
        {"three parts are passed over", "charset==koi8-r; charset=utf-8", 65001},
        {"one part is passed over", "charset; charset=utf-8", 65001},
        {"another parameter is passed over", "a=b; charset=utf-8", 65001},
        {"the first one counts", "charset=koi8-r; charset=utf-8", 20866},
        {"also when it is unknown", "charset=x-unknown; charset=utf-8", 0},
        {"also when it is empty", "charset=; charset=utf-8", 0},
        {"also when it is blank", "charset= ; charset=utf-8", 0},
        {"also when it is UTF-16", "charset=utf-16; charset=utf-8", 0},
        {"UTF-7 as it is", "charset=utf-7", 65000},
    };
    for (const Row& row : rows)
        CheckMeta({row.note, "<meta content='" + std::string(row.content) + "'>", row.charset});
}

TEST(CharsetDiscoveryTest, WhereNoTagIsExamined) {
    struct Row {
        const char* note;
        const char* input;
    };
    const Row rows[] = {
        {"an end tag", "</meta charset=utf-8>"},
        {"in a comment", "<!--<meta charset=utf-8>-->"},
        {"in a CDATA section", "<![CDATA[<meta charset=utf-8>]]>"},
        {"in a script", "<script><meta charset=utf-8></script>"},
        {"in a string of a script", "<script>'<meta charset=utf-8>'</script>"},
        {"in a style", "<style><meta charset=utf-8></style>"},
        {"in the value of another tag", "<a b='<meta charset=utf-8>'>"},
        {"an XML declaration", "<?xml version='1.0' encoding='utf-8'?>"},
        {"one of that name", "<?xml:meta charset='utf-8'?>"},
        {"a declaration of that name", "<!meta charset=utf-8>"},
        {"a tag that turns out to be junk", "<meta charset=utf-8 x='' / >"},
        {"a tag that is not closed", "<meta charset=utf-8"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        for (const Observed observed : {Observed::NARROW, Observed::WIDE, Observed::NOBODY}) {
            const std::string input = row.input;
            ForEverySplit(input, [&](const Cuts& cuts) {
                const DocumentRun run = ParseDocument(input, cuts, Unknown(observed, Feed::STREAM));
                EXPECT_EQ(run.charset, 0U);
                ExpectSuccess(run);
                EXPECT_FALSE(run.needsReparsing);
                EXPECT_EQ(run.Lines().find("charset(6"), std::string::npos);
            });
        }
    }
}

TEST(CharsetDiscoveryTest, OnlyTheFirstAppliedDeclarationCounts) {
    struct Row {
        const char* note;
        const char* input;
        Tokens lines;
        StringNS::CharSet::Code charset;
    };
    const Row rows[] = {
        {"a second, different one is ignored", "<meta charset=koi8-r><meta charset=utf-8>",
         "start(|meta|{ |charset|=|koi8-r}|)\ncharset(20866)\nstart(|meta|{ |charset|=|utf-8}|)", 20866},
        {"the same one again too", "<meta charset=koi8-r><meta charset=koi8-r>",
         "start(|meta|{ |charset|=|koi8-r}|)\ncharset(20866)\nstart(|meta|{ |charset|=|koi8-r}|)", 20866},
        {"one that was not applied leaves room: an unknown name", "<meta charset=x><meta charset=utf-8>",
         "start(|meta|{ |charset|=|x}|)\nstart(|meta|{ |charset|=|utf-8}|)\ncharset(65001)", 65001},
        {"UTF-16", "<meta charset=utf-16><p><meta charset=utf-8>",
         "start(|meta|{ |charset|=|utf-16}|)\nstart(|p||)\nstart(|meta|{ |charset|=|utf-8}|)\ncharset(65001)", 65001},
        {"a tag without a declaration", "<meta name=a><meta charset=utf-8>",
         "start(|meta|{ |name|=|a}|)\nstart(|meta|{ |charset|=|utf-8}|)\ncharset(65001)", 65001},
    };
    for (const Row& row : rows) {
        const std::string input = row.input;
        for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
            SCOPED_TRACE(row.note);
            ForEverySplit(input, [&](const Cuts& cuts) {
                const DocumentRun run = ParseDocument(input, cuts, Unknown(Observed::NARROW, feed));
                Lines expected{"start-parsing", "charset(0)"};
                expected.insert(expected.end(), row.lines.begin(), row.lines.end());
                expected.push_back("end-parsing");
                EXPECT_EQ(run.Lines(), Join(expected));
                EXPECT_EQ(run.charset, row.charset);
                EXPECT_EQ(run.parseResult, 0U);
            });
        }
    }
}

TEST(CharsetDiscoveryTest, WithoutAnObserverALaterDeclarationStillCounts) {
    const std::string input = "<meta charset=koi8-r>a<meta charset=utf-8>";
    for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
        ForEverySplit(input, [&](const Cuts& cuts) {
            const DocumentRun run = ParseDocument(input, cuts, Unknown(Observed::NOBODY, feed));
            EXPECT_EQ(run.charset, 65001U);
            ExpectSuccess(run);
            EXPECT_FALSE(run.needsReparsing);
        });
    }
}

TEST(CharsetDiscoveryTest, AKnownCharsetIsNeverChanged) {
    struct Row {
        const char* note;
        std::string front;
        StringNS::CharSet::Code charset;
        GenericParser::DataStreamType type;
        StringNS::CharSet::Code inForce;
    };
    const Row rows[] = {
        {"1252", "", 1252, DATA_STREAM_8BIT, 1252},
        {"1252, automatic", "", 1252, DATA_STREAM_AUTO, 1252},
        {"UTF-7, replaced", "", 65000, DATA_STREAM_8BIT, 1252},
        {"UTF-7, automatic", "", 65000, DATA_STREAM_AUTO, 1252},
        {"one without a converter", "", 4711, DATA_STREAM_8BIT, 4711},
        {"a UTF-8 mark", "\xEF\xBB\xBF", 0, DATA_STREAM_AUTO, 65001},
    };
    const std::string declaration = "<meta charset=koi8-r>";
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        for (const Observed observed : {Observed::NARROW, Observed::WIDE, Observed::NOBODY}) {
            const std::string document = row.front + declaration;
            ForEverySplit(document, [&](const Cuts& cuts) {
                DocumentSettings settings = Unknown(observed);
                settings.charset = row.charset;
                settings.type = row.type;
                const DocumentRun run = ParseDocument(document, cuts, settings);
                EXPECT_EQ(run.charset, row.inForce);
                ExpectSuccess(run);
                EXPECT_FALSE(run.needsReparsing);
                EXPECT_EQ(run.Lines().find("charset(20866)"), std::string::npos);
            });
        }
    }
}

TEST(CharsetDiscoveryTest, AWideDocumentIsNeverExamined) {
    const WideString document = KESTRA_WIDE("<meta charset=koi8-r>");
    for (const Observed observed : {Observed::NARROW, Observed::WIDE, Observed::NOBODY}) {
        ForEverySplit(WideStringView(document), [&](const Cuts& cuts) {
            const DocumentRun run = ParseDocument(document, cuts, Unknown(observed));
            EXPECT_EQ(run.charset, 1200U);
            EXPECT_EQ(run.parseResult, 0U);
            EXPECT_FALSE(run.needsReparsing);
        });
        // With a mark, and the charset unknown.
        DocumentSettings settings = Unknown(observed);
        settings.type = DATA_STREAM_AUTO;
        const DocumentRun run = ParseDocument("\xFF\xFE" + ToUtf16LE(WideStringView(document)), {}, settings);
        EXPECT_TRUE(run.isWide);
        EXPECT_EQ(run.charset, 1200U);
        EXPECT_EQ(run.parseResult, 0U);
        EXPECT_EQ(run.Lines().find("charset(20866)"), std::string::npos);
    }
}

TEST(CharsetDiscoveryTest, BytesThatWereNoMarkAreExamined) {
    for (const char* const front : {"\xEF", "\xEF\xBB", "\xFF"}) {
        const DocumentRun run = ParseDocument(std::string(front) + "a<meta charset=koi8-r>", {}, [] {
            DocumentSettings settings = Unknown(Observed::NARROW);
            settings.type = DATA_STREAM_AUTO;
            return settings;
        }());
        EXPECT_EQ(run.charset, 20866U);
    }
}

TEST(CharsetDiscoveryTest, AfterAConversionAChangeStopsTheParse) {
    struct Row {
        const char* note;
        std::string input;
        Tokens tokens;  ///< up to the stop
        StringNS::CharSet::Code charset;
        std::uint64_t column;  ///< where it stopped
    };
    const Row rows[] = {
        {"text, and then a declaration", "a<meta http-equiv='Content-Type' content='text/html; charset=koi8-r'>b<c>",
         "text(a)\nstart(|meta|{ |http-equiv|=|'Content-Type'}{ |content|=|'text/html; "
         "charset=koi8-r'}|)\ncharset(20866)",
         20866, 70},
        {"the first tag of the document", "<meta charset=utf-8>b", "start(|meta|{ |charset|=|utf-8}|)\ncharset(65001)",
         65001, 21},
        {"a short tag", "<meta charset=utf-8 />b", "short(|meta|{ |charset|=|utf-8}| )\ncharset(65001)", 65001, 23},
        {"at the end of the input", "<meta charset=utf-8>", "start(|meta|{ |charset|=|utf-8}|)\ncharset(65001)", 65001,
         21},
        {"UTF-7", "<meta charset=utf-7><p>", "start(|meta|{ |charset|=|utf-7}|)\ncharset(65000)", 65000, 21},
        {"1252, as which the text was read all the time", "<meta charset=windows-1252><p>",
         "start(|meta|{ |charset|=|windows-1252}|)\ncharset(1252)", 1252, 28},
        {"after declarations that were not applied", "<meta charset=x><meta charset=utf-16><meta charset=utf-8><p>",
         "start(|meta|{ |charset|=|x}|)\nstart(|meta|{ |charset|=|utf-16}|)\nstart(|meta|{ "
         "|charset|=|utf-8}|)\ncharset(65001)",
         65001, 58},
    };
    for (const Row& row : rows) {
        for (const Feed feed : {Feed::BUFFER, Feed::STREAM, Feed::OWNED_STREAM}) {
            SCOPED_TRACE(row.note);
            ForEverySplit(row.input, [&](const Cuts& cuts) {
                const DocumentRun run = ParseDocument(row.input, cuts, Unknown(Observed::WIDE, feed));
                Lines expected{"start-parsing", "charset(0)"};
                expected.insert(expected.end(), row.tokens.begin(), row.tokens.end());
                EXPECT_EQ(run.Lines(), Join(expected));
                EXPECT_EQ(run.parseResult, 705U);
                EXPECT_TRUE(run.needsReparsing);
                EXPECT_FALSE(run.wasCharsetDetectorUsed);
                EXPECT_EQ(run.charset, row.charset);
                EXPECT_EQ(run.parserName, "StartTagSimpleParser");
                EXPECT_EQ(run.line, 1U);
                EXPECT_EQ(run.column, row.column);
                // The tag is still the construct at work, and nothing is left to read it again
                // from.
                EXPECT_EQ(run.endResult, 16U);
            });
        }
    }
}

constexpr const char* KOI8_R = "<meta charset=koi8-r>";

TEST(CharsetDiscoveryTest, TheDocumentIsParsedAgainWithTheCharsetFound) {
    FedParser bench(Observed::WIDE);
    bench.Start(0);
    const std::string document = std::string("\xC6") + KOI8_R + "\xC6";
    EXPECT_EQ(bench.Feed(document), 705U);
    EXPECT_TRUE(bench.NeedsReparsing());
    EXPECT_EQ(bench.TakeLines(),
              "start-parsing\ncharset(0)\ntext(\\u00C6)\nstart(|meta|{ |charset|=|koi8-r}|)\ncharset(20866)\n");
    bench.Start(bench.GetCharset());
    EXPECT_FALSE(bench.NeedsReparsing());
    EXPECT_EQ(bench.Feed(document), 0U);
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_FALSE(bench.NeedsReparsing());
    EXPECT_EQ(bench.TakeLines(),
              "start-parsing\ncharset(20866)\ntext(\\u0444)\nstart(|meta|{ "
              "|charset|=|koi8-r}|)\ntext(\\u0444)\nend-parsing\n");
}

TEST(CharsetDiscoveryTest, TheNeedIsRememberedUntilTheNextDocument) {
    FedParser bench(Observed::WIDE);
    bench.Start(0);
    EXPECT_EQ(bench.Feed(KOI8_R), 705U);
    EXPECT_EQ(bench.EndParse(), 16U);
    EXPECT_TRUE(bench.NeedsReparsing());
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_TRUE(bench.NeedsReparsing());
    EXPECT_EQ(bench.TakeLines(), "start-parsing\ncharset(0)\nstart(|meta|{ |charset|=|koi8-r}|)\ncharset(20866)\n");
    // The next document whose charset is unknown is examined anew.
    bench.Start(0);
    EXPECT_FALSE(bench.NeedsReparsing());
    EXPECT_EQ(bench.GetCharset(), 0U);
    EXPECT_EQ(bench.Feed("<meta charset=utf-8>"), 705U);
    EXPECT_EQ(bench.GetCharset(), 65001U);
    bench.TakeLines();
    bench.SetObserver(&bench.narrow, false);
    bench.Start(0);
    EXPECT_EQ(bench.Feed(KOI8_R), 0U);
    EXPECT_EQ(bench.Feed("<meta charset=utf-8>"), 0U);
    EXPECT_EQ(bench.GetCharset(), 20866U);
    EXPECT_EQ(bench.EndParse(), 0U);
}

TEST(CharsetDiscoveryTest, BytesFedAfterTheStopBreakNothing) {
    for (const char* const more : {"x", ">", "<a>", "</meta>", "/", "'", KOI8_R}) {
        SCOPED_TRACE(more);
        FedParser bench(Observed::NOBODY);
        bench.SetObserver(&bench.wide, false);
        bench.Start(0);
        EXPECT_EQ(bench.Feed(KOI8_R), 705U);
        bench.Feed(more);
        bench.Feed(more);
        bench.EndParse();
        EXPECT_EQ(bench.EndParse(), 0U);
        bench.TakeLines();
        bench.Start(1252);
        EXPECT_EQ(bench.Feed("a<b>c"), 0U);
        EXPECT_EQ(bench.EndParse(), 0U);
        EXPECT_EQ(bench.TakeLines(), "start-parsing\ncharset(1252)\ntext(a)\nstart(|b||)\ntext(c)\nend-parsing\n");
    }
}

/// What comes of bytes that are fed after the stop, the document up to there being fed in two
/// pieces.
std::string FeedAfterTheStop(std::string_view document, std::size_t cut, std::string_view more) {
    FedParser bench(Observed::WIDE);
    bench.Start(0);
    EXPECT_EQ(bench.Feed(document.substr(0, cut)), 0U);
    EXPECT_EQ(bench.Feed(document.substr(cut)), 705U);
    const std::uint32_t result = bench.Feed(more);
    const std::uint32_t endResult = bench.EndParse();
    return std::to_string(result) + "\n" + std::to_string(endResult) + "\n" + bench.TakeLines();
}

TEST(CharsetDiscoveryTest, BytesFedAfterTheStopDoNotTellWhereTheTagWasCut) {
    for (const std::string_view front : {"", "<a>", "<a b='' />", "<br/>"}) {
        for (const std::string_view tag :
             {"<meta charset=koi8-r>", "<meta charset='koi8-r' />", "<meta charset=koi8-r/>"}) {
            const std::string document = std::string(front) + "x" + std::string(tag);
            for (const std::string_view more : {"x", "b>y", " b>y", "<b>y", ">", "/>", "/", "'", "</meta>"}) {
                SCOPED_TRACE(document + more.data());
                const std::string whole = FeedAfterTheStop(document, front.size() + 1, more);
                EXPECT_NE(whole.find("koi8-r"), std::string::npos);
                for (std::size_t cut = 0; cut < document.size(); ++cut)
                    EXPECT_EQ(FeedAfterTheStop(document, cut, more), whole) << "cut at " << cut;
            }
        }
    }
}

TEST(CharsetDiscoveryTest, AStreamThatIsStoppedIsFreedAndForgotten) {
    for (const bool owned : {false, true}) {
        FedParser bench(Observed::NOBODY);
        bench.SetObserver(&bench.wide, false);
        bench.Start(0);
        int destructions = 0;
        auto stream = std::make_unique<FaultyInputStream>(std::string(KOI8_R) + "rest");
        stream->CountDestructions(&destructions);
        VFS::InputStream* const fed = owned ? stream.release() : stream.get();
        EXPECT_EQ(bench.ParseStream(fed, owned), 705U);
        EXPECT_EQ(destructions, owned ? 1 : 0);
        stream.reset();
        EXPECT_EQ(destructions, 1);
        EXPECT_EQ(bench.EndParse(), 16U);
        EXPECT_EQ(bench.GetCharset(), 20866U);
    }
}

TEST(CharsetDiscoveryTest, TheStreamIsReadNoFurther) {
    FedParser bench(Observed::WIDE);
    bench.Start(0);
    FaultyInputStream stream(std::make_unique<BoundedInputStream>(std::string(KOI8_R) + "<a><b><c>",
                                                                  OnlyFrom(GenericParser::BUFFER_SIZE, AtMost(21))));
    EXPECT_EQ(bench.ParseStream(&stream, false), 705U);
    EXPECT_EQ(stream.GetReadCalls(), 1U);
}

std::uint32_t CodeFailingOn(StringNS::CharSetConverter* converter, StringNS::CharSet::Code code, const char* data,
                            std::uint64_t size, WideString* output) {
    if (std::string_view(data, static_cast<std::size_t>(size)).find('!') != std::string_view::npos)
        return 815;
    return Base::PLATFORM_SERVICES.toWide(converter, code, data, size, output);
}

TEST(CharsetDiscoveryTest, AFailedConversionCountsToo) {
    Base::Services services = Base::PLATFORM_SERVICES;
    services.toWide = CodeFailingOn;
    const Base::ServicesOverride replacement(services);
    // The tag itself is lost, the declaration in it is not.
    DocumentRun run = ParseDocument("<meta charset=koi8-r a='!'>b", {}, Unknown(Observed::WIDE));
    EXPECT_EQ(run.Lines(), Join({"start-parsing", "charset(0)", "charset(20866)"}));
    EXPECT_EQ(run.parseResult, 705U);
    EXPECT_TRUE(run.needsReparsing);

    // Only one conversion, and it fails; the tag goes to an 8-bit observer.
    FedParser bench(Observed::WIDE);
    bench.Start(0);
    EXPECT_EQ(bench.Feed("!<"), 0U);
    bench.SetObserver(&bench.narrow, false);
    EXPECT_EQ(bench.Feed(std::string_view(KOI8_R).substr(1)), 705U);
    EXPECT_EQ(bench.TakeLines(), "start-parsing\ncharset(0)\nstart(|meta|{ |charset|=|koi8-r}|)\ncharset(20866)\n");
}

TEST(CharsetDiscoveryTest, WhatCountsAsAConversion) {
    struct Row {
        const char* note;
        const char* first;  ///< for the wide observer; the declaration after it goes to an 8-bit one
        bool converts;
    };
    const Row rows[] = {
        {"text", "a<", true},
        {"a tag", "<a><", true},
        {"a tag whose strings are empty", "<><", true},
        {"an empty comment", "<!----><", true},
        {"an empty script string", "<script>''</script><", true},
        {"nothing", "<", false},
        {"only events", "", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        FedParser bench(Observed::NOBODY);
        bench.SetObserver(&bench.wide, false);
        bench.Start(0);
        EXPECT_EQ(bench.Feed(row.first), 0U);
        bench.SetObserver(&bench.narrow, false);
        const std::string_view opener =
            std::string_view(row.first).empty() ? KOI8_R : std::string_view(KOI8_R).substr(1);
        EXPECT_EQ(bench.Feed(opener), row.converts ? 705U : 0U);
        EXPECT_EQ(bench.NeedsReparsing(), row.converts);
        EXPECT_EQ(bench.GetCharset(), 20866U);
    }
}

TEST(CharsetDiscoveryTest, JunkIsNotConverted) {
    FedParser bench(Observed::WIDE);
    bench.wide.hook = [&](const std::string& line) {
        if (line == "junk(x)")
            bench.SetObserver(&bench.narrow, false);
    };
    bench.Start(0);
    EXPECT_EQ(bench.FeedStream(std::string("<!-x") + KOI8_R + "y"), 0U);
    EXPECT_FALSE(bench.NeedsReparsing());
    EXPECT_EQ(bench.EndParse(), 0U);
    EXPECT_EQ(bench.TakeLines(),
              "start-parsing\ncharset(0)\njunk(<!-)\njunk(x)\nstart(|meta|{ "
              "|charset|=|koi8-r}|)\ncharset(20866)\ntext(y)\nend-parsing\n");
}

TEST(CharsetDiscoveryTest, TheSameCharsetAgainStopsNothing) {
    FedParser bench(Observed::NOBODY);
    bench.Start(0);
    // Nobody is bound, so the declaration is in force but may still be replaced.
    EXPECT_EQ(bench.Feed(KOI8_R), 0U);
    EXPECT_EQ(bench.GetCharset(), 20866U);
    bench.SetObserver(&bench.wide, false);
    EXPECT_EQ(bench.Feed("\xC6"), 0U);
    EXPECT_EQ(bench.Feed(KOI8_R), 0U);
    EXPECT_FALSE(bench.NeedsReparsing());
    EXPECT_EQ(bench.TakeLines(), "text(\\u0444)\nstart(|meta|{ |charset|=|koi8-r}|)\ncharset(20866)\n");
    // Now it has been applied for good.
    EXPECT_EQ(bench.Feed("<meta charset=utf-8>"), 0U);
    EXPECT_EQ(bench.GetCharset(), 20866U);
    EXPECT_EQ(bench.TakeLines(), "start(|meta|{ |charset|=|utf-8}|)\n");
}

TEST(CharsetDiscoveryTest, AnotherCharsetForAnObserverThatCameLateStopsTheParse) {
    FedParser bench(Observed::NOBODY);
    bench.Start(0);
    EXPECT_EQ(bench.Feed(KOI8_R), 0U);
    bench.SetObserver(&bench.wide, false);
    EXPECT_EQ(bench.Feed("<meta charset=utf-8>"), 705U);
    EXPECT_TRUE(bench.NeedsReparsing());
    EXPECT_EQ(bench.GetCharset(), 65001U);
}

TEST(CharsetDiscoveryTest, InsideOnCharsetTheNewOneIsInForce) {
    FedParser bench;
    int calls = 0;
    bench.narrow.hook = [&](const std::string& line) {
        if (line == "charset(20866)") {
            ++calls;
            EXPECT_EQ(bench.GetCharset(), 20866U);
            EXPECT_FALSE(bench.NeedsReparsing());
            EXPECT_EQ(bench.GetColumn(), 22U);
        } else if (line == "start(|meta|{ |charset|=|koi8-r}|)") {
            ++calls;
            EXPECT_EQ(bench.GetCharset(), 0U);
        }
    };
    bench.Start(0);
    EXPECT_EQ(bench.Feed(KOI8_R), 0U);
    EXPECT_EQ(calls, 2);
}

TEST(CharsetDiscoveryTest, AnObserverUnboundInOnCharsetHasBeenTold) {
    FedParser bench;
    bench.narrow.hook = [&](const std::string& line) {
        if (line == "charset(20866)")
            UnbindObserver(&bench);
    };
    bench.Start(0);
    EXPECT_EQ(bench.Feed(KOI8_R), 0U);
    bench.narrow.hook = nullptr;
    bench.SetObserver(&bench.narrow, false);
    EXPECT_EQ(bench.Feed("<meta charset=utf-8>"), 0U);
    EXPECT_EQ(bench.GetCharset(), 20866U);
}

TEST(CharsetDiscoveryTest, AnExceptionOutOfOnCharsetUndoesNothing) {
    FedParser bench(Observed::WIDE);
    bench.wide.hook = [&](const std::string& line) {
        if (line == "charset(20866)")
            throw std::runtime_error("an observer's own");
    };
    bench.Start(0);
    EXPECT_THROW(bench.Feed("x" + std::string(KOI8_R)), std::runtime_error);
    bench.wide.hook = nullptr;
    EXPECT_EQ(bench.GetCharset(), 20866U);
    EXPECT_TRUE(bench.NeedsReparsing());
    EXPECT_EQ(bench.Feed("<meta charset=utf-8>"), 0U);
    EXPECT_EQ(bench.GetCharset(), 20866U);
}

int detections = 0;

std::uint32_t DetectKoi8(const void*, std::uint64_t, Base::DetectedCharset* detected, std::uint32_t* count) {
    ++detections;
    *detected = {20866, 90};
    *count = 1;
    return 0;
}

TEST(CharsetDiscoveryTest, ADeclaredCharsetNeedsNoDetector) {
    Base::Services services = Base::PLATFORM_SERVICES;
    services.detectCharset = DetectKoi8;
    const Base::ServicesOverride replacement(services);
    const std::string text(300, 'a');
    for (const Observed observed : {Observed::NARROW, Observed::NOBODY}) {
        detections = 0;
        const DocumentRun declared = ParseDocument("<meta charset=utf-8>" + text, {}, Unknown(observed, Feed::STREAM));
        EXPECT_EQ(declared.parseResult, 0U);
        EXPECT_EQ(declared.charset, 65001U);
        EXPECT_EQ(detections, 0);
        // One that is not applied leaves the charset to the detector.
        const DocumentRun unknown = ParseDocument("<meta charset=utf-16>" + text, {}, Unknown(observed, Feed::STREAM));
        EXPECT_EQ(unknown.parseResult, 705U);
        EXPECT_EQ(unknown.charset, 20866U);
        EXPECT_EQ(detections, 1);
    }
}

TEST(CharsetDiscoveryTest, ADetectedCharsetIsAKnownOne) {
    Base::Services services = Base::PLATFORM_SERVICES;
    services.detectCharset = DetectKoi8;
    const Base::ServicesOverride replacement(services);
    FedParser bench(Observed::WIDE);
    bench.Start(0, DATA_STREAM_AUTO);
    const std::string document = "<meta charset=x>" + std::string(300, 'a');
    EXPECT_EQ(bench.FeedStream(document), 705U);
    EXPECT_EQ(bench.FeedStream("<meta charset=utf-8>" + document), 0U);
    EXPECT_EQ(bench.GetCharset(), 20866U);
    EXPECT_TRUE(bench.WasCharsetDetectorUsed());
    EXPECT_EQ(bench.EndParse(), 0U);
}

TEST(CharsetDiscoveryTest, EscapeRunsFollowTheNewCharset) {
    struct Row {
        const char* charset;
        StringNS::CharSet::Code code;
        bool hidden;
    };
    const Row rows[] = {
        {"iso-2022-jp", 50221, true}, {"iso-2022-kr", 50225, true}, {"koi8-r", 20866, false}, {"x-unknown", 0, false}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.charset);
        const std::string run = "\x1B$B<b>\x1B(B";
        const std::string document =
            run + "<meta charset=" + row.charset + ">" + run + "<p q=\"\x1B$B\"\x1B(B\"><script>\"\x1B$B\"</script>";
        for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
            ForEverySplit(document, [&](const Cuts& cuts) {
                const DocumentRun parsed = ParseDocument(document, cuts, Unknown(Observed::NARROW, feed));
                Lines expected{"start-parsing", "charset(0)",
                               "text(\\x1B$B)", "start(|b||)",
                               "text(\\x1B(B)", "start(|meta|{ |charset|=|" + std::string(row.charset) + "}|)"};
                if (row.code != 0)
                    expected.push_back(Trace::FormatCharset(row.code));
                const Lines hidden{"text(\\x1B$B<b>\\x1B(B)", "start(|p|{ |q|=|\"\\x1B$B\"\\x1B(B\"}|)",
                                   "start(|script||)", "js-start"};
                const Lines plain{"text(\\x1B$B)",
                                  "start(|b||)",
                                  "text(\\x1B(B)",
                                  "start(|p|{ |q|=|\"\\x1B$B\"\\x1B(B\"}|)",
                                  "start(|script||)",
                                  "js-start",
                                  "d-string(\\x1B$B)",
                                  "end(|script|||)",
                                  "js-end"};
                const Lines& rest = row.hidden ? hidden : plain;
                expected.insert(expected.end(), rest.begin(), rest.end());
                if (row.hidden && feed == Feed::STREAM)
                    expected.push_back("junk(\"\\x1B$B\"</script>)");
                if (!row.hidden || feed == Feed::STREAM)
                    expected.push_back("end-parsing");
                EXPECT_EQ(parsed.Lines(), Join(expected));
                EXPECT_EQ(parsed.endResult, row.hidden && feed == Feed::BUFFER ? 16U : 0U);
            });
        }
    }
}

TEST(CharsetDiscoveryTest, ACopyKnowsWhatWasDeclared) {
    FedParser bench;
    bench.Start(0);
    EXPECT_EQ(bench.Feed(KOI8_R), 0U);
    GenericParser copy(bench);
    bench.TakeLines();
    for (GenericParser* const parser : {static_cast<GenericParser*>(&bench), &copy}) {
        EXPECT_EQ(parser->ParseBuffer("<meta charset=utf-8>", 20), 0U);
        EXPECT_EQ(parser->GetCharset(), 20866U);
        EXPECT_EQ(bench.TakeLines(), "start(|meta|{ |charset|=|utf-8}|)\n");
    }
}

}  // namespace
}  // namespace Kestra::Test
