#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "tests/platform/FileCheck.h"

namespace Kestra::Test {
namespace {

FileCalls* current = nullptr;

/// Small parts bring interruptions: every other call is one.
bool IsInterrupted() {
    if (current->largestPart == FileCalls::NOWHERE || current->calls % 2 == 1)
        return false;
    ++current->calls;
    errno = EINTR;
    return true;
}

/// What the call of the C library returns for such a transfer.
ssize_t Finish(const std::optional<std::int64_t>& moved, int error) {
    if (!moved)
        errno = error;
    return moved ? static_cast<ssize_t>(*moved) : -1;
}

}  // namespace
}  // namespace Kestra::Test

// They replace those of the C library in this program. A system may tear any call, but hardly ever
// does on a local file.

extern "C" ssize_t pread(int descriptor, void* buffer, std::size_t size, off_t position) {
    using Kestra::Test::current;
    const auto read = [&](std::uint64_t part) { return syscall(SYS_pread64, descriptor, buffer, part, position); };
    if (current == nullptr)
        return read(size);
    if (Kestra::Test::IsInterrupted())
        return -1;
    return Kestra::Test::Finish(current->Read(static_cast<std::uint64_t>(position), buffer, size, read), EIO);
}

extern "C" ssize_t pwrite(int descriptor, const void* buffer, std::size_t size, off_t position) {
    using Kestra::Test::current;
    const auto write = [&](std::uint64_t part) { return syscall(SYS_pwrite64, descriptor, buffer, part, position); };
    if (current == nullptr)
        return write(size);
    if (Kestra::Test::IsInterrupted())
        return -1;
    return Kestra::Test::Finish(current->Write(static_cast<std::uint64_t>(position), size, write), ENOSPC);
}

namespace Kestra::Test {

const int FileCalls::CALLS_PER_PART = 2;

FileCalls::FileCalls() {
    current = this;
}

FileCalls::~FileCalls() {
    current = nullptr;
}

std::vector<OpenFile> GetOpenFiles() {
    std::vector<OpenFile> found;
    for (int number = 0; number < 256; ++number) {
        const int flags = fcntl(number, F_GETFD);
        if (flags != -1)
            found.push_back({static_cast<std::uintptr_t>(number),
                             std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(number)),
                             (flags & FD_CLOEXEC) == 0});
    }
    return found;
}

std::filesystem::path GetTemporaryEnding() {
    return " (deleted)";
}

std::size_t CountTemporaryFiles() {
    std::vector<OpenFile> found = GetOpenFiles(GetTemporaryEnding());
    std::erase_if(found, [](const OpenFile& file) { return !file.name.native().starts_with(P_tmpdir "/kestra-"); });
    return found.size();
}

const std::vector<std::filesystem::path>& GetNullDevices() {
    static const std::vector<std::filesystem::path> devices = {"/dev/null"};
    return devices;
}

std::uint64_t GetDistantPlace() {
    return std::uint64_t{5} << 30;
}

/// The pipe is standard input.
struct TestPipe::Ends {
    int savedInput;
    int writer;
};

TestPipe::TestPipe(bool) : path("/dev/stdin"), ends(std::make_unique<Ends>()) {
    int pair[2] = {-1, -1};
    EXPECT_EQ(pipe(pair), 0);
    ends->savedInput = dup(STDIN_FILENO);
    ends->writer = pair[1];
    dup2(pair[0], STDIN_FILENO);
    close(pair[0]);
}

TestPipe::~TestPipe() {
    Close();
    if (ends->savedInput >= 0) {
        dup2(ends->savedInput, STDIN_FILENO);
        close(ends->savedInput);
    } else {
        close(STDIN_FILENO);
    }
}

void TestPipe::Write(std::string_view bytes) {
    EXPECT_EQ(write(ends->writer, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
}

void TestPipe::Close() {
    if (ends->writer >= 0)
        close(ends->writer);
    ends->writer = -1;
}

const std::filesystem::path& TestPipe::GetPath() const {
    return path;
}

}  // namespace Kestra::Test
