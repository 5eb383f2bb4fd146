#include "tools/kestra-html/output/TextEventObserver.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "html/stateless/StatelessHTMLParser.h"
#include "tests/tools/EventObserverTest.h"
#include "tests/tools/ObserverTest.h"

namespace Kestra::Test {
namespace {

using Lines = std::vector<std::string>;

/// The lines for a document.
Lines Observe(std::string_view document) {
    KeptLines lines;
    HTML::StatelessHTMLParser parser;
    Tool::TextEventObserver observer(&lines, &parser, false);
    parser.Attach(&observer);
    EXPECT_EQ(parser.StartParse(StringNS::CharSet::WINDOWS_1252), 0U);
    EXPECT_EQ(parser.ParseBuffer(document.data(), document.size()), 0U);
    EXPECT_EQ(parser.EndParse(), 0U);
    return lines.Take();
}

TEST(TextEventObserver, EveryCallbackIsALine) {
    KeptLines lines;
    const HTML::StatelessHTMLParser parser;
    Tool::TextEventObserver observer(&lines, &parser, false);
    CallEverything(&observer);
    EXPECT_EQ(lines.Take(), (Lines{
                                "     1:1     start-parsing",
                                "     1:1     start(a|{href=x\\x00\\n}{checked=})",
                                "     1:1     end(a)",
                                "     1:1     script(|x=1)",
                                "     1:1     extern(xml|{href=x\\x00\\n}{checked=})",
                                "     1:1     entity(DOCTYPE|{html}{})",
                                "     1:1     comment( c\xC3\xA9)",
                                "     1:1     text(t)",
                                "     1:1     style({href=x\\x00\\n}{checked=}|)",
                                "     1:1     stop-parsing",
                            }));
}

TEST(TextEventObserver, TheKindIsColoured) {
    KeptLines lines;
    const HTML::StatelessHTMLParser parser;
    Tool::TextEventObserver observer(&lines, &parser, true);
    CallEverything(&observer);
    EXPECT_EQ(lines.Take(), (Lines{
                                "     1:1     \x1B[2mstart-parsing\x1B[0m",
                                "     1:1     \x1B[36mstart\x1B[0m(a|{href=x\\x00\\n}{checked=})",
                                "     1:1     \x1B[36mend\x1B[0m(a)",
                                "     1:1     \x1B[33mscript\x1B[0m(|x=1)",
                                "     1:1     \x1B[35mextern\x1B[0m(xml|{href=x\\x00\\n}{checked=})",
                                "     1:1     \x1B[35mentity\x1B[0m(DOCTYPE|{html}{})",
                                "     1:1     \x1B[32mcomment\x1B[0m( c\xC3\xA9)",
                                "     1:1     \x1B[1mtext\x1B[0m(t)",
                                "     1:1     \x1B[33mstyle\x1B[0m({href=x\\x00\\n}{checked=}|)",
                                "     1:1     \x1B[2mstop-parsing\x1B[0m",
                            }));
}

TEST(TextEventObserver, AConstructStartsWhereTheOneBeforeItEnds) {
    EXPECT_EQ(Observe("ab\nc<p id=x >\n<br/><!--c-->"), (Lines{
                                                            "     1:1     start-parsing",
                                                            "     1:1     text(ab\\nc)",
                                                            "     2:4     start(p|{id=x})",
                                                            "     2:13    text(\\n)",
                                                            "     3:2     start(br|)",
                                                            "     3:7     end(br)",
                                                            "     3:7     comment(c)",
                                                            "     3:15    stop-parsing",
                                                        }));
}

TEST(TextEventObserver, TextAfterTheLastTagLiesBeforeTheEnd) {
    EXPECT_EQ(Observe("</a>\n\nbc"), (Lines{
                                         "     1:1     start-parsing",
                                         "     1:1     end(a)",
                                         "     2:7     stop-parsing",
                                     }));
    EXPECT_EQ(Observe(""), (Lines{"     1:1     start-parsing", "     1:1     stop-parsing"}));
}

TEST(TextEventObserver, LongStringsAreCutWithTheirLength) {
    const std::string whole(60, 'a');
    const Lines lines = Observe(whole + "<b c=" + whole + "d></" + whole + "e>");
    ASSERT_EQ(lines.size(), 5U);
    EXPECT_EQ(lines[1], "     1:1     text(" + whole + ")");
    EXPECT_EQ(lines[2], "     1:121   start(b|{c=" + whole + "...[61]})");
    EXPECT_EQ(lines[3], "     1:188   end(" + whole + "...[61])");
}

TEST(TextEventObserver, TheSummary) {
    KeptLines lines;
    const HTML::StatelessHTMLParser parser;
    Tool::TextEventObserver observer(&lines, &parser, false);
    Tool::EventsPassResult result;
    observer.WriteSummary(result, "0");
    EXPECT_EQ(lines.Take(), (Lines{"bytes    0", "events   0", "result   0, success"}));

    CallEverything(&observer);
    observer.OnText(KESTRA_WIDE("u"));
    lines.Take();
    result.parse = 16;
    result.line = 2;
    result.column = 3;
    observer.WriteSummary(result, "at least 1234");
    EXPECT_EQ(lines.Take(), (Lines{
                                "bytes    at least 1234",
                                "events   9: text 2, start 1, end 1, comment 1, entity 1, extern 1, script 1, style 1",
                                "result   parsing returned 16: the input ended inside a construct (line 2, column 3)",
                            }));
}

}  // namespace
}  // namespace Kestra::Test
