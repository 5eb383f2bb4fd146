#include "platform/VirtualFileSystem.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <new>

#include "platform/CodePoints.h"
#include "platform/FileStreams.h"
#include "platform/Results.h"
#include "platform/TemporaryFile.h"
#include "platform/posix/PositionedRead.h"

namespace Kestra::VFS {

namespace {

/// An open descriptor, which it closes.
class Descriptor {
public:
    explicit Descriptor(int openDescriptor) : descriptor(openDescriptor) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        close(descriptor);
    }

    bool ReadAt(std::uint64_t position, void* buffer, std::uint64_t size, std::uint64_t* bytesRead) const {
        return VFS::ReadAt(descriptor, position, buffer, size, bytesRead);
    }

    bool GetSize(std::uint64_t* size) const {
        struct stat status;
        if (fstat(descriptor, &status) != 0)
            return false;
        *size = static_cast<std::uint64_t>(status.st_size);
        return true;
    }

    std::uint32_t ReadNext(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) const {
        ssize_t result = -1;
        do {
            result = read(descriptor, buffer, static_cast<std::size_t>(std::min(size, MAX_TRANSFER)));
        } while (result < 0 && errno == EINTR);
        if (result < 0)
            return RESULT_STREAM_FAILED;
        *bytesRead = static_cast<std::uint64_t>(result);
        return result == 0 ? RESULT_END_OF_DATA : RESULT_OK;
    }

private:
    int descriptor;
};

/// One character of four bytes may begin at PATH_MAX; then comes the terminator.
constexpr std::size_t PATH_BUFFER_SIZE = PATH_MAX + 5;

/// Converts a NUL-terminated path to UTF-8, terminated as well.
/// @return false for an empty path, a lone surrogate, or more than PATH_MAX bytes, which name
///         nothing on this system.
bool ConvertPath(const WideChar* path, char (&converted)[PATH_BUFFER_SIZE]) {
    const WideChar* const end = path + WideStringView(path).size();
    std::size_t length = 0;
    while (path != end) {
        const char32_t character = ReadUtf16(&path, end);
        if (IsSurrogate(character) || length > PATH_MAX)
            return false;
        WriteUtf8(character, [&](char byte) { converted[length++] = byte; });
    }
    converted[length] = 0;
    return length > 0;
}

}  // namespace

InputStream* VirtualFileSystem::GetInputStreamEx(const WideChar* path) {
    char converted[PATH_BUFFER_SIZE];
    if (path == nullptr || !ConvertPath(path, converted))
        return nullptr;
    int descriptor = -1;
    do {
        descriptor = open(converted, O_RDONLY | O_CLOEXEC | O_NOCTTY);
    } while (descriptor < 0 && errno == EINTR);
    if (descriptor < 0)
        return nullptr;

    InputStream* stream = nullptr;
    struct stat status;
    if (fstat(descriptor, &status) == 0 && !S_ISDIR(status.st_mode)) {
        if (S_ISREG(status.st_mode))
            stream =
                new (std::nothrow) FileInputStream<Descriptor>(descriptor, static_cast<std::uint64_t>(status.st_size));
        else
            stream = new (std::nothrow) DeviceInputStream<Descriptor>(descriptor);
    }
    if (stream == nullptr)
        close(descriptor);
    return stream;
}

std::uint32_t VirtualFileSystem::SetTemporaryFolder(const WideChar* path) {
    return TemporaryFile::SetFolder(path) ? RESULT_OK : RESULT_INVALID_ARGUMENT;
}

}  // namespace Kestra::VFS
