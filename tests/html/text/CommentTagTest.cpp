#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/text/CommentTagSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::CommentTagSimpleParser;
using HTML::CommentTagSimpleParserData;

template <typename Flavour>
using Parser = CommentTagSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = CommentTagSimpleParserData<typename Flavour::C, typename Flavour::S>;

/// A row: what follows the "<!--", and what becomes of it.
struct Case {
    const char* note;
    std::string_view input;
    std::string_view expected;
};

template <typename Flavour>
class CommentTagTest : public testing::Test {};

TYPED_TEST_SUITE(CommentTagTest, Flavours);

TYPED_TEST(CommentTagTest, Comments) {
    const Case CASES[] = {
        {"a comment ends after \"-->\"", " a -->", "19 comment( a )"},
        {"the rest of the piece is left", "a-->b-->", "19 comment(a) rest(b-->)"},
        {"a comment may be empty", "-->", "19 comment()"},
        {"hyphens in the body are content", " a -- b -->", "19 comment( a -- b )"},
        {"a single hyphen is content", "a-b - c-->", "19 comment(a-b - c)"},
        {"a hyphen before the end is content", " a --->", "19 comment( a -)"},
        {"a run of hyphens keeps all but its last two", "a------>", "19 comment(a----)"},
        {"nothing but hyphens", "---->", "19 comment(--)"},
        {"white space after the hyphens does not end it", "a-- >-->", "19 comment(a-- >)"},
        {"a line end after the hyphens does not end it", "a--\n>-->", "19 comment(a--\\n>)"},
        {"\">\" at once is content", ">-->", "19 comment(>)"},
        {"\"->\" at once is content", "->-->", "19 comment(->)"},
        {"\"--!>\" does not end it", "a--!>b-->", "19 comment(a--!>b)"},
        {"an opener inside is content", "a<!--b-->c-->", "19 comment(a<!--b) rest(c-->)"},
        {"tags, quotes and sections inside are content", "<p a='-->'>", "19 comment(<p a=') rest('>)"},
        {"line ends are content and count", "a\r\nb\n\n-->\n", "19 comment(a\\r\\nb\\n\\n) rest(\\n)"},
        {"a NUL is content", "a\0-\0-->"sv, "19 comment(a\\x00-\\x00)"},
        {"ESC and what follows are content", "\033$B-->", "19 comment(\\x1B$B)"},
        {"characters from 128 up are content", "\xAD\x96\xBE-->", "19 comment(\\xAD\\x96\\xBE)"},
    };
    for (const Case& c : CASES)
        CheckRow<CommentTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(CommentTagTest, OpenComments) {
    const Case CASES[] = {
        {"the input ends in the body", " a", "end 19 comment( a, open)"},
        {"the input ends at once", "", "end 19 comment(, open)"},
        {"a last hyphen is kept", " a -", "end 19 comment( a -, open)"},
        {"two last hyphens are kept", " a --", "end 19 comment( a --, open)"},
        {"all hyphens of a run are kept", "a-----", "end 19 comment(a-----, open)"},
        {"nothing but a hyphen", "-", "end 19 comment(-, open)"},
        {"nothing but hyphens", "--", "end 19 comment(--, open)"},
        {"hyphens in the middle are not kept twice", "a--b", "end 19 comment(a--b, open)"},
        {"\">\" without hyphens ends nothing", "a>->", "end 19 comment(a>->, open)"},
    };
    for (const Case& c : CASES)
        CheckRow<CommentTagSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(CommentTagTest, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a-"), 1U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a--"), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a---"), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a-b"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a--b"), 0U);
}

TYPED_TEST(CommentTagTest, PendingHyphensAreNotYetInTheText) {
    struct Row {
        std::string_view input;
        std::string_view record;
    };
    const Row ROWS[] = {
        {"a-", "comment(a)"}, {"a--", "comment(a)"}, {"a---", "comment(a-)"}, {"a--b", "comment(a--b)"}};
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.input);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        EXPECT_EQ(ParseOnce(&parser, &data, row.input), (CallOutcome{0, row.input.size()}));
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(CommentTagTest, ARecordMayStandInAnyState) {
    struct Row {
        std::uint32_t state;
        std::string_view input;
        CallOutcome outcome;
        std::string_view record;
    };
    const Row ROWS[] = {
        {1, "->", {19, 2}, "comment()"},  {1, ">", {0, 1}, "comment(->)"},  {2, ">x", {19, 1}, "comment()"},
        {2, "x", {0, 1}, "comment(--x)"}, {2, "->", {19, 2}, "comment(-)"}, {2, "-", {0, 1}, "comment(-)"},
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

TYPED_TEST(CommentTagTest, EndParseOpensTheCommentAndAppendsWhatIsPending) {
    struct Row {
        std::uint32_t state;
        std::string_view record;
    };
    const Row ROWS[] = {
        {0, "comment(a, open)"}, {1, "comment(a-, open)"}, {2, "comment(a--, open)"}, {3, "comment(a, open)"}};
    for (const Row& row : ROWS) {
        SCOPED_TRACE(row.state);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        data.text = To<typename TypeParam::S>("a");
        data.state = row.state;
        EXPECT_EQ(parser.EndParse(&data), HTML::SP_TOKEN_COMPLETE);
        EXPECT_EQ(Dump(data), row.record);
    }
}

TYPED_TEST(CommentTagTest, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(3);
}

TYPED_TEST(CommentTagTest, ABodyMayBeLong) {
    using S = typename TypeParam::S;
    const std::string body(200000, 'x');
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, body + "-->"), (CallOutcome{19, body.size() + 3}));
    EXPECT_EQ(data.text, To<S>(body));
    const std::string hyphens(200000, '-');
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, hyphens + ">"), (CallOutcome{19, hyphens.size() + 1}));
    EXPECT_EQ(data.text, To<S>(hyphens.substr(2)));
}

TEST(CommentTagTest, WideUnitsAreComparedWhole) {
    // The low or the high bytes are those of "-" and ">".
    CheckRecognizer<Parser<Wide>>(WideString{0x012D, 0x2D00, 0x012D, '-', '-', 0x013E, 0x3E00, '-', '-', '>'},
                                  "19 comment(\\u012D\\u2D00\\u012D--\\u013E\\u3E00)");
    CheckRecognizer<Parser<Wide>>(WideString{'-', 0x012D, '>', '-', '-'}, "end 19 comment(-\\u012D>--, open)");
}

}  // namespace
}  // namespace Kestra::Test
