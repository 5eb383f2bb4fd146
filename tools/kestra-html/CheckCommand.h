#pragma once

#include "tools/kestra-html/CheckOptions.h"
#include "tools/kestra-html/Console.h"
#include "tools/kestra-html/ExitStatus.h"

namespace Kestra::Tool {

/// Runs `kestra-html check`: writes for every input whether its tokens reproduce it, and a
/// diagnostic for every one that is not good.
ExitStatus RunCheck(const CheckOptions& options, Console* console);

}  // namespace Kestra::Tool
