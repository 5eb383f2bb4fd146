#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "html/text/WhiteSpaceSimpleParser.h"
#include "tests/support/Flavours.h"
#include "tests/support/RecognizerCheck.h"

namespace Kestra::Test {
namespace {

using namespace std::string_view_literals;

using HTML::WhiteSpaceSimpleParser;

template <typename Flavour>
class WhiteSpaceTest : public testing::Test {};

TYPED_TEST_SUITE(WhiteSpaceTest, Flavours);

TYPED_TEST(WhiteSpaceTest, Runs) {
    struct Case {
        const char* note;
        std::string_view input;
        std::string_view expected;
    };
    const Case CASES[] = {
        {"a run ends before the first other character", " \tx", "19 text( \\t) rest(x)"},
        {"a run may be empty", "x ", "19 text() rest(x )"},
        {"all six kinds of white space", " \t\n\v\f\r<", "19 text( \\t\\n\\x0B\\x0C\\r) rest(<)"},
        {"a run at the end of the input is complete", "  ", "end 19 text(  )"},
        {"no input at all is a complete empty run", "", "end 19 text()"},
        {"a NUL is no white space", " \0 "sv, "19 text( ) rest(\\x00 )"},
        {"lines are counted", "\n\r\n \n  x", "19 text(\\n\\r\\n \\n  ) rest(x)"},
        {"the separators 28 to 31 are no white space", "\n\034", "19 text(\\n) rest(\\x1C)"},
    };
    for (const Case& c : CASES)
        CheckRow<WhiteSpaceSimpleParser, TypeParam>(c.note, c.input, c.expected);
}

TYPED_TEST(WhiteSpaceTest, ANewRecordAndABegunOneAreEmpty) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    WhiteSpaceSimpleParser<C, S> parser;
    HTML::WhiteSpaceSimpleParserData<C, S> data;
    EXPECT_TRUE(data.text.empty());
    data.text = To<S>("left over");
    EXPECT_EQ(parser.BeginParse(&data), 0U);
    EXPECT_TRUE(data.text.empty());
}

/// Collects the characters that the recognizer takes for white space.
template <typename C, typename S>
S FindWhiteSpace(unsigned count) {
    WhiteSpaceSimpleParser<C, S> parser;
    HTML::WhiteSpaceSimpleParserData<C, S> data;
    S found;
    for (unsigned code = 0; code < count; ++code) {
        const C text[] = {static_cast<C>(code), '<'};
        HTML::SimpleParserContext<C, S> context;
        context.buffer = text;
        context.length = 2;
        parser.BeginParse(&data);
        EXPECT_EQ(parser.Parse(&context, &data), HTML::SP_TOKEN_COMPLETE);
        if (context.position > 0)
            found.push_back(text[0]);
    }
    return found;
}

TEST(WhiteSpaceTest, NarrowWhiteSpaceIsSixBytes) {
    EXPECT_EQ((FindWhiteSpace<char, std::string>(256)), "\t\n\v\f\r ");
}

TEST(WhiteSpaceTest, WideWhiteSpaceIsOneFixedTable) {
    const WideString expected = {0x0009, 0x000A, 0x000B, 0x000C, 0x000D, 0x0020, 0x0085, 0x00A0, 0x1680,
                                 0x2000, 0x2001, 0x2002, 0x2003, 0x2004, 0x2005, 0x2006, 0x2007, 0x2008,
                                 0x2009, 0x200A, 0x2028, 0x2029, 0x202F, 0x205F, 0x3000};
    EXPECT_EQ((FindWhiteSpace<WideChar, WideString>(0x10000)), expected);
}

TEST(WhiteSpaceTest, OnlyTheLineFeedOfWideWhiteSpaceBeginsALine) {
    const WideString input = {0x2028, 0x0085, 0x000A, 0x3000, 0x2029, 'x'};
    CheckRecognizer<WhiteSpaceSimpleParser<WideChar, WideString>>(input,
                                                                  "19 text(\\u2028\\u0085\\n\\u3000\\u2029) rest(x)");
}

}  // namespace
}  // namespace Kestra::Test
