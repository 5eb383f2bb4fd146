#pragma once

#include <string>
#include <string_view>

#include "platform/Characters.h"

namespace Kestra::Tool {

/// Appends a JSON string, quotation marks included, in pure ASCII: control characters and
/// everything from U+007F up are escaped.

/// Each byte is one code point, U+0000 to U+00FF.
void AppendJsonString(std::string* json, std::string_view bytes);

/// UTF-16; a surrogate, paired or alone, is written as its own escape.
void AppendJsonString(std::string* json, WideStringView text);

}  // namespace Kestra::Tool
