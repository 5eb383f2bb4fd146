#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "html/parser/GenericParser.h"
#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/output/Console.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html detect`.
struct DetectOptions {
    OutputFormat format = OutputFormat::TEXT;
    std::uint64_t minConfidence = HTML::GenericParser::DETECTCHARSET_MIN_CONFIDENCE;
    std::vector<std::string> inputs;  ///< file names, "-" for standard input; at least one
};

/// Runs `kestra-html detect`: writes for every input what `DetectCharset` answers, and a diagnostic
/// for every one without a charset.
ExitStatus RunDetect(const DetectOptions& options, Console* console);

}  // namespace Kestra::Tool
