#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "platform/windows/WindowsApi.h"

namespace Kestra::VFS {

/// The largest offset that a file can have.
constexpr std::uint64_t MAX_FILE_OFFSET = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());

/// Bytes moved by one system call, which counts with 32 bits.
constexpr std::uint64_t MAX_TRANSFER = std::uint64_t{1} << 30;

/// The place of a read or a write. With it, the handle's own position plays no part.
inline OVERLAPPED At(std::uint64_t position) {
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(position & 0xFFFFFFFF);
    place.OffsetHigh = static_cast<DWORD>(position >> 32);
    return place;
}

/// Reads at an absolute offset until the buffer is full or the file ends.
/// @return false for a failure before the first byte; a later one only ends the read, and comes
///         back when the rest is asked for.
inline bool ReadAt(HANDLE handle, std::uint64_t position, void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    *bytesRead = 0;
    if (position > MAX_FILE_OFFSET)
        return false;
    const std::uint64_t wanted = std::min(size, MAX_FILE_OFFSET - position);
    while (*bytesRead < wanted) {
        OVERLAPPED place = At(position + *bytesRead);
        DWORD count = 0;
        const auto length = static_cast<DWORD>(std::min(wanted - *bytesRead, MAX_TRANSFER));
        if (ReadFile(handle, static_cast<char*>(buffer) + *bytesRead, length, &count, &place) == 0)
            return GetLastError() == ERROR_HANDLE_EOF || *bytesRead > 0;
        if (count == 0)
            return true;
        *bytesRead += count;
    }
    return true;
}

}  // namespace Kestra::VFS
