#pragma once

#include <cstddef>
#include <string>

#include "tools/kestra-html/Console.h"
#include "tools/kestra-html/ExitStatus.h"

namespace Kestra::Tool {

/// How the reading of an input ended.
enum class ReadResult {
    READ,
    UNREADABLE,     ///< it cannot be opened, or not be read to its end
    OUT_OF_MEMORY,  ///< it does not fit the memory
};

/// Reads a whole file, pipe or device, or standard input for the name "-".
ReadResult ReadInput(const std::string& name, std::string* bytes);

/// Reads a file only as far as its first `size` bytes. Standard input is read to its end all the
/// same.
ReadResult ReadInputStart(const std::string& name, std::size_t size, std::string* bytes);

/// Says on standard error why an input was not read. @param result  not READ. @return the exit
/// status for it
ExitStatus DiagnoseUnread(const std::string& name, ReadResult result, Console* console);

}  // namespace Kestra::Tool
