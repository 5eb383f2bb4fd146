#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "html/parser/GenericParser.h"
#include "platform/Characters.h"
#include "platform/InputStream.h"
#include "platform/Results.h"
#include "platform/TemporaryFile.h"
#include "platform/TmpStream.h"
#include "platform/VirtualFileSystem.h"
#include "tests/platform/NoMemory.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestStreams.h"

/// @file
/// What the tests of files share, and what each system has of its own for them: its calls, its open
/// files, its devices and pipes.

namespace Kestra::Test {

using HTML::GenericParser;
using VFS::InputStream;
using VFS::TemporaryFile;
using VFS::TmpInputStream;
using VFS::TmpOutputStream;
using VFS::VirtualFileSystem;

inline std::unique_ptr<InputStream> Open(const std::filesystem::path& path) {
    return std::unique_ptr<InputStream>(VirtualFileSystem::GetInputStreamEx(path.string<WideChar>().c_str()));
}

/// What a file contains; "nothing" for one that is not opened.
inline std::string ReadWhole(const std::filesystem::path& path) {
    const std::unique_ptr<InputStream> stream = Open(path);
    return stream == nullptr ? "nothing" : ReadAll(stream.get(), 100).bytes;
}

/// What one read of up to 100 bytes delivers.
inline std::string ReadOnce(InputStream* stream) {
    char buffer[100];
    std::uint64_t bytesRead = 0;
    EXPECT_EQ(stream->Read(buffer, sizeof(buffer), &bytesRead), RESULT_OK);
    return std::string(buffer, bytesRead);
}

/// Reads `pieceSize` bytes at a time, and expects all of `bytes` and then this result.
inline void ExpectContent(InputStream* stream, std::uint64_t pieceSize, std::string_view bytes, std::uint32_t result) {
    const StreamContent content = ReadAll(stream, pieceSize);
    EXPECT_TRUE(content.bytes == bytes) << content.bytes.size() << " bytes: " << content.bytes.substr(0, 100);
    EXPECT_EQ(content.result, result);
    EXPECT_EQ(stream->IsEnd(), result == RESULT_END_OF_DATA);
}

inline void ExpectContent(const TmpOutputStream& output, std::uint64_t pieceSize, std::string_view bytes,
                          std::uint32_t result) {
    TmpInputStream input(output);
    ExpectContent(&input, pieceSize, bytes, result);
}

/// A device answers no question about positions, and takes no bad argument.
inline void ExpectNoPositions(InputStream* stream) {
    char buffer[4];
    std::uint64_t position = 99;
    std::uint64_t bytesRead = 99;
    EXPECT_EQ(stream->GetPosition(&position), RESULT_STREAM_FAILED);
    EXPECT_EQ(stream->GetPosition(nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(stream->Seek(0), RESULT_STREAM_FAILED);
    EXPECT_EQ(stream->Read(nullptr, 0, &bytesRead), RESULT_OK);
    EXPECT_EQ(bytesRead, 0U);
    EXPECT_EQ(stream->Read(nullptr, 1, &bytesRead), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(stream->Read(buffer, 1, nullptr), RESULT_INVALID_ARGUMENT);
}

/// The read fails, and nothing is lost by it.
inline void ExpectReadFails(InputStream* stream) {
    char buffer[10];
    std::uint64_t bytesRead = 5;
    EXPECT_EQ(stream->Read(buffer, sizeof(buffer), &bytesRead), RESULT_STREAM_FAILED);
    EXPECT_EQ(bytesRead, 0U);
    EXPECT_FALSE(stream->IsEnd());
}

inline void ExpectPosition(InputStream* stream, std::uint64_t expected) {
    std::uint64_t position = 99;
    EXPECT_EQ(stream->GetPosition(&position), RESULT_OK);
    EXPECT_EQ(position, expected);
}

/// Parses a file of windows-1252.
/// @return the column at its end
inline std::uint64_t ParseToColumn(const std::filesystem::path& path) {
    GenericParser parser;
    EXPECT_EQ(parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT), 0U);
    EXPECT_EQ(parser.ParseFile(path.string<WideChar>().c_str()), 0U);
    const std::uint64_t column = parser.GetColumn();
    EXPECT_EQ(parser.EndParse(), 0U);
    return column;
}

/// What the reads and writes of files of this program meet for as long as it lives. One at a time.
class FileCalls {
public:
    static constexpr std::uint64_t NOWHERE = std::numeric_limits<std::uint64_t>::max();

    /// How many calls of the system move one part, while `largestPart` is set: 2 on POSIX, where a
    /// call that is interrupted comes before each one that moves bytes, and 1 on Windows.
    static const int CALLS_PER_PART;

    FileCalls();
    FileCalls(const FileCalls&) = delete;
    FileCalls& operator=(const FileCalls&) = delete;
    ~FileCalls();

    std::uint64_t largestPart = NOWHERE;  ///< most bytes that one call moves
    std::uint64_t endOfFile = NOWHERE;    ///< where every file ends for its readers
    std::uint64_t badPlace = NOWHERE;     ///< from there on reads fail
    std::uint64_t changedByte = NOWHERE;  ///< where a "?" is read
    std::uint64_t endOfDisk = NOWHERE;    ///< no file grows above so many bytes
    int calls = 0;
    std::uint64_t bytesWritten = 0;

    /// The call of the system, with a smaller size.
    /// @return bytes moved
    using Transfer = std::function<std::int64_t(std::uint64_t size)>;

    /// @return bytes moved, none when the call fails here
    std::optional<std::int64_t> Read(std::uint64_t place, void* buffer, std::uint64_t size, const Transfer& transfer) {
        ++calls;
        if (place >= badPlace)
            return std::nullopt;
        if (place >= endOfFile)
            return 0;
        const std::int64_t count = transfer(std::min({size, largestPart, badPlace - place, endOfFile - place}));
        if (changedByte >= place && count > 0 && changedByte - place < static_cast<std::uint64_t>(count))
            static_cast<char*>(buffer)[changedByte - place] = '?';
        return count;
    }

    std::optional<std::int64_t> Write(std::uint64_t place, std::uint64_t size, const Transfer& transfer) {
        ++calls;
        if (place >= endOfDisk)
            return std::nullopt;
        const std::int64_t count = transfer(std::min({size, largestPart, endOfDisk - place}));
        bytesWritten += static_cast<std::uint64_t>(std::max<std::int64_t>(count, 0));
        return count;
    }

private:
    std::shared_ptr<void> hooks;  ///< where the system needs some
};

/// The temporary files of this process.
std::size_t CountTemporaryFiles();

struct OpenFile {
    std::uintptr_t handle;       ///< or descriptor
    std::filesystem::path name;  ///< empty where the system has none
    bool isInherited;            ///< a process started now would have it too
};

/// The files and character devices that this process has open.
std::vector<OpenFile> GetOpenFiles();

/// Those whose names end so.
inline std::vector<OpenFile> GetOpenFiles(const std::filesystem::path& ending) {
    std::vector<OpenFile> found = GetOpenFiles();
    std::erase_if(found, [&](const OpenFile& file) { return !file.name.native().ends_with(ending.native()); });
    return found;
}

/// What the names of open temporary files end with.
std::filesystem::path GetTemporaryEnding();

/// Writes far more than memory takes, once there is none left, expects a file for it, and reads it
/// back.
inline void CheckThatAFileTakesOver() {
    TmpOutputStream output(std::uint64_t{1} << 40);
    const std::string piece(65536, 'a');
    const std::size_t pieces = 100;
    const std::size_t filesBefore = GetOpenFiles().size();
    EXPECT_EQ(output.Write(piece.data(), piece.size()), RESULT_OK);
    EXPECT_EQ(GetOpenFiles().size(), filesBefore);
    std::uint32_t result = RESULT_OK;
    {
        const NoMemory none;
        for (std::size_t i = 1; i < pieces && result == RESULT_OK; ++i)
            result = output.Write(piece.data(), piece.size());
        if (result == RESULT_OK)
            result = output.Write("end", 3);
    }
    EXPECT_EQ(GetOpenFiles().size(), filesBefore + 1);
    EXPECT_EQ(result, RESULT_OK);
    EXPECT_EQ(output.GetSize(), pieces * piece.size() + 3);
    ExpectContent(output, piece.size(), std::string(pieces * piece.size(), 'a').append("end"), RESULT_END_OF_DATA);
}

/// Names of the device that has nothing to read.
const std::vector<std::filesystem::path>& GetNullDevices();

/// A place beyond what 32 bits can count, where a hole in a file takes no space.
std::uint64_t GetDistantPlace();

/// The writing end of a pipe, which has a name to be read by. One at a time.
class TestPipe {
public:
    /// @param hasMessages  of which the reader sees none; on Windows only
    explicit TestPipe(bool hasMessages = false);
    TestPipe(const TestPipe&) = delete;
    TestPipe& operator=(const TestPipe&) = delete;
    ~TestPipe();

    void Write(std::string_view bytes);
    void Close();
    const std::filesystem::path& GetPath() const;

private:
    struct Ends;

    std::filesystem::path path;
    std::unique_ptr<Ends> ends;
};

}  // namespace Kestra::Test
