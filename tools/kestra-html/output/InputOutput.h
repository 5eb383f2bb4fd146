#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tools/kestra-html/output/LineSink.h"

namespace Kestra::Tool {

/// Where the work on one input writes: lines for standard output, and what is wrong with it.
class InputOutput : public LineSink {
public:
    /// Writes one line about an input to standard error, after the output so far.
    virtual void Diagnose(const std::string& inputName, std::string_view message) = 0;

    /// The same about what the lines for standard output say as well. Where one terminal shows
    /// both, it is not said again.
    virtual void DiagnoseAgain(const std::string& inputName, std::string_view message) = 0;

    /// Writes one line about an input where standard error is a terminal.
    virtual void Remark(const std::string& inputName, std::string_view message) = 0;

    /// Called before the work waits for input: nothing found stays unseen for as long. A failure is
    /// thrown by the next call that writes.
    virtual void FlushBeforeWait() = 0;

    /// Says how far the parse of the input is. Does not throw.
    virtual void Advance(std::uint64_t bytesDone) = 0;
};

}  // namespace Kestra::Tool
