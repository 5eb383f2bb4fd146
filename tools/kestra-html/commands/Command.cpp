#include "tools/kestra-html/commands/Command.h"

#include <fmt/format.h>

#include <algorithm>
#include <exception>
#include <new>
#include <system_error>

#include "tools/kestra-html/commands/InputNames.h"
#include "tools/kestra-html/commands/InputRuns.h"
#include "tools/kestra-html/output/JsonLine.h"
#include "tools/kestra-html/output/LineSink.h"
#include "tools/kestra-html/output/PrintableName.h"
#include "tools/kestra-html/system/TemporaryFolder.h"
#include "tools/kestra-html/system/Terminal.h"

namespace Kestra::Tool {

namespace {

/// Runs a subcommand over an input.
class InputRun {
public:
    InputRun(const std::vector<std::string>& inputNames, OutputFormat outputFormat, const RunInput& runInput)
        : names(inputNames), format(outputFormat), run(runInput) {}

    ExitStatus operator()(std::size_t index, InputOutput* output, const SizeKnown& sizeKnown) const {
        const std::string& name = names[index];
        try {
            const OpenedInput opened = OpenInput(name, MakeReadingEvents(name, output));
            if (opened.source == nullptr)
                return Report(name, opened.result, output);
            sizeKnown(opened.source->GetSize());
            if (format == OutputFormat::TEXT && names.size() > 1)
                output->Line(fmt::format("{}==> {} <==", index > 0 ? "\n" : "", PrintableName(name)));
            const ExitStatus status = run({name, opened.source.get()}, output);
            const ReadResult failure = opened.source->GetFailure();
            return failure == ReadResult::READ ? status : std::max(status, Report(name, failure, output));
        } catch (const std::bad_alloc&) {
            return Report(name, ReadResult::OUT_OF_MEMORY, output);
        }
    }

private:
    ExitStatus Report(const std::string& name, ReadResult result, InputOutput* output) const {
        return ReportUnread(name, result, format, "Error", output);
    }

    const std::vector<std::string>& names;
    OutputFormat format;
    const RunInput& run;
};

}  // namespace

bool IsColoured(ColourChoice choice) {
    // Asked always: it prepares a terminal that has to be.
    const bool isWanted = WantsColour();
    return choice == ColourChoice::ALWAYS || (choice == ColourChoice::AUTO && isWanted);
}

std::string DescribeUnread(ReadResult result) {
    switch (result.GetKind()) {
        case ReadResult::MISSING:
            return "cannot be read: no such file";
        case ReadResult::FORBIDDEN:
            return "cannot be read: permission denied";
        case ReadResult::FOLDER:
            return "cannot be read: it is a folder, use --recursive";
        case ReadResult::OUT_OF_MEMORY:
            return "not enough memory";
        case ReadResult::NO_TEMPORARY_FILE:
            return fmt::format("cannot be kept in a temporary file: the folder {} is full, read-only or missing",
                               PrintableName(GetTemporaryFolder()));
        case ReadResult::READ:
        case ReadResult::UNREADABLE:
            break;
    }
    return fmt::format("cannot be read: {}", std::generic_category().message(result.GetError()));
}

ExitStatus DiagnoseUnread(const std::string& name, ReadResult result, InputOutput* output) {
    output->Diagnose(name, DescribeUnread(result));
    const bool isReadable = result == ReadResult::OUT_OF_MEMORY || result == ReadResult::NO_TEMPORARY_FILE;
    return isReadable ? EXIT_STATUS_FAILED : EXIT_STATUS_UNREADABLE;
}

ExitStatus ReportUnread(const std::string& name, ReadResult result, OutputFormat format, const char* event,
                        InputOutput* output) {
    if (format == OutputFormat::JSON) {
        const std::string why = DescribeUnread(result);
        JsonLine line(output);
        if (event != nullptr)
            line.Begin(event);
        else
            line.Begin();
        line.String("error", &why);
        line.File(name);
        line.End();
    }
    return DiagnoseUnread(name, result, output);
}

ExitStatus ReportFailure(const std::string& name, const std::string& failure, OutputFormat format,
                         InputOutput* output) {
    if (format == OutputFormat::TEXT)
        output->DiagnoseAgain(name, failure);
    else
        output->Diagnose(name, failure);
    return EXIT_STATUS_FAILED;
}

ExitStatus EndFailedOutput(const OutputFailed& failure, ExitStatus status, Console* console) {
    console->GetProgress().Hide();  // for good: the tool may end without its destructors
    console->Complain(failure.what());
    return std::max(status, failure.IsReaderGone() ? EXIT_STATUS_READER_GONE : EXIT_STATUS_FAILED);
}

ReadingEvents MakeReadingEvents(const std::string& name, InputOutput* output, std::string_view whyKept) {
    ReadingEvents events;
    events.onWait = [output] { output->FlushBeforeWait(); };
    events.onFile = [name, output, whyKept] {
        try {
            output->Remark(name, fmt::format("kept in a temporary file, {}", whyKept));
        } catch (const std::exception&) {  // nothing is written any more, or this one has no memory
        }
    };
    return events;
}

BytesDone FollowWith(InputOutput* output) {
    return [output](std::uint64_t bytes) { output->Advance(bytes); };
}

std::uint64_t CountBytes(const InputSource& source) {
    return source.GetSize().value_or(source.GetFurthest());
}

std::string DescribeSize(const InputSource& source) {
    return fmt::format("{}{}", source.GetSize() ? "" : "at least ", CountBytes(source));
}

ExitStatus RunEachInput(const InputOptions& options, OutputFormat format, bool oneAtATime, Console* console,
                        const RunInput& run) {
    std::vector<std::string> names;
    const ExitStatus status = ListInputNames(options, console, &names);
    if (status != EXIT_STATUS_GOOD)
        return status;
    return RunInOrder(names, oneAtATime ? 1 : CountJobs(options), console, InputRun(names, format, run));
}

}  // namespace Kestra::Tool
