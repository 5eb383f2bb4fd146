#include "html/tags/StartTagSimpleParser.h"

#include "tests/html/tags/TagRows.h"
#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

constexpr RecognizerRow WITHOUT_ESCAPE_RUNS[] = {
    {"without the option nowhere", "p b=\"\033$B\" c=\"\033(B\">",
     "19 start(|p|{ |b|=|\"\\x1B$B\"}{ |c|=|\"\\x1B(B\"}|)"},
};

constexpr RecognizerRow REPLACED_FIELDS[] = {
    {"prefix and name", " p a=x>", "19 start( |p|{ |a|=|x}|)"},
    {"the suffix, where one is read", " p\t>", "19 start( |p||\\t)", "suffix=before"},
};

constexpr StateRow STATES[] = {{"", 0},   {" ", 0},       {" a", 1},     {"a/", 1}, {"a ", 2},
                               {"a=", 2}, {"a b='c'", 2}, {"a b=c/", 2}, {"a /", 2}};

constexpr RecognizerCall ANY_STATE[] = {
    {NEW_RECORD, "state=1", "p>", {19, 2}, "start(|p||)"},
    {NEW_RECORD, "state=2", " b=c>", {19, 5}, "start(||{ |b|=|c}|)"},
    {NEW_RECORD, "state=3", ">x", {19, 1}, "start(|||)"},
    {NEW_RECORD, "state=3", "/>x", {19, 2}, "start(|||, short)"},
    {NEW_RECORD, "state=3", "/", {0, 1}, "start(|||, short)"},
    {NEW_RECORD, "state=3", "/ >", {11, 1}, "start(|||, short)"},
    {NEW_RECORD, "state=3", "//>", {11, 1}, "start(|||, short)"},
    {NEW_RECORD, "state=3", "/<", {11, 1}, "start(|||, short)"},
    {NEW_RECORD, "state=3", "<a>", {19, 1}, "start(|||, open)"},
    {NEW_RECORD, "state=3", "<", {19, 1}, "start(|||, open)"},
    {NEW_RECORD, "state=3", "a>", {11, 0}, "start(|||)"},
    {NEW_RECORD, "state=3", " >", {11, 0}, "start(|||)"},
    {NEW_RECORD, "state=3", "=>", {11, 0}, "start(|||)"},
    {NEW_RECORD, "state=4", ">x", {19, 1}, "start(|||)"},
    {NEW_RECORD, "state=4", " >", {11, 0}, "start(|||)"},
    {NEW_RECORD, "state=4", "<", {11, 0}, "start(|||)"},
    {NEW_RECORD, "state=4", "/>", {11, 0}, "start(|||)"},
    {NEW_RECORD, "state=4", "a", {11, 0}, "start(|||)"},
};

/// A start tag that has read "a b=c d" and the "e" after it, put into another state: each exit from
/// there must normalize.
constexpr RecognizerCall EXITS[] = {
    {NEW_RECORD, "", "a b=c d e", {0, 9}, "start(|a|{ |b|=|c}{ |d}|)"},
    {CONTINUED, "state=3", ">", {19, 1}, "start(|a|{ |b|=|c d}|)"},
    {NEW_RECORD, "", "a b=c d e", {0, 9}, "start(|a|{ |b|=|c}{ |d}|)"},
    {CONTINUED, "state=3", "<", {19, 1}, "start(|a|{ |b|=|c d}|, open)"},
    {NEW_RECORD, "", "a b=c d e", {0, 9}, "start(|a|{ |b|=|c}{ |d}|)"},
    {CONTINUED, "state=3", "/>", {19, 2}, "start(|a|{ |b|=|c d}|, short)"},
    {NEW_RECORD, "", "a b=c d e", {0, 9}, "start(|a|{ |b|=|c}{ |d}|)"},
    {CONTINUED, "state=4", ">", {19, 1}, "start(|a|{ |b|=|c d}|)"},
};

constexpr RecognizerCall FAILURES[] = {
    {NEW_RECORD, "", "a b=c d / >", {11, 10}, "start(|a|{ |b|=|c}{ |d}|)", "state=2"},
    {NEW_RECORD, "", "a / >", {11, 4}, "start(|a||)", "state=2"},
    {NEW_RECORD, "", "a b=c d e=/>", {11, 11}, "start(|a|{ |b|=|c}{ |d}|, short)", "state=4"},
};

/// Members begin with `BeginParse`, and where their states are entered.
constexpr RecognizerCall MEMBERS[] = {
    {NEW_RECORD, "", "  ", {0, 2}, "start(|||)"},
    {BEGUN_AGAIN, "state=0", " p>", {19, 3}, "start( |p||)"},
    {NEW_RECORD, "", "abc", {0, 3}, "start(|||)"},
    {BEGUN_AGAIN, "state=1", "p>", {19, 2}, "start(|p||)"},
    {NEW_RECORD, "", "a b='c", {0, 6}, "start(|a||)"},
    {BEGUN_AGAIN, "state=2", "d='e'>", {19, 6}, "start(||{|d|=|'e'}|)"},
    {NEW_RECORD, "", "a  ", {0, 3}, "start(|a||)"},
    {BEGUN_AGAIN, "state=2", " d>", {19, 3}, "start(||{ |d}|)"},
    {NEW_RECORD, "", "abc", {0, 3}, "start(|||)"},
    {CONTINUED, "state=0", "p>", {19, 2}, "start(|p||)"},
};

constexpr RecognizerRow NARROW_SPACES[] = {
    {"bytes from 128 up are no white space", "\240a\205b=\240>", "19 start(|\\xA0a\\x85b|{||=|\\xA0}|)"},
};

constexpr RecognizerRow WIDE_SPACES_TOO[] = {
    {"U+00A0 and U+0085", "\\u00A0a\\u0085b=\\u00A0>", "19 start(\\u00A0|a|{\\u0085|b|=\\u00A0|}|)"},
    {"all around", "\\u3000a\\u2028b\\u2003=\\u3000\"\\u3042\"\\u202F/>",
     "19 start(\\u3000|a|{\\u2028|b|\\u2003=\\u3000|\"\\u3042\"}|\\u202F, short)"},
};

constexpr std::string_view BARE_LIST = " 1 2 3 4 5 6 7 8";
constexpr std::string_view BARE_LIST_TRACE = "{ |1}{ |2}{ |3}{ |4}{ |5}{ |6}{ |7}{ |8}";
constexpr std::string_view VALUED_LIST = " 1=a 2='' 3=\"\" 4 =a 5= a 6=a 7=a 8='a'";
constexpr std::string_view VALUED_LIST_TRACE =
    "{ |1|=|a}{ |2|=|''}{ |3|=|\"\"}{ |4| =|a}{ |5|= |a}{ |6|=|a}{ |7|=|a}{ |8|=|'a'}";

/// Checks a row whose attributes follow eight others, from where on the recognizer reads them
/// another way.
template <typename Flavour>
void CheckAfterList(const RecognizerRow& row, std::string_view list, std::string_view listTrace) {
    constexpr std::string_view BEGIN = "19 start(|a|";
    std::string expected(row.expected);
    if (expected.compare(0, BEGIN.size(), BEGIN) == 0)
        expected.insert(BEGIN.size(), listTrace);
    const std::string input = "a" + std::string(list) + std::string(row.input.substr(1));
    CheckRow<HTML::StartTagSimpleParser, Flavour>(row.note, input, expected);
}

/// Checks a row, and if it is one of the tag "a" the same after lists.
template <typename Flavour>
void CheckTag(const RecognizerRow& row) {
    CheckRow<HTML::StartTagSimpleParser, Flavour>(row.note, row.input, row.expected);
    const std::size_t first = row.input.find_first_not_of(" \n\t", 1);
    if (row.input.substr(0, 2) != "a " || row.input[first] == '=')
        return;
    CheckAfterList<Flavour>(row, BARE_LIST, BARE_LIST_TRACE);
    // A bare word would become part of the list's last value.
    const std::string_view firstTrace = row.expected.substr(0, row.expected.find('}'));
    if (firstTrace.find('=') != std::string_view::npos)
        CheckAfterList<Flavour>(row, VALUED_LIST, VALUED_LIST_TRACE);
}

template <typename Flavour>
void CheckTags(std::span<const RecognizerRow> rows) {
    for (const RecognizerRow& row : rows)
        CheckTag<Flavour>(row);
}

const auto SUITE = RecognizerSuite<HTML::StartTagSimpleParser>("StartTagTest")
                       .Rows("Names", START_TAG_NAMES)
                       .Test("Attributes", []<typename F>() { CheckTags<F>(START_TAG_ATTRIBUTES); })
                       .Test("ShortTags", []<typename F>() { CheckTags<F>(START_TAG_SHORT_TAGS); })
                       .Test("Failures", []<typename F>() { CheckTags<F>(START_TAG_FAILURES); })
                       .Test("AttributesAreNormalized", []<typename F>() { CheckTags<F>(START_TAG_FOLDED_WORDS); })
                       .Rows("EscapeRunsInQuotedValues", START_TAG_ESCAPE_RUNS, "iso2022")
                       .Rows("WithoutEscapeRuns", WITHOUT_ESCAPE_RUNS, "iso2022=false")
                       .Rows("WhatTheRecordHeldBeforeIsReplaced", REPLACED_FIELDS, "prefix=before name=before")
                       .States(STATES)
                       .Calls("ARecordMayBeInAnyState", ANY_STATE)
                       .Calls("EveryExitNormalizes", EXITS)
                       .Calls("AFailureLeavesTheRecordAsItWas", FAILURES)
                       .Calls("MembersBeginWithTheirStates", MEMBERS)
                       .AttributesWithoutValues("a b\t=\n'c' d\t=\n\"e\">", {"a f  g>"})
                       .NarrowRows("NoWhiteSpaceIsBeyondAscii", NARROW_SPACES)
                       .WideRows("WhiteSpaceReachesBeyondAscii", WIDE_SPACES_TOO);

}  // namespace
}  // namespace Kestra::Test
