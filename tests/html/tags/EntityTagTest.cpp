#include "html/tags/EntityTagSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

// Inputs begin after the "<!".

constexpr RecognizerRow KEYWORDS[] = {
    {"a declaration may have a keyword only", "DOCTYPE>", "19 entity(|DOCTYPE||)"},
    {"the rest of the piece is left", "DOCTYPE>x>", "19 entity(|DOCTYPE||) rest(x>)"},
    {"case is kept", "DocType>", "19 entity(|DocType||)"},
    {"any word is a keyword", "x>", "19 entity(|x||)"},
    {"white space before the keyword is the prefix", " \n\tx>", "19 entity( \\n\\t|x||)"},
    {"white space after it is the suffix when nothing follows", "x \r\n>", "19 entity(|x|| \\r\\n)"},
    {"white space on both sides", " x >", "19 entity( |x|| )"},
    {"a keyword may be empty", ">", "19 entity(|||)"},
    {"an empty keyword after a prefix", " >", "19 entity( |||)"},
    {"\"=\" ends the keyword and begins an item", "x=y>", "19 entity(|x|{|=y}|)"},
    {"\"[\" ends the keyword and begins an item", "x[y]>", "19 entity(|x|{|[y]}|)"},
    {"\"]\" ends the keyword and begins an item", "x]>", "19 entity(|x|{|]}|)"},
    {"\"[\" without a keyword", "[x]>", "19 entity(||{|[x]}|)"},
    {"quotes belong to the keyword", "'x\"y'>", "19 entity(|'x\"y'||)"},
    {"slashes, hyphens and \"?\" belong to the keyword", "/x-?>", "19 entity(|/x-?||)"},
    {"a NUL belongs to the keyword", "x\0y>"sv, "19 entity(|x\\x00y||)"},
    {"characters from 128 up belong to the keyword", "\xDC\xBE>", "19 entity(|\\xDC\\xBE||)"},
};

constexpr RecognizerRow ITEMS[] = {
    {"a word", "DOCTYPE html>", "19 entity(|DOCTYPE|{ |html}|)"},
    {"white space after the last item is the suffix", "DOCTYPE html >", "19 entity(|DOCTYPE|{ |html}| )"},
    {"white space before an item is its prefix", "D \n\ta\r b>", "19 entity(|D|{ \\n\\t|a}{\\r |b}|)"},
    {"quoted items", "D html PUBLIC \"-//a\" \"b\">", "19 entity(|D|{ |html}{ |PUBLIC}{ |\"-//a\"}{ |\"b\"}|)"},
    {"single-quoted items", "D 'a' 'b c'>", "19 entity(|D|{ |'a'}{ |'b c'}|)"},
    {"an item may hold the other quote", "D 'a\"b' \"c'd\">", "19 entity(|D|{ |'a\"b'}{ |\"c'd\"}|)"},
    {"an item may hold \">\", \"<\" and line ends", "D '>\n<' \"<\n>\">", "19 entity(|D|{ |'>\\n<'}{ |\"<\\n>\"}|)"},
    {"an empty quoted item is an item", "D ''>", "19 entity(|D|{ |''}|)"},
    {"an empty item in quotation marks is an item", "D \"\" x>", "19 entity(|D|{ |\"\"}{ |x}|)"},
    {"empty items one after the other", "D ''\"\"''>", "19 entity(|D|{ |''}{|\"\"}{|''}|)"},
    {"items without white space between them", "D 'a'b\"c\">", "19 entity(|D|{ |'a'}{|b\"c\"}|)"},
    {"quoted items without white space between them", "D \"a\"'b'c>", "19 entity(|D|{ |\"a\"}{|'b'}{|c}|)"},
    {"white space after a quoted item is the suffix", "D 'a' \n>", "19 entity(|D|{ |'a'}| \\n)"},
    {"quotes after the first character belong to a word", "D a'b\"c>", "19 entity(|D|{ |a'b\"c}|)"},
    {"\"=\" and \"/\" belong to a word", "D a=/b/ =>", "19 entity(|D|{ |a=/b/}{ |=}|)"},
    {"brackets and hyphens belong to a word", "D --a-- [b]>", "19 entity(|D|{ |--a--}{ |[b]}|)"},
    {"a backslash escapes nothing", "D 'a\\'b>", "19 entity(|D|{ |'a\\\\'}{|b}|)"},
    {"a backslash escapes nothing in quotation marks either", "D \"a\\\"b>", "19 entity(|D|{ |\"a\\\\\"}{|b}|)"},
    {"NUL and ESC are ordinary", "D \0\033$B '\0'>"sv, "19 entity(|D|{ |\\x00\\x1B$B}{ |'\\x00'}|)"},
    {"characters from 128 up", "D \xBE\xE9 \"\xA0\">", "19 entity(|D|{ |\\xBE\\xE9}{ |\"\\xA0\"}|)"},
    {"many items", "D a b 'c' \"d\" e f>", "19 entity(|D|{ |a}{ |b}{ |'c'}{ |\"d\"}{ |e}{ |f}|)"},
};

constexpr RecognizerRow FAILURES[] = {
    {"\"<\" after a word", "DOCTYPE x<y>", "11 rest(<y>)"},
    {"\"<\" after the keyword", "DOCTYPE<y>", "11 rest(<y>)"},
    {"\"<\" after white space", "DOCTYPE x <!y>", "11 rest(<!y>)"},
    {"\"<\" after a quoted item", "D 'x'<", "11 rest(<)"},
    {"\"<\" at once", "<x>", "11 rest(<x>)"},
    {"\"<\" in a list of declarations", "D a [\n<!E b>]>", "11 rest(<!E b>]>)"},
    {"the input ends at once", "", "end 16 entity(|||)"},
    {"the input ends in the prefix", " ", "end 16 entity(|||)"},
    {"the input ends in the keyword", " D", "end 16 entity( |||)"},
    {"the input ends after the keyword", "D ", "end 16 entity(|D||)"},
    {"the input ends in a word", "D a b", "end 16 entity(|D|{ |a}|)"},
    {"the input ends in a quoted item", "D 'a>", "end 16 entity(|D||)"},
    {"the input ends in an item in quotation marks", "D \"a>", "end 16 entity(|D||)"},
    {"the input ends after a quoted item", "D 'a'", "end 16 entity(|D|{ |'a'}|)"},
    {"the input ends in the suffix", "D a ", "end 16 entity(|D|{ |a}|)"},
};

constexpr RecognizerRow ESCAPE_RUNS[] = {
    {"the first item", "D \"\033$B\" \"\033(B\">", "19 entity(|D|{ |\"\\x1B$B\" \"\\x1B(B\"}|)"},
    {"after a word", "D x \"\033$B\" \"\033(B\">", "19 entity(|D|{ |x}{ |\"\\x1B$B\" \"\\x1B(B\"}|)"},
    {"after a quoted item", "D 'x'\"\033$B\" \"\033(B\">", "19 entity(|D|{ |'x'}{|\"\\x1B$B\" \"\\x1B(B\"}|)"},
    {"after an item in quotation marks", "D \"\" \"\033$B\" \"\033(B\">",
     "19 entity(|D|{ |\"\"}{ |\"\\x1B$B\" \"\\x1B(B\"}|)"},
    {"items in apostrophes never have runs", "D '\033$B' '\033(B'>", "19 entity(|D|{ |'\\x1B$B'}{ |'\\x1B(B'}|)"},
    {"words never have runs", "D \033$B>", "19 entity(|D|{ |\\x1B$B}|)"},
    {"the input ends inside a run", "D \"\033$B\">", "end 16 entity(|D||)"},
    {"without the option nowhere", "D \"\033$B\" \"\033(B\">", "19 entity(|D|{ |\"\\x1B$B\"}{ |\"\\x1B(B\"}|)",
     "iso2022=false"},
};

constexpr RecognizerRow REPLACED_FIELDS[] = {
    {"with white space", " D\t>", "19 entity( |D||\\t)"},
    {"without", "D>", "19 entity(|D||)"},
};

constexpr StateRow STATES[] = {{"", 0}, {" ", 0}, {" D", 1}, {"D ", 2}, {"D a 'b", 2}, {"D 'b' ", 2}};

constexpr RecognizerCall ANY_STATE[] = {
    {NEW_RECORD, "state=1", "D a>x", {19, 4}, "entity(|D|{ |a}|)"},
    {NEW_RECORD, "state=1", " a>", {19, 3}, "entity(||{ |a}|)"},
    {NEW_RECORD, "state=2", "a 'b' >x", {19, 7}, "entity(||{|a}{ |'b'}| )"},
    {NEW_RECORD, "state=2", ">", {19, 1}, "entity(|||)"},
    {NEW_RECORD, "state=2", "a<", {11, 1}, "entity(||{|a}|)"},
};

constexpr RecognizerCall MALFORMED[] = {
    {NEW_RECORD, "", " D a 'b' <", {11, 9}, "entity( |D|{ |a}{ |'b'}|)", "state=2"}};

/// Members begin with `BeginParse`, and where their states are entered.
constexpr RecognizerCall MEMBERS[] = {
    {NEW_RECORD, "", "  ", {0, 2}, "entity(|||)"},       {BEGUN_AGAIN, "state=0", " D>", {19, 3}, "entity( |D||)"},
    {NEW_RECORD, "", "abc", {0, 3}, "entity(|||)"},      {BEGUN_AGAIN, "state=1", "D>", {19, 2}, "entity(|D||)"},
    {NEW_RECORD, "", "D 'a", {0, 4}, "entity(|D||)"},    {BEGUN_AGAIN, "state=2", "b>", {19, 2}, "entity(||{|b}|)"},
    {NEW_RECORD, "", "D  ", {0, 3}, "entity(|D||)"},     {BEGUN_AGAIN, "state=2", " b>", {19, 3}, "entity(||{ |b}|)"},
    {NEW_RECORD, "", "D a", {0, 3}, "entity(|D||)"},     {BEGUN_AGAIN, "state=2", " b>", {19, 3}, "entity(||{ |b}|)"},
    {NEW_RECORD, "", "abc", {0, 3}, "entity(|||)"},      {CONTINUED, "state=0", "D>", {19, 2}, "entity(|D||)"},
    {NEW_RECORD, "", "= 'b", {0, 4}, "entity(||{|=}|)"}, {CONTINUED, "state=1", "D>", {19, 2}, "entity(|D|{|=}|)"},
};

/// The list keeps the elements that it dropped: nothing of an earlier declaration may show in them.
constexpr RecognizerCall DECLARATIONS_IN_TURN[] = {
    {NEW_RECORD, "", "D \t'a' \n\"b\">", {19, 12}, "entity(|D|{ \\t|'a'}{ \\n|\"b\"}|)"},
    {BEGUN_AGAIN, "", "D''c>", {19, 5}, "entity(|D''c||)"},
    {BEGUN_AGAIN, "", "D ''c>", {19, 6}, "entity(|D|{ |''}{|c}|)"},
};

constexpr LongRow LONG_PARTS[] = {{"@ @ '@'>", "x", "19 entity(|@|{ |@}{ |'@'}|)"}};

constexpr RecognizerRow NARROW_SPACES[] = {
    {"bytes from 128 up are no white space", "\240D\205a>", "19 entity(|\\xA0D\\x85a||)"},
};

constexpr RecognizerRow WIDE_SPACES_TOO[] = {
    {"U+00A0 and U+0085", "\\u00A0D\\u0085a>", "19 entity(\\u00A0|D|{\\u0085|a}|)"},
    {"all around", "\\u3000D\\u2028\"\\u3042\"\\u2003\\u203E\\u202F>",
     "19 entity(\\u3000|D|{\\u2028|\"\\u3042\"}{\\u2003|\\u203E}|\\u202F)"},
};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low bytes are those of \">\", \"<\" and the quotes", "D\\u013E \\u013C\\u0127 \\u0122>",
     "19 entity(|D\\u013E|{ |\\u013C\\u0127}{ |\\u0122}|)"},
};

const auto SUITE =
    RecognizerSuite<HTML::EntityTagSimpleParser>("EntityTagTest")
        .Rows("Keywords", KEYWORDS)
        .Rows("Items", ITEMS)
        .Rows("Failures", FAILURES)
        .Rows("EscapeRunsInQuotedItems", ESCAPE_RUNS, "iso2022")
        .Rows("WhatTheRecordHeldBeforeIsReplaced", REPLACED_FIELDS, "prefix=before name=before suffix=before")
        .States(STATES)
        .Calls("ARecordMayBeInAnyState", ANY_STATE)
        .Calls("AFailureLeavesTheRecordAsItWas", MALFORMED)
        .Calls("MembersBeginWithTheirStates", MEMBERS)
        .Calls("AnItemShowsNothingOfAnEarlierOne", DECLARATIONS_IN_TURN)
        .LongInputs(LONG_PARTS)
        .NarrowRows("NoWhiteSpaceIsBeyondAscii", NARROW_SPACES)
        .WideRows("WhiteSpaceReachesBeyondAscii", WIDE_SPACES_TOO)
        .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS);

}  // namespace
}  // namespace Kestra::Test
