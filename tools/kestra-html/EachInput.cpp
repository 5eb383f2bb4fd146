#include "tools/kestra-html/EachInput.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <new>

#include "tools/kestra-html/Input.h"
#include "tools/kestra-html/LineSink.h"
#include "tools/kestra-html/PrintableName.h"

namespace Kestra::Tool {

ExitStatus RunEachInput(const std::vector<std::string>& names, OutputFormat format, Console* console, const RunInput& run) {
    const auto runInput = [&](std::size_t index) {
        Input input;
        input.name = names[index];
        if (!ReadInput(input.name, &input.bytes)) {
            console->Diagnose(input.name, "cannot be read");
            return EXIT_STATUS_UNREADABLE;
        }
        console->GetProgress().StartInput(index + 1, input.name, input.bytes.size());
        if (format == OutputFormat::TEXT && names.size() > 1)
            console->Line(fmt::format("{}==> {} <==", index > 0 ? "\n" : "", PrintableName(input.name)));
        try {
            return run(input);
        } catch (const std::bad_alloc&) {
            console->Diagnose(input.name, "not enough memory");
            return EXIT_STATUS_FAILED;
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
