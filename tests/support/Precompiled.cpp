// Nothing: CMake makes a precompiled header for the sources of a library.
#include "tests/support/Precompiled.h"
