#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "html/tags/EndTagSimpleParser.h"
#include "tests/html/tags/EndTagRows.h"
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

template <typename Flavour>
class EndTagTest : public testing::Test {};

TYPED_TEST_SUITE(EndTagTest, Flavours);

TYPED_TEST(EndTagTest, Names) {
    for (const TagRow& c : END_TAG_NAMES)
        CheckRow<EndTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(EndTagTest, Attributes) {
    for (const TagRow& c : END_TAG_ATTRIBUTES)
        CheckRow<EndTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(EndTagTest, Slashes) {
    for (const TagRow& c : END_TAG_SLASHES)
        CheckRow<EndTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(EndTagTest, Failures) {
    for (const TagRow& c : END_TAG_FAILURES)
        CheckRow<EndTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(EndTagTest, EscapeRunsInQuotedValues) {
    const auto on = [](Data<TypeParam>* data) { data->iso2022 = true; };
    for (const TagRow& c : END_TAG_ESCAPE_RUNS)
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

TYPED_TEST(EndTagTest, ACallEndsAfterASlash) {
    struct Row {
        std::string_view input;  // up to the character before which the first call ends
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
        EXPECT_EQ(ParseOnce(&parser, &data, std::string(row.input) + std::string(row.next)),
                  (CallOutcome{0, row.input.size()}));
        EXPECT_EQ(data.state, 5U);
        EXPECT_TRUE(data.slashBeforeClose);
        EXPECT_EQ(ParseOnce(&parser, &data, row.next), row.outcome);
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(EndTagTest, AfterASlashFurtherAttributesMayFollow) {
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

/// An end tag that has read "a b=c d" and the "e" after it, put into another state: each exit from
/// there must normalize.
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
    CheckRow<EndTagSimpleParser, TypeParam>("the suffix, where one is read", " p\t>", "19 end( |p|\\t||before)",
                                            prepare);
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
