#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/kestra-html/Console.h"
#include "tools/kestra-html/ExitStatus.h"
#include "tools/kestra-html/OutputFormat.h"

namespace Kestra::Tool {

/// An input on its way through a subcommand.
struct Input {
    std::string name;  ///< as given on the command line
    std::string bytes;
};

/// Parses an input, writes what it finds and says what is wrong. @return how it ended.
/// @throws OutputFailed, std::bad_alloc
using RunInput = std::function<ExitStatus(const Input& input)>;

/// Runs a subcommand over its inputs, one after the other: reads each of them, announces it to the
/// progress line and, in the text format of several inputs, by a header. What cannot be read or
/// does not fit the memory gets a diagnostic, and the next one its turn.
/// @return how the worst one ended
ExitStatus RunEachInput(const std::vector<std::string>& names, OutputFormat format, Console* console,
                        const RunInput& run);

}  // namespace Kestra::Tool
