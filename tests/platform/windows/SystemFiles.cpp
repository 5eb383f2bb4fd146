#include <array>

#include "tests/platform/FileCheck.h"
#include "tests/platform/windows/SystemCalls.h"

namespace Kestra::Test {
namespace {

std::uint64_t GetPlace(const OVERLAPPED* place) {
    return place == nullptr ? 0 : (std::uint64_t{place->OffsetHigh} << 32) | place->Offset;
}

/// What the call of the system returns for such a transfer.
/// @param isMoved  its own answer
BOOL Finish(const std::optional<std::int64_t>& moved, DWORD* count, DWORD error, BOOL isMoved) {
    if (isMoved != 0 && moved.value_or(0) > 0)
        return isMoved;
    *count = 0;
    if (isMoved != 0)
        SetLastError(moved ? ERROR_HANDLE_EOF : error);
    return FALSE;
}

}  // namespace

const int FileCalls::CALLS_PER_PART = 1;

FileCalls::FileCalls() {
    const auto system = std::make_shared<HookedSystem>();
    (*system)->readFile = [this](HANDLE handle, void* buffer, DWORD size, DWORD* count, OVERLAPPED* place) {
        BOOL isRead = TRUE;
        const auto moved = Read(GetPlace(place), buffer, size, [&](std::uint64_t part) -> std::int64_t {
            isRead = RealSystem::Read(handle, buffer, static_cast<DWORD>(part), count, place);
            return *count;
        });
        return Finish(moved, count, ERROR_CRC, isRead);
    };
    (*system)->writeFile = [this](HANDLE handle, const void* data, DWORD size, DWORD* count, OVERLAPPED* place) {
        BOOL isWritten = TRUE;
        const auto moved = Write(GetPlace(place), size, [&](std::uint64_t part) -> std::int64_t {
            isWritten = RealSystem::Write(handle, data, static_cast<DWORD>(part), count, place);
            return *count;
        });
        return Finish(moved, count, ERROR_DISK_FULL, isWritten);
    };
    hooks = system;
}

FileCalls::~FileCalls() = default;

/// Handles are multiples of four, the smallest free one first. The system opens and closes others
/// than those for files and character devices in its own time.
std::vector<OpenFile> GetOpenFiles() {
    std::vector<OpenFile> found;
    for (std::uintptr_t number = 4; number < 8000; number += 4) {
        const HANDLE handle = reinterpret_cast<HANDLE>(number);
        const DWORD type = GetFileType(handle);
        if (type != FILE_TYPE_DISK && type != FILE_TYPE_CHAR)
            continue;
        std::array<wchar_t, 1000> path;
        DWORD length = 0;
        if (type == FILE_TYPE_DISK)
            length = GetFinalPathNameByHandleW(handle, path.data(), static_cast<DWORD>(path.size()), 0);
        DWORD flags = 0;
        EXPECT_NE(GetHandleInformation(handle, &flags), 0);
        found.push_back(
            {number, std::wstring(path.data(), length < path.size() ? length : 0), (flags & HANDLE_FLAG_INHERIT) != 0});
    }
    return found;
}

std::filesystem::path GetTemporaryEnding() {
    return L".tmp";
}

std::size_t CountTemporaryFiles() {
    const std::wstring front = L"kestra-" + std::to_wstring(GetCurrentProcessId()) + L"-";
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(std::filesystem::temp_directory_path())) {
        const std::wstring name = entry.path().filename().wstring();
        count += name.starts_with(front) && name.ends_with(L".tmp") ? 1 : 0;
    }
    return count;
}

const std::vector<std::filesystem::path>& GetNullDevices() {
    static const std::vector<std::filesystem::path> devices = {L"NUL", L"nul", L"\\\\.\\NUL", L"\\\\?\\NUL"};
    return devices;
}

std::uint64_t GetDistantPlace() {
    return IsWine() ? std::uint64_t{5} << 30 : std::uint64_t{5} << 20;  // Windows fills the hole
}

struct TestPipe::Ends {
    HANDLE writer;
};

TestPipe::TestPipe(bool hasMessages) : ends(std::make_unique<Ends>()) {
    static int number = 0;
    path = L"\\\\.\\pipe\\kestra-test-" + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(++number);
    const DWORD mode = (hasMessages ? PIPE_TYPE_MESSAGE : PIPE_TYPE_BYTE) | PIPE_WAIT;
    ends->writer = CreateNamedPipeW(path.c_str(), PIPE_ACCESS_OUTBOUND, mode, 1, 1 << 16, 1 << 16, 0, nullptr);
    EXPECT_NE(ends->writer, INVALID_HANDLE_VALUE);
}

TestPipe::~TestPipe() {
    Close();
}

void TestPipe::Write(std::string_view bytes) {
    DWORD written = 0;
    EXPECT_NE(WriteFile(ends->writer, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr), 0);
    EXPECT_EQ(written, bytes.size());
}

void TestPipe::Close() {
    if (ends->writer != INVALID_HANDLE_VALUE)
        CloseHandle(ends->writer);
    ends->writer = INVALID_HANDLE_VALUE;
}

const std::filesystem::path& TestPipe::GetPath() const {
    return path;
}

}  // namespace Kestra::Test
