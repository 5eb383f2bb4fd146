#include "html/text/CPPCommentSimpleParser.h"

#include "tests/support/RecognizerSuite.h"

namespace Kestra::Test {
namespace {

// Inputs begin after the "//".

constexpr RecognizerRow COMMENTS[] = {
    {"a comment ends before the line feed", " a\nb", "19 text( a) rest(\\nb)"},
    {"the line feed may be the last character", " a\n", "19 text( a) rest(\\n)"},
    {"a comment may be empty", "\n", "19 text() rest(\\n)"},
    {"a carriage return before the line feed is content", " a\r\n", "19 text( a\\r) rest(\\n)"},
    {"a carriage return alone ends nothing", "a\rb\n", "19 text(a\\rb) rest(\\n)"},
    {"other white space ends nothing", "a \t\v\fb\n", "19 text(a \\t\\x0B\\x0Cb) rest(\\n)"},
    {"slashes, stars and quotes are content", "// /* */ ' \"\n", "19 text(// /* */ ' \") rest(\\n)"},
    {"a backslash does not continue the line", "a\\\nb", "19 text(a\\\\) rest(\\nb)"},
    {"\">\" and \"-->\" are content", "-->\n", "19 text(-->) rest(\\n)"},
    {"a NUL is content", "a\0b\n"sv, "19 text(a\\x00b) rest(\\n)"},
    {"ESC and what follows are content", "\033$B\n", "19 text(\\x1B$B) rest(\\n)"},
    {"characters from 128 up are content", "\x85\x8A\xBC\n", "19 text(\\x85\\x8A\\xBC) rest(\\n)"},
    {"the input ends inside the comment", " a", "end 16 text( a)"},
    {"the input ends at once", "", "end 16 text()"},
    {"the input ends after a carriage return", " a\r", "end 16 text( a\\r)"},
};

constexpr RecognizerRow TAGS[] = {
    {"an end tag", " a </b> c\n", "19 text( a </b> c) rest(\\n)"},
    {"the end tag of the script", "</script>\n", "19 text(</script>) rest(\\n)"},
    {"a start tag", "<p a='b'>\n", "19 text(<p a='b'>) rest(\\n)"},
    {"a declaration", "<!DOCTYPE html>\n", "19 text(<!DOCTYPE html>) rest(\\n)"},
    {"a processing instruction", "<?php ?>\n", "19 text(<?php ?>) rest(\\n)"},
    {"one after the other", "<a></a><?b?><!c>\n", "19 text(<a></a><?b?><!c>) rest(\\n)"},
    {"\"<\" twice", "<<p\n", "19 text(<<p) rest(\\n)"},
    {"\"<!\" and \"<\"", "<!<p\n", "19 text(<!<p) rest(\\n)"},
    {"\"</\" and \"<\"", "</<?<\n", "19 text(</<?<) rest(\\n)"},
    {"a line feed directly after \"<\"", "a<\n", "19 text(a<) rest(\\n)"},
    {"a line feed directly after \"</\"", "a</\n", "19 text(a</) rest(\\n)"},
    {"a line feed directly after \"<!\"", "a<!\n", "19 text(a<!) rest(\\n)"},
    {"a line feed directly after \"<?\"", "a<?\n", "19 text(a<?) rest(\\n)"},
    {"\"<!]\" and \"<!>\"", "<!]<!>\n", "19 text(<!]<!>) rest(\\n)"},
    {"white space, a digit, a NUL after \"<\"", "< <1<\0\n"sv, "19 text(< <1<\\x00) rest(\\n)"},
    {"the input ends after a tag", "</b>", "end 16 text(</b>)"},
    {"the input ends after \"<\", which is lost", "a<", "end 16 text(a)"},
    {"the input ends after \"</\"", "a</", "end 16 text(a</)"},
    {"the input ends after \"<?\"", "a<?", "end 16 text(a<?)"},
    {"the input ends after \"<!\", which is lost", "a<!", "end 16 text(a)"},
};

constexpr RecognizerRow SECTIONS[] = {
    {"a markup comment", " a <!-- b", "19 text( a ) next(CommentTagSimpleParser) rest( b)"},
    {"its opener may be the last thing", "<!--", "19 text() next(CommentTagSimpleParser)"},
    {"its end is the comment recognizer's", "<!-->\n", "19 text() next(CommentTagSimpleParser) rest(>\\n)"},
    {"a third hyphen is left", "a<!---\n", "19 text(a) next(CommentTagSimpleParser) rest(-\\n)"},
    {"a CDATA section", " a <![CDATA[", "19 text( a ) next(CDATATagSimpleParser) keyword(CDATA) rest([)"},
    {"its keyword stays as written", "<![cDaTa[x", "19 text() next(CDATATagSimpleParser) keyword(cDaTa) rest([x)"},
    {"a CDATA section without its bracket", "<![CDATA\n",
     "19 text() next(CDATATagSimpleParser) keyword(CDATA) rest(\\n)"},
    {"a conditional section", "a<![if !IE]>", "19 text(a) next(ConditionalTagSimpleParser) keyword(if) rest( !IE]>)"},
    {"its end", "a<![EndIf]>", "19 text(a) next(ConditionalTagSimpleParser) keyword(EndIf) rest(]>)"},
    {"after tags", "<a></a><!b<!--c", "19 text(<a></a><!b) next(CommentTagSimpleParser) rest(c)"},
    {"after \"<\"", "<<!--c", "19 text(<) next(CommentTagSimpleParser) rest(c)"},
    {"after \"<!\"", "<!<![if ", "19 text(<!) next(ConditionalTagSimpleParser) keyword(if) rest( )"},
    {"the input ends in the opener of a comment", "a<!-", "end 16 text(a)"},
    {"the input ends after \"<![\"", "a<![", "end 16 text(a)"},
    {"the input ends in a keyword", "a<![CDATA", "end 16 text(a)"},
};

constexpr RecognizerRow MALFORMED_CONSTRUCTS[] = {
    {"\"<!-\" without a second hyphen", " a <!-x", "11 text( a ) rest(x)"},
    {"\"<!->\"", "<!->\n", "11 text() rest(>\\n)"},
    {"\"<!-\" before the line feed", "a<!-\n", "11 text(a) rest(\\n)"},
    {"\"<![\" and an unknown word", "a<![x[", "11 text(a) rest([)"},
    {"\"<![\" without a word", "a<![[", "11 text(a) rest([)"},
    {"\"<![\" before the line feed", "a<![\n", "11 text(a) rest(\\n)"},
    {"the beginning of a keyword", "a<![CDAT\n", "11 text(a) rest(\\n)"},
    {"after tags", "<a></a><!-b", "11 text(<a></a>) rest(b)"},
};

constexpr StateRow STATES[] = {{"", 0},    {"a", 0},   {"a<", 1},  {"a<!", 1},  {"a<!-", 1},  {"a<![CDA", 1},
                               {"a</", 0}, {"a<?", 0}, {"a<p", 0}, {"a<!D", 0}, {"a<!-x", 1}, {"a<![x[", 1}};

constexpr RecognizerCall ANY_STATE[] = {
    {NEW_RECORD, "state=1", "/b\n", {19, 2}, "text(</b)"},
    {NEW_RECORD, "state=1", "!--b", {19, 3}, "text() next(CommentTagSimpleParser)"},
    {NEW_RECORD, "state=1", "!-b", {11, 2}, "text()"},
    {NEW_RECORD, "state=1", "\n", {19, 0}, "text(<)"},
};

/// The member begins with `BeginParse`, and at the opener of a construct.
constexpr RecognizerCall MEMBER[] = {
    {NEW_RECORD, "", "a<![CDA", {0, 7}, "text(a)"},
    {BEGUN_AGAIN, "state=1", "if \n", {19, 3}, "text(<if )"},
    {NEW_RECORD, "", "a<![CDA", {0, 7}, "text(a)"},
    {CONTINUED, "state=0", "b<if \n", {19, 5}, "text(ab<if )"},
};

constexpr RecognizerCall ENDS[] = {
    {AT_END, "state=0 text=t keyword=k nextParserName=n", "", {16, 0}, "text(t) next(n) keyword(k)", "state=0"},
    {AT_END, "state=1 text=t keyword=k nextParserName=n", "", {16, 0}, "text(t) next(n) keyword(k)", "state=1"},
};

constexpr LongRow LONG_BODIES[] = {
    {"@\n", "x", "19 text(@) rest(\\n)"},
    {"@\n", "<", "19 text(@) rest(\\n)"},
    {"@\n", "\r", "19 text(@) rest(\\n)"},
};

constexpr RecognizerRow WIDE_UNITS[] = {
    {"the low or the high bytes are those of a line feed, \"<\", \"!\" and \"-\"",
     "\\u010A\\u0A00\\u013C!--<\\u0121--\\n", "19 text(\\u010A\\u0A00\\u013C!--<\\u0121--) rest(\\n)"},
    {"after \"<!\"", "<!\\u012D-\\n", "19 text(<!\\u012D-) rest(\\n)"},
    {"after \"<!-\"", "<!-\\u012D", "11 text() rest(\\u012D)"},
};

const auto SUITE = RecognizerSuite<HTML::CPPCommentSimpleParser>("CPPCommentTest")
                       .Rows("Comments", COMMENTS)
                       .Rows("TagsAreContent", TAGS)
                       .Rows("SectionsTakeOver", SECTIONS)
                       .Rows("MalformedConstructs", MALFORMED_CONSTRUCTS)
                       .States(STATES)
                       .Calls("ARecordMayBeInAnyState", ANY_STATE)
                       .Calls("TheMemberBeginsWithAConstruct", MEMBER)
                       .Calls("EndParseLeavesTheRecordAsItIs", ENDS)
                       .LongInputs(LONG_BODIES)
                       .WideRows("WideUnitsAreComparedWhole", WIDE_UNITS);

}  // namespace
}  // namespace Kestra::Test
