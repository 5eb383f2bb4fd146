#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace Kestra::Tool {

/// What the command line says about the inputs of a subcommand.
struct InputOptions {
    static constexpr std::size_t MOST_JOBS = 1024;
    static constexpr std::size_t AS_MANY_AS_CORES = 0;

    std::vector<std::string> inputs;      ///< file names, "-" for standard input; at least one, or `filesFrom`
    bool recursive = false;               ///< walk directories
    std::string filesFrom;                ///< a file with more names, "-" for standard input; empty for none
    bool isNulSeparated = false;          ///< the names in that file, instead of one a line
    std::size_t jobs = AS_MANY_AS_CORES;  ///< inputs at a time, to MOST_JOBS
};

}  // namespace Kestra::Tool
