#include "html/text/JSRegExSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

// Inputs begin after the opening "/".

constexpr RecognizerRow EXPRESSIONS[] = {
    {"the closing \"/\" is left", "ab/g", "19 text(/ab) rest(/g)", "-a"},
    {"the closing \"/\" is left without escapes too", "ab/g", "19 text(/ab) rest(/g)"},
    {"an empty expression", "/", "19 text(/) rest(/)", "-a"},
    {"an expression ends before \"<\"", "a<b/", "19 text(/a) rest(<b/)", "-a"},
    {"an expression ends before a line feed", "ab\nc/", "19 text(/ab) rest(\\nc/)", "-a"},
    {"an expression ends before a carriage return", "ab\r\nc/", "19 text(/ab) rest(\\r\\nc/)", "-a"},
    {"brackets give no shelter", "[/]/", "19 text(/[) rest(/]/)", "-a"},
    {"quotes give no shelter", "'/'", "19 text(/') rest(/')", "-a"},
    {"an escaped \"/\" is content", "a\\/b/", "19 text(/a\\\\/b) rest(/)", "-a"},
    {"an escaped backslash escapes nothing", "a\\\\/b", "19 text(/a\\\\\\\\) rest(/b)", "-a"},
    {"three backslashes escape the \"/\"", "\\\\\\//", "19 text(/\\\\\\\\\\\\/) rest(/)", "-a"},
    {"an escaped \"<\" ends it all the same", "a\\<b/", "19 text(/a\\\\) rest(<b/)", "-a"},
    {"an escaped line feed ends it all the same", "a\\\nb/", "19 text(/a\\\\) rest(\\nb/)", "-a"},
    {"an escaped carriage return ends it all the same", "a\\\rb/", "19 text(/a\\\\) rest(\\rb/)", "-a"},
    {"without escapes a backslash is content", "a\\/b/", "19 text(/a\\\\) rest(/b/)"},
    {"other characters are content", "\t\v\0>*'\"\033\x85\xFF/"sv,
     "19 text(/\\t\\x0B\\x00>*'\"\\x1B\\x85\\xFF) rest(/)", "-a"},
    {"an expression up to the end of the input is complete", "abc", "end 19 text(/abc)", "-a"},
    {"an expression of nothing but its \"/\"", "", "end 19 text(/)", "-a"},
    {"the input ends after a backslash", "a\\", "end 19 text(/a\\\\)", "-a"},
    {"the input ends after an escaped \"/\"", "a\\/", "end 19 text(/a\\\\/)", "-a"},
};

constexpr RecognizerRow SLASHES_BEFORE[] = {
    {"a \"/\" before it", "/x", "19 text(//) rest(x)"},
    {"a \"<\" before it becomes a \"/\"", "<x", "19 text(//) rest(x)"},
    {"a line feed before it becomes a \"/\"", "\nx", "19 text(//) rest(x)"},
    {"content in between takes its place", "a/x", "19 text(/a) rest(/x)"},
    {"an escaped \"/\" in between too", "\\/</", "19 text(/\\\\/) rest(</)"},
    {"without a stop character nothing is added", "", "end 19 text(/)"},
};

constexpr RecognizerRow BACKSLASHES_BEFORE[] = {
    {"a \"/\"", "/x/", "19 text(//x) rest(/)"},
    {"a \"<\" is never escaped", "<x/", "19 text(/) rest(<x/)"},
};

constexpr RecognizerCall LAST_CHARACTERS[] = {
    {NEW_RECORD, "-a", "", {0, 0}, "text(/)", "lastChar=*"},
    {NEW_RECORD, "-a", "a", {0, 1}, "text(/a)", "lastChar=a"},
    {NEW_RECORD, "-a", "a\\", {0, 2}, "text(/a\\\\)", "lastChar=\\\\"},
    {NEW_RECORD, "-a", "a\\/", {0, 3}, "text(/a\\\\/)", "lastChar=*"},
    {NEW_RECORD, "-a", "\\\\", {0, 2}, "text(/\\\\\\\\)", "lastChar=*"},
    {NEW_RECORD, "-a", "\\\\b", {0, 3}, "text(/\\\\\\\\b)", "lastChar=b"},
    {NEW_RECORD, "-a", "ab/", {19, 2}, "text(/ab)", "lastChar=b"},
    {NEW_RECORD, "-a", "/", {19, 0}, "text(/)", "lastChar=*"},
};

constexpr RecognizerCall KEPT_CHARACTERS[] = {
    {NEW_RECORD, "lastChar=\\\\", "ab\\", {0, 3}, "text(/ab\\\\)", "lastChar=\\\\"},
    {CONTINUED, "", "/c", {19, 0}, "text(/ab\\\\)", "lastChar=\\\\"},
    {NEW_RECORD, "lastChar=*", "ab\\", {0, 3}, "text(/ab\\\\)", "lastChar=*"},
    {CONTINUED, "", "/c", {19, 0}, "text(/ab\\\\)", "lastChar=*"},
    {NEW_RECORD, "lastChar=q", "ab\\", {0, 3}, "text(/ab\\\\)", "lastChar=q"},
    {CONTINUED, "", "/c", {19, 0}, "text(/ab\\\\)", "lastChar=q"},
};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low or high byte is that of \"/\", \"<\", line feed, carriage return and backslash",
     "\\u012F\\u2F00\\u013C\\u010A\\u010D\\u2028\\u015C/",
     "19 text(/\\u012F\\u2F00\\u013C\\u010A\\u010D\\u2028\\u015C) rest(/)", "-a"},
};

const auto SUITE =
    RecognizerSuite<HTML::JSRegExSimpleParser>("JSRegExTest")
        .Rows("Expressions", EXPRESSIONS)
        .Rows("OnlyASlashLeftInTheRecordTakesTheStopCharacter", SLASHES_BEFORE, "-a lastChar=/")
        .Rows("ABackslashLeftInTheRecordEscapesTheFirstCharacter", BACKSLASHES_BEFORE, "-a lastChar=\\\\")
        .Calls("TheLastCharacterIsTracked", LAST_CHARACTERS)
        .Calls("WithoutEscapesTheLastCharacterIsNotChanged", KEPT_CHARACTERS)
        .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS);

}  // namespace
}  // namespace Kestra::Test
