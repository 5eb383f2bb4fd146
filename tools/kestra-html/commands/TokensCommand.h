#pragma once

#include <string>
#include <vector>

#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/commands/InputOptions.h"
#include "tools/kestra-html/input/ParseOptions.h"
#include "tools/kestra-html/output/Console.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html tokens`.
struct TokensOptions : ParseOptions, InputOptions {
    enum class Observer { WIDE, NARROW };

    OutputFormat format = OutputFormat::TEXT;
    ColourChoice colour = ColourChoice::AUTO;  ///< of the text format
    Observer observer = Observer::WIDE;
    bool places = false;        ///< write where each token lies
    bool lineBuffered = false;  ///< write each line at once
};

/// Runs `kestra-html tokens`: writes the token stream of every input, and a diagnostic for every
/// one that fails.
ExitStatus RunTokens(const TokensOptions& options, Console* console);

}  // namespace Kestra::Tool
