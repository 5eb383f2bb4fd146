#pragma once

#include <filesystem>
#include <string>

namespace Kestra::Tool {

/// The path that a file name of the tool stands for. Names are bytes as they are, and on Windows UTF-8.
///
/// On Windows the path is one that the system takes however long it is; the old limit is 260 characters.
/// @return empty for a name with a NUL, which no file has
std::filesystem::path ToPath(const std::string& name);

}  // namespace Kestra::Tool
