#include "tools/kestra-html/system/RawInput.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <system_error>

#include "tools/kestra-html/system/FileNames.h"

namespace Kestra::Tool {

namespace {

constexpr std::size_t MOST_BYTES = std::size_t{1} << 30;  ///< one call counts with 32 bits

/// A name that can be no file's is an invalid argument.
ReadResult ExplainOpening() {
    return ReadResult::OfFailure(errno == EINVAL ? ENOENT : errno);
}

}  // namespace

ReadResult RawInput::OpenDescriptor(const std::string& name, int* descriptor) {
    if (name == "-") {
        *descriptor = _fileno(stdin);
        return *descriptor < 0 ? ReadResult::OfFailure(EBADF) : ReadResult();
    }
    const std::filesystem::path path = ToPath(name);
    if (path.empty())
        return ReadResult::OfFailure(ENOENT);
    std::error_code error;
    if (std::filesystem::is_directory(path, error))
        return ReadResult::FOLDER;  // opened, it would be one without permission
    *descriptor = _wopen(path.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
    return *descriptor < 0 ? ExplainOpening() : ReadResult();
}

RawInput::~RawInput() {
    if (closes)
        _close(descriptor);
    else if (isFile)
        _lseeki64(descriptor, 0, SEEK_END);
}

ReadResult RawInput::LookAt() {
    struct _stat64 status;
    if (_fstat64(descriptor, &status) != 0)
        return ReadResult::OfFailure(errno);
    const std::int64_t place = (status.st_mode & _S_IFMT) == _S_IFREG ? _lseeki64(descriptor, 0, SEEK_CUR) : -1;
    isFile = place >= 0;
    if (isFile) {
        begin = static_cast<std::uint64_t>(place);
        size = status.st_size > place ? static_cast<std::uint64_t>(status.st_size - place) : 0;
    }
    return ReadResult::READ;
}

ReadResult RawInput::Read(char* buffer, std::size_t bytes, std::size_t* count) {
    const int result = _read(descriptor, buffer, static_cast<unsigned>(std::min(bytes, MOST_BYTES)));
    *count = result < 0 ? 0 : static_cast<std::size_t>(result);
    return result < 0 ? ReadResult::OfFailure(errno) : ReadResult();
}

ReadResult RawInput::Seek(std::uint64_t newPosition) {
    constexpr auto MOST = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (newPosition > MOST - begin)
        return ReadResult::OfFailure(EOVERFLOW);
    return _lseeki64(descriptor, static_cast<std::int64_t>(begin + newPosition), SEEK_SET) < 0
               ? ReadResult::OfFailure(errno)
               : ReadResult();
}

}  // namespace Kestra::Tool
