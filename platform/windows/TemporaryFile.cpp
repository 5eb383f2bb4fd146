#include "platform/TemporaryFile.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>

#include "platform/Results.h"
#include "platform/windows/FileHandle.h"
#include "platform/windows/LongPath.h"

namespace Kestra::VFS {

namespace {

constexpr int MOST_ATTEMPTS = 1000;

HANDLE ToHandle(std::intptr_t handle) {
    return reinterpret_cast<HANDLE>(handle);
}

constexpr std::size_t MOST_FOLDER = MAX_PATH + 2;  ///< characters that the system may give, and a terminator
constexpr std::size_t MOST_NAME = 100;  ///< of the front that lifts the limit, and of a name with three numbers

/// A text that takes no memory from the heap: the file is wanted when there is none left.
class Path {
public:
    void Append(std::wstring_view text) {
        used += text.copy(characters.data() + used, characters.size() - 1 - used);
    }

    void Append(std::uint64_t number) {
        std::array<char, std::numeric_limits<std::uint64_t>::digits10 + 1> digits;
        const char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        for (const char* digit = digits.data(); digit != end; ++digit) {
            const auto character = static_cast<wchar_t>(*digit);
            Append(std::wstring_view(&character, 1));
        }
    }

    std::wstring_view Get() const {
        return std::wstring_view(characters.data(), used);
    }

private:
    std::array<wchar_t, MOST_FOLDER + MOST_NAME> characters = {};  ///< zeros after those that are used
    std::size_t used = 0;
};

/// A name that no other file of this process has had, and hardly one of another process.
void AppendName(Path* path) {
    static std::atomic<unsigned> number = 0;
    LARGE_INTEGER time;
    QueryPerformanceCounter(&time);
    path->Append(L"kestra-");
    path->Append(std::uint64_t{GetCurrentProcessId()});
    path->Append(L"-");
    path->Append(std::uint64_t{++number});
    path->Append(L"-");
    path->Append(static_cast<std::uint64_t>(time.QuadPart));
    path->Append(L".tmp");
}

/// A path of such a name in an absolute folder, which ends with a separator.
Path MakePath(std::wstring_view folder) {
    Path path;
    path.Append(folder);
    AppendName(&path);
    if (path.Get().size() < MAX_PATH)
        return path;
    const LongFront front = GetLongFront(folder);
    Path longPath;
    longPath.Append(front.text);
    longPath.Append(path.Get().substr(front.replaced));
    return longPath;
}

/// That of the host, absolute and with a separator at its end; empty for that of the system. An
/// array, for the same reason as `Path`.
std::array<wchar_t, MOST_FOLDER> hostFolder = {};

}  // namespace

bool TemporaryFile::SetFolder(const WideChar* path) {
    if (path == nullptr) {
        hostFolder[0] = 0;
        return true;
    }
    std::array<wchar_t, MOST_FOLDER> folder;
    const DWORD length =
        *path == 0 ? 0 : GetFullPathNameW(path, static_cast<DWORD>(folder.size() - 1), folder.data(), nullptr);
    if (length == 0 || length >= folder.size() - 1)
        return false;
    if (folder[length - 1] != L'\\') {
        folder[length] = L'\\';
        folder[length + 1] = 0;
    }
    hostFolder = folder;
    return true;
}

TemporaryFile::TemporaryFile() : handle(-1) {}

TemporaryFile::~TemporaryFile() {
    if (handle != -1)
        CloseHandle(ToHandle(handle));
}

std::uint32_t TemporaryFile::Create() {
    std::array<wchar_t, MOST_FOLDER> folder = hostFolder;
    if (folder[0] == 0) {
        const DWORD length = GetTempPathW(static_cast<DWORD>(folder.size()), folder.data());
        if (length == 0 || length >= folder.size())
            return RESULT_STREAM_FAILED;
    }
    for (int attempt = 0; attempt < MOST_ATTEMPTS; ++attempt) {
        const Path path = MakePath(folder.data());
        // Shared with nobody, kept in memory while there is room, and removed when the handle is
        // closed, whoever closes it.
        const HANDLE opened = CreateFileW(path.Get().data(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr,
                                          CREATE_NEW, FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
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

std::uint32_t TemporaryFile::Read(std::uint64_t position, void* buffer, std::uint64_t size,
                                  std::uint64_t* bytesRead) const {
    return ReadAt(ToHandle(handle), position, buffer, size, bytesRead) ? RESULT_OK : RESULT_STREAM_FAILED;
}

}  // namespace Kestra::VFS
