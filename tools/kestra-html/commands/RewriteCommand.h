#pragma once

#include <string>
#include <vector>

#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/commands/InputOptions.h"
#include "tools/kestra-html/input/ParseOptions.h"
#include "tools/kestra-html/output/Console.h"
#include "tools/kestra-html/rewriting/RewriteEdit.h"

namespace Kestra::Tool {

/// The edits that a command line asks for, and where they go.
struct EditOptions {
    std::vector<RewriteEdit> edits;  ///< in the order of the command line
    bool inPlace = false;            ///< write into the files
    std::string backupSuffix;        ///< for the name of the file as it was; empty for no backup
};

/// What the command line says about `kestra-html rewrite`. Of the options for parsing, charset,
/// input, the mode of scripts and the limit of a token are used.
struct RewriteOptions : ParseOptions, EditOptions, InputOptions {
    bool dryRun = false;  ///< list the edits and write nothing
};

/// Runs `kestra-html rewrite`: copies every input with its edits, or lists the edits, and says what
/// fails.
ExitStatus RunRewrite(const RewriteOptions& options, Console* console);

}  // namespace Kestra::Tool
