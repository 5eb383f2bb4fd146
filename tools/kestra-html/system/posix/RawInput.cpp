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

int OpenFile(const char* path) {
    int descriptor = -1;
    do {
        descriptor = open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY);
    } while (descriptor < 0 && errno == EINTR);
    return descriptor;
}

}  // namespace

ReadResult RawInput::OpenDescriptor(const std::string& name, int* descriptor) {
    *descriptor = name == "-" ? STDIN_FILENO : OpenFile(ToPath(name).c_str());
    return *descriptor < 0 ? ReadResult::OfFailure(errno) : ReadResult();
}

RawInput::~RawInput() {
    if (closes)
        close(descriptor);
}

ReadResult RawInput::LookAt() {
    struct stat status;
    if (fstat(descriptor, &status) != 0)
        return ReadResult::OfFailure(errno);
    if (S_ISDIR(status.st_mode))
        return ReadResult::FOLDER;
    const off_t place = S_ISREG(status.st_mode) ? lseek(descriptor, 0, SEEK_CUR) : -1;
    isFile = place >= 0;
    if (isFile) {
        begin = static_cast<std::uint64_t>(place);
        size = status.st_size > place ? static_cast<std::uint64_t>(status.st_size - place) : 0;
        if (!closes)
            lseek(descriptor, 0, SEEK_END);  // all of it is taken, so that the next one finds the end
    }
    return ReadResult::READ;
}

ReadResult RawInput::Read(char* buffer, std::size_t bytes, std::size_t* count) {
    ssize_t result = -1;
    do {
        result = isFile ? pread(descriptor, buffer, std::min(bytes, MOST_BYTES), static_cast<off_t>(begin + position))
                        : read(descriptor, buffer, std::min(bytes, MOST_BYTES));
    } while (result < 0 && (errno == EINTR || WaitFor(descriptor, POLLIN)));
    *count = result < 0 ? 0 : static_cast<std::size_t>(result);
    position += *count;
    return result < 0 ? ReadResult::OfFailure(errno) : ReadResult();
}

ReadResult RawInput::Seek(std::uint64_t newPosition) {
    constexpr auto MOST = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
    if (newPosition > MOST - begin)
        return ReadResult::OfFailure(EOVERFLOW);
    position = newPosition;
    return ReadResult::READ;
}

}  // namespace Kestra::Tool
