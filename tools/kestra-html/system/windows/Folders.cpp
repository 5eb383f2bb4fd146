#include "tools/kestra-html/system/Folders.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "platform/windows/WindowsApi.h"
#include "tools/kestra-html/system/FileNames.h"
#include "tools/kestra-html/system/windows/Utf8.h"

namespace Kestra::Tool {

namespace {

/// Links of both kinds: symbolic ones and mount points. Files that a cloud keeps are reparse points
/// too, but no links. A point that does not say what it is may be one, and is not followed.
bool IsLink(const WIN32_FIND_DATAW& entry) {
    const DWORD tag = entry.dwReserved0;
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 && (tag == 0 || IsReparseTagNameSurrogate(tag));
}

FolderEntry Describe(const WIN32_FIND_DATAW& entry) {
    const bool isDirectory = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    FolderEntry description;
    description.name = NameFromWide(entry.cFileName);
    description.isFolder = isDirectory && !IsLink(entry);
    description.isFile = !isDirectory;
    return description;
}

bool IsBefore(const FolderEntry& left, const FolderEntry& right) {
    const std::wstring leftName = NameToWide(left.name);
    const std::wstring rightName = NameToWide(right.name);
    const int order = CompareStringOrdinal(leftName.data(), static_cast<int>(leftName.size()), rightName.data(),
                                           static_cast<int>(rightName.size()), TRUE);
    return order == CSTR_EQUAL ? leftName < rightName : order == CSTR_LESS_THAN;
}

}  // namespace

bool IsFolder(const std::string& name) {
    const DWORD attributes = GetFileAttributesW(ToPath(name).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool IsSpecialFile(const std::string& name) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(ToPath(name), error);
    return !error && std::filesystem::exists(status) && !std::filesystem::is_regular_file(status) &&
           !std::filesystem::is_directory(status);
}

bool ListFolder(const std::string& folder, std::vector<FolderEntry>* entries) {
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileExW(ToPath(JoinNames(folder, "*")).c_str(), FindExInfoBasic, &entry,
                                           FindExSearchNameMatch, nullptr, 0);
    if (search == INVALID_HANDLE_VALUE)
        return GetLastError() == ERROR_FILE_NOT_FOUND;  // the root of a drive has no entries "." and ".."
    do {
        const std::wstring_view name = entry.cFileName;
        if (name != L"." && name != L"..")
            entries->push_back(Describe(entry));
    } while (FindNextFileW(search, &entry) != 0);
    const bool isComplete = GetLastError() == ERROR_NO_MORE_FILES;
    FindClose(search);
    std::sort(entries->begin(), entries->end(), IsBefore);
    return isComplete;
}

std::string JoinNames(const std::string& folder, const std::string& entry) {
    static constexpr std::string_view SEPARATORS = "\\/:";  // "c:" is a folder too
    const bool isParted = folder.empty() || SEPARATORS.find(folder.back()) != std::string_view::npos;
    return folder + (isParted ? "" : "\\") + entry;
}

}  // namespace Kestra::Tool
