#pragma once

#include <string>
#include <vector>

namespace Kestra::Tool {

/// Replaces every directory among the names by the web pages in it and below it: files whose names
/// end in ".html", ".htm" or ".xhtml" in any case, folder by folder in the order of `ListFolder`,
/// with names as `JoinNames` makes them. Links to folders are not followed, so that no walk is
/// endless; named themselves, they are. Other names stay as they are, and so does a directory that
/// cannot be read.
std::vector<std::string> ListInputs(const std::vector<std::string>& names);

}  // namespace Kestra::Tool
