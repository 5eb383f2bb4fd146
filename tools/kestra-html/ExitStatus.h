#pragma once

namespace Kestra::Tool {

/// How the tool ends. Of several, the greatest counts.
enum ExitStatus : int {
    EXIT_STATUS_GOOD = 0,
    EXIT_STATUS_FAILED = 1,      ///< an input ended with a result code other than 0, or output could not be written
    EXIT_STATUS_USAGE = 2,       ///< wrong usage; nothing was processed
    EXIT_STATUS_UNREADABLE = 3,  ///< a file cannot be read
};

}  // namespace Kestra::Tool
