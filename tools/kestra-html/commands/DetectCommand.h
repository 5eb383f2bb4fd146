#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "html/parser/GenericParser.h"
#include "tools/kestra-html/commands/Command.h"
#include "tools/kestra-html/commands/InputOptions.h"
#include "tools/kestra-html/output/Console.h"

namespace Kestra::Tool {

/// What the command line says about `kestra-html detect`.
struct DetectOptions : InputOptions {
    OutputFormat format = OutputFormat::TEXT;
    std::uint64_t minConfidence = HTML::GenericParser::DETECTCHARSET_MIN_CONFIDENCE;
    std::uint64_t bytes = std::uint64_t{1} << 20;  ///< looked at, of each input; 0 for all
};

/// Runs `kestra-html detect`: writes for every input its charset and where it comes from, and a
/// diagnostic for every one without a charset.
ExitStatus RunDetect(const DetectOptions& options, Console* console);

}  // namespace Kestra::Tool
