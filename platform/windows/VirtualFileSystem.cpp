#include "platform/VirtualFileSystem.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <stdexcept>
#include <string>

#include "platform/FileStreams.h"
#include "platform/Results.h"
#include "platform/TemporaryFile.h"
#include "platform/windows/FileHandle.h"
#include "platform/windows/LongPath.h"

namespace Kestra::VFS {

namespace {

/// An open handle, which it closes.
class OwnedHandle {
public:
    explicit OwnedHandle(HANDLE openHandle, bool pipe = false) : handle(openHandle), isPipe(pipe) {}
    OwnedHandle(const OwnedHandle&) = delete;
    OwnedHandle& operator=(const OwnedHandle&) = delete;
    ~OwnedHandle() {
        CloseHandle(handle);
    }

    bool ReadAt(std::uint64_t position, void* buffer, std::uint64_t size, std::uint64_t* bytesRead) const {
        return VFS::ReadAt(handle, position, buffer, size, bytesRead);
    }

    bool GetSize(std::uint64_t* size) const {
        LARGE_INTEGER stated;
        if (GetFileSizeEx(handle, &stated) == 0)
            return false;
        *size = static_cast<std::uint64_t>(stated.QuadPart);
        return true;
    }

    std::uint32_t ReadNext(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) const {
        DWORD count = 0;
        do {
            if (ReadFile(handle, buffer, static_cast<DWORD>(std::min(size, MAX_TRANSFER)), &count, nullptr) == 0) {
                // A pipe whose writer is gone says so by an error.
                const bool isEnd = GetLastError() == ERROR_BROKEN_PIPE || GetLastError() == ERROR_HANDLE_EOF;
                return isEnd ? RESULT_END_OF_DATA : RESULT_STREAM_FAILED;
            }
        } while (count == 0 && isPipe);  // the writer wrote nothing: an empty message, and no end
        *bytesRead = count;
        return count == 0 ? RESULT_END_OF_DATA : RESULT_OK;
    }

private:
    HANDLE handle;
    bool isPipe;
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
            return new (std::nothrow) FileInputStream<OwnedHandle>(handle, static_cast<std::uint64_t>(size.QuadPart));
        case FILE_TYPE_CHAR:
            return new (std::nothrow) DeviceInputStream<OwnedHandle>(handle, false);
        case FILE_TYPE_PIPE:
            return new (std::nothrow) DeviceInputStream<OwnedHandle>(handle, true);
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
    // Others may go on writing to the file, rename or delete it, as on other systems. A folder is
    // not opened. The server of a pipe may learn who reads it, and not act in that name.
    const HANDLE handle =
        CreateFileW(verbatim.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL | SECURITY_SQOS_PRESENT | SECURITY_IDENTIFICATION, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return nullptr;
    InputStream* const stream = MakeStream(handle);
    if (stream == nullptr)
        CloseHandle(handle);
    return stream;
}

std::uint32_t VirtualFileSystem::SetTemporaryFolder(const WideChar* path) {
    return TemporaryFile::SetFolder(path) ? RESULT_OK : RESULT_INVALID_ARGUMENT;
}

}  // namespace Kestra::VFS
