#include <gtest/gtest.h>

#include <string>

#include "html/framework/QuoteKind.h"
#include "html/framework/ResultCodes.h"
#include "html/tags/EndTagSimpleParser.h"
#include "html/tags/EntityTagSimpleParser.h"
#include "html/tags/ExternTagSimpleParser.h"
#include "html/tags/GenericTagSimpleParser.h"
#include "html/tags/StartTagSimpleParser.h"
#include "html/text/CCommentSimpleParser.h"
#include "html/text/CDATATagSimpleParser.h"
#include "html/text/CPPCommentSimpleParser.h"
#include "html/text/CommentTagSimpleParser.h"
#include "html/text/ConditionalTagSimpleParser.h"
#include "html/text/DQuoteStringSimpleParser.h"
#include "html/text/JSRegExSimpleParser.h"
#include "html/text/JunkSimpleParser.h"
#include "html/text/SQuoteStringSimpleParser.h"
#include "html/text/TextSimpleParser.h"
#include "tests/support/Flavours.h"

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

TYPED_TEST(ConstantsTest, NamesOfRecognizers) {
    using C = typename TypeParam::C;
    using S = typename TypeParam::S;
    EXPECT_EQ((HTML::TextSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("TextSimpleParser"));
    EXPECT_EQ((HTML::GenericTagSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("GenericTagSimpleParser"));
    EXPECT_EQ((HTML::StartTagSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("StartTagSimpleParser"));
    EXPECT_EQ((HTML::EndTagSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("EndTagSimpleParser"));
    EXPECT_EQ((HTML::SQuoteStringSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("SQuoteStringSimpleParser"));
    EXPECT_EQ((HTML::DQuoteStringSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("DQuoteStringSimpleParser"));
    EXPECT_EQ((HTML::JSRegExSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("JSRegExSimpleParser"));
    EXPECT_EQ((HTML::CommentTagSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("CommentTagSimpleParser"));
    EXPECT_EQ((HTML::CDATATagSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("CDATATagSimpleParser"));
    EXPECT_EQ((HTML::ConditionalTagSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("ConditionalTagSimpleParser"));
    EXPECT_EQ((HTML::EntityTagSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("EntityTagSimpleParser"));
    EXPECT_EQ((HTML::ExternTagSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("ExternTagSimpleParser"));
    EXPECT_EQ((HTML::CCommentSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("CCommentSimpleParser"));
    EXPECT_EQ((HTML::CPPCommentSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("CPPCommentSimpleParser"));
    EXPECT_EQ((HTML::JunkSimpleParserData<C, S>::PARSER_NAME), KESTRA_WIDE("JunkSimpleParser"));
}

}  // namespace
}  // namespace Kestra::Test
