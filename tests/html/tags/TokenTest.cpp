#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/tags/TokenSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::TokenSimpleParser;
using HTML::TokenSimpleParserData;

template <typename Flavour>
using Parser = TokenSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = TokenSimpleParserData<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
std::function<void(Data<Flavour>*)> Iso2022(bool set) {
    return [set](Data<Flavour>* data) { data->iso2022 = set; };
}

struct Case {
    const char* note;
    std::string_view input;
    std::string_view expected;
};

template <typename Flavour>
class TokenTest : public testing::Test {};

TYPED_TEST_SUITE(TokenTest, Flavours);

TYPED_TEST(TokenTest, Values) {
    const Case CASES[] = {
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
        {"anything but the quote belongs to a value in quotation marks", "\" <>=\n/']\">",
         "19 {|\" <>=\\n/']\"} rest(>)"},
        {"a backslash escapes nothing", "'a\\'b'", "19 {|'a\\\\'} rest(b')"},
        {"a backslash escapes nothing in quotation marks", "\"a\\\"b\"", "19 {|\"a\\\\\"} rest(b\")"},
        {"the input ends in a bare value", "x", "end 16"},
        {"the input ends after white space", " ", "end 16"},
        {"the input ends at once", "", "end 16 {|}"},
        {"the input ends in apostrophes", " 'abc", "end 16 { |}"},
        {"the input ends in quotation marks", "\"abc", "end 16 {|}"},
    };
    for (const Case& c : CASES)
        CheckRow<TokenSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(TokenTest, EscapeRuns) {
    struct Row {
        const char* note;
        bool iso2022;
        std::string_view input;
        std::string_view expected;
    };
    const Row ROWS[] = {
        {"a mark inside a run is content", true, "\"a\033$B\"\033(Bb\">", "19 {|\"a\\x1B$B\"\\x1B(Bb\"} rest(>)"},
        {"two runs", true, " \"\033$B\"\033(B\033$B>\033(J\"", "19 { |\"\\x1B$B\"\\x1B(B\\x1B$B>\\x1B(J\"}"},
        {"without the option a run is no run", false, "\"a\033$B\"\033(Bb\">", "19 {|\"a\\x1B$B\"} rest(\\x1B(Bb\">)"},
        {"a value in apostrophes has no runs", true, "'a\033$B'\033(Bb'>", "19 {|'a\\x1B$B'} rest(\\x1B(Bb'>)"},
        {"a bare value has no runs", true, "a\033$B>\033(B ", "19 {|a\\x1B$B} rest(>\\x1B(B )"},
        {"a backslash before ESC means nothing", true, "\"\\\033$B\"\033(B\">",
         "19 {|\"\\\\\\x1B$B\"\\x1B(B\"} rest(>)"},
        {"the input ends after a run", true, "\"\033$B\"\033(B", "end 16 {|}"},
    };
    for (const Row& row : ROWS)
        CheckRow<TokenSimpleParser, TypeParam>(row.note, row.input, row.expected, Iso2022<TypeParam>(row.iso2022));
}

TYPED_TEST(TokenTest, ACallEndsAfterAnEscapeRunWithInputLeft) {
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    data.iso2022 = true;
    EXPECT_EQ(ParseOnce(&parser, &data, " \"\033$B\"\033(B\">"), (CallOutcome{0, 9}));
    EXPECT_EQ(data.state, 4U);
    EXPECT_TRUE(data.value.empty());
    EXPECT_EQ(ParseOnce(&parser, &data, "\">"), (CallOutcome{19, 1}));
}

TYPED_TEST(TokenTest, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" "), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("x"), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" x"), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("'"), 3U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" '"), 3U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("\""), 4U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("\"'"), 4U);
}

TYPED_TEST(TokenTest, ARecordMayStandInAnyState) {
    struct Row {
        std::uint32_t state;
        std::string_view input;
        CallOutcome outcome;
        std::string_view record;
    };
    const Row ROWS[] = {
        {1, "x>", {19, 1}, "{|x}"},        {1, " x>", {19, 0}, "{|}"},         {1, "'x'", {19, 3}, "{|'x'}"},
        {1, ">", {19, 0}, "{|}"},          {2, "'x'>", {19, 3}, "{|'x'}"},     {2, " ", {19, 0}, "{|}"},
        {3, "x\"'y", {19, 3}, "{|'x\"'}"}, {4, "x'\"y", {19, 3}, "{|\"x'\"}"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(std::to_string(row.state) + " " + std::string(row.input));
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.state = row.state;
        EXPECT_EQ(ParseOnce(&parser, &data, row.input), row.outcome);
        EXPECT_EQ(Dump(data), row.record);
        EXPECT_EQ(data.quote, row.state == 3 || row.input == "'x'" ? 1U : row.state == 4 ? 2U : 0U);
    }
}

TYPED_TEST(TokenTest, BeginParseBeginsTheMembersToo) {
    struct Row {
        std::string_view abandoned;
        std::uint32_t state;
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"  ", 0, " x>", "{ |x}"},
        {"'abc", 3, "x'", "{|'x'}"},
        {"\"abc", 4, "x\"", "{|\"x\"}"},
        {"\"\033$B", 4, "x\"", "{|\"x\"}"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(Trace::Escape(row.abandoned));
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.iso2022 = true;
        EXPECT_EQ(ParseOnce(&parser, &data, row.abandoned), (CallOutcome{0, row.abandoned.size()}));
        parser.BeginParse(&data);
        data.state = row.state;
        EXPECT_EQ(ParseOnce(&parser, &data, row.input).result, HTML::SP_TOKEN_COMPLETE);
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(TokenTest, AStringIsBegunWhereItsStateIsEntered) {
    struct Row {
        std::string_view abandoned;
        std::uint32_t state;
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"'abc", 1, "'x'", "{|'x'}"},
        {"\"abc", 1, "\"x\"", "{|\"x\"}"},
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

TYPED_TEST(TokenTest, WhatTheRecordHeldBeforeIsReplaced) {
    using S = typename TypeParam::S;
    struct Row {
        std::uint32_t state;
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {0, " 'x'", "{ |'x'}"},
        {0, " \"x\"", "{ |\"x\"}"},
        {1, "'x'", "{before|'x'}"},
        {1, "x>", "{before|beforex}"},  // a bare value is appended to
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(std::to_string(row.state) + " " + std::string(row.input));
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.state = row.state;
        data.prefix = data.value = To<S>("before");
        data.quote = 2;
        EXPECT_EQ(ParseOnce(&parser, &data, row.input).result, HTML::SP_TOKEN_COMPLETE);
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(TokenTest, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(5);
}

TEST(TokenTest, OnlyWideWhiteSpaceReachesBeyondAscii) {
    CheckRow<TokenSimpleParser, Narrow>("a byte from 128 up is no white space", "\xA0x\x85>",
                                        "19 {|\\xA0x\\x85} rest(>)");
    CheckRow<TokenSimpleParser, Wide>("U+00A0 in front and U+0085 after", "\xA0x\x85>",
                                      "19 {\\u00A0|x} rest(\\u0085>)");
    const WideString input = {0x3000, 'x', 0x0127, 0x013E, 0x013C, 0x2003};
    CheckRecognizer<Parser<Wide>>(input, "19 {\\u3000|x\\u0127\\u013E\\u013C} rest(\\u2003)");
}

}  // namespace
}  // namespace Kestra::Test
