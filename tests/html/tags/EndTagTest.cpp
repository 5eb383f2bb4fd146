#include "html/tags/EndTagSimpleParser.h"

#include "tests/html/tags/TagRows.h"
#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

constexpr RecognizerRow WITHOUT_ESCAPE_RUNS[] = {
    {"without the option nowhere", "p b=\"\033$B\" c=\"\033(B\">",
     "19 end(|p| |{|b|=|\"\\x1B$B\"}{ |c|=|\"\\x1B(B\"}|)"},
};

constexpr RecognizerRow REPLACED_FIELDS[] = {
    {"prefix and name", " p a=x>", "19 end( |p| |{|a|=|x}|)"},
    {"the suffix, where one is read", " p\t>", "19 end( |p|\\t||before)", "suffix=before"},
};

constexpr StateRow STATES[] = {{"", 0},    {" ", 0},  {" a", 1},      {"a/", 1}, {"a ", 2},
                               {"a b", 3}, {"a=", 3}, {"a b='c'", 3}, {"a /", 3}};

constexpr RecognizerCall ANY_STATE[] = {
    {NEW_RECORD, "state=2", " >", {19, 2}, "end(|| ||)", "state=5"},
    {NEW_RECORD, "state=4", ">x", {19, 1}, "end(||||)", "state=4"},
    {NEW_RECORD, "state=4", "/>", {0, 1}, "end(||||, slash)", "state=5"},
    {NEW_RECORD, "state=4", "/", {0, 1}, "end(||||, slash)", "state=5"},
    {NEW_RECORD, "state=4", "a>", {11, 0}, "end(||||)", "state=4"},
    {NEW_RECORD, "state=4", " >", {11, 0}, "end(||||)", "state=4"},
    {NEW_RECORD, "state=4", "<", {11, 0}, "end(||||)", "state=4"},
    {NEW_RECORD, "state=5", ">x", {19, 1}, "end(||||)", "state=5"},
    {NEW_RECORD, "state=5", "<x", {19, 0}, "end(||||, open)", "state=5"},
    {NEW_RECORD, "state=5", "a=b c", {0, 5}, "end(|||{|a|=|b}|)", "state=3"},
    {NEW_RECORD, "state=5", " a=b c", {0, 6}, "end(|||{ |a|=|b}|)", "state=3"},
    {NEW_RECORD, "state=3", " a=b c", {0, 6}, "end(|||{ |a|=|b}|)", "state=3"},
};

/// A call ends after a slash, whatever follows in the piece; further attributes may follow it.
constexpr RecognizerCall CALLS_AFTER_SLASHES[] = {
    {NEW_RECORD, "", "div a=x/>", {0, 8}, "end(|div| |{|a|=|x}|, slash)", "state=5 slashBeforeClose"},
    {CONTINUED, "", ">", {19, 1}, "end(|div| |{|a|=|x}|, slash)"},
    {NEW_RECORD, "", "div a/>", {0, 6}, "end(|div| |{|a}|, slash)", "state=5 slashBeforeClose"},
    {CONTINUED, "", ">", {19, 1}, "end(|div| |{|a}|, slash)"},
    {NEW_RECORD, "", "div a />", {0, 7}, "end(|div| |{|a}| , slash)", "state=5 slashBeforeClose"},
    {CONTINUED, "", ">", {19, 1}, "end(|div| |{|a}| , slash)"},
    {NEW_RECORD, "", "div />", {0, 5}, "end(|div| ||, slash)", "state=5 slashBeforeClose"},
    {CONTINUED, "", ">", {19, 1}, "end(|div| ||, slash)"},
    {NEW_RECORD, "state=4", "/b=c>", {0, 1}, "end(||||, slash)"},
    {CONTINUED, "", "b=c d>", {19, 6}, "end(|||{|b|=|c d}|, slash)"},
    {NEW_RECORD, "state=4", "/<b", {0, 1}, "end(||||, slash)"},
    {CONTINUED, "", "<b", {19, 0}, "end(||||, slash, open)"},
};

/// An end tag that has read "a b=c d" and the "e" after it, put into another state: each exit from
/// there must normalize.
constexpr RecognizerCall EXITS[] = {
    {NEW_RECORD, "", "a b=c d e", {0, 9}, "end(|a| |{|b|=|c}{ |d}|)"},
    {CONTINUED, "state=4", ">", {19, 1}, "end(|a| |{|b|=|c d}|)"},
    {NEW_RECORD, "", "a b=c d e", {0, 9}, "end(|a| |{|b|=|c}{ |d}|)"},
    {CONTINUED, "state=5", ">", {19, 1}, "end(|a| |{|b|=|c d}|)"},
    {NEW_RECORD, "", "a b=c d e", {0, 9}, "end(|a| |{|b|=|c}{ |d}|)"},
    {CONTINUED, "state=5", "<", {19, 0}, "end(|a| |{|b|=|c d}|, open)"},
};

constexpr RecognizerCall FAILURES[] = {
    {NEW_RECORD, "", "a b=c d / >", {11, 10}, "end(|a| |{|b|=|c}{ |d}|)", "state=3"},
    {NEW_RECORD, "", "a / >", {11, 4}, "end(|a| ||)", "state=3"},
    {NEW_RECORD, "", "a b=c d e=/>", {11, 11}, "end(|a| |{|b|=|c}{ |d}|, slash)", "state=5"},
};

/// Members begin with `BeginParse`, and where their states are entered.
constexpr RecognizerCall MEMBERS[] = {
    {NEW_RECORD, "", "  ", {0, 2}, "end(||||)"},
    {BEGUN_AGAIN, "state=0", " p>", {19, 3}, "end( |p|||)"},
    {NEW_RECORD, "", "abc", {0, 3}, "end(||||)"},
    {BEGUN_AGAIN, "state=1", "p>", {19, 2}, "end(|p|||)"},
    {NEW_RECORD, "", "a  ", {0, 3}, "end(|a|||)"},
    {BEGUN_AGAIN, "state=2", " >", {19, 2}, "end(|| ||)"},
    {NEW_RECORD, "", "a b='c", {0, 6}, "end(|a| ||)"},
    {BEGUN_AGAIN, "state=3", "d='e'>", {19, 6}, "end(|||{|d|=|'e'}|)"},
    {NEW_RECORD, "", "abc", {0, 3}, "end(||||)"},
    {CONTINUED, "state=0", "p>", {19, 2}, "end(|p|||)"},
    {NEW_RECORD, "", "a b='c", {0, 6}, "end(|a| ||)"},
    {CONTINUED, "state=5", "d='e'>", {19, 6}, "end(|a| |{|d|=|'e'}|)"},
};

constexpr RecognizerRow NARROW_SPACES[] = {
    {"bytes from 128 up are no white space", "\240a\205>", "19 end(|\\xA0a\\x85|||)"},
};

constexpr RecognizerRow WIDE_SPACES_TOO[] = {
    {"U+00A0 and U+0085", "\\u00A0a\\u0085>", "19 end(\\u00A0|a|\\u0085||)"},
    {"all around", "\\u3000a\\u2028b\\u013D\\u2003>", "19 end(\\u3000|a|\\u2028|{|b\\u013D}|\\u2003)"},
};

const auto SUITE =
    RecognizerSuite<HTML::EndTagSimpleParser>("EndTagTest")
        .Rows("Names", END_TAG_NAMES)
        .Rows("Attributes", END_TAG_ATTRIBUTES)
        .Rows("Slashes", END_TAG_SLASHES)
        .Rows("Failures", END_TAG_FAILURES)
        .Rows("EscapeRunsInQuotedValues", END_TAG_ESCAPE_RUNS, "iso2022")
        .Rows("WithoutEscapeRuns", WITHOUT_ESCAPE_RUNS)
        .Rows("WhatTheRecordHeldBeforeIsReplaced", REPLACED_FIELDS, "prefix=before name=before afterName=before")
        .States(STATES)
        .Calls("ARecordMayBeInAnyState", ANY_STATE)
        .Calls("ACallEndsAfterASlash", CALLS_AFTER_SLASHES)
        .Calls("EveryExitNormalizes", EXITS)
        .Calls("AFailureLeavesTheRecordAsItWas", FAILURES)
        .Calls("MembersBeginWithTheirStates", MEMBERS)
        .AttributesWithoutValues("a b\t=\n'c' d\t=\n\"e\">", {"a f  g>"})
        .NarrowRows("NoWhiteSpaceIsBeyondAscii", NARROW_SPACES)
        .WideRows("WhiteSpaceReachesBeyondAscii", WIDE_SPACES_TOO);

}  // namespace
}  // namespace Kestra::Test
