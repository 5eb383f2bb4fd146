#pragma once

#include <cstddef>
#include <string>

namespace Kestra::Tool {

/// Reads a whole file, pipe or device, or standard input for the name "-".
/// @return false when it cannot be opened, or not be read to its end
bool ReadInput(const std::string& name, std::string* bytes);

/// Reads a file only as far as its first `size` bytes. Standard input is read to its end all the same.
bool ReadInputStart(const std::string& name, std::size_t size, std::string* bytes);

}  // namespace Kestra::Tool
