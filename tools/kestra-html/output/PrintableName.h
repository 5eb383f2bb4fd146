#pragma once

#include <string>
#include <string_view>

namespace Kestra::Tool {

/// A file name, or what else the user has written, for one line of text. Names are UTF-8: a control
/// character of ASCII and a byte that belongs to no character are shown as `\x1B`, a C1 control, a
/// mark of direction and every other character that a terminal obeys or shows as nothing as
/// `\u202E`, or `\U000E0041` above U+FFFF. Everything else stays as it is.
std::string PrintableName(std::string_view name);

}  // namespace Kestra::Tool
