#include "html/text/SQuoteStringSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

// Inputs begin after the opening apostrophe.

constexpr RecognizerRow STRINGS[] = {
    {"a string ends after its closing quote", "it's", "19 text(it) rest(s)"},
    {"the closing quote may be the last character", "it'", "19 text(it)"},
    {"a string may be empty", "''", "19 text() rest(')"},
    {"everything else is content", "<a href=\"/*x*/\">//\033$B'", "19 text(<a href=\"/*x*/\">//\\x1B$B)"},
    {"line ends are content", "a\r\nb\n\n'\n", "19 text(a\\r\\nb\\n\\n) rest(\\n)"},
    {"a NUL is content", "a\0'"sv, "19 text(a\\x00)"},
    {"characters from 128 up are content", "\x85\xA7\xFF'", "19 text(\\x85\\xA7\\xFF)"},
    {"without escapes a backslash is content", "it\\'s'", "19 text(it\\\\) rest(s')"},
    {"an escaped quote is content and keeps its backslash", "it\\'s'", "19 text(it\\\\'s)", "-a"},
    {"an escaped backslash escapes nothing", "a\\\\'b", "19 text(a\\\\\\\\) rest(b)", "-a"},
    {"three backslashes escape the quote", "a\\\\\\'b'", "19 text(a\\\\\\\\\\\\'b)", "-a"},
    {"four backslashes do not", "\\\\\\\\'b'", "19 text(\\\\\\\\\\\\\\\\) rest(b')", "-a"},
    {"a quote as the escaped character and another one", "\\''", "19 text(\\\\')", "-a"},
    {"any character may be escaped", "\\n\\\n\\<'", "19 text(\\\\n\\\\\\n\\\\<)", "-a"},
    {"escapes far from the quote", "a\\bc\\de'", "19 text(a\\\\bc\\\\de)", "-a"},
    {"a star before the quote is no backslash", "a*'b", "19 text(a*) rest(b)", "-a"},
    {"the input ends inside the string", "abc", "end 16 text(abc)"},
    {"the input ends at once", "", "end 16 text()"},
    {"the input ends after a backslash", "abc\\", "end 16 text(abc\\\\)", "-a"},
    {"the input ends after an escaped quote", "abc\\'", "end 16 text(abc\\\\')", "-a"},
};

constexpr RecognizerRow BACKSLASHES_BEFORE[] = {
    {"a quote", "'x'", "19 text('x)"},
    {"a backslash", "\\'x", "19 text(\\\\) rest(x)"},
};

constexpr RecognizerCall LAST_CHARACTERS[] = {
    {NEW_RECORD, "-a", "", {0, 0}, "text()", "lastChar=*"},
    {NEW_RECORD, "-a", "a", {0, 1}, "text(a)", "lastChar=a"},
    {NEW_RECORD, "-a", "a\\", {0, 2}, "text(a\\\\)", "lastChar=\\\\"},
    {NEW_RECORD, "-a", "a\\'", {0, 3}, "text(a\\\\')", "lastChar=*"},
    {NEW_RECORD, "-a", "\\\\", {0, 2}, "text(\\\\\\\\)", "lastChar=*"},
    {NEW_RECORD, "-a", "\\\\b", {0, 3}, "text(\\\\\\\\b)", "lastChar=b"},
    {NEW_RECORD, "-a", "\\\\\\", {0, 3}, "text(\\\\\\\\\\\\)", "lastChar=\\\\"},
    {NEW_RECORD, "-a", "ab\n", {0, 3}, "text(ab\\n)", "lastChar=\\n"},
};

constexpr RecognizerCall KEPT_CHARACTERS[] = {
    {NEW_RECORD, "lastChar=\\\\", "ab\\", {0, 3}, "text(ab\\\\)", "lastChar=\\\\"},
    {CONTINUED, "", "'c", {19, 1}, "text(ab\\\\)", "lastChar=\\\\"},
    {NEW_RECORD, "lastChar=*", "ab\\", {0, 3}, "text(ab\\\\)", "lastChar=*"},
    {CONTINUED, "", "'c", {19, 1}, "text(ab\\\\)", "lastChar=*"},
    {NEW_RECORD, "lastChar=q", "ab\\", {0, 3}, "text(ab\\\\)", "lastChar=q"},
    {CONTINUED, "", "'c", {19, 1}, "text(ab\\\\)", "lastChar=q"},
};

constexpr LongRow LONG_STRINGS[] = {{"@'", "x", "19 text(@)"}};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low or high byte is that of a quote or backslash", "\\u0127\\u2700\\u015C'", "19 text(\\u0127\\u2700\\u015C)",
     "-a"},
};

const auto SUITE =
    RecognizerSuite<HTML::SQuoteStringSimpleParser>("SQuoteStringTest")
        .Rows("Strings", STRINGS)
        .Rows("ABackslashLeftInTheRecordEscapesTheFirstCharacter", BACKSLASHES_BEFORE, "-a lastChar=\\\\")
        .Calls("TheLastCharacterIsTracked", LAST_CHARACTERS)
        .Calls("WithoutEscapesTheLastCharacterIsNeitherReadNorChanged", KEPT_CHARACTERS)
        .LongInputs(LONG_STRINGS)
        .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS);

}  // namespace
}  // namespace Kestra::Test
