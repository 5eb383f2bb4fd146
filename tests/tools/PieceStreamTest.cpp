#include "tools/kestra-html/input/PieceStream.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/Results.h"

namespace Kestra::Test {
namespace {

using Tool::PieceStream;

constexpr std::uint64_t LONG_READ = 16384;

void IgnoreProgress(std::uint64_t) {}

/// One read.
/// @return the result code, a blank and the bytes
std::string Read(PieceStream* stream, std::uint64_t size) {
    std::string buffer(static_cast<std::size_t>(size), '?');
    std::uint64_t count = 77;
    const std::uint32_t result = stream->Read(buffer.data(), size, &count);
    return std::to_string(result) + " " + buffer.substr(0, static_cast<std::size_t>(count));
}

TEST(PieceStream, LongReadsAreCutAndShortOnesAreWhole) {
    PieceStream stream("abcdefghij", 3, IgnoreProgress);
    EXPECT_EQ(Read(&stream, LONG_READ), "0 abc");
    EXPECT_EQ(Read(&stream, LONG_READ + 1), "0 def");
    EXPECT_EQ(Read(&stream, LONG_READ - 1), "0 ghij");
    EXPECT_TRUE(stream.IsEnd());
    EXPECT_EQ(Read(&stream, LONG_READ), "513 ");
    EXPECT_EQ(stream.Seek(1), RESULT_OK);
    EXPECT_FALSE(stream.IsEnd());
    EXPECT_EQ(Read(&stream, 5), "0 bcdef");
}

TEST(PieceStream, WithoutALimitReadsGetWhatTheyAskFor) {
    const std::string content(20000, 'x');
    PieceStream stream(content, 0, IgnoreProgress);
    EXPECT_EQ(Read(&stream, LONG_READ), "0 " + content.substr(0, LONG_READ));
    EXPECT_EQ(Read(&stream, LONG_READ), "0 " + content.substr(LONG_READ));
    EXPECT_EQ(Read(&stream, 1), "513 ");
}

TEST(PieceStream, Positions) {
    PieceStream stream("abc", 2, IgnoreProgress);
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
    EXPECT_TRUE(stream.IsEnd());
}

TEST(PieceStream, BadArguments) {
    PieceStream stream("abc", 0, IgnoreProgress);
    char byte = 0;
    std::uint64_t count = 0;
    EXPECT_EQ(stream.Read(nullptr, 1, &count), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(stream.Read(&byte, 1, nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(stream.GetPosition(nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(Read(&stream, 0), "0 ");
    PieceStream empty("", 0, IgnoreProgress);
    EXPECT_TRUE(empty.IsEnd());
    EXPECT_EQ(Read(&empty, 0), "0 ");
    EXPECT_EQ(Read(&empty, 1), "513 ");
}

TEST(PieceStream, ProgressIsTheBytesOfLongReads) {
    std::vector<std::uint64_t> done;
    PieceStream stream("abcdefgh", 3, [&](std::uint64_t bytes) { done.push_back(bytes); });
    Read(&stream, LONG_READ);
    Read(&stream, 1);
    Read(&stream, LONG_READ);
    EXPECT_EQ(done, (std::vector<std::uint64_t>{3, 7}));
}

}  // namespace
}  // namespace Kestra::Test
