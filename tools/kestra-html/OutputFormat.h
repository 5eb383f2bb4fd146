#pragma once

namespace Kestra::Tool {

/// How the output of a subcommand is written.
enum class OutputFormat { TEXT, JSON };

}  // namespace Kestra::Tool
