#include "tools/kestra-html/commands/Command.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <new>

#include "tools/kestra-html/output/LineSink.h"
#include "tools/kestra-html/output/PrintableName.h"

namespace Kestra::Tool {

ExitStatus DiagnoseUnread(const std::string& name, ReadResult result, Console* console) {
    const bool isUnreadable = result == ReadResult::UNREADABLE;
    console->Diagnose(name, isUnreadable ? "cannot be read" : "not enough memory");
    return isUnreadable ? EXIT_STATUS_UNREADABLE : EXIT_STATUS_FAILED;
}

ExitStatus RunEachInput(const std::vector<std::string>& names, OutputFormat format, Console* console,
                        const RunInput& run) {
    const auto runInput = [&](std::size_t index) {
        Input input;
        input.name = names[index];
        if (const ReadResult result = ReadInput(input.name, &input.bytes); result != ReadResult::READ)
            return DiagnoseUnread(input.name, result, console);
        console->GetProgress().StartInput(index + 1, input.name, input.bytes.size());
        if (format == OutputFormat::TEXT && names.size() > 1)
            console->Line(fmt::format("{}==> {} <==", index > 0 ? "\n" : "", PrintableName(input.name)));
        try {
            return run(input);
        } catch (const std::bad_alloc&) {
            return DiagnoseUnread(input.name, ReadResult::OUT_OF_MEMORY, console);
        }
    };
    ExitStatus status = EXIT_STATUS_GOOD;
    try {
        console->GetProgress().SetInputCount(names.size());
        for (std::size_t i = 0; i < names.size(); ++i)
            status = std::max(status, runInput(i));
        console->Flush();
    } catch (const OutputFailed& failure) {
        status = std::max(status, EXIT_STATUS_FAILED);
        console->Complain(failure.what());
    }
    return status;
}

}  // namespace Kestra::Tool
