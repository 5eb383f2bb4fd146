#include "tools/kestra-html/output/Console.h"

#include <fmt/format.h>

#include <cstddef>

#include "tools/kestra-html/output/PrintableName.h"

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

void Console::Bytes(std::string_view bytes) {
    if (gathered.size() + bytes.size() < GATHERED_BYTES) {
        gathered.append(bytes);
        return;
    }
    TryFlush();
    Write(bytes);
    ThrowFailure();
}

void Console::Flush() {
    TryFlush();
    ThrowFailure();
}

void Console::ThrowFailure() const {
    if (failure)
        throw OutputFailed(
            failure->isReaderGone ? "" : fmt::format("standard output: cannot be written: {}", failure->reason));
}

void Console::TryFlush() {
    if (!gathered.empty())
        Write(gathered);
    gathered.clear();
}

void Console::Write(std::string_view bytes) {
    if (failure)
        return;
    progress.Hide();
    failure = WriteOutput(bytes);
}

void Console::Diagnose(const std::string& inputName, std::string_view message) {
    Complain(fmt::format("{}: {}", PrintableName(inputName), message));
}

void Console::Complain(std::string_view message) {
    TryFlush();
    progress.Hide();
    if (!message.empty())
        WriteErrors(fmt::format("{}\n", message));
}

Progress& Console::GetProgress() {
    return progress;
}

}  // namespace Kestra::Tool
