#include "tools/kestra-html/Console.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "tools/kestra-html/Input.h"
#include "tools/kestra-html/Terminal.h"

namespace Kestra::Tool {

namespace {

constexpr std::size_t GATHERED_BYTES = std::size_t{64} * 1024;

}  // namespace

Console::Console() : progress(IsErrorTerminal()) {}

Console::~Console() {
    TryFlush();
    progress.Hide();
}

void Console::Line(std::string_view line) {
    gathered.append(line);
    gathered.push_back('\n');
    if (gathered.size() >= GATHERED_BYTES)
        Flush();
}

void Console::Flush() {
    if (!TryFlush())
        throw OutputFailed(failure == EPIPE ? "" : fmt::format("standard output: cannot be written: {}", std::strerror(failure)));
}

bool Console::TryFlush() {
    if (!gathered.empty() && failure == 0) {
        progress.Hide();
        errno = 0;
        const bool written = std::fwrite(gathered.data(), 1, gathered.size(), stdout) == gathered.size() && std::fflush(stdout) == 0;
        if (!written)
            failure = errno != 0 ? errno : EIO;
    }
    gathered.clear();
    return failure == 0;
}

void Console::Diagnose(const std::string& inputName, std::string_view message) {
    Complain(fmt::format("{}: {}", PrintableName(inputName), message));
}

void Console::Complain(std::string_view message) {
    TryFlush();
    progress.Hide();
    if (message.empty())
        return;
    const std::string line = fmt::format("{}\n", message);
    std::fwrite(line.data(), 1, line.size(), stderr);  // there is nobody left to tell when this fails
}

Progress& Console::GetProgress() {
    return progress;
}

}  // namespace Kestra::Tool
