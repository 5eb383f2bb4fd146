#include "tools/kestra-html/input/PieceFeed.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tests/tools/TextSource.h"

namespace Kestra::Test {
namespace {

/// What is fed to a parser that gives these answers, one for each piece: the pieces, each followed
/// by "|" and the bytes that are done, and the result.
std::string Feed(std::string_view content, std::uint64_t pieceSize, std::vector<std::uint32_t> answers,
                 std::uint64_t portionSize = 0) {
    std::string trace;
    std::size_t calls = 0;
    const auto parsePiece = [&](const char* piece, std::size_t size) {
        trace.append(piece, size);
        return answers.at(calls++);
    };
    const auto bytesDone = [&](std::uint64_t bytes) { trace.append("|").append(std::to_string(bytes)).append(" "); };
    Tool::PieceSettings settings;
    settings.pieceSize = pieceSize;
    settings.bytesDone = bytesDone;
    TextSource source(content, portionSize);
    const std::uint32_t result = Tool::FeedPieces(&source, settings, parsePiece);
    return trace.append("= ").append(std::to_string(result));
}

TEST(PieceFeed, Pieces) {
    EXPECT_EQ(Feed("abcdefg", 0, {0}), "abcdefg|7 = 0");
    EXPECT_EQ(Feed("abcdefg", 3, {0, 0, 0}), "abc|3 def|6 g|7 = 0");
    EXPECT_EQ(Feed("abc", 3, {0}), "abc|3 = 0");
    EXPECT_EQ(Feed("ab", 1, {0, 0}), "a|1 b|2 = 0");
    EXPECT_EQ(Feed("ab", UINT64_MAX, {0}), "ab|2 = 0");
}

TEST(PieceFeed, PiecesAreTheSameHoweverTheInputComes) {
    for (const std::uint64_t portion : {1, 2, 5}) {
        EXPECT_EQ(Feed("abcdefg", 0, {0}, portion), "abcdefg|7 = 0");
        EXPECT_EQ(Feed("abcdefg", 3, {0, 0, 0}, portion), "abc|3 def|6 g|7 = 0");
        EXPECT_EQ(Feed("", 3, {}, portion), "= 0");
    }
}

TEST(PieceFeed, WhatHasBeenFedIsForgottenAndMayEnd) {
    TextSource source("abcdefg");
    Tool::PieceSettings settings;
    settings.pieceSize = 2;
    settings.beforePiece = [](std::uint64_t position) { return position < 4; };
    std::string fed;
    const auto parsePiece = [&](const char* piece, std::size_t size) {
        fed.append(piece, size);
        return std::uint32_t{0};
    };
    EXPECT_EQ(Tool::FeedPieces(&source, settings, parsePiece), 0U);
    EXPECT_EQ(fed, "abcd");
    EXPECT_EQ(source.GetForgotten(), 4U);
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
