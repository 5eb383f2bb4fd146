#include "tools/kestra-html/output/Progress.h"

#include <fmt/format.h>

#include "tools/kestra-html/output/PrintableName.h"
#include "tools/kestra-html/system/Terminal.h"

namespace Kestra::Tool {

namespace {

constexpr std::chrono::milliseconds BETWEEN_DRAWINGS{100};
constexpr std::size_t LONGEST_NAME = 50;  // bytes; with the numbers the line fits into 80 columns

/// The end of a long name, cut between two characters.
std::string Shorten(const std::string& name) {
    if (name.size() <= LONGEST_NAME)
        return name;
    std::size_t begin = name.size() - LONGEST_NAME + 3;
    while (begin < name.size() && (static_cast<unsigned char>(name[begin]) & 0xC0) == 0x80)
        ++begin;
    return "..." + name.substr(begin);
}

}  // namespace

Progress::Progress(bool isTerminal) : terminal(isTerminal) {}

void Progress::SetInputCount(std::size_t count) {
    inputCount = count;
}

void Progress::StartInput(std::size_t number, const std::string& name, std::uint64_t size) {
    inputNumber = number;
    inputName = Shorten(PrintableName(name));
    inputSize = size;
    Draw(0);
}

void Progress::Advance(std::uint64_t bytesDone) {
    if (terminal && Clock::now() - lastDrawing >= BETWEEN_DRAWINGS)
        Draw(bytesDone);
}

void Progress::Follow(std::size_t number, const std::string& name, std::uint64_t bytesDone, std::uint64_t size) {
    inputNumber = number;
    inputName = Shorten(PrintableName(name));
    inputSize = size;
    Advance(bytesDone);
}

void Progress::Draw(std::uint64_t bytesDone) {
    if (!terminal || (inputCount <= 1 && inputSize <= LARGE_INPUT))
        return;
    const std::uint64_t percent = inputSize == 0 ? 100 : bytesDone * 100 / inputSize;
    const std::string line = fmt::format("[{}/{}] {} {}%", inputNumber, inputCount, inputName, percent);
    WriteErrors(fmt::format("\r{:<{}}", line, columnsDrawn));
    columnsDrawn = line.size();
    lastDrawing = Clock::now();
}

void Progress::Hide() {
    if (columnsDrawn == 0)
        return;
    WriteErrors(fmt::format("\r{:<{}}\r", "", columnsDrawn));
    columnsDrawn = 0;
}

}  // namespace Kestra::Tool
