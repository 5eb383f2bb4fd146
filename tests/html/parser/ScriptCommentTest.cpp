#include "tests/html/parser/DocumentRows.h"

// The comments of script and style in documents.

namespace Kestra::Test {
namespace {

TEST(ScriptCommentTest, BlockComments) {
    const ContentRow rows[] = {
        {"between text", "a/*b*/c", "text(a)\nc-comment(b)\ntext(c)"},
        {"an empty one", "/**/", "c-comment()"},
        {"an asterisk before the end", "/* a **/", "c-comment( a *)"},
        {"three asterisks", "/***/", "c-comment(*)"},
        {"the opener's asterisk is not the end's", "/*/a*/", "c-comment(/a)"},
        {"asterisks and slashes inside", "/* * / */", "c-comment( * / )"},
        {"an opener inside", "/*a/*b*/c", "c-comment(a/*b)\ntext(c)"},
        {"a line comment's opener inside", "/*//*/", "c-comment(//)"},
        {"two in a row", "/*a*//*b*/", "c-comment(a)\nc-comment(b)"},
        {"quotes hide nothing", "/*'*/'b'", "c-comment(')\ns-string(b)"},
        {"tags and end tags inside", "/*<b></script></style>*/", "c-comment(<b></script></style>)"},
        {"markup comments inside", "/* a <!-- b */-->", "c-comment( a <!-- b )\ntext(-->)"},
        {"a CDATA section inside", "/*<![CDATA[*/]]>", "c-comment(<![CDATA[)\ntext(]]>)"},
        {"what would fail outside", "/*<!-x<![y*/", "c-comment(<!-x<![y)"},
        {"line feeds are counted", "/*\n*\n*/\n", "c-comment(\\n*\\n)\ntext(\\n)"},
        {"bytes from 160 up", "/*\xE9*\xE8*/", "c-comment(\\xE9*\\xE8)"},
        {"an opener in a string is none", "'/*'\"/*\"", "s-string(/*)\nd-string(/*)"},
    };
    CheckInside("script", rows);
    CheckInside("style", rows);
}

TEST(ScriptCommentTest, LineComments) {
    const ContentRow rows[] = {
        {"to the line feed, which is text", "a// b\nc", "text(a)\ncpp-comment( b)\ntext(\\nc)"},
        {"a carriage return belongs to it", "// a\r\n", "cpp-comment( a\\r)\ntext(\\n)"},
        {"a carriage return alone ends nothing", "//a\rb\n", "cpp-comment(a\\rb)\ntext(\\n)"},
        {"an empty one", "//\n", "cpp-comment()\ntext(\\n)"},
        {"comment openers inside", "//a//b/*c\nd*/", "cpp-comment(a//b/*c)\ntext(\\nd*)\ntext(/)"},
        {"three slashes", "///a\n", "cpp-comment(/a)\ntext(\\n)"},
        {"quotes inside", "//it's \"\n'a'", "cpp-comment(it's \")\ntext(\\n)\ns-string(a)"},
        {"a line comment after a line comment", "//a\n//b\n", "cpp-comment(a)\ntext(\\n)\ncpp-comment(b)\ntext(\\n)"},
        {"a block comment after a line comment", "//a\n/*b*/", "cpp-comment(a)\ntext(\\n)\nc-comment(b)"},
        {"a line comment after a block comment", "/*a*///b\n", "c-comment(a)\ncpp-comment(b)\ntext(\\n)"},
        {"an address", "x=http://a/b\n", "text(x=http:)\ncpp-comment(a/b)\ntext(\\n)"},
        {"tags inside", "//a<b c='d'>e\n", "cpp-comment(a<b c='d'>e)\ntext(\\n)"},
        {"an end tag inside", "// a </b> c\n", "cpp-comment( a </b> c)\ntext(\\n)"},
        {"the end tag of the script too", "//</script>\n'a'", "cpp-comment(</script>)\ntext(\\n)\ns-string(a)"},
        {"a declaration inside", "//<!a>\n", "cpp-comment(<!a>)\ntext(\\n)"},
        {"a processing instruction inside", "//<?a?>\n", "cpp-comment(<?a?>)\ntext(\\n)"},
        {"a \"<\" before the line feed", "//<\n", "cpp-comment(<)\ntext(\\n)"},
        {"a \"</\"", "//</\n", "cpp-comment(</)\ntext(\\n)"},
        {"a \"<!\"", "//<!\n", "cpp-comment(<!)\ntext(\\n)"},
        {"a \"<?\"", "//<?\n", "cpp-comment(<?)\ntext(\\n)"},
        {"many of them", "//<<a<</<!<?\n", "cpp-comment(<<a<</<!<?)\ntext(\\n)"},
        {"a dash without its \"!\"", "//<--\n", "cpp-comment(<--)\ntext(\\n)"},
        {"bytes from 160 up", "//\xE9<\xE8\n", "cpp-comment(\\xE9<\\xE8)\ntext(\\n)"},
        {"an opener in a string is none", "'//'\"//\"", "s-string(//)\nd-string(//)"},
    };
    CheckInside("script", rows);
}

TEST(ScriptCommentTest, SectionsThatEndALineComment) {
    const ContentRow rows[] = {
        {"a comment", "// a <!-- b -->c'd'\n", "cpp-comment( a )\ncomment( b )\ntext(c)\ns-string(d)\ntext(\\n)"},
        {"a comment over several lines", "//<!--\n\n-->\n", "cpp-comment()\ncomment(\\n\\n)\ntext(\\n)"},
        {"a comment that hides the end tag", "//<!--</script>-->", "cpp-comment()\ncomment(</script>)"},
        {"a CDATA section, with its word as written", "// a <![cData[b]]>c",
         "cpp-comment( a )\ncdata(cData|[b)\ntext(c)"},
        {"one that ends unclosed", "//<![CDATA[b]]c", "cpp-comment()\ncdata(CDATA|[b]], open)\ntext(c)"},
        {"a conditional section", "//a<![if b]>c<![EndIf]>d",
         "cpp-comment(a)\nconditional(if| b|)\ntext(c)\nconditional(EndIf||)\ntext(d)"},
        {"an end of one", "//<![endif]>//a\n", "cpp-comment()\nconditional(endif||)\ncpp-comment(a)\ntext(\\n)"},
        {"after a \"<\"", "//<<!--a-->", "cpp-comment(<)\ncomment(a)"},
        {"after a \"<!\"", "//<!<!--a-->", "cpp-comment(<!)\ncomment(a)"},
        {"after an end tag", "//</a><!--b-->", "cpp-comment(</a>)\ncomment(b)"},
        {"one section after the other", "//a<!--b-->//c<![CDATA[d]]>//e<![if f]>//g\n",
         "cpp-comment(a)\ncomment(b)\ncpp-comment(c)\ncdata(CDATA|[d)\ncpp-comment(e)\nconditional(if| "
         "f|)\ncpp-comment(g)\ntext(\\n)"},
        {"the classical end of a hidden script", "<!--\na\n//-->\n", "comment(\\na\\n//)\ntext(\\n)"},
        {"and of a CDATA section", "//<![CDATA[\na\n//]]>\nb", "cpp-comment()\ncdata(CDATA|[\\na\\n//)\ntext(\\nb)"},
    };
    CheckInside("script", rows);
}

TEST(ScriptCommentTest, SectionsAfterALineCommentThatTheInputLeavesOpen) {
    const DocumentRow rows[] = {
        {"a comment", "<script>//a<!--b-", Open("script") + Lines{"cpp-comment(a)", "comment(b-, open)"}},
        {"a CDATA section", "<script>//a<![CDATA[b]",
         Open("script") + Lines{"cpp-comment(a)", "cdata(CDATA|[b], open)"}},
        {"a conditional section", "<script>//<![if b",
         Open("script") + Lines{"cpp-comment()", "conditional(if| b|, no-bracket, open)"}},
    };
    CheckRows(rows);
}

TEST(ScriptCommentTest, StyleHasNoLineComments) {
    const ContentRow rows[] = {
        {"two slashes", "a//b\n'c'", "text(a//b\\n)\ns-string(c)"},
        {"a block comment after a slash", "a//*b*/c", "text(a/)\nc-comment(b)\ntext(c)"},
        {"an address", "url(http://a)/*b*/", "text(url(http://a))\nc-comment(b)"},
        {"a slash before a string", "a/'b'", "text(a/)\ns-string(b)"},
        {"a section after two slashes", "//<!--a-->", "text(//)\ncomment(a)"},
    };
    CheckInside("style", rows);
}

TEST(ScriptCommentTest, OutsideOfScriptAndStyleTheyAreText) {
    const DocumentRow rows[] = {
        {"block and line comments", "a/*b*///c\n<d>/*<e>*/",
         "text(a/*b*///c\\n)\nstart(|d||)\ntext(/*)\nstart(|e||)\ntext(*/)"},
        {"after a script", "<script>/*a*/</script>/*b*/", Inside("script", "c-comment(a)") + Lines{"text(/*b*/)"}},
    };
    CheckRows(rows);
}

TEST(ScriptCommentTest, BesideRegularExpressions) {
    const ContentRow rows[] = {
        {"an asterisk after the slash makes it a comment", "x=/*a*/1", "text(x=)\nc-comment(a)\ntext(1)"},
        {"a comment's end is no expression", "/*a*/ /b/\n", "c-comment(a)\ntext( )\ntext(/b)\ntext(/)\ntext(\\n)"},
        {"an expression cannot hold \"//\"", "/a//b\n", "text(/a)\ncpp-comment(b)\ntext(\\n)"},
        {"its end and an asterisk open a comment", "/a/*b*/", "text(/a)\nc-comment(b)"},
        {"an escaped slash in it opens none", "/a\\//b\n", "text(/a\\\\/)\ntext(/b)\ntext(\\n)"},
    };
    CheckInside("script", rows);
}

// No cut between the two characters of the opener: see the next table.
TEST(ScriptCommentTest, CommentsThatTheInputLeavesOpen) {
    constexpr std::size_t AFTER_SCRIPT = 9;  // between the two characters that follow "<script>"
    constexpr std::size_t AFTER_STYLE = 8;
    const Lines script = Open("script");
    const Lines style = Open("style");
    const BrokenRow rows[] = {
        {"a block comment", "<script>/*a", script + Lines{"junk(/*a)"}, AFTER_SCRIPT},
        {"after its opener", "<script>/*", script + Lines{"junk(/*)"}, AFTER_SCRIPT},
        {"after an asterisk", "<script>/*a\n*", script + Lines{"junk(/*a\\n*)"}, AFTER_SCRIPT},
        {"tags inside", "<script>/*</script><b", script + Lines{"junk(/*</script><b)"}, AFTER_SCRIPT},
        {"in a style", "<style>/*a*", style + Lines{"junk(/*a*)"}, AFTER_STYLE},
        {"a line comment", "<script>//a", script + Lines{"junk(//a)"}, AFTER_SCRIPT},
        {"after its opener", "<script>//", script + Lines{"junk(//)"}, AFTER_SCRIPT},
        {"the end tag inside", "<script>//a</script>b", script + Lines{"junk(//a</script>b)"}, AFTER_SCRIPT},
        {"after a \"<\"", "<script>//a<", script + Lines{"junk(//a<)"}, AFTER_SCRIPT},
        {"after a \"<!\"", "<script>//a<!", script + Lines{"junk(//a<!)"}, AFTER_SCRIPT},
        {"after a \"<!-\"", "<script>//a<!-", script + Lines{"junk(//a<!-)"}, AFTER_SCRIPT},
        {"in the word of a section", "<script>//a<![CDATA", script + Lines{"junk(//a<![CDATA)"}, AFTER_SCRIPT},
    };
    CheckOpen(rows);
    const BrokenRow behindText[] = {
        {"after text", "<script>x /*a", script + Lines{"text(x )", "junk(/*a)"}, 11},
    };
    CheckOpen(behindText);
}

TEST(ScriptCommentTest, LineCommentsThatFail) {
    constexpr std::size_t OPENER = 9;
    const Lines script = Open("script");
    const BrokenRow rows[] = {
        {"a \"<!-\" without a second dash", "<script>// a <!-x\n'b</script>c",
         script + Lines{"junk(// a <!-)", "junk(x\\n'b)", "end(|script|||)", "js-end", "text(c)"}, OPENER},
        {"an unknown word", "<script>//<![x[<a", script + Lines{"junk(//<![x)", "junk([)", "text(<a)"}, OPENER},
        {"no word", "<script>//<![[", script + Lines{"junk(//<![)", "junk([)"}, OPENER},
        {"a line feed after \"<!-\"", "<script>//<!-\na", script + Lines{"junk(//<!-)", "junk(\\na)"}, OPENER},
        {"a line feed after the word", "<script>//<![a\nb", script + Lines{"junk(//<![a)", "junk(\\nb)"}, OPENER},
    };
    CheckFailing(rows);
}

// A table of its own: where the opener is cut, the slash before the cut is lost when the comment
// becomes junk.
TEST(ScriptCommentTest, ACutOpenerOfAJunkCommentLosesItsFirstCharacter) {
    struct Row {
        const char* note;
        const char* input;
        std::size_t cut;
        Tokens tokens;
        std::string output;
        std::uint32_t parseResult;  ///< fed by `ParseBuffer`
    };
    const Row rows[] = {
        {"an open block comment", "<script>a/*b", 10, Open("script") + Lines{"text(a)", "junk(*b)"}, "<script>a*b", 0},
        {"an open line comment", "<script>a//b", 10, Open("script") + Lines{"text(a)", "junk(/b)"}, "<script>a/b", 0},
        {"an open comment in a style", "<style>/*b", 8, Open("style") + Lines{"junk(*b)"}, "<style>*b", 0},
        {"a line comment that fails", "<script>//<!-x", 9, Open("script") + Lines{"junk(/<!-)", "junk(x)"},
         "<script>/<!-x", 11},
    };
    for (const Row& row : rows) {
        for (const Route& route : ROUTES) {
            SCOPED_TRACE(std::string(row.note) + ", " + route.name);
            const std::string input = row.input;
            ForEverySplit(input, [&](const Cuts& cuts) {
                if (std::find(cuts.begin(), cuts.end(), row.cut) == cuts.end())
                    return;
                for (const Feed feed : {Feed::STREAM, Feed::OWNED_STREAM}) {
                    DocumentSettings settings = SettingsFor(route, feed);
                    const DocumentRun run = ParseBy(route, input, cuts, settings);
                    ExpectTokens(run, row.tokens, route);
                    if (route.wideInput == (route.observed == Observed::WIDE)) {
                        EXPECT_EQ(run.output, route.wideInput ? ToUtf16LE(std::string_view(row.output)) : row.output);
                    }
                    settings.selfCheck = SELF_CHECK_CRC;
                    const DocumentRun checked = ParseBy(route, input, cuts, settings);
                    EXPECT_EQ(checked.endResult, 704U);
                    EXPECT_EQ(Join(Comparable(checked.trace, route)), Join(OpenTrace(row.tokens, route)));
                }
                const DocumentRun run = ParseBy(route, input, cuts, SettingsFor(route));
                EXPECT_EQ(run.parseResult, row.parseResult);
                EXPECT_EQ(run.endResult, 16U);
            });
        }
    }
}

// A cut opener loses nothing as long as its comment is whole, which the tables above show; nor does
// it before anything else.
TEST(ScriptCommentTest, ASlashAtTheEndOfAPieceIsJudgedByTheNextOne) {
    const ContentRow rows[] = {
        {"no comment", "a/b\n", "text(a)\ntext(/b)\ntext(\\n)"},
        {"a line feed", "a/\n", "text(a)\ntext(/)\ntext(\\n)"},
        {"a block comment", "a/**/", "text(a)\nc-comment()"},
        {"a line comment", "a//\n", "text(a)\ncpp-comment()\ntext(\\n)"},
    };
    CheckInside("script", rows);
}

TEST(ScriptCommentTest, The8BitObserverOfThe8BitParserIsNotGivenLineComments) {
    const std::string document = "<script>a//b\n//c<!--d-->//e<![CDATA[f]]>//g<![endif]>/*h*/</script>";
    const Lines unheard =
        Open("script") +
        Lines{"text(a)",      "text(\\n)",       "comment(d)", "cdata(CDATA|[f)", "conditional(endif||)",
              "c-comment(h)", "end(|script|||)", "js-end"};
    const Lines heard = Open("script") + Lines{"text(a)",         "cpp-comment(b)",  "text(\\n)",
                                               "cpp-comment(c)",  "comment(d)",      "cpp-comment(e)",
                                               "cdata(CDATA|[f)", "cpp-comment(g)",  "conditional(endif||)",
                                               "c-comment(h)",    "end(|script|||)", "js-end"};
    for (const Feed feed : {Feed::BUFFER, Feed::STREAM}) {
        for (const Route& route : ROUTES) {
            SCOPED_TRACE(route.name);
            const Lines& tokens = !route.wideInput && route.observed == Observed::NARROW ? unheard : heard;
            ForEverySplit(document, [&](const Cuts& cuts) {
                DocumentSettings settings = SettingsFor(route, feed);
                DocumentRun run = ParseBy(route, document, cuts, settings);
                EXPECT_EQ(Join(Comparable(run.trace, route)), Join(WholeTrace(tokens, route)));
                EXPECT_EQ(run.endResult, 0U);
                // The self-check is given them all.
                settings.selfCheck = SELF_CHECK_CRC;
                run = ParseBy(route, document, cuts, settings);
                EXPECT_EQ(run.endResult, route.wideInput ? 704U : 0U);
            });
        }
    }
}

}  // namespace
}  // namespace Kestra::Test
