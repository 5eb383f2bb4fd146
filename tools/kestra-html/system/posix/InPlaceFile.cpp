#include "tools/kestra-html/system/InPlaceFile.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <random>
#include <system_error>
#include <utility>

namespace Kestra::Tool {

namespace {

constexpr mode_t ANY_WRITE = S_IWUSR | S_IWGRP | S_IWOTH;
constexpr mode_t PERMISSIONS = 07777;
constexpr mode_t PRIVATE = S_IRUSR | S_IWUSR;
constexpr mode_t OF_NEW_FILES = PRIVATE | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;  ///< without those of the umask
constexpr int MOST_NAMES = 100;  ///< tried for a file beside the target
constexpr int MOST_LINKS = 40;   ///< followed one after the other, as the system does it

[[noreturn]] void Fail(int error) {
    throw InPlaceFailed(fmt::format("cannot be written: {}", std::strerror(error)));
}

constexpr int ENDING_SIGNALS[] = {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGXCPU, SIGXFSZ};

/// Of files that a signal removes before it ends the tool: one beside the target, and the backup
/// before it has its name. Null for none.
std::array<std::atomic<const char*>, 2> namesToRemove;
static_assert(std::atomic<const char*>::is_always_lock_free, "a handler of signals may read it");

extern "C" void RemoveFilesAndEnd(int signal) {
    for (const auto& name : namesToRemove) {
        if (const char* const present = name.load())
            unlink(present);
    }
    raise(signal);  // it is as by default again, and comes after this handler
}

/// A signal that is ignored, as under `nohup`, stays so.
void HandleSignals() {
    for (const int signal : ENDING_SIGNALS) {
        struct sigaction action {};
        if (sigaction(signal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL)
            continue;
        action.sa_handler = RemoveFilesAndEnd;
        action.sa_flags = static_cast<int>(SA_RESETHAND);
        sigaction(signal, &action, nullptr);
    }
}

/// The signals wait while it exists.
class SignalsLater {
public:
    SignalsLater() {
        sigset_t signals;
        sigemptyset(&signals);
        for (const int signal : ENDING_SIGNALS)
            sigaddset(&signals, signal);
        sigprocmask(SIG_BLOCK, &signals, &before);
    }
    SignalsLater(const SignalsLater&) = delete;
    SignalsLater& operator=(const SignalsLater&) = delete;
    ~SignalsLater() {
        sigprocmask(SIG_SETMASK, &before, nullptr);
    }

private:
    sigset_t before;
};

/// Opens a new file for writing.
/// @param name  its last six characters are replaced until no file has the name
/// @return -1 for a failure
int OpenNew(std::string* name, mode_t permissions) {
    static constexpr std::string_view LETTERS = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    for (int i = 0; i < MOST_NAMES; ++i) {
        for (auto letter = name->end() - 6; letter != name->end(); ++letter)
            *letter = LETTERS[random() % LETTERS.size()];
        const int descriptor = open(name->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, permissions);
        if (descriptor >= 0 || errno != EEXIST)
            return descriptor;
    }
    return -1;
}

/// The name that a file will have when it is made by a name that may be that of a link.
std::string FollowLinks(const std::string& name) {
    std::filesystem::path path = name;
    for (int i = 0; i < MOST_LINKS; ++i) {
        std::error_code error;
        const std::filesystem::path next = std::filesystem::read_symlink(path, error);
        if (error)
            return path.string();
        path = path.parent_path() / next;
    }
    Fail(ELOOP);
}

/// A new file beside the target, open for writing, with a name that no other file has. It is
/// removed in the end, or by a signal, unless it has got another name.
class FileBeside {
public:
    FileBeside(const std::string& target, mode_t permissions)
        : name(target.substr(0, target.rfind('/') + 1) + ".kestra-html-XXXXXX") {
        HandleSignals();
        const SignalsLater later;
        descriptor = OpenNew(&name, permissions);
        if (descriptor < 0)
            Fail(errno);
        nameToRemove = &namesToRemove[namesToRemove[0] == nullptr ? 0 : 1];
        *nameToRemove = name.c_str();
    }
    FileBeside(const FileBeside&) = delete;
    FileBeside& operator=(const FileBeside&) = delete;
    ~FileBeside() {
        if (descriptor >= 0)
            close(descriptor);
        if (nameToRemove != nullptr) {
            unlink(name.c_str());
            *nameToRemove = nullptr;
        }
    }

    const std::string& GetName() const {
        return name;
    }

    int GetDescriptor() const {
        return descriptor;
    }

    /// @return 0, or -1 as `close` does
    int Close() {
        return close(std::exchange(descriptor, -1));
    }

    /// It has another name now.
    void Keep() {
        *std::exchange(nameToRemove, nullptr) = nullptr;
    }

private:
    std::string name;
    int descriptor = -1;
    std::atomic<const char*>* nameToRemove = nullptr;
};

}  // namespace

struct InPlaceFile::Files {
    Files(const std::string& targetName, mode_t permissions) : target(targetName), written(targetName, permissions) {}

    std::string target;
    FileBeside written;

    /// The file gets a second name. A copy it gets where there are no such, and when it has other
    /// names already: what is written under those later is not for the backup.
    void Backup(const std::string& suffix) const {
        const FileBeside made(target, PRIVATE);
        unlink(made.GetName().c_str());
        struct stat state {};
        const bool hasOtherNames = stat(target.c_str(), &state) != 0 || state.st_nlink > 1;
        std::error_code error;
        if (hasOtherNames || link(target.c_str(), made.GetName().c_str()) != 0)
            std::filesystem::copy_file(target, made.GetName(), error);
        if (!error)
            std::filesystem::rename(made.GetName(), target + suffix, error);
        if (error)
            throw InPlaceFailed(fmt::format("no backup can be written: {}", std::strerror(error.value())));
    }
};

InPlaceFile::InPlaceFile(const std::string& name, MissingFile missing) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(realpath(name.c_str(), nullptr), std::free);
    if (resolved == nullptr && errno == ENOENT && missing == MissingFile::MADE) {
        files = std::make_unique<Files>(FollowLinks(name), OF_NEW_FILES);
        return;
    }
    struct stat state {};
    if (resolved == nullptr || stat(resolved.get(), &state) != 0)
        Fail(errno);
    if (!S_ISREG(state.st_mode))
        throw InPlaceFailed("cannot be written: it is not a regular file");
    if ((state.st_mode & ANY_WRITE) == 0)
        throw InPlaceFailed("cannot be written: it is read-only");
    files = std::make_unique<Files>(resolved.get(), PRIVATE);
    const int descriptor = files->written.GetDescriptor();
    // To give a file away is the right of few. Permissions come last: a new owner clears some.
    if (state.st_uid != geteuid() || state.st_gid != getegid())
        static_cast<void>(fchown(descriptor, state.st_uid, state.st_gid) == 0);
    if (fchmod(descriptor, state.st_mode & PERMISSIONS) != 0)
        Fail(errno);
}

InPlaceFile::~InPlaceFile() = default;

void InPlaceFile::Write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(files->written.GetDescriptor(), bytes.data(), bytes.size());
        if (count < 0 && errno != EINTR)
            Fail(errno);
        bytes.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
}

void InPlaceFile::Commit(const std::string& backupSuffix) {
    if (fsync(files->written.GetDescriptor()) != 0 && errno != EINVAL)
        Fail(errno);
    if (files->written.Close() != 0)
        Fail(errno);
    if (!backupSuffix.empty())
        files->Backup(backupSuffix);
    if (rename(files->written.GetName().c_str(), files->target.c_str()) != 0)
        Fail(errno);
    files->written.Keep();
}

}  // namespace Kestra::Tool
