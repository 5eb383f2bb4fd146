#include "tests/html/parser/DocumentRows.h"
#include "tests/support/Pieces.h"

namespace Kestra::Test {
namespace {

/// Documents whose cuts fall into tokens of every kind.
const char* const DOCUMENTS[] = {
    "text<a b=\"c\" d='e' f=g h i>text</a j='k' />",
    "< a b = 'c' d e />< /b >x</ c\td><br/>y",
    "<script>a'b\\'c'\"d\\\"e\"/f\\/g/</p q='r'>h<i</script>j",
    "<style>a/b'c'\"d\"</script>e<f</style>g</style>",
    "\n<a\nb\n=\n'\nc'\n>\nd\n</a\n>\n",
    "<!--a--b--->c<![CDATA[d]e]]>f<![if g]>h<![endif]>i<![CDATA[j]]k",
    "<! DOCTYPE a 'b' \"c\"d ><?xml e='f' g h=i ?><?j 'k\\'?>'/*l*///m\n?>n",
    "<script>/*a**b*///c<d</e<!f<?g\n//h<!--i-->j//<![cData[k]]>'l'</script>",
    "<xmp>a\n</xm</xmp\t>b<xmp>",
    "<script><!--<SCRIPT></script>--></scripT/><xmp>",
};

/// Scripts are text in the documents with an example.
GenericParser::ScriptMode ModeOf(std::string_view document) {
    return document.find("<xmp>") == std::string_view::npos ? SCRIPT_AS_TOKENS : SCRIPT_AS_TEXT;
}

/// The pieces go to a copy each; the one it was copied from reads something else and is destroyed.
void GoOnWithACopy(std::unique_ptr<GenericParser>* parser) {
    auto copy = std::make_unique<GenericParser>(**parser);
    (*parser)->SetObserver(static_cast<HTML::ParserObserver<char, std::string>*>(nullptr), false);
    const std::string other = ToUtf16LE(std::string_view("'\"/>z</z>z<z z='"));
    (*parser)->ParseBuffer(other.data(), other.size());
    *parser = std::move(copy);
}

/// The same with a parser that has read something else and is assigned to.
void GoOnWithAnAssignedOne(std::unique_ptr<GenericParser>* parser) {
    auto assigned = std::make_unique<GenericParser>();
    assigned->SetDetectCharsetErrors(true);
    assigned->StartParse(50221, (*parser)->IsWParser() ? DATA_STREAM_8BIT : DATA_STREAM_UTF16);
    const std::string other = ToUtf16LE(std::string_view("\n<script>z<z'z'</z z=\""));
    assigned->ParseBuffer(other.data(), other.size());
    *assigned = **parser;
    (*parser)->SetObserver(static_cast<HTML::ParserObserver<char, std::string>*>(nullptr), false);
    (*parser)->ParseBuffer(other.data(), other.size());
    *parser = std::move(assigned);
}

TEST(ParserCopyTest, ACopyFinishesTokensOfEveryKindLikeItsOriginal) {
    for (const char* const document : DOCUMENTS) {
        for (const Route& route : ROUTES) {
            for (const bool assigned : {false, true}) {
                SCOPED_TRACE(std::string(document) + ", " + route.name + (assigned ? ", assigned" : ", copied"));
                DocumentSettings settings = SettingsFor(route);
                settings.scriptMode = ModeOf(document);
                const DocumentRun whole = ParseBy(route, document, {}, settings);
                EXPECT_EQ(whole.parseResult, 0U);
                EXPECT_EQ(whole.endResult, 0U);
                ForEverySplit(document, [&](const Cuts& cuts) {
                    settings.betweenPieces = assigned ? GoOnWithAnAssignedOne : GoOnWithACopy;
                    const DocumentRun run = ParseBy(route, document, cuts, settings);
                    EXPECT_EQ(run.Lines(), whole.Lines());
                    ExpectSuccess(run);
                    EXPECT_EQ(run.line, whole.line);
                    EXPECT_EQ(run.column, whole.column);
                    EXPECT_EQ(run.parserName, whole.parserName);
                    EXPECT_EQ(run.charset, whole.charset);
                });
            }
        }
    }
}

/// What a copy makes of more input that was taken in callback number `callback`, counted from 0.
std::string GoOnFromCallback(const Route& route, std::string_view document, const Cuts& cuts, std::size_t callback,
                             std::string_view more) {
    FedParser parser(route.observed);
    std::unique_ptr<GenericParser> copy;
    parser.SetScriptMode(ModeOf(document));
    parser.SetHook([&](const std::string&) {
        if (parser.lines.size() == callback + 1)
            copy = std::make_unique<GenericParser>(parser);
    });
    parser.Start(1252, TypeFor(route.wideInput));
    for (const auto& [begin, end] : PiecesOf(cuts, document.size())) {
        const std::string bytes = BytesFor(document.substr(begin, end - begin), route.wideInput);
        const HeapPiece<char> piece{std::string_view(bytes)};
        parser.ParseBuffer(piece.Data(), piece.Size());
    }
    parser.EndParse();
    if (copy == nullptr)
        return std::string();
    const std::string name = parser.lines[callback];
    parser.lines.clear();
    parser.SetHook(nullptr);
    const std::string bytes = BytesFor(more, route.wideInput);
    const std::uint32_t parseResult = copy->ParseBuffer(bytes.data(), bytes.size());
    const std::uint32_t endResult = copy->EndParse();
    return name + "\n" + Join(parser.lines) + std::to_string(parseResult) + ", " + std::to_string(endResult) + ", " +
           std::to_string(copy->GetLine()) + ":" + std::to_string(copy->GetColumn());
}

TEST(ParserCopyTest, ACopyMadeInACallbackDoesNotTellHowTheInputWasCut) {
    const char* const documents[] = {
        "ab<i>c",
        "a</b>c</d e>",
        "<a b=c d/>x<br/>",
        "<script>a</p>b'c'</script>d",
        "<!--a-->b<style>c",
        "<xmp>a</xm</xmp b>c",
    };
    const char* const continuations[] = {"cd", "x>y", " x=y>z", "/>z", "<z>", ">", "'\">"};
    for (const char* const document : documents) {
        for (const Route& route : ROUTES) {
            for (const char* const more : continuations) {
                for (std::size_t callback = 0;; ++callback) {
                    const std::string whole = GoOnFromCallback(route, document, {}, callback, more);
                    if (whole.empty())
                        break;
                    SCOPED_TRACE(std::string(document) + ", " + route.name + ", then " + more + " from callback " +
                                 std::to_string(callback));
                    ForEverySplit(document, [&](const Cuts& cuts) {
                        EXPECT_EQ(GoOnFromCallback(route, document, cuts, callback, more), whole);
                    });
                }
            }
        }
    }
}

TEST(ParserCopyTest, ACopyMadeInACallbackGoesOnAsTheRecognizerWould) {
    struct Row {
        const char* note;
        const char* document;
        std::size_t callback;  // from 0, the start and the charset included
        const char* more;
        const char* expected;
    };
    const Row rows[] = {
        {"text is pending until its callback has returned", "ab<i>", 2, "cd",
         "text(ab)\ntext(abcd)\nend-parsing\n0, 0, 1:6"},
        {"the content of an example as well", "<xmp>a</xmp>", 3, "b</xmp>",
         "text(a)\ntext(ab)\nend(|xmp|||)\nend-parsing\n0, 0, 1:15"},
        {"an end tag looks at what comes next", "</b>", 2, "x>y",
         "end(|b|||)\nend(|b||{|x}|)\ntext(y)\nend-parsing\n0, 0, 1:8"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        ForEverySplit(row.document, [&](const Cuts& cuts) {
            EXPECT_EQ(GoOnFromCallback(NARROW_TO_NARROW, row.document, cuts, row.callback, row.more), row.expected);
        });
    }
}

TEST(ParserCopyTest, ACopyFinishesEscapeRunsLikeItsOriginal) {
    const std::string document = "a\x1B$B<'\x1B(B<p a=\"\x1B$B\">\x1B(B\"><script>\"\x1B$B\"\x1B(B\"/\x1B$B/";
    for (const bool assigned : {false, true}) {
        const DocumentSettings plain = SettingsFor(NARROW_TO_NARROW, Feed::BUFFER, 50221);
        const DocumentRun whole = ParseDocument(document, {}, plain);
        EXPECT_EQ(whole.parseResult, 0U);
        ForEverySplit(document, [&](const Cuts& cuts) {
            DocumentSettings settings = plain;
            settings.betweenPieces = assigned ? GoOnWithAnAssignedOne : GoOnWithACopy;
            EXPECT_EQ(ParseDocument(document, cuts, settings).Lines(), whole.Lines());
        });
    }
}

TEST(ParserCopyTest, ACopyGoesOnInsideAMark) {
    const std::string documents[] = {"\xEF\xBB\xBF<a>", "\xEF\xBB<a>"};
    for (const std::string& document : documents) {
        for (const bool assigned : {false, true}) {
            ForEverySplit(document, [&](const Cuts& cuts) {
                DocumentSettings settings;
                settings.type = DATA_STREAM_AUTO;
                const DocumentRun whole = ParseDocument(document, cuts, settings);
                // The original goes on with other bytes; those of the copy are still looked at as a
                // mark.
                settings.betweenPieces = assigned ? GoOnWithAnAssignedOne : GoOnWithACopy;
                const DocumentRun run = ParseDocument(document, cuts, settings);
                EXPECT_EQ(run.Lines(), whole.Lines());
                EXPECT_EQ(run.charset, whole.charset);
            });
        }
    }
}

TEST(ParserCopyTest, ACopyHasTheSettingsAndTheAnswers) {
    FedParser parser(Observed::WIDE);
    parser.SetDetectCharsetErrors(true);
    parser.SetSelfCheck(SELF_CHECK_CRC);
    parser.SetChrDetMinConfidence(12);
    parser.Start(65001);
    EXPECT_EQ(parser.Feed("\xFF\n<a"), 0U);
    GenericParser assigned;
    assigned = parser;
    GenericParser copy(parser);
    for (GenericParser* const other : {&copy, &assigned}) {
        EXPECT_TRUE(other->GetDetectCharsetErrors());
        EXPECT_TRUE(other->HasCharsetErrors());
        EXPECT_EQ(other->GetSelfCheck(), SELF_CHECK_CRC);
        EXPECT_EQ(other->GetChrDetMinConfidence(), 12U);
        EXPECT_EQ(other->GetCharset(), 65001U);
        EXPECT_EQ(other->GetLine(), 2U);
        EXPECT_EQ(other->GetColumn(), 3U);
        EXPECT_FALSE(other->IsWParser());
        EXPECT_TRUE(other->GetCurrentParserName() == parser.GetCurrentParserName());
    }
    // Each goes its own way.
    parser.lines.clear();
    EXPECT_EQ(copy.ParseBuffer("b>", 2), 0U);
    EXPECT_EQ(parser.Feed(" c>"), 0U);
    EXPECT_EQ(assigned.ParseBuffer("/>", 2), 0U);
    EXPECT_EQ(Join(parser.lines), "start(|ab||)\nstart(|a|{ |c}|)\nshort(|a||)\n");
}

TEST(ParserCopyTest, ACopyKnowsThatTheDocumentHasEnded) {
    FedParser parser;
    parser.Start();
    EXPECT_EQ(parser.EndParse(), 0U);
    parser.lines.clear();
    GenericParser copy(parser);
    GenericParser assigned;
    assigned = parser;
    EXPECT_EQ(copy.EndParse(), 0U);
    EXPECT_EQ(assigned.EndParse(), 0U);
    EXPECT_EQ(Join(parser.lines), "");
}

TEST(ParserCopyTest, ACopyInheritsNoStream) {
    for (const bool wide : {false, true}) {
        for (const bool owned : {false, true}) {
            SCOPED_TRACE(owned ? "owned" : "borrowed");
            Lines lines;
            Trace::TraceObserver<char, std::string> observer(&lines);
            auto parser = std::make_unique<GenericParser>();
            parser->SetObserver(&observer, false);
            parser->StartParse(1252, TypeFor(wide));
            const std::string_view document = "a<b c";
            auto stream = std::make_unique<VFS::MemoryInputStream>(wide ? ToUtf16LE(document) : std::string(document));
            VFS::InputStream* const fed = owned ? stream.release() : stream.get();
            EXPECT_EQ(parser->ParseStream(fed, owned), 0U);
            lines.clear();
            GenericParser copy(*parser);
            GenericParser assigned;
            assigned = *parser;
            EXPECT_EQ(copy.EndParse(), 16U);
            EXPECT_EQ(assigned.EndParse(), 16U);
            EXPECT_EQ(Join(lines), "");
            EXPECT_EQ(parser->EndParse(), 0U);
            EXPECT_EQ(Join(lines),
                      wide ? "junk(<\\x00b\\x00 \\x00c\\x00)\nend-parsing\n" : "junk(<b c)\nend-parsing\n");
        }
    }
}

TEST(ParserCopyTest, AParserAssignedToItselfKeepsEverything) {
    for (const bool owned : {false, true}) {
        FedParser parser;
        parser.Start();
        EXPECT_EQ(parser.FeedStream("a<b c", owned), 0U);
        const GenericParser& self = parser;
        parser.GenericParser::operator=(self);
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(Join(parser.lines), "start-parsing\ncharset(1252)\ntext(a)\njunk(<b c)\nend-parsing\n");
    }
}

TEST(ParserCopyTest, AnAssignedParserForgetsItsOwnStream) {
    Lines lines;
    Trace::TraceObserver<char, std::string> observer(&lines);
    GenericParser source;
    source.SetObserver(&observer, false);
    source.StartParse(1252, DATA_STREAM_8BIT);
    EXPECT_EQ(source.ParseBuffer("<s t", 4), 0U);
    GenericParser target;
    target.StartParse(1252, DATA_STREAM_8BIT);
    auto stream = std::make_unique<VFS::MemoryInputStream>("<x y");
    EXPECT_EQ(target.ParseStream(stream.get(), false), 0U);
    target = source;
    stream.reset();
    lines.clear();
    EXPECT_EQ(target.EndParse(), 16U);
    EXPECT_EQ(Join(lines), "");
}

}  // namespace
}  // namespace Kestra::Test
