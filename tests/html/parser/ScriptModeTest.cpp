#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/MemoryInputStream.h"
#include "tests/html/parser/DocumentRows.h"
#include "tests/support/Flavours.h"

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

/// Each by the parser of one flavour for an observer of its own, and of the other, by turns: what
/// lies between them is the same as ever.
template <std::size_t N>
void CheckAsText(const DocumentRow (&rows)[N], StringNS::CharSet::Code charset = 1252) {
    bool toOther = false;
    for (DocumentRow row : rows) {
        row.scriptMode = GenericParser::SCRIPT_AS_TEXT;
        row.charset = charset;
        CheckRow(row, toOther && charset == 1252 ? NARROW_TO_WIDE : NARROW_TO_NARROW);
        if (charset == 1252)
            CheckRow(row, toOther ? WIDE_TO_NARROW : WIDE_TO_WIDE);
        toOther = !toOther;
    }
}

Lines InScript(const std::string& content) {
    return {"start(|script||)", "js-start", "text(" + content + ")", "end(|script|||)", "js-end"};
}

TEST(ScriptModeTest, TheElements) {
    const DocumentRow rows[] = {
        {"nothing in a script is markup, a string or a comment",
         "<script>a<b>'c\"/d//e/*f<!g<?h</i>j</script>k",
         {"start(|script||)", "js-start", "text(a<b>'c\"/d//e/*f<!g<?h</i>j)", "end(|script|||)", "js-end", "text(k)"}},
        {"nor in a style",
         "<style>a>'b<c>\"/*d</style>e",
         {"start(|style||)", "css-start", "text(a>'b<c>\"/*d)", "end(|style|||)", "css-end", "text(e)"}},
        {"a text area",
         "<textarea><b></textarea><i>",
         {"start(|textarea||)", "text(<b>)", "end(|textarea|||)", "start(|i||)"}},
        {"a title", "<title><!--a</title>b", {"start(|title||)", "text(<!--a)", "end(|title|||)", "text(b)"}},
        {"an example", "<xmp><p></xmp>", {"start(|xmp||)", "text(<p>)", "end(|xmp|||)"}},
        {"a frame", "<iframe src=a><p></iframe>", {"start(|iframe|{ |src|=|a}|)", "text(<p>)", "end(|iframe|||)"}},
        {"what is there without plug-ins",
         "<noembed><p></noembed>",
         {"start(|noembed||)", "text(<p>)", "end(|noembed|||)"}},
        {"and without frames", "<noframes><p></noframes>", {"start(|noframes||)", "text(<p>)", "end(|noframes|||)"}},
        {"but not without scripts",
         "<noscript><p></noscript>",
         {"start(|noscript||)", "start(|p||)", "end(|noscript|||)"}},
        {"nothing ends plain text", "<plaintext><p></plaintext>", {"start(|plaintext||)", "text(<p></plaintext>)"}},
        {"upper and lower case", "<XMP><p></XmP>", {"start(|XMP||)", "text(<p>)", "end(|XmP|||)"}},
        {"an empty content is no text",
         "<script></script>",
         {"start(|script||)", "js-start", "end(|script|||)", "js-end"}},
        {"a content ends with the document", "<title>a</titl", {"start(|title||)", "text(a</titl)"}},
        {"also right after the tag", "<title>", {"start(|title||)"}},
        {"other text and tags are as ever", "a<b/>'c'</d>", {"text(a)", "short(|b||)", "text('c')", "end(|d|||)"}},
        {"stray end tags too",
         "</script></style></title>",
         {"end(|script|||)", "js-end", "end(|style|||)", "css-end", "end(|title|||)"}},
        {"two in a row",
         "<xmp></title></xmp><title></xmp></title>",
         {"start(|xmp||)", "text(</title>)", "end(|xmp|||)", "start(|title||)", "text(</xmp>)", "end(|title|||)"}},
        {"line feeds count",
         "\n<xmp>\n<\n</xmp\n>\n",
         {"text(\\n)", "start(|xmp||)", "text(\\n<\\n)", "end(|xmp|\\n||)", "text(\\n)"}},
    };
    CheckAsText(rows);
}

TEST(ScriptModeTest, TheTagsThatBeginAContent) {
    const DocumentRow rows[] = {
        {"a short tag does, and calls the notification",
         "<script/><b></script>",
         {"short(|script||)", "js-start", "text(<b>)", "end(|script|||)", "js-end"}},
        {"with a blank and attributes",
         "<style a=b /><b></style>",
         {"short(|style|{ |a|=|b}| )", "css-start", "text(<b>)", "end(|style|||)", "css-end"}},
        {"the name ends at a slash",
         "<script/a><b></script/c>d",
         {"start(|script/a||)", "js-start", "text(<b>)", "end(|script/c|||)", "js-end", "text(d)"}},
        {"attributes",
         "<title a='</title>'>b</title>",
         {"start(|title|{ |a|=|'</title>'}|)", "text(b)", "end(|title|||)"}},
        {"white space after the name", "<title\n>b</title\t>", {"start(|title||\\n)", "text(b)", "end(|title|\\t||)"}},
        {"not white space that browsers do not know",
         "<title\v>b<i>",
         {"start(|title||\\x0B)", "text(b)", "start(|i||)"}},
        {"nor before the attributes", "<title\v a>b<i>", {"start(|title|{\\x0B |a}|)", "text(b)", "start(|i||)"}},
        {"not with white space before the name", "< script>a<i>", {"start( |script||)", "text(a)", "start(|i||)"}},
        {"nor with a bracket after it", "<title[a]><i>", {"start(|title|{|[a]}|)", "start(|i||)"}},
        {"nor with an equals sign", "<title=a><i>", {"start(|title|{||=|a}|)", "start(|i||)"}},
        {"nor a longer name", "<titles><scripta><i>", {"start(|titles||)", "start(|scripta||)", "start(|i||)"}},
        {"nor an end tag", "</title><i>", {"end(|title|||)", "start(|i||)"}},
        {"in other markup there is no content",
         "<!--<script>--><i a='<script>'>'",
         {"comment(<script>)", "start(|i|{ |a|=|'<script>'}|)", "text(')"}},
    };
    CheckAsText(rows);
}

TEST(ScriptModeTest, TheEndTags) {
    const DocumentRow rows[] = {
        {"white space, a slash or \">\" must follow the name",
         "<xmp></xmps></xmp-></xmp<</xmp\v></xmp></xmp\f>",
         {"start(|xmp||)", "text(</xmps></xmp-></xmp<</xmp\\x0B>)", "end(|xmp|||)", "end(|xmp|\\x0C||)"}},
        {"the carriage return is white space", "<xmp></xmp\r>", {"start(|xmp||)", "end(|xmp|\\r||)"}},
        {"a slash", "<xmp>a</xmp/>b", {"start(|xmp||)", "text(a)", "end(|xmp/|||)", "text(b)"}},
        {"a slash after white space",
         "<xmp>a</xmp />b",
         {"start(|xmp||)", "text(a)", "end(|xmp| ||, slash)", "text(b)"}},
        {"attributes", "<xmp>a</xmp b='>'>c", {"start(|xmp||)", "text(a)", "end(|xmp| |{|b|=|'>'}|)", "text(c)"}},
        {"what begins like it",
         "<xmp></</x</xm</xmp></xmp>",
         {"start(|xmp||)", "text(</</x</xm)", "end(|xmp|||)", "end(|xmp|||)"}},
        {"white space before the name", "<xmp></ xmp></xmp>", {"start(|xmp||)", "text(</ xmp>)", "end(|xmp|||)"}},
        {"that of another element", "<xmp></title></xmp>", {"start(|xmp||)", "text(</title>)", "end(|xmp|||)"}},
        {"an end tag that is no more than its name ends a script too",
         "<script></script\n><b>",
         {"start(|script||)", "js-start", "end(|script|\\n||)", "js-end", "start(|b||)"}},
    };
    CheckAsText(rows);
}

TEST(ScriptModeTest, AnEndTagThatFails) {
    BrokenRow rows[] = {
        {"it has ended the content",
         "<xmp>a</xmp / ><b>",
         {"start(|xmp||)", "text(a)", "junk(</xmp / )", "junk(>)", "start(|b||)"},
         {"start(|xmp||)", "text(a)"},
         11,
         16},
        {"an open one",
         "<script>a</script b",
         {"start(|script||)", "js-start", "text(a)", "junk(</script b)"},
         {"start(|script||)", "js-start", "text(a)"},
         0,
         16},
    };
    for (BrokenRow& row : rows) {
        row.scriptMode = GenericParser::SCRIPT_AS_TEXT;
        CheckRow(row);
    }
}

TEST(ScriptModeTest, EscapedPartsOfScripts) {
    const DocumentRow rows[] = {
        {"a script in a comment keeps its end tag", "<script><!--<script></script>--></script>",
         InScript("<!--<script></script>-->")},
        {"a comment alone hides no end tag",
         "<script><!--</script>-->",
         {"start(|script||)", "js-start", "text(<!--)", "end(|script|||)", "js-end", "text(-->)"}},
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
        {"an open one swallows what follows",
         "<script><!--<script></script>a",
         {"start(|script||)", "js-start", "text(<!--<script></script>a)"}},
        {"other elements know no such part",
         "<style><!--<style></style>",
         {"start(|style||)", "css-start", "text(<!--<style>)", "end(|style|||)", "css-end"}},
        {"nor does the next script remember it",
         "<script><!--</script><script><script></script>",
         {"start(|script||)", "js-start", "text(<!--)", "end(|script|||)", "js-end", "start(|script||)", "js-start",
          "text(<script>)", "end(|script|||)", "js-end"}},
    };
    CheckAsText(rows);
}

TEST(ScriptModeTest, EscapeRunsOfIso2022) {
    const DocumentRow rows[] = {
        {"a run hides an end tag",
         "<xmp>a\x1B$B</xmp>\x1B(Bb</xmp>",
         {"start(|xmp||)", "text(a\\x1B$B</xmp>\\x1B(Bb)", "end(|xmp|||)"}},
        {"at once", "<xmp>\x1B$B</xmp>\x1B(B</xmp>", {"start(|xmp||)", "text(\\x1B$B</xmp>\\x1B(B)", "end(|xmp|||)"}},
        {"and the parts of a script", "<script>\x1B$B<!--<script>\x1B(B</script>",
         InScript("\\x1B$B<!--<script>\\x1B(B")},
        {"and the end of one", "<script><!--<script>\x1B$B-->\x1B(B</script></script>",
         InScript("<!--<script>\\x1B$B-->\\x1B(B</script>")},
        {"an escape that designates nothing", "<xmp>\x1Bx</xmp>", {"start(|xmp||)", "text(\\x1Bx)", "end(|xmp|||)"}},
        {"its characters do not count either", "<script><!--<script>\x1B--></script></script>",
         InScript("<!--<script>\\x1B--></script>")},
        {"the end of the document in a run", "<xmp>a\x1B$B<", {"start(|xmp||)", "text(a\\x1B$B<)"}},
        {"in a designation", "<xmp>a\x1B$", {"start(|xmp||)", "text(a\\x1B$)"}},
        {"in plain text", "<plaintext>\x1B$B<\x1B(B<", {"start(|plaintext||)", "text(\\x1B$B<\\x1B(B<)"}},
    };
    CheckAsText(rows, 50221);
    DocumentRow row{"elsewhere it is a character like others",
                    "<xmp>\x1B$B</xmp>\x1B(B",
                    {"start(|xmp||)", "text(\\x1B$B)", "end(|xmp|||)", "text(\\x1B(B)"}};
    row.scriptMode = GenericParser::SCRIPT_AS_TEXT;
    CheckRow(row);
}

// Only letters of ASCII fold.
TEST(ScriptModeTest, NamesInWideText) {
    DocumentSettings settings = SettingsFor(WIDE_TO_WIDE);
    settings.scriptMode = GenericParser::SCRIPT_AS_TEXT;
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
                settings.scriptMode = GenericParser::SCRIPT_AS_TEXT;
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
    EXPECT_EQ(parser.GetScriptMode(), GenericParser::SCRIPT_AS_TOKENS);
    EXPECT_EQ(parser.SetScriptMode(GenericParser::SCRIPT_AS_TEXT), 0U);
    EXPECT_EQ(parser.GetScriptMode(), GenericParser::SCRIPT_AS_TEXT);
    EXPECT_EQ(parser.SetScriptMode(static_cast<GenericParser::ScriptMode>(2)), 2U);
    EXPECT_EQ(parser.GetScriptMode(), GenericParser::SCRIPT_AS_TEXT);
    for (const auto type :
         {GenericParser::DATA_STREAM_8BIT, GenericParser::DATA_STREAM_UTF16, GenericParser::DATA_STREAM_AUTO}) {
        EXPECT_EQ(parser.StartParse(1252, type), 0U);
        EXPECT_EQ(parser.GetScriptMode(), GenericParser::SCRIPT_AS_TEXT);
        EXPECT_EQ(GenericParser(parser).GetScriptMode(), GenericParser::SCRIPT_AS_TEXT);
    }
    GenericParser assigned;
    assigned = parser;
    EXPECT_EQ(assigned.GetScriptMode(), GenericParser::SCRIPT_AS_TEXT);
    EXPECT_EQ(assigned.SetScriptMode(GenericParser::SCRIPT_AS_TOKENS), 0U);
    EXPECT_EQ(assigned.GetScriptMode(), GenericParser::SCRIPT_AS_TOKENS);
    EXPECT_EQ(parser.GetScriptMode(), GenericParser::SCRIPT_AS_TEXT);
}

TEST(ScriptModeTest, ItStaysForTheNextDocuments) {
    Lines lines;
    Trace::TraceObserver<char, std::string> observer(&lines);
    GenericParser parser;
    parser.SetObserver(&observer, false);
    parser.SetScriptMode(GenericParser::SCRIPT_AS_TEXT);
    for (int i = 0; i < 2; ++i) {
        lines.clear();
        // The one before ended in a content, with the beginning of its end tag.
        EXPECT_EQ(parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT), 0U);
        const std::string document = "a</b><xmp>'</xm";
        EXPECT_EQ(parser.ParseBuffer(document.data(), document.size()), 0U);
        EXPECT_EQ(Join(lines), "start-parsing\ncharset(1252)\ntext(a)\nend(|b|||)\nstart(|xmp||)\n");
    }
    EXPECT_EQ(parser.EndParse(), 0U);
    // The end has ended the content as well.
    EXPECT_EQ(parser.ParseBuffer("<b>", 3), 0U);
    EXPECT_EQ(lines.back(), "start(|b||)");
}

/// Sets a mode in the first callback with the given line.
Lines SwitchAt(const std::string& at, GenericParser::ScriptMode from, GenericParser::ScriptMode to,
               std::string_view document, const Cuts& cuts) {
    Lines lines;
    HookedObserver<char, std::string> observer(&lines);
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
        Lines lines;
    };
    const Row rows[] = {
        {"in the text before a script",
         "text(a)",
         GenericParser::SCRIPT_AS_TEXT,
         "a<script>'b'</script>",
         {"text(a)", "start(|script||)", "js-start", "text('b')", "end(|script|||)", "js-end"}},
        {"in the script's tag it is too late",
         "start(|script||)",
         GenericParser::SCRIPT_AS_TEXT,
         "<script>'b'</script><xmp><i>",
         {"start(|script||)", "js-start", "s-string(b)", "end(|script|||)", "js-end", "start(|xmp||)", "text(<i>)"}},
        {"and in its notification",
         "js-start",
         GenericParser::SCRIPT_AS_TEXT,
         "<script>'b'<i></script><xmp><i>",
         {"start(|script||)", "js-start", "s-string(b)", "text(<i>)", "end(|script|||)", "js-end", "start(|xmp||)",
          "text(<i>)"}},
        {"and in what follows",
         "s-string(b)",
         GenericParser::SCRIPT_AS_TEXT,
         "<script>'b'/**/</script/></script><xmp><i>",
         {"start(|script||)", "js-start", "s-string(b)", "c-comment()", "text(</script/>)", "end(|script|||)", "js-end",
          "start(|xmp||)", "text(<i>)"}},
        {"back in the script's tag",
         "start(|script||)",
         GenericParser::SCRIPT_AS_TOKENS,
         "<script>'b'</script><script>'b'",
         {"start(|script||)", "js-start", "text('b')", "end(|script|||)", "js-end", "start(|script||)", "js-start",
          "s-string(b)"}},
        {"back in its text",
         "text('b')",
         GenericParser::SCRIPT_AS_TOKENS,
         "<script>'b'</script><xmp><i>",
         {"start(|script||)", "js-start", "text('b')", "end(|script|||)", "js-end", "start(|xmp||)", "start(|i||)"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        const auto from =
            row.to == GenericParser::SCRIPT_AS_TEXT ? GenericParser::SCRIPT_AS_TOKENS : GenericParser::SCRIPT_AS_TEXT;
        ForEverySplit(row.document, [&](const Cuts& cuts) {
            EXPECT_EQ(SwitchAt(row.at, from, row.to, row.document, cuts), row.lines);
        });
    }
}

TEST(ScriptModeTest, AnExceptionEndsTheContent) {
    Lines lines;
    HookedObserver<char, std::string> observer(&lines);
    GenericParser parser;
    parser.SetObserver(&observer, false);
    parser.SetScriptMode(GenericParser::SCRIPT_AS_TEXT);
    for (const std::string throwing : {"start(|xmp||)", "text(a)", "js-start"}) {
        for (const std::string first : {"<xmp>a</", "<script>a</"}) {
            lines.clear();
            observer.hook = [&throwing](const std::string& line) {
                if (line == throwing)
                    throw std::runtime_error("an observer's own");
            };
            parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT);
            const std::string pieces[] = {first, first == "<xmp>a</" ? "xmp>b" : "script>b"};
            bool hasThrown = false;
            for (const std::string& piece : pieces) {
                if (hasThrown)
                    break;
                try {
                    EXPECT_EQ(parser.ParseBuffer(piece.data(), piece.size()), 0U);
                } catch (const std::runtime_error&) {
                    hasThrown = true;
                }
            }
            EXPECT_EQ(hasThrown, throwing != (first == "<xmp>a</" ? "js-start" : "start(|xmp||)"));
            observer.hook = nullptr;
            lines.clear();
            EXPECT_EQ(parser.ParseBuffer("<i>", 3), 0U);
            EXPECT_EQ(lines.back(), "start(|i||)");
            EXPECT_EQ(parser.EndParse(), 0U);
        }
    }
}

}  // namespace
}  // namespace Kestra::Test
