#include "html/text/CDATATagSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

// Inputs begin after the "<![CDATA".

constexpr RecognizerRow SECTIONS[] = {
    {"a section ends after \"]]>\" and keeps its \"[\"", "[x]]>", "19 cdata(CDATA|[x)"},
    {"the rest of the piece is left", "[x]]>y]]>", "19 cdata(CDATA|[x) rest(y]]>)"},
    {"a section may be empty", "[]]>", "19 cdata(CDATA|[)"},
    {"a section need not begin with \"[\"", " x]]>", "19 cdata(CDATA| x)"},
    {"a section may have nothing at all", "]]>", "19 cdata(CDATA|)"},
    {"a single \"]\" is content", "[a]b]]>", "19 cdata(CDATA|[a]b)"},
    {"\"]>\" is content", "[a]>b]]>", "19 cdata(CDATA|[a]>b)"},
    {"\"]\" and white space are content", "[a] ]b]]>", "19 cdata(CDATA|[a] ]b)"},
    {"markup is content", "[<p a=']'>--></p>]]>", "19 cdata(CDATA|[<p a=']'>--></p>)"},
    {"line ends are content and count", "[a\r\n\n]]>\n", "19 cdata(CDATA|[a\\r\\n\\n) rest(\\n)"},
    {"a NUL is content", "[a\0]\0]]>"sv, "19 cdata(CDATA|[a\\x00]\\x00)"},
    {"ESC and what follows are content", "[\033$B]]>", "19 cdata(CDATA|[\\x1B$B)"},
    {"characters from 128 up are content", "[\xDD\xBE]]>", "19 cdata(CDATA|[\\xDD\\xBE)"},
};

/// Two brackets end a section, whatever follows.
constexpr RecognizerRow TWO_BRACKETS[] = {
    {"a letter is left unread", "[x]]y", "19 cdata(CDATA|[x]], open) rest(y)"},
    {"a third bracket is left unread, and the section is open", "[x]]]>", "19 cdata(CDATA|[x]], open) rest(]>)"},
    {"no run of brackets is absorbed", "[x]]]]]>", "19 cdata(CDATA|[x]], open) rest(]]]>)"},
    {"white space is left unread", "[x]] >", "19 cdata(CDATA|[x]], open) rest( >)"},
    {"a line feed is left unread", "[x]]\n>", "19 cdata(CDATA|[x]], open) rest(\\n>)"},
    {"\"<\" is left unread", "[x]]<p>", "19 cdata(CDATA|[x]], open) rest(<p>)"},
    {"before any content", "]]y", "19 cdata(CDATA|]], open) rest(y)"},
    {"after a single bracket that was content", "[a]b]]c", "19 cdata(CDATA|[a]b]], open) rest(c)"},
    {"a NUL is left unread", "[]]\0>"sv, "19 cdata(CDATA|[]], open) rest(\\x00>)"},
};

constexpr RecognizerRow OPEN_SECTIONS[] = {
    {"the input ends in the body", "[x", "end 19 cdata(CDATA|[x, open)"},
    {"the input ends at once", "", "end 19 cdata(CDATA|, open)"},
    {"a last bracket is kept", "[x]", "end 19 cdata(CDATA|[x], open)"},
    {"two last brackets are kept", "[x]]", "end 19 cdata(CDATA|[x]], open)"},
    {"nothing but a bracket", "]", "end 19 cdata(CDATA|], open)"},
    {"nothing but brackets", "]]", "end 19 cdata(CDATA|]], open)"},
    {"a bracket in the middle is not kept twice", "[a]b>", "end 19 cdata(CDATA|[a]b>, open)"},
};

constexpr StateRow STATES[] = {{"", 0}, {"[x", 0}, {"[x]", 1}, {"[x]]", 2}, {"[x]y", 0}};

constexpr RecognizerCall KEYWORDS[] = {
    {NEW_RECORD, "keyword=CDATA", "[x]]>", {19, 5}, "cdata(CDATA|[x)"},
    {NEW_RECORD, "keyword=cdata", "[x]]>", {19, 5}, "cdata(cdata|[x)"},
    {NEW_RECORD, "keyword=", "[x]]>", {19, 5}, "cdata(|[x)"},
};

constexpr RecognizerCall PENDING_BRACKETS[] = {
    {NEW_RECORD, "", "[x]", {0, 3}, "cdata(|[x)"},
    {NEW_RECORD, "", "[x]]", {0, 4}, "cdata(|[x)"},
};

constexpr RecognizerCall ANY_STATE[] = {
    {NEW_RECORD, "state=1", "]>", {19, 2}, "cdata(|)"},
    {NEW_RECORD, "state=1", ">", {0, 1}, "cdata(|]>)"},
    {NEW_RECORD, "state=2", ">x", {19, 1}, "cdata(|)"},
    {NEW_RECORD, "state=2", "x", {19, 0}, "cdata(|]], open)"},
    {NEW_RECORD, "state=2", "]>", {19, 0}, "cdata(|]], open)"},
};

constexpr RecognizerCall ENDS[] = {
    {AT_END, "text=[a state=0", "", {19, 0}, "cdata(|[a, open)"},
    {AT_END, "text=[a state=1", "", {19, 0}, "cdata(|[a], open)"},
    {AT_END, "text=[a state=2", "", {19, 0}, "cdata(|[a]], open)"},
    {AT_END, "text=[a state=3", "", {19, 0}, "cdata(|[a, open)"},
};

constexpr LongRow LONG_BODIES[] = {{"@]]>", "x", "19 cdata(|@)"}};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low or the high bytes are those of \"]\" and \">\"", "[\\u015D\\u5D00]\\u015D>]]>",
     "19 cdata(|[\\u015D\\u5D00]\\u015D>)"},
    {"after two brackets", "[]]\\u013E", "19 cdata(|[]], open) rest(\\u013E)"},
};

const auto SUITE = RecognizerSuite<HTML::CDATATagSimpleParser>("CDATATagTest")
                       .Rows("Sections", SECTIONS, "keyword=CDATA")
                       .Rows("TwoBracketsEndASectionWhateverFollows", TWO_BRACKETS, "keyword=CDATA")
                       .Rows("OpenSections", OPEN_SECTIONS, "keyword=CDATA")
                       .States(STATES)
                       .Calls("TheKeywordIsTheOwners", KEYWORDS)
                       .Calls("PendingBracketsAreNotYetInTheText", PENDING_BRACKETS)
                       .Calls("ARecordMayBeInAnyState", ANY_STATE)
                       .Calls("EndParseOpensTheSectionAndAppendsWhatIsPending", ENDS)
                       .LongInputs(LONG_BODIES)
                       .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS);

}  // namespace
}  // namespace Kestra::Test
