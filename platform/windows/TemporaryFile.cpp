#include "platform/TemporaryFile.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <string>

#include "platform/Results.h"
#include "platform/windows/FileHandle.h"
#include "platform/windows/LongPath.h"

namespace Kestra::VFS {

namespace {

constexpr int MOST_ATTEMPTS = 1000;

HANDLE ToHandle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

/// A name that no other file of this process has had, and hardly one of another process.
std::wstring MakeName() {
    static std::atomic<unsigned> number = 0;
    LARGE_INTEGER time;
    QueryPerformanceCounter(&time);
    std::wstring name = L"kestra-";
    name += std::to_wstring(GetCurrentProcessId());
    name += L'-';
    name += std::to_wstring(++number);
    name += L'-';
    name += std::to_wstring(time.QuadPart);
    name += L".tmp";
    return name;
}

}  // namespace

TemporaryFile::TemporaryFile() : handle(-1) {}

TemporaryFile::~TemporaryFile() {
    if (handle != -1)
        CloseHandle(ToHandle(handle));
}

std::uint32_t TemporaryFile::Create() {
    std::array<wchar_t, MAX_PATH + 2> folder;
    const DWORD length = GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
    if (length == 0 || length >= folder.size())
        return RESULT_STREAM_FAILED;
    for (int attempt = 0; attempt < MOST_ATTEMPTS; ++attempt) {
        const std::wstring path = LiftLimit(std::wstring(folder.data(), length) + MakeName());
        // Shared with nobody, kept in memory while there is room, and removed when the handle is closed, whoever closes it.
        const HANDLE opened = CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW,
                                          FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
        if (opened != INVALID_HANDLE_VALUE) {
            handle = reinterpret_cast<std::intptr_t>(opened);
            return RESULT_OK;
        }
        if (GetLastError() != ERROR_FILE_EXISTS)
            break;
    }
    return RESULT_STREAM_FAILED;
}

std::uint32_t TemporaryFile::Write(std::uint64_t position, const void* data, std::uint64_t size) {
    if (position > MAX_FILE_OFFSET || size > MAX_FILE_OFFSET - position)
        return RESULT_STREAM_FAILED;
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        OVERLAPPED place = At(position);
        DWORD count = 0;
        const auto length = static_cast<DWORD>(std::min(size, MAX_TRANSFER));
        if (WriteFile(ToHandle(handle), next, length, &count, &place) == 0 || count == 0)
            return RESULT_STREAM_FAILED;
        next += count;
        position += count;
        size -= count;
    }
    return RESULT_OK;
}

std::uint32_t TemporaryFile::Read(std::uint64_t position, void* buffer, std::uint64_t size, std::uint64_t* bytesRead) const {
    return ReadAt(ToHandle(handle), position, buffer, size, bytesRead) ? RESULT_OK : RESULT_STREAM_FAILED;
}

}  // namespace Kestra::VFS
