#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/Characters.h"
#include "platform/InputStream.h"
#include "platform/Results.h"
#include "platform/TemporaryFile.h"
#include "platform/TmpStream.h"
#include "platform/VirtualFileSystem.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/TestStreams.h"

// What the streams owe to a POSIX system: names in UTF-8, pipes and devices, interrupted calls,
// full disks, descriptors.

namespace {

/// While positive, `pread` and `pwrite` move at most so many bytes at a time, and every other call
/// is interrupted.
std::size_t mostAtATime = 0;
int tornCalls = 0;

/// @return false for a call that is to be interrupted
bool Tear(std::size_t* size) {
    if (mostAtATime == 0)
        return true;
    *size = std::min(*size, mostAtATime);
    errno = EINTR;
    return ++tornCalls % 2 == 0;
}

}  // namespace

// They stand in for those of the C library in this program. A system may tear any call, but hardly
// ever does on a local file.

extern "C" ssize_t pread(int descriptor, void* buffer, std::size_t size, off_t position) {
    return Tear(&size) ? syscall(SYS_pread64, descriptor, buffer, size, position) : -1;
}

extern "C" ssize_t pwrite(int descriptor, const void* buffer, std::size_t size, off_t position) {
    return Tear(&size) ? syscall(SYS_pwrite64, descriptor, buffer, size, position) : -1;
}

namespace Kestra::VFS {
namespace {

using Test::ReadAll;
using Test::StreamContent;
using Test::TemporaryFolder;

std::unique_ptr<InputStream> Open(const std::filesystem::path& path) {
    return std::unique_ptr<InputStream>(VirtualFileSystem::GetInputStreamEx(path.u16string().c_str()));
}

struct Descriptor {
    int number;
    std::string target;
};

/// The open descriptors of this process with the files they stand for.
std::vector<Descriptor> GetDescriptors() {
    std::vector<Descriptor> found;
    for (int number = 0; number < 256; ++number) {
        if (fcntl(number, F_GETFD) != -1)
            found.push_back(
                {number, std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(number)).string()});
    }
    return found;
}

bool IsTemporaryFile(const Descriptor& descriptor) {
    return descriptor.target.starts_with(P_tmpdir "/kestra-") && descriptor.target.ends_with(" (deleted)");
}

std::vector<Descriptor> GetTemporaryFiles() {
    std::vector<Descriptor> found = GetDescriptors();
    std::erase_if(found, [](const Descriptor& descriptor) { return !IsTemporaryFile(descriptor); });
    return found;
}

TEST(PosixPathTest, PathsAreUtf8) {
    struct Row {
        const char* note;
        std::u16string name;
        std::string bytes;
    };
    const Row rows[] = {
        {"the last of one byte", u"a\u007Fb",
         "a\x7F"
         "b"},
        {"the first of two bytes",
         {u'a', 0x80, u'b'},
         "a\xC2\x80"
         "b"},
        {"the last of two bytes", u"\u07FF", "\xDF\xBF"},
        {"the first of three bytes", u"\u0800", "\xE0\xA0\x80"},
        {"the last before the surrogates", u"\uD7FF", "\xED\x9F\xBF"},
        {"the first after the surrogates", u"\uE000", "\xEE\x80\x80"},
        {"the last of three bytes", u"\uFFFF", "\xEF\xBF\xBF"},
        {"the first of four bytes", u"\U00010000", "\xF0\x90\x80\x80"},
        {"the last of four bytes", u"\U0010FFFF", "\xF4\x8F\xBF\xBF"},
    };
    const TemporaryFolder folder;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        folder.Write(row.bytes, row.note);
        const std::u16string path = folder.GetPath().u16string() + u"/" + row.name;
        const std::unique_ptr<InputStream> stream(VirtualFileSystem::GetInputStreamEx(path.c_str()));
        ASSERT_NE(stream, nullptr);
        EXPECT_EQ(ReadAll(stream.get(), 100).bytes, row.note);
    }
}

TEST(PosixPathTest, ALoneSurrogateNamesNoFile) {
    const TemporaryFolder folder;
    // What lenient conversions make of the names below: the surrogates one by one, U+FFFD, "?" or
    // nothing in their place, and pairs of what is none.
    const char* const found[] = {
        "a",
        "az",
        "a?",
        "a?z",
        "a\xEF\xBF\xBD",
        "a\xEF\xBF\xBDz",
        "a\xED\xA0\x80",
        "a\xED\xA0\x80z",
        "a\xED\xB0\x80",
        "a\xED\xB0\x80z",
        "a\xED\xB0\x80\xED\xA0\x80",
        "a\xED\xB0\x80\xED\xB0\x80",
        "a\xED\xA0\x80\xED\xA0\x80",
        "a\xED\xA0\x80\xEE\x80\x80",
        "a\xE2\x91\xBA",
        "a\xE2\x90\x80",
        "a\xEF\xB0\x80",
        "a\xF0\x90\x90\x80",
        "a\xF4\x90\x80\x80",
    };
    for (const char* name : found)
        folder.Write(name, "x");
    const std::u16string names[] = {
        {u'a', 0xD800},         {u'a', 0xDC00},         {u'a', 0xD800, u'z'},   {u'a', 0xDC00, u'z'},
        {u'a', 0xDC00, 0xD800}, {u'a', 0xDC00, 0xDC00}, {u'a', 0xD800, 0xD800}, {u'a', 0xD800, 0xE000},
    };
    for (const std::u16string& name : names) {
        const std::u16string path = folder.GetPath().u16string() + u"/" + name;
        EXPECT_EQ(VirtualFileSystem::GetInputStreamEx(path.c_str()), nullptr);
    }
    EXPECT_NE(Open(folder.GetPath() / "a?z"), nullptr);
}

TEST(PosixPathTest, ThePathMayBeAsLongAsTheSystemAllows) {
    constexpr std::size_t LONGEST = PATH_MAX - 1;  // and the terminator
    const TemporaryFolder folder;
    folder.Write("f", "found");
    const std::u16string name = u"/f";
    const auto padded = [&folder, &name](std::size_t length) {  // "folder////f"
        const std::u16string front = folder.GetPath().u16string();
        return front + std::u16string(length - front.size() - name.size(), u'/') + name;
    };
    const std::unique_ptr<InputStream> longest(VirtualFileSystem::GetInputStreamEx(padded(LONGEST).c_str()));
    ASSERT_NE(longest, nullptr);
    EXPECT_EQ(ReadAll(longest.get(), 10).bytes, "found");
    for (const std::size_t length : {LONGEST + 1, LONGEST + 2, LONGEST + 3, 10 * LONGEST})
        EXPECT_EQ(VirtualFileSystem::GetInputStreamEx(padded(length).c_str()), nullptr) << length;
    for (std::size_t front = 1; front < 9;
         ++front) {  // a character of four bytes at each distance from the end of the longest path
        std::u16string path = padded(LONGEST + 1 - front);
        for (int i = 0; i < 4; ++i) {
            path += u"\U0001F600";
            EXPECT_EQ(VirtualFileSystem::GetInputStreamEx(path.c_str()), nullptr) << front;
        }
    }
}

TEST(PosixFileTest, AFileWithoutPermissionIsNotOpened) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.Write("secret", "x");
    std::filesystem::permissions(file, std::filesystem::perms::none);
    const auto tryToOpen = [&file] {
        if (geteuid() == 0 && seteuid(65534) != 0)  // permissions do not hold for root
            _exit(2);
        _exit(Open(file) == nullptr ? 0 : 1);
    };
    EXPECT_EXIT(tryToOpen(), testing::ExitedWithCode(0), "");
}

TEST(PosixFileTest, DescriptorsAreClosedAndNotInherited) {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.Write("file", "x");
    const std::size_t before = GetDescriptors().size();
    {
        const std::unique_ptr<InputStream> fileStream = Open(file);
        const std::unique_ptr<InputStream> deviceStream = Open("/dev/null");
        TmpOutputStream output(0);
        EXPECT_EQ(output.Write("x", 1), RESULT_OK);
        const std::vector<Descriptor> open = GetDescriptors();
        EXPECT_EQ(open.size(), before + 3);
        int found = 0;
        for (const Descriptor& descriptor : open) {
            if (descriptor.target == file || descriptor.target == "/dev/null" || IsTemporaryFile(descriptor)) {
                if ((fcntl(descriptor.number, F_GETFD) & FD_CLOEXEC) != 0)
                    ++found;
            }
        }
        EXPECT_EQ(found, 3);
    }
    EXPECT_EQ(GetDescriptors().size(), before);
    EXPECT_EQ(Open(folder.GetPath()), nullptr);  // a folder is opened before it is refused
    EXPECT_EQ(GetDescriptors().size(), before);
}

TEST(PosixFileTest, FilesThatStateNoSizeAreRead) {
    const std::unique_ptr<InputStream> stream = Open("/proc/self/status");
    ASSERT_NE(stream, nullptr);
    EXPECT_FALSE(stream->IsEnd());
    const StreamContent content = ReadAll(stream.get(), 100);
    EXPECT_EQ(content.bytes.substr(0, 5), "Name:");
    EXPECT_EQ(content.result, RESULT_END_OF_DATA);
    EXPECT_TRUE(stream->IsEnd());
    EXPECT_EQ(stream->Seek(5), RESULT_OK);
    EXPECT_EQ(stream->Seek(content.bytes.size() + 1), RESULT_STREAM_FAILED);
}

TEST(PosixFileTest, AReadErrorIsAFailure) {
    // Nothing is mapped at address 0, so that the read of this file fails at its start.
    const std::unique_ptr<InputStream> stream = Open("/proc/self/mem");
    ASSERT_NE(stream, nullptr);
    EXPECT_FALSE(stream->IsEnd());
    char buffer[10];
    std::uint64_t bytesRead = 5;
    EXPECT_EQ(stream->Read(buffer, sizeof(buffer), &bytesRead), RESULT_STREAM_FAILED);
    EXPECT_EQ(bytesRead, 0U);
    std::uint64_t position = 5;
    EXPECT_EQ(stream->GetPosition(&position), RESULT_OK);
    EXPECT_EQ(position, 0U);
}

TEST(PosixDeviceTest, ADeviceHasNoPositions) {
    const std::unique_ptr<InputStream> stream = Open("/dev/zero");
    ASSERT_NE(stream, nullptr);
    char buffer[4] = {'x', 'x', 'x', 'x'};
    std::uint64_t bytesRead = 0;
    EXPECT_EQ(stream->Read(buffer, sizeof(buffer), &bytesRead), RESULT_OK);
    EXPECT_EQ(std::string_view(buffer, bytesRead), std::string_view("\0\0\0\0", 4));
    std::uint64_t position = 99;
    EXPECT_NE(stream->GetPosition(&position), RESULT_OK);
    EXPECT_NE(stream->Seek(0), RESULT_OK);
    EXPECT_FALSE(stream->IsEnd());
    EXPECT_EQ(stream->Read(nullptr, 0, &bytesRead), RESULT_OK);
    EXPECT_EQ(bytesRead, 0U);
    EXPECT_EQ(stream->Read(nullptr, 1, &bytesRead), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(stream->Read(buffer, 1, nullptr), RESULT_INVALID_ARGUMENT);
    EXPECT_EQ(stream->GetPosition(nullptr), RESULT_INVALID_ARGUMENT);
}

TEST(PosixDeviceTest, TheEndOfADeviceShowsInARead) {
    const std::unique_ptr<InputStream> stream = Open("/dev/null");
    ASSERT_NE(stream, nullptr);
    EXPECT_FALSE(stream->IsEnd());
    EXPECT_EQ(ReadAll(stream.get(), 4).result, RESULT_END_OF_DATA);
    EXPECT_TRUE(stream->IsEnd());
}

/// Lays a pipe under standard input for as long as it lives.
class PipedInput {
public:
    PipedInput() : saved(dup(STDIN_FILENO)) {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe(ends), 0);
        dup2(ends[0], STDIN_FILENO);
        close(ends[0]);
        writer = ends[1];
    }
    PipedInput(const PipedInput&) = delete;
    PipedInput& operator=(const PipedInput&) = delete;
    ~PipedInput() {
        CloseWriter();
        if (saved >= 0) {
            dup2(saved, STDIN_FILENO);
            close(saved);
        } else {
            close(STDIN_FILENO);
        }
    }

    void Write(std::string_view bytes) {
        EXPECT_EQ(write(writer, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    }

    void CloseWriter() {
        if (writer >= 0)
            close(writer);
        writer = -1;
    }

private:
    int saved;
    int writer = -1;
};

TEST(PosixDeviceTest, StandardInputCanBeAPipe) {
    PipedInput input;
    const std::unique_ptr<InputStream> stream = Open("/dev/stdin");
    ASSERT_NE(stream, nullptr);
    const auto read = [&stream] {
        char buffer[100];
        std::uint64_t bytesRead = 0;
        EXPECT_EQ(stream->Read(buffer, sizeof(buffer), &bytesRead), RESULT_OK);
        return std::string(buffer, bytesRead);
    };
    input.Write("first");
    EXPECT_EQ(read(), "first");  // what is there; it does not wait for the buffer to fill
    EXPECT_FALSE(stream->IsEnd());
    input.Write("second");
    EXPECT_EQ(read(), "second");
    std::uint64_t position = 99;
    EXPECT_EQ(stream->GetPosition(&position), RESULT_STREAM_FAILED);
    EXPECT_EQ(stream->Seek(0), RESULT_STREAM_FAILED);
    input.Write("third");
    input.CloseWriter();
    EXPECT_FALSE(stream->IsEnd());
    const StreamContent rest = ReadAll(stream.get(), 2);
    EXPECT_EQ(rest.bytes, "third");
    EXPECT_EQ(rest.result, RESULT_END_OF_DATA);
    EXPECT_TRUE(stream->IsEnd());
}

std::atomic<int> interruptions = 0;

extern "C" void CountInterruption(int) {
    ++interruptions;
}

/// Interrupts the calling thread again and again: a handler without SA_RESTART lets every blocking
/// call fail with EINTR.
class Interrupter {
public:
    Interrupter() {
        struct sigaction action = {};
        action.sa_handler = CountInterruption;
        sigemptyset(&action.sa_mask);
        sigaction(SIGALRM, &action, &previous);
        const itimerval every2Milliseconds = {{0, 2000}, {0, 2000}};
        setitimer(ITIMER_REAL, &every2Milliseconds, nullptr);
    }
    Interrupter(const Interrupter&) = delete;
    Interrupter& operator=(const Interrupter&) = delete;
    ~Interrupter() {
        const itimerval never = {};
        setitimer(ITIMER_REAL, &never, nullptr);
        sigaction(SIGALRM, &previous, nullptr);
    }

    /// Waits, in another thread, until more interruptions have come than a call can have missed.
    static void Wait() {
        const int enough = interruptions + 20;
        while (interruptions < enough)
            std::this_thread::yield();
    }

private:
    struct sigaction previous = {};
};

TEST(PosixDeviceTest, InterruptedCallsGoOn) {
    const TemporaryFolder folder;
    const std::filesystem::path path = folder.GetPath() / "fifo";
    ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
    // The writer is started with the signal blocked, so that it always meets the reader.
    sigset_t signals;
    sigset_t before;
    sigemptyset(&signals);
    sigaddset(&signals, SIGALRM);
    pthread_sigmask(SIG_BLOCK, &signals, &before);
    std::thread writer([&path] {
        Interrupter::Wait();                                            // the reader waits in open
        const int descriptor = open(path.c_str(), O_RDWR | O_CLOEXEC);  // never waits for the reader
        Interrupter::Wait();                                            // the reader waits in read
        EXPECT_EQ(write(descriptor, "text", 4), 4);
        Interrupter::Wait();
        close(descriptor);
    });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    const Interrupter interrupter;
    const std::unique_ptr<InputStream> stream = Open(path);
    EXPECT_NE(stream, nullptr);
    if (stream != nullptr) {
        const StreamContent content = ReadAll(stream.get(), 10);
        EXPECT_EQ(content.bytes, "text");
        EXPECT_EQ(content.result, RESULT_END_OF_DATA);
    }
    writer.join();
}

TEST(PosixTemporaryFileTest, PositionedReadsAndWrites) {
    TemporaryFile file;
    ASSERT_EQ(file.Create(), RESULT_OK);
    const std::uint64_t far = std::uint64_t{5} << 30;
    ASSERT_EQ(file.Write(far, "far", 3), RESULT_OK);
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
        {far - 1, 10, RESULT_OK, std::string("\0far", 4)},
        {far + 2, 1, RESULT_OK, "r"},
        {far + 3, 1, RESULT_OK, ""},
        {far + 100, 10, RESULT_OK, ""},
        {INT64_MAX, 10, RESULT_OK, ""},
        {std::uint64_t{1} << 63, 10, RESULT_STREAM_FAILED, ""},
        {UINT64_MAX, 1, RESULT_STREAM_FAILED, ""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.position);
        std::vector<char> buffer(row.size);
        std::uint64_t bytesRead = 99;
        EXPECT_EQ(file.Read(row.position, buffer.data(), row.size, &bytesRead), row.code);
        EXPECT_EQ(std::string(buffer.data(), bytesRead), row.expected);
    }
    EXPECT_EQ(file.Write(INT64_MAX, "x", 1), RESULT_STREAM_FAILED);
    EXPECT_EQ(file.Write(UINT64_MAX, "x", 1), RESULT_STREAM_FAILED);
}

/// Tears the positioned calls for as long as it lives.
class TornCalls {
public:
    explicit TornCalls(std::size_t most) {
        mostAtATime = most;
        tornCalls = 0;
    }
    TornCalls(const TornCalls&) = delete;
    TornCalls& operator=(const TornCalls&) = delete;
    ~TornCalls() {
        mostAtATime = 0;
    }
};

TEST(PosixTornCallsTest, ReadsAndWritesGoOnUntilAllBytesAreMoved) {
    const std::string bytes = "0123456789abcdefghijklmnopqrstuvwxyz";
    const TemporaryFolder folder;
    const std::unique_ptr<InputStream> stream = Open(folder.Write("file", bytes));
    ASSERT_NE(stream, nullptr);
    for (const std::size_t most : {1U, 5U, 36U}) {
        SCOPED_TRACE(most);
        const TornCalls torn(most);
        const int calls = 2 * static_cast<int>((bytes.size() + most - 1) / most);
        std::string buffer(bytes.size(), '?');
        std::uint64_t bytesRead = 0;

        TemporaryFile file;
        ASSERT_EQ(file.Create(), RESULT_OK);
        ASSERT_EQ(file.Write(3, bytes.data(), bytes.size()), RESULT_OK);
        EXPECT_EQ(tornCalls, calls);
        EXPECT_EQ(file.Read(3, buffer.data(), buffer.size(), &bytesRead), RESULT_OK);
        EXPECT_EQ(buffer.substr(0, bytesRead), bytes);
        EXPECT_EQ(tornCalls, 2 * calls);

        buffer.assign(bytes.size(), '?');
        ASSERT_EQ(stream->Seek(0), RESULT_OK);
        EXPECT_EQ(stream->Read(buffer.data(), buffer.size(), &bytesRead), RESULT_OK);
        EXPECT_EQ(buffer.substr(0, bytesRead), bytes);
        EXPECT_TRUE(stream->IsEnd());
    }
}

TEST(PosixTmpStreamTest, AFileThatLostBytesFailsTheRead) {
    TmpOutputStream output(0);
    ASSERT_EQ(output.Write("some text", 9), RESULT_OK);
    const std::vector<Descriptor> files = GetTemporaryFiles();
    ASSERT_EQ(files.size(), 1U);
    ASSERT_EQ(ftruncate(files[0].number, 4), 0);
    TmpInputStream input(output);
    const StreamContent content = ReadAll(&input, 3);
    EXPECT_EQ(content.bytes, "som");
    EXPECT_EQ(content.result, RESULT_STREAM_FAILED);
}

TEST(PosixTemporaryFileTest, HasNoNameAndIsReadableByNobodyElse) {
    const std::size_t before = GetDescriptors().size();
    {
        TemporaryFile file;
        ASSERT_EQ(file.Create(), RESULT_OK);
        const std::vector<Descriptor> files = GetTemporaryFiles();
        ASSERT_EQ(files.size(), 1U);
        struct stat status;
        ASSERT_EQ(fstat(files[0].number, &status), 0);
        EXPECT_EQ(status.st_nlink, 0U);
        EXPECT_EQ(status.st_mode & 0777U, 0600U);
    }
    EXPECT_EQ(GetDescriptors().size(), before);
    TemporaryFile never;  // without Create, its destructor has nothing to close
}

TEST(PosixTemporaryFileTest, IgnoresTheEnvironment) {
    const auto create = [] {
        setenv("TMPDIR", "/nonexistent", 1);
        TemporaryFile file;
        _exit(file.Create() == RESULT_OK ? 0 : 1);
    };
    EXPECT_EXIT(create(), testing::ExitedWithCode(0), "");
}

TEST(PosixTmpStreamTest, TheFileIsMadeWithTheFirstByteAboveTheLimitAndGoesWithItsLastUser) {
    auto output = std::make_unique<TmpOutputStream>(10);
    ASSERT_EQ(output->Write("0123456789", 10), RESULT_OK);
    EXPECT_EQ(GetTemporaryFiles().size(), 0U);
    ASSERT_EQ(output->Write("x", 1), RESULT_OK);
    EXPECT_EQ(GetTemporaryFiles().size(), 1U);
    auto input = std::make_unique<TmpInputStream>(*output);
    output.reset();
    EXPECT_EQ(GetTemporaryFiles().size(), 1U);
    EXPECT_EQ(ReadAll(input.get(), 100).bytes, "0123456789x");
    input.reset();
    EXPECT_EQ(GetTemporaryFiles().size(), 0U);
}

TEST(PosixTmpStreamTest, ManySmallWritesCostFewCalls) {
    TmpOutputStream output(100000);
    const std::string start(100001, 's');
    ASSERT_EQ(output.Write(start.data(), start.size()), RESULT_OK);
    const std::vector<Descriptor> files = GetTemporaryFiles();
    ASSERT_EQ(files.size(), 1U);
    for (int i = 0; i < 1000; ++i)
        ASSERT_EQ(output.Write("x", 1), RESULT_OK);
    struct stat status;
    ASSERT_EQ(fstat(files[0].number, &status), 0);
    EXPECT_EQ(status.st_size, 100001);
    EXPECT_EQ(output.GetSize(), 101001U);
}

/// Runs `check` in a process of its own, in which no file may grow above 100,000 bytes: a disk that
/// is full there.
template <typename Check>
void OnAFullDisk(Check check) {
    const auto run = [&check] {
        const rlimit limit = {100000, 100000};
        signal(SIGXFSZ, SIG_IGN);  // the write fails instead
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            _exit(99);
        _exit(check());
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(PosixTmpStreamTest, AFullDiskFailsTheWriteThatMeetsIt) {
    OnAFullDisk([] {
        TmpOutputStream output(0);
        const std::string piece(60000, 'a');
        if (output.Write(piece.data(), piece.size()) != RESULT_OK)
            return 1;
        // The first 40,000 bytes of it still fit.
        if (output.Write(piece.data(), piece.size()) != RESULT_STREAM_FAILED ||
            output.GetResult() != RESULT_STREAM_FAILED)
            return 2;
        if (output.Write("x", 1) != RESULT_STREAM_FAILED || output.GetSize() != 60000)
            return 3;
        TmpInputStream input(output);
        const StreamContent content = ReadAll(&input, 7000);
        if (content.bytes != piece || content.result != RESULT_STREAM_FAILED || input.IsEnd())
            return 4;
        return 0;
    });
}

TEST(PosixTmpStreamTest, AFullDiskFailsTheMoveOutOfMemory) {
    OnAFullDisk([] {
        TmpOutputStream output(150000);
        const std::string piece(150000, 'a');
        if (output.Write(piece.data(), piece.size()) != RESULT_OK)
            return 1;
        if (output.Write("x", 1) != RESULT_STREAM_FAILED || output.GetResult() != RESULT_STREAM_FAILED)
            return 2;
        TmpInputStream input(output);
        const StreamContent content = ReadAll(&input, 7000);
        if (content.bytes != piece || content.result != RESULT_STREAM_FAILED)
            return 3;
        return 0;
    });
}

TEST(PosixTmpStreamTest, AFullDiskFailsTheWriteThatEmptiesTheBuffer) {
    OnAFullDisk([] {
        TmpOutputStream output(50000);
        std::string expected;
        std::uint32_t result = RESULT_OK;
        while (result == RESULT_OK && expected.size() < 1000000) {
            const std::string piece = std::to_string(expected.size()) + ",";
            result = output.Write(piece.data(), piece.size());
            if (result == RESULT_OK)
                expected += piece;
        }
        if (result != RESULT_STREAM_FAILED || output.GetSize() != expected.size() || expected.size() < 100000)
            return 1;
        TmpInputStream input(output);
        const StreamContent content = ReadAll(&input, 7000);
        if (content.bytes != expected || content.result != RESULT_STREAM_FAILED)
            return 2;
        return 0;
    });
}

TEST(PosixTmpStreamTest, TheFileTakesOverWhenThereIsNoMemory) {
#if defined(__SANITIZE_ADDRESS__)
    GTEST_SKIP() << "the address sanitizer's allocator ends the process instead of failing";
#endif
    const auto run = [] {
        std::size_t pages = 0;
        std::ifstream("/proc/self/statm") >> pages;
        const rlim_t size = pages * static_cast<std::size_t>(sysconf(_SC_PAGESIZE)) + (8 << 20);
        const rlimit limit = {size, size};
        if (setrlimit(RLIMIT_AS, &limit) != 0)
            _exit(99);
        TmpOutputStream output(std::uint64_t{1} << 40);
        const std::string piece(65536, 'a');
        const std::uint64_t most = 4096;  // 256 MB, far more than is left
        std::uint64_t pieces = 0;
        while (GetTemporaryFiles().empty() && pieces < most) {
            if (output.Write(piece.data(), piece.size()) != RESULT_OK)
                _exit(1);
            ++pieces;
        }
        if (pieces == most || output.Write("end", 3) != RESULT_OK)
            _exit(2);
        TmpInputStream input(output);
        std::string buffer(piece.size(), '?');
        std::uint64_t bytesRead = 0;
        for (; pieces > 0; --pieces) {
            if (input.Read(buffer.data(), buffer.size(), &bytesRead) != RESULT_OK || bytesRead != piece.size() ||
                buffer != piece)
                _exit(3);
        }
        if (input.Read(buffer.data(), buffer.size(), &bytesRead) != RESULT_OK || buffer.substr(0, bytesRead) != "end")
            _exit(4);
        _exit(input.IsEnd() ? 0 : 5);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(PosixTmpStreamTest, WithoutAFileTheBytesInMemoryCanStillBeRead) {
    const auto run = [] {
        rlimit limit = {};
        TmpOutputStream output(5);
        if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || output.Write("whole", 5) != RESULT_OK)
            _exit(98);
        // Only for the one write: the sanitizers open descriptors of their own when they check a
        // type for the first time.
        const rlimit none = {0, limit.rlim_max};
        if (setrlimit(RLIMIT_NOFILE, &none) != 0)
            _exit(99);
        const std::uint32_t result = output.Write("x", 1);
        if (setrlimit(RLIMIT_NOFILE, &limit) != 0)
            _exit(99);
        if (result != RESULT_STREAM_FAILED)
            _exit(1);
        TmpInputStream input(output);
        const StreamContent content = ReadAll(&input, 100);
        _exit(content.bytes == "whole" && content.result == RESULT_STREAM_FAILED ? 0 : 2);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace Kestra::VFS
