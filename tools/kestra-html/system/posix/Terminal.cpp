#include "tools/kestra-html/system/Terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace Kestra::Tool {

namespace {

std::string_view Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
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
    errno = 0;
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) == bytes.size() && std::fflush(stdout) == 0)
        return std::nullopt;
    const int error = errno != 0 ? errno : EIO;
    return WriteFailure{error == EPIPE, std::strerror(error)};
}

void WriteErrors(std::string_view bytes) {
    std::fwrite(bytes.data(), 1, bytes.size(), stderr);
    std::fflush(stderr);
}

}  // namespace Kestra::Tool
