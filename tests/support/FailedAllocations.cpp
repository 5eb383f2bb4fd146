#include "tests/support/FailedAllocations.h"

#include <cstdlib>
#include <new>

// All forms are replaced but those for more than the ordinary alignment: a runtime that has replaced them itself does not come here from
// one form to another.

namespace {

std::size_t allocationsLeft = 0;  // until one fails, that one included; 0 for never

void* Allocate(std::size_t size) noexcept {
    if (allocationsLeft > 0 && --allocationsLeft == 0)
        return nullptr;
    return std::malloc(size != 0 ? size : 1);
}

void* AllocateOrThrow(std::size_t size) {
    if (void* const block = Allocate(size))
        return block;
    throw std::bad_alloc();
}

}  // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}

void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete[](void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept {
    std::free(block);
}

namespace Kestra::Test {

FailedAllocation::FailedAllocation(std::size_t number) {
    allocationsLeft = number;
}

FailedAllocation::~FailedAllocation() {
    allocationsLeft = 0;
}

bool FailedAllocation::HasFailed() const {
    return allocationsLeft == 0;
}

}  // namespace Kestra::Test
