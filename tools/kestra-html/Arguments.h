#pragma once

#include <string>
#include <vector>

namespace Kestra::Tool {

/// The arguments after the program's name: bytes as they are, and on Windows in UTF-8 whatever the
/// code page.
/// @param argc, argv  those of `main`
std::vector<std::string> GetArguments(int argc, const char* const* argv);

}  // namespace Kestra::Tool
