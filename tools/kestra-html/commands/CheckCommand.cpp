#include "tools/kestra-html/commands/CheckCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "tools/kestra-html/commands/InputChecker.h"
#include "tools/kestra-html/commands/OrderedJobs.h"
#include "tools/kestra-html/input/Input.h"
#include "tools/kestra-html/input/InputList.h"
#include "tools/kestra-html/output/JsonLine.h"
#include "tools/kestra-html/output/PrintableName.h"
#include "tools/kestra-html/output/ResultText.h"

namespace Kestra::Tool {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds BETWEEN_LOOKS{100};  // at the progress of the input that is waited for

/// An input on its way through the command. It belongs to the thread that checks it until that is
/// done; only the two numbers about its progress are read before.
struct CheckedInput {
    ReadResult reading = ReadResult::UNREADABLE;  ///< out of memory also when the check was
    std::string bytes;                            ///< from reading to the end of the check
    std::uint64_t size = 0;
    CheckOutcome outcome;

    std::atomic<std::uint64_t> bytesToDo = 1;  ///< 1 until it is known, so that nothing of it is done
    std::atomic<std::uint64_t> bytesDone = 0;
};

/// What the summary says of all inputs.
struct CheckTotals {
    std::uint64_t files = 0;  ///< without those that could not be checked
    std::uint64_t bytes = 0;
    std::uint64_t tokens = 0;
    std::uint64_t reproduced = 0;
    std::uint64_t notChecked = 0;
};

/// Millions of bytes per second.
double Rate(std::uint64_t bytes, double seconds) {
    return seconds > 0 ? static_cast<double>(bytes) / seconds / 1e6 : 0;
}

/// A number with what it counts.
std::string Counted(std::uint64_t number, const char* what) {
    return fmt::format("{} {}{}", number, what, number == 1 ? "" : "s");
}

/// Where the copy stops being the input.
std::string DescribeDifference(const CheckOutcome& outcome) {
    const std::string place = fmt::format("first difference at byte {}", *outcome.firstDifference);
    if (!outcome.hasCopy)
        return place + ", there is no copy";
    if (outcome.token.empty())
        return place + ", in no token";
    return fmt::format("{}, in the token from byte {} on: {}", place, outcome.tokenStart, outcome.token);
}

constexpr const char* LOST_MARK = "the unfinished byte-order mark at its start belongs to no token";

/// For the diagnostic of an input that is not good.
std::string DescribeTrouble(const CheckOutcome& outcome) {
    if (outcome.result.GetFirstFailure() != 0)
        return DescribeFailures(outcome.result);
    return fmt::format("is not reproduced, {}", outcome.HasLostMark() ? LOST_MARK : DescribeDifference(outcome));
}

/// The outcome in one line, before the numbers.
std::string DescribeVerdict(const CheckOutcome& outcome) {
    if (const std::uint32_t code = outcome.result.GetFirstFailure(); code != 0)
        return fmt::format("{}, {}", code, GetFailureMeaning(outcome.result));
    if (outcome.HasLostMark())
        return fmt::format("0, but not reproduced, {}", LOST_MARK);
    return outcome.IsReproduced() ? "ok" : "0, but not reproduced";
}

class CheckCommand {
public:
    CheckCommand(const CheckOptions& checkOptions, Console* toolConsole)
        : options(checkOptions),
          console(toolConsole),
          line(toolConsole),
          inputs(options.jobs * OrderedJobs::MOST_AHEAD) {
        for (std::unique_ptr<CheckedInput>& input : inputs)
            input = std::make_unique<CheckedInput>();
    }

    ExitStatus Run() {
        try {
            const Clock::time_point begin = Clock::now();
            names = options.recursive ? ListInputs(options.inputs) : options.inputs;
            CheckInputs();
            if (options.format == OutputFormat::TEXT)
                WriteSummary(std::chrono::duration<double>(Clock::now() - begin).count());
            console->Flush();
        } catch (const OutputFailed& failure) {
            Worsen(EXIT_STATUS_FAILED);
            console->Complain(failure.what());
        } catch (const std::exception& failure) {  // no memory, no thread
            Worsen(EXIT_STATUS_FAILED);
            console->Complain(fmt::format("kestra-html: {}", failure.what()));
        }
        return status;
    }

private:
    /// The threads check; this one waits, shows their progress, and writes.
    void CheckInputs() {
        console->GetProgress().SetInputCount(names.size());
        const auto makeWorker = [this] {
            return [this, checker = std::make_shared<InputChecker>(options)](std::size_t index) {
                Check(checker.get(), index);
            };
        };
        // Standard input can be named more than once, and the first one gets it all: so it is read
        // in its turn.
        const auto readInTurn = [this](std::size_t index) {
            if (names[index] == "-")
                Read(index);
        };
        OrderedJobs jobs(names.size(), options.jobs, makeWorker, readInTurn);
        for (std::size_t i = 0; i < names.size(); ++i) {
            WaitFor(i, &jobs);
            Report(names[i], *SlotOf(i));
            SlotOf(i) = std::make_unique<CheckedInput>();
        }
    }

    void WaitFor(std::size_t index, OrderedJobs* jobs) {
        std::chrono::milliseconds patience{0};
        while (!jobs->Wait(index, patience)) {
            const CheckedInput& input = *SlotOf(index);
            console->Flush();
            console->GetProgress().Follow(index + 1, names[index], input.bytesDone, input.bytesToDo);
            patience = BETWEEN_LOOKS;
        }
    }

    /// Inputs that are not yet reported are never more than there are slots.
    std::unique_ptr<CheckedInput>& SlotOf(std::size_t index) {
        return inputs[index % inputs.size()];
    }

    void Read(std::size_t index) {
        CheckedInput& input = *SlotOf(index);
        input.reading = ReadInput(names[index], &input.bytes);
    }

    void Check(InputChecker* checker, std::size_t index) {
        CheckedInput& input = *SlotOf(index);
        if (names[index] != "-")
            Read(index);
        if (input.reading == ReadResult::READ) {
            input.size = input.bytes.size();
            input.bytesToDo = input.size;
            try {
                input.outcome = checker->Check(input.bytes, [&input](std::uint64_t bytes) { input.bytesDone = bytes; });
            } catch (const std::bad_alloc&) {
                input.reading = ReadResult::OUT_OF_MEMORY;
            }
        }
        input.bytes = std::string();
    }

    /// @throws OutputFailed
    void Report(const std::string& name, const CheckedInput& input) {
        if (input.reading != ReadResult::READ) {
            ++totals.notChecked;
            Worsen(DiagnoseUnread(name, input.reading, console));
            return;
        }
        ++totals.files;
        totals.bytes += input.size;
        totals.tokens += input.outcome.tokens;
        totals.reproduced += input.outcome.IsReproduced() ? 1 : 0;
        if (options.format == OutputFormat::JSON)
            WriteObject(name, input);
        else
            WriteLine(name, input);
        if (!input.outcome.IsGood()) {
            Worsen(EXIT_STATUS_FAILED);
            console->Diagnose(name, DescribeTrouble(input.outcome));
        }
    }

    void WriteObject(const std::string& name, const CheckedInput& input) {
        line.Begin();
        line.File(name);
        line.Number("bytes", input.size);
        line.Number("tokens", input.outcome.tokens);
        line.Number("endParse", input.outcome.result.endParse);
        line.Bool("identical", input.outcome.IsReproduced());
        if (input.outcome.firstDifference)
            line.Number("firstDifference", *input.outcome.firstDifference);
        else
            line.Null("firstDifference");
        line.End();
    }

    void WriteLine(const std::string& name, const CheckedInput& input) {
        const CheckOutcome& outcome = input.outcome;
        const bool isExplained = outcome.result.GetFirstFailure() == 0 && outcome.HasLostMark();
        const bool showsPlace = outcome.firstDifference && !isExplained;
        const std::string trouble = showsPlace ? fmt::format("; {}", DescribeDifference(outcome)) : "";
        console->Line(fmt::format("{}: {}, {}, {}, {:.1f} MB/s{}", PrintableName(name), DescribeVerdict(outcome),
                                  Counted(input.size, "byte"), Counted(outcome.tokens, "token"),
                                  Rate(input.size, outcome.seconds), trouble));
    }

    void WriteSummary(double seconds) {
        const std::string notChecked = totals.notChecked == 0 ? "" : fmt::format(", {} not checked", totals.notChecked);
        console->Line(fmt::format("{}, {}, {}, {:.1f} MB/s, {} reproduced{}", Counted(totals.files, "file"),
                                  Counted(totals.bytes, "byte"), Counted(totals.tokens, "token"),
                                  Rate(totals.bytes, seconds), totals.reproduced, notChecked));
    }

    void Worsen(ExitStatus other) {
        status = std::max(status, other);
    }

    const CheckOptions& options;
    Console* console;
    JsonLine line;
    std::vector<std::string> names;
    std::vector<std::unique_ptr<CheckedInput>> inputs;  ///< a ring of slots
    CheckTotals totals;
    ExitStatus status = EXIT_STATUS_GOOD;
};

}  // namespace

ExitStatus RunCheck(const CheckOptions& options, Console* console) {
    return CheckCommand(options, console).Run();
}

}  // namespace Kestra::Tool
