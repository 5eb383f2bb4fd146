#pragma once

namespace Kestra::Test {

/// For as long as it lives, `operator new` of this program fails on this thread. One at a time; a
/// test looks at its results afterwards, as its own words need memory.
class NoMemory {
public:
    NoMemory();
    NoMemory(const NoMemory&) = delete;
    NoMemory& operator=(const NoMemory&) = delete;
    ~NoMemory();
};

}  // namespace Kestra::Test
