#include "tools/kestra-html/EachInput.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <new>

#include "tools/kestra-html/Input.h"
#include "tools/kestra-html/LineSink.h"
#include "tools/kestra-html/PrintableName.h"

namespace Kestra::Tool {

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
