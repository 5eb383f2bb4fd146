#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/text/CPPCommentSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::CPPCommentSimpleParser;
using HTML::CPPCommentSimpleParserData;

template <typename Flavour>
using Parser = CPPCommentSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = CPPCommentSimpleParserData<typename Flavour::C, typename Flavour::S>;

/// A row: what follows "//", and what becomes of it.
struct Case {
    const char* note;
    std::string_view input;
    std::string_view expected;
};

template <typename Flavour>
class CPPCommentTest : public testing::Test {};

TYPED_TEST_SUITE(CPPCommentTest, Flavours);

TYPED_TEST(CPPCommentTest, Comments) {
    const Case CASES[] = {
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
    for (const Case& c : CASES)
        CheckRow<CPPCommentSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(CPPCommentTest, TagsAreContent) {
    const Case CASES[] = {
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
    for (const Case& c : CASES)
        CheckRow<CPPCommentSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(CPPCommentTest, SectionsTakeOver) {
    const Case CASES[] = {
        {"a markup comment", " a <!-- b", "19 text( a ) next(CommentTagSimpleParser) rest( b)"},
        {"its opener may be the last thing", "<!--", "19 text() next(CommentTagSimpleParser)"},
        {"its end is the comment recognizer's", "<!-->\n", "19 text() next(CommentTagSimpleParser) rest(>\\n)"},
        {"a third hyphen is left", "a<!---\n", "19 text(a) next(CommentTagSimpleParser) rest(-\\n)"},
        {"a CDATA section", " a <![CDATA[", "19 text( a ) next(CDATATagSimpleParser) keyword(CDATA) rest([)"},
        {"its keyword stays as written", "<![cDaTa[x", "19 text() next(CDATATagSimpleParser) keyword(cDaTa) rest([x)"},
        {"a CDATA section without its bracket", "<![CDATA\n",
         "19 text() next(CDATATagSimpleParser) keyword(CDATA) rest(\\n)"},
        {"a conditional section", "a<![if !IE]>",
         "19 text(a) next(ConditionalTagSimpleParser) keyword(if) rest( !IE]>)"},
        {"its end", "a<![EndIf]>", "19 text(a) next(ConditionalTagSimpleParser) keyword(EndIf) rest(]>)"},
        {"after tags", "<a></a><!b<!--c", "19 text(<a></a><!b) next(CommentTagSimpleParser) rest(c)"},
        {"after \"<\"", "<<!--c", "19 text(<) next(CommentTagSimpleParser) rest(c)"},
        {"after \"<!\"", "<!<![if ", "19 text(<!) next(ConditionalTagSimpleParser) keyword(if) rest( )"},
        {"the input ends in the opener of a comment", "a<!-", "end 16 text(a)"},
        {"the input ends after \"<![\"", "a<![", "end 16 text(a)"},
        {"the input ends in a keyword", "a<![CDATA", "end 16 text(a)"},
    };
    for (const Case& c : CASES)
        CheckRow<CPPCommentSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(CPPCommentTest, MalformedConstructs) {
    const Case CASES[] = {
        {"\"<!-\" without a second hyphen", " a <!-x", "11 text( a ) rest(x)"},
        {"\"<!->\"", "<!->\n", "11 text() rest(>\\n)"},
        {"\"<!-\" before the line feed", "a<!-\n", "11 text(a) rest(\\n)"},
        {"\"<![\" and an unknown word", "a<![x[", "11 text(a) rest([)"},
        {"\"<![\" without a word", "a<![[", "11 text(a) rest([)"},
        {"\"<![\" before the line feed", "a<![\n", "11 text(a) rest(\\n)"},
        {"the beginning of a keyword", "a<![CDAT\n", "11 text(a) rest(\\n)"},
        {"after tags", "<a></a><!-b", "11 text(<a></a>) rest(b)"},
    };
    for (const Case& c : CASES)
        CheckRow<CPPCommentSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(CPPCommentTest, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a<"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a<!"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a<!-"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a<![CDA"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a</"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a<?"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a<p"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a<!D"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a<!-x"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a<![x["), 1U);
}

TYPED_TEST(CPPCommentTest, ARecordMayStandInAnyState) {
    struct Row {
        std::uint32_t state;
        std::string_view input;
        CallOutcome outcome;
        std::string_view record;
    };
    const Row ROWS[] = {
        {1, "/b\n", {19, 2}, "text(</b)"},
        {1, "!--b", {19, 3}, "text() next(CommentTagSimpleParser)"},
        {1, "!-b", {11, 2}, "text()"},
        {1, "\n", {19, 0}, "text(<)"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(std::to_string(row.state) + " " + std::string(row.input));
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.state = row.state;
        EXPECT_EQ(ParseOnce(&parser, &data, row.input), row.outcome);
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(CPPCommentTest, BeginParseBeginsTheMemberToo) {
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, "a<![CDA"), (CallOutcome{0, 7}));
    parser.BeginParse(&data);
    data.state = 1;
    EXPECT_EQ(ParseOnce(&parser, &data, "if \n"), (CallOutcome{19, 3}));
    EXPECT_EQ(Dump(data), "text(<if )");
}

TYPED_TEST(CPPCommentTest, AConstructIsBegunAtItsOpener) {
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, "a<![CDA"), (CallOutcome{0, 7}));
    data.state = 0;
    EXPECT_EQ(ParseOnce(&parser, &data, "b<if \n"), (CallOutcome{19, 5}));
    EXPECT_EQ(Dump(data), "text(ab<if )");
}

TYPED_TEST(CPPCommentTest, EndParseLeavesTheRecordAsItIs) {
    using S = typename TypeParam::S;
    for (const std::uint32_t state : {0U, 1U}) {
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.state = state;
        data.text = To<S>("t");
        data.keyword = To<S>("k");
        data.nextParserName = KESTRA_WIDE("n");
        EXPECT_EQ(parser.EndParse(&data), HTML::SP_UNTERMINATED);
        EXPECT_EQ(data.state, state);
        EXPECT_EQ(Dump(data), "text(t) next(n) keyword(k)");
    }
}

TYPED_TEST(CPPCommentTest, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(2);
}

TYPED_TEST(CPPCommentTest, ABodyMayBeLong) {
    using S = typename TypeParam::S;
    for (const char filling : {'x', '<', '\r'}) {
        const std::string body(200000, filling);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        EXPECT_EQ(ParseOnce(&parser, &data, body + "\n"), (CallOutcome{19, body.size()}));
        EXPECT_EQ(data.text, To<S>(body));
    }
}

TEST(CPPCommentTest, WideUnitsAreComparedWhole) {
    // The low or the high bytes are those of a line feed, "<", "!" and "-".
    CheckRecognizer<Parser<Wide>>(WideString{0x010A, 0x0A00, 0x013C, '!', '-', '-', '<', 0x0121, '-', '-', '\n'},
                                  "19 text(\\u010A\\u0A00\\u013C!--<\\u0121--) rest(\\n)");
    CheckRecognizer<Parser<Wide>>(WideString{'<', '!', 0x012D, '-', '\n'}, "19 text(<!\\u012D-) rest(\\n)");
    CheckRecognizer<Parser<Wide>>(WideString{'<', '!', '-', 0x012D}, "11 text() rest(\\u012D)");
}

}  // namespace
}  // namespace Kestra::Test
