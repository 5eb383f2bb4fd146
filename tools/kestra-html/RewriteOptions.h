#pragma once

#include <string>
#include <vector>

#include "tools/kestra-html/ParseOptions.h"
#include "tools/kestra-html/RewriteEdit.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html rewrite`. Of the options for parsing, charset,
/// input, the mode of scripts and the limit of a token are used.
struct RewriteOptions : ParseOptions {
    std::vector<RewriteEdit> edits;  ///< in the order of the command line
    bool inPlace = false;            ///< write into the files
    std::string backupSuffix;        ///< for the name of the file as it was; empty for no backup
    bool dryRun = false;             ///< list the edits and write nothing
    std::vector<std::string> inputs;
};

}  // namespace Kestra::Tool
