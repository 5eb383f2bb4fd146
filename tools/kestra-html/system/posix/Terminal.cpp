#include "tools/kestra-html/system/Terminal.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include "tools/kestra-html/system/posix/Waiting.h"

namespace Kestra::Tool {

namespace {

std::string_view Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

std::optional<WriteFailure> Write(int stream, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(stream, bytes.data(), bytes.size());
        if (count >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR && !WaitFor(stream, POLLOUT)) {
            const int error = errno;
            return WriteFailure{error == EPIPE, std::strerror(error)};
        }
    }
    return std::nullopt;
}

}  // namespace

StandardStreams::StandardStreams() {
    std::signal(SIGPIPE, SIG_IGN);
}

StandardStreams::~StandardStreams() = default;

bool IsOutputTerminal() {
    return isatty(STDOUT_FILENO) != 0;
}

bool IsErrorTerminal() {
    return isatty(STDERR_FILENO) != 0;
}

std::size_t GetErrorTerminalWidth() {
    winsize size{};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

bool WantsColour() {
    const std::string_view terminal = Variable("TERM");
    return IsOutputTerminal() && Variable("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb";
}

std::optional<WriteFailure> WriteOutput(std::string_view bytes) {
    return Write(STDOUT_FILENO, bytes);
}

void WriteErrors(std::string_view bytes) {
    Write(STDERR_FILENO, bytes);
}

}  // namespace Kestra::Tool
