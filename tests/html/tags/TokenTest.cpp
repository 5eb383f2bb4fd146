#include "html/tags/TokenSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

constexpr RecognizerRow VALUES[] = {
    {"a bare value ends before white space", "x y", "19 {|x} rest( y)"},
    {"a bare value ends before \">\"", "x>", "19 {|x} rest(>)"},
    {"a bare value ends before \"<\"", "x<b", "19 {|x} rest(<b)"},
    {"white space before a bare value is its prefix", " \n\tx>", "19 { \\n\\t|x} rest(>)"},
    {"a \"/\" belongs to a bare value", "x/>", "19 {|x/} rest(>)"},
    {"a lone \"/\" is a bare value", "/>", "19 {|/} rest(>)"},
    {"\"=\", quotes and brackets belong to a bare value", "a=b'c\"d[e]&f;>", "19 {|a=b'c\"d[e]&f;} rest(>)"},
    {"a bare value may begin with \"=\"", "=x>", "19 {|=x} rest(>)"},
    {"a bare value may begin with \"[\"", "[ ", "19 {|[} rest( )"},
    {"ESC and NUL belong to a bare value", "\033$\0>"sv, "19 {|\\x1B$\\x00} rest(>)"},
    {"characters from 128 up belong to a bare value", "\x80\xBC\xFF>", "19 {|\\x80\\xBC\\xFF} rest(>)"},
    {"before \">\" the value is empty", ">", "19 {|} rest(>)"},
    {"white space before \">\" is its prefix all the same", " \n>", "19 { \\n|} rest(>)"},
    {"before \"<\" the value is empty", "<b", "19 {|} rest(<b)"},
    {"a value in apostrophes", "'x'y", "19 {|'x'} rest(y)"},
    {"a value in quotation marks", "\"x\"y", "19 {|\"x\"} rest(y)"},
    {"white space before a quoted value", " \t'x'", "19 { \\t|'x'}"},
    {"a quoted value ends with its closing quote, the last of the input", "'x'", "19 {|'x'}"},
    {"a quoted value may be empty", "''>", "19 {|''} rest(>)"},
    {"a value in quotation marks may be empty", "\"\"", "19 {|\"\"}"},
    {"anything but the quote belongs to a value in apostrophes", "' <>=\n/\"]'>", "19 {|' <>=\\n/\"]'} rest(>)"},
    {"anything but the quote belongs to a value in quotation marks", "\" <>=\n/']\">", "19 {|\" <>=\\n/']\"} rest(>)"},
    {"a backslash escapes nothing", "'a\\'b'", "19 {|'a\\\\'} rest(b')"},
    {"a backslash escapes nothing in quotation marks", "\"a\\\"b\"", "19 {|\"a\\\\\"} rest(b\")"},
    {"the input ends in a bare value", "x", "end 16"},
    {"the input ends after white space", " ", "end 16"},
    {"the input ends at once", "", "end 16 {|}"},
    {"the input ends in apostrophes", " 'abc", "end 16 { |}"},
    {"the input ends in quotation marks", "\"abc", "end 16 {|}"},
};

constexpr RecognizerRow ESCAPE_RUNS[] = {
    {"a mark inside a run is content", "\"a\033$B\"\033(Bb\">", "19 {|\"a\\x1B$B\"\\x1B(Bb\"} rest(>)", "iso2022"},
    {"two runs", " \"\033$B\"\033(B\033$B>\033(J\"", "19 { |\"\\x1B$B\"\\x1B(B\\x1B$B>\\x1B(J\"}", "iso2022"},
    {"without the option a run is no run", "\"a\033$B\"\033(Bb\">", "19 {|\"a\\x1B$B\"} rest(\\x1B(Bb\">)"},
    {"a value in apostrophes has no runs", "'a\033$B'\033(Bb'>", "19 {|'a\\x1B$B'} rest(\\x1B(Bb'>)", "iso2022"},
    {"a bare value has no runs", "a\033$B>\033(B ", "19 {|a\\x1B$B} rest(>\\x1B(B )", "iso2022"},
    {"a backslash before ESC means nothing", "\"\\\033$B\"\033(B\">", "19 {|\"\\\\\\x1B$B\"\\x1B(B\"} rest(>)",
     "iso2022"},
    {"the input ends after a run", "\"\033$B\"\033(B", "end 16 {|}", "iso2022"},
};

constexpr StateRow STATES[] = {{"", 0}, {" ", 0}, {"x", 2}, {" x", 2}, {"'", 3}, {" '", 3}, {"\"", 4}, {"\"'", 4}};

constexpr RecognizerCall CALLS_AFTER_RUNS[] = {
    {NEW_RECORD, "iso2022", " \"\033$B\"\033(B\">", {0, 9}, "{ |}", "state=4 value="},
    {CONTINUED, "", "\">", {19, 1}, "{ |\"\\x1B$B\"\\x1B(B\"}"},
};

constexpr RecognizerCall ANY_STATE[] = {
    {NEW_RECORD, "state=1", "x>", {19, 1}, "{|x}", "quote=0"},
    {NEW_RECORD, "state=1", " x>", {19, 0}, "{|}", "quote=0"},
    {NEW_RECORD, "state=1", "'x'", {19, 3}, "{|'x'}", "quote=1"},
    {NEW_RECORD, "state=1", ">", {19, 0}, "{|}", "quote=0"},
    {NEW_RECORD, "state=2", "'x'>", {19, 3}, "{|'x'}", "quote=0"},
    {NEW_RECORD, "state=2", " ", {19, 0}, "{|}", "quote=0"},
    {NEW_RECORD, "state=3", "x\"'y", {19, 3}, "{|'x\"'}", "quote=1"},
    {NEW_RECORD, "state=4", "x'\"y", {19, 3}, "{|\"x'\"}", "quote=2"},
};

/// Members begin with `BeginParse`, and where their states are entered.
constexpr RecognizerCall MEMBERS[] = {
    {NEW_RECORD, "iso2022", "  ", {0, 2}, "{|}"},
    {BEGUN_AGAIN, "state=0", " x>", {19, 2}, "{ |x}"},
    {NEW_RECORD, "iso2022", "'abc", {0, 4}, "{|}"},
    {BEGUN_AGAIN, "state=3", "x'", {19, 2}, "{|'x'}"},
    {NEW_RECORD, "iso2022", "\"abc", {0, 4}, "{|}"},
    {BEGUN_AGAIN, "state=4", "x\"", {19, 2}, "{|\"x\"}"},
    {NEW_RECORD, "iso2022", "\"\033$B", {0, 4}, "{|}"},
    {BEGUN_AGAIN, "state=4", "x\"", {19, 2}, "{|\"x\"}"},
    {NEW_RECORD, "", "'abc", {0, 4}, "{|}"},
    {CONTINUED, "state=1", "'x'", {19, 3}, "{|'x'}"},
    {NEW_RECORD, "", "\"abc", {0, 4}, "{|}"},
    {CONTINUED, "state=1", "\"x\"", {19, 3}, "{|\"x\"}"},
};

/// All but a bare value, which is appended to, replaces what the record held before.
constexpr RecognizerCall HELD_BEFORE[] = {
    {NEW_RECORD, "state=0 prefix=before value=before quote=2", " 'x'", {19, 4}, "{ |'x'}"},
    {NEW_RECORD, "state=0 prefix=before value=before quote=2", " \"x\"", {19, 4}, "{ |\"x\"}"},
    {NEW_RECORD, "state=1 prefix=before value=before quote=2", "'x'", {19, 3}, "{before|'x'}"},
    {NEW_RECORD, "state=1 prefix=before value=before quote=2", "x>", {19, 1}, "{before|beforex}"},
};

constexpr RecognizerRow NARROW_SPACES[] = {
    {"a byte from 128 up is no white space", "\xA0x\x85>", "19 {|\\xA0x\\x85} rest(>)"},
};

constexpr RecognizerRow WIDE_SPACES_TOO[] = {
    {"U+00A0 before and U+0085 after", "\\u00A0x\\u0085>", "19 {\\u00A0|x} rest(\\u0085>)"},
    {"low bytes of quotes, \">\" and \"<\" are no such characters", "\\u3000x\\u0127\\u013E\\u013C\\u2003",
     "19 {\\u3000|x\\u0127\\u013E\\u013C} rest(\\u2003)"},
};

const auto SUITE = RecognizerSuite<HTML::TokenSimpleParser>("TokenTest")
                       .Rows("Values", VALUES)
                       .Rows("EscapeRuns", ESCAPE_RUNS)
                       .States(STATES)
                       .Calls("ACallEndsAfterAnEscapeRunWithInputLeft", CALLS_AFTER_RUNS)
                       .Calls("ARecordMayBeInAnyState", ANY_STATE)
                       .Calls("MembersBeginWithTheirStates", MEMBERS)
                       .Calls("WhatTheRecordHeldBeforeIsReplaced", HELD_BEFORE)
                       .NarrowRows("NoWhiteSpaceIsBeyondAscii", NARROW_SPACES)
                       .WideRows("WhiteSpaceReachesBeyondAscii", WIDE_SPACES_TOO);

}  // namespace
}  // namespace Kestra::Test
