#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <new>

#include "tests/html/parser/CountedAllocations.h"

// All forms are replaced but those for more than the ordinary alignment: a runtime that has
// replaced them itself does not come here from one form to another.

namespace {

// Before each block lies its size, in the space of one maximal alignment.
constexpr std::size_t HEAD_SIZE = alignof(std::max_align_t) > sizeof(std::size_t) ? alignof(std::max_align_t)
                                                                                  : sizeof(std::size_t);

std::size_t allocations = 0;
std::size_t heapSize = 0;
std::size_t heapPeak = 0;

void* Allocate(std::size_t size) noexcept {
    void* const memory = size <= static_cast<std::size_t>(-1) - HEAD_SIZE ? std::malloc(size + HEAD_SIZE) : nullptr;
    if (memory == nullptr)
        return nullptr;
    ++allocations;
    heapSize += size;
    heapPeak = std::max(heapPeak, heapSize);
    *static_cast<std::size_t*>(memory) = size;
    return static_cast<char*>(memory) + HEAD_SIZE;
}

void* AllocateOrThrow(std::size_t size) {
    if (void* const block = Allocate(size))
        return block;
    throw std::bad_alloc();
}

void Free(void* block) noexcept {
    if (block == nullptr)
        return;
    void* const memory = static_cast<char*>(block) - HEAD_SIZE;
    heapSize -= *static_cast<std::size_t*>(memory);
    std::free(memory);
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
    Free(block);
}

void operator delete[](void* block) noexcept {
    Free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}

void operator delete[](void* block, std::size_t) noexcept {
    Free(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept {
    Free(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept {
    Free(block);
}

std::size_t Kestra::Test::CountAllocations() {
    return allocations;
}

std::size_t Kestra::Test::GetHeapSize() {
    return heapSize;
}

std::size_t Kestra::Test::GetHeapPeak() {
    return heapPeak;
}

void Kestra::Test::RestartHeapPeak() {
    heapPeak = heapSize;
}
