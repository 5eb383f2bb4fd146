#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace Kestra::Tool {

/// UTF-16 of a text in UTF-8. What is no UTF-8 becomes U+FFFD.
/// @param text  less than 2 GB
std::wstring ToWide(std::string_view text);

/// UTF-8 of a text in UTF-16. A lone surrogate becomes U+FFFD.
/// @param text  less than 512 M units
std::string FromWide(std::wstring_view text);

/// The same for names of files, which the system makes of any units: a lone surrogate becomes three
/// bytes, which are no UTF-8, and comes back from them. So a name of the system means the same file
/// on its way through the tool.
std::wstring NameToWide(std::string_view name);
std::string NameFromWide(std::wstring_view name);

/// The length of the front of a text that is at most `limit` bytes long, 4 or more, and does not
/// end inside a character. Where there is no UTF-8 it is `limit`.
std::size_t FindCut(std::string_view text, std::size_t limit);

}  // namespace Kestra::Tool
