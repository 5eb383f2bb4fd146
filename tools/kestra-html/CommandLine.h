#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "tools/kestra-html/CheckOptions.h"
#include "tools/kestra-html/DetectOptions.h"
#include "tools/kestra-html/EventsOptions.h"
#include "tools/kestra-html/ExitStatus.h"
#include "tools/kestra-html/RewriteOptions.h"
#include "tools/kestra-html/TokensOptions.h"

namespace Kestra::Tool {

/// What the command line asks for: the run of a subcommand, or only an answer.
struct CommandLine {
    std::variant<TokensOptions, EventsOptions, CheckOptions, DetectOptions, RewriteOptions>
        run;                             ///< the subcommand, by its options
    std::optional<ExitStatus> answered;  ///< when set, nothing is run: the text below is all
    std::string
        answer;  ///< help or version for standard output, or what is wrong for standard error; no line feed at its end
};

/// @param arguments  without the program's name
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace Kestra::Tool
