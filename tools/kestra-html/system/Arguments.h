#pragma once

#include <string>
#include <vector>

namespace Kestra::Tool {

/// The arguments after the program's name: bytes as they are, and on Windows in UTF-8 whatever the
/// code page.
/// @param argc, argv  those of `main`
std::vector<std::string> GetArguments(int argc, const char* const* argv);

/// Replaces names with wildcards by those of the files and folders that match, in the order of
/// `ListFolder`. A name that nothing matches stays as it is.
///
/// Only on Windows, where it is left to the programs: "*" matches any characters, "?" one,
/// in every part of a path, regardless of case. Shells of other systems have done it before, and
/// the characters can be those of a name.
std::vector<std::string> ExpandWildcards(const std::vector<std::string>& names);

}  // namespace Kestra::Tool
