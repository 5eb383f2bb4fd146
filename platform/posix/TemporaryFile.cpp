#include "platform/TemporaryFile.h"

#include <fcntl.h>
#include <limits.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "platform/CodePoints.h"
#include "platform/Results.h"
#include "platform/posix/PositionedRead.h"

namespace Kestra::VFS {

namespace {

constexpr char NAME[] = "/kestra-XXXXXX";

/// An array: the file is wanted when there is no memory left.
char temporaryFolder[PATH_MAX] = P_tmpdir;

}  // namespace

bool TemporaryFile::SetFolder(const WideChar* path) {
    char folder[sizeof(temporaryFolder)] = P_tmpdir;
    if (path != nullptr) {
        const WideChar* const end = path + WideStringView(path).size();
        std::size_t length = 0;
        const auto append = [&](char byte) {
            if (length < sizeof(folder))
                folder[length] = byte;
            ++length;
        };
        while (path != end) {
            const char32_t character = ReadUtf16(&path, end);
            if (IsSurrogate(character))
                return false;
            WriteUtf8(character, append);
        }
        if (length == 0 || length >= sizeof(folder))
            return false;
        folder[length] = 0;
    }
    std::memcpy(temporaryFolder, folder, sizeof(folder));
    return true;
}

TemporaryFile::TemporaryFile() : handle(-1) {}

TemporaryFile::~TemporaryFile() {
    if (handle >= 0)
        close(static_cast<int>(handle));
}

std::uint32_t TemporaryFile::Create() {
    char path[sizeof(temporaryFolder) + sizeof(NAME)];
    const std::size_t length = std::strlen(temporaryFolder);
    std::memcpy(path, temporaryFolder, length);
    std::memcpy(path + length, NAME, sizeof(NAME));
    const int descriptor = mkostemp(path, O_CLOEXEC);  // readable by its owner only
    if (descriptor < 0)
        return RESULT_STREAM_FAILED;
    if (unlink(path) != 0) {
        close(descriptor);
        return RESULT_STREAM_FAILED;
    }
    handle = descriptor;
    return RESULT_OK;
}

std::uint32_t TemporaryFile::Write(std::uint64_t position, const void* data, std::uint64_t size) {
    if (position > MAX_FILE_OFFSET || size > MAX_FILE_OFFSET - position)
        return RESULT_STREAM_FAILED;
    const char* next = static_cast<const char*>(data);
    while (size > 0) {
        const auto length = static_cast<std::size_t>(std::min(size, MAX_TRANSFER));
        const ssize_t result = pwrite(static_cast<int>(handle), next, length, static_cast<off_t>(position));
        if (result > 0) {
            next += result;
            position += static_cast<std::uint64_t>(result);
            size -= static_cast<std::uint64_t>(result);
        } else if (result == 0 || errno != EINTR) {
            return RESULT_STREAM_FAILED;
        }
    }
    return RESULT_OK;
}

std::uint32_t TemporaryFile::Read(std::uint64_t position, void* buffer, std::uint64_t size,
                                  std::uint64_t* bytesRead) const {
    return ReadAt(static_cast<int>(handle), position, buffer, size, bytesRead) ? RESULT_OK : RESULT_STREAM_FAILED;
}

}  // namespace Kestra::VFS
