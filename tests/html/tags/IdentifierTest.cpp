#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <string_view>

#include "html/tags/IdentifierSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::IdentifierSimpleParser;
using HTML::IdentifierSimpleParserData;

template <typename Flavour>
using Parser = IdentifierSimpleParser<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
using Data = IdentifierSimpleParserData<typename Flavour::C, typename Flavour::S>;

template <typename Flavour>
std::function<void(Data<Flavour>*)> AttributeName(bool set) {
    return [set](Data<Flavour>* data) { data->attributeNameMode = set; };
}

template <typename Flavour>
class IdentifierTest : public testing::Test {};

TYPED_TEST_SUITE(IdentifierTest, Flavours);

TYPED_TEST(IdentifierTest, Names) {
    struct Case {
        const char* note;
        std::string_view input;
        std::string_view asTag;
        std::string_view asAttribute;
    };
    const Case CASES[] = {
        {"a name ends before white space", "ab c", "19 text(ab) rest( c)", "19 text(ab) rest( c)"},
        {"a name ends before \">\"", "ab>", "19 text(ab) rest(>)", "19 text(ab) rest(>)"},
        {"a name ends before \"=\"", "ab=c", "19 text(ab) rest(=c)", "19 text(ab) rest(=c)"},
        {"only a tag name ends before \"<\"", "a<b c", "19 text(a) rest(<b c)", "19 text(a<b) rest( c)"},
        {"only a tag name ends before \"[\"", "a[b=", "19 text(a) rest([b=)", "19 text(a[b) rest(=)"},
        {"only a tag name ends before \"]\"", "a]b>", "19 text(a) rest(]b>)", "19 text(a]b) rest(>)"},
        {"a \"/\" belongs to a name", "/a/b/>", "19 text(/a/b/) rest(>)", "19 text(/a/b/) rest(>)"},
        {"quotes belong to a name", "'a\"b>", "19 text('a\"b) rest(>)", "19 text('a\"b) rest(>)"},
        {"other marks belong to a name", "!a-b:c.d_e?#&;>", "19 text(!a-b:c.d_e?#&;) rest(>)",
         "19 text(!a-b:c.d_e?#&;) rest(>)"},
        {"case is kept", "aBc>", "19 text(aBc) rest(>)", "19 text(aBc) rest(>)"},
        {"a name may be empty before \">\"", ">", "19 text() rest(>)", "19 text() rest(>)"},
        {"a name may be empty before white space", "\na", "19 text() rest(\\na)", "19 text() rest(\\na)"},
        {"a name may be empty before \"=\"", "=", "19 text() rest(=)", "19 text() rest(=)"},
        {"a NUL belongs to a name", "a\0b>"sv, "19 text(a\\x00b) rest(>)", "19 text(a\\x00b) rest(>)"},
        {"ESC belongs to a name", "\033$B>", "19 text(\\x1B$B) rest(>)", "19 text(\\x1B$B) rest(>)"},
        {"characters from 128 up belong to a name", "\x80\xBC\xFF>", "19 text(\\x80\\xBC\\xFF) rest(>)",
         "19 text(\\x80\\xBC\\xFF) rest(>)"},
        {"a name up to the end of the input is complete", "abc", "end 19 text(abc)", "end 19 text(abc)"},
        {"no input at all is a complete empty name", "", "end 19 text()", "end 19 text()"},
    };
    for (const Case& c : CASES) {
        CheckRow<IdentifierSimpleParser, TypeParam>(c.note, c.input, c.asTag, AttributeName<TypeParam>(false));
        CheckRow<IdentifierSimpleParser, TypeParam>(c.note, c.input, c.asAttribute, AttributeName<TypeParam>(true));
    }
}

TYPED_TEST(IdentifierTest, ANameAtTheEndOfAPieceIsNotYetComplete) {
    using S = typename TypeParam::S;
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    EXPECT_EQ(ParseOnce(&parser, &data, "ab"), (CallOutcome{0, 2}));
    EXPECT_EQ(ParseOnce(&parser, &data, ""), (CallOutcome{0, 0}));
    EXPECT_EQ(ParseOnce(&parser, &data, "c>"), (CallOutcome{19, 1}));
    EXPECT_EQ(data.text, To<S>("abc"));
}

TYPED_TEST(IdentifierTest, TheRunIsAppended) {
    using S = typename TypeParam::S;
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    parser.BeginParse(&data);
    data.text = To<S>("x");
    EXPECT_EQ(ParseOnce(&parser, &data, ">"), (CallOutcome{19, 0}));
    EXPECT_EQ(data.text, To<S>("x"));
    EXPECT_EQ(ParseOnce(&parser, &data, "y>"), (CallOutcome{19, 1}));
    EXPECT_EQ(data.text, To<S>("xy"));
}

TYPED_TEST(IdentifierTest, BeginParseGoesBackToTagNames) {
    using S = typename TypeParam::S;
    Parser<TypeParam> parser;
    Data<TypeParam> data;
    EXPECT_TRUE(data.text.empty());
    EXPECT_FALSE(data.attributeNameMode);
    data.text = To<S>("left over");
    data.attributeNameMode = true;
    EXPECT_EQ(parser.BeginParse(&data), 0U);
    EXPECT_TRUE(data.text.empty());
    EXPECT_FALSE(data.attributeNameMode);
}

/// Collects the characters before which a name ends.
template <typename C, typename S>
S FindStops(unsigned count, bool attributeNameMode) {
    IdentifierSimpleParser<C, S> parser;
    IdentifierSimpleParserData<C, S> data;
    S found;
    for (unsigned code = 0; code < count; ++code) {
        const C text[] = {static_cast<C>(code), '>'};
        HTML::SimpleParserContext<C, S> context;
        context.buffer = text;
        context.length = 2;
        parser.BeginParse(&data);
        data.attributeNameMode = attributeNameMode;
        EXPECT_EQ(parser.Parse(&context, &data), HTML::SP_TOKEN_COMPLETE);
        if (context.position == 0)
            found.push_back(text[0]);
    }
    return found;
}

TEST(IdentifierTest, NarrowStops) {
    EXPECT_EQ((FindStops<char, std::string>(256, false)), "\t\n\v\f\r <=>[]");
    EXPECT_EQ((FindStops<char, std::string>(256, true)), "\t\n\v\f\r =>");
}

TEST(IdentifierTest, WideStops) {
    const WideString highSpaces = {0x0085, 0x00A0, 0x1680, 0x2000, 0x2001, 0x2002, 0x2003, 0x2004, 0x2005, 0x2006,
                                   0x2007, 0x2008, 0x2009, 0x200A, 0x2028, 0x2029, 0x202F, 0x205F, 0x3000};
    EXPECT_EQ((FindStops<WideChar, WideString>(0x10000, false)), To<WideString>("\t\n\v\f\r <=>[]") + highSpaces);
    EXPECT_EQ((FindStops<WideChar, WideString>(0x10000, true)), To<WideString>("\t\n\v\f\r =>") + highSpaces);
}

}  // namespace
}  // namespace Kestra::Test
