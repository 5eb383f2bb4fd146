#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/kestra-html/output/InputOutput.h"
#include "tools/kestra-html/output/Progress.h"
#include "tools/kestra-html/system/Terminal.h"

namespace Kestra::Tool {

/// Standard output and standard error of the tool.
///
/// Output is gathered and written in whole lines, so that a progress line or a diagnostic on the
/// same terminal never cuts one.
class Console final : public InputOutput {
public:
    Console();
    ~Console() override;

    /// From now on each line is written at once.
    void SetLineBuffered();

    void Line(std::string_view line) override;
    /// Writes bytes as they are.
    /// @throws OutputFailed
    void Bytes(std::string_view bytes);
    /// Writes what is gathered. @throws OutputFailed
    void Flush();

    void Diagnose(const std::string& inputName, std::string_view message) override;
    void DiagnoseAgain(const std::string& inputName, std::string_view message) override;
    void Remark(const std::string& inputName, std::string_view message) override;
    void FlushBeforeWait() override;
    void Advance(std::uint64_t bytesDone) override;

    /// Writes one line that is about no input to standard error; nothing for an empty message.
    void Complain(std::string_view message);

    Progress& GetProgress();

private:
    /// Without a word about a failure, now or earlier.
    void TryFlush();
    void Write(std::string_view bytes);
    void ThrowFailure() const;

    std::string gathered;
    std::optional<WriteFailure> failure;  ///< of the first write that failed
    bool lineBuffered = false;
    bool hasOutputTerminal;
    bool hasErrorTerminal;
    Progress progress;
};

}  // namespace Kestra::Tool
