#include <stdexcept>

#include "tests/html/parser/DocumentRows.h"

namespace Kestra::Test {
namespace {

/// Each by the parser of one flavour for an observer of its own, and of the other, by turns: what
/// lies between them is the same as ever.
template <std::size_t N>
void CheckAsText(const DocumentRow (&rows)[N], StringNS::CharSet::Code charset = 1252) {
    bool toOther = false;
    for (DocumentRow row : rows) {
        row.scriptMode = SCRIPT_AS_TEXT;
        row.charset = charset;
        CheckRow(row, toOther && charset == 1252 ? NARROW_TO_WIDE : NARROW_TO_NARROW);
        if (charset == 1252)
            CheckRow(row, toOther ? WIDE_TO_NARROW : WIDE_TO_WIDE);
        toOther = !toOther;
    }
}

Lines InScript(const std::string& content) {
    return Inside("script", {"text(" + content + ")"});
}

TEST(ScriptModeTest, TheElements) {
    const DocumentRow rows[] = {
        {"nothing in a script is markup, a string or a comment", "<script>a<b>'c\"/d//e/*f<!g<?h</i>j</script>k",
         "start(|script||)\njs-start\ntext(a<b>'c\"/d//e/*f<!g<?h</i>j)\nend(|script|||)\njs-end\ntext(k)"},
        {"nor in a style", "<style>a>'b<c>\"/*d</style>e",
         "start(|style||)\ncss-start\ntext(a>'b<c>\"/*d)\nend(|style|||)\ncss-end\ntext(e)"},
        {"a text area", "<textarea><b></textarea><i>", "start(|textarea||)\ntext(<b>)\nend(|textarea|||)\nstart(|i||)"},
        {"a title", "<title><!--a</title>b", "start(|title||)\ntext(<!--a)\nend(|title|||)\ntext(b)"},
        {"an example", "<xmp><p></xmp>", "start(|xmp||)\ntext(<p>)\nend(|xmp|||)"},
        {"a frame", "<iframe src=a><p></iframe>", "start(|iframe|{ |src|=|a}|)\ntext(<p>)\nend(|iframe|||)"},
        {"what is there without plug-ins", "<noembed><p></noembed>", "start(|noembed||)\ntext(<p>)\nend(|noembed|||)"},
        {"and without frames", "<noframes><p></noframes>", "start(|noframes||)\ntext(<p>)\nend(|noframes|||)"},
        {"but not without scripts", "<noscript><p></noscript>", "start(|noscript||)\nstart(|p||)\nend(|noscript|||)"},
        {"nothing ends plain text", "<plaintext><p></plaintext>", "start(|plaintext||)\ntext(<p></plaintext>)"},
        {"upper and lower case", "<XMP><p></XmP>", "start(|XMP||)\ntext(<p>)\nend(|XmP|||)"},
        {"an empty content is no text", "<script></script>", "start(|script||)\njs-start\nend(|script|||)\njs-end"},
        {"a content ends with the document", "<title>a</titl", "start(|title||)\ntext(a</titl)"},
        {"also right after the tag", "<title>", "start(|title||)"},
        {"other text and tags are as ever", "a<b/>'c'</d>", "text(a)\nshort(|b||)\ntext('c')\nend(|d|||)"},
        {"stray end tags too", "</script></style></title>",
         "end(|script|||)\njs-end\nend(|style|||)\ncss-end\nend(|title|||)"},
        {"two in a row", "<xmp></title></xmp><title></xmp></title>",
         "start(|xmp||)\ntext(</title>)\nend(|xmp|||)\nstart(|title||)\ntext(</xmp>)\nend(|title|||)"},
        {"line feeds count", "\n<xmp>\n<\n</xmp\n>\n",
         "text(\\n)\nstart(|xmp||)\ntext(\\n<\\n)\nend(|xmp|\\n||)\ntext(\\n)"},
    };
    CheckAsText(rows);
}

TEST(ScriptModeTest, TheTagsThatBeginAContent) {
    const DocumentRow rows[] = {
        {"a short tag does, and calls the notification", "<script/><b></script>",
         "short(|script||)\njs-start\ntext(<b>)\nend(|script|||)\njs-end"},
        {"with a blank and attributes", "<style a=b /><b></style>",
         "short(|style|{ |a|=|b}| )\ncss-start\ntext(<b>)\nend(|style|||)\ncss-end"},
        {"the name ends at a slash", "<script/a><b></script/c>d",
         "start(|script/a||)\njs-start\ntext(<b>)\nend(|script/c|||)\njs-end\ntext(d)"},
        {"attributes", "<title a='</title>'>b</title>", "start(|title|{ |a|=|'</title>'}|)\ntext(b)\nend(|title|||)"},
        {"white space after the name", "<title\n>b</title\t>", "start(|title||\\n)\ntext(b)\nend(|title|\\t||)"},
        {"not white space that browsers do not know", "<title\v>b<i>", "start(|title||\\x0B)\ntext(b)\nstart(|i||)"},
        {"nor before the attributes", "<title\v a>b<i>", "start(|title|{\\x0B |a}|)\ntext(b)\nstart(|i||)"},
        {"not with white space before the name", "< script>a<i>", "start( |script||)\ntext(a)\nstart(|i||)"},
        {"nor with a bracket after it", "<title[a]><i>", "start(|title|{|[a]}|)\nstart(|i||)"},
        {"nor with an equals sign", "<title=a><i>", "start(|title|{||=|a}|)\nstart(|i||)"},
        {"nor a longer name", "<titles><scripta><i>", "start(|titles||)\nstart(|scripta||)\nstart(|i||)"},
        {"nor an end tag", "</title><i>", "end(|title|||)\nstart(|i||)"},
        {"in other markup there is no content", "<!--<script>--><i a='<script>'>'",
         "comment(<script>)\nstart(|i|{ |a|=|'<script>'}|)\ntext(')"},
    };
    CheckAsText(rows);
}

TEST(ScriptModeTest, TheEndTags) {
    const DocumentRow rows[] = {
        {"white space, a slash or \">\" must follow the name", "<xmp></xmps></xmp-></xmp<</xmp\v></xmp></xmp\f>",
         "start(|xmp||)\ntext(</xmps></xmp-></xmp<</xmp\\x0B>)\nend(|xmp|||)\nend(|xmp|\\x0C||)"},
        {"the carriage return is white space", "<xmp></xmp\r>", "start(|xmp||)\nend(|xmp|\\r||)"},
        {"a slash", "<xmp>a</xmp/>b", "start(|xmp||)\ntext(a)\nend(|xmp/|||)\ntext(b)"},
        {"a slash after white space", "<xmp>a</xmp />b", "start(|xmp||)\ntext(a)\nend(|xmp| ||, slash)\ntext(b)"},
        {"attributes", "<xmp>a</xmp b='>'>c", "start(|xmp||)\ntext(a)\nend(|xmp| |{|b|=|'>'}|)\ntext(c)"},
        {"what begins like it", "<xmp></</x</xm</xmp></xmp>",
         "start(|xmp||)\ntext(</</x</xm)\nend(|xmp|||)\nend(|xmp|||)"},
        {"white space before the name", "<xmp></ xmp></xmp>", "start(|xmp||)\ntext(</ xmp>)\nend(|xmp|||)"},
        {"that of another element", "<xmp></title></xmp>", "start(|xmp||)\ntext(</title>)\nend(|xmp|||)"},
        {"an end tag that is no more than its name ends a script too", "<script></script\n><b>",
         "start(|script||)\njs-start\nend(|script|\\n||)\njs-end\nstart(|b||)"},
    };
    CheckAsText(rows);
}

TEST(ScriptModeTest, AnEndTagThatFails) {
    CheckFailing({"it has ended the content", "<xmp>a</xmp / ><b>",
                  "start(|xmp||)\ntext(a)\njunk(</xmp / )\njunk(>)\nstart(|b||)", 0, SCRIPT_AS_TEXT});
    CheckOpen({"an open one", "<script>a</script b", "start(|script||)\njs-start\ntext(a)\njunk(</script b)", 0,
               SCRIPT_AS_TEXT});
}

TEST(ScriptModeTest, EscapedPartsOfScripts) {
    const DocumentRow rows[] = {
        {"a script in a comment keeps its end tag", "<script><!--<script></script>--></script>",
         InScript("<!--<script></script>-->")},
        {"a comment alone hides no end tag", "<script><!--</script>-->",
         "start(|script||)\njs-start\ntext(<!--)\nend(|script|||)\njs-end\ntext(-->)"},
        {"the script's end tag brings back the comment", "<script><!--<script></script></script>",
         InScript("<!--<script></script>")},
        {"and another script in it the escape", "<script><!--<script></script><script></script></script>",
         InScript("<!--<script></script><script></script>")},
        {"a comment that is closed escapes nothing", "<script><!----><script></script>", InScript("<!----><script>")},
        {"the dashes of its beginning close it", "<script><!--><script></script>", InScript("<!--><script>")},
        {"with a third one", "<script><!---><script></script>", InScript("<!---><script>")},
        {"not with one dash", "<script><!--->a</script>", InScript("<!--->a")},
        {"a \"-->\" inside closes both", "<script><!--<script>--></script>", InScript("<!--<script>-->")},
        {"three dashes do as well", "<script><!--<script>---></script>", InScript("<!--<script>--->")},
        {"two and another character do not", "<script><!--<script>-- ></script></script>",
         InScript("<!--<script>-- ></script>")},
        {"nor one", "<script><!--<script>-></script></script>", InScript("<!--<script>-></script>")},
        {"a longer name opens nothing", "<script><!--<scripts></script>", InScript("<!--<scripts>")},
        {"nor does a shorter one", "<script><!--<scrip></script>", InScript("<!--<scrip>")},
        {"white space ends the name, or a slash", "<script><!--<SCRIPT/</script\n></script>",
         InScript("<!--<SCRIPT/</script\\n>")},
        {"a longer end tag brings back nothing", "<script><!--<script></scripts></script></script>",
         InScript("<!--<script></scripts></script>")},
        {"what begins like a comment is none", "<script><!-<!<!-<script></script>", InScript("<!-<!<!-<script>")},
        {"a second one neither", "<script><!--<!--<script></script></script>", InScript("<!--<!--<script></script>")},
        {"an open one swallows what follows", "<script><!--<script></script>a",
         "start(|script||)\njs-start\ntext(<!--<script></script>a)"},
        {"other elements know no such part", "<style><!--<style></style>",
         "start(|style||)\ncss-start\ntext(<!--<style>)\nend(|style|||)\ncss-end"},
        {"nor does the next script remember it", "<script><!--</script><script><script></script>",
         "start(|script||)\njs-start\ntext(<!--)\nend(|script|||)\njs-end\nstart(|script||)\njs-start\ntext(<script>)"
         "\nend(|script|||)\njs-end"},
    };
    CheckAsText(rows);
}

TEST(ScriptModeTest, EscapeRunsOfIso2022) {
    const DocumentRow rows[] = {
        {"a run hides an end tag", "<xmp>a\x1B$B</xmp>\x1B(Bb</xmp>",
         "start(|xmp||)\ntext(a\\x1B$B</xmp>\\x1B(Bb)\nend(|xmp|||)"},
        {"at once", "<xmp>\x1B$B</xmp>\x1B(B</xmp>", "start(|xmp||)\ntext(\\x1B$B</xmp>\\x1B(B)\nend(|xmp|||)"},
        {"and the parts of a script", "<script>\x1B$B<!--<script>\x1B(B</script>",
         InScript("\\x1B$B<!--<script>\\x1B(B")},
        {"and the end of one", "<script><!--<script>\x1B$B-->\x1B(B</script></script>",
         InScript("<!--<script>\\x1B$B-->\\x1B(B</script>")},
        {"an escape that designates nothing", "<xmp>\x1Bx</xmp>", "start(|xmp||)\ntext(\\x1Bx)\nend(|xmp|||)"},
        {"its characters do not count either", "<script><!--<script>\x1B--></script></script>",
         InScript("<!--<script>\\x1B--></script>")},
        {"the end of the document in a run", "<xmp>a\x1B$B<", "start(|xmp||)\ntext(a\\x1B$B<)"},
        {"in a designation", "<xmp>a\x1B$", "start(|xmp||)\ntext(a\\x1B$)"},
        {"in plain text", "<plaintext>\x1B$B<\x1B(B<", "start(|plaintext||)\ntext(\\x1B$B<\\x1B(B<)"},
    };
    CheckAsText(rows, 50221);
    DocumentRow row{"elsewhere it is a character like others", "<xmp>\x1B$B</xmp>\x1B(B",
                    "start(|xmp||)\ntext(\\x1B$B)\nend(|xmp|||)\ntext(\\x1B(B)"};
    row.scriptMode = SCRIPT_AS_TEXT;
    CheckRow(row);
}

// Only letters of ASCII fold.
TEST(ScriptModeTest, NamesInWideText) {
    DocumentSettings settings = SettingsFor(WIDE_TO_WIDE);
    settings.scriptMode = SCRIPT_AS_TEXT;
    const WideString input =
        KESTRA_WIDE("<\u017Fcript><b><script></\u017Fcript></script\u00A0></script><title\u00A0><i>");
    ForEverySplit(std::string(input.size(), 'x'), [&](const Cuts& cuts) {
        EXPECT_EQ(ParseDocument(input, cuts, settings).Lines(),
                  Join({"start-parsing", "charset(1200)", "start(|\\u017Fcript||)", "start(|b||)", "start(|script||)",
                        "js-start", "text(</\\u017Fcript></script\\u00A0>)", "end(|script|||)", "js-end",
                        "start(|title||\\u00A0)", "start(|i||)", "end-parsing"}));
    });
}

/// The pages of which strings and regular expressions swallow the rest.
TEST(ScriptModeTest, WhatSwallowsMarkupAsTokens) {
    struct Row {
        const char* note;
        const char* document;
        unsigned tags;  ///< that browsers see
    };
    const Row rows[] = {
        {"a quote after a division", "<script>a=b/c*'/';\nd='</i>'</script><p><b>it's</b></p>", 6},
        {"a comment in a template string", "<script>a=`https://x.org/`;</script><p>text</p>", 4},
        {"a division", "<script>x=a/b;y='it\"';z=c/d+\"'\"</script><p><i></i></p>", 6},
        {"an apostrophe in a regular expression", "<script>s.replace(/'/g,'')</script><p>it's</p><script></script>", 6},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        for (const Route& route : {NARROW_TO_NARROW, WIDE_TO_WIDE}) {
            ForEverySplit(row.document, [&](const Cuts& cuts) {
                DocumentSettings settings = SettingsFor(route);
                settings.scriptMode = SCRIPT_AS_TEXT;
                unsigned tags = 0;
                for (const std::string& line : ParseBy(route, row.document, cuts, settings).trace)
                    tags += line.starts_with("start(") || line.starts_with("end(") ? 1U : 0U;
                EXPECT_EQ(tags, row.tags);
            });
        }
    }
}

TEST(ScriptModeTest, TheSetting) {
    GenericParser parser;
    EXPECT_EQ(parser.GetScriptMode(), SCRIPT_AS_TOKENS);
    EXPECT_EQ(parser.SetScriptMode(SCRIPT_AS_TEXT), 0U);
    EXPECT_EQ(parser.GetScriptMode(), SCRIPT_AS_TEXT);
    EXPECT_EQ(parser.SetScriptMode(static_cast<GenericParser::ScriptMode>(2)), 2U);
    EXPECT_EQ(parser.GetScriptMode(), SCRIPT_AS_TEXT);
    for (const auto type : {DATA_STREAM_8BIT, DATA_STREAM_UTF16, DATA_STREAM_AUTO}) {
        EXPECT_EQ(parser.StartParse(1252, type), 0U);
        EXPECT_EQ(parser.GetScriptMode(), SCRIPT_AS_TEXT);
        EXPECT_EQ(GenericParser(parser).GetScriptMode(), SCRIPT_AS_TEXT);
    }
    GenericParser assigned;
    assigned = parser;
    EXPECT_EQ(assigned.GetScriptMode(), SCRIPT_AS_TEXT);
    EXPECT_EQ(assigned.SetScriptMode(SCRIPT_AS_TOKENS), 0U);
    EXPECT_EQ(assigned.GetScriptMode(), SCRIPT_AS_TOKENS);
    EXPECT_EQ(parser.GetScriptMode(), SCRIPT_AS_TEXT);
}

TEST(ScriptModeTest, ItStaysForTheNextDocuments) {
    FedParser parser;
    parser.SetScriptMode(SCRIPT_AS_TEXT);
    for (int i = 0; i < 2; ++i) {
        parser.lines.clear();
        // The one before ended in a content, with the beginning of its end tag.
        parser.Start();
        const std::string document = "a</b><xmp>'</xm";
        EXPECT_EQ(parser.Feed(document), 0U);
        EXPECT_EQ(Join(parser.lines), "start-parsing\ncharset(1252)\ntext(a)\nend(|b|||)\nstart(|xmp||)\n");
    }
    EXPECT_EQ(parser.EndParse(), 0U);
    // The end has ended the content as well.
    EXPECT_EQ(parser.Feed("<b>"), 0U);
    EXPECT_EQ(parser.lines.back(), "start(|b||)");
}

/// Sets a mode in the first callback with the given line.
Lines SwitchAt(const std::string& at, GenericParser::ScriptMode from, GenericParser::ScriptMode to,
               std::string_view document, const Cuts& cuts) {
    Lines lines;
    NarrowObserver observer(&lines);
    DocumentSettings settings;
    settings.observed = Observed::NOBODY;
    settings.scriptMode = from;
    settings.prepare = [&](GenericParser* parser) {
        parser->SetObserver(&observer, false);
        observer.hook = [parser, &at, to](const std::string& line) {
            if (line == at) {
                EXPECT_EQ(parser->SetScriptMode(to), 0U);
            }
        };
    };
    EXPECT_EQ(ParseDocument(document, cuts, settings).parseResult, 0U);
    return Lines(lines.begin() + 2, lines.end() - 1);
}

TEST(ScriptModeTest, ItTakesEffectWithTheNextStartTag) {
    struct Row {
        const char* note;
        std::string at;
        GenericParser::ScriptMode to;
        std::string document;
        Tokens lines;
    };
    const Row rows[] = {
        {"in the text before a script", "text(a)", SCRIPT_AS_TEXT, "a<script>'b'</script>",
         "text(a)\nstart(|script||)\njs-start\ntext('b')\nend(|script|||)\njs-end"},
        {"in the script's tag it is too late", "start(|script||)", SCRIPT_AS_TEXT, "<script>'b'</script><xmp><i>",
         "start(|script||)\njs-start\ns-string(b)\nend(|script|||)\njs-end\nstart(|xmp||)\ntext(<i>)"},
        {"and in its notification", "js-start", SCRIPT_AS_TEXT, "<script>'b'<i></script><xmp><i>",
         "start(|script||)\njs-start\ns-string(b)\ntext(<i>)\nend(|script|||)\njs-end\nstart(|xmp||)\ntext(<i>)"},
        {"and in what follows", "s-string(b)", SCRIPT_AS_TEXT, "<script>'b'/**/</script/></script><xmp><i>",
         "start(|script||)\njs-start\ns-string(b)\nc-comment()\ntext(</script/"
         ">)\nend(|script|||)\njs-end\nstart(|xmp||)\ntext(<i>)"},
        {"back in the script's tag", "start(|script||)", SCRIPT_AS_TOKENS, "<script>'b'</script><script>'b'",
         "start(|script||)\njs-start\ntext('b')\nend(|script|||)\njs-end\nstart(|script||)\njs-start\ns-string(b)"},
        {"back in its text", "text('b')", SCRIPT_AS_TOKENS, "<script>'b'</script><xmp><i>",
         "start(|script||)\njs-start\ntext('b')\nend(|script|||)\njs-end\nstart(|xmp||)\nstart(|i||)"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        const auto from = row.to == SCRIPT_AS_TEXT ? SCRIPT_AS_TOKENS : SCRIPT_AS_TEXT;
        ForEverySplit(row.document, [&](const Cuts& cuts) {
            EXPECT_EQ(SwitchAt(row.at, from, row.to, row.document, cuts), row.lines);
        });
    }
}

TEST(ScriptModeTest, AnExceptionEndsTheContent) {
    FedParser parser;
    parser.SetScriptMode(SCRIPT_AS_TEXT);
    for (const std::string throwing : {"start(|xmp||)", "text(a)", "js-start"}) {
        for (const std::string first : {"<xmp>a</", "<script>a</"}) {
            parser.lines.clear();
            parser.narrow.hook = [&throwing](const std::string& line) {
                if (line == throwing)
                    throw std::runtime_error("an observer's own");
            };
            parser.Start();
            const std::string pieces[] = {first, first == "<xmp>a</" ? "xmp>b" : "script>b"};
            bool hasThrown = false;
            for (const std::string& piece : pieces) {
                if (hasThrown)
                    break;
                try {
                    EXPECT_EQ(parser.Feed(piece), 0U);
                } catch (const std::runtime_error&) {
                    hasThrown = true;
                }
            }
            EXPECT_EQ(hasThrown, throwing != (first == "<xmp>a</" ? "js-start" : "start(|xmp||)"));
            parser.narrow.hook = nullptr;
            parser.lines.clear();
            EXPECT_EQ(parser.Feed("<i>"), 0U);
            EXPECT_EQ(parser.lines.back(), "start(|i||)");
            EXPECT_EQ(parser.EndParse(), 0U);
        }
    }
}

}  // namespace
}  // namespace Kestra::Test
