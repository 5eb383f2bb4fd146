#pragma once

#include "platform/CharSet.h"

namespace Kestra::Tool {

/// The charset in which the library reads text of an unknown one: 1252, and on Windows the ANSI
/// code page of the process.
StringNS::CharSet::Code GetAnsiCharset();

}  // namespace Kestra::Tool
