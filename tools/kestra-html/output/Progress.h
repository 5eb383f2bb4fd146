#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace Kestra::Tool {

/// The terminal that a progress line is drawn on, and the clock.
struct ProgressTerminal {
    using Time = std::chrono::steady_clock::time_point;

    std::function<void(std::string_view)> write;
    std::function<std::size_t()> getWidth;  ///< in columns; 0 when it is not known
    std::function<Time()> getTime;

    /// That of standard error.
    static ProgressTerminal OfErrors();
};

/// One line on standard error that says how far a long run is: which of the inputs, how much of it,
/// how fast, and for how long still. It is drawn on a terminal only, and only after half a second.
class Progress {
public:
    /// @param isTerminal  standard error is a terminal; otherwise nothing is ever drawn
    explicit Progress(bool isTerminal, ProgressTerminal progressTerminal = ProgressTerminal::OfErrors());

    /// Begins the run.
    void SetInputCount(std::size_t count);
    /// @param number  from 1
    /// @param size    in bytes; nothing when it is not known
    void StartInput(std::size_t number, const std::string& name, std::optional<std::uint64_t> size);
    /// Draws anew when the last time was long enough ago.
    void Advance(std::uint64_t bytesDone);
    /// Takes the line off the terminal until the next drawing.
    /// @return whether there was one
    bool Hide();
    /// Draws the line again at once.
    void Show();

private:
    using Time = ProgressTerminal::Time;

    void Draw();
    std::string DescribeNumbers(double seconds) const;
    std::optional<double> GetFraction() const;

    bool isShowable;
    ProgressTerminal terminal;
    std::size_t inputCount = 0;
    std::size_t inputNumber = 0;
    std::string inputName;
    std::optional<std::uint64_t> inputSize;
    std::uint64_t inputDone = 0;   ///< bytes
    std::uint64_t doneBefore = 0;  ///< bytes of the inputs before
    std::size_t columnsDrawn = 0;
    Time begin;
    Time lastDrawing;
};

}  // namespace Kestra::Tool
