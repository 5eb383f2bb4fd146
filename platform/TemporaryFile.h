#pragma once

#include <cstdint>

#include "platform/Characters.h"

namespace Kestra::VFS {

/// A file that no other process can open, and whose space is freed when it is closed, at the latest
/// with the process.
///
/// It is in the folder that the host has named, or else in that of the system: on POSIX a fixed
/// one, whatever the environment says. On POSIX it has no name; on Windows its name is removed with
/// its last handle. Not exported.
class TemporaryFile {
public:
    /// For all files made from now on. Not to be called while another thread makes one.
    /// @param path  null for the folder of the system
    /// @return false, and nothing changes, for a path that cannot be used
    static bool SetFolder(const WideChar* path);

    TemporaryFile();
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;
    ~TemporaryFile();

    /// Makes the file, empty; call it once.
    /// @return 0 or RESULT_STREAM_FAILED
    std::uint32_t Create();

    /// Writes all `size` bytes at `position`, counted from the start of the file.
    /// @return 0; RESULT_STREAM_FAILED when the disk is full or broken, some of the bytes may then
    ///         have been written.
    std::uint32_t Write(std::uint64_t position, const void* data, std::uint64_t size);

    /// Reads from `position` until the buffer is full or the file ends; after the end there are 0
    /// bytes, which is no failure.
    /// @return 0; RESULT_STREAM_FAILED with `*bytesRead` 0.
    std::uint32_t Read(std::uint64_t position, void* buffer, std::uint64_t size, std::uint64_t* bytesRead) const;

private:
    std::intptr_t handle;  ///< the descriptor or handle of the system; -1 before `Create`
};

}  // namespace Kestra::VFS
