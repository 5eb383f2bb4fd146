#pragma once

#include <string>

#include "platform/Characters.h"

namespace Kestra::Tool {

/// Appends a JSON string, quotation marks included, in UTF-8, that is safe in a script element of
/// a page: no "<", ">" or "&" that an HTML parser could see, no line separator, no lone surrogate,
/// no control character, no mark of direction. All of these are written as escapes, so that the
/// text comes out of a JSON parser unit for unit.
void AppendScriptJson(std::string* json, WideStringView text);

}  // namespace Kestra::Tool
