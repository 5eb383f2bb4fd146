#include "tools/kestra-html/InPlaceFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace Kestra::Tool {

namespace {

constexpr mode_t ANY_WRITE = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr mode_t PERMISSIONS = 07777;

[[noreturn]] void Fail(int error) {
    throw InPlaceFailed(fmt::format("cannot be written: {}", std::strerror(error)));
}

/// A name that no file beside the target has, with one that is open for writing.
int MakeBeside(const std::string& target, std::string* name) {
    *name = target.substr(0, target.rfind('/') + 1) + ".kestra-html-XXXXXX";
    const int descriptor = mkostemp(name->data(), O_CLOEXEC);
    if (descriptor < 0)
        Fail(errno);
    return descriptor;
}

}  // namespace

struct InPlaceFile::Files {
    std::string target;
    std::string written;  ///< empty when there is none
    int descriptor = -1;

    Files() = default;
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;
    ~Files() {
        if (descriptor >= 0)
            close(descriptor);
        if (!written.empty())
            unlink(written.c_str());
    }

    /// The file gets a second name, or where there are no such, a copy.
    void Backup(const std::string& suffix) const {
        std::string made;
        close(MakeBeside(target, &made));
        unlink(made.c_str());
        std::error_code error;
        if (link(target.c_str(), made.c_str()) != 0)
            std::filesystem::copy_file(target, made, error);
        if (!error)
            std::filesystem::rename(made, target + suffix, error);
        unlink(made.c_str());  // it is still there when both were names of one file
        if (error)
            throw InPlaceFailed(fmt::format("no backup can be written: {}", std::strerror(error.value())));
    }
};

InPlaceFile::InPlaceFile(const std::string& name) : files(std::make_unique<Files>()) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(name.c_str(), nullptr), std::free);
    struct stat state {};
    if (resolved == nullptr || stat(resolved.get(), &state) != 0)
        Fail(errno);
    if (!S_ISREG(state.st_mode))
        throw InPlaceFailed("cannot be written: it is not a regular file");
    if ((state.st_mode & ANY_WRITE) == 0)
        throw InPlaceFailed("cannot be written: it is read-only");
    files->target = resolved.get();
    std::string made;
    files->descriptor = MakeBeside(files->target, &made);
    files->written = made;
    // To give a file away is the right of few. Permissions come last: a new owner clears some.
    if (state.st_uid != geteuid() || state.st_gid != getegid())
        static_cast<void>(fchown(files->descriptor, state.st_uid, state.st_gid) == 0);
    if (fchmod(files->descriptor, state.st_mode & PERMISSIONS) != 0)
        Fail(errno);
}

InPlaceFile::~InPlaceFile() = default;

void InPlaceFile::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(files->descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            Fail(errno);
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

void InPlaceFile::Commit(const std::string& backupSuffix) {
    if (fsync(files->descriptor) != 0 && errno != EINVAL)
        Fail(errno);
    const int descriptor = files->descriptor;
    files->descriptor = -1;
    if (close(descriptor) != 0)
        Fail(errno);
    if (!backupSuffix.empty())
        files->Backup(backupSuffix);
    if (rename(files->written.c_str(), files->target.c_str()) != 0)
        Fail(errno);
    files->written.clear();
}

}  // namespace Kestra::Tool
