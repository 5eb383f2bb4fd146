#pragma once

#include <string>
#include <vector>

#include "tools/kestra-html/commands/RewriteCommand.h"

namespace Kestra::Tool {

/// The options of a command line that more than one value or an optional value belongs to, and the
/// arguments that are left.
struct RewriteArguments : EditOptions {
    std::vector<std::string> rest;
};

/// Takes `--set`, `--replace`, `--remove`, `--remove-element` and `--in-place` out of arguments, up
/// to a "--". They are read here because the parser of options would take a value like "[0-9]" for
/// a list, and the order of the edits counts.
/// @throws CLI::ParseError  for what is wrong with them
RewriteArguments TakeRewriteArguments(const std::vector<std::string>& arguments);

}  // namespace Kestra::Tool
