#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/commands/InputOptions.h"
#include "tools/kestra-html/input/ParseOptions.h"
#include "tools/kestra-html/output/Console.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html check`.
struct CheckOptions : ParseOptions, InputOptions {
    OutputFormat format = OutputFormat::TEXT;
};

/// Runs `kestra-html check`: writes for every input whether its tokens reproduce it, and a
/// diagnostic for every one that is not good.
ExitStatus RunCheck(const CheckOptions& options, Console* console);

}  // namespace Kestra::Tool
