#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/text/CCommentSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::CCommentSimpleParser;
using HTML::CCommentSimpleParserData;

template <typename Flavour>
using Parser = CCommentSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = CCommentSimpleParserData<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
class CCommentTest : public testing::Test {};

TYPED_TEST_SUITE(CCommentTest, Flavours);

TYPED_TEST(CCommentTest, Comments) {
    struct Case {
        const char* note;
        std::string_view input;  // after "/*"
        std::string_view expected;
    };
    const Case CASES[] = {
        {"a comment ends after \"*/\"", " a */", "19 text( a )"},
        {"the rest of the piece is left", "a*/b*/", "19 text(a) rest(b*/)"},
        {"a comment may be empty", "*/", "19 text()"},
        {"a star before the end is content", " a **/", "19 text( a *)"},
        {"a run of stars keeps all but the last", "*****/", "19 text(****)"},
        {"a star in the middle is content", "a*b* c*/", "19 text(a*b* c)"},
        {"white space between star and slash", "* /*/", "19 text(* /)"},
        {"a slash at once is content", "/*/", "19 text(/)"},
        {"slashes are content", "//a/b*/", "19 text(//a/b)"},
        {"an opener inside is content", "a/*b*/c*/", "19 text(a/*b) rest(c*/)"},
        {"a markup comment inside is content", " a <!-- b */", "19 text( a <!-- b )"},
        {"markup of any kind is content", "<p></script><![CDATA[<!-x<?*/", "19 text(<p></script><![CDATA[<!-x<?)"},
        {"quotes are content", "'\"*/'", "19 text('\") rest(')"},
        {"backslashes are content", "\\*/", "19 text(\\\\)"},
        {"line ends are content and count", "a\r\n*\n\n*/\n", "19 text(a\\r\\n*\\n\\n) rest(\\n)"},
        {"a NUL is content", "a\0*\0*/"sv, "19 text(a\\x00*\\x00)"},
        {"ESC and what follows are content", "\033$B*/", "19 text(\\x1B$B)"},
        {"characters from 128 up are content", "\xAA\xAF*/", "19 text(\\xAA\\xAF)"},
        {"the input ends in the body", " a", "end 16 text( a)"},
        {"the input ends at once", "", "end 16 text()"},
        {"the input ends after a star, which is lost", " a *", "end 16 text( a )"},
        {"the input ends after stars, of which the last is lost", "a***", "end 16 text(a**)"},
    };
    for (const Case& c : CASES)
        CheckRow<CCommentSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(CCommentTest, States) {
    EXPECT_EQ(StateAfter<Parser<TypeParam>>(""), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a<!--"), 0U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a*"), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a**"), 2U);
    EXPECT_EQ(StateAfter<Parser<TypeParam>>("a*b"), 0U);
}

TYPED_TEST(CCommentTest, ARecordMayStandInAnyState) {
    struct Row {
        std::uint32_t state;
        std::string_view input;
        CallOutcome outcome;
        std::string_view record;
    };
    const Row ROWS[] = {
        {2, "/x", {19, 1}, "text()"},
        {2, "x", {0, 1}, "text(*x)"},
        {2, "*/", {19, 2}, "text(*)"},
        {2, "*", {0, 1}, "text(*)"},
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

TYPED_TEST(CCommentTest, EndParseLeavesTheRecordAsItIs) {
    using S = typename TypeParam::S;
    for (const std::uint32_t state : {0U, 2U}) {
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

TYPED_TEST(CCommentTest, UnknownStates) {
    CheckUnknownStates<Parser<TypeParam>>(3);
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    data.state = 1;  // between the two states that there are
    EXPECT_EQ(ParseOnce(&parser, &data, ""), (CallOutcome{0, 0}));
    EXPECT_EQ(ParseOnce(&parser, &data, "x"), (CallOutcome{11, 0}));
    EXPECT_EQ(ParseOnce(&parser, &data, "*/"), (CallOutcome{11, 0}));
    EXPECT_EQ(data.state, 1U);
    EXPECT_EQ(Dump(data), "text()");
}

TYPED_TEST(CCommentTest, ABodyMayBeLong) {
    using S = typename TypeParam::S;
    for (const char filling : {'x', '*', '\n'}) {
        const std::string body(200000, filling);
        Parser<TypeParam> parser;
        Data<TypeParam> data;
        parser.BeginParse(&data);
        EXPECT_EQ(ParseOnce(&parser, &data, body + "*/"), (CallOutcome{19, body.size() + 2}));
        EXPECT_EQ(data.text, To<S>(body));
    }
}

TEST(CCommentTest, WideUnitsAreComparedWhole) {
    // The low or the high bytes are those of "*" and "/".
    CheckRecognizer<Parser<Wide>>(WideString{0x012A, '/', 0x2A00, '/', '*', 0x012F, '*', 0x2F00, '*', '/'},
                                  "19 text(\\u012A/\\u2A00/*\\u012F*\\u2F00)");
}

}  // namespace
}  // namespace Kestra::Test
