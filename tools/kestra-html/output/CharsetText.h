#pragma once

#include <string>

#include "platform/CharSet.h"

namespace Kestra::Tool {

/// A charset for one line of text: its code page and, in parentheses, its registered name;
/// "unknown" for 0.
std::string DescribeCharset(StringNS::CharSet::Code code);

/// The charset in which text of an unknown one is read, with the word "assumed".
std::string DescribeAssumedCharset();

/// False of a charset that the platform cannot decode.
bool HasConverter(StringNS::CharSet::Code code);

}  // namespace Kestra::Tool
