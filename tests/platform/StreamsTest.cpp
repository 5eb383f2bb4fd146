#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ios>
#include <limits>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/Characters.h"
#include "platform/InputStream.h"
#include "platform/MemoryInputStream.h"
#include "platform/Results.h"
#include "platform/TmpStream.h"
#include "platform/VirtualFileSystem.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestStreams.h"

namespace Kestra::VFS {
namespace {

using Test::AtMost;
using Test::BoundedInputStream;
using Test::FaultyInputStream;
using Test::InSizes;
using Test::OnlyFrom;
using Test::ReadAll;
using Test::ReadBound;
using Test::StreamContent;
using Test::TemporaryFolder;

constexpr std::uint64_t UNTOUCHED = 987654321;

/// Bytes of every value, NUL among them, in an order in which no short run comes twice.
std::string MakeBytes(std::size_t size) {
    std::string bytes(size, '\0');
    std::uint32_t state = 1;
    for (char& byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

std::unique_ptr<InputStream> Open(const std::filesystem::path& path) {
    return std::unique_ptr<InputStream>(VirtualFileSystem::GetInputStreamEx(path.generic_string<WideChar>().c_str()));
}

std::unique_ptr<InputStream> MakeTmpStream(const std::string& bytes, std::uint64_t memoryLimit) {
    TmpOutputStream output(memoryLimit);
    EXPECT_EQ(output.Write(bytes.data(), bytes.size()), RESULT_OK);
    return std::make_unique<TmpInputStream>(output);
}

/// What every stream of the library has in common that knows its position: each row is one of them
/// over the same 1000 bytes.
struct StreamKind {
    const char* name;
    std::uint64_t firstOffset;
    std::unique_ptr<InputStream> (*make)(const std::string& bytes, const TemporaryFolder& folder);
};

const StreamKind STREAM_KINDS[] = {
    {"Memory", 0,
     [](const std::string& bytes, const TemporaryFolder&) -> std::unique_ptr<InputStream> {
         return std::make_unique<MemoryInputStream>(bytes);
     }},
    {"MemoryPart", 5000000000,
     [](const std::string& bytes, const TemporaryFolder&) -> std::unique_ptr<InputStream> {
         return std::make_unique<MemoryInputStream>(bytes, 5000000000);
     }},
    {"TmpInMemory", 0,
     [](const std::string& bytes, const TemporaryFolder&) { return MakeTmpStream(bytes, bytes.size()); }},
    {"TmpInFile", 0, [](const std::string& bytes, const TemporaryFolder&) { return MakeTmpStream(bytes, 0); }},
    {"TmpInFileAndMemory", 0,
     [](const std::string& bytes, const TemporaryFolder&) -> std::unique_ptr<InputStream> {
         TmpOutputStream output(400);
         for (std::size_t i = 0; i < bytes.size(); i += 150)
             EXPECT_EQ(output.Write(bytes.data() + i, std::min<std::size_t>(150, bytes.size() - i)), RESULT_OK);
         return std::make_unique<TmpInputStream>(output);
     }},
    {"File", 0,
     [](const std::string& bytes, const TemporaryFolder& folder) { return Open(folder.Write("file.bin", bytes)); }},
    {"TestBounded", 0,
     [](const std::string& bytes, const TemporaryFolder&) -> std::unique_ptr<InputStream> {
         return std::make_unique<BoundedInputStream>(bytes, AtMost(bytes.size()));
     }},
    {"TestFaultless", 0,
     [](const std::string& bytes, const TemporaryFolder&) -> std::unique_ptr<InputStream> {
         return std::make_unique<FaultyInputStream>(bytes);
     }},
};

class PositionedStreamTest : public testing::TestWithParam<StreamKind> {
protected:
    void SetUp() override {
        stream = GetParam().make(bytes, folder);
        ASSERT_NE(stream, nullptr);
    }

    std::uint64_t At(std::uint64_t offset) const {
        return GetParam().firstOffset + offset;
    }

    std::uint64_t GetPosition() {
        std::uint64_t position = UNTOUCHED;
        EXPECT_EQ(stream->GetPosition(&position), RESULT_OK);
        return position;
    }

    const std::string bytes = MakeBytes(1000);
    TemporaryFolder folder;
    std::unique_ptr<InputStream> stream;
};

TEST_P(PositionedStreamTest, ReadsEverythingInPiecesOfAnySize) {
    for (const std::uint64_t pieceSize : {1U, 7U, 399U, 500U, 999U, 1000U, 1001U, 100000U}) {
        SCOPED_TRACE(pieceSize);
        ASSERT_EQ(stream->Seek(At(0)), RESULT_OK);
        EXPECT_FALSE(stream->IsEnd());
        const StreamContent content = ReadAll(stream.get(), pieceSize);
        EXPECT_EQ(content.bytes, bytes);
        EXPECT_EQ(content.result, RESULT_END_OF_DATA);
        EXPECT_EQ(content.reads, (1000 + pieceSize - 1) / pieceSize);  // every read is filled as far as the bytes go
        EXPECT_TRUE(stream->IsEnd());
        EXPECT_EQ(GetPosition(), At(1000));
    }
}

TEST_P(PositionedStreamTest, SeeksAndReadsTheRest) {
    for (const std::uint64_t offset : {0U, 1U, 399U, 400U, 449U, 450U, 451U, 600U, 750U, 900U, 999U, 1000U, 3U}) {
        SCOPED_TRACE(offset);
        ASSERT_EQ(stream->Seek(At(offset)), RESULT_OK);
        EXPECT_EQ(GetPosition(), At(offset));
        EXPECT_EQ(stream->IsEnd(), offset == 1000);
        const StreamContent content = ReadAll(stream.get(), 2000);
        EXPECT_EQ(content.bytes, bytes.substr(offset));
        EXPECT_EQ(content.result, RESULT_END_OF_DATA);
    }
}

TEST_P(PositionedStreamTest, ASeekOutsideFailsAndChangesNothing) {
    ASSERT_EQ(stream->Seek(At(10)), RESULT_OK);
    std::vector<std::uint64_t> outside = {At(1001), std::uint64_t{1} << 62, std::uint64_t{1} << 63,
                                          std::numeric_limits<std::uint64_t>::max()};
    if (GetParam().firstOffset > 0)
        outside.insert(outside.end(), {0, At(0) - 1});
    for (const std::uint64_t position : outside) {
        EXPECT_EQ(stream->Seek(position), RESULT_STREAM_FAILED) << position;
        EXPECT_EQ(GetPosition(), At(10));
    }
    char byte = 0;
    std::uint64_t bytesRead = UNTOUCHED;
    EXPECT_EQ(stream->Read(&byte, 1, &bytesRead), RESULT_OK);
    EXPECT_EQ(bytesRead, 1U);
    EXPECT_EQ(byte, bytes[10]);
}

TEST_P(PositionedStreamTest, AReadOfNothingSucceedsEverywhere) {
    for (const std::uint64_t offset : {0U, 500U, 1000U}) {
        ASSERT_EQ(stream->Seek(At(offset)), RESULT_OK);
        std::uint64_t bytesRead = UNTOUCHED;
        EXPECT_EQ(stream->Read(nullptr, 0, &bytesRead), RESULT_OK);
        EXPECT_EQ(bytesRead, 0U);
        EXPECT_EQ(GetPosition(), At(offset));
    }
}

TEST_P(PositionedStreamTest, TheEndIsToldAgainAndAgain) {
    ASSERT_EQ(stream->Seek(At(1000)), RESULT_OK);
    for (int i = 0; i < 3; ++i) {
        char byte = 'x';
        std::uint64_t bytesRead = UNTOUCHED;
        EXPECT_EQ(stream->Read(&byte, 1, &bytesRead), RESULT_END_OF_DATA);
        EXPECT_EQ(bytesRead, 0U);
        EXPECT_EQ(byte, 'x');
    }
}

TEST_P(PositionedStreamTest, ANullBufferIsRefused) {
    std::uint64_t bytesRead = UNTOUCHED;
    EXPECT_EQ(stream->Read(nullptr, 5, &bytesRead), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(bytesRead, 0U);
    EXPECT_EQ(GetPosition(), At(0));
}

INSTANTIATE_TEST_SUITE_P(Streams, PositionedStreamTest, testing::ValuesIn(STREAM_KINDS),
                         [](const testing::TestParamInfo<StreamKind>& kind) { return std::string(kind.param.name); });

TEST(InputStreamTest, NullResultsAreRefused) {
    const TemporaryFolder folder;
    std::vector<std::unique_ptr<InputStream>> streams;
    streams.push_back(std::make_unique<MemoryInputStream>("abc"));
    streams.push_back(MakeTmpStream("abc", 10));
    streams.push_back(Open(folder.Write("abc", "abc")));
    for (const std::unique_ptr<InputStream>& stream : streams) {
        char byte = 'x';
        EXPECT_EQ(stream->Read(&byte, 1, nullptr), RESULT_INVALID_ARGUMENT);
        EXPECT_EQ(byte, 'x');
        EXPECT_EQ(stream->GetPosition(nullptr), RESULT_INVALID_ARGUMENT);
    }
}

TEST(MemoryInputStreamTest, Empty) {
    MemoryInputStream stream("", 7);
    EXPECT_TRUE(stream.IsEnd());
    EXPECT_EQ(stream.Seek(7), RESULT_OK);
    EXPECT_EQ(stream.Seek(8), RESULT_STREAM_FAILED);
    EXPECT_EQ(ReadAll(&stream, 5).result, RESULT_END_OF_DATA);
}

TEST(MemoryInputStreamTest, ACopyHasItsOwnPlace) {
    MemoryInputStream stream("abcdef");
    ASSERT_EQ(stream.Seek(2), RESULT_OK);
    MemoryInputStream copy = stream;
    EXPECT_EQ(ReadAll(&copy, 10).bytes, "cdef");
    EXPECT_EQ(ReadAll(&stream, 10).bytes, "cdef");
}

static_assert(!std::is_copy_constructible_v<TmpOutputStream> && !std::is_copy_constructible_v<TmpInputStream>);

/// Every way from memory to the file gives back what was written.
TEST(TmpStreamTest, GivesBackWhatWasWritten) {
    struct Row {
        const char* note;
        std::uint64_t memoryLimit;
        std::size_t size;
        std::size_t pieceSize;
    };
    const Row rows[] = {
        {"nothing", 100, 0, 1},
        {"nothing, no memory", 0, 0, 1},
        {"below the limit", 100, 99, 10},
        {"at the limit", 100, 100, 10},
        {"at the limit in one piece", 100, 100, 100},
        {"one byte more", 100, 101, 10},
        {"one byte more in one piece", 100, 101, 101},
        {"far more", 100, 100000, 37},
        {"far more in one piece", 100, 100000, 100000},
        {"no memory", 0, 1000, 1},
        {"one byte of memory", 1, 1000, 1},
        {"any memory", std::numeric_limits<std::uint64_t>::max(), 1000000, 1000},
        {"the write buffer is filled exactly", 100000, 100000 + 1 + 65536, 1},
        {"the write buffer is filled often", 70000, 500000, 777},
        {"pieces above the write buffer", 70000, 500000, 66000},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        const std::string bytes = MakeBytes(row.size);
        auto output = std::make_unique<TmpOutputStream>(row.memoryLimit);
        for (std::size_t i = 0; i < bytes.size(); i += row.pieceSize) {
            const std::string piece = bytes.substr(i, row.pieceSize);
            ASSERT_EQ(output->Write(piece.data(), piece.size()), RESULT_OK);
            ASSERT_EQ(output->GetSize(), i + piece.size());
        }
        EXPECT_EQ(output->GetResult(), RESULT_OK);
        TmpInputStream first(*output);
        TmpInputStream second(*output);
        output.reset();
        for (TmpInputStream* input : {&first, &second}) {
            EXPECT_EQ(input->IsEnd(), row.size == 0);
            const StreamContent content = ReadAll(input, 16384);
            EXPECT_TRUE(content.bytes == bytes);
            EXPECT_EQ(content.result, RESULT_END_OF_DATA);
            EXPECT_TRUE(input->IsEnd());
        }
    }
}

TEST(TmpStreamTest, WritingNothingChangesNothing) {
    TmpOutputStream output(0);
    EXPECT_EQ(output.Write(nullptr, 0), RESULT_OK);
    EXPECT_EQ(output.Write("x", 0), RESULT_OK);
    EXPECT_EQ(output.GetSize(), 0U);
    EXPECT_EQ(output.GetResult(), RESULT_OK);
}

TEST(TmpStreamTest, AFailedWriteIsRememberedAndNeverLooksLikeTheEnd) {
    struct Row {
        const char* note;
        const char* data;
        std::uint64_t size;
        std::uint32_t expected;
    };
    const Row rows[] = {
        {"null data", nullptr, 5, RESULT_INVALID_ARGUMENT},
        {"more bytes than a size can count", "x", std::numeric_limits<std::uint64_t>::max(), RESULT_STREAM_FAILED},
        {"more bytes than a file can have", "x", std::uint64_t{1} << 63, RESULT_STREAM_FAILED},
    };
    for (const Row& row : rows) {
        for (const std::uint64_t memoryLimit : {0U, 100U}) {
            SCOPED_TRACE(std::string(row.note) + ", limit " + std::to_string(memoryLimit));
            TmpOutputStream output(memoryLimit);
            ASSERT_EQ(output.Write("whole", 5), RESULT_OK);
            EXPECT_EQ(output.Write(row.data, row.size), row.expected);
            EXPECT_EQ(output.Write("later", 5), row.expected);
            EXPECT_EQ(output.Write("", 0), row.expected);
            EXPECT_EQ(output.GetResult(), row.expected);
            EXPECT_EQ(output.GetSize(), 5U);

            TmpInputStream input(output);
            EXPECT_FALSE(input.IsEnd());
            const StreamContent content = ReadAll(&input, 100);
            EXPECT_EQ(content.bytes, "whole");
            EXPECT_EQ(content.result, row.expected);
            EXPECT_FALSE(input.IsEnd());
        }
    }
}

TEST(VirtualFileSystemTest, PathsThatNameNoFile) {
    const TemporaryFolder folder;
    EXPECT_EQ(VirtualFileSystem::GetInputStreamEx(nullptr), nullptr);
    EXPECT_EQ(VirtualFileSystem::GetInputStreamEx(KESTRA_WIDE("")), nullptr);
    EXPECT_EQ(Open(folder.GetPath() / "missing"), nullptr);
    EXPECT_EQ(Open(folder.GetPath()), nullptr);
    const std::filesystem::path file = folder.Write("file", "x");
    EXPECT_EQ(Open(file / "below a file"), nullptr);
    EXPECT_NE(Open(file), nullptr);
}

TEST(VirtualFileSystemTest, PathsInAnyScript) {
    const TemporaryFolder folder;
    const WideString names[] = {
        KESTRA_WIDE("plain.html"),         KESTRA_WIDE("with a blank"),       KESTRA_WIDE("\u00e9t\u00e9"),
        KESTRA_WIDE("\u0440\u0443\u0441"), KESTRA_WIDE("\u65e5\u672c\u8a9e"), KESTRA_WIDE("\U0001F600"),
    };
    for (const WideString& name : names) {
        const std::filesystem::path path = folder.Write(std::filesystem::path(name), "found");
        const std::unique_ptr<InputStream> stream = Open(path);
        ASSERT_NE(stream, nullptr) << path;
        EXPECT_EQ(ReadAll(stream.get(), 10).bytes, "found");
    }
}

TEST(VirtualFileSystemTest, AnEmptyFileIsAtItsEnd) {
    const TemporaryFolder folder;
    const std::unique_ptr<InputStream> stream = Open(folder.Write("empty", ""));
    ASSERT_NE(stream, nullptr);
    EXPECT_TRUE(stream->IsEnd());
    EXPECT_EQ(ReadAll(stream.get(), 10).result, RESULT_END_OF_DATA);
}

TEST(VirtualFileSystemTest, BytesAreReadAsTheyAre) {
    const TemporaryFolder folder;
    const std::string bytes(
        "a\r\nb\x1A"
        "c\0d\n",
        9);
    const std::unique_ptr<InputStream> stream = Open(folder.Write("binary", bytes));
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(ReadAll(stream.get(), 100).bytes, bytes);
}

TEST(VirtualFileSystemTest, AFileThatGrowsHasMoreToRead) {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.Write("growing", "first");
    const std::unique_ptr<InputStream> stream = Open(path);
    ASSERT_NE(stream, nullptr);
    EXPECT_EQ(ReadAll(stream.get(), 10).bytes, "first");
    EXPECT_TRUE(stream->IsEnd());
    EXPECT_EQ(stream->Seek(8), RESULT_STREAM_FAILED);
    std::ofstream(path, std::ios::binary | std::ios::app) << "second";
    EXPECT_FALSE(stream->IsEnd());
    EXPECT_EQ(ReadAll(stream.get(), 10).bytes, "second");
    EXPECT_TRUE(stream->IsEnd());
    std::ofstream(path, std::ios::binary | std::ios::app) << "third";
    EXPECT_EQ(stream->Seek(13), RESULT_OK);
    EXPECT_EQ(ReadAll(stream.get(), 10).bytes, "ird");
}

TEST(VirtualFileSystemTest, AFileThatWasCutEndsEarly) {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.Write("cut", "some text");
    const std::unique_ptr<InputStream> stream = Open(path);
    ASSERT_NE(stream, nullptr);
    std::filesystem::resize_file(path, 4);
    const StreamContent content = ReadAll(stream.get(), 3);
    EXPECT_EQ(content.bytes, "some");
    EXPECT_EQ(content.result, RESULT_END_OF_DATA);
}

TEST(VirtualFileSystemTest, OffsetsAbove4GB) {
    const TemporaryFolder folder;
    const std::uint64_t size = (std::uint64_t{5} << 30) + 17;
    const std::filesystem::path path = folder.Write("large", "begin");
    std::filesystem::resize_file(path, size);  // a hole: no space is taken
    std::ofstream(path, std::ios::binary | std::ios::app) << "end";
    const std::unique_ptr<InputStream> stream = Open(path);
    ASSERT_NE(stream, nullptr);
    ASSERT_EQ(stream->Seek(size - 2), RESULT_OK);
    const StreamContent content = ReadAll(stream.get(), 100);
    EXPECT_EQ(content.bytes, std::string("\0\0end", 5));
    std::uint64_t position = 0;
    EXPECT_EQ(stream->GetPosition(&position), RESULT_OK);
    EXPECT_EQ(position, size + 3);
    EXPECT_EQ(stream->Seek(size + 4), RESULT_STREAM_FAILED);
    ASSERT_EQ(stream->Seek(0), RESULT_OK);
    char first[5] = {};
    std::uint64_t bytesRead = 0;
    ASSERT_EQ(stream->Read(first, sizeof(first), &bytesRead), RESULT_OK);
    EXPECT_EQ(std::string(first, sizeof(first)), "begin");
}

TEST(TestStreamsTest, BoundsOfReads) {
    struct Row {
        const char* note;
        ReadBound bound;
        std::uint64_t asked;
        std::vector<std::uint64_t> expected;  ///< the counts of the first reads
    };
    const Row rows[] = {
        {"at most 3", AtMost(3), 10, {3, 3, 3, 1}},
        {"at most 3, asked for less", AtMost(3), 2, {2, 2, 2, 2, 2}},
        {"in sizes, then whole", InSizes({1, 0, 2}), 10, {1, 0, 2, 7}},
        {"in sizes, asked for less", InSizes({5, 1}), 4, {4, 1, 4, 1}},
        {"short reads are not bounded", OnlyFrom(6, AtMost(1)), 5, {5, 5}},
        {"long reads are bounded", OnlyFrom(5, AtMost(4)), 5, {4, 4, 2}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        const std::string bytes = MakeBytes(10);
        BoundedInputStream stream(bytes, row.bound);
        std::string found;
        for (const std::uint64_t expected : row.expected) {
            std::vector<char> buffer(row.asked);
            std::uint64_t bytesRead = UNTOUCHED;
            EXPECT_EQ(stream.Read(buffer.data(), row.asked, &bytesRead), RESULT_OK);
            EXPECT_EQ(bytesRead, expected);
            found.append(buffer.data(), bytesRead);
        }
        EXPECT_EQ(found, bytes);
        EXPECT_TRUE(stream.IsEnd());
    }
}

TEST(TestStreamsTest, ShortReadsDoNotCountForTheSizesOfLongOnes) {
    BoundedInputStream stream("abcdefghij", OnlyFrom(4, InSizes({3, 2})), 100);
    const auto read = [&stream](std::uint64_t size) {
        std::string buffer(size, '?');
        std::uint64_t bytesRead = 0;
        EXPECT_EQ(stream.Read(buffer.data(), size, &bytesRead), RESULT_OK);
        return buffer.substr(0, bytesRead);
    };
    EXPECT_EQ(read(4), "abc");
    EXPECT_EQ(read(3), "def");
    EXPECT_EQ(read(9), "gh");
    EXPECT_EQ(stream.Seek(101), RESULT_OK);
    EXPECT_EQ(read(9), "bcdefghij");
}

TEST(TestStreamsTest, ScriptedFaults) {
    int destructions = 0;
    {
        FaultyInputStream stream("abcdefgh");
        stream.FailRead(2, 77)
            .ReadNothing(3)
            .ShortenRead(4, 1)
            .MisreportRead(5, 9)
            .FailReadsFrom(7, 88)
            .CountDestructions(&destructions);
        struct Row {
            const char* note;
            std::uint32_t code;
            std::uint64_t count;
            const char* buffer;
        };
        const Row rows[] = {
            // reads of two bytes each
            {"as it is", 0, 2, "ab"},
            {"fails and loses nothing", 77, 0, "??"},
            {"no bytes", 0, 0, "??"},
            {"one byte", 0, 1, "c?"},
            {"a wrong count", 0, 9, "de"},
            {"as it is again", 0, 2, "fg"},
            {"fails from here on", 88, 0, "??"},
            {"still fails", 88, 0, "??"},
        };
        for (const Row& row : rows) {
            SCOPED_TRACE(row.note);
            char buffer[] = "??";
            std::uint64_t bytesRead = UNTOUCHED;
            EXPECT_EQ(stream.Read(buffer, 2, &bytesRead), row.code);
            EXPECT_EQ(bytesRead, row.count);
            EXPECT_STREQ(buffer, row.buffer);
        }
        EXPECT_EQ(stream.GetReadCalls(), 8U);
        EXPECT_EQ(destructions, 0);
    }
    EXPECT_EQ(destructions, 1);
}

TEST(TestStreamsTest, ScriptedFaultsOfPositions) {
    FaultyInputStream stream("abc");
    stream.FailGetPosition(1, 21).FailGetPositionsFrom(3, 22).FailSeek(2, 23).FailSeeksFrom(4, 24).NeverEnd();
    for (const std::uint32_t expected : {21U, 0U, 22U, 22U}) {
        std::uint64_t position = UNTOUCHED;
        EXPECT_EQ(stream.GetPosition(&position), expected);
        EXPECT_EQ(position, expected == 0 ? 0 : UNTOUCHED);
    }
    for (const std::uint32_t expected : {0U, 23U, 0U, 24U, 24U})
        EXPECT_EQ(stream.Seek(3), expected);
    EXPECT_EQ(stream.GetPositionCalls(), 4U);
    EXPECT_EQ(stream.GetSeekCalls(), 5U);
    EXPECT_FALSE(stream.IsEnd());
    EXPECT_EQ(ReadAll(&stream, 1).result, RESULT_END_OF_DATA);
}

TEST(TestStreamsTest, ReadAllGivesUpWithoutProgress) {
    BoundedInputStream stream("abc", AtMost(0));
    const StreamContent content = ReadAll(&stream, 10);
    EXPECT_EQ(content.result, RESULT_OK);
    EXPECT_EQ(content.bytes, "");
}

}  // namespace
}  // namespace Kestra::VFS
