#include "tests/html/parser/CountedAllocations.h"

#include <cstdlib>
#include <new>

namespace {

std::size_t allocations = 0;

}  // namespace

void* operator new(std::size_t size) {
    ++allocations;
    if (void* const block = std::malloc(size != 0 ? size : 1))
        return block;
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}

std::size_t Kestra::Test::CountAllocations() {
    return allocations;
}
