#include "tests/platform/FileCheck.h"

// What files, devices, pipes and temporary files have in common on all systems.

namespace Kestra::Test {
namespace {

TEST(FileTest, OpenFilesAreClosedAndNotInherited) {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.Write("handle.html", "x");
    Open(path);  // what the system opens for the first one
    const std::size_t before = GetOpenFiles().size();
    {
        const std::unique_ptr<InputStream> file = Open(path);
        const std::unique_ptr<InputStream> device = Open(GetNullDevices()[0]);
        EXPECT_NE(device, nullptr);
        TmpOutputStream output(0);
        EXPECT_EQ(output.Write("x", 1), RESULT_OK);
        EXPECT_EQ(GetOpenFiles().size(), before + 3);
        for (const std::filesystem::path& ending : {std::filesystem::path("handle.html"), GetTemporaryEnding()}) {
            const std::vector<OpenFile> files = GetOpenFiles(ending);
            ASSERT_EQ(files.size(), 1U) << ending;
            EXPECT_FALSE(files[0].isInherited) << ending;
        }
    }
    EXPECT_EQ(GetOpenFiles().size(), before);
    EXPECT_EQ(Open(folder.GetPath()), nullptr) << "a folder is opened before it is refused";
    EXPECT_EQ(Open(folder.GetPath() / "missing"), nullptr);
    EXPECT_EQ(GetOpenFiles().size(), before);
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(GenericParser().ParseFile(path.string<WideChar>().c_str()), 0U);
    EXPECT_EQ(GetOpenFiles().size(), before);
}

TEST(FileTest, AReadErrorIsAFailure) {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.Write("file", "0123456789");
    const std::unique_ptr<InputStream> stream = Open(path);
    ASSERT_NE(stream, nullptr);
    FileCalls calls;
    calls.badPlace = 0;
    ExpectReadFails(stream.get());
    ExpectPosition(stream.get(), 0);
    GenericParser parser;
    EXPECT_EQ(parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT), 0U);
    EXPECT_EQ(parser.ParseFile(path.string<WideChar>().c_str()), 512U);
}

TEST(FileTest, AReadErrorAfterTheFirstByteEndsTheReadOnly) {
    const TemporaryFolder folder;
    const std::unique_ptr<InputStream> stream = Open(folder.Write("file", "0123456789"));
    ASSERT_NE(stream, nullptr);
    FileCalls calls;
    calls.badPlace = 6;
    EXPECT_EQ(ReadOnce(stream.get()), "012345");
    ExpectReadFails(stream.get());
}

TEST(FileTest, TornReadsAndWritesGoOnUntilAllBytesAreMoved) {
    const std::string bytes = "0123456789abcdefghijklmnopqrstuvwxyz";
    const TemporaryFolder folder;
    const std::unique_ptr<InputStream> stream = Open(folder.Write("file", bytes));
    ASSERT_NE(stream, nullptr);
    for (const std::size_t most : {1U, 5U, 36U}) {
        SCOPED_TRACE(most);
        FileCalls calls;
        calls.largestPart = most;
        const int expected = FileCalls::CALLS_PER_PART * static_cast<int>((bytes.size() + most - 1) / most);
        std::string buffer(bytes.size(), '?');
        std::uint64_t bytesRead = 0;

        TemporaryFile file;
        ASSERT_EQ(file.Create(), RESULT_OK);
        ASSERT_EQ(file.Write(3, bytes.data(), bytes.size()), RESULT_OK);
        EXPECT_EQ(calls.calls, expected);
        EXPECT_EQ(file.Read(3, buffer.data(), buffer.size(), &bytesRead), RESULT_OK);
        EXPECT_EQ(buffer.substr(0, bytesRead), bytes);
        EXPECT_EQ(calls.calls, 2 * expected);

        buffer.assign(bytes.size(), '?');
        ASSERT_EQ(stream->Seek(0), RESULT_OK);
        EXPECT_EQ(stream->Read(buffer.data(), buffer.size(), &bytesRead), RESULT_OK);
        EXPECT_EQ(buffer.substr(0, bytesRead), bytes);
        EXPECT_TRUE(stream->IsEnd());
    }
}

TEST(DeviceTest, TheNullDeviceIsEmpty) {
    for (const std::filesystem::path& name : GetNullDevices()) {
        SCOPED_TRACE(name);
        const std::unique_ptr<InputStream> stream = Open(name);
        ASSERT_NE(stream, nullptr);
        ExpectNoPositions(stream.get());
        EXPECT_FALSE(stream->IsEnd()) << "the end shows in a read";
        ExpectContent(stream.get(), 4, "", RESULT_END_OF_DATA);
        EXPECT_EQ(ParseToColumn(name), 1U);
    }
}

TEST(DeviceTest, APipeIsReadAsItComes) {
    TestPipe pipe;
    const std::unique_ptr<InputStream> stream = Open(pipe.GetPath());
    ASSERT_NE(stream, nullptr);
    ExpectNoPositions(stream.get());
    pipe.Write("first");
    EXPECT_EQ(ReadOnce(stream.get()), "first");  // what is there; it does not wait for the buffer to fill
    EXPECT_FALSE(stream->IsEnd());
    pipe.Write("second");
    EXPECT_EQ(ReadOnce(stream.get()), "second");
    ExpectNoPositions(stream.get());
    pipe.Write("third");
    pipe.Close();
    EXPECT_FALSE(stream->IsEnd());
    ExpectContent(stream.get(), 2, "third", RESULT_END_OF_DATA);
    ExpectContent(stream.get(), 2, "", RESULT_END_OF_DATA);
    ExpectNoPositions(stream.get());
}

TEST(DeviceTest, AReaderWaitsForTheWriter) {
    TestPipe pipe;
    const std::unique_ptr<InputStream> stream = Open(pipe.GetPath());
    ASSERT_NE(stream, nullptr);
    std::string expected;
    for (int i = 0; i < 30000; ++i)
        expected += std::to_string(i) + ",";  // far more than the pipe takes at a time
    std::thread writer([&pipe, &expected] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        for (std::size_t i = 0; i < expected.size(); i += 5000)
            pipe.Write(std::string_view(expected).substr(i, 5000));
        pipe.Close();
    });
    ExpectContent(stream.get(), 3000, expected, RESULT_END_OF_DATA);
    writer.join();
}

TEST(DeviceTest, ADocumentComesThroughAPipe) {
    for (const bool hasMessages : {false, true}) {
        TestPipe pipe(hasMessages);
        std::thread writer([&pipe] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            for (const char* piece : {"<p>one", "", " two</p>"})  // an empty message is no end
                pipe.Write(piece);
            pipe.Close();
        });
        EXPECT_EQ(ParseToColumn(pipe.GetPath()), 15U);
        writer.join();
    }
}

TEST(TemporaryFileTest, PositionedReadsAndWrites) {
    TemporaryFile file;
    ASSERT_EQ(file.Create(), RESULT_OK);
    const std::uint64_t distant = GetDistantPlace();
    const std::uint64_t last = std::numeric_limits<std::int64_t>::max();
    ASSERT_EQ(file.Write(distant, "far", 3), RESULT_OK);
    ASSERT_EQ(file.Write(0, "near", 4), RESULT_OK);
    ASSERT_EQ(file.Write(2, "xy", 2), RESULT_OK);
    ASSERT_EQ(file.Write(1, "", 0), RESULT_OK);
    struct Row {
        std::uint64_t position;
        std::uint64_t size;
        std::uint32_t code;
        std::string expected;
    };
    const Row rows[] = {
        {0, 4, RESULT_OK, "nexy"},
        {1, 2, RESULT_OK, "ex"},
        {distant - 1, 10, RESULT_OK, std::string("\0far", 4)},
        {distant + 2, 1, RESULT_OK, "r"},
        {distant + 3, 1, RESULT_OK, ""},
        {distant + 100, 10, RESULT_OK, ""},
        {last, 10, RESULT_OK, ""},
        {last + 1, 10, RESULT_STREAM_FAILED, ""},
        {FileCalls::NOWHERE, 1, RESULT_STREAM_FAILED, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.position);
        std::vector<char> buffer(row.size);
        std::uint64_t bytesRead = 99;
        EXPECT_EQ(file.Read(row.position, buffer.data(), row.size, &bytesRead), row.code);
        EXPECT_EQ(std::string(buffer.data(), bytesRead), row.expected);
    }
    EXPECT_EQ(file.Write(last, "x", 1), RESULT_STREAM_FAILED);
    EXPECT_EQ(file.Write(last + 1, "", 0), RESULT_STREAM_FAILED);
    EXPECT_EQ(file.Write(FileCalls::NOWHERE, "x", 1), RESULT_STREAM_FAILED);
}

TEST(TmpStreamFileTest, TheFileIsMadeWithTheFirstByteAboveTheLimitAndGoesWithItsLastUser) {
    auto output = std::make_unique<TmpOutputStream>(10);
    ASSERT_EQ(output->Write("0123456789", 10), RESULT_OK);
    EXPECT_EQ(CountTemporaryFiles(), 0U);
    ASSERT_EQ(output->Write("x", 1), RESULT_OK);
    EXPECT_EQ(CountTemporaryFiles(), 1U);
    auto input = std::make_unique<TmpInputStream>(*output);
    output.reset();
    EXPECT_EQ(CountTemporaryFiles(), 1U);
    EXPECT_EQ(ReadAll(input.get(), 100).bytes, "0123456789x");
    input.reset();
    EXPECT_EQ(CountTemporaryFiles(), 0U);
}

TEST(TmpStreamFileTest, TheFileTakesOverWhenThereIsNoMemory) {
    CheckThatAFileTakesOver();
}

TEST(TmpStreamFileTest, ManySmallWritesCostFewCalls) {
    const FileCalls calls;
    TmpOutputStream output(100000);
    const std::string start(100001, 's');
    ASSERT_EQ(output.Write(start.data(), start.size()), RESULT_OK);
    const int before = calls.calls;
    EXPECT_GT(before, 0);
    EXPECT_EQ(calls.bytesWritten, 100001U);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(output.Write("x", 1), RESULT_OK);
    EXPECT_EQ(calls.calls, before);
    EXPECT_EQ(output.GetSize(), 101001U);
}

TEST(TmpStreamFileTest, BytesThatComeLaterAreReadToo) {
    for (const std::uint64_t memoryLimit : {0U, 5U, 100U}) {
        TmpOutputStream output(memoryLimit);
        TmpInputStream input(output);
        EXPECT_TRUE(input.IsEnd());
        std::string expected;
        for (int i = 0; i < 20; ++i) {
            const std::string piece = "piece " + std::to_string(i);
            ASSERT_EQ(output.Write(piece.data(), piece.size()), RESULT_OK);
            expected += piece;
            EXPECT_FALSE(input.IsEnd());
            EXPECT_EQ(ReadAll(&input, 3).bytes, piece) << "from where it was";
            ASSERT_EQ(input.Seek(0), RESULT_OK);
            EXPECT_EQ(ReadAll(&input, 100).bytes, expected);
        }
    }
}

TEST(TmpStreamFileTest, AFileThatLostBytesFailsTheRead) {
    TmpOutputStream output(0);
    ASSERT_EQ(output.Write("some text", 9), RESULT_OK);
    FileCalls calls;
    calls.endOfFile = 4;
    ExpectContent(output, 3, "som", RESULT_STREAM_FAILED);
}

TEST(TmpStreamFileTest, AFullDiskFailsTheWriteThatMeetsIt) {
    struct Row {
        const char* note;
        std::uint64_t memoryLimit;
        std::size_t first;  ///< bytes that are still kept
        std::size_t second;
    };
    const Row rows[] = {
        {"the first 40,000 bytes of it still fit", 0, 60000, 60000},
        {"the move out of memory", 150000, 150000, 1},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        FileCalls calls;
        calls.endOfDisk = 100000;
        TmpOutputStream output(row.memoryLimit);
        const std::string piece(row.first, 'a');
        EXPECT_EQ(output.Write(piece.data(), piece.size()), RESULT_OK);
        EXPECT_EQ(output.Write(piece.data(), row.second), RESULT_STREAM_FAILED);
        EXPECT_EQ(output.GetResult(), RESULT_STREAM_FAILED);
        EXPECT_EQ(output.Write("x", 1), RESULT_STREAM_FAILED);
        EXPECT_EQ(output.GetSize(), row.first);
        ExpectContent(output, 7000, piece, RESULT_STREAM_FAILED);
    }
}

TEST(TmpStreamFileTest, AFullDiskFailsTheWriteThatEmptiesTheBuffer) {
    FileCalls calls;
    calls.endOfDisk = 100000;
    TmpOutputStream output(50000);
    std::string expected;
    std::uint32_t result = RESULT_OK;
    while (result == RESULT_OK && expected.size() < 1000000) {
        const std::string piece = std::to_string(expected.size()) + ",";
        result = output.Write(piece.data(), piece.size());
        if (result == RESULT_OK)
            expected += piece;
    }
    EXPECT_EQ(result, RESULT_STREAM_FAILED);
    EXPECT_EQ(output.GetSize(), expected.size());
    EXPECT_GE(expected.size(), 100000U);
    ExpectContent(output, 7000, expected, RESULT_STREAM_FAILED);
}

}  // namespace
}  // namespace Kestra::Test
