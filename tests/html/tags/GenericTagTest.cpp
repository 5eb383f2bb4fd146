#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "html/tags/GenericTagSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::GenericTagSimpleParser;
using HTML::GenericTagSimpleParserData;

template <typename Flavour>
using Parser = GenericTagSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = GenericTagSimpleParserData<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
class GenericTagTest : public testing::Test {};

TYPED_TEST_SUITE(GenericTagTest, Flavours);

TYPED_TEST(GenericTagTest, Decisions) {
    struct Case {
        const char* note;
        std::string_view input;  // after the "<"
        std::string_view expected;
    };
    const Case CASES[] = {
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
        {"keywords ignore case and stay as written", "![cdata[",
         "19 next(CDATATagSimpleParser) keyword(cdata) rest([)"},
        {"mixed case", "![CdAtA[", "19 next(CDATATagSimpleParser) keyword(CdAtA) rest([)"},
        {"white space may follow the keyword", "![CDATA [", "19 next(CDATATagSimpleParser) keyword(CDATA) rest( [)"},
        {"any stop character may follow the keyword", "![CDATA>",
         "19 next(CDATATagSimpleParser) keyword(CDATA) rest(>)"},
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
    for (const Case& c : CASES)
        CheckRow<GenericTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(GenericTagTest, TwoFieldsAreNeverUsed) {
    Parser<TypeParam> parser;
    for (const std::string_view input : {"/", "?", "a", "!D", "!--", "!-x", "![CDATA[", "![if ", "![x "}) {
        Data<TypeParam> data;
        parser.BeginParse(&data);
        ParseOnce(&parser, &data, input);
        EXPECT_EQ(data.reserved, 0U);
        EXPECT_TRUE(data.text.empty());
    }
}

TYPED_TEST(GenericTagTest, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("!"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("!-"), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("!["), 3U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("![CDATA"), 3U);
}

TYPED_TEST(GenericTagTest, ARecordMayStandInAnyState) {
    struct Row {
        std::uint32_t state;
        std::string_view input;
        CallOutcome outcome;
        std::string_view record;
    };
    const Row ROWS[] = {
        {1, "x", {19, 0}, "next(EntityTagSimpleParser)"},
        {1, "--", {19, 2}, "next(CommentTagSimpleParser)"},
        {2, "-x", {19, 1}, "next(CommentTagSimpleParser)"},
        {2, "x", {11, 0}, "next()"},
        {3, "if ", {19, 2}, "next(ConditionalTagSimpleParser) keyword(if)"},
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

TYPED_TEST(GenericTagTest, BeginParseBeginsTheMemberToo) {
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, "![CDA"), (CallOutcome{0, 5}));
    parser.BeginParse(&data);
    data.state = 3;
    EXPECT_EQ(ParseOnce(&parser, &data, "if "), (CallOutcome{19, 2}));
    EXPECT_EQ(Dump(data), "next(ConditionalTagSimpleParser) keyword(if)");
}

TYPED_TEST(GenericTagTest, AKeywordIsBegunWhereItsStateIsEntered) {
    struct Row {
        std::string_view abandoned;
        std::uint32_t state;
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"![CDA", 1, "[if ", "next(ConditionalTagSimpleParser) keyword(if)"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.abandoned);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        EXPECT_EQ(ParseOnce(&parser, &data, row.abandoned), (CallOutcome{0, row.abandoned.size()}));
        data.state = row.state;
        EXPECT_EQ(ParseOnce(&parser, &data, row.input).result, HTML::SP_TOKEN_COMPLETE);
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(GenericTagTest, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(4);
}

TEST(GenericTagTest, WideUnitsAreComparedWhole) {
    // The low bytes are those of "/", "!", "?", "-" and "[".
    for (const WideChar first : WideString{0x012F, 0x0121, 0x013F}) {
        const WideString input = {first, '-', '-'};
        CheckRecognizer<Parser<Wide>>(input, "19 next(StartTagSimpleParser) rest(" + Trace::Escape(input) + ")");
    }
    for (const WideChar second : WideString{0x012D, 0x015B}) {
        const WideString input = {'!', second, '-'};
        CheckRecognizer<Parser<Wide>>(input,
                                      "19 next(EntityTagSimpleParser) rest(" + Trace::Escape(input.substr(1)) + ")");
    }
}

TEST(GenericTagTest, OnlyAsciiLettersFoldInKeywords) {
    const WideString INPUTS[] = {
        {'!', '[', 0x0130, 'F', ' '},                 // I with a dot
        {'!', '[', 0x0131, 'f', ' '},                 // i without one
        {'!', '[', 0xFF29, 0xFF26, ' '},              // fullwidth letters
        {'!', '[', 'c', 'd', 'a', 't', 0x0161, '['},  // the low byte is "a"
        {'!', '[', 'e', 'n', 'd', 0x00CC, 'f', ']'},  // I with a grave accent
    };
    for (const WideString& input : INPUTS)
        CheckRecognizer<Parser<Wide>>(input, "11 next() rest(" + Trace::Escape(input.substr(input.size() - 1)) + ")");
    CheckRow<GenericTagSimpleParser, Narrow>("narrow letters from 128 up",
                                             "![\xE9"
                                             "f ",
                                             "11 next() rest( )");
    CheckRow<GenericTagSimpleParser, Narrow>("the high bit set", "![\xE9\xE6 ", "11 next() rest( )");
    CheckRow<GenericTagSimpleParser, Narrow>("neighbours of letters are not folded", "![cd`t` ", "11 next() rest( )");
}

}  // namespace
}  // namespace Kestra::Test
