#include "platform/VirtualFileSystem.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <string>

#include "platform/Results.h"
#include "platform/windows/FileHandle.h"
#include "platform/windows/LongPath.h"

namespace Kestra::VFS {

namespace {

/// A file on a disk. Reads are positioned, so the handle's own position plays no part.
class FileInputStream final : public InputStream {
public:
    FileInputStream(HANDLE openHandle, std::uint64_t fileSize) : handle(openHandle), knownSize(fileSize) {}
    FileInputStream(const FileInputStream&) = delete;
    FileInputStream& operator=(const FileInputStream&) = delete;
    ~FileInputStream() override {
        CloseHandle(handle);
    }

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        if (bytesRead == nullptr)
            return RESULT_INVALID_ARGUMENT;
        *bytesRead = 0;
        if (size == 0)
            return RESULT_OK;
        if (buffer == nullptr)
            return RESULT_INVALID_ARGUMENT;
        if (!ReadAt(handle, next, buffer, size, bytesRead))
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
        LARGE_INTEGER size;
        if (position > knownSize && GetFileSizeEx(handle, &size) != 0)
            knownSize = std::max(knownSize, static_cast<std::uint64_t>(size.QuadPart));
        if (position > knownSize)
            return RESULT_STREAM_FAILED;
        next = position;
        return RESULT_OK;
    }

    bool IsEnd() override {
        if (next < knownSize)
            return false;
        // The file may have grown: only a read knows.
        char probe;
        std::uint64_t found = 0;
        return ReadAt(handle, next, &probe, 1, &found) && found == 0;
    }

private:
    HANDLE handle;
    std::uint64_t next = 0;
    std::uint64_t knownSize;  ///< the size the system last stated, or the end of the last byte read when that is further
};

/// A pipe, a console or another device: bytes come once, and their offsets are unknown.
class DeviceInputStream final : public InputStream {
public:
    DeviceInputStream(HANDLE openHandle, bool pipe) : handle(openHandle), isPipe(pipe) {}
    DeviceInputStream(const DeviceInputStream&) = delete;
    DeviceInputStream& operator=(const DeviceInputStream&) = delete;
    ~DeviceInputStream() override {
        CloseHandle(handle);
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
        const auto length = static_cast<DWORD>(std::min(size, MAX_TRANSFER));
        do {
            DWORD count = 0;
            if (ReadFile(handle, buffer, length, &count, nullptr) == 0) {
                // A pipe whose writer is gone says so by an error.
                endSeen = GetLastError() == ERROR_BROKEN_PIPE || GetLastError() == ERROR_HANDLE_EOF;
                return endSeen ? RESULT_END_OF_DATA : RESULT_STREAM_FAILED;
            }
            *bytesRead = count;
        } while (*bytesRead == 0 && isPipe);  // the writer wrote nothing: an empty message, and no end
        endSeen = *bytesRead == 0;
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
    HANDLE handle;
    bool isPipe;
    bool endSeen = false;
};

/// @return empty when there is no absolute form of the path, or no memory for it
std::wstring TryGetVerbatimPath(const wchar_t* path) {
    try {
        return GetVerbatimPath(path);
    } catch (const std::bad_alloc&) {
        return {};
    } catch (const std::length_error&) {
        return {};
    }
}

InputStream* MakeStream(HANDLE handle) {
    LARGE_INTEGER size;
    switch (GetFileType(handle)) {
        case FILE_TYPE_DISK:
            if (GetFileSizeEx(handle, &size) == 0)
                return nullptr;
            return new (std::nothrow) FileInputStream(handle, static_cast<std::uint64_t>(size.QuadPart));
        case FILE_TYPE_CHAR:
            return new (std::nothrow) DeviceInputStream(handle, false);
        case FILE_TYPE_PIPE:
            return new (std::nothrow) DeviceInputStream(handle, true);
        default:
            return nullptr;
    }
}

}  // namespace

InputStream* VirtualFileSystem::GetInputStreamEx(const WideChar* path) {
    if (path == nullptr || *path == 0)
        return nullptr;
    const std::wstring verbatim = TryGetVerbatimPath(path);
    if (verbatim.empty())
        return nullptr;
    // Others may go on writing to the file, rename or delete it, as on other systems. A folder is not opened. The server of a pipe may
    // learn who reads it, and not act in that name.
    const HANDLE handle = CreateFileW(verbatim.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return nullptr;
    InputStream* const stream = MakeStream(handle);
    if (stream == nullptr)
        CloseHandle(handle);
    return stream;
}

}  // namespace Kestra::VFS
