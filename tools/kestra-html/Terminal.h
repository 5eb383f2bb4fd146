#pragma once

/// @file
/// What the tool asks the operating system about its standard streams: one source per platform.

namespace Kestra::Tool {

/// Makes the standard streams carry bytes as they are, and a pipe without a reader a failed write instead of the end of the process.
void PrepareStandardStreams();

bool IsOutputTerminal();
bool IsErrorTerminal();

/// True when standard output is a terminal that shows colours and NO_COLOR does not forbid them.
bool WantsColour();

}  // namespace Kestra::Tool
