#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/kestra-html/FeedOptions.h"
#include "tools/kestra-html/OutputFormat.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html events`.
struct EventsOptions : FeedOptions {
    OutputFormat format = OutputFormat::TEXT;
    std::uint32_t flags = 1;          ///< for `SetFlags`
    bool places = false;              ///< write where each construct lies
    std::vector<std::string> inputs;  ///< file names, "-" for standard input; at least one
};

}  // namespace Kestra::Tool
