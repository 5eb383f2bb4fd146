#include "tests/html/stateless/EventRows.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

// What the tables must notice.

namespace Kestra::Test {
namespace {

const EventRow TAG("a tag", "<br/>", {"start(br|)\nend(br)\n", {1, 6}});
const Outcome EARLY{"start(br|)\nend(br)\n", {1, 7}};

/// How many expectations of the rows fail.
std::size_t CountFailures(const std::vector<EventRow>& rows, std::size_t leastRows = 1) {
    testing::TestPartResultArray results;
    {
        const testing::ScopedFakeTestPartResultReporter reporter(
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &results);
        CheckRows(rows, leastRows);
    }
    return static_cast<std::size_t>(results.size());
}

TEST(EventRowsTest, ATrueRowPasses) {
    EXPECT_EQ(CountFailures({EventRow(TAG).AfterAndBytewise("<br/", EARLY)}), 0U);
}

TEST(EventRowsTest, ACutThatIsNotMentioned) {
    EXPECT_EQ(CountFailures({TAG}), 3U);  // with and without empty pieces, and byte by byte
    EXPECT_EQ(CountFailures({EventRow(TAG).Bytewise(EARLY)}), 2U);
}

TEST(EventRowsTest, ACutThatChangesNothing) {
    EXPECT_EQ(CountFailures({EventRow(TAG).AfterAndBytewise("<br/", EARLY).After("<br", TAG.whole)}), 1U);
}

TEST(EventRowsTest, ACutIsStatedOnceAndWithAStatementForSingleBytes) {
    EXPECT_EQ(CountFailures({EventRow(TAG).After("<br/", EARLY)}), 2U);  // nothing stated, and not what happens
    EXPECT_EQ(CountFailures({EventRow(TAG).After("<br/", EARLY).AfterAndBytewise("<br/", EARLY)}), 1U);
}

TEST(EventRowsTest, ACutIsPartOfTheInput) {
    EXPECT_EQ(CountFailures({EventRow(TAG).AfterAndBytewise("<hr/", EARLY)}), 1U);
    EXPECT_GE(CountFailures({EventRow(TAG).AfterAndBytewise("<br/>", EARLY)}), 1U);
}

TEST(EventRowsTest, EventsPlacesAndResults) {
    const EventRow text("a text", "ab", {"", {1, 5}});
    EXPECT_EQ(CountFailures({text}), 0U);
    const std::size_t all = 4;  // whole, two at the cut, byte by byte
    EXPECT_EQ(CountFailures({{"an event that does not come", "ab", {"text(ab)\n", {1, 5}}}}), all);
    EXPECT_EQ(CountFailures({{"another column", "ab", {"", {1, 4}}}}), all);
    EXPECT_EQ(CountFailures({{"another line", "ab", {"", {2, 5}}}}), all);
    EXPECT_EQ(CountFailures({{"another result", "ab", {"", {1, 5}, 16}}}), all);
    EXPECT_EQ(
        CountFailures({{"an event that is not mentioned", "<a", {"", {1, 3}, 16}}, {"a tag", "<a>", {"", {1, 4}}}}),
        6U);
}

TEST(EventRowsTest, ATableHasManyInputs) {
    const EventRow text("a text", "ab", {"", {1, 5}});
    EXPECT_EQ(CountFailures({text}, 2), 1U);
    EXPECT_EQ(CountFailures({text, text}, 1), 1U);
    EXPECT_EQ(CountFailures({text, text}, 2), 2U);
    EXPECT_EQ(CountFailures({text, EventRow(text).In(1252)}, 2), 0U);
}

}  // namespace
}  // namespace Kestra::Test
