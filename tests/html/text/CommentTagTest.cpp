#include "html/text/CommentTagSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

// Inputs begin after the "<!--".

constexpr RecognizerRow COMMENTS[] = {
    {"a comment ends after \"-->\"", " a -->", "19 comment( a )"},
    {"the rest of the piece is left", "a-->b-->", "19 comment(a) rest(b-->)"},
    {"a comment may be empty", "-->", "19 comment()"},
    {"hyphens in the body are content", " a -- b -->", "19 comment( a -- b )"},
    {"a single hyphen is content", "a-b - c-->", "19 comment(a-b - c)"},
    {"a hyphen before the end is content", " a --->", "19 comment( a -)"},
    {"a run of hyphens keeps all but its last two", "a------>", "19 comment(a----)"},
    {"nothing but hyphens", "---->", "19 comment(--)"},
    {"white space after the hyphens does not end it", "a-- >-->", "19 comment(a-- >)"},
    {"a line end after the hyphens does not end it", "a--\n>-->", "19 comment(a--\\n>)"},
    {"\">\" at once is content", ">-->", "19 comment(>)"},
    {"\"->\" at once is content", "->-->", "19 comment(->)"},
    {"\"--!>\" does not end it", "a--!>b-->", "19 comment(a--!>b)"},
    {"an opener inside is content", "a<!--b-->c-->", "19 comment(a<!--b) rest(c-->)"},
    {"tags, quotes and sections inside are content", "<p a='-->'>", "19 comment(<p a=') rest('>)"},
    {"line ends are content and count", "a\r\nb\n\n-->\n", "19 comment(a\\r\\nb\\n\\n) rest(\\n)"},
    {"a NUL is content", "a\0-\0-->"sv, "19 comment(a\\x00-\\x00)"},
    {"ESC and what follows are content", "\033$B-->", "19 comment(\\x1B$B)"},
    {"characters from 128 up are content", "\xAD\x96\xBE-->", "19 comment(\\xAD\\x96\\xBE)"},
};

constexpr RecognizerRow OPEN_COMMENTS[] = {
    {"the input ends in the body", " a", "end 19 comment( a, open)"},
    {"the input ends at once", "", "end 19 comment(, open)"},
    {"a last hyphen is kept", " a -", "end 19 comment( a -, open)"},
    {"two last hyphens are kept", " a --", "end 19 comment( a --, open)"},
    {"all hyphens of a run are kept", "a-----", "end 19 comment(a-----, open)"},
    {"nothing but a hyphen", "-", "end 19 comment(-, open)"},
    {"nothing but hyphens", "--", "end 19 comment(--, open)"},
    {"hyphens in the middle are not kept twice", "a--b", "end 19 comment(a--b, open)"},
    {"\">\" without hyphens ends nothing", "a>->", "end 19 comment(a>->, open)"},
};

constexpr StateRow STATES[] = {{"", 0}, {"a", 0}, {"a-", 1}, {"a--", 2}, {"a---", 2}, {"a-b", 0}, {"a--b", 0}};

constexpr RecognizerCall PENDING_HYPHENS[] = {
    {NEW_RECORD, "", "a-", {0, 2}, "comment(a)"},
    {NEW_RECORD, "", "a--", {0, 3}, "comment(a)"},
    {NEW_RECORD, "", "a---", {0, 4}, "comment(a-)"},
    {NEW_RECORD, "", "a--b", {0, 4}, "comment(a--b)"},
};

constexpr RecognizerCall ANY_STATE[] = {
    {NEW_RECORD, "state=1", "->", {19, 2}, "comment()"},  {NEW_RECORD, "state=1", ">", {0, 1}, "comment(->)"},
    {NEW_RECORD, "state=2", ">x", {19, 1}, "comment()"},  {NEW_RECORD, "state=2", "x", {0, 1}, "comment(--x)"},
    {NEW_RECORD, "state=2", "->", {19, 2}, "comment(-)"}, {NEW_RECORD, "state=2", "-", {0, 1}, "comment(-)"},
};

constexpr RecognizerCall ENDS[] = {
    {AT_END, "text=a state=0", "", {19, 0}, "comment(a, open)"},
    {AT_END, "text=a state=1", "", {19, 0}, "comment(a-, open)"},
    {AT_END, "text=a state=2", "", {19, 0}, "comment(a--, open)"},
    {AT_END, "text=a state=3", "", {19, 0}, "comment(a, open)"},
};

constexpr LongRow LONG_BODIES[] = {
    {"@-->", "x", "19 comment(@)"},
    {"@-->", "-", "19 comment(@)"},
};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low or the high bytes are those of \"-\" and \">\"", "\\u012D\\u2D00\\u012D--\\u013E\\u3E00-->",
     "19 comment(\\u012D\\u2D00\\u012D--\\u013E\\u3E00)"},
    {"after a hyphen", "-\\u012D>--", "end 19 comment(-\\u012D>--, open)"},
};

const auto SUITE = RecognizerSuite<HTML::CommentTagSimpleParser>("CommentTagTest")
                       .Rows("Comments", COMMENTS)
                       .Rows("OpenComments", OPEN_COMMENTS)
                       .States(STATES)
                       .Calls("PendingHyphensAreNotYetInTheText", PENDING_HYPHENS)
                       .Calls("ARecordMayBeInAnyState", ANY_STATE)
                       .Calls("EndParseOpensTheCommentAndAppendsWhatIsPending", ENDS)
                       .LongInputs(LONG_BODIES)
                       .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS);

}  // namespace
}  // namespace Kestra::Test
