#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "html/parser/GenericParser.h"
#include "tools/kestra-html/OutputFormat.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html detect`.
struct DetectOptions {
    OutputFormat format = OutputFormat::TEXT;
    std::uint64_t minConfidence = HTML::GenericParser::DETECTCHARSET_MIN_CONFIDENCE;
    std::vector<std::string> inputs;  ///< file names, "-" for standard input; at least one
};

}  // namespace Kestra::Tool
