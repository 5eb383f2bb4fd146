#include <malloc.h>

#include <algorithm>
#include <cstddef>

#include "tests/html/parser/CountedAllocations.h"

// The program's own functions come before those of the C library, for every library of the process, and hand over to them by their
// other names. `operator new` ends here too. Nothing runs in here that could allocate: the loader calls these before anything is set up.

extern "C" {
void* __libc_malloc(std::size_t size);                     // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t count, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* block, std::size_t size);       // NOLINT(bugprone-reserved-identifier)
void __libc_free(void* block);                             // NOLINT(bugprone-reserved-identifier)
}

namespace {

std::size_t allocations = 0;
std::size_t heapSize = 0;
std::size_t heapPeak = 0;

void* Enter(void* block) {
    if (block != nullptr) {
        ++allocations;
        heapSize += malloc_usable_size(block);
        heapPeak = std::max(heapPeak, heapSize);
    }
    return block;
}

}  // namespace

extern "C" {

void* malloc(std::size_t size) noexcept {
    return Enter(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    return Enter(__libc_calloc(count, size));
}

void* realloc(void* block, std::size_t size) noexcept {
    const std::size_t before = malloc_usable_size(block);
    void* const moved = __libc_realloc(block, size);
    if (moved != nullptr || size == 0)
        heapSize -= before;
    return Enter(moved);
}

void free(void* block) noexcept {
    heapSize -= malloc_usable_size(block);
    __libc_free(block);
}

}  // extern "C"

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
