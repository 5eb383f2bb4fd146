#include "tests/tools/ToolRun.h"

namespace Kestra::Test {
namespace {

Arguments Json(Arguments more = {}) {
    more.insert(more.begin(), {"tokens", "--format", "json"});
    return more;
}

/// The JSON Lines of a good run.
std::string JsonOf(std::string_view input, Arguments more = {}) {
    const ToolRun run = RunToolOn(input, Json(std::move(more)));
    EXPECT_TRUE(Ended(run, 0, ""));
    return run.output;
}

TEST(ToolTokens, AllKindsThatTheParserDelivers) {
    EXPECT_EQ(JsonOf("\xEF\xBB\xBF"
                     "a<a href='x'>b</a ><br/><script>'s' \"d\"</script><style>p{}</style><b"),
              R"({"event":"StartParsing"}
{"event":"BOM","bytes":"\u00ef\u00bb\u00bf"}
{"event":"Text","text":"a"}
{"event":"StartTag","prefix":"","name":"a","attributes":[{"prefix":" ","name":"href","beforeEquals":"","afterEquals":"","value":"x","quote":1,"hasValue":true}],"suffix":"","closed":true}
{"event":"Text","text":"b"}
{"event":"EndTag","prefix":"","name":"a","afterName":" ","closed":true,"attributes":[],"slashBeforeClose":false,"suffix":""}
{"event":"ShortTag","prefix":"","name":"br","attributes":[],"suffix":"","closed":true}
{"event":"StartTag","prefix":"","name":"script","attributes":[],"suffix":"","closed":true}
{"event":"JSTagStart"}
{"event":"SQuoteString","text":"s"}
{"event":"Text","text":" "}
{"event":"DQuoteString","text":"d"}
{"event":"EndTag","prefix":"","name":"script","afterName":"","closed":true,"attributes":[],"slashBeforeClose":false,"suffix":""}
{"event":"JSTagEnd"}
{"event":"StartTag","prefix":"","name":"style","attributes":[],"suffix":"","closed":true}
{"event":"CSSTagStart"}
{"event":"Text","text":"p{}"}
{"event":"EndTag","prefix":"","name":"style","afterName":"","closed":true,"attributes":[],"slashBeforeClose":false,"suffix":""}
{"event":"CSSTagEnd"}
{"event":"JunkData","text":"<b"}
{"event":"EndParsing"}
{"event":"Result","startParse":0,"parse":0,"endParse":0,"line":1,"column":69,"currentParserName":"StartTagSimpleParser","charset":65001,"isWParser":false,"hasCharsetErrors":false,"needsReparsing":false,"file":"-"}
)");
}

TEST(ToolTokens, TheStreamType) {
    EXPECT_EQ(WithoutLastLine(JsonOf("a", {"--input", "auto", "--charset", "1252"})),
              "{\"event\":\"StartParsing\"}\n{\"event\":\"Text\",\"text\":\"a\"}\n{\"event\":\"EndParsing\"}\n");
    EXPECT_EQ(
        WithoutLastLine(JsonOf("a", {"--input", "8bit", "--charset", "1252"})),
        "{\"event\":\"StartParsing\"}\n{\"event\":\"Charset\",\"code\":1252}\n{\"event\":\"Text\",\"text\":\"a\"}\n"
        "{\"event\":\"EndParsing\"}\n");
    const std::string wide = JsonOf(Utf16("a"), {"--input", "utf16", "--charset", "1252"});
    EXPECT_EQ(
        WithoutLastLine(wide),
        "{\"event\":\"StartParsing\"}\n{\"event\":\"Charset\",\"code\":1200}\n{\"event\":\"Text\",\"text\":\"a\"}\n"
        "{\"event\":\"EndParsing\"}\n");
    EXPECT_TRUE(Contains(LastLine(wide), "\"charset\":1200,\"isWParser\":true")) << wide;
}

TEST(ToolTokens, CharsetAndObserver) {
    const auto text = [](const std::string& input, Arguments arguments) {
        const std::string lines = JsonOf(input, std::move(arguments));
        const std::size_t begin = lines.find("\"text\":") + 7;
        return lines.substr(begin, lines.find('}', begin) - begin);
    };
    EXPECT_EQ(text("\xE9", {"--charset", "1252"}), R"("\u00e9")");
    EXPECT_EQ(text("\xE9", {"--charset", "windows-1251"}), R"("\u0439")");
    EXPECT_EQ(text("\xC3\xA9", {"--charset", "utf-8"}), R"("\u00e9")");
    EXPECT_EQ(text("\xF0\x9F\x98\x80", {"--charset", "65001"}), R"("\ud83d\ude00")");
    EXPECT_EQ(text("\xC3\xA9", {"--charset", "65001", "--observer", "narrow"}), R"("\u00c3\u00a9")");
    EXPECT_EQ(text("a\0b\x01"s, {"--charset", "1252"}), R"("a\u0000b\u0001")");
    EXPECT_EQ(text("\x34\xD8"
                   "a\0"s,
                   {"--input", "utf16"}),
              R"("\ud834a")");
    EXPECT_EQ(text("\x1E\xDD"s, {"--input", "utf16"}), R"("\udd1e")");
    EXPECT_EQ(text(Utf16("ab"), {"--input", "utf16", "--observer", "narrow"}), R"("a\u0000b\u0000")");
}

TEST(ToolTokens, JunkIsBytesForBothObservers) {
    for (const char* const observer : {"wide", "narrow"}) {
        EXPECT_EQ(WithoutLastLine(JsonOf("<b \xC3\xA9", {"--charset", "65001", "--observer", observer})),
                  "{\"event\":\"StartParsing\"}\n{\"event\":\"JunkData\",\"text\":\"<b "
                  "\\u00c3\\u00a9\"}\n{\"event\":\"EndParsing\"}\n");
        EXPECT_EQ(WithoutLastLine(JsonOf(Utf16("<b"), {"--input", "utf16", "--observer", observer})),
                  "{\"event\":\"StartParsing\"}\n{\"event\":\"Charset\",\"code\":1200}\n"
                  "{\"event\":\"JunkData\",\"text\":\"<\\u0000b\\u0000\"}\n{\"event\":\"EndParsing\"}\n");
    }
}

TEST(ToolTokens, CharsetErrorsAreCountedOnlyWhenAskedFor) {
    const std::string broken = "a\xFF";
    EXPECT_TRUE(
        Contains(JsonOf(broken, {"--charset", "65001", "--detect-charset-errors"}), "\"hasCharsetErrors\":true"));
    EXPECT_TRUE(Contains(JsonOf(broken, {"--charset", "65001"}), "\"hasCharsetErrors\":false"));
    EXPECT_TRUE(
        Contains(JsonOf("ab", {"--charset", "65001", "--detect-charset-errors"}), "\"hasCharsetErrors\":false"));
}

TEST(ToolTokens, TheResultIsAskedBeforeTheEnd) {
    EXPECT_EQ(RunToolOn("a\nb<x", Json({"--charset", "1252", "--feed", "buffer"})),
              (ToolRun{1,
                       "{\"event\":\"StartParsing\"}\n{\"event\":\"Text\",\"text\":\"a\\nb\"}\n"
                       "{\"event\":\"Result\",\"startParse\":0,\"parse\":0,\"endParse\":16,\"line\":2,\"column\":4,"
                       "\"currentParserName\":\"StartTagSimpleParser\",\"charset\":1252,\"isWParser\":false,"
                       "\"hasCharsetErrors\":false,"
                       "\"needsReparsing\":false,\"file\":\"-\"}\n",
                       "-: EndParse returned 16: the input ended inside a construct (line 2, column 4)\n"}));
}

TEST(ToolTokens, AResultOtherThan0And16EndsTheFeeding) {
    const ToolRun whole = RunToolOn("a<b / >c", Json({"--charset", "1252", "--feed", "buffer"}));
    EXPECT_EQ(whole.status, 1);
    const std::string result = LastLine(whole.output);
    EXPECT_TRUE(Contains(result, "\"parse\":11,"));
    EXPECT_TRUE(Contains(whole.errors, "-: parsing returned 11: malformed markup"));
    EXPECT_EQ(std::count(whole.errors.begin(), whole.errors.end(), '\n'), 1);

    // The second piece alone would be good.
    const ToolRun odd =
        RunToolOn(Utf16("ab") + "c", Json({"--input", "utf16", "--feed", "buffer", "--piece-size", "3"}));
    EXPECT_EQ(odd.status, 1);
    EXPECT_TRUE(Contains(LastLine(odd.output), "\"parse\":2,"));
    EXPECT_FALSE(Contains(odd.output, "\"event\":\"Text\""));
}

TEST(ToolTokens, PieceSizesChangeNoToken) {
    const std::string page =
        Repeat("Text &amp; more <p class=x id='a b'>\xC3\xA9\n<br /><script>if (a < 'b') \"c\";</script></p >\n", 300);
    ASSERT_GT(page.size(), 16384U);
    for (const char* const observer : {"wide", "narrow"}) {
        const std::string expected = JsonOf(page, {"--charset", "65001", "--observer", observer});
        ASSERT_GT(std::count(expected.begin(), expected.end(), '\n'), 3000);
        for (const char* const feed : {"stream", "buffer"}) {
            for (const char* const size : {"0", "1", "2", "3", "7", "16384"}) {
                EXPECT_EQ(
                    JsonOf(page, {"--charset", "65001", "--observer", observer, "--feed", feed, "--piece-size", size}),
                    expected)
                    << observer << " " << feed << " " << size;
            }
        }
    }
    const std::string wide = Utf16("<p class=x>text</p><br/>" + std::string(9000, 'x'));
    const std::string expected = JsonOf(wide, {"--input", "utf16"});
    for (const char* const feed : {"stream", "buffer"}) {
        for (const char* const size : {"2", "6", "16384"})
            EXPECT_EQ(JsonOf(wide, {"--input", "utf16", "--feed", feed, "--piece-size", size}), expected)
                << feed << " " << size;
    }
}

TEST(ToolTokens, BrokenMarkupIsTheSameJunkForEveryPieceSizeOfAStream) {
    const std::string page = Repeat("a<b / >c</a / >d<p '>e", 20);
    const std::string expected = JsonOf(page, {"--charset", "1252"});
    EXPECT_TRUE(Contains(expected, "JunkData"));
    for (const char* const size : {"1", "2", "3", "7", "16384"})
        EXPECT_EQ(JsonOf(page, {"--charset", "1252", "--piece-size", size}), expected) << size;
}

/// The charset is declared after a text that a wide observer has been given already.
const std::string DECLARED_LATE = "<p>\xC1\xC2</p>\n<meta charset=koi8-r>\n<b>\xC1</b>";

TEST(ToolTokens, ADeclaredCharsetStartsAgain) {
    const std::string lines = JsonOf(DECLARED_LATE);
    EXPECT_EQ(lines, JsonOf(DECLARED_LATE, {"--charset", "koi8-r"}));
    EXPECT_TRUE(Contains(lines, R"("text":"\u0430\u0431")"));
    EXPECT_TRUE(Contains(LastLine(lines), "\"parse\":0,\"endParse\":0,"));
    EXPECT_TRUE(Contains(LastLine(lines), "\"charset\":20866,"));
    EXPECT_EQ(lines.find("\"StartParsing\""), lines.rfind("\"StartParsing\""));
    for (const char* const feed : {"stream", "buffer"}) {
        for (const char* const size : {"0", "1", "7"})
            EXPECT_EQ(JsonOf(DECLARED_LATE, {"--feed", feed, "--piece-size", size}), lines) << feed << size;
    }
    EXPECT_EQ(JsonOf(DECLARED_LATE, {"--input", "8bit"}),
              JsonOf(DECLARED_LATE, {"--input", "8bit", "--charset", "20866"}));
    const ToolRun text = RunToolOn(DECLARED_LATE, {"tokens"});
    EXPECT_TRUE(Contains(text.output, "\ncharset  20866 (KOI8-R), found in a first pass\nresult   0, success\n"));
}

TEST(ToolTokens, ADeclaredCharsetDoesNotStartAgainWhenNothingWasConverted) {
    const std::string lines = JsonOf(DECLARED_LATE, {"--observer", "narrow"});
    EXPECT_TRUE(Contains(lines, "{\"event\":\"Charset\",\"code\":20866}")) << "the only pass, to which it is reported";
    EXPECT_TRUE(Contains(LastLine(lines), "\"charset\":20866,"));
}

TEST(ToolTokens, WithoutReparsingTheDeclaredCharsetEndsThePass) {
    const ToolRun run = RunToolOn(DECLARED_LATE, Json({"--no-reparse"}));
    EXPECT_EQ(run.status, 1);
    EXPECT_EQ(LastLine(run.output),
              "{\"event\":\"Result\",\"startParse\":0,\"parse\":705,\"endParse\":16,\"line\":2,\"column\":22,"
              "\"currentParserName\":"
              "\"StartTagSimpleParser\",\"charset\":20866,\"isWParser\":false,\"hasCharsetErrors\":false,"
              "\"needsReparsing\":true,"
              "\"file\":\"-\"}");
    EXPECT_FALSE(Contains(run.output, "\\u0430")) << "text before it is in the old charset";
    EXPECT_FALSE(Contains(run.output, "\"name\":\"b\"")) << "nothing after it is delivered";
    EXPECT_EQ(run.errors,
              "-: parsing returned 705: another charset was found, the input must be parsed again; "
              "EndParse returned 16: the input ended inside a construct (line 2, column 22)\n");
}

TEST(ToolTokens, TheSelfCheckAnswers704) {
    const std::string different = "a<?xml b/ >";
    for (const char* const mode : {"crc", "copy"}) {
        const ToolRun run = RunToolOn(different, Json({"--charset", "1252", "--self-check", mode}));
        EXPECT_TRUE(Ended(
            run, 1, "-: EndParse returned 704: the tokens written back differ from the input (line 1, column 12)\n"))
            << mode;
        EXPECT_TRUE(Contains(LastLine(run.output), "\"parse\":0,\"endParse\":704,"));
        EXPECT_FALSE(Contains(run.output, "\"EndParsing\"")) << mode;
        EXPECT_TRUE(Contains(run.output, "\"event\":\"ExternTag\"")) << mode;
        const ToolRun text = RunToolOn(different, {"tokens", "--charset", "1252", "--self-check", mode});
        EXPECT_TRUE(Contains(text.output,
                             "\nresult   EndParse returned 704: the tokens written back differ from the input "
                             "(line 1, column 12)\n"));
        EXPECT_TRUE(Contains(LastLine(JsonOf("a<b>", {"--self-check", mode})), "\"endParse\":0,")) << mode;
    }
    EXPECT_TRUE(Contains(LastLine(JsonOf(different, {"--charset", "1252", "--self-check", "off"})), "\"endParse\":0,"));
    EXPECT_TRUE(Contains(JsonOf(different, {"--charset", "1252"}), "\"EndParsing\"")) << "off is the default";
}

TEST(ToolTokens, TheSelfCheckComparesThePassThatCounts) {
    EXPECT_EQ(JsonOf(DECLARED_LATE, {"--self-check", "copy"}), JsonOf(DECLARED_LATE));
}

TEST(ToolTokens, DeclarationsCommentsAndSections) {
    EXPECT_EQ(WithoutLastLine(JsonOf(
                  "<!DOCTYPE html><!--c--><![CDATA[d]]><![if IE]><?xml v='1'?><?php e?><script>/*f*/ //g\n</script>",
                  {"--charset", "1252"})),
              R"({"event":"StartParsing"}
{"event":"EntityTag","prefix":"","name":"DOCTYPE","tokens":[{"prefix":" ","value":"html","quote":0}],"suffix":""}
{"event":"CommentTag","text":"c","closed":true}
{"event":"CDATATag","keyword":"CDATA","text":"[d","closed":true}
{"event":"ConditionalTag","keyword":"if","condition":" IE","tail":"","bracketClosed":true,"tagClosed":true}
{"event":"ExternTag","prefix":"","name":"xml","attributes":[{"prefix":" ","name":"v","beforeEquals":"","afterEquals":"","value":"1","quote":1,"hasValue":true}],"suffix":"","freeStyle":false,"text":"","slashBeforeClose":false}
{"event":"ExternTag","prefix":"","name":"php","attributes":[],"suffix":"","freeStyle":true,"text":"<?php e?>","slashBeforeClose":false}
{"event":"StartTag","prefix":"","name":"script","attributes":[],"suffix":"","closed":true}
{"event":"JSTagStart"}
{"event":"CComment","text":"f"}
{"event":"Text","text":" "}
{"event":"CPPComment","text":"g"}
{"event":"Text","text":"\n"}
{"event":"EndTag","prefix":"","name":"script","afterName":"","closed":true,"attributes":[],"slashBeforeClose":false,"suffix":""}
{"event":"JSTagEnd"}
{"event":"EndParsing"}
)");
}

TEST(ToolTokens, AnEmptyInput) {
    const std::string expected =
        "{\"event\":\"Result\",\"startParse\":0,\"parse\":0,\"endParse\":0,\"line\":1,\"column\":1,"
        "\"currentParserName\":\"\",\"charset\":"
        "0,"
        "\"isWParser\":false,\"hasCharsetErrors\":false,\"needsReparsing\":false,\"file\":\"-\"}\n";
    EXPECT_EQ(JsonOf(""), expected);
    EXPECT_EQ(JsonOf("", {"--feed", "buffer"}), expected);
}

TEST(ToolTokens, TheTextFormat) {
    EXPECT_EQ(RunToolOn("Caf\xC3\xA9\n<a href=x>\t</a><", {"tokens", "--charset", "65001"}),
              (ToolRun{0,
                       "     1:1     start-parsing\n"
                       "     1:1     text(Caf\xC3\xA9\\n)\n"
                       "     2:1     start(|a|{ |href|=|x}|)\n"
                       "     2:11    text(\\t)\n"
                       "     2:12    end(|a|||)\n"
                       "     2:16    junk(<)\n"
                       "     2:17    end-parsing\n"
                       "bytes    22\n"
                       "tokens   5: text 2, start 1, end 1, junk 1\n"
                       "charset  65001 (UTF-8)\n"
                       "result   0, success\n",
                       ""}));
}

TEST(ToolTokens, ScriptsAsText) {
    const std::string page = "<script>a = b / c; '</p>' // `\n</script><title><b></title><p>";
    EXPECT_EQ(WithoutLastLine(JsonOf(page, {"--charset", "1252", "--scripts", "text"})),
              R"({"event":"StartParsing"}
{"event":"StartTag","prefix":"","name":"script","attributes":[],"suffix":"","closed":true}
{"event":"JSTagStart"}
{"event":"Text","text":"a = b / c; '</p>' // `\n"}
{"event":"EndTag","prefix":"","name":"script","afterName":"","closed":true,"attributes":[],"slashBeforeClose":false,"suffix":""}
{"event":"JSTagEnd"}
{"event":"StartTag","prefix":"","name":"title","attributes":[],"suffix":"","closed":true}
{"event":"Text","text":"<b>"}
{"event":"EndTag","prefix":"","name":"title","afterName":"","closed":true,"attributes":[],"slashBeforeClose":false,"suffix":""}
{"event":"StartTag","prefix":"","name":"p","attributes":[],"suffix":"","closed":true}
{"event":"EndParsing"}
)");
    const std::string tokens = JsonOf(page, {"--charset", "1252"});
    EXPECT_EQ(JsonOf(page, {"--charset", "1252", "--scripts", "tokens"}), tokens);
    EXPECT_TRUE(Contains(tokens, "{\"event\":\"JunkData\""));
    EXPECT_TRUE(StartsWith(RunToolOn(page, {"check", "--charset", "1252", "--scripts", "text"}).output,
                           "-: ok, 61 bytes, 7 tokens, "));
}

TEST(ToolTokens, ALongTokenEndsTheInput) {
    const std::string page = "<p>\nabcd<!--efg--><b>";
    const std::string all = JsonOf(page, {"--charset", "1252"});
    EXPECT_EQ(JsonOf(page, {"--charset", "1252", "--max-token", "10"}), all);
    for (const char* const pieceSize : {"0", "1", "3"}) {
        for (const char* const feed : {"stream", "buffer"}) {
            const ToolRun run = RunToolOn(
                page, Json({"--charset", "1252", "--max-token", "9", "--feed", feed, "--piece-size", pieceSize}));
            EXPECT_EQ(run.status, 1);
            const std::size_t begin = all.find("{\"event\":\"CommentTag\"");
            EXPECT_EQ(WithoutLastLine(run.output), all.substr(0, begin)) << "all before it has been delivered";
            EXPECT_TRUE(Contains(LastLine(run.output), "\"parse\":711,\"endParse\":0,"));
            EXPECT_TRUE(StartsWith(
                run.errors,
                "-: parsing returned 711: a token is longer, or has more attributes, than the limit allows (line "));
        }
    }
    EXPECT_EQ(RunToolOn(page, {"check", "--max-token", "9"}).status, 1);
}

/// What follows the first `"name":` of a line, up to the end of a number or null.
std::string MemberOf(const std::string& line, const std::string& name, std::size_t from = 0) {
    const std::size_t begin = line.find("\"" + name + "\":", from);
    if (begin == std::string::npos)
        return "none";
    const std::size_t value = begin + name.size() + 3;
    return line.substr(value, line.find_first_of(",}", value) - value);
}

/// The bytes between two members of a line.
std::string BytesOf(const std::string& input, const std::string& line, const char* begin, const char* end,
                    std::size_t from = 0) {
    const std::string first = MemberOf(line, begin, from);
    const std::string last = MemberOf(line, end, from);
    return first == "null" || first == "none"
               ? first
               : input.substr(std::stoull(first), std::stoull(last) - std::stoull(first));
}

TEST(ToolTokens, Places) {
    const std::string page = "\xC3\xA9\n<p><a b href='/x'  c = \xC3\xA9>//<script>// d\n</script><!--e--><f";
    const struct {
        const char* note;
        std::string mark;
        bool isUtf16;
        Arguments more;
        std::size_t bytesInTokens;
    } CASES[] = {
        {"8-bit", "", false, {"--charset", "65001"}, page.size()},
        {"with a mark, byte by byte", "\xEF\xBB\xBF", false, {"--piece-size", "1"}, page.size()},
        {"in pieces", "", false, {"--charset", "1252", "--piece-size", "3"}, page.size()},
        {"a narrow observer gets no line comment",
         "",
         false,
         {"--charset", "1252", "--observer", "narrow"},
         page.size() - 4},
        {"UTF-16", "\xFF\xFE", true, {}, 2 * page.size()},
        {"UTF-16, a narrow observer", "", true, {"--input", "utf16", "--observer", "narrow"}, 2 * page.size()},
    };
    for (const auto& row : CASES) {
        SCOPED_TRACE(row.note);
        const auto encode = [&row](const std::string& text) { return row.isUtf16 ? Utf16(text) : text; };
        const std::string input = row.mark + encode(page);
        Arguments more = row.more;
        more.emplace_back("--places");
        const std::string lines = JsonOf(input, more);
        std::size_t bytes = 0;
        std::size_t reached = 0;
        std::size_t attributes = 0;
        for (std::size_t begin = 0; begin < lines.size();) {
            const std::size_t end = lines.find('\n', begin);
            const std::string line = lines.substr(begin, end - begin);
            begin = end + 1;
            const std::size_t members = line.rfind("\"begin\"");
            if (line.starts_with("{\"event\":\"Result\"")) {
                EXPECT_EQ(members, std::string::npos);
                continue;
            }
            ASSERT_NE(members, std::string::npos) << line;
            const std::string source = BytesOf(input, line, "begin", "end", members);
            if (line.starts_with("{\"event\":\"JSTagStart\"") || line.starts_with("{\"event\":\"JSTagEnd\"")) {
                EXPECT_EQ(source, encode(line.find("Start") != std::string::npos ? "<script>" : "</script>"));
                continue;
            }
            EXPECT_GE(std::stoull(MemberOf(line, "begin", members)), reached) << line;
            reached = std::stoull(MemberOf(line, "end", members));
            bytes += source.size();
            for (std::size_t at = line.find("\"prefix\":\" "); at != std::string::npos;
                 at = line.find("\"prefix\":\" ", at + 1)) {
                const char* const EXPECTED[][3] = {
                    {" b", "b", "null"}, {" href='/x'", "href", "/x"}, {"  c = \xC3\xA9", "c", "\xC3\xA9"}};
                const auto& expected = EXPECTED[attributes % 3];
                EXPECT_EQ(BytesOf(input, line, "begin", "end", at), encode(expected[0]));
                EXPECT_EQ(BytesOf(input, line, "nameBegin", "nameEnd", at), encode(expected[1]));
                EXPECT_EQ(BytesOf(input, line, "valueBegin", "valueEnd", at),
                          attributes == 0 ? "null" : encode(expected[2]));
                ++attributes;
            }
            if (line.starts_with("{\"event\":\"CommentTag\"")) {
                EXPECT_EQ(source, encode("<!--e-->"));
                EXPECT_EQ(MemberOf(line, "line", members), "3");
                EXPECT_EQ(MemberOf(line, "column", members), "10");
            }
        }
        EXPECT_EQ(bytes, row.mark.size() + row.bytesInTokens);
        EXPECT_EQ(reached, input.size());
        EXPECT_EQ(attributes, 3U);
    }
}

TEST(ToolTokens, WithPlacesNothingElseChanges) {
    const std::string page = "<p a=b>x</p><script>'y'</script>";
    const auto without = [](std::string line) {
        for (std::size_t at = line.find(",\"begin\""); at != std::string::npos; at = line.find(",\"begin\"", at))
            line.erase(at, line.find('}', at) - at);
        return line;
    };
    const std::string placed = JsonOf(page, {"--charset", "1252", "--places"});
    EXPECT_NE(placed, without(placed));
    EXPECT_EQ(without(placed), JsonOf(page, {"--charset", "1252"}));
    EXPECT_TRUE(Contains(RunToolOn(page, {"tokens", "--charset", "1252", "--places"}).output,
                         "\n     1:8     [7,8)             text(x)\n"));
}

TEST(ToolTokens, ColumnsCountTheCharactersOfTheParser) {
    const std::string page = "\xC3\xA9<b>";
    EXPECT_TRUE(Contains(RunToolOn(page, {"tokens", "--charset", "65001"}).output, "\n     1:3     start(|b||)\n"));
    EXPECT_TRUE(
        Contains(JsonOf(page, {"--charset", "65001", "--places"}), "\"begin\":2,\"end\":5,\"line\":1,\"column\":3}"));
}

TEST(ToolTokens, PlacesAgreeWithTheParser) {
    const std::string page =
        "a\nb <a b = 'c\n'>\r\n</a >\n<script>'x\\'' \"\n\"</script><style>p {}\n</style><br/>\n<1>x\n<p \n/>\n<b "
        "/\n>\nend";
    const ToolRun text = RunToolOn(page, {"tokens", "--charset", "1252", "--observer", "narrow"});
    const std::string result = LastLine(JsonOf(page, {"--charset", "1252", "--observer", "narrow"}));
    EXPECT_TRUE(Contains(result, "\"line\":13,\"column\":4,"));
    EXPECT_TRUE(Contains(text.output, "\n    13:4     end-parsing\n"));
    const ToolRun wide = RunToolOn(Utf16(page), {"tokens", "--input", "utf16"});
    EXPECT_TRUE(Contains(wide.output, "\n    13:4     end-parsing\n"));
}

TEST(ToolTokens, LineCommentsThatANarrowObserverDoesNotGetHaveTheirPlace) {
    const ToolRun run = RunToolOn("<p>\n<script>go() // <a href=\"x\">\nb</script>",
                                  {"tokens", "--observer", "narrow", "--charset", "1252"});
    EXPECT_EQ(run.output.substr(0, run.output.find("bytes")),
              "     1:1     start-parsing\n"
              "     1:1     start(|p||)\n"
              "     1:4     text(\\n)\n"
              "     2:1     start(|script||)\n"
              "     2:9     js-start\n"
              "     2:9     text(go() )\n"
              "     2:29    text(\\nb)\n"
              "     3:2     end(|script|||)\n"
              "     3:11    js-end\n"
              "     3:11    end-parsing\n");
}

/// What a wide observer of ASCII text is shown, who gets every token, without the line comments;
/// and what a narrow one is shown.
std::vector<std::string> ShowToBothObservers(const std::string& page, Arguments more) {
    std::vector<std::string> shown;
    for (const char* const observer : {"wide", "narrow"}) {
        Arguments arguments = {"tokens", "--charset", "1252", "--observer", observer};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const std::string output = RunToolOn(page, arguments).output;
        std::string lines;
        for (std::size_t begin = 0; begin < output.size() && output[begin] == ' ';) {
            const std::size_t end = output.find('\n', begin) + 1;
            const std::string line = output.substr(begin, end - begin);
            if (line.find(" cpp-comment(") == std::string::npos)
                lines += line;
            begin = end;
        }
        shown.push_back(lines);
    }
    return shown;
}

TEST(ToolTokens, ANarrowObserverIsShownThePlacesOfAWideOne) {
    const struct {
        const char* note;
        std::string page;
    } CASES[] = {
        {"several comments", "<script>// a\nb // c\n// d\n\n//\ne</script><p>"},
        {"a comment right after a tag, a string, a comment and a regular expression",
         "<script>//a\n'b'//c\n\"d\"//e\n/*f*///g\n/h///i\n/j/ //k\n</script>"},
        {"carriage returns belong to the comment", "<p>\r\n<script>a // b\r\nc // d\r\n</script>\r\n<b>"},
        {"a markup comment ends it", "<script>a // b <!-- c\n // d --> e // f\n</script>"},
        {"sections end it", "<script>// b <![CDATA[c]]>d // <![if x]>e // </script> f <![endif]-->g\n</script>"},
        {"a tag does not", "<script>a // <b> </b> <!b> <?c?> <<</script> </ < \nd</script>"},
        {"junk within one", "<script>a // <!-b\nc<p>//d\n</script>"},
        {"junk that begins with two slashes", "<script>a<!b<//c\nd // e\nf</script><q>"},
        {"one at the end is junk", "<script>a // b"},
        {"open sections at the end", "<script>a // b <!-- c"},
        {"an open conditional section at the end", "<script>a // b <![if c"},
        {"none in a style sheet", "<style>a // b\nc</style>//d\n<e>"},
        {"none in text", "// a\n<script>b</script>// c\n<d>"},
        {"text that goes on with it", "<script>a<b // c\n</d>// e\nf / g // h\ni</script>"},
        {"with a mark", "\xEF\xBB\xBF<script>// a\nb // c\n</script><p>"},
        {"scripts one after the other", "<script>//\n</script>//\n<script src=x>// a\n</script>\n<script/>//\n<b>"},
    };
    for (const auto& row : CASES) {
        for (const char* const pieceSize : {"0", "1", "5"}) {
            const std::vector<std::string> shown = ShowToBothObservers(row.page, {"--piece-size", pieceSize});
            EXPECT_NE(shown[0], "") << row.note;
            EXPECT_EQ(shown[0], shown[1]) << row.note << ", in pieces of " << pieceSize;
        }
    }
    const std::vector<std::string> dropped =
        ShowToBothObservers("\xEFx<script>// a\nb // c\n</script><p>", {"--piece-size", "1"});
    EXPECT_TRUE(Contains(dropped[1], " start-parsing\n     1:1     text(x)\n"));
    EXPECT_EQ(dropped[0], dropped[1]) << "bytes of an unfinished mark are no characters";
}

/// The places of all lines of tokens, and the kind of each.
std::string ShowPlaces(const std::string& input, Arguments more) {
    Arguments arguments = {"tokens", "--input", "utf16"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    const std::string output = RunToolOn(input, arguments).output;
    std::string places;
    for (std::size_t begin = 0; begin < output.size() && output[begin] == ' ';) {
        const std::size_t end = output.find('\n', begin) + 1;
        places += output.substr(begin, std::min(output.find('(', begin), end - 1) - begin) + "\n";
        begin = end;
    }
    return places;
}

TEST(ToolTokens, ANarrowObserverOfUtf16IsShownUnits) {
    const std::string page = Utf16(
        "<p a='b\n' c>\n</p >\n<script>a//b<c>\r\n'd'/*e\n*///f<!--g\n-->\n</script>\n<!d \"e\"><?xml f='g'?><![if "
        "h]><![CDATA[i\n]]><j/>\n<k / >l");
    const std::string wide = ShowPlaces(page, {});
    EXPECT_TRUE(Contains(wide, "cpp-comment\n"));
    EXPECT_TRUE(Contains(wide, "junk\n"));
    EXPECT_EQ(ShowPlaces(page, {"--observer", "narrow"}), wide);
    EXPECT_TRUE(Contains(ShowPlaces(Utf16("<b>\n//c<d>"), {"--observer", "narrow"}), "     2:4     start\n"));
}

TEST(ToolTokens, TheExamplePage) {
    const ToolRun run = RunTool({"tokens", KESTRA_EXAMPLE_PAGES "/saltmarsh-point.html"});
    EXPECT_TRUE(Ended(run, 0, ""));
    EXPECT_TRUE(Contains(run.output, "\nresult   0, success\n"));
}

}  // namespace
}  // namespace Kestra::Test
