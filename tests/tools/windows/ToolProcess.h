#pragma once

#include <string>
#include <vector>

#include "tests/tools/ToolRun.h"
#include "tests/tools/windows/Handle.h"

namespace Kestra::Test {

struct Pipe {
    Pipe();

    Handle reader;
    Handle writer;
};

/// The standard streams of a process; null for one that is closed.
struct StandardHandles {
    HANDLE input;
    HANDLE output;
    HANDLE errors;
};

/// Starts the built tool, which inherits these streams and no other handle. Of the settings, the
/// environment and the folder are used.
/// @return the process
Handle StartTool(const std::vector<std::string>& arguments, const ToolSettings& settings,
                 const StandardHandles& streams);

/// Waits for the end.
/// @return the exit status
int WaitForTool(const Handle& process);

}  // namespace Kestra::Test
