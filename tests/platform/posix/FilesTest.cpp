#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "tests/platform/FileCheck.h"

// What the streams owe to a POSIX system: names in UTF-8, permissions, interrupted calls, special
// files, descriptors, and what becomes of files that the system limits or others change.

namespace Kestra::Test {
namespace {

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
    ExpectReadFails(stream.get());
    ExpectPosition(stream.get(), 0);
}

TEST(PosixDeviceTest, ADeviceHasNoPositions) {
    const std::unique_ptr<InputStream> stream = Open("/dev/zero");
    ASSERT_NE(stream, nullptr);
    char buffer[4] = {'x', 'x', 'x', 'x'};
    std::uint64_t bytesRead = 0;
    EXPECT_EQ(stream->Read(buffer, sizeof(buffer), &bytesRead), RESULT_OK);
    EXPECT_EQ(std::string_view(buffer, bytesRead), std::string_view("\0\0\0\0", 4));
    EXPECT_FALSE(stream->IsEnd());
    ExpectNoPositions(stream.get());
    const std::vector<OpenFile> devices = GetOpenFiles("/dev/zero");
    ASSERT_EQ(devices.size(), 1U);
    EXPECT_FALSE(devices[0].isInherited);
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
    if (stream != nullptr)
        ExpectContent(stream.get(), 10, "text", RESULT_END_OF_DATA);
    writer.join();
}

TEST(PosixTemporaryFileTest, HasNoNameAndIsReadableByNobodyElse) {
    const std::size_t before = GetOpenFiles().size();
    {
        TemporaryFile file;
        ASSERT_EQ(file.Create(), RESULT_OK);
        ASSERT_EQ(CountTemporaryFiles(), 1U);
        EXPECT_EQ(GetOpenFiles().size(), before + 1);
        const std::vector<OpenFile> files = GetOpenFiles(GetTemporaryEnding());
        ASSERT_EQ(files.size(), 1U);
        struct stat status;
        ASSERT_EQ(fstat(static_cast<int>(files[0].handle), &status), 0);
        EXPECT_EQ(status.st_nlink, 0U);
        EXPECT_EQ(status.st_mode & 0777U, 0600U);
    }
    EXPECT_EQ(GetOpenFiles().size(), before);
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

TEST(PosixTemporaryFileTest, LiesInTheFolderThatTheHostNames) {
    const auto run = [](const std::u16string& folder) {
        EXPECT_EQ(VirtualFileSystem::SetTemporaryFolder(folder.c_str()), 0U);
        const std::u16string lone{u'/', 0xD800};
        const std::u16string tooLong(PATH_MAX, u'x');
        for (const char16_t* const path : {u"", lone.c_str(), tooLong.c_str()})
            EXPECT_EQ(VirtualFileSystem::SetTemporaryFolder(path), 2U);
        {
            TemporaryFile file;
            EXPECT_EQ(file.Create(), RESULT_OK);
            const std::vector<OpenFile> files = GetOpenFiles(GetTemporaryEnding());
            EXPECT_EQ(files.size(), 1U);
            EXPECT_TRUE(!files.empty() && files[0].name.u16string().starts_with(folder + u"/kestra-"));
        }
        EXPECT_EQ(VirtualFileSystem::SetTemporaryFolder((folder + u"/missing").c_str()), 0U) << "it may come later";
        {
            TemporaryFile file;
            EXPECT_EQ(file.Create(), RESULT_STREAM_FAILED);
        }
        EXPECT_EQ(VirtualFileSystem::SetTemporaryFolder(nullptr), 0U);
        {
            TemporaryFile file;
            EXPECT_EQ(file.Create(), RESULT_OK);
            EXPECT_EQ(CountTemporaryFiles(), 1U) << "in the folder of the system again";
        }
        _exit(testing::Test::HasFailure() ? 1 : 0);
    };
    const TemporaryFolder folder;
    const std::filesystem::path named = folder.GetPath() / u8"f\u00F6lder";
    std::filesystem::create_directory(named);
    EXPECT_EXIT(run(named.u16string()), testing::ExitedWithCode(0), "");
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

/// Runs `check` in a process in which the system lets no file grow above `size` bytes.
template <typename Check>
void OnADiskOf(rlim_t size, Check check) {
    const auto run = [&check, size] {
        const rlimit limit = {size, size};
        signal(SIGXFSZ, SIG_IGN);  // the write fails instead
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0)
            _exit(99);
        check();
        _exit(testing::Test::HasFailure() ? 1 : 0);
    };
    EXPECT_EXIT(run(), testing::ExitedWithCode(0), "");
}

TEST(PosixTmpStreamTest, TheLimitOfTheSystemFailsTheWriteThatMeetsIt) {
    for (const std::uint64_t memoryLimit : {0U, 60000U}) {
        OnADiskOf(100000, [memoryLimit] {
            TmpOutputStream output(memoryLimit);
            const std::string piece(60000, 'a');
            EXPECT_EQ(output.Write(piece.data(), piece.size()), RESULT_OK);
            EXPECT_EQ(output.Write(piece.data(), piece.size()), RESULT_STREAM_FAILED) << "40,000 bytes still fit";
            EXPECT_EQ(output.GetResult(), RESULT_STREAM_FAILED);
            EXPECT_EQ(output.Write("x", 1), RESULT_STREAM_FAILED);
            EXPECT_EQ(output.GetSize(), piece.size());
            ExpectContent(output, 7000, piece, RESULT_STREAM_FAILED);
        });
    }
}

/// The descriptor of the one temporary file.
int GetTemporaryDescriptor() {
    const std::vector<OpenFile> files = GetOpenFiles(GetTemporaryEnding());
    EXPECT_EQ(files.size(), 1U);
    return files.empty() ? -1 : static_cast<int>(files[0].handle);
}

TEST(PosixTmpStreamTest, AFileThatIsCutShortFailsTheRead) {
    TmpOutputStream output(0);
    ASSERT_EQ(output.Write("some text", 9), RESULT_OK);
    ASSERT_EQ(ftruncate(GetTemporaryDescriptor(), 4), 0);
    ExpectContent(output, 3, "som", RESULT_STREAM_FAILED);
}

/// Feeds 6 MiB, which need a file, and ends a document whose copy is lost before its end.
/// @param spoil  is called after the bytes are fed
void ExpectLostCopy(const std::function<void()>& spoil) {
    GenericParser parser;
    parser.SetSelfCheck(GenericParser::SELF_CHECK_COPY);
    EXPECT_EQ(parser.StartParse(1252, GenericParser::DATA_STREAM_8BIT), 0U);
    const std::string document = "<p>" + std::string(6 << 20, 'x') + "</p>";
    EXPECT_EQ(parser.ParseBuffer(document.data(), document.size()), 0U);
    spoil();
    EXPECT_EQ(parser.EndParse(), 704U);
    EXPECT_EQ(parser.GetSelfCheckStream(), nullptr);
    EXPECT_EQ(CountTemporaryFiles(), 0U);
}

TEST(PosixSelfCheckCopyTest, TheLimitOfTheSystemTakesTheCopyAway) {
    for (const rlim_t size : {0U, 5U << 20})
        OnADiskOf(size, [] { ExpectLostCopy([] {}); });
}

TEST(PosixSelfCheckCopyTest, AFileThatIsSpoiltIsNoCopy) {
    const struct {
        const char* note;
        std::function<void(int file)> spoil;
    } rows[] = {
        {"cut short", [](int file) { EXPECT_EQ(ftruncate(file, 1000000), 0); }},
        {"another byte is written", [](int file) { EXPECT_EQ(pwrite(file, "?", 1, 1000000), 1); }},
        {"replaced by one that is open for writing only",
         [](int file) {
             const int unreadable = open("/dev/null", O_WRONLY | O_CLOEXEC);
             EXPECT_EQ(dup2(unreadable, file), file);
             EXPECT_EQ(close(unreadable), 0);
         }},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.note);
        ExpectLostCopy([&row] { row.spoil(GetTemporaryDescriptor()); });
    }
}

}  // namespace
}  // namespace Kestra::Test
