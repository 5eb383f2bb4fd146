#pragma once

#include <string_view>

namespace Kestra::Tool {

/// The page of `kestra-html view` without its data, made from the files of the folder `page/` when
/// the tool is built: what comes before the data, with the style sheet, and what follows them, with
/// the script. The page allows this style sheet and this script by their hashes and nothing else.
std::string_view GetViewPageStart();
std::string_view GetViewPageEnd();

}  // namespace Kestra::Tool
