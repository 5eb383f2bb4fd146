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

ReadResult ExplainFailure() {
    switch (errno) {
        case ENOENT:
        case EINVAL:
            return ReadResult::MISSING;
        case EACCES:
            return ReadResult::FORBIDDEN;
        default:
            return ReadResult::UNREADABLE;
    }
}

}  // namespace

ReadResult RawInput::Open(const std::string& name, std::unique_ptr<RawInput>* input) {
    const bool isStandardInput = name == "-";
    int descriptor = _fileno(stdin);
    if (!isStandardInput) {
        const std::filesystem::path path = ToPath(name);
        std::error_code error;
        if (std::filesystem::is_directory(path, error))
            return ReadResult::FOLDER;  // opened, it would be one without permission
        descriptor = path.empty() ? -1 : _wopen(path.c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
        if (descriptor < 0)
            return path.empty() ? ReadResult::MISSING : ExplainFailure();
    }
    if (descriptor < 0)
        return ReadResult::UNREADABLE;
    std::unique_ptr<RawInput> opened(new RawInput(descriptor, !isStandardInput));
    ReadResult result = ReadResult::READ;
    if (opened->LookAt(&result))
        *input = std::move(opened);
    return result;
}

RawInput::RawInput(int openDescriptor, bool closesDescriptor) : descriptor(openDescriptor), closes(closesDescriptor) {}

RawInput::~RawInput() {
    if (closes)
        _close(descriptor);
    else if (isFile)
        _lseeki64(descriptor, 0, SEEK_END);
}

bool RawInput::LookAt(ReadResult* result) {
    struct _stat64 status;
    if (_fstat64(descriptor, &status) != 0) {
        *result = ReadResult::UNREADABLE;
        return false;
    }
    const std::int64_t place = (status.st_mode & _S_IFMT) == _S_IFREG ? _lseeki64(descriptor, 0, SEEK_CUR) : -1;
    isFile = place >= 0;
    if (isFile) {
        begin = static_cast<std::uint64_t>(place);
        size = status.st_size > place ? static_cast<std::uint64_t>(status.st_size - place) : 0;
    }
    return true;
}

bool RawInput::IsFile() const {
    return isFile;
}

std::uint64_t RawInput::GetSize() const {
    return size;
}

bool RawInput::Read(char* buffer, std::size_t bytes, std::size_t* count) {
    const int result = _read(descriptor, buffer, static_cast<unsigned>(std::min(bytes, MOST_BYTES)));
    *count = result < 0 ? 0 : static_cast<std::size_t>(result);
    return result >= 0;
}

bool RawInput::Seek(std::uint64_t newPosition) {
    constexpr auto MOST = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    return newPosition <= MOST - begin &&
           _lseeki64(descriptor, static_cast<std::int64_t>(begin + newPosition), SEEK_SET) >= 0;
}

}  // namespace Kestra::Tool
