#include "html/text/DQuoteStringSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

// Inputs begin after the opening quotation mark.

constexpr RecognizerRow STRINGS[] = {
    {"a string ends after its closing quotation mark", "it\"s", "19 text(it) rest(s)"},
    {"the closing mark may be the last character", "it\"", "19 text(it)"},
    {"a string may be empty", "\"\"", "19 text() rest(\")"},
    {"everything else is content", "<a href='/*x*/'>//\033$B\"", "19 text(<a href='/*x*/'>//\\x1B$B)"},
    {"line ends are content", "a\r\nb\n\n\"\n", "19 text(a\\r\\nb\\n\\n) rest(\\n)"},
    {"a NUL is content", "a\0\""sv, "19 text(a\\x00)"},
    {"without escapes a backslash is content", "it\\\"s\"", "19 text(it\\\\) rest(s\")"},
    {"an escaped mark is content and keeps its backslash", "it\\\"s\"", "19 text(it\\\\\"s)", "-a"},
    {"an escaped backslash escapes nothing", "a\\\\\"b", "19 text(a\\\\\\\\) rest(b)", "-a"},
    {"three backslashes escape the mark", "a\\\\\\\"b\"", "19 text(a\\\\\\\\\\\\\"b)", "-a"},
    {"a mark as the escaped character and another one", "\\\"\"", "19 text(\\\\\")", "-a"},
    {"without its option ESC is content, escaped or not", "\033$B\\\033\"x", "19 text(\\x1B$B\\\\\\x1B) rest(x)", "-a"},
    {"the input ends inside the string", "abc", "end 16 text(abc)"},
    {"the input ends at once", "", "end 16 text()"},
    {"the input ends after a backslash", "abc\\", "end 16 text(abc\\\\)", "-a"},
};

constexpr RecognizerRow ESCAPE_RUNS[] = {
    {"a mark inside a run is content", "a\033$B\"\033(Bb\"c", "19 text(a\\x1B$B\"\\x1B(Bb) rest(c)", "-e"},
    {"a run directly before the closing mark", "\033$B\"x\033(J\"", "19 text(\\x1B$B\"x\\x1B(J)", "-e"},
    {"two runs in a row", "\033$B\"\033(B\033$A\"\033(B\"", "19 text(\\x1B$B\"\\x1B(B\\x1B$A\"\\x1B(B)", "-e"},
    {"an escape that designates nothing is content", "a\033xb\"c", "19 text(a\\x1Bxb) rest(c)", "-e"},
    {"a mark directly after ESC is content", "a\033\"b\"", "19 text(a\\x1B\"b)", "-e"},
    {"with escapes, a backslash before ESC makes it content", "\\\033$B\"x", "19 text(\\\\\\x1B$B) rest(x)", "-ae"},
    {"two backslashes do not", "\\\\\033$B\"\033(B\"", "19 text(\\\\\\\\\\x1B$B\"\\x1B(B)", "-ae"},
    {"without escapes a backslash before ESC means nothing", "\\\033$B\"\033(B\"x",
     "19 text(\\\\\\x1B$B\"\\x1B(B) rest(x)", "-e"},
    {"a backslash at the end of a run escapes nothing", "\033$Bx\\\033(B\"y", "19 text(\\x1B$Bx\\\\\\x1B(B) rest(y)",
     "-ae"},
    {"a backslash after a run escapes as ever", "\033$B\"\033(B\\\"\"", "19 text(\\x1B$B\"\\x1B(B\\\\\")", "-ae"},
    {"lines are counted inside a run", "\n\033$B\n\"\n\033(B\"x", "19 text(\\n\\x1B$B\\n\"\\n\\x1B(B) rest(x)", "-e"},
    {"without the option a run is no run", "\033$B\"\033(B\"", "19 text(\\x1B$B) rest(\\x1B(B\")"},
    {"the input ends after a run", "a\033$B\"\033(B", "end 16 text(a\\x1B$B\"\\x1B(B)", "-e"},
    {"the input ends inside a run", "a\033$B\"", "end 16", "-e"},
    {"the input ends after ESC", "a\033", "end 16", "-e"},
};

constexpr RecognizerRow BACKSLASHES_BEFORE[] = {
    {"a mark", "\"x\"", "19 text(\"x)"},
    {"ESC", "\033$B\"x", "19 text(\\x1B$B) rest(x)"},
};

constexpr StateRow STATES[] = {{"a", 0, "-e"},
                               {"a\033", 1, "-e"},
                               {"a\033$Bx", 1, "-e"},
                               {"a\033$Bx\033", 1, "-e"},
                               {"a\033$Bx\033(B", 0, "-e"},
                               {"a\033x", 0, "-e"},
                               {"a\033", 0},
                               {"a\\\033", 0, "-ae"}};

constexpr RecognizerCall CALLS_AFTER_RUNS[] = {
    {NEW_RECORD, "-e", "a\033$B\"\033(Bb\"", {0, 8}, "text(a\\x1B$B\"\\x1B(B)", "state=0"},
    {NEW_RECORD, "-e", "\033x\"", {0, 2}, "text(\\x1Bx)", "state=0"},
    {NEW_RECORD, "-e", "\033\"\"", {0, 2}, "text(\\x1B\")", "state=0"},
};

constexpr RecognizerCall ESCAPE_RECOGNIZER[] = {
    {NEW_RECORD, "-e", "a\033$Bx\033(", {0, 7}, "text(a)"},
    {BEGUN_AGAIN, "state=1", "$x\"", {0, 2}, "text(\\x1B$x)"},
};

constexpr RecognizerCall LAST_CHARACTERS[] = {
    {NEW_RECORD, "-ae", "", {0, 0}, "text()", "lastChar=*"},
    {NEW_RECORD, "-ae", "a", {0, 1}, "text(a)", "lastChar=a"},
    {NEW_RECORD, "-ae", "a\\", {0, 2}, "text(a\\\\)", "lastChar=\\\\"},
    {NEW_RECORD, "-ae", "a\\\"", {0, 3}, "text(a\\\\\")", "lastChar=*"},
    {NEW_RECORD, "-ae", "\\\\", {0, 2}, "text(\\\\\\\\)", "lastChar=*"},
    {NEW_RECORD, "-ae", "\\\\b", {0, 3}, "text(\\\\\\\\b)", "lastChar=b"},
    {NEW_RECORD, "-ae", "\\\033", {0, 2}, "text(\\\\\\x1B)", "lastChar=*"},
};

constexpr RecognizerCall KEPT_CHARACTERS[] = {
    {NEW_RECORD, "lastChar=\\\\ -e", "ab\\", {0, 3}, "text(ab\\\\)", "lastChar=\\\\"},
    {CONTINUED, "", "\033$B\"", {0, 4}, "text(ab\\\\)", "lastChar=\\\\"},
    {CONTINUED, "", "\033(B\"c", {0, 3}, "text(ab\\\\\\x1B$B\"\\x1B(B)", "lastChar=\\\\"},
    {CONTINUED, "", "\"c", {19, 1}, "text(ab\\\\\\x1B$B\"\\x1B(B)", "lastChar=\\\\"},
    {NEW_RECORD, "lastChar=* -e", "ab\\", {0, 3}, "text(ab\\\\)", "lastChar=*"},
    {CONTINUED, "", "\033$B\"", {0, 4}, "text(ab\\\\)", "lastChar=*"},
    {CONTINUED, "", "\033(B\"c", {0, 3}, "text(ab\\\\\\x1B$B\"\\x1B(B)", "lastChar=*"},
    {CONTINUED, "", "\"c", {19, 1}, "text(ab\\\\\\x1B$B\"\\x1B(B)", "lastChar=*"},
    {NEW_RECORD, "lastChar=q -e", "ab\\", {0, 3}, "text(ab\\\\)", "lastChar=q"},
    {CONTINUED, "", "\033$B\"", {0, 4}, "text(ab\\\\)", "lastChar=q"},
    {CONTINUED, "", "\033(B\"c", {0, 3}, "text(ab\\\\\\x1B$B\"\\x1B(B)", "lastChar=q"},
    {CONTINUED, "", "\"c", {19, 1}, "text(ab\\\\\\x1B$B\"\\x1B(B)", "lastChar=q"},
};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low or high byte is that of a mark, backslash or ESC", "\\u0122\\u2200\\u015C\\u011B\"",
     "19 text(\\u0122\\u2200\\u015C\\u011B)", "-ae"},
};

const auto SUITE =
    RecognizerSuite<HTML::DQuoteStringSimpleParser>("DQuoteStringTest")
        .Rows("Strings", STRINGS)
        .Rows("EscapeRuns", ESCAPE_RUNS)
        .Rows("ABackslashLeftInTheRecordEscapesTheFirstCharacter", BACKSLASHES_BEFORE, "-ae lastChar=\\\\")
        .States(STATES)
        .Calls("ACallEndsAfterAnEscapeRunWithInputLeft", CALLS_AFTER_RUNS)
        .Calls("BeginParseBeginsTheEscapeRecognizerToo", ESCAPE_RECOGNIZER)
        .Calls("TheLastCharacterIsTracked", LAST_CHARACTERS)
        .Calls("WithoutEscapesTheLastCharacterIsNeitherReadNorChanged", KEPT_CHARACTERS)
        .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS);

}  // namespace
}  // namespace Kestra::Test
