#include "tools/kestra-html/Terminal.h"

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string_view>

namespace Kestra::Tool {

namespace {

std::string_view Variable(const char* name) {
    const char* const value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

}  // namespace

void PrepareStandardStreams() {
    std::signal(SIGPIPE, SIG_IGN);
}

bool IsOutputTerminal() {
    return isatty(STDOUT_FILENO) != 0;
}

bool IsErrorTerminal() {
    return isatty(STDERR_FILENO) != 0;
}

bool WantsColour() {
    const std::string_view terminal = Variable("TERM");
    return IsOutputTerminal() && Variable("NO_COLOR").empty() && !terminal.empty() && terminal != "dumb";
}

}  // namespace Kestra::Tool
