#pragma once

#include <string>

#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/commands/InputOptions.h"
#include "tools/kestra-html/input/ParseOptions.h"
#include "tools/kestra-html/output/Console.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html view`. Of the options for inputs only their names
/// are used, and there is one.
struct ViewOptions : ParseOptions, InputOptions {
    std::string output = "-";  ///< the file to write, "-" for standard output
};

/// Runs `kestra-html view`: writes a page that shows the tokens of an input, whatever the result of
/// the parse, and says what is wrong.
ExitStatus RunView(const ViewOptions& options, Console* console);

}  // namespace Kestra::Tool
