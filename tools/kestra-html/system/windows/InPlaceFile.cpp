#include "tools/kestra-html/system/InPlaceFile.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <system_error>
#include <utility>

#include "platform/windows/WindowsApi.h"
#include "tools/kestra-html/system/FileNames.h"
#include "tools/kestra-html/system/windows/Utf8.h"

namespace Kestra::Tool {

namespace {

constexpr std::size_t MOST_BYTES = std::size_t{64} << 20;  ///< one call counts with 32 bits
constexpr int MOST_NAMES = 100;                            ///< tried for the file beside the target

[[noreturn]] void Fail(DWORD error) {
    throw InPlaceFailed(fmt::format("cannot be written: {}", std::system_category().message(static_cast<int>(error))));
}

/// Where the links lead to that a name may be.
std::wstring Resolve(const std::filesystem::path& path) {
    const HANDLE file =
        CreateFileW(path.c_str(), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        Fail(GetLastError());
    std::wstring target;
    DWORD length = GetFinalPathNameByHandleW(file, nullptr, 0, FILE_NAME_NORMALIZED);  // with the terminator
    while (length > target.size()) {
        target.resize(length);
        length = GetFinalPathNameByHandleW(file, target.data(), length, FILE_NAME_NORMALIZED);
    }
    const DWORD error = GetLastError();
    CloseHandle(file);
    if (length == 0)
        Fail(error);
    target.resize(length);
    return target;
}

/// A link that leads nowhere is there.
bool IsThere(const std::filesystem::path& path) {
    return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES || GetLastError() != ERROR_FILE_NOT_FOUND;
}

}  // namespace

struct InPlaceFile::Files {
    std::wstring target;
    std::wstring written;
    bool isNew = false;  ///< no file had the name
    HANDLE handle = INVALID_HANDLE_VALUE;
    bool isDeletedOnClose = false;

    Files() = default;
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;
    ~Files() {
        Close();
        if (!written.empty())
            DeleteFileW(written.c_str());
    }

    /// Whether the file beside the target is deleted when it is closed, which the system does when
    /// the tool is ended.
    bool SetDeletedOnClose(bool isDeleted) const {
        FILE_DISPOSITION_INFO disposition = {};
        disposition.DeleteFile = isDeleted ? TRUE : FALSE;
        return SetFileInformationByHandle(handle, FileDispositionInfo, &disposition, sizeof(disposition)) != 0;
    }

    bool Close() {
        const HANDLE open = std::exchange(handle, INVALID_HANDLE_VALUE);
        return open == INVALID_HANDLE_VALUE || CloseHandle(open) != 0;
    }

    /// Whether the old file is gone after `ReplaceFileW` has failed, which it may be after this one
    /// error.
    bool HasLostTarget(DWORD error) const {
        return error == ERROR_UNABLE_TO_MOVE_REPLACEMENT &&
               GetFileAttributesW(target.c_str()) == INVALID_FILE_ATTRIBUTES;
    }

    /// Opens a file for writing beside the target, with a name that none has.
    void MakeBeside() {
        const std::wstring folder = target.substr(0, target.rfind(L'\\') + 1);
        const std::uint64_t start = GetTickCount64() ^ (std::uint64_t{GetCurrentProcessId()} << 32U);
        for (int i = 0; handle == INVALID_HANDLE_VALUE; ++i) {
            const std::wstring name =
                folder + NameToWide(fmt::format(".kestra-html-{:x}", start + static_cast<std::uint64_t>(i)));
            handle = CreateFileW(name.c_str(), GENERIC_WRITE | DELETE, 0, nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL,
                                 nullptr);
            if (handle != INVALID_HANDLE_VALUE)
                written = name;
            else if (GetLastError() != ERROR_FILE_EXISTS || i == MOST_NAMES)
                Fail(GetLastError());
        }
        isDeletedOnClose = SetDeletedOnClose(true);  // not every file system knows that
    }
};

InPlaceFile::InPlaceFile(const std::string& name, MissingFile missing) : files(std::make_unique<Files>()) {
    const std::filesystem::path path = ToPath(name);
    if (missing == MissingFile::MADE && !IsThere(path)) {
        files->isNew = true;
        files->target = path.wstring();
        files->MakeBeside();
        return;
    }
    files->target = Resolve(path);
    const DWORD attributes = GetFileAttributesW(files->target.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        Fail(GetLastError());
    if ((attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) != 0)
        throw InPlaceFailed("cannot be written: it is not a regular file");
    if ((attributes & FILE_ATTRIBUTE_READONLY) != 0)
        throw InPlaceFailed("cannot be written: it is read-only");
    files->MakeBeside();
}

InPlaceFile::~InPlaceFile() = default;

void InPlaceFile::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        DWORD count = 0;
        const auto size = static_cast<DWORD>(std::min(bytes.size(), MOST_BYTES));
        if (WriteFile(files->handle, bytes.data(), size, &count, nullptr) == 0)
            Fail(GetLastError());
        bytes.remove_prefix(count);
    }
}

void InPlaceFile::Commit(const std::string& backupSuffix) {
    const bool isWritten = FlushFileBuffers(files->handle) != 0;
    if (!isWritten || (files->isDeletedOnClose && !files->SetDeletedOnClose(false)) || !files->Close())
        Fail(GetLastError());
    if (files->isNew) {
        if (MoveFileExW(files->written.c_str(), files->target.c_str(), MOVEFILE_REPLACE_EXISTING) == 0)
            Fail(GetLastError());
        files->written.clear();
        return;
    }
    const std::wstring backup = backupSuffix.empty() ? std::wstring() : files->target + NameToWide(backupSuffix);
    if (!backup.empty() && CopyFileW(files->target.c_str(), backup.c_str(), FALSE) == 0) {
        throw InPlaceFailed(fmt::format("no backup can be written: {}",
                                        std::system_category().message(static_cast<int>(GetLastError()))));
    }
    // The new file takes over the attributes and the rights of the old one.
    if (ReplaceFileW(files->target.c_str(), files->written.c_str(), nullptr, 0, nullptr, nullptr) == 0) {
        const DWORD error = GetLastError();
        if (!files->HasLostTarget(error))
            Fail(error);
        // What was written is all that is left, so it stays even when it gets no other name.
        const std::wstring last = std::exchange(files->written, std::wstring());
        if (MoveFileW(last.c_str(), files->target.c_str()) == 0)
            Fail(GetLastError());
    }
    files->written.clear();
}

}  // namespace Kestra::Tool
