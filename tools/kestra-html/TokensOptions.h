#pragma once

#include <string>
#include <vector>

#include "tools/kestra-html/OutputFormat.h"
#include "tools/kestra-html/ParseOptions.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html tokens`.
struct TokensOptions : ParseOptions {
    enum class Observer { WIDE, NARROW };

    OutputFormat format = OutputFormat::TEXT;
    Observer observer = Observer::WIDE;
    bool places = false;              ///< write where each token lies
    std::vector<std::string> inputs;  ///< file names, "-" for standard input; at least one
};

}  // namespace Kestra::Tool
