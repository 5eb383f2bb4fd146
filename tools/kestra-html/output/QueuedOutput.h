#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "tools/kestra-html/output/Console.h"
#include "tools/kestra-html/output/InputOutput.h"

namespace Kestra::Tool {

class QueuedOutput;

/// What the outputs of a run share: how much of them is kept, and whose turn it is.
struct OutputQueue {
    std::mutex guard;  ///< of all that follows, and of what each output keeps
    std::condition_variable changed;
    std::size_t bytesKept = 0;
    const QueuedOutput* next = nullptr;  ///< the one that is being written
    bool isStopped = false;
    /// Memory of lines that have been written, for more: the system would get it and give it anew.
    std::vector<std::string> spares;
};

/// The output of work on one input that runs on a thread of its own. It is kept until the owner of
/// the console writes it, which is when all inputs before it are written.
///
/// The worker waits while there is much of it, so that inputs that are not yet next take little
/// memory together, however many they are.
class QueuedOutput final : public InputOutput {
public:
    static constexpr std::size_t MOST_BYTES = std::size_t{16} << 20;  ///< kept of all before a worker waits
    static constexpr std::size_t MOST_OF_NEXT = std::size_t{4} << 20;

    /// @param outputQueue  borrowed
    explicit QueuedOutput(OutputQueue* outputQueue) : queue(outputQueue) {}

    // For the worker.

    /// @throws OutputFailed when the owner has stopped
    void Line(std::string_view line) override;
    /// @throws OutputFailed when the owner has stopped
    void Diagnose(const std::string& inputName, std::string_view message) override;
    /// @throws OutputFailed when the owner has stopped
    void DiagnoseAgain(const std::string& inputName, std::string_view message) override;
    /// @throws OutputFailed when the owner has stopped
    void Remark(const std::string& inputName, std::string_view message) override;
    /// Hands over the lines so far, so that the owner of the console can write them.
    void FlushBeforeWait() override;
    void Advance(std::uint64_t bytesDone) override;
    /// After the last of it.
    void Finish();

    // For the owner of the console.

    /// Writes what there is; the rest of it is next from now on. @throws OutputFailed
    void WriteTo(Console* console);
    std::uint64_t GetBytesDone() const;

private:
    enum class Kind { LINES, DIAGNOSIS, DIAGNOSIS_AGAIN, REMARK };

    /// Whole lines for standard output, or what is said about an input.
    struct Part {
        Kind kind;
        std::string inputName;
        std::string text;
    };

    void HandOver(Part* part);
    void HandOverAbout(Kind kind, const std::string& inputName, std::string_view message);
    void PrepareForLines();
    void Recycle(std::deque<Part>* written);
    bool HasRoom() const;

    OutputQueue* queue;
    std::string gathered;  ///< of the worker alone
    std::atomic<std::uint64_t> bytesOfInput = 0;
    std::deque<Part> parts;
    std::size_t bytesKept = 0;
};

/// Nothing will be written any more: workers need not go on.
void StopOutputs(OutputQueue* queue);

}  // namespace Kestra::Tool
