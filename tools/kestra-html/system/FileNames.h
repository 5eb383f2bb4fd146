#pragma once

#include <filesystem>
#include <string>

namespace Kestra::Tool {

/// The path of a file name of the tool. Names are bytes as they are, and on Windows
/// UTF-8.
///
/// On Windows the path is absolute, and one that the system takes as it is: however long it is,
/// and also when its last part has the name of a device. A device alone ("NUL", "CONIN$") stays
/// one.
/// @return empty for a name with a NUL, which no file has
std::filesystem::path ToPath(const std::string& name);

}  // namespace Kestra::Tool
