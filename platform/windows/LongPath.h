#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/windows/WindowsApi.h"

namespace Kestra::VFS {

/// What an absolute path begins with when the old limit of 260 characters is lifted.
struct LongFront {
    std::wstring_view text;
    std::size_t replaced;  ///< characters of the path that it stands for
};

inline LongFront GetLongFront(std::wstring_view absolute) {
    constexpr std::wstring_view VERBATIM = L"\\\\?\\";
    constexpr std::wstring_view VERBATIM_SHARE = L"\\\\?\\UNC\\";
    constexpr std::wstring_view DEVICE = L"\\\\.\\";
    constexpr std::wstring_view SHARE = L"\\\\";
    if (absolute.starts_with(VERBATIM) || absolute.starts_with(DEVICE))
        return {{}, 0};
    return absolute.starts_with(SHARE) ? LongFront{VERBATIM_SHARE, SHARE.size()} : LongFront{VERBATIM, 0};
}

/// A path that the system takes however long it is: one that is above the old limit, as it stands or in its absolute form, in that form
/// and with a prefix that lifts the limit; any other one as it is.
/// @return empty when the path has no absolute form
inline std::wstring LiftLimit(const std::wstring& path) {
    if (GetLongFront(path).text.empty())
        return path;
    DWORD length = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);  // with the terminator
    if (path.size() < MAX_PATH && length > 0 && length <= MAX_PATH)
        return path;
    std::wstring absolute;
    while (length > absolute.size()) {  // again when another thread has changed the folder that the path counts from
        absolute.resize(length);
        length = GetFullPathNameW(path.c_str(), length, absolute.data(), nullptr);
    }
    absolute.resize(length);
    if (absolute.empty())
        return {};
    const LongFront front = GetLongFront(absolute);
    return std::wstring(front.text).append(absolute, front.replaced);
}

}  // namespace Kestra::VFS
