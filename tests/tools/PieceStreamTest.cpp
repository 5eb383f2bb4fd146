#include "tools/kestra-html/input/PieceStream.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/Results.h"
#include "tests/tools/TextSource.h"

namespace Kestra::Test {
namespace {

using Tool::PieceStream;

constexpr std::uint64_t LONG_READ = 16384;

Tool::PieceSettings Cut(std::uint64_t pieceSize) {
    Tool::PieceSettings settings;
    settings.pieceSize = pieceSize;
    return settings;
}

/// One read.
/// @return the result code, a blank and the bytes
std::string Read(PieceStream* stream, std::uint64_t size) {
    std::string buffer(static_cast<std::size_t>(size), '?');
    std::uint64_t count = 77;
    const std::uint32_t result = stream->Read(buffer.data(), size, &count);
    return std::to_string(result) + " " + buffer.substr(0, static_cast<std::size_t>(count));
}

TEST(PieceStream, LongReadsAreCutAndShortOnesAreWhole) {
    TextSource streamSource("abcdefghij");
    PieceStream stream(&streamSource, Cut(3));
    EXPECT_EQ(Read(&stream, LONG_READ), "0 abc");
    EXPECT_EQ(Read(&stream, LONG_READ + 1), "0 def");
    EXPECT_EQ(Read(&stream, LONG_READ - 1), "0 ghij");
    EXPECT_EQ(Read(&stream, LONG_READ), "513 ");
    EXPECT_EQ(stream.Seek(1), RESULT_OK);
    EXPECT_FALSE(stream.IsEnd());
    EXPECT_EQ(Read(&stream, 5), "0 bcdef");
}

TEST(PieceStream, WithoutALimitReadsGetWhatTheyAskFor) {
    const std::string content(20000, 'x');
    TextSource streamSource(content);
    PieceStream stream(&streamSource, Cut(0));
    EXPECT_EQ(Read(&stream, LONG_READ), "0 " + content.substr(0, LONG_READ));
    EXPECT_EQ(Read(&stream, LONG_READ), "0 " + content.substr(LONG_READ));
    EXPECT_EQ(Read(&stream, 1), "513 ");
}

TEST(PieceStream, Positions) {
    TextSource streamSource("abc");
    PieceStream stream(&streamSource, Cut(2));
    std::uint64_t position = 77;
    EXPECT_EQ(stream.GetPosition(&position), RESULT_OK);
    EXPECT_EQ(position, 0U);
    EXPECT_EQ(Read(&stream, LONG_READ), "0 ab");
    EXPECT_EQ(stream.GetPosition(&position), RESULT_OK);
    EXPECT_EQ(position, 2U);
    EXPECT_EQ(stream.Seek(4), RESULT_STREAM_FAILED);
    EXPECT_EQ(stream.GetPosition(&position), RESULT_OK);
    EXPECT_EQ(position, 2U);
    EXPECT_EQ(stream.Seek(3), RESULT_OK);
    EXPECT_EQ(Read(&stream, 1), "513 ");
}

TEST(PieceStream, BadArguments) {
    TextSource streamSource("abc");
    PieceStream stream(&streamSource, Cut(0));
    char byte = 0;
    std::uint64_t count = 0;
    EXPECT_EQ(stream.Read(nullptr, 1, &count), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(stream.Read(&byte, 1, nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(stream.GetPosition(nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(Read(&stream, 0), "0 ");
    TextSource emptySource("");
    PieceStream empty(&emptySource, Cut(0));
    EXPECT_EQ(Read(&empty, 0), "0 ");
    EXPECT_EQ(Read(&empty, 1), "513 ");
}

TEST(PieceStream, ProgressIsTheBytesOfLongReads) {
    std::vector<std::uint64_t> done;
    TextSource source("abcdefgh");
    Tool::PieceSettings settings = Cut(3);
    settings.bytesDone = [&](std::uint64_t bytes) { done.push_back(bytes); };
    PieceStream stream(&source, settings);
    Read(&stream, LONG_READ);
    Read(&stream, 1);
    Read(&stream, LONG_READ);
    EXPECT_EQ(done, (std::vector<std::uint64_t>{3, 7}));
}

TEST(PieceStream, ReadsAreFilledHoweverTheInputComes) {
    TextSource source("abcdefgh", 2);
    PieceStream stream(&source, Cut(5));
    EXPECT_EQ(Read(&stream, LONG_READ), "0 abcde");
    EXPECT_EQ(Read(&stream, 3), "0 fgh");
    EXPECT_EQ(Read(&stream, LONG_READ), "513 ");
}

/// The pieces of an input that comes byte by byte, with a "|" after each.
std::string TakeWhatIsThere(std::string_view content) {
    TextSource source(content, 1);
    Tool::PieceSettings settings;
    settings.takesWhatIsThere = true;
    PieceStream stream(&source, settings);
    std::string pieces;
    for (std::string piece = Read(&stream, LONG_READ); piece.size() > 2 && piece[0] == '0';
         piece = Read(&stream, LONG_READ))
        pieces += piece.substr(2) + "|";
    return pieces;
}

TEST(PieceStream, WhatIsThereIsAPieceUnlessAMarkOrAUnitWouldBeCut) {
    EXPECT_EQ(TakeWhatIsThere("abc"), "a|b|c|");
    EXPECT_EQ(TakeWhatIsThere("\xEF\xBB\xBF"
                              "ab"),
              "\xEF\xBB\xBF|a|b|");
    EXPECT_EQ(TakeWhatIsThere("\xEF"
                              "ab"),
              "\xEF"
              "ab|");
    EXPECT_EQ(TakeWhatIsThere("\xFF\xFE"
                              "abcde"),
              "\xFF\xFE"
              "ab|cd|e|");
    EXPECT_EQ(TakeWhatIsThere("\xFF"
                              "bcd"),
              "\xFF"
              "bc|d|");
}

TEST(PieceStream, AnInputCanBeEndedBeforeAPieceAndReadAgain) {
    TextSource source("abcdefgh");
    Tool::PieceSettings settings = Cut(3);
    settings.beforePiece = [](std::uint64_t position) { return position < 6; };
    PieceStream stream(&source, settings);
    EXPECT_EQ(Read(&stream, LONG_READ), "0 abc");
    EXPECT_EQ(Read(&stream, LONG_READ), "0 def");
    EXPECT_EQ(Read(&stream, LONG_READ), "513 ");
    EXPECT_EQ(stream.Seek(1), RESULT_OK);
    EXPECT_EQ(Read(&stream, LONG_READ), "0 bcd");
}

}  // namespace
}  // namespace Kestra::Test
