#pragma once

#include <string>
#include <vector>

#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/input/EventsPass.h"
#include "tools/kestra-html/output/Console.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html events`.
struct EventsOptions : EventsPassOptions {
    OutputFormat format = OutputFormat::TEXT;
    bool places = false;              ///< write where each construct lies
    std::vector<std::string> inputs;  ///< file names, "-" for standard input; at least one
};

/// Runs `kestra-html events`: writes the events of every input, and a diagnostic for every one that
/// fails.
ExitStatus RunEvents(const EventsOptions& options, Console* console);

}  // namespace Kestra::Tool
