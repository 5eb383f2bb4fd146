#pragma once

#include <cstddef>

/// @file
/// Makes an allocation fail. The source replaces the allocation functions of its program, so a
/// program that wants it lists both files. One thread only.

namespace Kestra::Test {

/// For as long as it lives, one call of `operator new` fails. One at a time; a test looks at its
/// results afterwards.
class FailingAllocation {
public:
    /// @param number  of the call that fails, counted from 1
    explicit FailingAllocation(std::size_t number);
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;
    ~FailingAllocation();

    /// False when there were not so many calls.
    bool HasFailed() const;
};

}  // namespace Kestra::Test
