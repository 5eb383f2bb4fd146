#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

using ToolEvents = ToolTest;

ToolRun RunJson(std::string_view input, Arguments more = {}) {
    more.insert(more.begin(), {"events", "--format", "json"});
    return RunToolOn(input, more);
}

/// The JSON Lines of a good run.
std::string JsonOf(std::string_view input, Arguments more = {}) {
    const ToolRun run = RunJson(input, std::move(more));
    EXPECT_TRUE(Ended(run, 0, ""));
    return run.output;
}

/// Without the first line, which is always the same.
std::string EventsOf(std::string_view input, Arguments more = {}) {
    static constexpr std::string_view FIRST = "{\"event\":\"StartParsing\"}\n";
    const std::string lines = JsonOf(input, std::move(more));
    EXPECT_EQ(lines.substr(0, FIRST.size()), FIRST);
    return lines.substr(std::min(FIRST.size(), lines.size()));
}

TEST_F(ToolEvents, EveryEvent) {
    EXPECT_EQ(
        JsonOf("<a href=x checked></a><script defer>x=1</script><?xml version='1.0'?><!DOCTYPE html><!-- c -->a<br/>"
               "<style>p{}</style>tail"),
        R"({"event":"StartParsing"}
{"event":"StartTag","name":"a","attributes":[["href","x"],["checked",""]]}
{"event":"EndTag","name":"a"}
{"event":"Script","attributes":[["defer",""]],"body":"x=1"}
{"event":"ExternTag","name":"xml","attributes":[["version","1.0"]]}
{"event":"EntityTag","name":"DOCTYPE","tokens":["html"]}
{"event":"Comment","text":" c "}
{"event":"Text","text":"a"}
{"event":"StartTag","name":"br","attributes":[]}
{"event":"EndTag","name":"br"}
{"event":"Style","attributes":[],"body":"p{}"}
{"event":"StopParsing"}
{"event":"Result","startParse":0,"parse":0,"endParse":0,"line":1,"column":149,"file":"-"}
)");
}

TEST_F(ToolEvents, Places) {
    const std::string page = "ab<p c=d>\n<br/><script>e</script>f";
    EXPECT_EQ(JsonOf(page, {"--places"}),
              R"({"event":"StartParsing","begin":0,"end":0,"line":1,"column":1}
{"event":"Text","text":"ab","begin":0,"end":2,"line":1,"column":1}
{"event":"StartTag","name":"p","attributes":[["c","d"]],"begin":2,"end":9,"line":1,"column":5,"attributePlaces":[{"begin":4,"end":8,"nameBegin":5,"nameEnd":6,"valueBegin":7,"valueEnd":8}]}
{"event":"Text","text":"\n","begin":9,"end":10,"line":1,"column":12}
{"event":"StartTag","name":"br","attributes":[],"begin":10,"end":15,"line":2,"column":2}
{"event":"EndTag","name":"br","begin":15,"end":15,"line":2,"column":7}
{"event":"Script","attributes":[],"body":"e","begin":15,"end":33,"line":2,"column":7}
{"event":"StopParsing","begin":34,"end":34,"line":2,"column":36}
{"event":"Result","startParse":0,"parse":0,"endParse":0,"line":2,"column":36,"file":"-"}
)");
    const std::string cut = "ab<p c=d>\n<script>e</script>f";
    for (const char* const pieceSize : {"1", "2", "7"}) {
        for (const char* const feed : {"stream", "buffer"}) {
            const std::string lines =
                RunToolOn(cut, {"events", "--format", "json", "--places", "--feed", feed, "--piece-size", pieceSize})
                    .output;
            const std::string expected = JsonOf(cut, {"--places"});
            EXPECT_EQ(lines.substr(0, lines.rfind("{")), expected.substr(0, expected.rfind("{")))
                << feed << " " << pieceSize;
        }
    }
    EXPECT_TRUE(Contains(RunToolOn(page, {"events", "--places"}).output, "\n     2:7     [15,15)           end(br)\n"));
}

TEST_F(ToolEvents, Scripts) {
    const std::string page = "<script>a='</script>';</script><title><b></title ><i>";
    const std::string asTokens =
        R"({"event":"Script","attributes":[],"body":"a='</script>';","begin":0,"end":31,"line":1,"column":1}
{"event":"StartTag","name":"title","attributes":[],"begin":31,"end":38,"line":1,"column":43}
{"event":"StartTag","name":"b","attributes":[],"begin":38,"end":41,"line":1,"column":50}
)";
    const ToolRun tokens = RunJson(page, {"--places", "--scripts", "tokens"});
    EXPECT_TRUE(Contains(tokens.output, asTokens));
    EXPECT_TRUE(Contains(tokens.output, "\"parse\":702,"));
    EXPECT_EQ(RunJson(page, {"--places"}).output, tokens.output);
    const std::string asText = R"({"event":"StartParsing","begin":0,"end":0,"line":1,"column":1}
{"event":"Script","attributes":[],"body":"a='","begin":0,"end":20,"line":1,"column":1}
{"event":"Text","text":"';","begin":20,"end":22,"line":1,"column":24}
{"event":"EndTag","name":"script","begin":22,"end":31,"line":1,"column":28}
{"event":"StartTag","name":"title","attributes":[],"begin":31,"end":38,"line":1,"column":37}
{"event":"Text","text":"<b>","begin":38,"end":41,"line":1,"column":44}
{"event":"EndTag","name":"title","begin":41,"end":50,"line":1,"column":50}
{"event":"StartTag","name":"i","attributes":[],"begin":50,"end":53,"line":1,"column":59}
{"event":"StopParsing","begin":53,"end":53,"line":1,"column":62}
{"event":"Result","startParse":0,"parse":0,"endParse":0,"line":1,"column":62,"file":"-"}
)";
    EXPECT_EQ(JsonOf(page, {"--places", "--scripts", "text"}), asText);
    for (const char* const size : {"1", "5"})
        EXPECT_EQ(JsonOf(page, {"--places", "--scripts", "text", "--piece-size", size}), asText) << size;
    EXPECT_TRUE(Contains(RunToolOn(page, {"events", "--scripts", "text"}).output, "\n     1:44    text(<b>)\n"));
}

TEST_F(ToolEvents, ALongTokenEndsTheInput) {
    const ToolRun run = RunToolOn("<p>ab<b class=long>", {"events", "--format", "json", "--max-token", "8"});
    EXPECT_EQ(run.status, 1);
    EXPECT_TRUE(Contains(run.output,
                         "{\"event\":\"Text\",\"text\":\"ab\"}\n{\"event\":\"Result\",\"startParse\":0,\"parse\":"
                         "711,\"endParse\":0,"));
    EXPECT_TRUE(StartsWith(run.errors, "-: parsing returned 711: "));
}

TEST_F(ToolEvents, AnEmptyInput) {
    const std::string expected =
        "{\"event\":\"StartParsing\"}\n{\"event\":\"StopParsing\"}\n"
        "{\"event\":\"Result\",\"startParse\":0,\"parse\":0,\"endParse\":0,\"line\":1,\"column\":1,\"file\":\"-\"}\n";
    EXPECT_EQ(JsonOf(""), expected);
    EXPECT_EQ(JsonOf("", {"--feed", "buffer"}), expected);
}

TEST_F(ToolEvents, NulsAndEscapes) {
    const std::string lines = EventsOf("<a b='x\0\"y\n'>t\0u</a>"s);
    EXPECT_TRUE(Contains(lines, R"([["b","x\u0000\"y\n"]])"));
    EXPECT_TRUE(Contains(lines, R"({"event":"Text","text":"t"})"));
}

TEST_F(ToolEvents, CharsetsAndFlags) {
    const std::string page = "<?xml encoding='koi8-r'?>\xC1<";
    const struct {
        Arguments arguments;
        const char* text;
    } CASES[] = {
        {{}, "\\u0430"},
        {{"--charset", "1251"}, "\\u0430"},
        {{"--charset", "windows-1251", "--flags", "1"}, "\\u0430"},
        {{"--charset", "1251", "--flags", "0"}, "\\u0411"},
        {{"--charset", "windows-1252", "--flags", "0"}, "\\u00c1"},
        {{"--charset", "1251", "--flags", "4294967294"}, "\\u0411"},
        {{"--charset", "0", "--flags", "0"}, "\\u0430"},
    };
    for (const auto& row : CASES) {
        const std::string lines = EventsOf(page, row.arguments);
        EXPECT_TRUE(Contains(lines, "{\"event\":\"Text\",\"text\":\""s + row.text + "\"}\n"))
            << testing::PrintToString(row.arguments) << "\n"
            << lines;
    }
}

TEST_F(ToolEvents, AnInputThatEndsInsideAConstructIsGood) {
    // The result of a stream does not tell of it.
    EXPECT_EQ(
        EventsOf("<p\nid"),
        "{\"event\":\"StopParsing\"}\n"
        "{\"event\":\"Result\",\"startParse\":0,\"parse\":0,\"endParse\":0,\"line\":2,\"column\":3,\"file\":\"-\"}\n");
    EXPECT_EQ(
        EventsOf("<p\nid", {"--feed", "buffer"}),
        "{\"event\":\"StopParsing\"}\n"
        "{\"event\":\"Result\",\"startParse\":0,\"parse\":16,\"endParse\":0,\"line\":2,\"column\":3,\"file\":\"-\"}\n");
    const ToolRun text = RunToolOn("<p\nid", {"events", "--feed", "buffer"});
    EXPECT_TRUE(Ended(text, 0, ""));
    EXPECT_TRUE(Contains(text.output,
                         "\nresult   parsing returned 16: the input ended inside a construct (line 2, column 3)\n"));
}

TEST_F(ToolEvents, MalformedMarkup) {
    const struct {
        const char* input;
        const char* result;
        const char* diagnostic;
    } CASES[] = {
        {"</1>", "\"parse\":701,\"endParse\":0,\"line\":1,\"column\":3,",
         "-: parsing returned 701: malformed markup, a name must begin with a letter or \"_\" (line 1, column 3)\n"},
        {"</a >", "\"parse\":702,\"endParse\":0,\"line\":1,\"column\":4,",
         "-: parsing returned 702: malformed markup, a tag, a declaration or an instruction must end here (line 1, "
         "column 4)\n"},
        {"a\n <= b", "\"parse\":703,\"endParse\":0,\"line\":2,\"column\":5,",
         "-: parsing returned 703: malformed markup, nothing begins with this character after \"<\", \"<!\" or \"<!-\" "
         "(line 2, column 5)\n"},
    };
    for (const auto& row : CASES) {
        for (const char* const feed : {"stream", "buffer"}) {
            const ToolRun run = RunJson(row.input, {"--feed", feed});
            EXPECT_EQ(run.status, 1) << row.input;
            EXPECT_TRUE(Contains(run.output, row.result)) << row.input << "\n" << run.output;
            EXPECT_TRUE(Contains(run.output, "{\"event\":\"StopParsing\"}\n")) << row.input;
            EXPECT_EQ(run.errors, row.diagnostic) << row.input;
        }
    }
}

TEST_F(ToolEvents, AnErrorEndsTheFeeding) {
    const ToolRun run = RunJson("a<=<b>", {"--feed", "buffer", "--piece-size", "1"});
    EXPECT_EQ(run.status, 1);
    EXPECT_FALSE(Contains(run.output, "StartTag")) << "the pieces after the error would be good";
    EXPECT_TRUE(Contains(run.output, "\"parse\":703,"));
}

TEST_F(ToolEvents, PieceSizesOfBothFeeds) {
    // A comment ends with its piece, so every cut shows.
    const std::string text = "{\"event\":\"Comment\",\"text\":\"";
    EXPECT_TRUE(Contains(EventsOf("<!--abcd--><b>"), text + "abcd\"}\n{\"event\":\"StartTag\""));
    for (const char* const feed : {"stream", "buffer"}) {
        EXPECT_TRUE(Contains(EventsOf("<!--abcd--><b>", {"--feed", feed, "--piece-size", "6"}),
                             text + "ab\"}\n{\"event\":\"Text\",\"text\":\"cd-->\"}\n{\"event\":\"StartTag\""))
            << feed;
        EXPECT_TRUE(Contains(EventsOf("<!--abcd--><b>", {"--feed", feed, "--piece-size", "5"}),
                             text + "a\"}\n{\"event\":\"Text\",\"text\":\"bcd-->\"}\n{\"event\":\"StartTag\""))
            << feed;
    }
}

TEST_F(ToolEvents, ReadsOfAStreamAre65536Bytes) {
    const std::string before(65536 - 5, 'x');
    const std::string page = before + "<!--abc--><b>";
    const std::string cut = "{\"event\":\"Comment\",\"text\":\"a\"}\n{\"event\":\"Text\",\"text\":\"bc-->\"}\n";
    const std::string whole = "{\"event\":\"Comment\",\"text\":\"abc\"}\n";
    EXPECT_TRUE(Contains(EventsOf(page), cut));
    EXPECT_TRUE(Contains(EventsOf(page, {"--piece-size", "100000"}), cut)) << "a read gets no more than it asks for";
    EXPECT_TRUE(Contains(EventsOf(page, {"--feed", "buffer"}), whole));
    EXPECT_TRUE(Contains(EventsOf(page, {"--feed", "buffer", "--piece-size", "100000"}), whole));
}

TEST_F(ToolEvents, OtherConstructsAreTheSameForEveryPieceSize) {
    const std::string page =
        "Caf\xE9 <p class=x id =\nab checked>t</p><script>if(a<b)//c\nx='</script>'</script><style>a b</style "
        ">\n</style>"
        "<!DOCTYPE html PUBLIC x><i>";
    const std::string expected = JsonOf(page, {"--feed", "buffer"});
    EXPECT_TRUE(Contains(expected, R"({"event":"StartTag","name":"i","attributes":[]})"));
    for (const char* const size : {"1000", "7", "1"}) {
        for (const char* const feed : {"stream", "buffer"})
            EXPECT_EQ(JsonOf(page, {"--feed", feed, "--piece-size", size}), expected) << feed << size;
    }
}

TEST_F(ToolEvents, TheTextFormat) {
    EXPECT_EQ(RunToolOn("Caf\xC3\xA9\n<a href=x>\t</a><br/>tail", {"events", "--charset", "65001"}),
              (ToolRun{0,
                       "     1:1     start-parsing\n"
                       "     1:1     text(Caf\xC3\xA9\\n)\n"
                       "     2:2     start(a|{href=x})\n"
                       "     2:12    text(\\t)\n"
                       "     2:14    end(a)\n"
                       "     2:18    start(br|)\n"
                       "     2:23    end(br)\n"
                       "     2:31    stop-parsing\n"
                       "bytes    30\n"
                       "events   6: text 2, start 2, end 2\n"
                       "result   0, success\n",
                       ""}));
}

TEST_F(ToolEvents, Files) {
    Write("good", "a<b>");
    Write("bad", "<=");
    Write("open", "<p");
    settings.input = "<i>";
    const struct {
        Arguments files;
        int status;
        std::string errors;
    } CASES[] = {
        {{"good", "open", "-"}, 0, ""},
        {{"good", "bad", "open"},
         1,
         "bad: parsing returned 703: malformed markup, nothing begins with this character after \"<\", \"<!\" or "
         "\"<!-\" "
         "(line 1, column 2)\n"},
        {{"none", "bad"},
         3,
         "none: cannot be read: no such file\n"
         "bad: parsing returned 703: malformed markup, nothing begins with this character after \"<\", \"<!\" or "
         "\"<!-\" "
         "(line 1, column 2)\n"},
        {{"none", "good"}, 3, "none: cannot be read: no such file\n"},
    };
    for (const auto& row : CASES) {
        Arguments arguments = row.files;
        arguments.insert(arguments.begin(), {"events", "--feed", "buffer", "--format", "json"});
        const ToolRun run = RunTool(arguments, settings);
        EXPECT_TRUE(Ended(run, row.status, row.errors)) << testing::PrintToString(row.files);
        for (const std::string& file : row.files) {
            EXPECT_EQ(run.output.find("\"error\":\"cannot be read: no such file\",\"file\":\"" + file + "\"}\n") !=
                          std::string::npos,
                      file == "none")
                << file << " of " << testing::PrintToString(row.files);
        }
    }
    const ToolRun headers = RunTool({"events", "good", "none", "-"}, settings);
    EXPECT_EQ(headers.output,
              "==> good <==\n"
              "     1:1     start-parsing\n     1:1     text(a)\n     1:3     start(b|)\n     1:6     stop-parsing\n"
              "bytes    4\nevents   2: text 1, start 1\nresult   0, success\n"
              "\n==> - <==\n"
              "     1:1     start-parsing\n     1:1     start(i|)\n     1:4     stop-parsing\n"
              "bytes    3\nevents   1: start 1\nresult   0, success\n");
}

TEST_F(ToolEvents, OutputThatCannotBeWritten) {
    // The failure leaves the parser out of a callback.
    std::string page;
    for (int i = 0; i < 100000; ++i)
        page += "<p>x</p>\n";
    for (const char* const feed : {"stream", "buffer"}) {
        for (const char* const format : {"text", "json"}) {
            settings.input = page;
            settings.output = Sink::UNWRITABLE;
            EXPECT_TRUE(Ended(RunTool({"events", "--feed", feed, "--format", format}, settings), 1,
                              "standard output: cannot be written: " + GetReason(Sink::UNWRITABLE) + "\n"));
            settings.output = Sink::CLOSED_PIPE;
            EXPECT_TRUE(Ended(RunTool({"events", "--feed", feed, "--format", format}, settings), 141, ""));
        }
    }
}

}  // namespace
}  // namespace Kestra::Test
