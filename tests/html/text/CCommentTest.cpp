#include "html/text/CCommentSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

// Inputs begin after the "/*".

constexpr RecognizerRow COMMENTS[] = {
    {"a comment ends after \"*/\"", " a */", "19 text( a )"},
    {"the rest of the piece is left", "a*/b*/", "19 text(a) rest(b*/)"},
    {"a comment may be empty", "*/", "19 text()"},
    {"a star before the end is content", " a **/", "19 text( a *)"},
    {"a run of stars keeps all but the last", "*****/", "19 text(****)"},
    {"a star in the middle is content", "a*b* c*/", "19 text(a*b* c)"},
    {"white space between star and slash", "* /*/", "19 text(* /)"},
    {"a slash at once is content", "/*/", "19 text(/)"},
    {"slashes are content", "//a/b*/", "19 text(//a/b)"},
    {"an opener inside is content", "a/*b*/c*/", "19 text(a/*b) rest(c*/)"},
    {"a markup comment inside is content", " a <!-- b */", "19 text( a <!-- b )"},
    {"markup of any kind is content", "<p></script><![CDATA[<!-x<?*/", "19 text(<p></script><![CDATA[<!-x<?)"},
    {"quotes are content", "'\"*/'", "19 text('\") rest(')"},
    {"backslashes are content", "\\*/", "19 text(\\\\)"},
    {"line ends are content and count", "a\r\n*\n\n*/\n", "19 text(a\\r\\n*\\n\\n) rest(\\n)"},
    {"a NUL is content", "a\0*\0*/"sv, "19 text(a\\x00*\\x00)"},
    {"ESC and what follows are content", "\033$B*/", "19 text(\\x1B$B)"},
    {"characters from 128 up are content", "\xAA\xAF*/", "19 text(\\xAA\\xAF)"},
    {"the input ends in the body", " a", "end 16 text( a)"},
    {"the input ends at once", "", "end 16 text()"},
    {"the input ends after a star, which is lost", " a *", "end 16 text( a )"},
    {"the input ends after stars, of which the last is lost", "a***", "end 16 text(a**)"},
};

constexpr StateRow STATES[] = {{"", 0}, {"a<!--", 0}, {"a*", 2}, {"a**", 2}, {"a*b", 0}};

constexpr RecognizerCall ANY_STATE[] = {
    {NEW_RECORD, "state=2", "/x", {19, 1}, "text()"},
    {NEW_RECORD, "state=2", "x", {0, 1}, "text(*x)"},
    {NEW_RECORD, "state=2", "*/", {19, 2}, "text(*)"},
    {NEW_RECORD, "state=2", "*", {0, 1}, "text(*)"},
};

/// Between the two states that there are.
constexpr RecognizerCall BETWEEN_THE_STATES[] = {
    {NEW_RECORD, "state=1", "", {0, 0}, "text()", "state=1"},
    {CONTINUED, "", "x", {11, 0}, "text()", "state=1"},
    {CONTINUED, "", "*/", {11, 0}, "text()", "state=1"},
};

constexpr RecognizerCall ENDS[] = {
    {AT_END, "state=0 text=t keyword=k nextParserName=n", "", {16, 0}, "text(t) next(n) keyword(k)", "state=0"},
    {AT_END, "state=2 text=t keyword=k nextParserName=n", "", {16, 0}, "text(t) next(n) keyword(k)", "state=2"},
};

constexpr LongRow LONG_BODIES[] = {
    {"@*/", "x", "19 text(@)"},
    {"@*/", "*", "19 text(@)"},
    {"@*/", "\n", "19 text(@)"},
};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low or the high bytes are those of \"*\" and \"/\"", "\\u012A/\\u2A00/*\\u012F*\\u2F00*/",
     "19 text(\\u012A/\\u2A00/*\\u012F*\\u2F00)"},
};

const auto SUITE = RecognizerSuite<HTML::CCommentSimpleParser>("CCommentTest")
                       .Rows("Comments", COMMENTS)
                       .States(STATES)
                       .Calls("ARecordMayBeInAnyState", ANY_STATE)
                       .Calls("AStateBetweenTheOthers", BETWEEN_THE_STATES)
                       .Calls("EndParseLeavesTheRecordAsItIs", ENDS)
                       .LongInputs(LONG_BODIES)
                       .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS);

}  // namespace
}  // namespace Kestra::Test
