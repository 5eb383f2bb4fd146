#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "html/framework/QuoteKind.h"
#include "html/framework/ResultCodes.h"
#include "tests/support/Flavours.h"
#include "tests/support/Recognizers.h"

namespace Kestra::Test {
namespace {

TEST(ConstantsTest, ResultCodes) {
    EXPECT_EQ(HTML::SP_NEED_MORE_DATA, 0U);
    EXPECT_EQ(HTML::SP_NOT_THIS_TOKEN, 2U);
    EXPECT_EQ(HTML::SP_MALFORMED, 11U);
    EXPECT_EQ(HTML::SP_UNEXPECTED_CHAR, 12U);
    EXPECT_EQ(HTML::SP_UNTERMINATED, 16U);
    EXPECT_EQ(HTML::SP_TOKEN_COMPLETE, 19U);
    EXPECT_EQ(HTML::PARSER_OK, 0U);
    EXPECT_EQ(HTML::PARSER_INVALID_ARGUMENT, 2U);
    EXPECT_EQ(HTML::PARSER_RECOVERY_IMPOSSIBLE, 5U);
    EXPECT_EQ(HTML::PARSER_UNKNOWN_RECOGNIZER, 11U);
    EXPECT_EQ(HTML::PARSER_UNTERMINATED, 16U);
    EXPECT_EQ(HTML::PARSER_SHORT_READ, 507U);
    EXPECT_EQ(HTML::PARSER_SELF_CHECK_FAILED, 704U);
    EXPECT_EQ(HTML::PARSER_PARSE_AGAIN, 705U);
    EXPECT_EQ(HTML::PARSER_CHARSET_NOT_DETECTED, 706U);
    EXPECT_EQ(HTML::PARSER_TOO_LITTLE_DATA, 707U);
    EXPECT_EQ(HTML::PARSER_DETECTOR_NOT_CONFIDENT, 708U);
    EXPECT_EQ(HTML::PARSER_DETECTOR_FAILED, 709U);
}

TEST(ConstantsTest, QuoteKinds) {
    EXPECT_EQ(HTML::QUOTE_NONE, 0U);
    EXPECT_EQ(HTML::QUOTE_SINGLE, 1U);
    EXPECT_EQ(HTML::QUOTE_DOUBLE, 2U);
}

template <typename Flavour>
class ConstantsTest : public testing::Test {};

TYPED_TEST_SUITE(ConstantsTest, Flavours);

/// Recognizers that the driver looks up have a name, which is that of their class.
TYPED_TEST(ConstantsTest, NamesOfRecognizers) {
    std::string named;
    ForEachRecognizer<TypeParam>([&named]<typename Parser>(std::string_view name) {
        if constexpr (requires { Parser::Data::PARSER_NAME; }) {
            EXPECT_EQ(Parser::Data::PARSER_NAME, To<WideString>(std::string(name) + "SimpleParser"));
            named += std::string(name) + " ";
        }
    });
    EXPECT_EQ(named,
              "Text SQuoteString DQuoteString JSRegEx Junk GenericTag StartTag EndTag CommentTag CDATATag "
              "ConditionalTag CComment CPPComment EntityTag ExternTag ");
}

}  // namespace
}  // namespace Kestra::Test
