#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace Kestra::Tool {

/// The standard streams for the life of the program: they carry bytes as they are, and a pipe
/// without a reader is a failed write instead of the end of the process. What `WantsColour` changes
/// is undone at the end.
class StandardStreams {
public:
    StandardStreams();
    StandardStreams(const StandardStreams&) = delete;
    StandardStreams& operator=(const StandardStreams&) = delete;
    ~StandardStreams();
};

bool IsOutputTerminal();
bool IsErrorTerminal();

/// The columns of the terminal that is standard error; 0 when they are not known.
std::size_t GetErrorTerminalWidth();

/// True when standard output is a terminal that shows colours and NO_COLOR does not forbid them. A
/// console of Windows is switched to them by the call.
bool WantsColour();

/// Why bytes could not be written.
struct WriteFailure {
    bool isReaderGone = false;  ///< standard output is a pipe whose reader has gone
    std::string reason;         ///< in the system's words
};

/// Writes bytes to standard output at once. A console of Windows gets them as text: they are taken
/// for UTF-8, and shown right in every code page of the console.
/// @param bytes  whole lines, or a part of one that ends between two characters
/// @return nothing when all of them have been written
std::optional<WriteFailure> WriteOutput(std::string_view bytes);

/// The same for standard error. When it fails, there is no place left to say so.
void WriteErrors(std::string_view bytes);

}  // namespace Kestra::Tool
