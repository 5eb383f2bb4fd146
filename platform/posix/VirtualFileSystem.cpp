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

#include "platform/Results.h"
#include "platform/posix/PositionedRead.h"

namespace Kestra::VFS {

namespace {

/// A regular file. Reads are positioned, so the descriptor's own position plays no part.
class FileInputStream final : public InputStream {
public:
    FileInputStream(int openDescriptor, std::uint64_t fileSize) : descriptor(openDescriptor), knownSize(fileSize) {}
    FileInputStream(const FileInputStream&) = delete;
    FileInputStream& operator=(const FileInputStream&) = delete;
    ~FileInputStream() override {
        close(descriptor);
    }

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        if (bytesRead == nullptr)
            return RESULT_INVALID_ARGUMENT;
        *bytesRead = 0;
        if (size == 0)
            return RESULT_OK;
        if (buffer == nullptr)
            return RESULT_INVALID_ARGUMENT;
        if (!ReadAt(descriptor, next, buffer, size, bytesRead))
            return RESULT_STREAM_FAILED;
        if (*bytesRead == 0)
            return RESULT_END_OF_DATA;
        next += *bytesRead;
        knownSize = std::max(knownSize, next);
        return RESULT_OK;
    }

    std::uint32_t GetPosition(std::uint64_t* position) override {
        if (position == nullptr)
            return RESULT_INVALID_ARGUMENT;
        *position = next;
        return RESULT_OK;
    }

    std::uint32_t Seek(std::uint64_t position) override {
        struct stat status;
        if (position > knownSize && fstat(descriptor, &status) == 0)
            knownSize = std::max(knownSize, static_cast<std::uint64_t>(status.st_size));
        if (position > knownSize)
            return RESULT_STREAM_FAILED;
        next = position;
        return RESULT_OK;
    }

    bool IsEnd() override {
        if (next < knownSize)
            return false;
        // The file may have grown, and the files of /proc have more bytes than the size they state: only a read knows.
        char probe;
        std::uint64_t found = 0;
        return ReadAt(descriptor, next, &probe, 1, &found) && found == 0;
    }

private:
    int descriptor;
    std::uint64_t next = 0;
    std::uint64_t knownSize;  ///< the size the system last stated, or the end of the last byte read when that is further
};

/// A pipe, a terminal or another device: bytes come once, and their offsets are unknown.
class DeviceInputStream final : public InputStream {
public:
    explicit DeviceInputStream(int openDescriptor) : descriptor(openDescriptor) {}
    DeviceInputStream(const DeviceInputStream&) = delete;
    DeviceInputStream& operator=(const DeviceInputStream&) = delete;
    ~DeviceInputStream() override {
        close(descriptor);
    }

    /// Returns what is there, and waits only while nothing is.
    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        if (bytesRead == nullptr)
            return RESULT_INVALID_ARGUMENT;
        *bytesRead = 0;
        if (size == 0)
            return RESULT_OK;
        if (buffer == nullptr)
            return RESULT_INVALID_ARGUMENT;
        const auto length = static_cast<std::size_t>(std::min(size, MAX_TRANSFER));
        ssize_t result = -1;
        do {
            result = read(descriptor, buffer, length);
        } while (result < 0 && errno == EINTR);
        if (result < 0)
            return RESULT_STREAM_FAILED;
        endSeen = result == 0;
        *bytesRead = static_cast<std::uint64_t>(result);
        return endSeen ? RESULT_END_OF_DATA : RESULT_OK;
    }

    std::uint32_t GetPosition(std::uint64_t* position) override {
        return position == nullptr ? RESULT_INVALID_ARGUMENT : RESULT_STREAM_FAILED;
    }

    std::uint32_t Seek(std::uint64_t) override {
        return RESULT_STREAM_FAILED;
    }

    bool IsEnd() override {
        return endSeen;
    }

private:
    int descriptor;
    bool endSeen = false;
};

constexpr std::size_t PATH_BUFFER_SIZE = PATH_MAX + 5;  ///< one character of four bytes may begin at PATH_MAX; then the terminator

/// Converts a NUL-terminated path to UTF-8, terminated as well.
/// @return false for an empty path, a lone surrogate, or more than PATH_MAX bytes, which name nothing on this system.
bool ConvertPath(const WideChar* path, char (&converted)[PATH_BUFFER_SIZE]) {
    std::size_t length = 0;
    while (*path != 0) {
        std::uint32_t character = *path++;
        if (character >= 0xD800 && character <= 0xDFFF) {
            const std::uint32_t second = *path;  // the terminator at worst
            if (character >= 0xDC00 || second < 0xDC00 || second > 0xDFFF)
                return false;
            ++path;
            character = 0x10000 + ((character - 0xD800) << 10) + (second - 0xDC00);
        }
        if (length > PATH_MAX)
            return false;
        if (character < 0x80) {
            converted[length++] = static_cast<char>(character);
        } else if (character < 0x800) {
            converted[length++] = static_cast<char>(0xC0 | (character >> 6));
            converted[length++] = static_cast<char>(0x80 | (character & 0x3F));
        } else if (character < 0x10000) {
            converted[length++] = static_cast<char>(0xE0 | (character >> 12));
            converted[length++] = static_cast<char>(0x80 | ((character >> 6) & 0x3F));
            converted[length++] = static_cast<char>(0x80 | (character & 0x3F));
        } else {
            converted[length++] = static_cast<char>(0xF0 | (character >> 18));
            converted[length++] = static_cast<char>(0x80 | ((character >> 12) & 0x3F));
            converted[length++] = static_cast<char>(0x80 | ((character >> 6) & 0x3F));
            converted[length++] = static_cast<char>(0x80 | (character & 0x3F));
        }
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
            stream = new (std::nothrow) FileInputStream(descriptor, static_cast<std::uint64_t>(status.st_size));
        else
            stream = new (std::nothrow) DeviceInputStream(descriptor);
    }
    if (stream == nullptr)
        close(descriptor);
    return stream;
}

}  // namespace Kestra::VFS
