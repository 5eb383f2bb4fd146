#pragma once

#include "tools/kestra-html/Console.h"
#include "tools/kestra-html/EventsOptions.h"
#include "tools/kestra-html/ExitStatus.h"

namespace Kestra::Tool {

/// Runs `kestra-html events`: writes the events of every input, and a diagnostic for every one that
/// fails.
ExitStatus RunEvents(const EventsOptions& options, Console* console);

}  // namespace Kestra::Tool
