#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/windows/WindowsApi.h"

namespace Kestra::VFS {

constexpr std::wstring_view VERBATIM = L"\\\\?\\";
constexpr std::wstring_view DEVICE = L"\\\\.\\";

/// What an absolute path begins with when the system takes it as it is, however long it is.
struct LongFront {
    std::wstring_view text;
    std::size_t replaced;  ///< characters of the path that it replaces
};

inline LongFront GetLongFront(std::wstring_view absolute) {
    constexpr std::wstring_view VERBATIM_SHARE = L"\\\\?\\UNC\\";
    constexpr std::wstring_view SHARE = L"\\\\";
    if (absolute.starts_with(VERBATIM) || absolute.starts_with(DEVICE))
        return {{}, 0};
    return absolute.starts_with(SHARE) ? LongFront{VERBATIM_SHARE, SHARE.size()} : LongFront{VERBATIM, 0};
}

/// The absolute form of a path: backslashes, no "." and "..", no dots and blanks at its end.
/// @return empty when there is none; `\\.\` and a name where the system takes the last part for a
///         device
inline std::wstring GetFullPath(const std::wstring& path) {
    std::wstring absolute;
    DWORD length = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);  // with the terminator
    while (length > absolute.size()) {  // again when another thread has changed the folder that the path counts from
        absolute.resize(length);
        length = GetFullPathNameW(path.c_str(), length, absolute.data(), nullptr);
    }
    absolute.resize(length);
    return absolute;
}

/// The names of devices are of DOS: such a name, alone or with an extension, is the device in every
/// folder. Here it is the device alone and with nothing but a colon and blanks after it, as in
/// "NUL", "con:" and "CONIN$".
inline bool IsDeviceAlone(std::wstring_view path) {
    const std::size_t colon = path.find(L':');
    const bool hasMore = colon != path.npos && path.find_first_not_of(L" ", colon + 1) != path.npos;
    return !hasMore && path.find_first_of(L"\\/.") == path.npos;
}

/// The absolute form of a path whose last part the system would take for a device: that of its
/// folder, and the part as written, less the dots and blanks at its end.
/// @return empty when there is none
inline std::wstring GetFullPathOfFile(const std::wstring& path) {
    const std::size_t separator = path.find_last_of(L"\\/");
    const std::size_t drive = path.size() > 1 && path[1] == L':' ? 2 : 0;
    const std::size_t part = separator == path.npos ? drive : separator + 1;
    std::wstring absolute = GetFullPath(path.substr(0, part) + L'x');
    if (absolute.empty())
        return {};
    absolute.pop_back();
    return absolute.append(path, part, path.find_last_not_of(L". ") + 1 - part);
}

/// A path that the system takes as it is, however long it is and whatever its last part is
/// called: the absolute form, with the prefix for that. Without it the old limit counts, and
/// "folder\nul.html" is the null device. A path that has the prefix, one that begins with `\\.\`,
/// and a device alone stay as they are.
/// @return empty when the path has no absolute form
inline std::wstring GetVerbatimPath(const std::wstring& path) {
    if (GetLongFront(path).text.empty())
        return path;
    std::wstring absolute = GetFullPath(path);
    const bool beginsWithSeparators = path.find_first_not_of(L"\\/") >= 2;
    if (absolute.starts_with(DEVICE) && !beginsWithSeparators) {
        if (IsDeviceAlone(path))
            return path;
        absolute = GetFullPathOfFile(path);
    }
    if (absolute.empty())
        return {};
    const LongFront front = GetLongFront(absolute);
    return std::wstring(front.text).append(absolute, front.replaced);
}

}  // namespace Kestra::VFS
