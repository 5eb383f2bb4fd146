#pragma once

#include <cstddef>

/// @file
/// What the program takes from the heap. A program gets it by one of two sources: `CountedNew.cpp`
/// replaces `operator new` and counts what it gives out; `posix/CountedMalloc.cpp` replaces
/// `malloc` and sees what the libraries take as well, but no sanitizer admits it. The first counts
/// the bytes asked for, the second those given. One thread only.

namespace Kestra::Test {

/// How many blocks have been given out; one that grew or moved counts as another one.
std::size_t CountAllocations();

/// The bytes in use.
std::size_t GetHeapSize();

/// The most bytes that have been in use at once since the last `RestartHeapPeak`.
std::size_t GetHeapPeak();
void RestartHeapPeak();

}  // namespace Kestra::Test
