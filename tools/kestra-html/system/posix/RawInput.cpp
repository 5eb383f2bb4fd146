#include "tools/kestra-html/system/RawInput.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>

#include "tools/kestra-html/system/FileNames.h"
#include "tools/kestra-html/system/posix/Waiting.h"

namespace Kestra::Tool {

namespace {

constexpr std::size_t MOST_BYTES = std::size_t{1} << 30;  ///< more than a call of Linux moves would be cut anyway

ReadResult ExplainFailure() {
    switch (errno) {
        case ENOENT:
        case ENOTDIR:
        case ENAMETOOLONG:
            return ReadResult::MISSING;
        case EACCES:
        case EPERM:
            return ReadResult::FORBIDDEN;
        default:
            return ReadResult::UNREADABLE;
    }
}

int OpenFile(const char* path) {
    int descriptor = -1;
    do {
        descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

}  // namespace

ReadResult RawInput::Open(const std::string& name, std::unique_ptr<RawInput>* input) {
    const bool isStandardInput = name == "-";
    const int descriptor = isStandardInput ? STDIN_FILENO : OpenFile(ToPath(name).c_str());
    if (descriptor < 0)
        return ExplainFailure();
    std::unique_ptr<RawInput> opened(new RawInput(descriptor, !isStandardInput));
    ReadResult result = ReadResult::READ;
    if (opened->LookAt(&result))
        *input = std::move(opened);
    return result;
}

RawInput::RawInput(int openDescriptor, bool closesDescriptor) : descriptor(openDescriptor), closes(closesDescriptor) {}

RawInput::~RawInput() {
    if (closes)
        close(descriptor);
}

bool RawInput::LookAt(ReadResult* result) {
    struct stat status;
    if (fstat(descriptor, &status) != 0) {
        *result = ReadResult::UNREADABLE;
        return false;
    }
    if (S_ISDIR(status.st_mode)) {
        *result = ReadResult::FOLDER;
        return false;
    }
    const off_t place = S_ISREG(status.st_mode) ? lseek(descriptor, 0, SEEK_CUR) : -1;
    isFile = place >= 0;
    if (isFile) {
        begin = static_cast<std::uint64_t>(place);
        size = status.st_size > place ? static_cast<std::uint64_t>(status.st_size - place) : 0;
        if (!closes)
            lseek(descriptor, 0, SEEK_END);  // all of it is taken, so that the next one finds the end
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
    ssize_t result = -1;
    do {
        result = isFile ? pread(descriptor, buffer, std::min(bytes, MOST_BYTES), static_cast<off_t>(begin + position))
                        : read(descriptor, buffer, std::min(bytes, MOST_BYTES));
    } while (result < 0 && (errno == EINTR || WaitFor(descriptor, POLLIN)));
    *count = result < 0 ? 0 : static_cast<std::size_t>(result);
    position += *count;
    return result >= 0;
}

bool RawInput::Seek(std::uint64_t newPosition) {
    constexpr auto MOST = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
    if (newPosition > MOST - begin)
        return false;
    position = newPosition;
    return true;
}

}  // namespace Kestra::Tool
