#include <iterator>
#include <new>

#include "platform/Services.h"
#include "tests/html/parser/DocumentRows.h"
#include "tests/support/RecognizerRun.h"

namespace Kestra::Test {
namespace {

TEST(DeliveryTest, A8BitDocumentForAWideObserver) {
    struct Row {
        const char* note;
        StringNS::CharSet::Code charset;
        std::string input;
        Tokens tokens;
    };
    const Row rows[] = {
        {"1252 in a value", 1252, "<p title='\xE9'>", "start(|p|{ |title|=|'\\u00E9'}|)"},
        {"1252, a byte above Latin-1", 1252, "\x80<\x93>", "text(\\u20AC)\nstart(|\\u201C||)"},
        {"1252, its undefined bytes", 1252, "\x81\x8D\x8F\x90\x9D", "text(\\u0081\\u008D\\u008F\\u0090\\u009D)"},
        {"UTF-8", 65001, "\xD0\x96<p t=\"\xE3\x81\x82\">\xF0\x9F\x98\x80</\xC3\xA9>",
         "text(\\u0416)\nstart(|p|{ |t|=|\"\\u3042\"}|)\ntext(\\uD83D\\uDE00)\nend(|\\u00E9|||)"},
        {"UTF-8, what is invalid", 65001, "a\xFF<b c=\xE3\x81>", "text(a\\uFFFD)\nstart(|b|{ |c|=|\\uFFFD}|)"},
        {"932, with a second byte that is a backslash", 932, "\x83\x5C<a b='\x82\xA0'>",
         "text(\\u30BD)\nstart(|a|{ |b|=|'\\u3042'}|)"},
        {"1251", 1251, "\xC6<\xE6>", "text(\\u0416)\nstart(|\\u0436||)"},
        {"20866", 20866, "\xF6", "text(\\u0416)"},
        {"1200 read as bytes: pairs make a character, an odd last byte none", 1200, "a\x30<bc>",
         "text(\\u3061)\nstart(|\\u6362||)"},
        {"28591", 28591, "\x80\xE9", "text(\\u0080\\u00E9)"},
        {"20127: bytes from 128 up have no meaning", 20127, "a\xE9", "text(a\\uFFFD)"},
        {"0 means 1252", 0, "\x80", "text(\\u20AC)"},
        {"NULs are kept", 1252, std::string("a\0b\0<c d='\0'>\0", 14),
         "text(a\\x00b\\x00)\nstart(|c|{ |d|=|'\\x00'}|)\ntext(\\x00)"},
        {"every field of a start tag", 1252, "< \xE9 \xE8 \xEA = '\xEB' \n>",
         "start( |\\u00E9|{ |\\u00E8}{ |\\u00EA| = |'\\u00EB'}| \\n)"},
        {"every field of a short tag", 1252, "< \xE9 \xE8 \xEA\t=\t'\xEB' />",
         "short( |\\u00E9|{ |\\u00E8}{ |\\u00EA|\\t=\\t|'\\u00EB'}| )"},
        {"every field of an end tag", 1252, "</ \xE9\t\xE8 = \"\xEB\" />",
         "end( |\\u00E9|\\t|{|\\u00E8| = |\"\\u00EB\"}| , slash)"},
        {"an end tag that is not closed", 1252, "</\xE9<a>", "end(|\\u00E9|||, open)\nstart(|a||)"},
        {"script strings", 1252, "<script>'\xE9'\"\xE8\"\xEA",
         "start(|script||)\njs-start\ns-string(\\u00E9)\nd-string(\\u00E8)\ntext(\\u00EA)"},
        {"a comment, and one that is open", 1252, "<!--\xE9--><!--\x80", "comment(\\u00E9)\ncomment(\\u20AC, open)"},
        {"CDATA sections", 1252, "<![cdata[\xE9]]><![CDATA[\x80]]x",
         "cdata(cdata|[\\u00E9)\ncdata(CDATA|[\\u20AC]], open)\ntext(x)"},
        {"conditional sections", 1252, "<![if \xE9]><![endif]><![IF \x80",
         "conditional(if| \\u00E9|)\nconditional(endif||)\nconditional(IF| \\u20AC|, no-bracket, open)"},
        {"every field of a declaration", 1252, "<! \xE9 \xE8 '\xEA' \"\x80\"\t>",
         "entity( |\\u00E9|{ |\\u00E8}{ |'\\u00EA'}{ |\"\\u20AC\"}|\\t)"},
        {"every field of an XML declaration", 1252, "<? xml-\xE9 \xE8 = '\xEA' \x80 ?><?xml />",
         "extern( |xml-\\u00E9|{ |\\u00E8| = |'\\u00EA'}{ |\\u20AC}| )\nextern(|xml|| , slash)"},
        {"a processing instruction", 1252, "<?\xE9 '\x80'?>", "extern-text(<?\\u00E9 '\\u20AC'?>)"},
        {"script comments, line comments among them", 1252, "<script>/*\xE9*///\x80\n",
         "start(|script||)\njs-start\nc-comment(\\u00E9)\ncpp-comment(\\u20AC)\ntext(\\n)"},
        {"a character that the parts of a comment share", 65001, "<!--\xE3\x81-\x82-->", "comment(\\uFFFD-\\uFFFD)"},
        {"932, a second byte that is a bracket", 932, "<!--\x83\x5D-->", "comment(\\u30BE)"},
    };
    for (const Row& row : rows) {
        for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
            SCOPED_TRACE(row.note);
            ForEverySplit(row.input, [&](const Cuts& cuts) {
                DocumentSettings settings = SettingsFor(NARROW_TO_WIDE, feed, row.charset);
                // Detection at the end of a stream has tests of its own.
                settings.minConfidence = 101;
                const DocumentRun run = ParseDocument(row.input, cuts, settings);
                Lines expected{"start-parsing", Trace::FormatCharset(row.charset)};
                expected.insert(expected.end(), row.tokens.begin(), row.tokens.end());
                expected.push_back("end-parsing");
                EXPECT_EQ(run.Lines(), Join(expected));
                ExpectSuccess(run);
            });
        }
    }
}

TEST(DeliveryTest, AWideDocumentForAn8BitObserver) {
    // The bytes of UTF-16, the low one first.
    struct Row {
        const char* note;
        WideString input;
        Tokens tokens;
    };
    const Row rows[] = {
        {"every field of a start tag", KESTRA_WIDE("< \u00E9 \u0416 b = '\u3042' >"),
         "start( \\x00|\\xE9\\x00|{ \\x00|\\x16\\x04}{ \\x00|b\\x00| \\x00= \\x00|'B0'}| \\x00)"},
        {"a short tag", KESTRA_WIDE("<br />"), "short(|b\\x00r\\x00|| \\x00)"},
        {"an end tag", KESTRA_WIDE("</a b />"), "end(|a\\x00| \\x00|{|b\\x00}| \\x00, slash)"},
        {"an end tag that is not closed", KESTRA_WIDE("</a<b>"), "end(|a\\x00|||, open)\nstart(|b\\x00||)"},
        {"text and a lone surrogate", WideString{'a', 0xFFFD, 0xD800, 0xDC00, 0xDC01},
         "text(a\\x00\\xFD\\xFF\\x00\\xD8\\x00\\xDC\\x01\\xDC)"},
        {"script strings", KESTRA_WIDE("<script>'\u00E9'\"\u0416\""),
         "start(|s\\x00c\\x00r\\x00i\\x00p\\x00t\\x00||)\njs-start\ns-string(\\xE9\\x00)\nd-string(\\x16\\x04)"},
        {"a NUL", WideString(KESTRA_WIDE("a\0b"), 3), "text(a\\x00\\x00\\x00b\\x00)"},
        {"a comment", KESTRA_WIDE("<!--\u0416-->"), "comment(\\x16\\x04)"},
        {"a CDATA section", KESTRA_WIDE("<![CDATA \u0416]]x"),
         "cdata(C\\x00D\\x00A\\x00T\\x00A\\x00| \\x00\\x16\\x04]\\x00]\\x00, open)\ntext(x\\x00)"},
        {"a conditional section", KESTRA_WIDE("<![if \u0416"),
         "conditional(i\\x00f\\x00| \\x00\\x16\\x04|, no-bracket, open)"},
        {"a declaration", KESTRA_WIDE("<! a \u0416 >"), "entity( \\x00|a\\x00|{ \\x00|\\x16\\x04}| \\x00)"},
        {"an XML declaration", KESTRA_WIDE("<? xml b='\u0416' />"),
         "extern( \\x00|x\\x00m\\x00l\\x00|{ \\x00|b\\x00|=|'\\x16\\x04'}| \\x00, slash)"},
        {"a processing instruction", KESTRA_WIDE("<?\u0416>"), "extern-text(<\\x00?\\x00\\x16\\x04>\\x00)"},
        {"script comments", KESTRA_WIDE("<script>/*\u0416*///\u00E9\n"),
         "start(|s\\x00c\\x00r\\x00i\\x00p\\x00t\\x00||)\njs-start\nc-comment(\\x16\\x04)\ncpp-comment(\\xE9\\x00)"
         "\ntext(\\n\\x00)"},
    };
    for (const Row& row : rows) {
        for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
            SCOPED_TRACE(row.note);
            ForEverySplit(WideStringView(row.input), [&](const Cuts& cuts) {
                const DocumentRun run = ParseDocument(row.input, cuts, SettingsFor(WIDE_TO_NARROW, feed));
                Lines expected{"start-parsing", "charset(1200)"};
                expected.insert(expected.end(), row.tokens.begin(), row.tokens.end());
                expected.push_back("end-parsing");
                EXPECT_EQ(run.Lines(), Join(expected));
                ExpectSuccess(run);
            });
        }
    }
}

TEST(DeliveryTest, JunkCrossesUnconverted) {
    // The bytes of invalid UTF-8, of an unsupported charset, and of UTF-16.
    for (const StringNS::CharSet::Code charset : {65001U, 4711U}) {
        DocumentSettings settings = SettingsFor(NARROW_TO_WIDE, Feed::STREAM, charset);
        settings.detectCharsetErrors = true;
        const DocumentRun run = ParseDocument("<\xFF / >\xC3\xA9", {}, settings);
        EXPECT_EQ(run.Lines(), Join({"start-parsing", Trace::FormatCharset(charset), "junk(<\\xFF / )",
                                     "junk(>\\xC3\\xA9)", "end-parsing"}));
        EXPECT_FALSE(run.hasCharsetErrors);
    }
    const DocumentRun run =
        ParseDocument(WideStringView(KESTRA_WIDE("<\u3042")), {}, SettingsFor(WIDE_TO_NARROW, Feed::STREAM));
    EXPECT_EQ(run.Lines(), Join({"start-parsing", "charset(1200)", "junk(<\\x00B0)", "end-parsing"}));
}

TEST(DeliveryTest, WithoutAConverterOnlyTheEventsArrive) {
    const DocumentRun run = ParseDocument(EVERY_CALLBACK, {}, SettingsFor(NARROW_TO_WIDE, Feed::STREAM, 4711));
    EXPECT_EQ(run.Lines(), Join({"start-parsing", "charset(4711)", "js-start", "js-end", "css-start", "css-end",
                                 "junk(<i j / )", "junk(>)", "end-parsing"}));
    ExpectSuccess(run);
    EXPECT_EQ(run.column, std::string_view(EVERY_CALLBACK).size() + 1);
    EXPECT_EQ(run.conversionError, static_cast<std::uint32_t>(RESULT_UNSUPPORTED_CHARSET));

    // An 8-bit observer needs none.
    const DocumentRun unconverted =
        ParseDocument(EVERY_CALLBACK, {}, SettingsFor(NARROW_TO_NARROW, Feed::STREAM, 4711));
    EXPECT_EQ(unconverted.Lines(), Join(WholeTrace(EVERY_CALLBACK_TOKENS, NARROW_TO_NARROW, 4711)));
    EXPECT_EQ(unconverted.conversionError, 0U);
}

TEST(DeliveryTest, EventsAndTokensOfEveryKindByEveryRoute) {
    for (const Route& route : ROUTES) {
        SCOPED_TRACE(route.name);
        const std::string document = EVERY_CALLBACK;
        ForEverySplit(document, [&](const Cuts& cuts) {
            const DocumentRun run = ParseBy(route, document, cuts, SettingsFor(route, Feed::STREAM));
            EXPECT_EQ(Join(Comparable(run.trace, route)), Join(WholeTrace(EVERY_CALLBACK_TOKENS, route)));
        });
    }
}

/// Conversions whose text contains this fail.
constexpr char FAILING = '!';
constexpr std::uint32_t CONVERSION_CODE = 815;
int conversions = 0;
std::vector<StringNS::CharSet::Code> conversionCodes;

std::uint32_t ToWideOrFail(StringNS::CharSetConverter* converter, StringNS::CharSet::Code code, const char* data,
                           std::uint64_t size, WideString* output) {
    ++conversions;
    conversionCodes.push_back(code);
    if (std::string_view(data, static_cast<std::size_t>(size)).find(FAILING) != std::string_view::npos)
        return CONVERSION_CODE;
    return Base::PLATFORM_SERVICES.toWide(converter, code, data, size, output);
}

std::uint32_t FromWideOrFail(StringNS::CharSetConverter* converter, StringNS::CharSet::Code code, const WideChar* data,
                             std::uint64_t size, std::string* output) {
    ++conversions;
    conversionCodes.push_back(code);
    if (WideStringView(data, static_cast<std::size_t>(size)).find(static_cast<WideChar>(FAILING)) !=
        WideStringView::npos)
        return CONVERSION_CODE;
    return Base::PLATFORM_SERVICES.fromWide(converter, code, data, size, output);
}

Base::Services FailingConverters() {
    Base::Services services = Base::PLATFORM_SERVICES;
    services.toWide = ToWideOrFail;
    services.fromWide = FromWideOrFail;
    return services;
}

TEST(DeliveryTest, AFailedConversionSkipsOneCallback) {
    const DocumentRow rows[] = {
        {"text", "!<a>b", "start(|a||)\ntext(b)"},
        {"a name", "x<a!>b</c!>d<e!/>f", "text(x)\ntext(b)\ntext(d)\ntext(f)"},
        {"an attribute's name", "x<a b!>y", "text(x)\ntext(y)"},
        {"an attribute's value", "x<a b='c' d='!'>y<e>", "text(x)\ntext(y)\nstart(|e||)"},
        {"the last of many", "x<a b='c' d e=f g h=\"!\"/>y", "text(x)\ntext(y)"},
        {"an attribute of an end tag", "x</a b=!>y", "text(x)\ntext(y)"},
        {"a script string", "<script>'!''a'\"!\"\"b\"", "start(|script||)\njs-start\ns-string(a)\nd-string(b)"},
        {"a regular expression", "<script>/!\nb", "start(|script||)\njs-start\ntext(\\nb)"},
        {"a comment", "<!--a!--><b>", "start(|b||)"},
        {"a CDATA section", "<![CDATA[!]]>x", "text(x)"},
        {"a condition", "<![if !a]>x", "text(x)"},
        {"the name of a declaration", "<!a!>x", "text(x)"},
        {"an item", "<!a b!>x", "text(x)"},
        {"the last item of many", "<!a b 'c' \"d!\">x", "text(x)"},
        {"the name of an XML declaration", "<?xml-! a?>x", "text(x)"},
        {"an attribute of it", "<?xml a b='!'?>x", "text(x)"},
        {"a processing instruction", "<?a !?>x", "text(x)"},
        {"script comments", "<script>/*!*//*a*///!\n//b\n",
         "start(|script||)\njs-start\nc-comment(a)\ntext(\\n)\ncpp-comment(b)\ntext(\\n)"},
        {"a script begins although its tag is skipped", "<script a=!>'<'</script b=!>'",
         "js-start\ns-string(<)\njs-end\ntext(')"},
        {"a style too", "<style a=!>'<'</style b=!>'", "css-start\ns-string(<)\ncss-end\ntext(')"},
    };
    const Base::Services services = FailingConverters();
    const Base::ServicesOverride replacement(services);
    for (const DocumentRow& row : rows) {
        for (const Route& route : {NARROW_TO_WIDE, WIDE_TO_NARROW}) {
            for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
                SCOPED_TRACE(std::string(row.note) + ", " + route.name);
                ForEverySplit(row.input, [&](const Cuts& cuts) {
                    const DocumentRun run = ParseBy(route, row.input, cuts, SettingsFor(route, feed));
                    ExpectTokens(run, row.tokens, route);
                    EXPECT_EQ(run.conversionError, CONVERSION_CODE);
                    EXPECT_EQ((Place{run.line, run.column}), PlaceAfter(std::string_view(row.input), row.input.size()));
                });
            }
        }
    }
}

TEST(DeliveryTest, TheConversionErrorIsTheLastOneOfTheDocument) {
    const Base::Services services = FailingConverters();
    const Base::ServicesOverride replacement(services);
    FedParser parser(Observed::WIDE);
    EXPECT_EQ(parser.GetConversionError(), 0U) << "no parser runs";
    parser.Start();
    const auto feed = [&parser](std::string_view text) {
        EXPECT_EQ(parser.Feed(text), 0U);
        return parser.GetConversionError();
    };
    EXPECT_EQ(feed("a<b>"), 0U);
    EXPECT_EQ(feed("!<b>"), CONVERSION_CODE);
    EXPECT_EQ(feed("a<b>"), CONVERSION_CODE) << "what succeeds later does not hide it";
    EXPECT_FALSE(parser.HasCharsetErrors()) << "not asked for";
    parser.SetDetectCharsetErrors(true);
    EXPECT_FALSE(parser.HasCharsetErrors()) << "recorded only while it is on";
    EXPECT_EQ(feed("!<b>"), CONVERSION_CODE);
    EXPECT_TRUE(parser.HasCharsetErrors());
    EXPECT_EQ(GenericParser(parser).GetConversionError(), CONVERSION_CODE);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(parser.GetConversionError(), CONVERSION_CODE);
    parser.Start(1252, DATA_STREAM_AUTO);
    EXPECT_EQ(parser.GetConversionError(), 0U) << "no parser runs yet";
    EXPECT_EQ(feed("a<b>"), 0U);
    EXPECT_FALSE(parser.HasCharsetErrors());
}

bool isThrown = false;  // how want of memory shows

template <typename Text>
std::uint32_t LackMemoryFor(const Text& text) {
    if (text.find(static_cast<typename Text::value_type>(FAILING)) == Text::npos)
        return RESULT_OK;
    if (isThrown)
        throw std::bad_alloc();
    return RESULT_OUT_OF_MEMORY;
}

std::uint32_t ToWideOrLackMemory(StringNS::CharSetConverter* converter, StringNS::CharSet::Code code, const char* data,
                                 std::uint64_t size, WideString* output) {
    const std::uint32_t result = LackMemoryFor(std::string_view(data, static_cast<std::size_t>(size)));
    return result != RESULT_OK ? result : Base::PLATFORM_SERVICES.toWide(converter, code, data, size, output);
}

std::uint32_t FromWideOrLackMemory(StringNS::CharSetConverter* converter, StringNS::CharSet::Code code,
                                   const WideChar* data, std::uint64_t size, std::string* output) {
    const std::uint32_t result = LackMemoryFor(WideStringView(data, static_cast<std::size_t>(size)));
    return result != RESULT_OK ? result : Base::PLATFORM_SERVICES.fromWide(converter, code, data, size, output);
}

/// Conversions of a text with `FAILING` lack memory.
class LackingMemory {
public:
    LackingMemory() : services(MakeServices()), replacement(services) {}

private:
    static Base::Services MakeServices() {
        Base::Services lacking = Base::PLATFORM_SERVICES;
        lacking.toWide = ToWideOrLackMemory;
        lacking.fromWide = FromWideOrLackMemory;
        return lacking;
    }

    Base::Services services;
    Base::ServicesOverride replacement;
};

TEST(DeliveryTest, WantOfMemoryLosesATokenAndIsTheAnswerOfTheCall) {
    const LackingMemory lacking;
    for (const bool thrown : {false, true}) {
        isThrown = thrown;
        for (const Route& route : {NARROW_TO_WIDE, WIDE_TO_NARROW}) {
            SCOPED_TRACE(std::string(route.name) + (thrown ? ", thrown" : ", answered"));
            Lines lines;
            Trace::TraceObserver<char, std::string> narrow(&lines);
            Trace::TraceObserver<WideChar, WideString> wide(&lines);
            GenericParser parser;
            if (route.wideInput)
                parser.SetObserver(&narrow, false);
            else
                parser.SetObserver(&wide, false);
            parser.SetDetectCharsetErrors(true);
            const auto feed = [&](std::string_view latin1) {
                std::string bytes(latin1);
                if (route.wideInput)
                    bytes = ToUtf16LE(To<WideString>(latin1));
                return parser.ParseBuffer(bytes.data(), bytes.size());
            };
            const auto start = [&] {
                lines.clear();
                parser.StartParse(1252, TypeFor(route.wideInput));
            };
            start();
            EXPECT_EQ(feed("a<b>"), 0U);
            EXPECT_EQ(feed("!<b c='!'>d<e>"), 8U);
            EXPECT_EQ(parser.GetConversionError(), 8U);
            EXPECT_TRUE(parser.HasCharsetErrors());
            EXPECT_EQ(feed("f<g>"), 0U) << "told once";
            EXPECT_EQ(feed("!"), 0U) << "text is pending";
            EXPECT_EQ(parser.EndParse(), 8U);
            EXPECT_EQ(Join(Comparable(lines, route)),
                      Join(WholeTrace("text(a)\nstart(|b||)\ntext(d)\nstart(|e||)\ntext(f)\nstart(|g||)", route)));
            start();
            EXPECT_EQ(parser.GetConversionError(), 0U);
            EXPECT_EQ(feed("a<b>"), 0U);
            EXPECT_EQ(feed("!<b / >"), 11U) << "other results come first";
            EXPECT_EQ(parser.EndParse(), 16U);
            EXPECT_EQ(feed("x"), 8U) << "the next call that has none answers it";
            EXPECT_EQ(feed("y"), 0U);
            start();
            EXPECT_EQ(feed("a<b>"), 0U) << "and the next document knows nothing of it";
            EXPECT_EQ(parser.EndParse(), 0U);
        }
    }
}

TEST(DeliveryTest, WantOfMemoryLeavesTheStreamInUse) {
    const LackingMemory lacking;
    isThrown = false;
    for (const bool owned : {false, true}) {
        SCOPED_TRACE(owned);
        FedParser parser(Observed::WIDE);
        parser.Start();
        EXPECT_EQ(parser.FeedStream("!<a b / >c<i!><d", owned), 8U);
        EXPECT_EQ(parser.EndParse(), 0U);
        EXPECT_EQ(Join(parser.lines),
                  Join({"start-parsing", "charset(1252)", "junk(<a b / )", "junk(>c)", "junk(<d)", "end-parsing"}));
    }
}

TEST(DeliveryTest, WantOfMemoryThatNoCallToldOfEndsWithTheDocument) {
    const LackingMemory lacking;
    isThrown = false;
    Lines lines;
    WideObserver observer(&lines);
    observer.hook = [](const std::string& line) {
        if (line == "start(|b||)")
            throw 1;
    };
    GenericParser parser;
    parser.SetObserver(&observer, false);
    parser.StartParse(1252, DATA_STREAM_8BIT);
    EXPECT_THROW(parser.ParseBuffer("!<b>", 4), int);
    EXPECT_EQ(parser.GetConversionError(), 8U);
    parser.StartParse(1252, DATA_STREAM_8BIT);
    EXPECT_EQ(parser.ParseBuffer("a<c>", 4), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
}

TEST(DeliveryTest, WantOfMemoryYieldsToTheReparse) {
    const LackingMemory lacking;
    isThrown = false;
    FedParser parser(Observed::WIDE);
    parser.Start(0);
    const std::string_view document = "!<meta charset=koi8-r>";
    EXPECT_EQ(parser.Feed(document), 705U);
    EXPECT_EQ(parser.GetConversionError(), 8U);
    EXPECT_EQ(parser.GetCharset(), 20866U);
}

TEST(DeliveryTest, ConversionsHappenOnlyForTheOtherFlavour) {
    const Base::Services services = FailingConverters();
    const Base::ServicesOverride replacement(services);
    for (const Route& route : ROUTES) {
        SCOPED_TRACE(route.name);
        conversions = 0;
        conversionCodes.clear();
        ParseBy(route, EVERY_CALLBACK, {}, SettingsFor(route, Feed::STREAM, 1251));
        const bool crossing = route.wideInput != (route.observed == Observed::WIDE);
        EXPECT_EQ(conversions > 0, crossing);
        for (const StringNS::CharSet::Code code : conversionCodes)
            EXPECT_EQ(code, route.wideInput ? 1200U : 1251U);
    }
    conversions = 0;
    DocumentSettings settings = SettingsFor(NARROW_TO_NARROW, Feed::STREAM);
    settings.observed = Observed::NOBODY;
    settings.detectCharsetErrors = true;
    ParseDocument(EVERY_CALLBACK, {}, settings);
    EXPECT_EQ(conversions, 0);
}

TEST(DeliveryTest, ACharsetErrorIsAReplacementInWhatAWideObserverGets) {
    struct Row {
        const char* note;
        StringNS::CharSet::Code charset;
        std::string input;
        bool hasErrors;
    };
    const Row rows[] = {
        {"UTF-8, an invalid byte in text", 65001, "a\xFF", true},
        {"in a name", 65001, "<a\xFF>", true},
        {"in the name of an end tag", 65001, "</a\xFF>", true},
        {"in a value", 65001, "<a b='\xFF'>", true},
        {"in the name of an attribute", 65001, "<a \xFF>", true},
        {"in the name of a short tag", 65001, "<\xFF />", true},
        {"in a script string", 65001, "<script>'\xFF'", true},
        {"in a double-quoted one", 65001, "<script>\"\xFF\"", true},
        {"in a regular expression", 65001, "<script>/\xFF\n", true},
        {"in a comment", 65001, "<!--\xFF-->", true},
        {"in a CDATA section", 65001, "<![CDATA[\xFF]]>", true},
        {"in a condition", 65001, "<![if \xFF]>", true},
        {"in the name of a declaration", 65001, "<!\xFF>", true},
        {"in an item of it", 65001, "<!a '\xFF'>", true},
        {"in the name of an XML declaration", 65001, "<?xml:\xFF a?>", true},
        {"in an attribute of it", 65001, "<?xml a='\xFF'?>", true},
        {"in a processing instruction", 65001, "<?a \xFF?>", true},
        {"in a block comment", 65001, "<script>/*\xFF*/", true},
        {"in a line comment", 65001, "<script>//\xFF\n", true},
        {"UTF-8, a replacement character that stood there", 65001, "a\xEF\xBF\xBD", false},
        {"in a value", 65001, "<a b='\xEF\xBF\xBD'>", false},
        {"beside an invalid byte in the same string", 65001, "a\xFF\xEF\xBF\xBD", false},
        {"beside an invalid byte in another token", 65001, "a\xEF\xBF\xBD<b>\xFF", true},
        {"beside an invalid byte in another string of the tag", 65001, "<a b='\xEF\xBF\xBD' c='\xFF'>", true},
        {"UTF-8, valid text", 65001, "\xC3\xA9\xF0\x9F\x98\x80", false},
        {"UTF-8, a character that the end of the token cuts", 65001, "\xC3<a>", true},
        {"UTF-8, an invalid byte after a NUL", 65001, std::string("\0\xFF", 2), true},
        {"1252 has a character for every byte", 1252, "\x81\xFF\xEF\xBF\xBD", false},
        {"20127 has none from 128 up", 20127, "\x80", true},
        {"20127, the bytes EF BF BD are an error like any other", 20127, "\xEF\xBF\xBD", true},
        {"932, valid text", 932, "\x82\xA0", false},
        {"1200 as 8-bit text, an odd number of bytes", 1200, "abc", true},
        {"nothing but ASCII", 65001, "<a b='c'>d</a>", false},
        {"a charset without a converter: the token is lost", 4711, "a", true},
        {"junk needs no converter", 4711, "", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(std::string(row.note) + ", " + std::to_string(row.charset));
        ForEverySplit(row.input, [&](const Cuts& cuts) {
            DocumentSettings settings = SettingsFor(NARROW_TO_WIDE, Feed::BUFFER, row.charset);
            settings.detectCharsetErrors = true;
            EXPECT_EQ(ParseDocument(row.input, cuts, settings).hasCharsetErrors, row.hasErrors);
            settings.detectCharsetErrors = false;
            EXPECT_FALSE(ParseDocument(row.input, cuts, settings).hasCharsetErrors);
            settings = SettingsFor(NARROW_TO_NARROW, Feed::BUFFER, row.charset);
            settings.detectCharsetErrors = true;
            EXPECT_FALSE(ParseDocument(row.input, cuts, settings).hasCharsetErrors);
        });
    }
}

TEST(DeliveryTest, CharsetErrorsOfAWideDocumentDoNotExist) {
    DocumentSettings settings = SettingsFor(WIDE_TO_WIDE);
    settings.detectCharsetErrors = true;
    EXPECT_FALSE(ParseDocument(WideStringView(KESTRA_WIDE("a\uFFFD")), {}, settings).hasCharsetErrors);
    settings = SettingsFor(WIDE_TO_NARROW);
    settings.detectCharsetErrors = true;
    EXPECT_FALSE(ParseDocument(WideStringView(KESTRA_WIDE("a\uFFFD")), {}, settings).hasCharsetErrors);
}

TEST(DeliveryTest, CharsetErrorsBelongToOneDocument) {
    FedParser parser(Observed::WIDE);
    parser.SetDetectCharsetErrors(true);
    parser.Start(65001);
    EXPECT_EQ(parser.Feed("\xFF<a>"), 0U);
    EXPECT_TRUE(parser.HasCharsetErrors());
    // The answer depends on the setting, which hides the record and does not delete it.
    parser.SetDetectCharsetErrors(false);
    EXPECT_FALSE(parser.HasCharsetErrors());
    parser.SetDetectCharsetErrors(true);
    EXPECT_TRUE(parser.HasCharsetErrors());
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_TRUE(parser.HasCharsetErrors());
    parser.Start(65001);
    EXPECT_FALSE(parser.HasCharsetErrors());
    EXPECT_EQ(parser.Feed("a<a>"), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_FALSE(parser.HasCharsetErrors());

    // Recorded only while it is on.
    parser.SetDetectCharsetErrors(false);
    parser.Start(65001);
    EXPECT_EQ(parser.Feed("\xFF<a>"), 0U);
    parser.SetDetectCharsetErrors(true);
    EXPECT_FALSE(parser.HasCharsetErrors());
    EXPECT_EQ(parser.Feed("\xFF<a>"), 0U);
    EXPECT_TRUE(parser.HasCharsetErrors());
}

TEST(DeliveryTest, ThePlaceInsideACallback) {
    // The parser stands after the token; after text it has also read the character that ended it.
    struct Step {
        const char* line;
        std::uint64_t lineNumber;
        std::uint64_t column;
    };
    const Step steps[] = {
        {"start-parsing", 1, 1}, {"charset(1252)", 1, 1}, {"text(ab\\n)", 2, 2}, {"start(|p|{ |c|=|'\\n'}|)", 3, 3},
        {"text(d)", 3, 5},       {"end(|p|||)", 3, 8},    {"text(e)", 3, 9},     {"end-parsing", 3, 9},
    };
    FedParser parser;
    std::size_t next = 0;
    parser.narrow.hook = [&](const std::string& line) {
        ASSERT_LT(next, std::size(steps));
        SCOPED_TRACE(line);
        EXPECT_EQ(line, steps[next].line);
        EXPECT_EQ(parser.GetLine(), steps[next].lineNumber);
        EXPECT_EQ(parser.GetColumn(), steps[next].column);
        EXPECT_FALSE(parser.IsWParser());
        EXPECT_FALSE(parser.NeedsReparsing());
        ++next;
    };
    parser.Start();
    const std::string document = "ab\n<p c='\n'>d</p>e";
    EXPECT_EQ(parser.Feed(document), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    EXPECT_EQ(next, std::size(steps));
}

}  // namespace
}  // namespace Kestra::Test
