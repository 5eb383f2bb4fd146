#include "tools/kestra-html/commands/InputRuns.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <memory>

#include "tools/kestra-html/commands/OrderedJobs.h"
#include "tools/kestra-html/output/LineSink.h"
#include "tools/kestra-html/output/QueuedOutput.h"

namespace Kestra::Tool {

namespace {

constexpr std::chrono::milliseconds BETWEEN_LOOKS{5};  // at the output of the input that is waited for

/// Runs the work on threads while their owner writes what they have found.
class ParallelRuns {
public:
    ParallelRuns(const std::vector<std::string>& inputNames, std::size_t threads, Console* toolConsole,
                 const RunOne& workOnOne)
        : names(inputNames),
          jobs(threads),
          console(toolConsole),
          runOne(workOnOne),
          slots(threads * OrderedJobs::MOST_AHEAD) {
        for (std::unique_ptr<Slot>& slot : slots)
            slot = std::make_unique<Slot>(&queue);
    }

    /// @param status  of the worst one so far
    /// Ends the tool when the output fails: a thread that waits for a pipe would keep it.
    /// @throws what a first thread cannot be started for
    void Run(ExitStatus* status) {
        const auto makeWorker = [this] { return [this](std::size_t index) { Work(index); }; };
        OrderedJobs running(names.size(), jobs, makeWorker);
        const StopsAll stopsAll{this};
        try {
            for (std::size_t i = 0; i < names.size(); ++i) {
                WriteUntilDone(i, &running);
                *status = std::max(*status, SlotOf(i)->status);
                SlotOf(i) = std::make_unique<Slot>(&queue);
            }
            console->Flush();
        } catch (const OutputFailed& failure) {
            std::_Exit(EndFailedOutput(failure, *status, console));
        }
    }

private:
    static constexpr std::uint64_t UNKNOWN_SIZE = ~std::uint64_t{0};

    /// An input on its way. It belongs to its thread until that is done.
    struct Slot {
        explicit Slot(OutputQueue* outputQueue) : output(outputQueue) {}

        QueuedOutput output;
        std::atomic<std::uint64_t> size = UNKNOWN_SIZE;
        ExitStatus status = EXIT_STATUS_GOOD;
    };

    /// No thread waits for its output to be written when nothing will be.
    struct StopsAll {
        ParallelRuns* runs;

        ~StopsAll() {
            runs->hasStopped = true;
            StopOutputs(&runs->queue);
        }
    };

    /// Inputs that are not yet written are never more than there are slots.
    std::unique_ptr<Slot>& SlotOf(std::size_t index) {
        return slots[index % slots.size()];
    }

    void Work(std::size_t index) {
        Slot& slot = *SlotOf(index);
        try {
            const auto sizeKnown = [&slot](std::optional<std::uint64_t> size) {
                slot.size = size.value_or(UNKNOWN_SIZE);
            };
            if (!hasStopped)
                slot.status = runOne(index, &slot.output, sizeKnown);
            slot.output.Finish();
        } catch (const OutputFailed&) {  // the owner knows
        } catch (const std::exception& failure) {
            Say(index, failure.what(), &slot);
        }
    }

    /// What ends the work on one input ends no other.
    void Say(std::size_t index, const char* why, Slot* slot) {
        slot->status = std::max(slot->status, EXIT_STATUS_FAILED);
        try {
            slot->output.Diagnose(names[index], why);
        } catch (const std::exception&) {  // not even that has memory
        }
    }

    void WriteUntilDone(std::size_t index, OrderedJobs* running) {
        std::chrono::milliseconds patience{0};
        bool isDone = false;
        while (!isDone) {
            isDone = running->Wait(index, patience);
            Slot& slot = *SlotOf(index);
            const std::uint64_t size = slot.size;
            console->GetProgress().StartInput(index + 1, names[index],
                                              size == UNKNOWN_SIZE ? std::nullopt : std::optional(size));
            console->GetProgress().Advance(slot.output.GetBytesDone());
            slot.output.WriteTo(console);
            if (!isDone)
                console->FlushBeforeWait();
            patience = BETWEEN_LOOKS;
        }
    }

    const std::vector<std::string>& names;
    std::size_t jobs;
    Console* console;
    const RunOne& runOne;
    OutputQueue queue;
    std::vector<std::unique_ptr<Slot>> slots;  ///< a ring
    std::atomic<bool> hasStopped = false;
};

/// One after the other.
/// @param status  of the worst one so far
void RunSerially(const std::vector<std::string>& names, Console* console, const RunOne& runOne, ExitStatus* status) {
    for (std::size_t i = 0; i < names.size(); ++i) {
        console->GetProgress().StartInput(i + 1, names[i], std::nullopt);
        const auto sizeKnown = [&](std::optional<std::uint64_t> size) {
            console->GetProgress().StartInput(i + 1, names[i], size);
        };
        try {
            *status = std::max(*status, runOne(i, console, sizeKnown));
        } catch (const OutputFailed&) {
            throw;
        } catch (const std::exception& failure) {
            *status = std::max(*status, EXIT_STATUS_FAILED);
            console->Diagnose(names[i], failure.what());
        }
    }
}

}  // namespace

ExitStatus RunInOrder(const std::vector<std::string>& names, std::size_t jobs, Console* console, const RunOne& runOne) {
    ExitStatus status = EXIT_STATUS_GOOD;
    try {
        console->GetProgress().SetInputCount(names.size());
        const bool isSerial =
            jobs == 1 || names.size() < 2 || std::find(names.begin(), names.end(), "-") != names.end();
        if (isSerial)
            RunSerially(names, console, runOne, &status);
        else
            ParallelRuns(names, jobs, console, runOne).Run(&status);
        console->Flush();
    } catch (const OutputFailed& failure) {
        return EndFailedOutput(failure, status, console);
    } catch (const std::exception& failure) {  // no memory, no thread
        console->Complain(fmt::format("kestra-html: {}", failure.what()));
        return std::max(status, EXIT_STATUS_FAILED);
    }
    return status;
}

}  // namespace Kestra::Tool
