#include "html/tags/ExternTagFreeStyleSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

// Inputs begin after the target of an instruction.

constexpr RecognizerRow ENDS[] = {
    {"\"?>\" ends an instruction", " a ?>", "19 text( a ?>)"},
    {"the rest of the piece is left", " a?>b?>", "19 text( a?>) rest(b?>)"},
    {"a bare \">\" ends it too", " a > b", "19 text( a >) rest( b)"},
    {"\"?>\" at once", "?>", "19 text(?>)"},
    {"\">\" at once", ">", "19 text(>)"},
    {"\"?\" in the middle is content", " a?b ?>", "19 text( a?b ?>)"},
    {"\"?\" and white space before \">\"", "a? >", "19 text(a? >)"},
    {"a run of \"?\" is content but for its last", "a??\?>", "19 text(a??\?>)"},
    {"\"?\" and a quote", "?'>'?>", "19 text(?'>'?>)"},
    {"\"?\" and a comment", "?/*>*/?>", "19 text(?/*>*/?>)"},
    {"\"<\" is content", "a<b><?", "19 text(a<b>) rest(<?)"},
    {"line ends are content and count", "a\r\n\nb\n?>\n", "19 text(a\\r\\n\\nb\\n?>) rest(\\n)"},
    {"a NUL is content", "a\0?\0>"sv, "19 text(a\\x00?\\x00>)"},
    {"a backslash outside of quotes is content", "a\\?>", "19 text(a\\\\?>)"},
    {"a backslash before a quote does not escape it", "\\'>'>", "19 text(\\\\'>'>)"},
    {"characters from 128 up are content", "\xBF\xBE\xA7\xAF?>", "19 text(\\xBF\\xBE\\xA7\\xAF?>)"},
};

constexpr RecognizerRow QUOTED_STRINGS[] = {
    {"\"?>\" in apostrophes does not end it", " echo '?>'; ?>", "19 text( echo '?>'; ?>)"},
    {"\"?>\" in quotation marks does not end it", " echo \"?>\"; ?>", "19 text( echo \"?>\"; ?>)"},
    {"empty strings", "''\"\">", "19 text(''\"\">)"},
    {"the other quote is content", "'\">'\"'>\"?>", "19 text('\">'\"'>\"?>)"},
    {"comments do not begin in strings", "'/*'>", "19 text('/*'>)"},
    {"line comments do not begin in strings", "\"//\">", "19 text(\"//\">)"},
    {"line ends in strings", "'\n>\n'\n>", "19 text('\\n>\\n'\\n>)"},
    {"an escaped apostrophe is content", "'a\\'>'>", "19 text('a\\\\'>'>)"},
    {"an escaped quotation mark is content", "\"a\\\">\">", "19 text(\"a\\\\\">\">)"},
    {"an escaped backslash escapes nothing", "'a\\\\'>'", "19 text('a\\\\\\\\'>) rest(')"},
    {"escapes hold in every string in apostrophes", "'a'\"b\"'c\\'>'>", "19 text('a'\"b\"'c\\\\'>'>)"},
    {"escapes hold in every string in quotation marks", "\"a\"'b'\"c\\\">\">", "19 text(\"a\"'b'\"c\\\\\">\">)"},
    {"a backslash at the end of one string is not one in the next", "'a\\\\''b'>", "19 text('a\\\\\\\\''b'>)"},
    {"ESC is content", "\"\033$B\"'\033$B'>", "19 text(\"\\x1B$B\"'\\x1B$B'>)"},
    {"strings one after the other", "'a''b'\"c\"\"d\"e>", "19 text('a''b'\"c\"\"d\"e>)"},
};

constexpr RecognizerRow COMMENTS[] = {
    {"a block comment hides \">\"", " /* > */ ?>", "19 text( /* > */ ?>)"},
    {"a block comment hides quotes and \"?>\"", "/*'?>\"*/>", "19 text(/*'?>\"*/>)"},
    {"a block comment may be empty", "/**/>", "19 text(/**/>)"},
    {"a \"*\" that no \"/\" follows ends it", "/* a * b > */", "19 text(/* a * b >) rest( */)"},
    {"after such a \"*\" quotes are quotes", "/* * '>' >", "19 text(/* * '>' >)"},
    {"the second of two stars is free text", "/***/>", "19 text(/***/>)"},
    {"the \"/\" after two stars may begin a comment", "/***/*>*/>", "19 text(/***/*>*/>)"},
    {"the \"/\" after two stars may begin a line comment", "/***//>\n>", "19 text(/***//>\\n>)"},
    {"\"/*/\" does not end itself", "/*/>*/>", "19 text(/*/>*/>)"},
    {"line ends in a block comment", "/*\n>\n*/\n>", "19 text(/*\\n>\\n*/\\n>)"},
    {"a line comment hides \">\" up to the line feed", "// a > ?>\n ?>", "19 text(// a > ?>\\n ?>)"},
    {"a line comment hides quotes", "//'\"\n>'", "19 text(//'\"\\n>) rest(')"},
    {"a line comment hides a block comment", "///*\n>*/", "19 text(///*\\n>) rest(*/)"},
    {"a carriage return does not end a line comment", "//\r>\r\n>", "19 text(//\\r>\\r\\n>)"},
    {"an empty line comment", "//\n>", "19 text(//\\n>)"},
    {"a single \"/\" is content", "a/b>", "19 text(a/b>)"},
    {"a \"/\" before \">\"", "a/>", "19 text(a/>)"},
    {"a \"/\" before \"?>\"", "a/?>", "19 text(a/?>)"},
    {"a \"/\" before a string", "/'>'>", "19 text(/'>'>)"},
    {"a \"/\" before a line feed", "/\n/>", "19 text(/\\n/>)"},
    {"a \"*\" outside is content", "*/>", "19 text(*/>)"},
    {"comments one after the other", "/*>*//*>*///>\n>", "19 text(/*>*//*>*///>\\n>)"},
    {"markup comments are no comments", "<!-- > -->", "19 text(<!-- >) rest( -->)"},
};

constexpr RecognizerRow OPEN_INSTRUCTIONS[] = {
    {"the input ends at once", "", "end 16 text()"},
    {"the input ends in free text", " a", "end 16 text( a)"},
    {"the input ends after \"?\", which is not in the text", " a?", "end 16 text( a)"},
    {"the input ends after \"/\", which is not in the text", " a/", "end 16 text( a)"},
    {"the input ends in a string, which is not in the text", " a'b>", "end 16 text( a)"},
    {"the input ends in a string in quotation marks", " a\"b>", "end 16 text( a)"},
    {"the input ends in a block comment", "/* a>", "end 16 text(/* a>)"},
    {"the input ends after \"*\", which is not in the text", "/* a*", "end 16 text(/* a)"},
    {"the input ends in a line comment", "// a>", "end 16 text(// a>)"},
};

constexpr RecognizerRow ESCAPE_RUNS[] = {
    {"a run hides the closing quotation mark", "\"\033$B\">\033(B\">x", "19 text(\"\\x1B$B\">\\x1B(B\">) rest(x)"},
    {"in every string", "\"a\"\"\033$B\">\033(B\">x", "19 text(\"a\"\"\\x1B$B\">\\x1B(B\">) rest(x)"},
    {"after a string in apostrophes", "'a' \"\033$B\">\033(B\">x", "19 text('a' \"\\x1B$B\">\\x1B(B\">) rest(x)"},
    {"two runs in one string", "\"\033$B\"\033(B\033$B\"\033(B\">", "19 text(\"\\x1B$B\"\\x1B(B\\x1B$B\"\\x1B(B\">)"},
    {"characters after a run", "\"\033$B\"\033(Ba\">", "19 text(\"\\x1B$B\"\\x1B(Ba\">)"},
    {"a backslash before ESC makes it ordinary", "\"\\\033$B\">x", "19 text(\"\\\\\\x1B$B\">) rest(x)"},
    {"strings in apostrophes have no runs", "'\033$B'>\033(B'", "19 text('\\x1B$B'>) rest(\\x1B(B')"},
    {"free text has no runs", "\033$B>", "19 text(\\x1B$B>)"},
    {"comments have no runs", "/*\033$B*/>", "19 text(/*\\x1B$B*/>)"},
    {"the input ends inside a run", "a\"\033$B\">", "end 16 text(a)"},
    {"without the option there are none", "\"\033$B\">\033(B\">x", "19 text(\"\\x1B$B\">) rest(\\x1B(B\">x)",
     "iso2022=false"},
};

constexpr RecognizerRow ANY_STATE[] = {
    {"only a \"?\" read in this state is pending", ">x", "19 text(>) rest(x)", "state=0 questionPending"},
    {"state 0, a \"?\" pending", "a>x", "19 text(a>) rest(x)", "state=0 questionPending"},
    {"state 1", "*>*/>x", "19 text(/*>*/>) rest(x)", "state=1"},
    {"state 1", "/>\n>x", "19 text(//>\\n>) rest(x)", "state=1"},
    {"state 1", ">x", "19 text(/>) rest(x)", "state=1"},
    {"state 1", "a>x", "19 text(/a>) rest(x)", "state=1"},
    {"state 1", "?>x", "19 text(/?>) rest(x)", "state=1"},
    {"state 2", ">*/>x", "19 text(>*/>) rest(x)", "state=2"},
    {"state 3", "/>x", "19 text(*/>) rest(x)", "state=3"},
    {"state 3", "a>x", "19 text(*a>) rest(x)", "state=3"},
    {"state 3", "*/>x", "19 text(**/>) rest(x)", "state=3"},
    {"state 3", ">x", "19 text(*>) rest(x)", "state=3"},
    {"state 4", ">\n>x", "19 text(>\\n>) rest(x)", "state=4"},
    {"state 5", "a'>x", "19 text('a'>) rest(x)", "state=5"},
    {"escapes are allowed from the beginning", "\\'a'>x", "19 text('\\\\'a'>) rest(x)", "state=5"},
    {"state 6", "a\">x", "19 text(\"a\">) rest(x)", "state=6"},
    {"state 6", "\\\"a\">x", "19 text(\"\\\\\"a\">) rest(x)", "state=6"},
    {"state 7", ">x", "19 text(>) rest(x)", "state=7"},
    {"state 7, a \"?\" pending", ">x", "19 text(?>) rest(x)", "state=7 questionPending"},
    {"state 7", "a>x", "19 text(a>) rest(x)", "state=7"},
    {"state 7, a \"?\" pending", "a>x", "19 text(?a>) rest(x)", "state=7 questionPending"},
    {"state 7", "?>x", "19 text(?>) rest(x)", "state=7"},
    {"state 7, a \"?\" pending", "?>x", "19 text(?\?>) rest(x)", "state=7 questionPending"},
    {"state 7, a \"?\" pending", "'>'>x", "19 text(?'>'>) rest(x)", "state=7 questionPending"},
};

constexpr RecognizerRow SEEDED_TEXTS[] = {
    {"the text goes on", " 'a' ?>", "19 text(<?php 'a' ?>)"},
    {"even if the input ends", " a?", "end 16 text(<?php a)"},
};

constexpr StateRow STATES[] = {{"", 0},       {"a", 0},      {"a/", 1},     {"a/b", 0},  {"a/*b", 2},   {"a/*b*", 3},
                               {"a/*b*c", 0}, {"a/*b**", 0}, {"a/*b*/", 0}, {"a//b", 4}, {"a//b\n", 0}, {"a'b", 5},
                               {"a'b'", 0},   {"a\"b", 6},   {"a\"b\"", 0}, {"a?", 7},   {"a?b", 0},    {"a??", 7}};

/// Members begin with `BeginParse`, and a string at its quote.
constexpr RecognizerCall MEMBERS[] = {
    {NEW_RECORD, "", "a'b", {0, 3}, "text(a)"},    {BEGUN_AGAIN, "state=5", "c'>", {19, 3}, "text('c'>)"},
    {NEW_RECORD, "", "a'b\\", {0, 4}, "text(a)"},  {BEGUN_AGAIN, "state=5", "'>", {19, 2}, "text(''>)"},
    {NEW_RECORD, "", "a\"b", {0, 3}, "text(a)"},   {BEGUN_AGAIN, "state=6", "c\">", {19, 3}, "text(\"c\">)"},
    {NEW_RECORD, "", "a\"b\\", {0, 4}, "text(a)"}, {BEGUN_AGAIN, "state=6", "\">", {19, 2}, "text(\"\">)"},
    {NEW_RECORD, "", "'b\\", {0, 3}, "text()"},    {CONTINUED, "state=0", "''>", {19, 3}, "text(''>)"},
    {NEW_RECORD, "", "\"b\\", {0, 3}, "text()"},   {CONTINUED, "state=0", "\"\">", {19, 3}, "text(\"\">)"},
};

constexpr RecognizerCall CALLS_OF_END_PARSE[] = {
    {AT_END, "state=0 questionPending text=t iso2022", "", {16, 0}, "text(t)", "state=0 questionPending iso2022"},
    {AT_END, "state=1 questionPending text=t iso2022", "", {16, 0}, "text(t)", "state=1 questionPending iso2022"},
    {AT_END, "state=2 questionPending text=t iso2022", "", {16, 0}, "text(t)", "state=2 questionPending iso2022"},
    {AT_END, "state=3 questionPending text=t iso2022", "", {16, 0}, "text(t)", "state=3 questionPending iso2022"},
    {AT_END, "state=4 questionPending text=t iso2022", "", {16, 0}, "text(t)", "state=4 questionPending iso2022"},
    {AT_END, "state=5 questionPending text=t iso2022", "", {16, 0}, "text(t)", "state=5 questionPending iso2022"},
    {AT_END, "state=6 questionPending text=t iso2022", "", {16, 0}, "text(t)", "state=6 questionPending iso2022"},
    {AT_END, "state=7 questionPending text=t iso2022", "", {16, 0}, "text(t)", "state=7 questionPending iso2022"},
};

constexpr LongRow LONG_PARTS[] = {
    {"@'@'\"@\"/*@*///@\n@>", "xxxxx?", "19 text(@'@'\"@\"/*@*///@\\n@>)", false},
};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low bytes are those of \"?\", \">\", the quotes, \"/\", \"*\" and a line feed",
     "\\u013F\\u013E\\u0127\\u0122\\u012F*/\\u012A//\\u010A>\\n>",
     "19 text(\\u013F\\u013E\\u0127\\u0122\\u012F*/\\u012A//\\u010A>\\n>)"},
    {"after \"?\" and in a block comment", "?\\u013E/*\\u012A/*\\u012F>", "19 text(?\\u013E/*\\u012A/*\\u012F>)"},
};

struct PendingRow {
    std::string_view input;
    bool isPending;
    std::string_view record;
};

constexpr PendingRow PENDING_MARKS[] = {
    {"a", false, "text(a)"},       {"a?", true, "text(a)"},    {"a?b", false, "text(a?b)"}, {"a??", true, "text(a?)"},
    {"a??b", false, "text(a??b)"}, {"a?'", false, "text(a?)"}, {"a?/", false, "text(a?)"},
};

template <typename Flavour>
void CheckPendingMarks() {
    for (const PendingRow& row : PENDING_MARKS) {
        SCOPED_TRACE(row.input);
        HTML::ExternTagFreeStyleSimpleParser<typename Flavour::C, typename Flavour::S> parser;
        HTML::ExternTagFreeStyleSimpleParserData<typename Flavour::C, typename Flavour::S> data;
        parser.BeginParse(&data);
        // One character a call, as a call may stop after a change of state.
        for (std::size_t i = 0; i < row.input.size(); ++i) {
            CallOutcome outcome;
            for (int calls = 0; calls < 8 && outcome == CallOutcome{}; ++calls)
                outcome = ParseOnce(&parser, &data, row.input.substr(i, 1));
            EXPECT_EQ(outcome, (CallOutcome{0, 1}));
        }
        EXPECT_EQ(data.questionPending, row.isPending);
        EXPECT_EQ(Dump(data), row.record);
    }
}

const auto SUITE =
    RecognizerSuite<HTML::ExternTagFreeStyleSimpleParser>("ExternTagFreeStyleTest")
        .Rows("Ends", ENDS)
        .Rows("QuotedStrings", QUOTED_STRINGS)
        .Rows("Comments", COMMENTS)
        .Rows("OpenInstructions", OPEN_INSTRUCTIONS)
        .Rows("EscapeRuns", ESCAPE_RUNS, "iso2022")
        .Rows("ARecordMayBeInAnyState", ANY_STATE)
        .Rows("TheOwnerMaySeedTheText", SEEDED_TEXTS, "text=<?php")
        .States(STATES)
        .Calls("MembersBeginWithTheirStates", MEMBERS)
        .Calls("EndParseLeavesTheRecordAsItIs", CALLS_OF_END_PARSE)
        .LongInputs(LONG_PARTS)
        .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS)
        .Test("APendingQuestionMarkIsNotYetInTheText", []<typename Flavour>() { CheckPendingMarks<Flavour>(); });

}  // namespace
}  // namespace Kestra::Test
