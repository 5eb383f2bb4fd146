#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Kestra::Test {

/// How one of the tool's output streams is set up.
enum class Sink {
    CAPTURED,     ///< a file
    TERMINAL,     ///< a terminal that changes nothing; at most one stream at a time. On Windows a console, and what it
                  ///< shows at the end
    CLOSED,       ///< not open at all
    CLOSED_PIPE,  ///< a pipe whose reader is gone
    UNWRITABLE    ///< every write fails: the disk is full, or on Windows the file may only be read
};

struct ToolSettings {
    std::optional<std::string> input = "";  ///< comes through a pipe; nothing: standard input is not open
    Sink output = Sink::CAPTURED;
    Sink errors = Sink::CAPTURED;
    std::map<std::string, std::string> environment;  ///< on top of one for colours
    std::string folder;                              ///< to run in; empty for the current one
    std::optional<std::uint64_t>
        largestFile;  ///< bytes that a file of the tool can have, as on a full disk; on POSIX only
};

struct ToolRun {
    int status = -1;  ///< exit status; on POSIX 128 and the signal's number when a signal ended the tool
    std::string output;
    std::string errors;
};

/// Runs the built tool with these arguments and waits for its end.
ToolRun RunTool(const std::vector<std::string>& arguments, const ToolSettings& settings = {});

/// What the system says about writing to it, for CLOSED and UNWRITABLE.
std::string GetReason(Sink sink);

/// Runs it with this standard input.
ToolRun RunToolOn(std::string_view input, const std::vector<std::string>& arguments);

}  // namespace Kestra::Test
