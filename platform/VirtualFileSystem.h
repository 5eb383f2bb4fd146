#pragma once

#include <cstdint>

#include "Characters.h"
#include "Export.h"
#include "InputStream.h"

namespace Kestra::VFS {

/// Opens files of the host's file system.
class KESTRA_HTML_API VirtualFileSystem {
public:
    /// Opens a file for reading, in binary. Its stream reads until the buffer is full, and a `Seek`
    /// after the end of the file fails. A pipe or a device (on POSIX "/dev/stdin", for example) has
    /// no positions: `GetPosition` and `Seek` fail, `Read` returns what is there, and `IsEnd` is
    /// true once a `Read` has met the end.
    /// @param path  NUL-terminated; on POSIX it is converted to UTF-8, a lone surrogate names no
    ///              file.
    /// @return a stream that the caller deletes, or null: a null or empty path, a missing file, a
    ///         folder, no permission.
    static InputStream* GetInputStreamEx(const WideChar* path);

    /// Names the folder in which the library makes its temporary files, such as the copy of a
    /// self-check that is too long for the memory. Until then it is that of the system: on POSIX a
    /// fixed one, whatever the environment says. It is one for the process; call this before other
    /// threads use the library. Files that exist stay where they are.
    /// @param path  NUL-terminated, as for `GetInputStreamEx`; need not exist yet. Null for the
    ///              folder of the system
    /// @return 0; RESULT_INVALID_ARGUMENT (2) for a path that is empty, too long, or names nothing
    ///         on this system: nothing changes then
    static std::uint32_t SetTemporaryFolder(const WideChar* path);
};

}  // namespace Kestra::VFS
