#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>

namespace Kestra::Tool {

/// One line on standard error that says how far a long run is. It is drawn on a terminal only, and
/// only for more than one input or for one of more than LARGE_INPUT bytes; other output hides it
/// first.
class Progress {
public:
    static constexpr std::uint64_t LARGE_INPUT = std::uint64_t{16} * 1024 * 1024;

    /// @param isTerminal  standard error is a terminal; otherwise nothing is ever drawn
    explicit Progress(bool isTerminal);

    void SetInputCount(std::size_t count);
    /// @param number  from 1
    void StartInput(std::size_t number, const std::string& name, std::uint64_t size);
    /// Draws anew when the last time was long enough ago.
    void Advance(std::uint64_t bytesDone);
    /// The same, for whichever input is waited for.
    void Follow(std::size_t number, const std::string& name, std::uint64_t bytesDone, std::uint64_t size);
    /// Takes the line off the terminal until the next drawing.
    void Hide();

private:
    using Clock = std::chrono::steady_clock;

    void Draw(std::uint64_t bytesDone);

    bool terminal;
    std::size_t inputCount = 0;
    std::size_t inputNumber = 0;
    std::string inputName;
    std::uint64_t inputSize = 0;
    std::size_t columnsDrawn = 0;
    Clock::time_point lastDrawing;
};

}  // namespace Kestra::Tool
