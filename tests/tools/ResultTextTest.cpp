#include "tools/kestra-html/output/ResultText.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tools/kestra-html/input/ParsePass.h"

namespace Kestra::Test {
namespace {

TEST(ResultText, EveryCodeHasAMeaningOfItsOwn) {
    const std::string unknown(Tool::GetResultMeaning(4711));
    EXPECT_EQ(unknown, "an unknown result code");
    std::set<std::string> meanings = {unknown};
    for (const std::uint32_t code : {0U,   2U,   5U,   8U,   10U,  11U,  12U,  16U,  50U,  506U, 507U,
                                     512U, 513U, 701U, 702U, 703U, 704U, 705U, 706U, 707U, 708U, 709U}) {
        EXPECT_TRUE(meanings.emplace(Tool::GetResultMeaning(code)).second) << code;
    }
}

TEST(ResultText, ADetectorThatAnswers11IsNoMalformedMarkup) {
    EXPECT_EQ(Tool::GetDetectionMeaning(11),
              "the charset detector has no usable answer, as for plain ASCII, or cannot be started");
    EXPECT_EQ(Tool::GetDetectionMeaning(707), "too little data to detect the charset");
    EXPECT_EQ(Tool::GetDetectionMeaning(0), "success");
}

TEST(ResultText, FailuresNameTheCallsTheCodesAndThePlace) {
    Tool::ParsePassResult result;
    result.line = 3;
    result.column = 7;
    EXPECT_TRUE(result.IsGood());
    EXPECT_EQ(Tool::DescribeFailures(result), "");
    EXPECT_EQ(result.GetFirstFailure(), 0U);
    result.endParse = 16;
    EXPECT_FALSE(result.IsGood());
    EXPECT_EQ(result.GetFirstFailure(), 16U);
    EXPECT_EQ(Tool::DescribeFailures(result),
              "EndParse returned 16: the input ended inside a construct (line 3, column 7)");
    result.startParse = 2;
    EXPECT_EQ(result.GetFirstFailure(), 2U);
    result.parse = 4711;
    EXPECT_EQ(Tool::DescribeFailures(result),
              "StartParse returned 2: an invalid argument, such as an odd number of bytes of UTF-16; "
              "parsing returned 4711: an unknown result code; "
              "EndParse returned 16: the input ended inside a construct (line 3, column 7)");
}

TEST(ResultText, TokensThatAreMissing) {
    constexpr const char* MISSING =
        "tokens are missing, a conversion from the charset 50225 (ISO-2022-KR) returned 50: there is no converter for "
        "the charset";
    Tool::ParsePassResult result;
    result.charset = 50225;
    result.conversionError = 50;
    EXPECT_FALSE(result.IsGood());
    EXPECT_EQ(Tool::DescribeFailures(result), MISSING);
    result.endParse = 16;
    result.line = 3;
    result.column = 7;
    EXPECT_EQ(Tool::DescribeFailures(result),
              "EndParse returned 16: the input ended inside a construct (line 3, column 7); " + std::string(MISSING));
}

TEST(ResultText, ALostCopyIsNoDifference) {
    constexpr const char* LOST =
        "the temporary file for the copy of the tokens could not be written or read, its folder may be full, "
        "read-only or missing";
    Tool::ParsePassResult result;
    result.endParse = 704;
    EXPECT_EQ(Tool::GetFailureMeaning(result), "the tokens written back differ from the input");
    result.copyLost = true;
    EXPECT_EQ(Tool::GetFailureMeaning(result), LOST);
    EXPECT_EQ(Tool::DescribeFailures(result), "EndParse returned 704: " + std::string(LOST) + " (line 0, column 0)");
    result.parse = 11;
    EXPECT_EQ(Tool::GetFailureMeaning(result), Tool::GetResultMeaning(11));
}

TEST(ResultText, EachOfTheThreeCallsCounts) {
    Tool::ParsePassResult result;
    result.startParse = 2;
    EXPECT_FALSE(result.IsGood());
    result = {};
    result.parse = 16;
    EXPECT_FALSE(result.IsGood());
    result = {};
    result.endParse = 16;
    EXPECT_FALSE(result.IsGood());
}

}  // namespace
}  // namespace Kestra::Test
