#include "html/tags/GenericTagSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

// Inputs begin after the "<".

constexpr RecognizerRow DECISIONS[] = {
    {"\"/\" is an end tag", "/a>", "19 next(EndTagSimpleParser) rest(a>)"},
    {"\"/\" decides at once", "/", "19 next(EndTagSimpleParser)"},
    {"\"?\" is an extern tag", "?xml", "19 next(ExternTagSimpleParser) rest(xml)"},
    {"\"?\" decides at once", "?", "19 next(ExternTagSimpleParser)"},
    {"a letter is a start tag", "a>", "19 next(StartTagSimpleParser) rest(a>)"},
    {"white space is a start tag", " /a", "19 next(StartTagSimpleParser) rest( /a)"},
    {"a line feed is a start tag", "\n", "19 next(StartTagSimpleParser) rest(\\n)"},
    {"\">\" is a start tag", ">", "19 next(StartTagSimpleParser) rest(>)"},
    {"\"<\" is a start tag", "<a", "19 next(StartTagSimpleParser) rest(<a)"},
    {"a digit is a start tag", "3", "19 next(StartTagSimpleParser) rest(3)"},
    {"\"-\", \"[\" and \"=\" are start tags", "-[=", "19 next(StartTagSimpleParser) rest(-[=)"},
    {"a NUL is a start tag", "\0a"sv, "19 next(StartTagSimpleParser) rest(\\x00a)"},
    {"a character from 128 up is a start tag", "\xE9", "19 next(StartTagSimpleParser) rest(\\xE9)"},
    {"\"!\" and a letter is a declaration", "!DOCTYPE", "19 next(EntityTagSimpleParser) rest(DOCTYPE)"},
    {"\"!\" and white space is a declaration", "!\nA", "19 next(EntityTagSimpleParser) rest(\\nA)"},
    {"\"!\" and \">\" is a declaration", "!>", "19 next(EntityTagSimpleParser) rest(>)"},
    {"\"!\" and \"!\" is a declaration", "!!", "19 next(EntityTagSimpleParser) rest(!)"},
    {"\"!\" and \"]\" is a declaration", "!]", "19 next(EntityTagSimpleParser) rest(])"},
    {"\"!--\" is a comment", "!--x", "19 next(CommentTagSimpleParser) rest(x)"},
    {"\"!--\" decides at once", "!--", "19 next(CommentTagSimpleParser)"},
    {"a third \"-\" is left", "!--->", "19 next(CommentTagSimpleParser) rest(->)"},
    {"\"!-\" and anything else is malformed", "!-x", "11 next() rest(x)"},
    {"\"!->\" is malformed", "!->", "11 next() rest(>)"},
    {"\"!-\" and a line feed is malformed", "!-\n", "11 next() rest(\\n)"},
    {"\"![CDATA[\" is a section", "![CDATA[x", "19 next(CDATATagSimpleParser) keyword(CDATA) rest([x)"},
    {"keywords ignore case and stay as written", "![cdata[", "19 next(CDATATagSimpleParser) keyword(cdata) rest([)"},
    {"mixed case", "![CdAtA[", "19 next(CDATATagSimpleParser) keyword(CdAtA) rest([)"},
    {"white space may follow the keyword", "![CDATA [", "19 next(CDATATagSimpleParser) keyword(CDATA) rest( [)"},
    {"any stop character may follow the keyword", "![CDATA>", "19 next(CDATATagSimpleParser) keyword(CDATA) rest(>)"},
    {"\"<\" may follow the keyword", "![CDATA<", "19 next(CDATATagSimpleParser) keyword(CDATA) rest(<)"},
    {"\"=\" may follow the keyword", "![CDATA=", "19 next(CDATATagSimpleParser) keyword(CDATA) rest(=)"},
    {"\"]\" may follow the keyword", "![CDATA]", "19 next(CDATATagSimpleParser) keyword(CDATA) rest(])"},
    {"\"![if\" is a condition", "![if IE]>", "19 next(ConditionalTagSimpleParser) keyword(if) rest( IE]>)"},
    {"\"![IF\" is a condition", "![IF\n", "19 next(ConditionalTagSimpleParser) keyword(IF) rest(\\n)"},
    {"\"![endif]\" is a condition", "![endif]>", "19 next(ConditionalTagSimpleParser) keyword(endif) rest(]>)"},
    {"\"![EndIf]\" is a condition", "![EndIf]", "19 next(ConditionalTagSimpleParser) keyword(EndIf) rest(])"},
    {"an unknown keyword is malformed", "![x[", "11 next() rest([)"},
    {"the beginning of a keyword is malformed", "![CDAT[", "11 next() rest([)"},
    {"more than a keyword is malformed", "![CDATAX[", "11 next() rest([)"},
    {"more than \"if\" is malformed", "![iff ", "11 next() rest( )"},
    {"\"/\" belongs to the keyword", "![if/ ", "11 next() rest( )"},
    {"a NUL does not end the keyword", "![CDATA\0["sv, "11 next() rest([)"},
    {"a NUL and more do not end the keyword", "![if\0x "sv, "11 next() rest( )"},
    {"an empty keyword is malformed", "![[", "11 next() rest([)"},
    {"white space before the keyword is malformed", "![ CDATA[", "11 next() rest( CDATA[)"},
    {"\"![>\" is malformed", "![>", "11 next() rest(>)"},
    {"the input ends at once", "", "end 16 next()"},
    {"the input ends after \"!\"", "!", "end 16 next()"},
    {"the input ends after \"!-\"", "!-", "end 16 next()"},
    {"the input ends after \"![\"", "![", "end 16 next()"},
    {"the input ends in the keyword", "![CDATA", "end 16 next()"},
};

constexpr StateRow STATES[] = {{"", 0}, {"!", 1}, {"!-", 2}, {"![", 3}, {"![CDATA", 3}};

constexpr RecognizerCall UNUSED_FIELDS[] = {
    {NEW_RECORD, "", "/", {19, 1}, "next(EndTagSimpleParser)", "reserved=0 text="},
    {NEW_RECORD, "", "?", {19, 1}, "next(ExternTagSimpleParser)", "reserved=0 text="},
    {NEW_RECORD, "", "a", {19, 0}, "next(StartTagSimpleParser)", "reserved=0 text="},
    {NEW_RECORD, "", "!D", {19, 1}, "next(EntityTagSimpleParser)", "reserved=0 text="},
    {NEW_RECORD, "", "!--", {19, 3}, "next(CommentTagSimpleParser)", "reserved=0 text="},
    {NEW_RECORD, "", "!-x", {11, 2}, "next()", "reserved=0 text="},
    {NEW_RECORD, "", "![CDATA[", {19, 7}, "next(CDATATagSimpleParser) keyword(CDATA)", "reserved=0 text="},
    {NEW_RECORD, "", "![if ", {19, 4}, "next(ConditionalTagSimpleParser) keyword(if)", "reserved=0 text="},
    {NEW_RECORD, "", "![x ", {11, 3}, "next()", "reserved=0 text="},
};

constexpr RecognizerCall ANY_STATE[] = {
    {NEW_RECORD, "state=1", "x", {19, 0}, "next(EntityTagSimpleParser)"},
    {NEW_RECORD, "state=1", "--", {19, 2}, "next(CommentTagSimpleParser)"},
    {NEW_RECORD, "state=2", "-x", {19, 1}, "next(CommentTagSimpleParser)"},
    {NEW_RECORD, "state=2", "x", {11, 0}, "next()"},
    {NEW_RECORD, "state=3", "if ", {19, 2}, "next(ConditionalTagSimpleParser) keyword(if)"},
};

/// The member begins with `BeginParse`, and where its state is entered.
constexpr RecognizerCall MEMBER[] = {
    {NEW_RECORD, "", "![CDA", {0, 5}, "next()"},
    {BEGUN_AGAIN, "state=3", "if ", {19, 2}, "next(ConditionalTagSimpleParser) keyword(if)"},
    {NEW_RECORD, "", "![CDA", {0, 5}, "next()"},
    {CONTINUED, "state=1", "[if ", {19, 3}, "next(ConditionalTagSimpleParser) keyword(if)"},
};

constexpr RecognizerRow NARROW_KEYWORDS[] = {
    {"narrow letters from 128 up", "![\351f ", "11 next() rest( )"},
    {"the high bit set", "![\xE9\xE6 ", "11 next() rest( )"},
    {"neighbours of letters are not folded", "![cd`t` ", "11 next() rest( )"},
};

constexpr RecognizerRow WIDE_KEYWORDS[] = {
    {"I with a dot", "![\\u0130F ", "11 next() rest( )"},
    {"i without one", "![\\u0131f ", "11 next() rest( )"},
    {"fullwidth letters", "![\\uFF29\\uFF26 ", "11 next() rest( )"},
    {"the low byte is \"a\"", "![cdat\\u0161[", "11 next() rest([)"},
    {"I with a grave accent", "![end\\u00CCf]", "11 next() rest(])"},
};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low byte is that of \"/\"", "\\u012F--", "19 next(StartTagSimpleParser) rest(\\u012F--)"},
    {"the low byte is that of \"!\"", "\\u0121--", "19 next(StartTagSimpleParser) rest(\\u0121--)"},
    {"the low byte is that of \"?\"", "\\u013F--", "19 next(StartTagSimpleParser) rest(\\u013F--)"},
    {"the low byte is that of \"-\"", "!\\u012D-", "19 next(EntityTagSimpleParser) rest(\\u012D-)"},
    {"the low byte is that of \"[\"", "!\\u015B-", "19 next(EntityTagSimpleParser) rest(\\u015B-)"},
};

const auto SUITE = RecognizerSuite<HTML::GenericTagSimpleParser>("GenericTagTest")
                       .Rows("Decisions", DECISIONS)
                       .States(STATES)
                       .Calls("TwoFieldsAreNeverUsed", UNUSED_FIELDS)
                       .Calls("ARecordMayBeInAnyState", ANY_STATE)
                       .Calls("TheMemberBeginsWithItsState", MEMBER)
                       .NarrowRows("OnlyAsciiLettersFoldInKeywords", NARROW_KEYWORDS)
                       .WideRows("OnlyAsciiLettersFoldInKeywords", WIDE_KEYWORDS)
                       .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS);

}  // namespace
}  // namespace Kestra::Test
