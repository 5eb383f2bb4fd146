#pragma once

#include "tools/kestra-html/Console.h"
#include "tools/kestra-html/DetectOptions.h"
#include "tools/kestra-html/ExitStatus.h"

namespace Kestra::Tool {

/// Runs `kestra-html detect`: writes for every input what `DetectCharset` answers, and a diagnostic
/// for every one without a charset.
ExitStatus RunDetect(const DetectOptions& options, Console* console);

}  // namespace Kestra::Tool
