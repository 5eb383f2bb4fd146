#pragma once

#include <string>
#include <string_view>

#include "platform/windows/WindowsApi.h"

namespace Kestra::VFS {

/// A path that the system takes however long it is: one that is above the old limit of 260 characters, as it stands or in its absolute
/// form, in that form and with a prefix that lifts the limit; any other one as it is.
/// @return empty when the path has no absolute form
inline std::wstring LiftLimit(const std::wstring& path) {
    constexpr std::wstring_view VERBATIM = L"\\\\?\\";
    constexpr std::wstring_view VERBATIM_SHARE = L"\\\\?\\UNC\\";
    constexpr std::wstring_view DEVICE = L"\\\\.\\";
    constexpr std::wstring_view SHARE = L"\\\\";
    if (path.starts_with(VERBATIM) || path.starts_with(DEVICE))
        return path;
    const DWORD room = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);  // with the terminator
    if (path.size() < MAX_PATH && room > 0 && room <= MAX_PATH)
        return path;
    std::wstring absolute(room, L'\0');
    const DWORD length = room == 0 ? 0 : GetFullPathNameW(path.c_str(), room, absolute.data(), nullptr);
    if (length == 0 || length >= room)
        return {};
    absolute.resize(length);
    if (absolute.starts_with(VERBATIM) || absolute.starts_with(DEVICE))
        return absolute;
    if (absolute.starts_with(SHARE))
        return std::wstring(VERBATIM_SHARE).append(absolute, SHARE.size());
    return std::wstring(VERBATIM).append(absolute);
}

}  // namespace Kestra::VFS
