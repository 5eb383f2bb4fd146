#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "html/tags/EndTagSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::EndTagSimpleParser;
using HTML::EndTagSimpleParserData;

template <typename Flavour>
using Parser = EndTagSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = EndTagSimpleParserData<typename Flavour::C, typename Flavour::S>;

/// A row: what stands behind the "</", and what becomes of it.
struct Case {
    const char* note;
    std::string_view input;
    std::string_view expected;
};

template <typename Flavour>
class EndTagTest : public testing::Test {};

TYPED_TEST_SUITE(EndTagTest, Flavours);

TYPED_TEST(EndTagTest, Names) {
    const Case CASES[] = {
        {"an end tag is its name", "div>", "19 end(|div|||)"},
        {"the rest of the piece is left", "div>x<", "19 end(|div|||) rest(x<)"},
        {"white space on both sides of the name", " div >", "19 end( |div| ||)"},
        {"any white space", "\n\tdiv\r\n>", "19 end(\\n\\t|div|\\r\\n||)"},
        {"case is kept", "DiV>", "19 end(|DiV|||)"},
        {"a \"<\" ends the tag and is left", "div<", "19 end(|div|||, open) rest(<)"},
        {"a \"<\" behind white space ends the tag and is left", "div \n<b>", "19 end(|div| \\n||, open) rest(<b>)"},
        {"a \"<\" at once ends the tag and is left", "<", "19 end(||||, open) rest(<)"},
        {"a \"<\" behind the prefix ends the tag and is left", " <", "19 end( ||||, open) rest(<)"},
        {"a name may be empty", ">", "19 end(||||)"},
        {"an empty name behind a prefix", " >", "19 end( ||||)"},
        {"a \"/\" belongs to the name", "div/>", "19 end(|div/|||)"},
        {"the name is not checked", "/!'\"&;>", "19 end(|/!'\"&;|||)"},
        {"a NUL belongs to the name", "a\0b>"sv, "19 end(|a\\x00b|||)"},
        {"characters from 128 up belong to the name", "\x80\xBC>", "19 end(|\\x80\\xBC|||)"},
    };
    for (const Case& c : CASES)
        CheckRow<EndTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(EndTagTest, Attributes) {
    const Case CASES[] = {
        {"one attribute; the white space in front of it is that behind the name", "div class=x>", "19 end(|div| |{|class|=|x}|)"},
        {"attributes of every kind", "div a b='c' d = \"e\" >", "19 end(|div| |{|a}{ |b|=|'c'}{ |d| = |\"e\"}| )"},
        {"an attribute without a value", "div a>", "19 end(|div| |{|a}|)"},
        {"white space behind an attribute without a value is the suffix", "div a \n>", "19 end(|div| |{|a}| \\n)"},
        {"white space behind a value is the suffix", "div a=b >", "19 end(|div| |{|a|=|b}| )"},
        {"\"=\" ends the name and begins an attribute", "div=x>", "19 end(|div||{||=|x}|)"},
        {"\"[\" ends the name and begins an attribute", "div[x]>", "19 end(|div||{|[x]}|)"},
        {"a \"<\" behind an attribute's name belongs to it", "div a<b>", "19 end(|div| |{|a<b}|)"},
        {"an empty value", "div a=>", "19 end(|div| |{|a|=|}|)"},
        {"an empty value in front of \"<\"", "div a=<b=c>", "19 end(|div| |{|a|=|}{|<b|=|c}|)"},
        {"an attribute without a name", "div =x>", "19 end(|div| |{||=|x}|)"},
        {"bare words are folded into the value before them", "div a=b c 'd'>", "19 end(|div| |{|a|=|b c 'd'}|)"},
        {"bare words behind a quoted value", "div a='b' c>", "19 end(|div| |{|a|=|'b' c}|)"},
        {"a \"<\" behind a value", "div a=b<c>", "19 end(|div| |{|a|=|b<c}|)"},
    };
    for (const Case& c : CASES)
        CheckRow<EndTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(EndTagTest, Slashes) {
    const Case CASES[] = {
        {"a \"/\" behind white space stands before the close", "div />", "19 end(|div| ||, slash)"},
        {"a \"/\" behind an attribute", "div a />", "19 end(|div| |{|a}| , slash)"},
        {"a \"/\" at the end of an attribute", "div a/>", "19 end(|div| |{|a}|, slash)"},
        {"a \"/\" at the end of a bare value", "div a=x/>", "19 end(|div| |{|a|=|x}|, slash)"},
        {"a \"/\" behind a bare value", "div a=x />", "19 end(|div| |{|a|=|x}| , slash)"},
        {"a \"/\" directly behind a quoted value", "div a='x'/>", "19 end(|div| |{|a|=|'x'}|, slash)"},
        {"the last of two slashes stands before the close", "div //>", "19 end(|div| |{|/}|, slash)"},
        {"the last of two slashes of a value", "div a=x//>", "19 end(|div| |{|a|=|x/}|, slash)"},
        {"a \"/\" in front of white space belongs to the value", "div a=x/ b=y>", "19 end(|div| |{|a|=|x/}{ |b|=|y}|)"},
        {"a \"/\" in front of \"<\" belongs to the value", "div a=x/<b=y>", "19 end(|div| |{|a|=|x/}{|<b|=|y}|)"},
        {"bare words in front of the \"/\" are folded", "div a=b c/>", "19 end(|div| |{|a|=|b c}|, slash)"},
        {"behind the \"=\" of a name", "div=x/>", "19 end(|div||{||=|x}|, slash)"},
    };
    for (const Case& c : CASES)
        CheckRow<EndTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(EndTagTest, Failures) {
    const Case CASES[] = {
        {"a \"/\" with white space before \">\"", "div / >", "11 rest(>)"},
        {"a \"/\" with white space before an attribute", "div / a>", "11 rest(a>)"},
        {"a \"/\" with white space before \"/\"", "div / />", "11 rest(/>)"},
        {"a \"/\" at the end of an attribute with white space before \">\"", "div a/ >", "11 rest(>)"},
        {"a \"/\" behind an attribute with white space before \">\"", "div a / >", "11 rest(>)"},
        {"a \"/\" behind a quoted value with white space before \">\"", "div a='b'/\n>", "11 rest(>)"},
        {"a lone \"/\" as a bare value in front of \">\"", "div a=/>", "11 rest(>)"},
        {"a lone \"/\" behind white space", "div a= />", "11 rest(>)"},
        {"the input ends in the name", "div", "end 16"},
        {"the input ends at once", "", "end 16 end(||||)"},
        {"the input ends in the prefix", " ", "end 16"},
        {"the input ends behind the name", "div ", "end 16"},
        {"the input ends in an attribute's name", "div a", "end 16"},
        {"the input ends in a bare value", "div a=b", "end 16"},
        {"the input ends in a quoted value", "div a='b>", "end 16"},
        {"the input ends behind a quoted value", "div a='b'", "end 16 end(|div| |{|a|=|'b'}|)"},
        {"the input ends behind the \"/\"", "div /", "end 16"},
    };
    for (const Case& c : CASES)
        CheckRow<EndTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(EndTagTest, EscapeRunsInQuotedValues) {
    const auto on = [](Data<TypeParam>* data) { data->iso2022 = true; };
    const Case WITH[] = {
        {"the first attribute", "p b=\"\033$B\" c=\"\033(B\">", "19 end(|p| |{|b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
        {"behind a bare value too, unlike in a start tag", "p a=x b=\"\033$B\" c=\"\033(B\">",
         "19 end(|p| |{|a|=|x}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
        {"behind a quoted value", "p a='x' b=\"\033$B\" c=\"\033(B\">", "19 end(|p| |{|a|=|'x'}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
        {"behind an empty bare value", "p a=<b=\"\033$B\" c=\"\033(B\">", "19 end(|p| |{|a|=|}{|<b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
        {"behind an attribute without a value", "p a b=\"\033$B\" c=\"\033(B\">", "19 end(|p| |{|a}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
        {"values in apostrophes never have runs", "p b='\033$B' c='\033(B'>", "19 end(|p| |{|b|=|'\\x1B$B'}{ |c|=|'\\x1B(B'}|)"},
        {"the input ends inside a run", "p b=\"\033$B\">", "end 16"},
    };
    for (const Case& c : WITH)
        CheckRow<EndTagSimpleParser, TypeParam>(c.note, c.input, c.expected, on);
    CheckRow<EndTagSimpleParser, TypeParam>("without the option nowhere", "p b=\"\033$B\" c=\"\033(B\">",
                                            "19 end(|p| |{|b|=|\"\\x1B$B\"}{ |c|=|\"\\x1B(B\"}|)");
}

TYPED_TEST(EndTagTest, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" "), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" a"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a/"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a "), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a b"), 3U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a="), 3U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a b='c'"), 3U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a /"), 3U);
}

TYPED_TEST(EndTagTest, ARecordMayStandInAnyState) {
    struct Row {
        std::uint32_t state;
        std::string_view input;
        CallOutcome outcome;
        std::uint32_t stateAfter;
        std::string_view record;
    };
    const Row ROWS[] = {
        {2, " >", {19, 2}, 5, "end(|| ||)"},
        {4, ">x", {19, 1}, 4, "end(||||)"},
        {4, "/>", {0, 1}, 5, "end(||||, slash)"},
        {4, "/", {0, 1}, 5, "end(||||, slash)"},
        {4, "a>", {11, 0}, 4, "end(||||)"},
        {4, " >", {11, 0}, 4, "end(||||)"},
        {4, "<", {11, 0}, 4, "end(||||)"},
        {5, ">x", {19, 1}, 5, "end(||||)"},
        {5, "<x", {19, 0}, 5, "end(||||, open)"},
        {5, "a=b c", {0, 5}, 3, "end(|||{|a|=|b}|)"},
        {5, " a=b c", {0, 6}, 3, "end(|||{ |a|=|b}|)"},
        {3, " a=b c", {0, 6}, 3, "end(|||{ |a|=|b}|)"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(std::to_string(row.state) + " " + std::string(row.input));
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.state = row.state;
        EXPECT_EQ(ParseOnce(&parser, &data, row.input), row.outcome);
        EXPECT_EQ(Dump(data), row.record);
        EXPECT_EQ(data.state, row.stateAfter);
    }
}

TYPED_TEST(EndTagTest, ACallEndsBehindASlash) {
    struct Row {
        std::string_view input;  // up to the character in front of which the first call ends
        std::string_view next;
        CallOutcome outcome;  // of the second call
        std::string_view record;
    };
    const Row ROWS[] = {
        {"div a=x/", ">", {19, 1}, "end(|div| |{|a|=|x}|, slash)"},
        {"div a/", ">", {19, 1}, "end(|div| |{|a}|, slash)"},
        {"div a /", ">", {19, 1}, "end(|div| |{|a}| , slash)"},
        {"div /", ">", {19, 1}, "end(|div| ||, slash)"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.input);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        EXPECT_EQ(ParseOnce(&parser, &data, std::string(row.input) + std::string(row.next)), (CallOutcome{0, row.input.size()}));
        EXPECT_EQ(data.state, 5U);
        EXPECT_TRUE(data.slashBeforeClose);
        EXPECT_EQ(ParseOnce(&parser, &data, row.next), row.outcome);
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(EndTagTest, BehindASlashFurtherAttributesMayFollow) {
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    data.state = 4;
    EXPECT_EQ(ParseOnce(&parser, &data, "/b=c>"), (CallOutcome{0, 1}));
    EXPECT_EQ(ParseOnce(&parser, &data, "b=c d>"), (CallOutcome{19, 6}));
    EXPECT_EQ(Dump(data), "end(|||{|b|=|c d}|, slash)");

    parser.BeginParse(&data);
    data.state = 4;
    EXPECT_EQ(ParseOnce(&parser, &data, "/<b"), (CallOutcome{0, 1}));
    EXPECT_EQ(ParseOnce(&parser, &data, "<b"), (CallOutcome{19, 0}));
    EXPECT_EQ(Dump(data), "end(||||, slash, open)");
}

/// An end tag that has read "a b=c d" and the "e" behind it, put into another state: each exit from there must normalize.
TYPED_TEST(EndTagTest, EveryExitNormalizes) {
    struct Row {
        std::uint32_t state;
        std::string_view input;
        std::uint64_t position;
        std::string_view record;
    };
    const Row ROWS[] = {
        {4, ">", 1, "end(|a| |{|b|=|c d}|)"},
        {5, ">", 1, "end(|a| |{|b|=|c d}|)"},
        {5, "<", 0, "end(|a| |{|b|=|c d}|, open)"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(std::to_string(row.state) + " " + std::string(row.input));
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        ASSERT_EQ(ParseOnce(&parser, &data, "a b=c d e"), (CallOutcome{0, 9}));
        ASSERT_EQ(Dump(data), "end(|a| |{|b|=|c}{ |d}|)");
        data.state = row.state;
        EXPECT_EQ(ParseOnce(&parser, &data, row.input), (CallOutcome{19, row.position}));
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(EndTagTest, AFailureLeavesTheRecordAsItWas) {
    struct Row {
        std::string_view input;
        std::uint32_t state;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"a b=c d / >", 3, "end(|a| |{|b|=|c}{ |d}|)"},
        {"a / >", 3, "end(|a| ||)"},
        {"a b=c d e=/>", 5, "end(|a| |{|b|=|c}{ |d}|, slash)"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.input);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        EXPECT_EQ(ParseOnce(&parser, &data, row.input), (CallOutcome{11, row.input.size() - 1}));
        EXPECT_EQ(data.state, row.state);
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(EndTagTest, BeginParseBeginsTheMembersToo) {
    struct Row {
        std::string_view abandoned;
        std::uint32_t state;
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"  ", 0, " p>", "end( |p|||)"},
        {"abc", 1, "p>", "end(|p|||)"},
        {"a  ", 2, " >", "end(|| ||)"},
        {"a b='c", 3, "d='e'>", "end(|||{|d|=|'e'}|)"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.abandoned);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        EXPECT_EQ(ParseOnce(&parser, &data, row.abandoned), (CallOutcome{0, row.abandoned.size()}));
        parser.BeginParse(&data);
        data.state = row.state;
        EXPECT_EQ(ParseOnce(&parser, &data, row.input).result, HTML::SP_TOKEN_COMPLETE);
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(EndTagTest, AMemberIsBegunWhereItsStateIsEntered) {
    struct Row {
        std::string_view abandoned;
        std::uint32_t state;
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"abc", 0, "p>", "end(|p|||)"},
        {"a b='c", 5, "d='e'>", "end(|a| |{|d|=|'e'}|)"},
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

TYPED_TEST(EndTagTest, WhatTheRecordHeldBeforeIsReplaced) {
    const auto prepare = [](Data<TypeParam>* data) {
        data->prefix = data->name = data->afterName = data->suffix = To<typename TypeParam::S>("before");
    };
    const auto withoutSuffix = [prepare](Data<TypeParam>* data) {
        prepare(data);
        data->suffix.clear();
    };
    CheckRow<EndTagSimpleParser, TypeParam>("prefix and name", " p a=x>", "19 end( |p| |{|a|=|x}|)", withoutSuffix);
    CheckRow<EndTagSimpleParser, TypeParam>("the suffix, where one is read", " p\t>", "19 end( |p|\\t||before)", prepare);
}

/// The list keeps the elements that it dropped: nothing of an earlier tag may show in them.
TYPED_TEST(EndTagTest, AnAttributeWithoutAValueHasNothingButPrefixAndName) {
    using S = typename TypeParam::S;
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, "a b\t=\n'c' d\t=\n\"e\">").result, HTML::SP_TOKEN_COMPLETE);
    ASSERT_EQ(data.attributes.size(), 2U);
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, "a f  g>").result, HTML::SP_TOKEN_COMPLETE);
    ASSERT_EQ(data.attributes.size(), 2U);
    for (const auto& attribute : data.attributes) {
        EXPECT_FALSE(attribute.hasValue);
        EXPECT_EQ(attribute.beforeEquals, S());
        EXPECT_EQ(attribute.afterEquals, S());
        EXPECT_EQ(attribute.value, S());
        EXPECT_EQ(attribute.quote, 0U);
    }
}

TYPED_TEST(EndTagTest, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(6);
}

TEST(EndTagTest, OnlyWideWhiteSpaceReachesBeyondAscii) {
    CheckRow<EndTagSimpleParser, Narrow>("bytes from 128 up are no white space",
                                         "\xA0"
                                         "a\x85>",
                                         "19 end(|\\xA0a\\x85|||)");
    CheckRow<EndTagSimpleParser, Wide>("U+00A0 and U+0085",
                                       "\xA0"
                                       "a\x85>",
                                       "19 end(\\u00A0|a|\\u0085||)");
    const WideString input = {0x3000, 'a', 0x2028, 'b', 0x013D, 0x2003, '>'};
    CheckRecognizer<Parser<Wide>>(input, "19 end(\\u3000|a|\\u2028|{|b\\u013D}|\\u2003)");
}

}  // namespace
}  // namespace Kestra::Test
