#include <malloc.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstddef>
#include <cstdint>

#include "tests/html/parser/CountedAllocations.h"

// The program's own functions come before those of the C library, for every library of the process,
// and hand over to them by their other names. `operator new` ends here too. Nothing runs in here
// that could allocate: the loader calls these before anything is set up.

extern "C" {
void* __libc_malloc(std::size_t size);                           // NOLINT(bugprone-reserved-identifier)
void* __libc_calloc(std::size_t count, std::size_t size);        // NOLINT(bugprone-reserved-identifier)
void* __libc_realloc(void* block, std::size_t size);             // NOLINT(bugprone-reserved-identifier)
void* __libc_memalign(std::size_t alignment, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void __libc_free(void* block);                                   // NOLINT(bugprone-reserved-identifier)
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

void Leave(std::size_t size) {
    heapSize -= size;
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
    const auto address = reinterpret_cast<std::uintptr_t>(block);
    void* const moved = __libc_realloc(block, size);
    if (moved == nullptr) {
        // Nothing was freed, but for a size of 0.
        Leave(size == 0 ? before : 0);
        return nullptr;
    }
    // While it moves, both blocks are there.
    const bool stays = reinterpret_cast<std::uintptr_t>(moved) == address;
    Leave(stays ? before : 0);
    Enter(moved);
    Leave(stays ? 0 : before);
    return moved;
}

void* memalign(std::size_t alignment, std::size_t size) noexcept {
    return Enter(__libc_memalign(alignment, size));
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return Enter(__libc_memalign(alignment, size));
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    if (!std::has_single_bit(alignment) || alignment % sizeof(void*) != 0)
        return EINVAL;
    void* const memory = Enter(__libc_memalign(alignment, size));
    if (memory == nullptr)
        return ENOMEM;
    *block = memory;
    return 0;
}

void free(void* block) noexcept {
    Leave(malloc_usable_size(block));
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
