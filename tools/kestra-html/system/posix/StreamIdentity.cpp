#include "tools/kestra-html/system/StreamIdentity.h"

#include <sys/stat.h>
#include <unistd.h>

#include "tools/kestra-html/system/FileNames.h"

namespace Kestra::Tool {

namespace {

StreamIdentity MakeIdentity(const struct stat& status) {
    return {status.st_dev, status.st_ino};
}

/// Another name of a terminal that is standard input. Other devices can be read again.
bool IsStandardTerminal(const struct stat& status) {
    struct stat standardInput {};
    return S_ISCHR(status.st_mode) && isatty(STDIN_FILENO) != 0 && fstat(STDIN_FILENO, &standardInput) == 0 &&
           status.st_rdev == standardInput.st_rdev;
}

}  // namespace

std::optional<StreamIdentity> IdentifyStream(const std::string& name) {
    struct stat status {};
    if (name == "-") {
        fstat(STDIN_FILENO, &status);
        return MakeIdentity(status);
    }
    if (stat(ToPath(name).c_str(), &status) != 0)
        return std::nullopt;
    const bool isOnce = S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode) || IsStandardTerminal(status);
    return isOnce ? std::optional(MakeIdentity(status)) : std::nullopt;
}

}  // namespace Kestra::Tool
