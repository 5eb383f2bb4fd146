#pragma once

#include <cstdint>

#include "html/stateless/Scan.h"

/// @file
/// Comments, from after "<!--". Not installed.

namespace Kestra::HTML::Stateless {

void InitCommentTagParser(Data& data);

/// The body, into `identifier`.
/// @return 0 when it is complete, also because the piece is used up; 711
std::uint32_t ParseCommentTag(Data& data);

}  // namespace Kestra::HTML::Stateless
