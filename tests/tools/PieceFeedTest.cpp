#include "tools/kestra-html/input/PieceFeed.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Kestra::Test {
namespace {

/// What is fed to a parser that gives these answers, one for each piece: the pieces, each followed
/// by "|" and the bytes that are done, and the result.
std::string Feed(std::string_view content, std::uint64_t pieceSize, std::vector<std::uint32_t> answers) {
    std::string trace;
    std::size_t calls = 0;
    const auto parsePiece = [&](const char* piece, std::size_t size) {
        trace.append(piece, size);
        return answers.at(calls++);
    };
    const auto bytesDone = [&](std::uint64_t bytes) { trace.append("|").append(std::to_string(bytes)).append(" "); };
    const std::uint32_t result = Tool::FeedPieces(content, pieceSize, parsePiece, bytesDone);
    return trace.append("= ").append(std::to_string(result));
}

TEST(PieceFeed, Pieces) {
    EXPECT_EQ(Feed("abcdefg", 0, {0}), "abcdefg|7 = 0");
    EXPECT_EQ(Feed("abcdefg", 3, {0, 0, 0}), "abc|3 def|6 g|7 = 0");
    EXPECT_EQ(Feed("abc", 3, {0}), "abc|3 = 0");
    EXPECT_EQ(Feed("ab", 1, {0, 0}), "a|1 b|2 = 0");
    EXPECT_EQ(Feed("ab", UINT64_MAX, {0}), "ab|2 = 0");
}

TEST(PieceFeed, AnEmptyInputHasNoPiece) {
    EXPECT_EQ(Feed("", 0, {}), "= 0");
    EXPECT_EQ(Feed("", 3, {}), "= 0");
}

TEST(PieceFeed, OnlyAnAnswerOf0Or16IsFollowedByAnotherPiece) {
    EXPECT_EQ(Feed("abc", 1, {16, 0, 16}), "a|1 b|2 c|3 = 16");
    EXPECT_EQ(Feed("abc", 1, {16, 16, 0}), "a|1 b|2 c|3 = 0");
    EXPECT_EQ(Feed("abc", 1, {0, 703}), "a|1 b|2 = 703");
    EXPECT_EQ(Feed("abc", 1, {10}), "a|1 = 10");
}

}  // namespace
}  // namespace Kestra::Test
