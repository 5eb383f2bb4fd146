#include "html/tags/AttributeSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

constexpr RecognizerRow ATTRIBUTES[] = {
    {"a quoted value ends the attribute after its quote", " a='x'b", "19 { |a|=|'x'} rest(b)"},
    {"a value in quotation marks", " a=\"x\" b", "19 { |a|=|\"x\"} rest( b)"},
    {"a bare value ends the attribute before white space", " a=x b", "19 { |a|=|x} rest( b)"},
    {"a bare value ends the attribute before \">\"", "a=x>", "19 {|a|=|x} rest(>)"},
    {"a bare value ends the attribute before \"<\"", "a=x<b", "19 {|a|=|x} rest(<b)"},
    {"white space around \"=\" is kept", "\ta \n=\r\n 'x'", "19 {\\t|a| \\n=\\r\\n |'x'}"},
    {"without \"=\" there is no value", "a>", "19 {|a|} rest(>)"},
    {"without \"=\" the white space after the name is kept", " a \nb", "19 { |a| \\n} rest(b)"},
    {"without \"=\" a quote begins the next attribute", "a 'x'", "19 {|a| } rest('x')"},
    {"a \"/\" belongs to the name", "/>", "19 {|/|} rest(>)"},
    {"a \"/\" belongs to a bare value", "a=x/>", "19 {|a|=|x/} rest(>)"},
    {"\"<\" and brackets belong to the name", " a<b[c]=1 ", "19 { |a<b[c]|=|1} rest( )"},
    {"quotes belong to the name", "'x\"=1>", "19 {|'x\"|=|1} rest(>)"},
    {"a name may be empty: \"=\" comes first", "=x>", "19 {||=|x} rest(>)"},
    {"a second \"=\" belongs to the value", "a==x>", "19 {|a|=|=x} rest(>)"},
    {"\"=\" alone has an empty value", "=>", "19 {||=|} rest(>)"},
    {"an empty value after a name", "a=>", "19 {|a|=|} rest(>)"},
    {"an empty value after white space", "a= \n>", "19 {|a|= \\n|} rest(>)"},
    {"an empty value before \"<\"", "a=<b", "19 {|a|=|} rest(<b)"},
    {"an empty quoted value", "a=''>", "19 {|a|=|''} rest(>)"},
    {"white space alone is a prefix without a name", " \t>", "19 { \\t||} rest(>)"},
    {"nothing at all before \">\"", ">", "19 {||} rest(>)"},
    {"a backslash escapes nothing", "a='\\'b", "19 {|a|=|'\\\\'} rest(b)"},
    {"case is kept", "aB=Cd ", "19 {|aB|=|Cd} rest( )"},
    {"NUL and ESC belong to a name", "\0\033=x "sv, "19 {|\\x00\\x1B|=|x} rest( )"},
    {"characters from 128 up", "\xE4=\xF6 ", "19 {|\\xE4|=|\\xF6} rest( )"},
    {"the input ends in the white space", " ", "end 19"},
    {"the input ends in the name", " a", "end 19"},
    {"the input ends after the name", " a ", "end 19"},
    {"the input ends after \"=\"", " a =", "end 19"},
    {"the input ends in a bare value", " a=x", "end 19"},
    {"the input ends in a quoted value", " a='x", "end 19"},
    {"the input ends at once", "", "end 19 {||}"},
};

constexpr RecognizerRow ESCAPE_RUNS[] = {
    {"a mark inside a run is content", " a= \"\033$B\"\033(B\"b", "19 { |a|= |\"\\x1B$B\"\\x1B(B\"} rest(b)",
     "iso2022"},
    {"without the option a run is no run", " a= \"\033$B\"\033(B\"b", "19 { |a|= |\"\\x1B$B\"} rest(\\x1B(B\"b)"},
    {"a value in apostrophes has no runs", "a='\033$B'\033(B'", "19 {|a|=|'\\x1B$B'} rest(\\x1B(B')", "iso2022"},
    {"a name has no runs", "\033$B=\033(B ", "19 {|\\x1B$B|=|\\x1B(B} rest( )", "iso2022"},
    {"the input ends inside the run", "a=\"\033$B\"", "end 19", "iso2022"},
};

/// The prefix is the owner's, and the record in the state of the name.
constexpr RecognizerRow NAMES[] = {
    {"the preset prefix stays", "b=1 ", "19 { \\n|b|=|1} rest( )"},
    {"the name is an attribute name", "b<[c] d", "19 { \\n|b<[c]| } rest(d)"},
    {"white space ends the name at once", " b", "19 { \\n|| } rest(b)"},
    {"there may be no name", ">", "19 { \\n||} rest(>)"},
};

constexpr RecognizerRow REPLACED_FIELDS[] = {
    {"with a value", " a =\t'x'", "19 { |a| =\\t|'x'}"},
    {"with a bare value", "a=x>", "19 {|a|=|x} rest(>)"},
    {"with an empty value", "a=>", "19 {|a|=|} rest(>)"},
    {"without a value", "a>", "19 {|a|} rest(>)"},
};

constexpr StateRow STATES[] = {{"", 0},     {" ", 0},     {" a", 1},      {" a ", 2},
                               {" a =", 4}, {" a = ", 4}, {" a = 'x", 4}, {"=x", 4}};

constexpr RecognizerCall ANY_STATE[] = {
    {NEW_RECORD, "state=2", " a", {19, 1}, "{|| }"},    {NEW_RECORD, "state=2", "=x>", {19, 2}, "{||=|x}"},
    {NEW_RECORD, "state=3", "=x>", {19, 2}, "{||=|x}"}, {NEW_RECORD, "state=3", "x=", {19, 0}, "{||}"},
    {NEW_RECORD, "state=3", " =", {19, 0}, "{||}"},     {NEW_RECORD, "state=4", " x>", {19, 2}, "{||= |x}"},
};

/// Members begin with `BeginParse`, and where their states are entered.
constexpr RecognizerCall MEMBERS[] = {
    {NEW_RECORD, "", "  ", {0, 2}, "{||}"},       {BEGUN_AGAIN, "state=0", " x>", {19, 2}, "{ |x|}"},
    {NEW_RECORD, "", "abc", {0, 3}, "{||}"},      {BEGUN_AGAIN, "state=1", "x<y>", {19, 3}, "{|x<y|}"},
    {NEW_RECORD, "", "abc  ", {0, 5}, "{|abc|}"}, {BEGUN_AGAIN, "state=2", " >", {19, 1}, "{|| }"},
    {NEW_RECORD, "", "a='abc", {0, 6}, "{|a|}"},  {BEGUN_AGAIN, "state=4", "'x'", {19, 3}, "{||=|'x'}"},
    {NEW_RECORD, "", "a=  ", {0, 4}, "{|a|}"},    {BEGUN_AGAIN, "state=4", " x>", {19, 2}, "{||= |x}"},
    {NEW_RECORD, "", "abc", {0, 3}, "{||}"},      {CONTINUED, "state=0", " x<y>", {19, 4}, "{ |x<y|}"},
    {NEW_RECORD, "", "a  ", {0, 3}, "{|a|}"},     {CONTINUED, "state=1", "x >", {19, 2}, "{|x| }"},
    {NEW_RECORD, "", "a='abc", {0, 6}, "{|a|}"},  {CONTINUED, "state=3", "='x'", {19, 4}, "{|a|=|'x'}"},
};

constexpr RecognizerCall FLAGS_OF_VALUES[] = {
    {NEW_RECORD, "hasValue=1", "a>", {19, 1}, "{|a|}", "hasValue=0"},
    {BEGUN_AGAIN, "", "a=>", {19, 2}, "{|a|=|}", "hasValue=1 quote=0"},
};

constexpr RecognizerRow NARROW_SPACES[] = {
    {"a byte from 128 up is no white space", "\240a\205=\240x ", "19 {|\\xA0a\\x85|=|\\xA0x} rest( )"},
};

constexpr RecognizerRow WIDE_SPACES_TOO[] = {
    {"U+00A0 and U+0085", "\\u00A0a\\u0085=\\u00A0x ", "19 {\\u00A0|a|\\u0085=\\u00A0|x} rest( )"},
    {"all around", "\\u3000a\\u013D\\u2003=\\u2028'\\u3000'b",
     "19 {\\u3000|a\\u013D|\\u2003=\\u2028|'\\u3000'} rest(b)"},
};

const auto SUITE =
    RecognizerSuite<HTML::AttributeSimpleParser>("AttributeTest")
        .Rows("Attributes", ATTRIBUTES)
        .Rows("EscapeRuns", ESCAPE_RUNS)
        .Rows("AnOwnerMayBeginAtTheName", NAMES, "prefix=\\x20\\n state=1")
        .Rows("WhatTheRecordHeldBeforeIsReplaced", REPLACED_FIELDS,
              "prefix=before name=before beforeEquals=before afterEquals=before value=before quote=2 hasValue=1")
        .States(STATES)
        .Calls("ARecordMayBeInAnyState", ANY_STATE)
        .Calls("MembersBeginWithTheirStates", MEMBERS)
        .Calls("WithoutAnEqualsSignTheFlagIsCleared", FLAGS_OF_VALUES)
        .NarrowRows("NoWhiteSpaceIsBeyondAscii", NARROW_SPACES)
        .WideRows("WhiteSpaceReachesBeyondAscii", WIDE_SPACES_TOO);

}  // namespace
}  // namespace Kestra::Test
