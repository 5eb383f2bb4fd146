#include "tools/kestra-html/output/Progress.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tools/kestra-html/output/PrintableName.h"
#include "tools/kestra-html/system/Terminal.h"

namespace Kestra::Tool {

namespace {

constexpr std::chrono::milliseconds BEFORE_THE_FIRST{500};
constexpr std::chrono::milliseconds BETWEEN_DRAWINGS{100};
constexpr std::size_t USUAL_WIDTH = 80;
constexpr std::size_t SHORTEST_NAME = 8;       // columns; with less room there is no name
constexpr unsigned char FIRST_OF_WIDE = 0xE1;  // U+1000 and above: at most two columns

bool IsContinuation(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/// Of one character of UTF-8, by its first byte. Rather too many than too few.
std::size_t CountColumns(char first) {
    return IsContinuation(first) ? 0 : static_cast<unsigned char>(first) >= FIRST_OF_WIDE ? 2 : 1;
}

std::size_t CountColumns(std::string_view text) {
    std::size_t columns = 0;
    for (const char byte : text)
        columns += CountColumns(byte);
    return columns;
}

/// The end of a text that is too long, cut between two characters.
std::string Shorten(const std::string& text, std::size_t most) {
    std::size_t columns = CountColumns(text);
    if (columns <= most)
        return text;
    std::size_t begin = 0;
    while (begin < text.size() && (columns + 3 > most || IsContinuation(text[begin])))
        columns -= CountColumns(text[begin++]);
    return "..." + text.substr(begin);
}

std::string DescribeBytes(double bytes) {
    return bytes < 1e9 ? fmt::format("{:.1f} MB", bytes / 1e6) : fmt::format("{:.2f} GB", bytes / 1e9);
}

std::string DescribeTime(double seconds) {
    const auto all = static_cast<std::uint64_t>(seconds + 0.5);
    return all < 3600 ? fmt::format("{}:{:02}", all / 60, all % 60)
                      : fmt::format("{}:{:02}:{:02}", all / 3600, all / 60 % 60, all % 60);
}

}  // namespace

ProgressTerminal ProgressTerminal::OfErrors() {
    return {WriteErrors, GetErrorTerminalWidth, std::chrono::steady_clock::now};
}

Progress::Progress(bool isTerminal, ProgressTerminal progressTerminal)
    : isShowable(isTerminal), terminal(std::move(progressTerminal)), begin(terminal.getTime()) {}

void Progress::SetInputCount(std::size_t count) {
    inputCount = count;
    begin = terminal.getTime();
}

void Progress::StartInput(std::size_t number, const std::string& name, std::optional<std::uint64_t> size) {
    if (!isShowable)
        return;
    if (number != inputNumber) {
        doneBefore += inputDone;
        inputDone = 0;
        inputName = PrintableName(name);
        inputNumber = number;
    }
    inputSize = size;
}

void Progress::Advance(std::uint64_t bytesDone) {
    if (!isShowable)
        return;
    inputDone = bytesDone;
    const Time now = terminal.getTime();
    if (now - begin >= BEFORE_THE_FIRST && (columnsDrawn == 0 || now - lastDrawing >= BETWEEN_DRAWINGS))
        Draw();
}

/// Of the run, from the inputs that are done and the part of this one.
std::optional<double> Progress::GetFraction() const {
    if (inputCount == 0 || (inputCount == 1 && !inputSize))
        return std::nullopt;
    double part = 0;
    if (inputSize)
        part = *inputSize == 0 ? 1 : static_cast<double>(inputDone) / static_cast<double>(*inputSize);
    return (static_cast<double>(inputNumber - 1) + std::min(part, 1.0)) / static_cast<double>(inputCount);
}

std::string Progress::DescribeNumbers(double seconds) const {
    const auto done = static_cast<double>(inputDone);
    std::string text;
    if (inputSize && *inputSize > 0)
        text = fmt::format(
            " {}%, {} of {}",
            std::min<std::uint64_t>(100, static_cast<std::uint64_t>(done * 100 / static_cast<double>(*inputSize))),
            DescribeBytes(done), DescribeBytes(static_cast<double>(*inputSize)));
    else
        text = fmt::format(" {}", DescribeBytes(done));
    text += fmt::format(", {:.1f} MB/s", (static_cast<double>(doneBefore) + done) / seconds / 1e6);
    const std::optional<double> fraction = GetFraction();
    if (fraction && *fraction > 0)
        text += fmt::format(", {} left", DescribeTime(seconds * (1 - *fraction) / *fraction));
    return text;
}

void Progress::Draw() {
    const Time now = terminal.getTime();
    const std::size_t width = terminal.getWidth();
    const std::size_t room = (width == 0 ? USUAL_WIDTH : width) - 1;  // in the last column a terminal may go on
    const std::string front = fmt::format("[{}/{}]", inputNumber, inputCount);
    const std::string numbers = DescribeNumbers(std::chrono::duration<double>(now - begin).count());
    std::string line = front;
    const std::size_t taken = front.size() + 1 + numbers.size();
    if (room >= taken + SHORTEST_NAME)
        line += fmt::format(" {}", Shorten(inputName, room - taken));
    line += numbers;
    line.resize(std::min(line.size(), CountColumns(line) <= room ? line.size() : room));
    const std::size_t columns = CountColumns(line);
    const std::size_t blanks = columnsDrawn > columns ? columnsDrawn - columns : 0;
    terminal.write(fmt::format("\r{}{:<{}}", line, "", blanks));
    columnsDrawn = columns;
    lastDrawing = now;
}

bool Progress::Hide() {
    if (columnsDrawn == 0)
        return false;
    terminal.write(fmt::format("\r{:<{}}\r", "", columnsDrawn));
    columnsDrawn = 0;
    return true;
}

void Progress::Show() {
    if (isShowable)
        Draw();
}

}  // namespace Kestra::Tool
