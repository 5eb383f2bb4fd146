#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/reference/events/StatelessReference.h"
#include "tests/support/EventRun.h"

// Windows has no converter for this code page; there its strings follow the ANSI rule.

namespace Kestra::Test {
namespace {

TEST(PosixEventConversionsTest, PairsHighByteFirstWithAnOddLastByte) {
    const std::string input("\0ab<a>", 6);
    const std::vector<std::string> expected = {"start-parsing", "text(a\\uFFFD)", "start(a|)", "stop-parsing"};
    const StatelessReferenceRun reference = ParseStatelessByReference({input}, 1201);
    EXPECT_EQ(reference.trace, expected);
    EXPECT_EQ(reference.charset, 1201U);
    EXPECT_EQ(ParseEvents({input}, 1201).trace, expected);
}

}  // namespace
}  // namespace Kestra::Test
