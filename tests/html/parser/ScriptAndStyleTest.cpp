#include <gtest/gtest.h>

#include <string>

#include "tests/html/parser/DocumentRows.h"

namespace Kestra::Test {
namespace {

Lines InScript(const Lines& tokens) {
    Lines lines{"start(|script||)", "js-start"};
    lines.insert(lines.end(), tokens.begin(), tokens.end());
    lines.push_back("end(|script|||)");
    lines.push_back("js-end");
    return lines;
}

Lines InStyle(const Lines& tokens) {
    Lines lines{"start(|style||)", "css-start"};
    lines.insert(lines.end(), tokens.begin(), tokens.end());
    lines.push_back("end(|style|||)");
    lines.push_back("css-end");
    return lines;
}

TEST(ScriptAndStyleTest, WhatBeginsAndEndsThem) {
    const DocumentRow rows[] = {
        {"the notifications follow their tags",
         "a<script>b</script>c",
         {"text(a)", "start(|script||)", "js-start", "text(b)", "end(|script|||)", "js-end", "text(c)"}},
        {"and those of style theirs",
         "a<style>b</style>c",
         {"text(a)", "start(|style||)", "css-start", "text(b)", "end(|style|||)", "css-end", "text(c)"}},
        {"upper and lower case",
         "<SCRIPT></ScRiPt><Style></STYLE>",
         {"start(|SCRIPT||)", "js-start", "end(|ScRiPt|||)", "js-end", "start(|Style||)", "css-start", "end(|STYLE|||)",
          "css-end"}},
        {"blanks and attributes",
         "< script src=x>'</'</ script x='>' ><p>",
         {"start( |script|{ |src|=|x}|)", "js-start", "s-string(</)", "end( |script| |{|x|=|'>'}| )", "js-end",
          "start(|p||)"}},
        {"a short tag begins no script", "<script/><b>", {"short(|script||)", "start(|b||)"}},
        {"nor with a blank", "<script /><b>'", {"short(|script|| )", "start(|b||)", "text(')"}},
        {"nor does a short style tag", "<style/>a/*b", {"short(|style||)", "text(a/*b)"}},
        {"nor one with an attribute", "<style a='b'/><b>", {"short(|style|{ |a|=|'b'}|)", "start(|b||)"}},
        {"a name that only begins with \"script\"", "<scripts><b>", {"start(|scripts||)", "start(|b||)"}},
        {"a stray end tag of script calls its notification",
         "x</script>'y'",
         {"text(x)", "end(|script|||)", "js-end", "text('y')"}},
        {"and one of style its own", "</style>'y'", {"end(|style|||)", "css-end", "text('y')"}},
        {"an unclosed end tag is a tag",
         "<script></script<p>",
         {"start(|script||)", "js-start", "end(|script|||, open)", "js-end", "start(|p||)"}},
        {"a slash after the end tag's name",
         "<script></script />x",
         {"start(|script||)", "js-start", "end(|script| ||, slash)", "js-end", "text(x)"}},
        {"script after script",
         "<script>'</script><script>'\"</script>\"</script>x",
         {"start(|script||)", "js-start", "s-string(</script><script>)", "d-string(</script>)", "end(|script|||)",
          "js-end", "text(x)"}},
        {"the input may end in a script", "<script>x", {"start(|script||)", "js-start", "text(x)"}},
        {"and in a style", "<style>x", {"start(|style||)", "css-start", "text(x)"}},
        {"or right after the tag", "<script>", {"start(|script||)", "js-start"}},
    };
    CheckRows(rows);
}

TEST(ScriptAndStyleTest, ANulIsNoEndOfTheName) {
    const DocumentRow row{"a NUL after \"script\"",
                          std::string("<script\0><b>'", 13),
                          {"start(|script\\x00||)", "start(|b||)", "text(')"}};
    for (const Route& route : {NARROW_TO_NARROW, NARROW_TO_WIDE, WIDE_TO_WIDE})
        CheckRow(row, route);
}

TEST(ScriptAndStyleTest, OnlyAsciiLettersFold) {
    // A long s and a Kelvin sign fold to "s" and "k" elsewhere.
    const WideString input = KESTRA_WIDE("<\u017Fcript><b><\u017Ftyle><i>");
    const DocumentRun run = ParseDocument(input, {}, SettingsFor(WIDE_TO_WIDE));
    EXPECT_EQ(run.Lines(), Join({"start-parsing", "charset(1200)", "start(|\\u017Fcript||)", "start(|b||)",
                                 "start(|\\u017Ftyle||)", "start(|i||)", "end-parsing"}));
}

TEST(ScriptAndStyleTest, TagsThatAreTextInScript) {
    struct Row {
        const char* note;
        const char* script;
        Lines tokens;
    };
    const Row rows[] = {
        {"a comparison", "if(a<b)x='</b>';", {"text(if(a)", "text(<b)x=)", "s-string(</b>)", "text(;)"}},
        {"a start tag", "<p>x", {"text(<p>x)"}},
        {"a start tag after text", "a<p>", {"text(a)", "text(<p>)"}},
        {"a short tag", "a<br/>b", {"text(a)", "text(<br)", "text(/>b)"}},
        {"two \"<\"", "a<<b", {"text(a)", "text(<)", "text(<b)"}},
        {"a \"<\" before a string", "a<'b'", {"text(a)", "text(<)", "s-string(b)"}},
        {"a declaration", "a<!b>", {"text(a)", "text(<!b>)"}},
        {"a processing instruction", "a<?b?>", {"text(a)", "text(<?b?>)"}},
        {"a foreign end tag", "x</p>", {"text(x)", "text(</p>)"}},
        {"a foreign end tag with everything in it",
         "x</ p\ta = 'b'  c=\"d\" />y",
         {"text(x)", "text(</ p\\ta = 'b'  c=\"d\" />y)"}},
        {"a foreign end tag that is not closed", "x</b", {"text(x)", "text(</b)"}},
        {"a foreign end tag that takes words up", "</p a=1 b c>;", {"text(</p a=1 b c>;)"}},
        {"a foreign end tag with a slash after a value", "</p a=1/>", {"text(</p a=1/>)"}},
        {"an end tag without a name", "</>", {"text(</>)"}},
        {"the end tag of style", "a</style>b", {"text(a)", "text(</style>b)"}},
        {"a longer name", "a</scripts>b", {"text(a)", "text(</scripts>b)"}},
        {"a name that ends with a slash", "a</script/>b", {"text(a)", "text(</script/>b)"}},
        {"text goes on after a foreign end tag", "a</b>c</d>e", {"text(a)", "text(</b>c)", "text(</d>e)"}},
    };
    for (const Row& row : rows) {
        const std::string script = row.script;
        CheckRow(DocumentRow{row.note, "<script>" + script + "</script>", InScript(row.tokens)});
    }
}

TEST(ScriptAndStyleTest, StringsInScript) {
    struct Row {
        const char* note;
        const char* script;
        Lines tokens;
    };
    const Row rows[] = {
        {"both kinds", "'a'\"b\"", {"s-string(a)", "d-string(b)"}},
        {"empty strings", "''+\"\"", {"s-string()", "text(+)", "d-string()"}},
        {"one quote inside the other", "'\"'\"'\"", {"s-string(\")", "d-string(')"}},
        {"a backslash escapes the quote and is kept",
         "'it\\'s'\"a\\\"b\"",
         {"s-string(it\\\\'s)", "d-string(a\\\\\"b)"}},
        {"a backslash may be escaped", "'a\\\\'\"b\\\\\"", {"s-string(a\\\\\\\\)", "d-string(b\\\\\\\\)"}},
        {"three backslashes", "'\\\\\\'x'", {"s-string(\\\\\\\\\\\\'x)"}},
        {"markup", "'</script>'\"<!--\"", {"s-string(</script>)", "d-string(<!--)"}},
        {"line feeds", "'a\nb'\"\r\n\"", {"s-string(a\\nb)", "d-string(\\r\\n)"}},
        {"comment openers", "'/*'\"//\"", {"s-string(/*)", "d-string(//)"}},
        {"asterisks, the sign of no pending escape", "'*'\"\\**\"", {"s-string(*)", "d-string(\\\\**)"}},
    };
    for (const Row& row : rows) {
        const std::string script = row.script;
        CheckRow(DocumentRow{row.note, "<script>" + script + "</script>", InScript(row.tokens)});
        CheckRow(DocumentRow{row.note, "<style>" + script + "</style>", InStyle(row.tokens)});
    }
}

TEST(ScriptAndStyleTest, RegularExpressionsAreText) {
    struct Row {
        const char* note;
        const char* script;
        Lines tokens;
    };
    const Row rows[] = {
        {"the closing slash begins the next text", "x=/ab+/g", {"text(x=)", "text(/ab+)", "text(/g)"}},
        {"quotes inside", "x=/'\"/;'a'", {"text(x=)", "text(/'\")", "text(/;'a')"}},
        {"a quote after a line feed is a string again",
         "x=/'/\n'a'",
         {"text(x=)", "text(/')", "text(/)", "text(\\n)", "s-string(a)"}},
        {"an escaped slash", "/a\\/b/ \n", {"text(/a\\\\/b)", "text(/ )", "text(\\n)"}},
        {"an escaped backslash", "/\\\\/\n", {"text(/\\\\\\\\)", "text(/)", "text(\\n)"}},
        {"a division", "a/b\nc", {"text(a)", "text(/b)", "text(\\nc)"}},
        {"a carriage return ends it", "/a\rb", {"text(/a)", "text(\\rb)"}},
        {"a line feed ends it, escaped as well", "/a\\\nb", {"text(/a\\\\)", "text(\\nb)"}},
        {"so does \"<\"", "/a<b/", {"text(/a)", "text(<b)", "text(/)"}},
        {"a slash in brackets ends it", "/[/]/\n", {"text(/[)", "text(/])", "text(/)", "text(\\n)"}},
        {"a lone slash before the end tag", "a/", {"text(a)", "text(/)"}},
    };
    for (const Row& row : rows) {
        const std::string script = row.script;
        CheckRow(DocumentRow{row.note, "<script>" + script + "</script>", InScript(row.tokens)});
    }
}

TEST(ScriptAndStyleTest, RegularExpressionsAtTheEndOfTheInput) {
    const DocumentRow rows[] = {
        {"the slash is the last character", "<script>x/", {"start(|script||)", "js-start", "text(x/)"}},
        {"the expression is open", "<script>x/ab", {"start(|script||)", "js-start", "text(x)", "text(/ab)"}},
        {"an escape is open", "<script>/ab\\", {"start(|script||)", "js-start", "text(/ab\\\\)"}},
        {"the closing slash is the last character",
         "<script>/ab/",
         {"start(|script||)", "js-start", "text(/ab)", "text(/)"}},
    };
    CheckRows(rows);
}

TEST(ScriptAndStyleTest, Style) {
    const DocumentRow rows[] = {
        {"a slash is text", "<style>a/b</style>", InStyle({"text(a/b)"})},
        {"two slashes are no line comment", "<style>a//b'c'</style>", InStyle({"text(a//b)", "s-string(c)"})},
        {"many slashes", "<style>////</style>", InStyle({"text(////)"})},
        {"a slash at the end of the input", "<style>a/", {"start(|style||)", "css-start", "text(a/)"}},
        {"a string hides the end tag", "<style>a{b:\"</style>\"}</style>",
         InStyle({"text(a{b:)", "d-string(</style>)", "text(})"})},
        {"a child selector", "<style>a>b{}</style>", InStyle({"text(a>b{})"})},
        {"a start tag is text", "<style>a<b></style>", InStyle({"text(a)", "text(<b>)"})},
        {"also that of script", "<style><script></style>", InStyle({"text(<script>)"})},
        {"the end tag of script is text", "<style>a</script>b</style>", InStyle({"text(a)", "text(</script>b)"})},
        {"the end tag of style in a script is text", "<script></style>'</script>'</script>",
         InScript({"text(</style>)", "s-string(</script>)"})},
        {"a script after a style",
         "<style>a/b</style><script>a/b</script>",
         {"start(|style||)", "css-start", "text(a/b)", "end(|style|||)", "css-end", "start(|script||)", "js-start",
          "text(a)", "text(/b)", "end(|script|||)", "js-end"}},
    };
    CheckRows(rows);
}

TEST(ScriptAndStyleTest, ConstructsThatTheInputLeavesOpen) {
    const BrokenRow rows[] = {
        {"a single-quoted string",
         "<script>x='ab",
         {"start(|script||)", "js-start", "text(x=)", "junk('ab)"},
         {"start(|script||)", "js-start", "text(x=)"},
         0,
         16},
        {"a double-quoted string",
         "<style>x=\"ab",
         {"start(|style||)", "css-start", "text(x=)", "junk(\"ab)"},
         {"start(|style||)", "css-start", "text(x=)"},
         0,
         16},
        {"an opening quote",
         "<script>'",
         {"start(|script||)", "js-start", "junk(')"},
         {"start(|script||)", "js-start"},
         0,
         16},
        {"an escape in a string",
         "<script>'a\\",
         {"start(|script||)", "js-start", "junk('a\\\\)"},
         {"start(|script||)", "js-start"},
         0,
         16},
        {"a \"<\"",
         "<script>a<",
         {"start(|script||)", "js-start", "text(a)", "junk(<)"},
         {"start(|script||)", "js-start", "text(a)"},
         0,
         16},
        {"a \"<!\"",
         "<script>a<!",
         {"start(|script||)", "js-start", "text(a)", "junk(<!)"},
         {"start(|script||)", "js-start", "text(a)"},
         0,
         16},
        {"a foreign end tag",
         "<script>a</p x",
         {"start(|script||)", "js-start", "text(a)", "junk(</p x)"},
         {"start(|script||)", "js-start", "text(a)"},
         0,
         16},
        {"the end tag of the script",
         "<script>a</script",
         {"start(|script||)", "js-start", "text(a)", "junk(</script)"},
         {"start(|script||)", "js-start", "text(a)"},
         0,
         16},
    };
    CheckRows(rows);
}

TEST(ScriptAndStyleTest, JunkInScriptLeavesItAScript) {
    const BrokenRow rows[] = {
        {"a broken foreign end tag",
         "<script></p / >'<'</script>b",
         {"start(|script||)", "js-start", "junk(</p / )", "junk(>')", "text(<)", "junk('</script>b)"},
         {"start(|script||)", "js-start"},
         11,
         16},
    };
    CheckRows(rows);
}

}  // namespace
}  // namespace Kestra::Test
