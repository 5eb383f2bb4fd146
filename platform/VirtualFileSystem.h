#pragma once

#include "platform/Characters.h"
#include "platform/Export.h"
#include "platform/InputStream.h"

namespace Kestra::VFS {

/// Opens files of the host's file system.
class KESTRA_HTML_API VirtualFileSystem {
public:
    /// Opens a file for reading, in binary.
    /// @param path  NUL-terminated; on POSIX it is converted to UTF-8, a lone surrogate names no file.
    /// @return a stream that the caller deletes, or null: a null or empty path, a missing file, a folder, no permission.
    static InputStream* GetInputStreamEx(const WideChar* path);
};

}  // namespace Kestra::VFS
