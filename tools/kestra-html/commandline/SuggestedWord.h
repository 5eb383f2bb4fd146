#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Kestra::Tool {

/// Finds the known word that was most probably meant.
/// @return ", did you mean WORD?", or nothing when no word is near
std::string SuggestWord(std::string_view word, const std::vector<std::string>& known);

}  // namespace Kestra::Tool
