#pragma once

#include "platform/Characters.h"

namespace Kestra::C {

/// A path of a host, which gives UTF-8, as the library takes it.
/// @return empty for null, and for what is no UTF-8: there is no such file
WideString MakeWidePath(const char* path);

}  // namespace Kestra::C
