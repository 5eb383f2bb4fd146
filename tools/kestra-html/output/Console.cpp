#include "tools/kestra-html/output/Console.h"

#include <fmt/format.h>

#include <cstddef>

#include "tools/kestra-html/output/PrintableName.h"

namespace Kestra::Tool {

namespace {

constexpr std::size_t GATHERED_BYTES = std::size_t{64} * 1024;

}  // namespace

Console::Console()
    : hasOutputTerminal(IsOutputTerminal()), hasErrorTerminal(IsErrorTerminal()), progress(hasErrorTerminal) {}

Console::~Console() {
    TryFlush();
    progress.Hide();
}

void Console::SetLineBuffered() {
    lineBuffered = true;
}

void Console::Line(std::string_view line) {
    gathered.append(line);
    gathered.push_back('\n');
    if (lineBuffered || failure || gathered.size() >= GATHERED_BYTES)
        Flush();
}

void Console::Bytes(std::string_view bytes) {
    if (!failure && gathered.size() + bytes.size() < GATHERED_BYTES) {
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

void Console::FlushBeforeWait() {
    if (hasOutputTerminal)
        TryFlush();
}

void Console::ThrowFailure() const {
    if (failure)
        throw OutputFailed(
            failure->isReaderGone ? "" : fmt::format("standard output: cannot be written: {}", failure->reason),
            failure->isReaderGone);
}

void Console::TryFlush() {
    if (!gathered.empty())
        Write(gathered);
    gathered.clear();
}

/// The progress line is in the way only of output to a terminal.
void Console::Write(std::string_view bytes) {
    if (failure)
        return;
    if (!hasOutputTerminal) {
        failure = WriteOutput(bytes);
        return;
    }
    const bool wasShown = progress.Hide();
    failure = WriteOutput(bytes);
    if (wasShown && (bytes.empty() || bytes.back() == '\n'))
        progress.Show();
}

void Console::Diagnose(const std::string& inputName, std::string_view message) {
    Complain(fmt::format("{}: {}", PrintableName(inputName), message));
}

void Console::DiagnoseAgain(const std::string& inputName, std::string_view message) {
    if (!hasOutputTerminal || !hasErrorTerminal)
        Diagnose(inputName, message);
}

void Console::Advance(std::uint64_t bytesDone) {
    progress.Advance(bytesDone);
}

void Console::Complain(std::string_view message) {
    TryFlush();
    if (message.empty())
        return;
    const bool wasShown = progress.Hide();
    WriteErrors(fmt::format("{}\n", message));
    if (wasShown)
        progress.Show();
}

void Console::Remark(const std::string& inputName, std::string_view message) {
    if (hasErrorTerminal)
        Diagnose(inputName, message);
}

Progress& Console::GetProgress() {
    return progress;
}

}  // namespace Kestra::Tool
