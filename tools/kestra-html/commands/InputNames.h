#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/commands/InputOptions.h"
#include "tools/kestra-html/output/Console.h"

namespace Kestra::Tool {

/// The inputs of a command line: names, those of a file, and with `recursive` the pages in folders.
/// @param names  complete when the answer is good
/// @return how it ended; said on standard error when the file of names cannot be read, and when a
///         pipe is named more than once
ExitStatus ListInputNames(const InputOptions& options, Console* console, std::vector<std::string>* names);

/// Inputs at a time: as many as the machine has cores when the command line does not say.
std::size_t CountJobs(const InputOptions& options);

}  // namespace Kestra::Tool
