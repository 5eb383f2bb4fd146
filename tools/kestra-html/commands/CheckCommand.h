#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/input/ParseOptions.h"
#include "tools/kestra-html/output/Console.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html check`.
struct CheckOptions : ParseOptions {
    static constexpr std::size_t MOST_JOBS = 1024;

    OutputFormat format = OutputFormat::TEXT;
    bool recursive = false;           ///< walk directories
    std::size_t jobs = 1;             ///< threads, 1 to MOST_JOBS
    std::vector<std::string> inputs;  ///< file and directory names, "-" for standard input; at least one
};

/// Runs `kestra-html check`: writes for every input whether its tokens reproduce it, and a
/// diagnostic for every one that is not good.
ExitStatus RunCheck(const CheckOptions& options, Console* console);

}  // namespace Kestra::Tool
