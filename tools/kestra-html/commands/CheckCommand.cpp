#include "tools/kestra-html/commands/CheckCommand.h"

#include <fmt/format.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "tools/kestra-html/commands/InputChecker.h"
#include "tools/kestra-html/commands/InputNames.h"
#include "tools/kestra-html/commands/InputRuns.h"
#include "tools/kestra-html/input/Input.h"
#include "tools/kestra-html/output/JsonLine.h"
#include "tools/kestra-html/output/PrintableName.h"
#include "tools/kestra-html/output/ResultText.h"

namespace Kestra::Tool {

namespace {

using Clock = std::chrono::steady_clock;

/// What is known of an input after its check.
struct CheckedInput {
    std::uint64_t size = 0;
    bool hasMore = false;  ///< it may be larger: the parse ended before a pipe did
    CheckOutcome outcome;
};

/// What the summary says of all inputs.
struct CheckTotals {
    std::uint64_t files = 0;  ///< that have been read, also those whose copy was lost
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

constexpr std::string_view WHY_KEPT = "to be compared with its tokens";

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

/// The checkers of a run, each with its parser: as many as inputs are checked at a time.
class CheckerPool {
public:
    /// @param checkOptions  borrowed
    explicit CheckerPool(const CheckOptions& checkOptions) : options(checkOptions) {}

    std::unique_ptr<InputChecker> Take() {
        const std::lock_guard lock(guard);
        if (idle.empty())
            return std::make_unique<InputChecker>(options);
        std::unique_ptr<InputChecker> checker = std::move(idle.back());
        idle.pop_back();
        return checker;
    }

    void Return(std::unique_ptr<InputChecker> checker) {
        const std::lock_guard lock(guard);
        idle.push_back(std::move(checker));
    }

private:
    const CheckOptions& options;
    std::mutex guard;
    std::vector<std::unique_ptr<InputChecker>> idle;
};

class CheckCommand {
public:
    CheckCommand(const CheckOptions& checkOptions, Console* toolConsole)
        : options(checkOptions), console(toolConsole), checkers(checkOptions) {}

    ExitStatus Run() {
        const Clock::time_point begin = Clock::now();
        std::vector<std::string> names;
        const ExitStatus status = ListInputNames(options, console, &names);
        if (status != EXIT_STATUS_GOOD)
            return status;
        const auto runOne = [this, &names](std::size_t index, InputOutput* output, const SizeKnown& sizeKnown) {
            return RunInput(names[index], output, sizeKnown);
        };
        const auto writeEnd = [this, begin] {
            if (options.format == OutputFormat::TEXT)
                WriteSummary(std::chrono::duration<double>(Clock::now() - begin).count());
        };
        return RunInOrder(names, CountJobs(options), console, runOne, writeEnd);
    }

private:
    /// On any thread. @throws OutputFailed, and what else ends the work on this input
    ExitStatus RunInput(const std::string& name, InputOutput* output, const SizeKnown& sizeKnown) {
        CheckedInput input;
        ReadResult reading = ReadResult::UNREADABLE;
        try {
            reading = Check(name, output, sizeKnown, &input);
        } catch (const std::bad_alloc&) {
            reading = ReadResult::OUT_OF_MEMORY;
        } catch (const std::exception&) {
            Count(nullptr);
            throw;
        }
        if (reading != ReadResult::READ) {
            Count(nullptr);
            return ReportUnread(name, reading, options.format, nullptr, output);
        }
        Count(&input);
        return Report(name, input, output);
    }

    /// @return how its reading ended
    ReadResult Check(const std::string& name, InputOutput* output, const SizeKnown& sizeKnown, CheckedInput* input) {
        const OpenedInput opened = OpenInput(name, MakeReadingEvents(name, output, WHY_KEPT));
        InputSource* const source = opened.source.get();
        if (source == nullptr)
            return opened.result;
        sizeKnown(source->GetSize());
        std::unique_ptr<InputChecker> checker = checkers.Take();
        input->outcome = checker->Check(source, FollowWith(output));
        checkers.Return(std::move(checker));
        const ReadResult reading = source->GetFailure();
        input->size = CountBytes(*source);
        input->hasMore = !source->GetSize();
        return reading;
    }

    /// @param input  null for one that was not checked
    void Count(const CheckedInput* input) {
        const std::lock_guard lock(guard);
        if (input == nullptr) {
            ++totals.notChecked;
            return;
        }
        ++totals.files;
        totals.bytes += input->size;
        totals.tokens += input->outcome.tokens;
        totals.reproduced += input->outcome.IsReproduced() ? 1 : 0;
        totals.notChecked += input->outcome.result.copyLost ? 1 : 0;
    }

    /// @throws OutputFailed
    ExitStatus Report(const std::string& name, const CheckedInput& input, InputOutput* output) const {
        if (options.format == OutputFormat::JSON)
            WriteObject(name, input, output);
        else
            WriteLine(name, input, output);
        if (input.outcome.IsGood())
            return EXIT_STATUS_GOOD;
        return ReportFailure(name, DescribeTrouble(input.outcome), options.format, output);
    }

    static void WriteObject(const std::string& name, const CheckedInput& input, InputOutput* output) {
        JsonLine line(output);
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

    static void WriteLine(const std::string& name, const CheckedInput& input, InputOutput* output) {
        const CheckOutcome& outcome = input.outcome;
        const bool isExplained = outcome.result.GetFirstFailure() == 0 && outcome.HasLostMark();
        const bool showsPlace = outcome.firstDifference && !isExplained;
        const std::string trouble = showsPlace ? fmt::format("; {}", DescribeDifference(outcome)) : "";
        output->Line(fmt::format("{}: {}, {}{}, {}, {:.1f} MB/s{}", PrintableName(name), DescribeVerdict(outcome),
                                 input.hasMore ? "at least " : "", Counted(input.size, "byte"),
                                 Counted(outcome.tokens, "token"), Rate(input.size, outcome.seconds), trouble));
    }

    void WriteSummary(double seconds) {
        const std::string notChecked = totals.notChecked == 0 ? "" : fmt::format(", {} not checked", totals.notChecked);
        console->Line(fmt::format("{}, {}, {}, {:.1f} MB/s, {} reproduced{}", Counted(totals.files, "file"),
                                  Counted(totals.bytes, "byte"), Counted(totals.tokens, "token"),
                                  Rate(totals.bytes, seconds), totals.reproduced, notChecked));
    }

    const CheckOptions& options;
    Console* console;
    CheckerPool checkers;
    std::mutex guard;
    CheckTotals totals;  ///< guarded until all inputs are done
};

}  // namespace

ExitStatus RunCheck(const CheckOptions& options, Console* console) {
    return CheckCommand(options, console).Run();
}

}  // namespace Kestra::Tool
