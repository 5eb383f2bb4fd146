#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tools/kestra-html/commands/CheckCommand.h"
#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/commands/DetectCommand.h"
#include "tools/kestra-html/commands/EventsCommand.h"
#include "tools/kestra-html/commands/RewriteCommand.h"
#include "tools/kestra-html/commands/TokensCommand.h"
#include "tools/kestra-html/commands/ViewCommand.h"

namespace Kestra::Tool {

/// What the command line asks for: the run of a subcommand, or only an answer.
struct CommandLine {
    /// The subcommand, by its options.
    std::variant<TokensOptions, EventsOptions, CheckOptions, DetectOptions, RewriteOptions, ViewOptions> run;
    std::optional<ExitStatus> answered;  ///< when set, nothing is run: the text below is all
    /// Help or version for standard output, or what is wrong for standard error; no line feed at
    /// its end.
    std::string answer;
};

/// @param arguments  without the program's name
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace Kestra::Tool
