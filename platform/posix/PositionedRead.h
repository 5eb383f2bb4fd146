#pragma once

#include <sys/types.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace Kestra::VFS {

static_assert(sizeof(off_t) >= sizeof(std::int64_t), "files above 2 GB need 64-bit offsets");

/// The largest offset that a file can have.
constexpr std::uint64_t MAX_FILE_OFFSET = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());

/// Bytes moved by one system call. More than the 2 GB that a Linux call moves would be cut anyway,
/// and more than SSIZE_MAX is undefined.
constexpr std::uint64_t MAX_TRANSFER = std::uint64_t{1} << 30;

/// Reads at an absolute offset until the buffer is full or the file ends. The descriptor's own
/// position stays as it is.
/// @return false for a failure before the first byte; a later one only ends the read, and comes
///         back when the rest is asked for.
inline bool ReadAt(int descriptor, std::uint64_t position, void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    *bytesRead = 0;
    if (position > MAX_FILE_OFFSET)
        return false;
    const std::uint64_t wanted = std::min(size, MAX_FILE_OFFSET - position);
    while (*bytesRead < wanted) {
        const auto length = static_cast<std::size_t>(std::min(wanted - *bytesRead, MAX_TRANSFER));
        const ssize_t result = pread(descriptor, static_cast<char*>(buffer) + *bytesRead, length,
                                     static_cast<off_t>(position + *bytesRead));
        if (result > 0)
            *bytesRead += static_cast<std::uint64_t>(result);
        else if (result == 0)
            return true;
        else if (errno != EINTR)
            return *bytesRead > 0;
    }
    return true;
}

}  // namespace Kestra::VFS
