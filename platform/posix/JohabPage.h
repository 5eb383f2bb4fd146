#pragma once

#include <memory>

#include "platform/posix/OwnCodePages.h"

namespace Kestra::StringNS {

/// Johab, the code page 1361.
/// @return null when ICU has no table of 949. Throws `std::bad_alloc`.
std::unique_ptr<OwnCodePage> OpenJohabPage();

}  // namespace Kestra::StringNS
