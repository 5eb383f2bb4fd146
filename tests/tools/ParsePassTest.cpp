#include "tools/kestra-html/input/ParsePass.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/tools/TextSource.h"

namespace Kestra::Test {
namespace {

using HTML::GenericParser;
using Tool::ParseOptions;
using Tool::ParsePassResult;
using Tool::ParseStart;

ParseStart StartWith(StringNS::CharSet::Code charset, GenericParser::DataStreamType type) {
    ParseOptions options;
    options.charset = charset;
    options.input = type;
    return ParseStart(options);
}

ParsePassResult Abandoned(StringNS::CharSet::Code found) {
    ParsePassResult result;
    result.parse = 705;
    result.charset = found;
    return result;
}

TEST(ParseStart, OnlyADocumentOfUnknownCharsetIsAbandoned) {
    EXPECT_TRUE(StartWith(0, GenericParser::DATA_STREAM_AUTO).CanRestart());
    EXPECT_TRUE(StartWith(0, GenericParser::DATA_STREAM_8BIT).CanRestart());
    EXPECT_FALSE(StartWith(0, GenericParser::DATA_STREAM_UTF16).CanRestart());
    EXPECT_FALSE(StartWith(1252, GenericParser::DATA_STREAM_AUTO).CanRestart());
}

TEST(ParseStart, TheCharsetFoundIsTakenOver) {
    ParseStart start = StartWith(0, GenericParser::DATA_STREAM_AUTO);
    EXPECT_FALSE(start.WasRestarted());
    EXPECT_TRUE(start.Restart(Abandoned(20866)));
    EXPECT_EQ(start.GetCharset(), 20866U);
    EXPECT_EQ(start.GetType(), GenericParser::DATA_STREAM_AUTO);
    EXPECT_TRUE(start.WasRestarted());
    EXPECT_FALSE(start.CanRestart());
}

TEST(ParseStart, Utf16IsAStreamTypeToo) {
    for (const auto type : {GenericParser::DATA_STREAM_AUTO, GenericParser::DATA_STREAM_8BIT}) {
        ParseStart start = StartWith(0, type);
        EXPECT_TRUE(start.Restart(Abandoned(1200)));
        EXPECT_EQ(start.GetCharset(), 1200U);
        EXPECT_EQ(start.GetType(), GenericParser::DATA_STREAM_UTF16);
    }
}

TEST(ParseStart, APassThatIsNotAbandonedCounts) {
    ParseStart start = StartWith(0, GenericParser::DATA_STREAM_AUTO);
    for (const std::uint32_t code : {0U, 11U, 704U, 706U}) {
        ParsePassResult result = Abandoned(20866);
        result.parse = code;
        result.endParse = 705;
        EXPECT_FALSE(start.Restart(result)) << code;
    }
    EXPECT_EQ(start.GetCharset(), 0U);
    EXPECT_FALSE(start.WasRestarted());
}

TEST(ParseStart, TheThirdPassCountsWhateverItAnswers) {
    ParseStart start = StartWith(0, GenericParser::DATA_STREAM_AUTO);
    EXPECT_TRUE(start.Restart(Abandoned(0)));
    EXPECT_TRUE(start.CanRestart());
    EXPECT_TRUE(start.Restart(Abandoned(1251)));
    EXPECT_FALSE(start.Restart(Abandoned(1252)));
    EXPECT_EQ(start.GetCharset(), 1251U);
}

TEST(ParsePass, TheSelfCheckIsSwitchedOn) {
    const std::string page("<\0!\0-\0-\0a\0-\0-\0>\0", 16);  // its body is written back by half
    for (const auto mode :
         {GenericParser::SELF_CHECK_OFF, GenericParser::SELF_CHECK_CRC, GenericParser::SELF_CHECK_COPY}) {
        GenericParser parser;
        ParseOptions options;
        options.input = GenericParser::DATA_STREAM_UTF16;
        options.selfCheck = mode;
        TextSource source(page);
        const ParsePassResult result =
            Tool::RunParsePass(&parser, &source, ParseStart(options), options, [](std::uint64_t) {});
        EXPECT_EQ(result.parse, 0U);
        EXPECT_EQ(result.endParse, mode == GenericParser::SELF_CHECK_OFF ? 0U : 704U);
        EXPECT_EQ(parser.GetSelfCheckStream() != nullptr, mode == GenericParser::SELF_CHECK_COPY);
    }
}

}  // namespace
}  // namespace Kestra::Test
