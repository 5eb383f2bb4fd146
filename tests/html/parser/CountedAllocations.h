#pragma once

#include <cstddef>

namespace Kestra::Test {

/// How many blocks `operator new` has given out in this program, which replaces it.
std::size_t CountAllocations();

}  // namespace Kestra::Test
