#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/tags/StartTagSimpleParser.h"
#include "tests/html/tags/StartTagRows.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::StartTagSimpleParser;
using HTML::StartTagSimpleParserData;

template <typename Flavour>
using Parser = StartTagSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = StartTagSimpleParserData<typename Flavour::C, typename Flavour::S>;

constexpr std::string_view BARE_LIST = " 1 2 3 4 5 6 7 8";
constexpr std::string_view BARE_LIST_TRACE = "{ |1}{ |2}{ |3}{ |4}{ |5}{ |6}{ |7}{ |8}";
constexpr std::string_view VALUED_LIST = " 1=a 2='' 3=\"\" 4 =a 5= a 6=a 7=a 8='a'";
constexpr std::string_view VALUED_LIST_TRACE =
    "{ |1|=|a}{ |2|=|''}{ |3|=|\"\"}{ |4| =|a}{ |5|= |a}{ |6|=|a}{ |7|=|a}{ |8|=|'a'}";

/// Checks a row whose attributes stand after eight others, from where on the recognizer reads them
/// another way.
template <typename Flavour>
void CheckAfterList(const TagRow& c, std::string_view list, std::string_view listTrace) {
    constexpr std::string_view BEGIN = "19 start(|a|";
    std::string expected(c.expected);
    if (expected.compare(0, BEGIN.size(), BEGIN) == 0)
        expected.insert(BEGIN.size(), listTrace);
    const std::string input = "a" + std::string(list) + std::string(c.input.substr(1));
    CheckRow<StartTagSimpleParser, Flavour>(c.note, input, expected);
}

/// Checks a row, and if it is one of the tag "a" the same after lists.
template <typename Flavour>
void CheckTag(const TagRow& c) {
    CheckRow<StartTagSimpleParser, Flavour>(c.note, c.input, c.expected);
    const std::size_t first = c.input.find_first_not_of(" \n\t", 1);
    if (c.input.substr(0, 2) != "a " || c.input[first] == '=')
        return;
    CheckAfterList<Flavour>(c, BARE_LIST, BARE_LIST_TRACE);
    // A bare word would become part of the list's last value.
    const std::string_view firstTrace = c.expected.substr(0, c.expected.find('}'));
    if (firstTrace.find('=') != std::string_view::npos)
        CheckAfterList<Flavour>(c, VALUED_LIST, VALUED_LIST_TRACE);
}

template <typename Flavour>
class StartTagTest : public testing::Test {};

TYPED_TEST_SUITE(StartTagTest, Flavours);

TYPED_TEST(StartTagTest, Names) {
    for (const TagRow& c : START_TAG_NAMES)
        CheckRow<StartTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(StartTagTest, Attributes) {
    for (const TagRow& c : START_TAG_ATTRIBUTES)
        CheckTag<TypeParam>(c);
}

TYPED_TEST(StartTagTest, ShortTags) {
    for (const TagRow& c : START_TAG_SHORT_TAGS)
        CheckTag<TypeParam>(c);
}

TYPED_TEST(StartTagTest, Failures) {
    for (const TagRow& c : START_TAG_FAILURES)
        CheckTag<TypeParam>(c);
}

TYPED_TEST(StartTagTest, AttributesAreNormalized) {
    for (const TagRow& c : START_TAG_FOLDED_WORDS)
        CheckTag<TypeParam>(c);
}

TYPED_TEST(StartTagTest, EscapeRunsInQuotedValues) {
    const auto on = [](Data<TypeParam>* data) { data->iso2022 = true; };
    const auto off = [](Data<TypeParam>* data) { data->iso2022 = false; };
    for (const TagRow& c : START_TAG_ESCAPE_RUNS)
        CheckRow<StartTagSimpleParser, TypeParam>(c.note, c.input, c.expected, on);
    CheckRow<StartTagSimpleParser, TypeParam>("without the option nowhere", "p b=\"\033$B\" c=\"\033(B\">",
                                              "19 start(|p|{ |b|=|\"\\x1B$B\"}{ |c|=|\"\\x1B(B\"}|)", off);
}

TYPED_TEST(StartTagTest, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" "), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" a"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a/"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a "), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a="), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a b='c'"), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a b=c/"), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a /"), 2U);
}

TYPED_TEST(StartTagTest, ARecordMayStandInAnyState) {
    struct Row {
        std::uint32_t state;
        std::string_view input;
        CallOutcome outcome;
        std::string_view record;
    };
    const Row ROWS[] = {
        {1, "p>", {19, 2}, "start(|p||)"},        {2, " b=c>", {19, 5}, "start(||{ |b|=|c}|)"},
        {3, ">x", {19, 1}, "start(|||)"},         {3, "/>x", {19, 2}, "start(|||, short)"},
        {3, "/", {0, 1}, "start(|||, short)"},    {3, "/ >", {11, 1}, "start(|||, short)"},
        {3, "//>", {11, 1}, "start(|||, short)"}, {3, "/<", {11, 1}, "start(|||, short)"},
        {3, "<a>", {19, 1}, "start(|||, open)"},  {3, "<", {19, 1}, "start(|||, open)"},
        {3, "a>", {11, 0}, "start(|||)"},         {3, " >", {11, 0}, "start(|||)"},
        {3, "=>", {11, 0}, "start(|||)"},         {4, ">x", {19, 1}, "start(|||)"},
        {4, " >", {11, 0}, "start(|||)"},         {4, "<", {11, 0}, "start(|||)"},
        {4, "/>", {11, 0}, "start(|||)"},         {4, "a", {11, 0}, "start(|||)"},
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

/// A start tag that has read "a b=c d" and the "e" after it, put into another state: each exit from
/// there must normalize.
TYPED_TEST(StartTagTest, EveryExitNormalizes) {
    struct Row {
        std::uint32_t state;
        std::string_view input;
        std::uint64_t position;
        std::string_view record;
    };
    const Row ROWS[] = {
        {3, ">", 1, "start(|a|{ |b|=|c d}|)"},
        {3, "<", 1, "start(|a|{ |b|=|c d}|, open)"},
        {3, "/>", 2, "start(|a|{ |b|=|c d}|, short)"},
        {4, ">", 1, "start(|a|{ |b|=|c d}|)"},
    };
    for (const Row& row : ROWS) {
        SCOPED_TRACE(std::to_string(row.state) + " " + std::string(row.input));
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        ASSERT_EQ(ParseOnce(&parser, &data, "a b=c d e"), (CallOutcome{0, 9}));
        ASSERT_EQ(Dump(data), "start(|a|{ |b|=|c}{ |d}|)");
        data.state = row.state;
        EXPECT_EQ(ParseOnce(&parser, &data, row.input), (CallOutcome{19, row.position}));
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(StartTagTest, AFailureLeavesTheRecordAsItWas) {
    struct Row {
        std::string_view input;
        std::uint32_t state;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"a b=c d / >", 2, "start(|a|{ |b|=|c}{ |d}|)"},
        {"a / >", 2, "start(|a||)"},
        {"a b=c d e=/>", 4, "start(|a|{ |b|=|c}{ |d}|, short)"},
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

TYPED_TEST(StartTagTest, BeginParseBeginsTheMembersToo) {
    struct Row {
        std::string_view abandoned;
        std::uint32_t state;
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"  ", 0, " p>", "start( |p||)"},
        {"abc", 1, "p>", "start(|p||)"},
        {"a b='c", 2, "d='e'>", "start(||{|d|=|'e'}|)"},
        {"a  ", 2, " d>", "start(||{ |d}|)"},
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

TYPED_TEST(StartTagTest, AMemberIsBegunWhereItsStateIsEntered) {
    struct Row {
        std::string_view abandoned;
        std::uint32_t state;
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"abc", 0, "p>", "start(|p||)"},
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

TYPED_TEST(StartTagTest, WhatTheRecordHeldBeforeIsReplaced) {
    const auto prepare = [](Data<TypeParam>* data) {
        data->prefix = data->name = data->suffix = To<typename TypeParam::S>("before");
    };
    const auto withoutSuffix = [prepare](Data<TypeParam>* data) {
        prepare(data);
        data->suffix.clear();
    };
    CheckRow<StartTagSimpleParser, TypeParam>("prefix and name", " p a=x>", "19 start( |p|{ |a|=|x}|)", withoutSuffix);
    CheckRow<StartTagSimpleParser, TypeParam>("the suffix, where one is read", " p\t>", "19 start( |p||\\t)", prepare);
}

/// The list keeps the elements that it dropped: nothing of an earlier tag may show in them.
TYPED_TEST(StartTagTest, AnAttributeWithoutAValueHasNothingButPrefixAndName) {
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

TYPED_TEST(StartTagTest, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(5);
}

TEST(StartTagTest, OnlyWideWhiteSpaceReachesBeyondAscii) {
    CheckRow<StartTagSimpleParser, Narrow>("bytes from 128 up are no white space",
                                           "\xA0"
                                           "a\x85"
                                           "b=\xA0>",
                                           "19 start(|\\xA0a\\x85b|{||=|\\xA0}|)");
    CheckRow<StartTagSimpleParser, Wide>("U+00A0 and U+0085",
                                         "\xA0"
                                         "a\x85"
                                         "b=\xA0>",
                                         "19 start(\\u00A0|a|{\\u0085|b|=\\u00A0|}|)");
    const WideString input = {0x3000, 'a', 0x2028, 'b', 0x2003, '=', 0x3000, '"', 0x3042, '"', 0x202F, '/', '>'};
    CheckRecognizer<Parser<Wide>>(input, "19 start(\\u3000|a|{\\u2028|b|\\u2003=\\u3000|\"\\u3042\"}|\\u202F, short)");
}

}  // namespace
}  // namespace Kestra::Test
