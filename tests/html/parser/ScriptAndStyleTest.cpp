#include "tests/html/parser/DocumentRows.h"

namespace Kestra::Test {
namespace {

TEST(ScriptAndStyleTest, WhatBeginsAndEndsThem) {
    const DocumentRow rows[] = {
        {"the notifications follow their tags", "a<script>b</script>c",
         "text(a)\nstart(|script||)\njs-start\ntext(b)\nend(|script|||)\njs-end\ntext(c)"},
        {"and those of style theirs", "a<style>b</style>c",
         "text(a)\nstart(|style||)\ncss-start\ntext(b)\nend(|style|||)\ncss-end\ntext(c)"},
        {"upper and lower case", "<SCRIPT></ScRiPt><Style></STYLE>",
         "start(|SCRIPT||)\njs-start\nend(|ScRiPt|||)\njs-end\nstart(|Style||)\ncss-start\nend(|STYLE|||)\ncss-end"},
        {"blanks and attributes", "< script src=x>'</'</ script x='>' ><p>",
         "start( |script|{ |src|=|x}|)\njs-start\ns-string(</)\nend( |script| |{|x|=|'>'}| )\njs-end\nstart(|p||)"},
        {"a short tag begins no script", "<script/><b>", "short(|script||)\nstart(|b||)"},
        {"nor with a blank", "<script /><b>'", "short(|script|| )\nstart(|b||)\ntext(')"},
        {"nor does a short style tag", "<style/>a/*b", "short(|style||)\ntext(a/*b)"},
        {"nor one with an attribute", "<style a='b'/><b>", "short(|style|{ |a|=|'b'}|)\nstart(|b||)"},
        {"a name that only begins with \"script\"", "<scripts><b>", "start(|scripts||)\nstart(|b||)"},
        {"a stray end tag of script calls its notification", "x</script>'y'",
         "text(x)\nend(|script|||)\njs-end\ntext('y')"},
        {"and one of style its own", "</style>'y'", "end(|style|||)\ncss-end\ntext('y')"},
        {"an unclosed end tag is a tag", "<script></script<p>",
         "start(|script||)\njs-start\nend(|script|||, open)\njs-end\nstart(|p||)"},
        {"a slash after the end tag's name", "<script></script />x",
         "start(|script||)\njs-start\nend(|script| ||, slash)\njs-end\ntext(x)"},
        {"script after script", "<script>'</script><script>'\"</script>\"</script>x",
         "start(|script||)\njs-start\ns-string(</script><script>)\nd-string(</"
         "script>)\nend(|script|||)\njs-end\ntext(x)"},
        {"the input may end in a script", "<script>x", "start(|script||)\njs-start\ntext(x)"},
        {"and in a style", "<style>x", "start(|style||)\ncss-start\ntext(x)"},
        {"or right after the tag", "<script>", "start(|script||)\njs-start"},
    };
    CheckRows(rows);
}

TEST(ScriptAndStyleTest, ANulIsNoEndOfTheName) {
    const DocumentRow row{"a NUL after \"script\"", std::string("<script\0><b>'", 13),
                          "start(|script\\x00||)\nstart(|b||)\ntext(')"};
    for (const Route& route : ROUTES_WITH_NULS)
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
    const ContentRow rows[] = {
        {"a comparison", "if(a<b)x='</b>';", "text(if(a)\ntext(<b)x=)\ns-string(</b>)\ntext(;)"},
        {"a start tag", "<p>x", "text(<p>x)"},
        {"a start tag after text", "a<p>", "text(a)\ntext(<p>)"},
        {"a short tag", "a<br/>b", "text(a)\ntext(<br)\ntext(/>b)"},
        {"two \"<\"", "a<<b", "text(a)\ntext(<)\ntext(<b)"},
        {"a \"<\" before a string", "a<'b'", "text(a)\ntext(<)\ns-string(b)"},
        {"a declaration", "a<!b>", "text(a)\ntext(<!b>)"},
        {"a processing instruction", "a<?b?>", "text(a)\ntext(<?b?>)"},
        {"a foreign end tag", "x</p>", "text(x)\ntext(</p>)"},
        {"a foreign end tag with everything in it", "x</ p\ta = 'b'  c=\"d\" />y",
         "text(x)\ntext(</ p\\ta = 'b'  c=\"d\" />y)"},
        {"a foreign end tag that is not closed", "x</b", "text(x)\ntext(</b)"},
        {"a foreign end tag that takes words up", "</p a=1 b c>;", "text(</p a=1 b c>;)"},
        {"a foreign end tag with a slash after a value", "</p a=1/>", "text(</p a=1/>)"},
        {"an end tag without a name", "</>", "text(</>)"},
        {"the end tag of style", "a</style>b", "text(a)\ntext(</style>b)"},
        {"a longer name", "a</scripts>b", "text(a)\ntext(</scripts>b)"},
        {"a name that ends with a slash", "a</script/>b", "text(a)\ntext(</script/>b)"},
        {"text goes on after a foreign end tag", "a</b>c</d>e", "text(a)\ntext(</b>c)\ntext(</d>e)"},
    };
    CheckInside("script", rows);
}

TEST(ScriptAndStyleTest, StringsInScript) {
    const ContentRow rows[] = {
        {"both kinds", "'a'\"b\"", "s-string(a)\nd-string(b)"},
        {"empty strings", "''+\"\"", "s-string()\ntext(+)\nd-string()"},
        {"one quote inside the other", "'\"'\"'\"", "s-string(\")\nd-string(')"},
        {"a backslash escapes the quote and is kept", "'it\\'s'\"a\\\"b\"", "s-string(it\\\\'s)\nd-string(a\\\\\"b)"},
        {"a backslash may be escaped", "'a\\\\'\"b\\\\\"", "s-string(a\\\\\\\\)\nd-string(b\\\\\\\\)"},
        {"three backslashes", "'\\\\\\'x'", "s-string(\\\\\\\\\\\\'x)"},
        {"markup", "'</script>'\"<!--\"", "s-string(</script>)\nd-string(<!--)"},
        {"line feeds", "'a\nb'\"\r\n\"", "s-string(a\\nb)\nd-string(\\r\\n)"},
        {"comment openers", "'/*'\"//\"", "s-string(/*)\nd-string(//)"},
        {"asterisks, the sign of no pending escape", "'*'\"\\**\"", "s-string(*)\nd-string(\\\\**)"},
    };
    CheckInside("script", rows);
    CheckInside("style", rows);
}

TEST(ScriptAndStyleTest, RegularExpressionsAreText) {
    const ContentRow rows[] = {
        {"the closing slash begins the next text", "x=/ab+/g", "text(x=)\ntext(/ab+)\ntext(/g)"},
        {"quotes inside", "x=/'\"/;'a'", "text(x=)\ntext(/'\")\ntext(/;'a')"},
        {"a quote after a line feed is a string again", "x=/'/\n'a'",
         "text(x=)\ntext(/')\ntext(/)\ntext(\\n)\ns-string(a)"},
        {"an escaped slash", "/a\\/b/ \n", "text(/a\\\\/b)\ntext(/ )\ntext(\\n)"},
        {"an escaped backslash", "/\\\\/\n", "text(/\\\\\\\\)\ntext(/)\ntext(\\n)"},
        {"a division", "a/b\nc", "text(a)\ntext(/b)\ntext(\\nc)"},
        {"a carriage return ends it", "/a\rb", "text(/a)\ntext(\\rb)"},
        {"a line feed ends it, escaped as well", "/a\\\nb", "text(/a\\\\)\ntext(\\nb)"},
        {"so does \"<\"", "/a<b/", "text(/a)\ntext(<b)\ntext(/)"},
        {"a slash in brackets ends it", "/[/]/\n", "text(/[)\ntext(/])\ntext(/)\ntext(\\n)"},
        {"a lone slash before the end tag", "a/", "text(a)\ntext(/)"},
    };
    CheckInside("script", rows);
}

TEST(ScriptAndStyleTest, RegularExpressionsAtTheEndOfTheInput) {
    const DocumentRow rows[] = {
        {"the slash is the last character", "<script>x/", "start(|script||)\njs-start\ntext(x/)"},
        {"the expression is open", "<script>x/ab", "start(|script||)\njs-start\ntext(x)\ntext(/ab)"},
        {"an escape is open", "<script>/ab\\", "start(|script||)\njs-start\ntext(/ab\\\\)"},
        {"the closing slash is the last character", "<script>/ab/", "start(|script||)\njs-start\ntext(/ab)\ntext(/)"},
    };
    CheckRows(rows);
}

TEST(ScriptAndStyleTest, Style) {
    const DocumentRow rows[] = {
        {"a slash is text", "<style>a/b</style>", Inside("style", "text(a/b)")},
        {"two slashes are no line comment", "<style>a//b'c'</style>", Inside("style", "text(a//b)\ns-string(c)")},
        {"many slashes", "<style>////</style>", Inside("style", "text(////)")},
        {"a slash at the end of the input", "<style>a/", "start(|style||)\ncss-start\ntext(a/)"},
        {"a string hides the end tag", "<style>a{b:\"</style>\"}</style>",
         Inside("style", "text(a{b:)\nd-string(</style>)\ntext(})")},
        {"a child selector", "<style>a>b{}</style>", Inside("style", "text(a>b{})")},
        {"a start tag is text", "<style>a<b></style>", Inside("style", "text(a)\ntext(<b>)")},
        {"also that of script", "<style><script></style>", Inside("style", "text(<script>)")},
        {"the end tag of script is text", "<style>a</script>b</style>", Inside("style", "text(a)\ntext(</script>b)")},
        {"the end tag of style in a script is text", "<script></style>'</script>'</script>",
         Inside("script", "text(</style>)\ns-string(</script>)")},
        {"a script after a style", "<style>a/b</style><script>a/b</script>",
         "start(|style||)\ncss-start\ntext(a/b)\nend(|style|||)\ncss-end\nstart(|script||)\njs-start\ntext(a)\ntext(/"
         "b)\nend(|script|||)\njs-end"},
    };
    CheckRows(rows);
}

TEST(ScriptAndStyleTest, ConstructsThatTheInputLeavesOpen) {
    const BrokenRow rows[] = {
        {"a single-quoted string", "<script>x='ab", "start(|script||)\njs-start\ntext(x=)\njunk('ab)"},
        {"a double-quoted string", "<style>x=\"ab", "start(|style||)\ncss-start\ntext(x=)\njunk(\"ab)"},
        {"an opening quote", "<script>'", "start(|script||)\njs-start\njunk(')"},
        {"an escape in a string", "<script>'a\\", "start(|script||)\njs-start\njunk('a\\\\)"},
        {"a \"<\"", "<script>a<", "start(|script||)\njs-start\ntext(a)\njunk(<)"},
        {"a \"<!\"", "<script>a<!", "start(|script||)\njs-start\ntext(a)\njunk(<!)"},
        {"a foreign end tag", "<script>a</p x", "start(|script||)\njs-start\ntext(a)\njunk(</p x)"},
        {"the end tag of the script", "<script>a</script", "start(|script||)\njs-start\ntext(a)\njunk(</script)"},
    };
    CheckOpen(rows);
}

TEST(ScriptAndStyleTest, JunkInScriptLeavesItAScript) {
    const BrokenRow rows[] = {
        {"a broken foreign end tag", "<script></p / >'<'</script>b",
         "start(|script||)\njs-start\njunk(</p / )\njunk(>')\ntext(<)\njunk('</script>b)"},
    };
    CheckFailing(rows);
}

}  // namespace
}  // namespace Kestra::Test
