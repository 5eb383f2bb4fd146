#include "tools/kestra-html/commands/CheckCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tools/kestra-html/commands/InputChecker.h"
#include "tools/kestra-html/commands/InputNames.h"
#include "tools/kestra-html/commands/OrderedJobs.h"
#include "tools/kestra-html/input/Input.h"
#include "tools/kestra-html/output/JsonLine.h"
#include "tools/kestra-html/output/PrintableName.h"
#include "tools/kestra-html/output/ResultText.h"

namespace Kestra::Tool {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds BETWEEN_LOOKS{100};  // at the progress of the input that is waited for

constexpr std::uint64_t UNKNOWN_SIZE = std::numeric_limits<std::uint64_t>::max();

/// An input on its way through the command. It belongs to the thread that checks it until that is
/// done; only what is atomic is read before.
struct CheckedInput {
    ReadResult reading = ReadResult::UNREADABLE;  ///< out of memory also when the check was
    std::uint64_t size = 0;
    bool hasMore = false;  ///< it may be larger: the parse ended before a pipe did
    CheckOutcome outcome;

    std::atomic<std::uint64_t> bytesToDo = UNKNOWN_SIZE;
    std::atomic<std::uint64_t> bytesDone = 0;
    std::atomic<bool> goesToFile = false;  ///< until that is said
};

/// What the summary says of all inputs.
struct CheckTotals {
    std::uint64_t files = 0;  ///< without those that could not be checked
    std::uint64_t bytes = 0;
    std::uint64_t tokens = 0;
    std::uint64_t reproduced = 0;
    std::uint64_t notChecked = 0;  ///< for want of the input, of memory or of a temporary file
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
    if (outcome.result.copyLost)
        return fmt::format("not checked, {}", GetFailureMeaning(outcome.result));
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
          jobCount(CountJobs(checkOptions)),
          inputs(jobCount * OrderedJobs::MOST_AHEAD) {
        for (std::unique_ptr<CheckedInput>& input : inputs)
            input = std::make_unique<CheckedInput>();
    }

    ExitStatus Run() {
        try {
            const Clock::time_point begin = Clock::now();
            status = ListInputNames(options, console, &names);
            if (status != EXIT_STATUS_GOOD)
                return status;
            CheckInputs();
            if (options.format == OutputFormat::TEXT)
                WriteSummary(std::chrono::duration<double>(Clock::now() - begin).count());
            console->Flush();
        } catch (const OutputFailed& failure) {
            status = EndFailedOutput(failure, status, console);
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
        OrderedJobs jobs(names.size(), jobCount, makeWorker);
        try {
            for (std::size_t i = 0; i < names.size(); ++i) {
                WaitFor(i, &jobs);
                Report(names[i], *SlotOf(i));
                SlotOf(i) = std::make_unique<CheckedInput>();
            }
        } catch (const OutputFailed& failure) {
            // A thread that waits for a pipe, or reads a large file, would keep the tool.
            std::_Exit(EndFailedOutput(failure, status, console));
        }
    }

    void WaitFor(std::size_t index, OrderedJobs* jobs) {
        std::chrono::milliseconds patience{0};
        bool isDone = false;
        while (!isDone) {
            isDone = jobs->Wait(index, patience);
            CheckedInput& input = *SlotOf(index);
            const std::uint64_t size = input.bytesToDo;
            if (input.goesToFile.exchange(false))
                console->Remark(names[index], "kept in a temporary file, to be compared with its tokens");
            if (!isDone)
                console->Flush();
            console->GetProgress().StartInput(index + 1, names[index],
                                              size == UNKNOWN_SIZE ? std::nullopt : std::optional(size));
            console->GetProgress().Advance(input.bytesDone);
            patience = BETWEEN_LOOKS;
        }
    }

    /// Inputs that are not yet reported are never more than there are slots.
    std::unique_ptr<CheckedInput>& SlotOf(std::size_t index) {
        return inputs[index % inputs.size()];
    }

    void Check(InputChecker* checker, std::size_t index) {
        CheckedInput& input = *SlotOf(index);
        try {
            // The console belongs to another thread.
            ReadingEvents events;
            events.onFile = [&input] { input.goesToFile = true; };
            const OpenedInput opened = OpenInput(names[index], std::move(events));
            input.reading = opened.result;
            InputSource* const source = opened.source.get();
            if (source == nullptr)
                return;
            if (const std::optional<std::uint64_t> size = source->GetSize())
                input.bytesToDo = *size;
            const auto bytesDone = [&input](std::uint64_t bytes) { input.bytesDone = bytes; };
            input.outcome = checker->Check(source, bytesDone);
            input.reading = source->GetFailure();
            input.size = CountBytes(*source);
            input.hasMore = !source->GetSize();
        } catch (const std::bad_alloc&) {
            input.reading = ReadResult::OUT_OF_MEMORY;
        }
    }

    /// @throws OutputFailed
    void Report(const std::string& name, const CheckedInput& input) {
        if (input.reading != ReadResult::READ) {
            ++totals.notChecked;
            Worsen(ReportUnread(name, input.reading, options.format, nullptr, console));
            return;
        }
        ++totals.files;
        totals.bytes += input.size;
        totals.tokens += input.outcome.tokens;
        totals.reproduced += input.outcome.IsReproduced() ? 1 : 0;
        totals.notChecked += input.outcome.result.copyLost ? 1 : 0;
        if (options.format == OutputFormat::JSON)
            WriteObject(name, input);
        else
            WriteLine(name, input);
        if (!input.outcome.IsGood())
            Worsen(ReportFailure(name, DescribeTrouble(input.outcome), options.format, console));
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
        line.Number("parse", input.outcome.result.parse);
        if (input.outcome.result.copyLost) {
            const std::string why(GetFailureMeaning(input.outcome.result));
            line.String("error", &why);
        }
        line.End();
    }

    void WriteLine(const std::string& name, const CheckedInput& input) {
        const CheckOutcome& outcome = input.outcome;
        const bool isExplained = outcome.result.GetFirstFailure() == 0 && outcome.HasLostMark();
        const bool showsPlace = outcome.firstDifference && !isExplained;
        const std::string trouble = showsPlace ? fmt::format("; {}", DescribeDifference(outcome)) : "";
        console->Line(fmt::format("{}: {}, {}{}, {}, {:.1f} MB/s{}", PrintableName(name), DescribeVerdict(outcome),
                                  input.hasMore ? "at least " : "", Counted(input.size, "byte"),
                                  Counted(outcome.tokens, "token"), Rate(input.size, outcome.seconds), trouble));
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
    std::size_t jobCount;                               ///< threads
    std::vector<std::unique_ptr<CheckedInput>> inputs;  ///< a ring of slots
    CheckTotals totals;
    ExitStatus status = EXIT_STATUS_GOOD;
};

}  // namespace

ExitStatus RunCheck(const CheckOptions& options, Console* console) {
    return CheckCommand(options, console).Run();
}

}  // namespace Kestra::Tool
