#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "html/parser/GenericParser.h"
#include "tests/support/FailingNew.h"

#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace Kestra::Test {
namespace {

using HTML::GenericParser;

/// More allocations than a detection makes.
constexpr std::size_t TOO_MANY = 2000;

/// uchardet leaks its parts when its own constructor lacks memory; what is lost meanwhile is not
/// looked at.
class LeaksAllowed {
public:
#ifdef __SANITIZE_ADDRESS__
    LeaksAllowed() {
        __lsan_disable();
    }
    ~LeaksAllowed() {
        __lsan_enable();
    }
#else
    LeaksAllowed() = default;
#endif
    LeaksAllowed(const LeaksAllowed&) = delete;
    LeaksAllowed& operator=(const LeaksAllowed&) = delete;
};

/// Russian in windows-1251, for which the detector needs all that it has.
TEST(FailedDetectionTest, AnswersThatMemoryIsLacking) {
    std::string text;
    while (text.size() < 1000)
        text += "\xCF\xE0\xF0\xEE\xF5\xEE\xE4 \xE2\xFB\xF8\xE5\xEB \xE8\xE7 \xEF\xEE\xF0\xF2\xE0 \xF0\xE0\xED\xEE. ";
    std::size_t failures = 0;
    for (bool isDetected = false; !isDetected;) {
        SCOPED_TRACE(failures + 1);
        ASSERT_LT(failures, TOO_MANY);
        GenericParser parser;
        StringNS::CharSet::Code code = 0;
        std::uint32_t result = 0;
        {
            [[maybe_unused]] const LeaksAllowed allowed;
            const FailingAllocation failure(failures + 1);
            result = parser.DetectCharset(text.data(), text.size(), &code);
            isDetected = !failure.HasFailed();
        }
        if (isDetected) {
            EXPECT_EQ(result, 0U);
            EXPECT_EQ(code, 1251U);
        } else {
            EXPECT_EQ(result, 8U);
            EXPECT_EQ(parser.GetDetectedConfidence(), 0U);
            ++failures;
        }
    }
    EXPECT_GT(failures, 5U);
}

}  // namespace
}  // namespace Kestra::Test
