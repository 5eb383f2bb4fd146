#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tools/kestra-html/RewriteEdit.h"
#include "tools/kestra-html/RewriteOptions.h"
#include "tools/kestra-html/Subcommands.h"

namespace Kestra::Tool {

class RewriteSubcommand final : public ParsingSubcommand {
public:
    explicit RewriteSubcommand(CLI::App* tool);

    /// Takes the edits out of the arguments. @return what is left for the parser of options.
    /// @throws CLI::ParseError
    std::vector<std::string> TakeEdits(const std::vector<std::string>& arguments);

    /// What the options mean. @throws CLI::ParseError
    RewriteOptions GetOptions() const;

private:
    RewriteArguments taken;
    bool dryRun = false;
    std::string helpOnly;
};

}  // namespace Kestra::Tool
