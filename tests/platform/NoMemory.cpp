#include "tests/platform/NoMemory.h"

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

thread_local bool isExhausted = false;

}  // namespace

// The other forms, but those for more than the ordinary alignment, come here; with the address
// sanitizer the one without exceptions is its own. That memory is given back by `free` is what they
// do, too.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return isExhausted ? nullptr : std::malloc(size == 0 ? 1 : size);
}

void* operator new(std::size_t size) {
    void* const memory = operator new(size, std::nothrow);
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

NoMemory::NoMemory() {
    isExhausted = true;
}

NoMemory::~NoMemory() {
    isExhausted = false;
}

}  // namespace Kestra::Test
