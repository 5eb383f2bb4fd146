#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/tags/EntityTagSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::EntityTagSimpleParser;
using HTML::EntityTagSimpleParserData;

template <typename Flavour>
using Parser = EntityTagSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = EntityTagSimpleParserData<typename Flavour::C, typename Flavour::S>;

/// A row: what follows the "<!", and what becomes of it.
struct Case {
    const char* note;
    std::string_view input;
    std::string_view expected;
};

template <typename Flavour>
class EntityTagTest : public testing::Test {};

TYPED_TEST_SUITE(EntityTagTest, Flavours);

TYPED_TEST(EntityTagTest, Keywords) {
    const Case CASES[] = {
        {"a declaration may have a keyword only", "DOCTYPE>", "19 entity(|DOCTYPE||)"},
        {"the rest of the piece is left", "DOCTYPE>x>", "19 entity(|DOCTYPE||) rest(x>)"},
        {"case is kept", "DocType>", "19 entity(|DocType||)"},
        {"any word is a keyword", "x>", "19 entity(|x||)"},
        {"white space before the keyword is the prefix", " \n\tx>", "19 entity( \\n\\t|x||)"},
        {"white space after it is the suffix when nothing follows", "x \r\n>", "19 entity(|x|| \\r\\n)"},
        {"white space on both sides", " x >", "19 entity( |x|| )"},
        {"a keyword may be empty", ">", "19 entity(|||)"},
        {"an empty keyword after a prefix", " >", "19 entity( |||)"},
        {"\"=\" ends the keyword and begins an item", "x=y>", "19 entity(|x|{|=y}|)"},
        {"\"[\" ends the keyword and begins an item", "x[y]>", "19 entity(|x|{|[y]}|)"},
        {"\"]\" ends the keyword and begins an item", "x]>", "19 entity(|x|{|]}|)"},
        {"\"[\" without a keyword", "[x]>", "19 entity(||{|[x]}|)"},
        {"quotes belong to the keyword", "'x\"y'>", "19 entity(|'x\"y'||)"},
        {"slashes, hyphens and \"?\" belong to the keyword", "/x-?>", "19 entity(|/x-?||)"},
        {"a NUL belongs to the keyword", "x\0y>"sv, "19 entity(|x\\x00y||)"},
        {"characters from 128 up belong to the keyword", "\xDC\xBE>", "19 entity(|\\xDC\\xBE||)"},
    };
    for (const Case& c : CASES)
        CheckRow<EntityTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(EntityTagTest, Items) {
    const Case CASES[] = {
        {"a word", "DOCTYPE html>", "19 entity(|DOCTYPE|{ |html}|)"},
        {"white space after the last item is the suffix", "DOCTYPE html >", "19 entity(|DOCTYPE|{ |html}| )"},
        {"white space before an item is its prefix", "D \n\ta\r b>", "19 entity(|D|{ \\n\\t|a}{\\r |b}|)"},
        {"quoted items", "D html PUBLIC \"-//a\" \"b\">", "19 entity(|D|{ |html}{ |PUBLIC}{ |\"-//a\"}{ |\"b\"}|)"},
        {"single-quoted items", "D 'a' 'b c'>", "19 entity(|D|{ |'a'}{ |'b c'}|)"},
        {"an item may hold the other quote", "D 'a\"b' \"c'd\">", "19 entity(|D|{ |'a\"b'}{ |\"c'd\"}|)"},
        {"an item may hold \">\", \"<\" and line ends", "D '>\n<' \"<\n>\">",
         "19 entity(|D|{ |'>\\n<'}{ |\"<\\n>\"}|)"},
        {"an empty quoted item is an item", "D ''>", "19 entity(|D|{ |''}|)"},
        {"an empty item in quotation marks is an item", "D \"\" x>", "19 entity(|D|{ |\"\"}{ |x}|)"},
        {"empty items one after the other", "D ''\"\"''>", "19 entity(|D|{ |''}{|\"\"}{|''}|)"},
        {"items without white space between them", "D 'a'b\"c\">", "19 entity(|D|{ |'a'}{|b\"c\"}|)"},
        {"quoted items without white space between them", "D \"a\"'b'c>", "19 entity(|D|{ |\"a\"}{|'b'}{|c}|)"},
        {"white space after a quoted item is the suffix", "D 'a' \n>", "19 entity(|D|{ |'a'}| \\n)"},
        {"quotes after the first character belong to a word", "D a'b\"c>", "19 entity(|D|{ |a'b\"c}|)"},
        {"\"=\" and \"/\" belong to a word", "D a=/b/ =>", "19 entity(|D|{ |a=/b/}{ |=}|)"},
        {"brackets and hyphens belong to a word", "D --a-- [b]>", "19 entity(|D|{ |--a--}{ |[b]}|)"},
        {"a backslash escapes nothing", "D 'a\\'b>", "19 entity(|D|{ |'a\\\\'}{|b}|)"},
        {"a backslash escapes nothing in quotation marks either", "D \"a\\\"b>", "19 entity(|D|{ |\"a\\\\\"}{|b}|)"},
        {"NUL and ESC are ordinary", "D \0\033$B '\0'>"sv, "19 entity(|D|{ |\\x00\\x1B$B}{ |'\\x00'}|)"},
        {"characters from 128 up", "D \xBE\xE9 \"\xA0\">", "19 entity(|D|{ |\\xBE\\xE9}{ |\"\\xA0\"}|)"},
        {"many items", "D a b 'c' \"d\" e f>", "19 entity(|D|{ |a}{ |b}{ |'c'}{ |\"d\"}{ |e}{ |f}|)"},
    };
    for (const Case& c : CASES)
        CheckRow<EntityTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(EntityTagTest, Failures) {
    const Case CASES[] = {
        {"\"<\" after a word", "DOCTYPE x<y>", "11 rest(<y>)"},
        {"\"<\" after the keyword", "DOCTYPE<y>", "11 rest(<y>)"},
        {"\"<\" after white space", "DOCTYPE x <!y>", "11 rest(<!y>)"},
        {"\"<\" after a quoted item", "D 'x'<", "11 rest(<)"},
        {"\"<\" at once", "<x>", "11 rest(<x>)"},
        {"\"<\" in a list of declarations", "D a [\n<!E b>]>", "11 rest(<!E b>]>)"},
        {"the input ends at once", "", "end 16 entity(|||)"},
        {"the input ends in the prefix", " ", "end 16 entity(|||)"},
        {"the input ends in the keyword", " D", "end 16 entity( |||)"},
        {"the input ends after the keyword", "D ", "end 16 entity(|D||)"},
        {"the input ends in a word", "D a b", "end 16 entity(|D|{ |a}|)"},
        {"the input ends in a quoted item", "D 'a>", "end 16 entity(|D||)"},
        {"the input ends in an item in quotation marks", "D \"a>", "end 16 entity(|D||)"},
        {"the input ends after a quoted item", "D 'a'", "end 16 entity(|D|{ |'a'}|)"},
        {"the input ends in the suffix", "D a ", "end 16 entity(|D|{ |a}|)"},
    };
    for (const Case& c : CASES)
        CheckRow<EntityTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(EntityTagTest, EscapeRunsInQuotedItems) {
    const auto on = [](Data<TypeParam>* data) { data->iso2022 = true; };
    const Case WITH[] = {
        {"the first item", "D \"\033$B\" \"\033(B\">", "19 entity(|D|{ |\"\\x1B$B\" \"\\x1B(B\"}|)"},
        {"after a word", "D x \"\033$B\" \"\033(B\">", "19 entity(|D|{ |x}{ |\"\\x1B$B\" \"\\x1B(B\"}|)"},
        {"after a quoted item", "D 'x'\"\033$B\" \"\033(B\">", "19 entity(|D|{ |'x'}{|\"\\x1B$B\" \"\\x1B(B\"}|)"},
        {"after an item in quotation marks", "D \"\" \"\033$B\" \"\033(B\">",
         "19 entity(|D|{ |\"\"}{ |\"\\x1B$B\" \"\\x1B(B\"}|)"},
        {"items in apostrophes never have runs", "D '\033$B' '\033(B'>", "19 entity(|D|{ |'\\x1B$B'}{ |'\\x1B(B'}|)"},
        {"words never have runs", "D \033$B>", "19 entity(|D|{ |\\x1B$B}|)"},
        {"the input ends inside a run", "D \"\033$B\">", "end 16 entity(|D||)"},
    };
    for (const Case& c : WITH)
        CheckRow<EntityTagSimpleParser, TypeParam>(c.note, c.input, c.expected, on);
    CheckRow<EntityTagSimpleParser, TypeParam>("without the option nowhere", "D \"\033$B\" \"\033(B\">",
                                               "19 entity(|D|{ |\"\\x1B$B\"}{ |\"\\x1B(B\"}|)");
}

TYPED_TEST(EntityTagTest, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" "), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(" D"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("D "), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("D a 'b"), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("D 'b' "), 2U);
}

TYPED_TEST(EntityTagTest, ARecordMayStandInAnyState) {
    struct Row {
        std::uint32_t state;
        std::string_view input;
        CallOutcome outcome;
        std::string_view record;
    };
    const Row ROWS[] = {
        {1, "D a>x", {19, 4}, "entity(|D|{ |a}|)"},
        {1, " a>", {19, 3}, "entity(||{ |a}|)"},
        {2, "a 'b' >x", {19, 7}, "entity(||{|a}{ |'b'}| )"},
        {2, ">", {19, 1}, "entity(|||)"},
        {2, "a<", {11, 1}, "entity(||{|a}|)"},
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

TYPED_TEST(EntityTagTest, AFailureLeavesTheRecordAsItWas) {
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, " D a 'b' <"), (CallOutcome{11, 9}));
    EXPECT_EQ(data.state, 2U);
    EXPECT_EQ(Dump(data), "entity( |D|{ |a}{ |'b'}|)");
}

TYPED_TEST(EntityTagTest, BeginParseBeginsTheMembersToo) {
    struct Row {
        std::string_view abandoned;
        std::uint32_t state;
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"  ", 0, " D>", "entity( |D||)"},     {"abc", 1, "D>", "entity(|D||)"},
        {"D 'a", 2, "b>", "entity(||{|b}|)"},  {"D  ", 2, " b>", "entity(||{ |b}|)"},
        {"D a", 2, " b>", "entity(||{ |b}|)"},
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

TYPED_TEST(EntityTagTest, AMemberIsBegunWhereItsStateIsEntered) {
    struct Row {
        std::string_view abandoned;
        std::uint32_t state;
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"abc", 0, "D>", "entity(|D||)"},
        {"= 'b", 1, "D>", "entity(|D|{|=}|)"},
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

TYPED_TEST(EntityTagTest, WhatTheRecordHeldBeforeIsReplaced) {
    const auto prepare = [](Data<TypeParam>* data) {
        data->prefix = data->name = data->suffix = To<typename TypeParam::S>("before");
    };
    CheckRow<EntityTagSimpleParser, TypeParam>("with white space", " D\t>", "19 entity( |D||\\t)", prepare);
    CheckRow<EntityTagSimpleParser, TypeParam>("without", "D>", "19 entity(|D||)", prepare);
}

/// The list keeps the elements that it dropped: nothing of an earlier declaration may show in them.
TYPED_TEST(EntityTagTest, AnItemShowsNothingOfAnEarlierOne) {
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, "D \t'a' \n\"b\">").result, HTML::SP_TOKEN_COMPLETE);
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, "D''c>").result, HTML::SP_TOKEN_COMPLETE);
    EXPECT_EQ(Dump(data), "entity(|D''c||)");
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, "D ''c>").result, HTML::SP_TOKEN_COMPLETE);
    EXPECT_EQ(Dump(data), "entity(|D|{ |''}{|c}|)");
    ASSERT_EQ(data.tokens.size(), 2U);
    EXPECT_EQ(data.tokens[0].quote, 1U);
    EXPECT_EQ(data.tokens[1].quote, 0U);
}

TYPED_TEST(EntityTagTest, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(3);
}

TYPED_TEST(EntityTagTest, EveryPartMayBeLong) {
    using S = typename TypeParam::S;
    const std::string word(100000, 'x');
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    const std::string input = word + " " + word + " '" + word + "'>";
    EXPECT_EQ(ParseOnce(&parser, &data, input), (CallOutcome{19, input.size()}));
    EXPECT_EQ(data.name, To<S>(word));
    ASSERT_EQ(data.tokens.size(), 2U);
    EXPECT_EQ(data.tokens[0].value, To<S>(word));
    EXPECT_EQ(data.tokens[1].value, To<S>(word));
}

TEST(EntityTagTest, OnlyWideWhiteSpaceReachesBeyondAscii) {
    CheckRow<EntityTagSimpleParser, Narrow>("bytes from 128 up are no white space",
                                            "\xA0"
                                            "D\x85"
                                            "a>",
                                            "19 entity(|\\xA0"
                                            "D\\x85"
                                            "a||)");
    CheckRow<EntityTagSimpleParser, Wide>("U+00A0 and U+0085",
                                          "\xA0"
                                          "D\x85"
                                          "a>",
                                          "19 entity(\\u00A0|D|{\\u0085|a}|)");
    const WideString input = {0x3000, 'D', 0x2028, '"', 0x3042, '"', 0x2003, 0x203E, 0x202F, '>'};
    CheckRecognizer<Parser<Wide>>(input, "19 entity(\\u3000|D|{\\u2028|\"\\u3042\"}{\\u2003|\\u203E}|\\u202F)");
}

TEST(EntityTagTest, WideUnitsAreComparedWhole) {
    // The low bytes are those of ">", "<" and the quotes.
    CheckRecognizer<Parser<Wide>>(WideString{'D', 0x013E, ' ', 0x013C, 0x0127, ' ', 0x0122, '>'},
                                  "19 entity(|D\\u013E|{ |\\u013C\\u0127}{ |\\u0122}|)");
}

}  // namespace
}  // namespace Kestra::Test
