#pragma once

#include <string>
#include <vector>

#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/commands/InputOptions.h"
#include "tools/kestra-html/input/EventsPass.h"
#include "tools/kestra-html/output/Console.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html events`.
struct EventsOptions : EventsPassOptions, InputOptions {
    OutputFormat format = OutputFormat::TEXT;
    ColourChoice colour = ColourChoice::AUTO;  ///< of the text format
    bool places = false;                       ///< write where each construct lies
    bool lineBuffered = false;                 ///< write each line at once
};

/// Runs `kestra-html events`: writes the events of every input, and a diagnostic for every one that
/// fails.
ExitStatus RunEvents(const EventsOptions& options, Console* console);

}  // namespace Kestra::Tool
