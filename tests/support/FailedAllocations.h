#pragma once

#include <cstddef>

/// @file
/// Makes one allocation of the program fail, by a replacement of `operator new`. A program that links it has no other replacement.

namespace Kestra::Test {

/// While it lives, allocation `number`, counted from 1, throws `std::bad_alloc`, or answers null where that is its way. One at a time, on
/// one thread.
class FailedAllocation {
public:
    explicit FailedAllocation(std::size_t number);
    FailedAllocation(const FailedAllocation&) = delete;
    FailedAllocation& operator=(const FailedAllocation&) = delete;
    ~FailedAllocation();

    /// Whether there were so many.
    bool HasFailed() const;
};

}  // namespace Kestra::Test
