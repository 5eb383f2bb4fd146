#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/tags/StartTagSimpleParser.h"
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

/// A row: what stands behind the "<", and what becomes of it.
struct Case {
    const char* note;
    std::string_view input;
    std::string_view expected;
};

constexpr std::string_view BARE_LIST = " 1 2 3 4 5 6 7 8";
constexpr std::string_view BARE_LIST_TRACE = "{ |1}{ |2}{ |3}{ |4}{ |5}{ |6}{ |7}{ |8}";
constexpr std::string_view VALUED_LIST = " 1=a 2='' 3=\"\" 4 =a 5= a 6=a 7=a 8='a'";
constexpr std::string_view VALUED_LIST_TRACE = "{ |1|=|a}{ |2|=|''}{ |3|=|\"\"}{ |4| =|a}{ |5|= |a}{ |6|=|a}{ |7|=|a}{ |8|=|'a'}";

/// Checks a row whose attributes stand behind eight others, from where on the recognizer reads them another way.
template <typename Flavour>
void CheckBehindList(const Case& c, std::string_view list, std::string_view listTrace) {
    constexpr std::string_view BEGIN = "19 start(|a|";
    std::string expected(c.expected);
    if (expected.compare(0, BEGIN.size(), BEGIN) == 0)
        expected.insert(BEGIN.size(), listTrace);
    const std::string input = "a" + std::string(list) + std::string(c.input.substr(1));
    CheckRow<StartTagSimpleParser, Flavour>(c.note, input, expected);
}

/// Checks a row, and if it is one of the tag "a" the same behind lists.
template <typename Flavour>
void CheckTag(const Case& c) {
    CheckRow<StartTagSimpleParser, Flavour>(c.note, c.input, c.expected);
    const std::size_t first = c.input.find_first_not_of(" \n\t", 1);
    if (c.input.substr(0, 2) != "a " || c.input[first] == '=')
        return;
    CheckBehindList<Flavour>(c, BARE_LIST, BARE_LIST_TRACE);
    // A bare word would become part of the list's last value.
    const std::string_view firstTrace = c.expected.substr(0, c.expected.find('}'));
    if (firstTrace.find('=') != std::string_view::npos)
        CheckBehindList<Flavour>(c, VALUED_LIST, VALUED_LIST_TRACE);
}

template <typename Flavour>
class StartTagTest : public testing::Test {};

TYPED_TEST_SUITE(StartTagTest, Flavours);

TYPED_TEST(StartTagTest, Names) {
    const Case CASES[] = {
        {"a tag is its name", "p>", "19 start(|p||)"},
        {"the rest of the piece is left", "p>x<", "19 start(|p||) rest(x<)"},
        {"case is kept", "DiV>", "19 start(|DiV||)"},
        {"white space in front of the name is the prefix", " p>", "19 start( |p||)"},
        {"any white space", "\n\t p>", "19 start(\\n\\t |p||)"},
        {"white space behind the name is the suffix when nothing follows", "p \n>", "19 start(|p|| \\n)"},
        {"white space on both sides", " p >", "19 start( |p|| )"},
        {"a \"/\" does not end a name: it belongs to it", "br/>", "19 start(|br/||)"},
        {"slashes anywhere in the name", "/a//b/>", "19 start(|/a//b/||)"},
        {"white space behind such a name", "br/ >", "19 start(|br/|| )"},
        {"a name may be empty", ">", "19 start(|||)"},
        {"an empty name behind a prefix", " >", "19 start( |||)"},
        {"\"=\" ends the name and begins an attribute without one", "a=b>", "19 start(|a|{||=|b}|)"},
        {"\"[\" ends the name and begins an attribute", "a[b]>", "19 start(|a|{|[b]}|)"},
        {"\"]\" ends the name and begins an attribute", "a]>", "19 start(|a|{|]}|)"},
        {"\"<\" ends the name and begins an attribute", "div<p>", "19 start(|div|{|<p}|)"},
        {"a tag that begins with \"<\" has no name, but an attribute", "<a>", "19 start(||{|<a}|)"},
        {"two tags that were meant", "<a b=c>", "19 start(||{|<a}{ |b|=|c}|)"},
        {"nothing but \"<\" is an attribute too", "<>", "19 start(||{|<}|)"},
        {"quotes belong to the name", "'a\">", "19 start(|'a\"||)"},
        {"a NUL belongs to the name", "a\0b>"sv, "19 start(|a\\x00b||)"},
        {"characters from 128 up belong to the name", "\x80\xBC>", "19 start(|\\x80\\xBC||)"},
    };
    for (const Case& c : CASES)
        CheckRow<StartTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(StartTagTest, Attributes) {
    const Case CASES[] = {
        {"a bare value and a quoted one", "div class=a id='b'>", "19 start(|div|{ |class|=|a}{ |id|=|'b'}|)"},
        {"a value in quotation marks", "a b=\"c\">", "19 start(|a|{ |b|=|\"c\"}|)"},
        {"attributes without values", "input disabled checked>", "19 start(|input|{ |disabled}{ |checked}|)"},
        {"one attribute without a value", "a b>", "19 start(|a|{ |b}|)"},
        {"white space behind an attribute without a value is the prefix of the next", "a b \n\tc>", "19 start(|a|{ |b}{ \\n\\t|c}|)"},
        {"white space behind the last attribute without a value is the suffix", "a b  >", "19 start(|a|{ |b}|  )"},
        {"white space behind a bare value is the prefix of the next", "a b=c\nd=e>", "19 start(|a|{ |b|=|c}{\\n|d|=|e}|)"},
        {"white space behind the last value is the suffix", "a b=c >", "19 start(|a|{ |b|=|c}| )"},
        {"white space behind the last quoted value is the suffix", "a b='c' \n>", "19 start(|a|{ |b|=|'c'}| \\n)"},
        {"white space around \"=\" is kept", "a b = 'c'\td\n=\re>", "19 start(|a|{ |b| = |'c'}{\\t|d|\\n=\\r|e}|)"},
        {"an attribute without a value in front of one with a value", "a b c=d>", "19 start(|a|{ |b}{ |c|=|d}|)"},
        {"attributes may follow a quoted value without white space", "a b='c'd=\"e\"f=g>", "19 start(|a|{ |b|=|'c'}{|d|=|\"e\"}{|f|=|g}|)"},
        {"an attribute may come directly behind the name's end", "a=b c>", "19 start(|a|{||=|b c}|)"},
        {"an attribute without a name", "a =b>", "19 start(|a|{ ||=|b}|)"},
        {"an attribute of nothing but \"=\"", "a =>", "19 start(|a|{ ||=|}|)"},
        {"an attribute whose value is \"=\"", "a==>", "19 start(|a|{||=|=}|)"},
        {"an empty value in front of \">\"", "a b=>", "19 start(|a|{ |b|=|}|)"},
        {"an empty value behind white space", "a b= \n>", "19 start(|a|{ |b|= \\n|}|)"},
        {"an empty value in front of \"<\"", "a b=<c=d>", "19 start(|a|{ |b|=|}{|<c|=|d}|)"},
        {"empty quoted values", "a b=''c=\"\">", "19 start(|a|{ |b|=|''}{|c|=|\"\"}|)"},
        {"the value may be the next attribute by mistake", "a b= c=d>", "19 start(|a|{ |b|= |c=d}|)"},
        {"a quoted value may hold anything but its quote", "a b='<\"/>\n=' c=\"'>\">", "19 start(|a|{ |b|=|'<\"/>\\n='}{ |c|=|\"'>\"}|)"},
        {"a backslash escapes nothing", "a b='\\'c='d'>", "19 start(|a|{ |b|=|'\\\\'}{|c|=|'d'}|)"},
        {"a name may hold quotes, brackets and \"<\"", "a 'b\"=c [d]=e f<g=h>", "19 start(|a|{ |'b\"|=|c}{ |[d]|=|e}{ |f<g|=|h}|)"},
        {"a name may begin with a \"/\"", "a /b>", "19 start(|a|{ |/b}|)"},
        {"a name may end with a \"/\" in front of \"=\"", "a b/=c>", "19 start(|a|{ |b/|=|c}|)"},
        {"NUL and ESC are ordinary", "a \0=\033$B>"sv, "19 start(|a|{ |\\x00|=|\\x1B$B}|)"},
        {"many attributes", "a b=1 c=2 d=3 e=4 f=5 g=6>", "19 start(|a|{ |b|=|1}{ |c|=|2}{ |d|=|3}{ |e|=|4}{ |f|=|5}{ |g|=|6}|)"},
    };
    for (const Case& c : CASES)
        CheckTag<TypeParam>(c);
}

TYPED_TEST(StartTagTest, ShortTags) {
    const Case CASES[] = {
        {"\"/\" behind white space closes the tag", "br />", "19 start(|br|| , short)"},
        {"the white space is the suffix", "br \n />x", "19 start(|br|| \\n , short) rest(x)"},
        {"a \"/\" at the end of an attribute without a value", "a b/>", "19 start(|a|{ |b}|, short)"},
        {"a \"/\" behind an attribute without a value", "a b />", "19 start(|a|{ |b}| , short)"},
        {"a \"/\" at the end of a bare value", "a href=x/>", "19 start(|a|{ |href|=|x}|, short)"},
        {"a \"/\" behind a bare value", "a href=x />", "19 start(|a|{ |href|=|x}| , short)"},
        {"a \"/\" directly behind a quoted value", "a b='x'/>", "19 start(|a|{ |b|=|'x'}|, short)"},
        {"a \"/\" directly behind an empty quoted value", "a b=\"\"/>", "19 start(|a|{ |b|=|\"\"}|, short)"},
        {"a \"/\" behind a quoted value", "a b='x' />", "19 start(|a|{ |b|=|'x'}| , short)"},
        {"a \"/\" inside a quoted value is content", "a b='x/'>", "19 start(|a|{ |b|=|'x/'}|)"},
        {"the last of two slashes closes, the other is an attribute", "br //>", "19 start(|br|{ |/}|, short)"},
        {"the last of two slashes behind a value", "a b=c//>", "19 start(|a|{ |b|=|c/}|, short)"},
        {"a \"/\" in the middle of a value", "a b=c/d>", "19 start(|a|{ |b|=|c/d}|)"},
        {"a \"/\" in front of white space belongs to the value", "a b=c/ d=e>", "19 start(|a|{ |b|=|c/}{ |d|=|e}|)"},
        {"a \"/\" in front of \"<\" belongs to the value", "a b=c/<d=e>", "19 start(|a|{ |b|=|c/}{|<d|=|e}|)"},
        {"a name of nothing but slashes that closes a tag without a name", " />", "19 start( |/||)"},
        {"\"=\" in front closes too", "a=b/>", "19 start(|a|{||=|b}|, short)"},
    };
    for (const Case& c : CASES)
        CheckTag<TypeParam>(c);
}

TYPED_TEST(StartTagTest, Failures) {
    const Case CASES[] = {
        {"a lone \"/\" as a bare value in front of \">\"", "a href=/>", "11 rest(>)"},
        {"a lone \"/\" behind white space", "a href= />x", "11 rest(>x)"},
        {"a lone \"/\" behind other attributes", "a b=c d=/>", "11 rest(>)"},
        {"a \"/\" behind the name with white space before \">\"", "a / >", "11 rest(>)"},
        {"a \"/\" with white space before another attribute", "a / b>", "11 rest(b>)"},
        {"a \"/\" at the end of an attribute with white space before \">\"", "a b/ >", "11 rest(>)"},
        {"a \"/\" behind an attribute with white space before \">\"", "a b / >", "11 rest(>)"},
        {"a \"/\" with a line end before \">\"", "a b /\n>", "11 rest(>)"},
        {"a \"/\" behind a quoted value with white space before \">\"", "a b='c'/ >", "11 rest(>)"},
        {"the input ends behind \"=\"", "div class=", "end 16"},
        {"the input ends at once", "", "end 16 start(|||)"},
        {"the input ends in the prefix", " ", "end 16"},
        {"the input ends in the name", "div", "end 16"},
        {"the input ends behind the name", "div ", "end 16"},
        {"the input ends in an attribute's name", "div a", "end 16"},
        {"the input ends behind an attribute's name", "div a ", "end 16"},
        {"the input ends in a bare value", "div a=b", "end 16"},
        {"the input ends in a quoted value", "div a='b>", "end 16"},
        {"the input ends in a value in quotation marks", "div a=\"b>", "end 16"},
        {"the input ends behind a quoted value", "div a='b'", "end 16 start(|div|{ |a|=|'b'}|)"},
        {"the input ends behind the closing \"/\"", "br /", "end 16"},
    };
    for (const Case& c : CASES)
        CheckTag<TypeParam>(c);
}

TYPED_TEST(StartTagTest, AttributesAreNormalized) {
    const Case CASES[] = {
        {"bare words behind a bare value", "a title=hello big  world>", "19 start(|a|{ |title|=|hello big  world}|)"},
        {"bare words behind a quoted value", "a title='x y' z>", "19 start(|a|{ |title|=|'x y' z}|)"},
        {"bare words behind a value and in front of another", "a b=c d e='f' g h=i>", "19 start(|a|{ |b|=|c d}{ |e|=|'f' g}{ |h|=|i}|)"},
        {"bare words in front of the first value stay", "a b c d=e>", "19 start(|a|{ |b}{ |c}{ |d|=|e}|)"},
        {"a short tag", "a b=c d/>", "19 start(|a|{ |b|=|c d}|, short)"},
        {"a short tag with white space", "a b=c d />", "19 start(|a|{ |b|=|c d}| , short)"},
        {"a \"/\" of its own", "a b=c //>", "19 start(|a|{ |b|=|c /}|, short)"},
        {"a \"<\" behind a value", "a b=c<d>", "19 start(|a|{ |b|=|c<d}|)"},
        {"a \"/\" at the end of a value, then a word", "a b=c/ d>", "19 start(|a|{ |b|=|c/ d}|)"},
        {"an empty value", "a b=''c>", "19 start(|a|{ |b|=|''c}|)"},
    };
    for (const Case& c : CASES)
        CheckTag<TypeParam>(c);
}

TYPED_TEST(StartTagTest, EscapeRunsInQuotedValues) {
    const auto on = [](Data<TypeParam>* data) { data->iso2022 = true; };
    const auto off = [](Data<TypeParam>* data) { data->iso2022 = false; };
    const Case WITH[] = {
        {"the first attribute", "p b=\"\033$B\" c=\"\033(B\">", "19 start(|p|{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
        {"behind a bare value the next attribute has no runs", "p a=x b=\"\033$B\" c=\"\033(B\">",
         "19 start(|p|{ |a|=|x}{ |b|=|\"\\x1B$B\"}{ |c|=|\"\\x1B(B\"}|)"},
        {"behind a quoted value it has", "p a='x' b=\"\033$B\" c=\"\033(B\">",
         "19 start(|p|{ |a|=|'x'}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
        {"behind a value in quotation marks it has", "p a=\"x\" b=\"\033$B\" c=\"\033(B\">",
         "19 start(|p|{ |a|=|\"x\"}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
        {"behind an empty quoted value it has", "p a=''b=\"\033$B\" c=\"\033(B\">",
         "19 start(|p|{ |a|=|''}{|b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
        {"behind an empty bare value it has", "p a=<b=\"\033$B\" c=\"\033(B\">", "19 start(|p|{ |a|=|}{|<b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
        {"behind an attribute without a value it has", "p a b=\"\033$B\" c=\"\033(B\">",
         "19 start(|p|{ |a}{ |b|=|\"\\x1B$B\" c=\"\\x1B(B\"}|)"},
        {"only the very next attribute is concerned: a quoted one follows", "p a=x b='y' c=\"\033$B\" d=\"\033(B\">",
         "19 start(|p|{ |a|=|x}{ |b|=|'y'}{ |c|=|\"\\x1B$B\" d=\"\\x1B(B\"}|)"},
        {"a bare word in between restores them", "p a=x y c=\"\033$B\" d=\"\033(B\">",
         "19 start(|p|{ |a|=|x y}{ |c|=|\"\\x1B$B\" d=\"\\x1B(B\"}|)"},
        {"two bare values in a row", "p a=x b=y c=\"\033$B\" d=\"\033(B\">",
         "19 start(|p|{ |a|=|x}{ |b|=|y}{ |c|=|\"\\x1B$B\"}{ |d|=|\"\\x1B(B\"}|)"},
        {"values in apostrophes never have runs", "p b='\033$B' c='\033(B'>", "19 start(|p|{ |b|=|'\\x1B$B'}{ |c|=|'\\x1B(B'}|)"},
        {"bare values never have runs", "p b=\033$B>", "19 start(|p|{ |b|=|\\x1B$B}|)"},
        {"the input ends inside a run", "p b=\"\033$B\">", "end 16"},
    };
    for (const Case& c : WITH)
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

/// A start tag that has read "a b=c d" and the "e" behind it, put into another state: each exit from there must normalize.
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
    const auto prepare = [](Data<TypeParam>* data) { data->prefix = data->name = data->suffix = To<typename TypeParam::S>("before"); };
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
