#include "tests/support/FailingNew.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::size_t callsLeft = 0;  // up to the one that fails; 0: none is to fail
bool hasFailed = false;

bool FailsNow() noexcept {
    if (callsLeft == 0 || --callsLeft > 0)
        return false;
    hasFailed = true;
    return true;
}

}  // namespace

// The other forms, but those for more than the ordinary alignment, come here.
void* operator new(std::size_t size) {
    void* const memory = FailsNow() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace Kestra::Test {

FailingAllocation::FailingAllocation(std::size_t number) {
    callsLeft = number;
    hasFailed = false;
}

FailingAllocation::~FailingAllocation() {
    callsLeft = 0;
}

bool FailingAllocation::HasFailed() const {
    return hasFailed;
}

}  // namespace Kestra::Test
