#pragma once

#include "tools/kestra-html/Console.h"
#include "tools/kestra-html/ExitStatus.h"
#include "tools/kestra-html/TokensOptions.h"

namespace Kestra::Tool {

/// Runs `kestra-html tokens`: writes the token stream of every input, and a diagnostic for every
/// one that fails.
ExitStatus RunTokens(const TokensOptions& options, Console* console);

}  // namespace Kestra::Tool
