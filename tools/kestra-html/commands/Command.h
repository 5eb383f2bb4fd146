#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tools/kestra-html/input/Input.h"
#include "tools/kestra-html/output/Console.h"

namespace Kestra::Tool {

/// How the output of a subcommand is written.
enum class OutputFormat { TEXT, JSON };

/// How the tool ends. Of several, the greatest counts.
enum ExitStatus : int {
    EXIT_STATUS_GOOD = 0,
    EXIT_STATUS_FAILED = 1,      ///< an input ended with a result code other than 0, or output could not be written
    EXIT_STATUS_USAGE = 2,       ///< wrong usage; nothing was processed
    EXIT_STATUS_UNREADABLE = 3,  ///< a file cannot be read
};

/// An input on its way through a subcommand.
struct Input {
    std::string name;  ///< as given on the command line
    std::string bytes;
};

/// Says on standard error why an input was not read.
/// @param result  not READ
/// @return the exit status for it
ExitStatus DiagnoseUnread(const std::string& name, ReadResult result, Console* console);

/// Parses an input, writes what it finds and says what is wrong.
/// @return how it ended.
/// @throws OutputFailed, std::bad_alloc
using RunInput = std::function<ExitStatus(const Input& input)>;

/// Runs a subcommand over its inputs, one after the other: reads each of them, announces it to the
/// progress line and, in the text format of several inputs, by a header. What cannot be read or
/// does not fit the memory gets a diagnostic, and the next one its turn.
/// @return how the worst one ended
ExitStatus RunEachInput(const std::vector<std::string>& names, OutputFormat format, Console* console,
                        const RunInput& run);

}  // namespace Kestra::Tool
