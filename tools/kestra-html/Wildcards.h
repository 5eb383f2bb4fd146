#pragma once

#include <string>
#include <vector>

namespace Kestra::Tool {

/// Replaces names with wildcards by those of the files and folders that match, in the order of
/// `ListFolder`. A name that nothing matches stays as it is.
///
/// Only on Windows, where it is left to the programs: "*" stands for any characters, "?" for one,
/// in every part of a path, regardless of case. Shells of other systems have done it before, and
/// the characters can be those of a name.
std::vector<std::string> ExpandWildcards(const std::vector<std::string>& names);

}  // namespace Kestra::Tool
