#pragma once

#include "tools/kestra-html/commandline/Subcommand.h"
#include "tools/kestra-html/commands/CheckCommand.h"
#include "tools/kestra-html/commands/DetectCommand.h"
#include "tools/kestra-html/commands/EventsCommand.h"
#include "tools/kestra-html/commands/RewriteCommand.h"
#include "tools/kestra-html/commands/TokensCommand.h"
#include "tools/kestra-html/commands/ViewCommand.h"

namespace Kestra::Tool {

/// Declares the options of a subcommand.
/// @param options  borrowed; what they fill
void DeclareOptions(Subcommand* command, TokensOptions* options);
void DeclareOptions(Subcommand* command, EventsOptions* options);
void DeclareOptions(Subcommand* command, CheckOptions* options);
void DeclareOptions(Subcommand* command, DetectOptions* options);
/// The edits and where they go are only in the help: `TakeRewriteArguments` reads them.
void DeclareOptions(Subcommand* command, RewriteOptions* options);
void DeclareOptions(Subcommand* command, ViewOptions* options);

}  // namespace Kestra::Tool
