#include "html/text/TextSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

constexpr RecognizerRow MARKUP[] = {
    {"text ends at \"<\", which is consumed", "a<b", "19 text(a) next(GenericTagSimpleParser) rest(b)"},
    {"text may be empty", "<b", "19 text() next(GenericTagSimpleParser) rest(b)"},
    {"a \"<\" as the last character hands over", "ab<", "19 text(ab) next(GenericTagSimpleParser)"},
    {"text up to the end of the input is complete", "abc", "end 19 text(abc)"},
    {"no input at all is a complete empty text", "", "end 19 text()"},
    {"without options only \"<\" ends text", "a'b\"c/d/*e*/f//g\033$Bh>&amp;\n<",
     "19 text(a'b\"c/d/*e*/f//g\\x1B$Bh>&amp;\\n) next(GenericTagSimpleParser)"},
    {"lines and columns are counted", "a\r\nb\n\nc\td\n<e",
     "19 text(a\\r\\nb\\n\\nc\\td\\n) next(GenericTagSimpleParser) rest(e)"},
    {"a NUL is text", "a\0b<"sv, "19 text(a\\x00b) next(GenericTagSimpleParser)"},
    {"characters from 128 up are text", "\x80\xA0\xBC\xFF<",
     "19 text(\\x80\\xA0\\xBC\\xFF) next(GenericTagSimpleParser)"},
};

constexpr RecognizerRow SCRIPT_OPENERS[] = {
    {"\"/*\" opens a block comment", "x/*y", "19 text(x) next(CCommentSimpleParser) rest(y)", "-cp"},
    {"\"//\" opens a line comment", "x//y", "19 text(x) next(CPPCommentSimpleParser) rest(y)", "-cp"},
    {"a third \"/\" belongs to the line comment", "x///y", "19 text(x) next(CPPCommentSimpleParser) rest(/y)", "-cp"},
    {"an opener may come first", "/*", "19 text() next(CCommentSimpleParser)", "-cp"},
    {"\"/*\" wins over a regular expression", "a/*b", "19 text(a) next(CCommentSimpleParser) rest(b)", "-cpr"},
    {"\"//\" wins over a regular expression", "a//b", "19 text(a) next(CPPCommentSimpleParser) rest(b)", "-cpr"},
    {"any other \"/\" opens a regular expression", "a/b", "19 text(a) next(JSRegExSimpleParser) rest(b)", "-cpr"},
    {"a regular expression may begin with \"<\"", "/<", "19 text() next(JSRegExSimpleParser) rest(<)", "-cpr"},
    {"a regular expression may begin with a line feed", "/\n", "19 text() next(JSRegExSimpleParser) rest(\\n)", "-cpr"},
    {"a quote after \"/\" belongs to the regular expression", "/'", "19 text() next(JSRegExSimpleParser) rest(')",
     "-cprsd"},
    {"an apostrophe opens a string", "a'b", "19 text(a) next(SQuoteStringSimpleParser) rest(b)", "-s"},
    {"a quotation mark opens a string", "a\"b", "19 text(a) next(DQuoteStringSimpleParser) rest(b)", "-d"},
    {"the first of two openers wins", "\"'", "19 text() next(DQuoteStringSimpleParser) rest(')", "-sd"},
    {"the other quote is text without its option", "a\"b'", "19 text(a\"b) next(SQuoteStringSimpleParser)", "-s"},
    {"an apostrophe is text without its option", "a'b\"", "19 text(a'b) next(DQuoteStringSimpleParser)", "-d"},
    {"\"<\" hands over whatever the options", "a<b", "19 text(a) next(GenericTagSimpleParser) rest(b)", "-cpsdr"},
    {"quotes are text with comment options alone", "'\"<", "19 text('\") next(GenericTagSimpleParser)", "-cp"},
    {"a backslash is text", "\\'", "19 text(\\\\) next(SQuoteStringSimpleParser)", "-sd"},
};

constexpr RecognizerRow SLASHES[] = {
    {"a \"/\" that opens nothing is text, in one token", "a/b", "end 19 text(a/b)", "-cp"},
    {"text goes on after such a \"/\"", "a/b<", "19 text(a/b) next(GenericTagSimpleParser)", "-cp"},
    {"a \"/\" directly before \"<\"", "a/<", "19 text(a/) next(GenericTagSimpleParser)", "-cp"},
    {"a \"/\" directly before an apostrophe", "a/'", "19 text(a/) next(SQuoteStringSimpleParser)", "-cps"},
    {"a \"/\" directly before a quotation mark", "a/\"", "19 text(a/) next(DQuoteStringSimpleParser)", "-cpd"},
    {"only block comments: \"//\" is text", "x//y<", "19 text(x//y) next(GenericTagSimpleParser)", "-c"},
    {"only block comments: the second \"/\" of \"//*\" opens one", "x//*y",
     "19 text(x/) next(CCommentSimpleParser) rest(y)", "-c"},
    {"only line comments: \"/*\" is text", "x/*y<", "19 text(x/*y) next(GenericTagSimpleParser)", "-p"},
    {"only line comments: \"/*/\" and \"/\"", "x/*//", "19 text(x/*) next(CPPCommentSimpleParser)", "-p"},
    {"block comments and regular expressions: \"//\" opens the latter", "a//b",
     "19 text(a) next(JSRegExSimpleParser) rest(/b)", "-cr"},
    {"line comments and regular expressions: \"/*\" opens the latter", "a/*b",
     "19 text(a) next(JSRegExSimpleParser) rest(*b)", "-pr"},
    {"regular expressions alone never stop text", "a/b/*c//d<", "19 text(a/b/*c//d) next(GenericTagSimpleParser)",
     "-r"},
    {"regular expressions alone never stop text, at the end either", "a/b", "end 19 text(a/b)", "-r"},
    {"a \"/\" at the end of the input is text", "a/", "end 19 text(a/)", "-cp"},
    {"a \"/\" at the end of the input is text with regular expressions too", "a/", "end 19 text(a/)", "-cpr"},
    {"a lone \"/\" is text", "/", "end 19 text(/)", "-c"},
    {"line feeds around a \"/\"", "a\n/\nb\n/*", "19 text(a\\n/\\nb\\n) next(CCommentSimpleParser)", "-cp"},
};

constexpr RecognizerRow NARROW_ESCAPE_RUNS[] = {
    {"markup inside a run is text", "a\033$B<'/\"\033(Bb<c",
     "19 text(a\\x1B$B<'/\"\\x1B(Bb) next(GenericTagSimpleParser) rest(c)", "-e"},
    {"openers inside a run are text", "\033$B/*//'\"\033(J/*",
     "19 text(\\x1B$B/*//'\"\\x1B(J) next(CCommentSimpleParser)", "-ecpsdr"},
    {"two runs in a row", "\033$B<\033(B\033$@<\033(J<",
     "19 text(\\x1B$B<\\x1B(B\\x1B$@<\\x1B(J) next(GenericTagSimpleParser)", "-e"},
    {"an escape that designates nothing is text", "a\033x<b", "19 text(a\\x1Bx) next(GenericTagSimpleParser) rest(b)",
     "-e"},
    {"a \"<\" directly after ESC is text", "a\033<b<", "19 text(a\\x1B<b) next(GenericTagSimpleParser)", "-e"},
    {"an escape after a pending \"/\"", "/\033$B<\033(B<", "19 text(/\\x1B$B<\\x1B(B) next(GenericTagSimpleParser)",
     "-ecp"},
    {"a \"/\" after a run is judged as ever", "\033$B<\033(B/*", "19 text(\\x1B$B<\\x1B(B) next(CCommentSimpleParser)",
     "-ecp"},
    {"a \"/\" before a run and one after it open nothing", "/\033xy/<",
     "19 text(/\\x1Bxy/) next(GenericTagSimpleParser)", "-ecp"},
    {"the input ends after ESC", "a\033", "end 19 text(a\\x1B)", "-e"},
    {"the input ends inside a designation", "a\033$", "end 19 text(a\\x1B$)", "-e"},
    {"the input ends inside a run", "a\033$B<x", "end 19 text(a\\x1B$B<x)", "-e"},
    {"the input ends after the ESC of a return", "a\033$Bx\033", "end 19 text(a\\x1B$Bx\\x1B)", "-e"},
    {"the input ends inside a return", "a\033$Bx\033(", "end 19 text(a\\x1B$Bx\\x1B()", "-e"},
    {"lines are counted inside a run", "a\n\033$B\nb\n\033(Bc<",
     "19 text(a\\n\\x1B$B\\nb\\n\\x1B(Bc) next(GenericTagSimpleParser)", "-e"},
    {"without the option ESC is text", "a\033$B<b", "19 text(a\\x1B$B) next(GenericTagSimpleParser) rest(b)"},
};

constexpr RecognizerRow WIDE_ESCAPES[] = {
    {"markup after a designation is markup", "a\033$B<b", "19 text(a\\x1B$B) next(GenericTagSimpleParser) rest(b)",
     "-e"},
    {"ESC before \"<\"", "\033<b", "19 text(\\x1B) next(GenericTagSimpleParser) rest(b)", "-e"},
    {"ESC after a pending \"/\"", "/\033<", "19 text(/\\x1B) next(GenericTagSimpleParser)", "-ecp"},
    {"ESC after a pending \"/\" opens a regular expression", "/\033<",
     "19 text() next(JSRegExSimpleParser) rest(\\x1B<)", "-ecpr"},
    {"ESC at the end of the input", "a\033", "end 19 text(a\\x1B)", "-e"},
};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low bytes are those of \"<\", \"/\", \"*\", the quotes and line feed",
     "\\u013C\\u3C00\\u012F\\u012A\\u2F2F\\u0127\\u0122\\u010A<",
     "19 text(\\u013C\\u3C00\\u012F\\u012A\\u2F2F\\u0127\\u0122\\u010A) next(GenericTagSimpleParser)", "-cpsdr"},
};

constexpr StateRow STATES[] = {{"a", 0, "-cp"}, {"a/", 1, "-c"},   {"a/", 1, "-p"}, {"a/", 0, "-r"},
                               {"a/", 0},       {"a/b", 0, "-cp"}, {"a<", 0, "-cp"}};

constexpr StateRow STATES_OF_NARROW_ESCAPE_RUNS[] = {
    {"a\033", 2, "-e"},          {"a\033$", 2, "-e"}, {"a\033$Bx", 2, "-e"}, {"a\033$Bx\033(", 2, "-e"},
    {"a\033$Bx\033(B", 0, "-e"}, {"a\033x", 0, "-e"}, {"a\033$B", 0}};

constexpr StateRow STATES_OF_WIDE_ESCAPES[] = {{"a\033", 0, "-e"}};

constexpr RecognizerCall NARROW_ESCAPE_RECOGNIZER[] = {
    {NEW_RECORD, "-e", "a\033$Bx\033(", {0, 7}, "text(a)"},
    {BEGUN_AGAIN, "state=2", "$x<", {19, 3}, "text(\\x1B$x) next(GenericTagSimpleParser)"},
};

/// A pending slash is not yet text, and the options of the next call decide what it is.
constexpr RecognizerCall PENDING_SLASHES[] = {
    {NEW_RECORD, "-cp", "x/", {0, 2}, "text(x)"},
    {CONTINUED, "", "*y", {19, 1}, "text(x) next(CCommentSimpleParser)"},
    // Taken away, "*" opens nothing.
    {NEW_RECORD, "-cp", "x/", {0, 2}, "text(x)"},
    {CONTINUED, "allowCComment=false allowCPPComment=false", "*y<", {19, 3}, "text(x/*y) next(GenericTagSimpleParser)"},
    // Taken away, "/" opens nothing.
    {NEW_RECORD, "-cp", "x/", {0, 2}, "text(x)"},
    {CONTINUED, "allowCComment=false allowCPPComment=false", "/y<", {19, 3}, "text(x//y) next(GenericTagSimpleParser)"},
    // Regular expressions instead of block comments.
    {NEW_RECORD, "-c", "x/", {0, 2}, "text(x)"},
    {CONTINUED, "allowCComment=false -r", "y", {19, 0}, "text(x) next(JSRegExSimpleParser)"},
    // Line comments added.
    {NEW_RECORD, "-c", "x/", {0, 2}, "text(x)"},
    {CONTINUED, "-p", "/y", {19, 1}, "text(x) next(CPPCommentSimpleParser)"},
    // Nothing left, one piece.
    {NEW_RECORD, "-c", "x/", {0, 2}, "text(x)"},
    {CONTINUED, "allowCComment=false", "y", {0, 1}, "text(x/y)"},
};

constexpr RecognizerCall EMPTY_PIECES[] = {
    {NEW_RECORD, "-cp state=0", "", {0, 0}, "text()", "state=0"},
    {NEW_RECORD, "-cp state=1", "", {0, 0}, "text()", "state=1"},
};

const auto SUITE = RecognizerSuite<HTML::TextSimpleParser>("TextTest")
                       .Rows("Markup", MARKUP)
                       .Rows("ScriptOpeners", SCRIPT_OPENERS)
                       .Rows("Slashes", SLASHES)
                       .NarrowRows("EscapeRuns", NARROW_ESCAPE_RUNS)
                       .WideRows("TextNeverStopsAtAnEscape", WIDE_ESCAPES)
                       .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS)
                       .States(STATES)
                       .NarrowStates("StatesOfEscapeRuns", STATES_OF_NARROW_ESCAPE_RUNS)
                       .WideStates("StatesOfEscapes", STATES_OF_WIDE_ESCAPES)
                       .NarrowCalls("BeginParseBeginsTheEscapeRecognizerToo", NARROW_ESCAPE_RECOGNIZER)
                       .Calls("APendingSlashIsJudgedByTheNextCall", PENDING_SLASHES)
                       .Calls("AnEmptyPieceIsAnsweredAtOnce", EMPTY_PIECES);

}  // namespace
}  // namespace Kestra::Test
