#include "tests/html/stateless/EventRows.h"
#include "tests/support/EventRun.h"

namespace Kestra::Test {
namespace {

using HTML::StatelessHTMLParser;
using Lines = std::vector<std::string>;

const std::vector<EventRow> THE_ELEMENTS = {
    {"nothing in a script is a string or a comment",
     "<script>a'b\"/d//e/*f<!g</i>j</script>",
     {"script(|a'b\"/d//e/*f<!g</i>j)\n", {1, 1 + 8 + 2 * 20 + 9}}},
    {"no \"<\" of a style is lost", "<style a>b<<c</style>", {"style({a=}|b<<c)\n", {1, 1 + 9 + 2 * 4 + 8}}},
    {"a text area",
     "<textarea><b></textarea>",
     {"start(textarea|)\ntext(<b>)\nend(textarea)\n", {1, 1 + 10 + 2 * 3 + 11}}},
    {"a title", "<title><!--a</title>", {"start(title|)\ntext(<!--a)\nend(title)\n", {1, 1 + 7 + 2 * 5 + 8}}},
    {"an example", "<xmp><p></xmp>", {"start(xmp|)\ntext(<p>)\nend(xmp)\n", {1, 1 + 5 + 2 * 3 + 6}}},
    {"a frame", "<iframe a=b><p></iframe>", {"start(iframe|{a=b})\ntext(<p>)\nend(iframe)\n", {1, 1 + 12 + 2 * 3 + 9}}},
    {"without plug-ins",
     "<noembed><p></noembed>",
     {"start(noembed|)\ntext(<p>)\nend(noembed)\n", {1, 1 + 9 + 2 * 3 + 10}}},
    {"without frames",
     "<noframes><p></noframes>",
     {"start(noframes|)\ntext(<p>)\nend(noframes)\n", {1, 1 + 10 + 2 * 3 + 11}}},
    {"not without scripts", "<noscript><p></noscript>", {"start(noscript|)\nstart(p|)\nend(noscript)\n", {1, 25}}},
    {"nothing ends plain text", "<plaintext><p></plaintext><", {"start(plaintext|)\n", {1, 1 + 11 + 2 * 16}}},
    {"upper and lower case", "<XMP><p></XmP>", {"start(XMP|)\ntext(<p>)\nend(XmP)\n", {1, 1 + 5 + 2 * 3 + 6}}},
    {"in a script too", "<SCRIPT>'</sCRIPT>", {"script(|')\n", {1, 1 + 8 + 2 * 1 + 9}}},
    {"an empty content is no text", "<xmp></xmp>", {"start(xmp|)\nend(xmp)\n", {1, 12}}},
    {"an empty script", "<script></script>", {"script(|)\n", {1, 18}}},
    {"what begins like the end tag",
     "<xmp></</x</xm</xmp>",
     {"start(xmp|)\ntext(</</x</xm)\nend(xmp)\n", {1, 1 + 5 + 2 * 9 + 6}}},
    {"two in a row",
     "<xmp></b></xmp><title></xmp></title>",
     {"start(xmp|)\ntext(</b>)\nend(xmp)\nstart(title|)\ntext(</xmp>)\nend(title)\n",
      Place().Bytes(5).Content(4).Bytes(6 + 7).Content(6).Bytes(8)}},
    {"line breaks count", "<xmp>\n<\n</xmp>", {"start(xmp|)\ntext(\\n<\\n)\nend(xmp)\n", {3, 8}}},
    {"stray end tags", "</script></title>", {"end(script)\nend(title)\n", {1, 18}}},
    {"a script that is not over", "<script>a</scrip", {"", {1, 1 + 8 + 2 * 1}, 16}},
    {"a title that is not", "<title>a</titl", {"start(title|)\n", {1, 1 + 7 + 2 * 1}}},
    {"an end tag that is not", "<title>a</title b", {"start(title|)\ntext(a)\n", {1, 1 + 7 + 2 * 1 + 9}, 16}},
    EventRow("a NUL ends the text", std::string("<xmp>a\0b</xmp>", 14),
             {"start(xmp|)\ntext(a)\nend(xmp)\n", {1, 1 + 5 + 2 * 3 + 6}}),
    EventRow("texts are converted, and bodies follow the ANSI rule", "<xmp>\xC1</xmp><script>\xC1</script>",
             {"start(xmp|)\ntext(\\u0430)\nend(xmp)\nscript(|\\u00C1)\n",
              Place().Bytes(5).Content(1).Bytes(6 + 8).Content(1).Bytes(9)})
        .In(20866),
};

const std::vector<EventRow> START_TAGS = {
    {"a \"/\" at its end closes nothing",
     "<title/",
     ">a</title>",
     {"start(title|)\ntext(a)\nend(title)\n", {1, 1 + 8 + 2 * 1 + 8}},
     {"start(title|)\ntext(>a)\nend(title)\n", {1, 1 + 7 + 2 * 2 + 8}}},
    {"nor that of a script",
     "<script /",
     ">a</script>",
     {"script(|a)\n", {1, 1 + 10 + 2 * 1 + 9}},
     {"script(|>a)\n", {1, 1 + 9 + 2 * 2 + 9}}},
    EventRow("other short tags are as ever", "<b/>", {"start(b|)\nend(b)\n", {1, 5}})
        .After("<b/", {"start(b|)\nend(b)\n", {1, 1 + 3 + 2 * 1}})
        .Bytewise({"start(b|)\nend(b)\n", {1, 1 + 3 + 2 * 1}}),
    {"white space after the name", "<xmp\t><b></xmp>", {"start(xmp|)\ntext(<b>)\nend(xmp)\n", {1, 1 + 6 + 2 * 3 + 6}}},
    {"not white space that browsers do not know",
     "<xmp\v>a<b>",
     {"start(xmp|)\ntext(a)\nstart(b|)\n", {1, 1 + 6 + 2 * 1 + 3}}},
    {"not with white space before the name",
     "< xmp>a<b>",
     {"start(xmp|)\ntext(a)\nstart(b|)\n", {1, 1 + 6 + 2 * 1 + 3}}},
    {"that of a script is then a tag like others",
     "< script>'<b>",
     {"start(script|)\ntext(')\nstart(b|)\n", {1, 1 + 9 + 2 * 1 + 3}}},
    {"not when something else ends the name",
     "<xmp=>a<b>",
     {"start(xmp|)\ntext(a)\nstart(b|)\n", {1, 1 + 6 + 2 * 1 + 3}}},
    {"nor a longer name", "<xmps>a<x:xmp>", {"start(xmps|)\ntext(a)\nstart(x:xmp|)\n", {1, 1 + 6 + 2 * 1 + 7}}},
    {"what is in other markup", "<!a b<xmp>c<d>", {"entity(a|{b<xmp})\ntext(c)\nstart(d|)\n", {1, 1 + 10 + 2 * 1 + 3}}},
};

TEST(ScriptModeEventsTest, EndTags) {
    const auto text = [](const std::string& content) { return "start(xmp|)\ntext(" + content + ")\nend(xmp)\n"; };
    CheckRows(AsText({
        {"white space, a slash or \">\" must follow the name",
         "<xmp></xmps></xmp-></xmp<</xmp\v></xmp>",
         {text("</xmps></xmp-></xmp<</xmp\\x0B>"), {1, 1 + 5 + 2 * 27 + 6}}},
        {"white space", "<xmp>a</xmp >", {text("a"), {1, 1 + 5 + 2 * 1 + 7}}},
        {"line breaks, which count", "<xmp>a</xmp\n\f>", {text("a"), {2, 3}}},
        {"a slash", "<xmp>a</xmp/>", {text("a"), {1, 1 + 5 + 2 * 1 + 7}}},
        {"what stands after it is dropped", "<xmp>a</xmp b='c'/d<>", {text("a"), {1, 1 + 5 + 2 * 1 + 15}}},
        {"up to the first \">\"",
         "<xmp>a</xmp b='>'><c>",
         {text("a") + "text('>)\nstart(c|)\n", {1, 1 + 5 + 2 * 1 + 10 + 2 * 2 + 3}}},
        {"white space before the name", "<xmp></ xmp></xmp>", {text("</ xmp>"), {1, 1 + 5 + 2 * 7 + 6}}},
        {"of another element", "<xmp></title></xmp>", {text("</title>"), {1, 1 + 5 + 2 * 8 + 6}}},
        {"of a script", "<script></script\nb>c<d>", {"script(|)\ntext(c)\nstart(d|)\n", {2, 1 + 2 + 2 * 1 + 3}}},
        {"of a style sheet", "<style></style/>", {"style(|)\n", {1, 17}}},
        {"other end tags are as ever", "<xmp></xmp></b >", {"start(xmp|)\nend(xmp)\n", {1, 15}, 702}},
    }));
}

TEST(ScriptModeEventsTest, EscapedPartsOfScripts) {
    const std::string contents[] = {
        "<!--<script></script>-->",
        "<!--<script>a</script>b<script></script>--",
        "<!--<script></script -->",
        "<!--<SCRIPT/</sCript/-->'",
        "<!--<script><!--</script>-->",
        "<!--<script>--><!---><!--->",
        "<!--<scriptx<script\v-->",
        "<!-<script>",
        "<!--><script>",
        "<!---><script>",
        "<!--a-><script></script>-->",
        "<!--<script>->--</script>-->",
        "<!--<script></scriptx></script></scrip",
        "<!--<scr<script></script>",
        "<!--</scrip<",
    };
    std::vector<EventRow> rows;
    for (const std::string& content : contents) {
        const Place place = Place().Bytes(8).Content(content.size()).Bytes(9);
        std::string shown = content;
        if (const std::size_t tab = shown.find('\v'); tab != std::string::npos)
            shown.replace(tab, 1, "\\x0B");
        rows.emplace_back("all of it is content", "<script>" + content + "</script>",
                          Outcome{"script(|" + shown + ")\n", place});
    }
    rows.emplace_back("the first end tag counts in an escaped part", "<script><!--a</script>-->b<c>",
                      Outcome{"script(|<!--a)\ntext(-->b)\nstart(c|)\n", {1, 1 + 8 + 2 * 5 + 9 + 2 * 4 + 3}});
    rows.emplace_back("no other element has such parts", "<style><!--<style></style>-->b<c>",
                      Outcome{"style(|<!--<style>)\ntext(-->b)\nstart(c|)\n",
                              Place().Bytes(7).Content(11).Bytes(8).Content(4).Bytes(3)});
    rows.emplace_back("a double escaped part that is open", "<script><!--<script></script",
                      Outcome{"", {1, 1 + 8 + 2 * 12}, 16});
    CheckRows(AsText(rows));
}

TEST(ScriptModeEventsTest, WhatTakesTheRestOfThePageAsTokens) {
    for (const char* const script : {"path = 'C:\\\\';", "quotes = /'/;", "a = `it's`;", "// it's </script>"}) {
        const std::string page = std::string("<script>") + script + "</script><p>";
        StatelessHTMLParser parser;
        for (const auto mode : {StatelessHTMLParser::SCRIPT_AS_TOKENS, StatelessHTMLParser::SCRIPT_AS_TEXT}) {
            parser.SetScriptMode(mode);
            const Lines trace = ParseEvents(&parser, {page}, 0, 1).trace;
            EXPECT_EQ(trace[trace.size() - 2] == "start(p|)", mode == StatelessHTMLParser::SCRIPT_AS_TEXT) << page;
        }
    }
}

// In the event of a content that is text the parser stands before the end tag, also when its first
// bytes came in earlier pieces.
TEST(ScriptModeEventsTest, PlacesInCallbacks) {
    const std::string document = "<title>a\nb<i></title ><script>c</script\n><xmp></</xmp>d<e>";
    const Lines expected = {"start(title|): 7 1:8", "text(a\\nb<i>): 13 2:10", "end(title): 22 2:19",
                            "script(|c): 41 3:2",   "start(xmp|): 46 3:7",     "text(</): 48 3:11",
                            "end(xmp): 54 3:17",    "text(d): 55 3:19",        "start(e|): 58 3:22"};
    ForEverySplit(document.size(), [&](const Cuts& cuts) {
        TracedParser parser;
        Lines places;
        parser.Start(StatelessHTMLParser::SCRIPT_AS_TEXT);
        parser.observer.hook = [&](const std::string& line) { places.push_back(line + ": " + PlaceOf(parser)); };
        parser.Feed(document, cuts);
        EXPECT_EQ(places, expected);
        EXPECT_EQ(PlaceOf(parser), "58 3:22");
    });
}

TEST(ScriptModeEventsTest, BytesThatMayBeginTheEndTagCountAsUnread) {
    StatelessHTMLParser parser;
    parser.SetScriptMode(StatelessHTMLParser::SCRIPT_AS_TEXT);
    parser.StartParse(0);
    parser.ParseBuffer("<xmp>a</x", 9);
    EXPECT_EQ(PlaceOf(parser), "6 1:8");
    const StatelessHTMLParser copy(parser);
    EXPECT_EQ(PlaceOf(copy), "6 1:8");
    parser.ParseBuffer("", 0);
    EXPECT_EQ(PlaceOf(parser), "6 1:8");
    parser.ParseBuffer("y", 1);
    EXPECT_EQ(PlaceOf(parser), "10 1:16");
}

TEST(ScriptModeEventsTest, TheSetting) {
    StatelessHTMLParser parser;
    EXPECT_EQ(parser.GetScriptMode(), StatelessHTMLParser::SCRIPT_AS_TOKENS);
    EXPECT_EQ(parser.SetScriptMode(StatelessHTMLParser::SCRIPT_AS_TEXT), 0U);
    EXPECT_EQ(parser.SetScriptMode(static_cast<StatelessHTMLParser::ScriptMode>(2)), 2U);
    StatelessHTMLParser copy(parser);
    StatelessHTMLParser assigned;
    assigned = parser;
    for (StatelessHTMLParser* const each : {&parser, &copy, &assigned}) {
        EXPECT_EQ(each->GetScriptMode(), StatelessHTMLParser::SCRIPT_AS_TEXT);
        for (int document = 0; document < 2; ++document)
            EXPECT_EQ(ParseEvents(each, {"<script>'</script>"}, 0, 1).trace,
                      (Lines{"start-parsing", "script(|')", "stop-parsing"}));
    }
    EXPECT_EQ(assigned.SetScriptMode(StatelessHTMLParser::SCRIPT_AS_TOKENS), 0U);
    EXPECT_EQ(ParseEvents(&assigned, {"<script>'</script>"}, 0, 1).trace, (Lines{"start-parsing", "stop-parsing"}));
    EXPECT_EQ(parser.GetScriptMode(), StatelessHTMLParser::SCRIPT_AS_TEXT);
}

TEST(ScriptModeEventsTest, ACopyGoesOnInAContent) {
    const std::string document = "<xmp>a</x</xmp ><script><!--<script>b</script>--></script>";
    const Lines expected = {"start(xmp|)", "text(a</x)", "end(xmp)", "script(|<!--<script>b</script>-->)"};
    for (std::size_t cut = 1; cut < document.size(); ++cut) {
        TracedParser parser;
        parser.Start(StatelessHTMLParser::SCRIPT_AS_TEXT);
        parser.Feed(document.substr(0, cut));
        const Lines begun = parser.lines;
        StatelessHTMLParser assigned;
        assigned = StatelessHTMLParser(parser);
        parser.Feed("</xmp></script>");
        parser.lines = begun;
        assigned.ParseBuffer(document.data() + cut, document.size() - cut);
        EXPECT_EQ(parser.lines, expected) << cut;
    }
}

TEST(ScriptModeEventsTest, ItTakesEffectWithTheNextStartTag) {
    const struct {
        const char* at;
        StatelessHTMLParser::ScriptMode to;
        std::string document;
        Lines expected;
    } rows[] = {
        {"start(xmp|)",
         StatelessHTMLParser::SCRIPT_AS_TEXT,
         "<xmp>a<b><xmp><b></xmp>",
         {"start(xmp|)", "text(a)", "start(b|)", "start(xmp|)", "text(<b>)", "end(xmp)"}},
        {"start(xmp|)",
         StatelessHTMLParser::SCRIPT_AS_TOKENS,
         "<xmp><b></xmp><xmp><b></xmp>",
         {"start(xmp|)", "text(<b>)", "end(xmp)", "start(xmp|)", "start(b|)", "end(xmp)"}},
        {"text(<b>)",
         StatelessHTMLParser::SCRIPT_AS_TOKENS,
         "<xmp><b></xmp c><xmp><b></xmp>",
         {"start(xmp|)", "text(<b>)", "end(xmp)", "start(xmp|)", "start(b|)", "end(xmp)"}},
    };
    for (const auto& row : rows) {
        for (const std::size_t pieceSize : {100U, 1U}) {
            TracedParser parser;
            parser.observer.hook = [&](const std::string& line) {
                if (line == row.at) {
                    EXPECT_EQ(parser.SetScriptMode(row.to), 0U);
                }
            };
            parser.Start(row.to == StatelessHTMLParser::SCRIPT_AS_TEXT ? StatelessHTMLParser::SCRIPT_AS_TOKENS
                                                                       : StatelessHTMLParser::SCRIPT_AS_TEXT);
            parser.Feed(row.document, CutsEvery(pieceSize, row.document.size()));
            EXPECT_EQ(parser.lines, row.expected) << row.document << " by " << pieceSize;
        }
    }
}

// What is thrown out of a callback costs the rest of the piece, and ends the content.
TEST(ScriptModeEventsTest, AnExceptionEndsTheContent) {
    const struct {
        const char* at;
        std::vector<std::string> pieces;
        Lines expected;
        const char* place;
    } rows[] = {
        {"start(xmp|)", {"<xmp>lost", "a<b>"}, {"start(xmp|)", "text(a)", "start(b|)"}, "13 1:11"},
        {"text(a)", {"<xmp>a</xmp>lost", "b<c>"}, {"start(xmp|)", "text(a)", "text(b)", "start(c|)"}, "20 1:13"},
        {"text(a)", {"<xmp>a</xm", "p>lost", "b<c>"}, {"start(xmp|)", "text(a)", "text(b)", "start(c|)"}, "20 1:13"},
        {"end(xmp)",
         {"<xmp>a</xmp>lost", "b<c>"},
         {"start(xmp|)", "text(a)", "end(xmp)", "text(b)", "start(c|)"},
         "20 1:19"},
        {"script(|a)", {"<script>a</script>lost", "b<c>"}, {"script(|a)", "text(b)", "start(c|)"}, "26 1:25"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.at);
        TracedParser parser;
        parser.Start(StatelessHTMLParser::SCRIPT_AS_TEXT);
        parser.observer.hook = [&](const std::string& line) {
            if (line == row.at)
                throw 1;
        };
        int thrown = 0;
        for (const std::string& piece : row.pieces) {
            try {
                parser.Feed(piece);
            } catch (int) {
                ++thrown;
            }
        }
        EXPECT_EQ(thrown, 1);
        EXPECT_EQ(parser.lines, row.expected);
        EXPECT_EQ(PlaceOf(parser), row.place);
    }
}

const EventTables TABLES("ScriptModeEventsTest",
                         {{"TheElements", AsText(THE_ELEMENTS)}, {"StartTags", AsText(START_TAGS)}});

}  // namespace
}  // namespace Kestra::Test
