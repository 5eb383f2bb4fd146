#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "html/tags/AttributeSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::AttributeSimpleParser;
using HTML::AttributeSimpleParserData;

template <typename Flavour>
using Parser = AttributeSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = AttributeSimpleParserData<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
class AttributeTest : public testing::Test {};

TYPED_TEST_SUITE(AttributeTest, Flavours);

TYPED_TEST(AttributeTest, Attributes) {
    struct Case {
        const char* note;
        std::string_view input;
        std::string_view expected;
    };
    const Case CASES[] = {
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
    for (const Case& c : CASES)
        CheckRow<AttributeSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(AttributeTest, EscapeRuns) {
    const auto on = [](Data<TypeParam>* data) { data->iso2022 = true; };
    CheckRow<AttributeSimpleParser, TypeParam>("a mark inside a run is content", " a= \"\033$B\"\033(B\"b",
                                               "19 { |a|= |\"\\x1B$B\"\\x1B(B\"} rest(b)", on);
    CheckRow<AttributeSimpleParser, TypeParam>("without the option a run is no run", " a= \"\033$B\"\033(B\"b",
                                               "19 { |a|= |\"\\x1B$B\"} rest(\\x1B(B\"b)");
    CheckRow<AttributeSimpleParser, TypeParam>("a value in apostrophes has no runs", "a='\033$B'\033(B'",
                                               "19 {|a|=|'\\x1B$B'} rest(\\x1B(B')", on);
    CheckRow<AttributeSimpleParser, TypeParam>("a name has no runs", "\033$B=\033(B ",
                                               "19 {|\\x1B$B|=|\\x1B(B} rest( )", on);
    CheckRow<AttributeSimpleParser, TypeParam>("the input ends inside the run", "a=\"\033$B\"", "end 19", on);
}

TYPED_TEST(AttributeTest, AnOwnerMayGoOnAtTheName) {
    using S = typename TypeParam::S;
    const auto prepare = [](Data<TypeParam>* data) {
        data->prefix = To<S>(" \n");
        data->state = 1;
    };
    CheckRow<AttributeSimpleParser, TypeParam>("the preset prefix stays", "b=1 ", "19 { \\n|b|=|1} rest( )", prepare);
    CheckRow<AttributeSimpleParser, TypeParam>("the name is an attribute name", "b<[c] d", "19 { \\n|b<[c]| } rest(d)",
                                               prepare);
    CheckRow<AttributeSimpleParser, TypeParam>("white space ends the name at once", " b", "19 { \\n|| } rest(b)",
                                               prepare);
    CheckRow<AttributeSimpleParser, TypeParam>("there may be no name", ">", "19 { \\n||} rest(>)", prepare);
}

TYPED_TEST(AttributeTest, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" "), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" a"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" a "), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" a ="), 4U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" a = "), 4U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" a = 'x"), 4U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("=x"), 4U);
}

TYPED_TEST(AttributeTest, ARecordMayStandInAnyState) {
    struct Row {
        std::uint32_t state;
        std::string_view input;
        CallOutcome outcome;
        std::string_view record;
    };
    const Row ROWS[] = {
        {2, " a", {19, 1}, "{|| }"}, {2, "=x>", {19, 2}, "{||=|x}"}, {3, "=x>", {19, 2}, "{||=|x}"},
        {3, "x=", {19, 0}, "{||}"},  {3, " =", {19, 0}, "{||}"},     {4, " x>", {19, 2}, "{||= |x}"},
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

TYPED_TEST(AttributeTest, BeginParseBeginsTheMembersToo) {
    struct Row {
        std::string_view abandoned;
        std::uint32_t state;
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"  ", 0, " x>", "{ |x|}"},        {"abc", 1, "x<y>", "{|x<y|}"},  {"abc  ", 2, " >", "{|| }"},
        {"a='abc", 4, "'x'", "{||=|'x'}"}, {"a=  ", 4, " x>", "{||= |x}"},
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

TYPED_TEST(AttributeTest, AMemberIsBegunWhereItsStateIsEntered) {
    struct Row {
        std::string_view abandoned;
        std::uint32_t state;
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"abc", 0, " x<y>", "{ |x<y|}"},
        {"a  ", 1, "x >", "{|x| }"},
        {"a='abc", 3, "='x'", "{|a|=|'x'}"},
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

TYPED_TEST(AttributeTest, WhatTheRecordHeldBeforeIsReplaced) {
    using S = typename TypeParam::S;
    const auto prepare = [](Data<TypeParam>* data) {
        data->prefix = data->name = data->beforeEquals = data->afterEquals = data->value = To<S>("before");
        data->quote = 2;
        data->hasValue = 1;
    };
    CheckRow<AttributeSimpleParser, TypeParam>("with a value", " a =\t'x'", "19 { |a| =\\t|'x'}", prepare);
    CheckRow<AttributeSimpleParser, TypeParam>("with a bare value", "a=x>", "19 {|a|=|x} rest(>)", prepare);
    CheckRow<AttributeSimpleParser, TypeParam>("with an empty value", "a=>", "19 {|a|=|} rest(>)", prepare);
    CheckRow<AttributeSimpleParser, TypeParam>("without a value", "a>", "19 {|a|} rest(>)", prepare);
}

TYPED_TEST(AttributeTest, WithoutAnEqualsSignTheFlagIsCleared) {
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    data.hasValue = 1;
    EXPECT_EQ(ParseOnce(&parser, &data, "a>"), (CallOutcome{19, 1}));
    EXPECT_EQ(data.hasValue, 0U);
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, "a=>"), (CallOutcome{19, 2}));
    EXPECT_EQ(data.hasValue, 1U);
    EXPECT_EQ(data.quote, 0U);
}

TYPED_TEST(AttributeTest, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(5);
}

TEST(AttributeTest, OnlyWideWhiteSpaceReachesBeyondAscii) {
    CheckRow<AttributeSimpleParser, Narrow>("a byte from 128 up is no white space",
                                            "\xA0"
                                            "a\x85=\xA0x ",
                                            "19 {|\\xA0a\\x85|=|\\xA0x} rest( )");
    CheckRow<AttributeSimpleParser, Wide>("U+00A0 and U+0085",
                                          "\xA0"
                                          "a\x85=\xA0x ",
                                          "19 {\\u00A0|a|\\u0085=\\u00A0|x} rest( )");
    const WideString input = {0x3000, 'a', 0x013D, 0x2003, '=', 0x2028, '\'', 0x3000, '\'', 'b'};
    CheckRecognizer<Parser<Wide>>(input, "19 {\\u3000|a\\u013D|\\u2003=\\u2028|'\\u3000'} rest(b)");
}

}  // namespace
}  // namespace Kestra::Test
