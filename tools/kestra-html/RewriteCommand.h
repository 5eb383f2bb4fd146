#pragma once

#include "tools/kestra-html/Console.h"
#include "tools/kestra-html/ExitStatus.h"
#include "tools/kestra-html/RewriteOptions.h"

namespace Kestra::Tool {

/// Runs `kestra-html rewrite`: copies every input with its edits, or lists the edits, and says what
/// fails.
ExitStatus RunRewrite(const RewriteOptions& options, Console* console);

}  // namespace Kestra::Tool
