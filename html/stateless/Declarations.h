#pragma once

#include <cstdint>

#include "html/stateless/Scan.h"

/// @file
/// Declarations, "<!name items>", and instructions, "<?name attributes?>". The functions are like
/// those for tags. Not installed.

namespace Kestra::HTML::Stateless {

void InitEntityTagParser(Data& data);
std::uint32_t ParseEntityTag(Data& data);

void InitExternTagParser(Data& data);
std::uint32_t ParseExternTag(Data& data);

}  // namespace Kestra::HTML::Stateless
