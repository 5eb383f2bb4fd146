#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "html/stateless/StatelessHTMLParser.h"
#include "tools/kestra-html/FeedOptions.h"
#include "tools/kestra-html/OutputFormat.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html events`.
struct EventsOptions : FeedOptions {
    OutputFormat format = OutputFormat::TEXT;
    std::uint32_t flags = 1;  ///< for `SetFlags`
    HTML::StatelessHTMLParser::ScriptMode scriptMode = HTML::StatelessHTMLParser::SCRIPT_AS_TOKENS;
    bool places = false;              ///< write where each construct lies
    std::vector<std::string> inputs;  ///< file names, "-" for standard input; at least one
};

}  // namespace Kestra::Tool
