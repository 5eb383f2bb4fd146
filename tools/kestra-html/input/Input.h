#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "platform/InputStream.h"

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

struct OpenedInput {
    std::unique_ptr<VFS::InputStream> stream;  ///< null when it cannot be opened or read
    std::uint64_t size = 0;                    ///< in bytes
};

/// Opens a file, or standard input for the name "-", to be read piece by piece.
/// @param readsAgain  it can also be read again after a `Seek`. What can be read only once, as a
///                    pipe, is kept for that, in a temporary file when it is long
OpenedInput OpenInput(const std::string& name, bool readsAgain);

}  // namespace Kestra::Tool
