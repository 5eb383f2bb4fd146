#include <gtest/gtest.h>
#include <malloc.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "tests/html/parser/CountedAllocations.h"

// Every function that gives memory out is counted, and `free` takes off as much.

namespace Kestra::Test {
namespace {

constexpr std::size_t SIZE = 1 << 16;
constexpr std::size_t ALIGNMENT = 256;
constexpr std::size_t SPARE = 4096;  // what the C library may round up to

/// A block that the compiler cannot leave out.
void* Keep(void* block) {
    void* volatile kept = block;
    return kept;
}

template <typename Allocate>
void ExpectCounted(const char* name, Allocate allocate) {
    SCOPED_TRACE(name);
    const std::size_t blocks = CountAllocations();
    const std::size_t before = GetHeapSize();
    void* const block = Keep(allocate());
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(CountAllocations(), blocks + 1);
    EXPECT_GE(GetHeapSize(), before + SIZE);
    EXPECT_LE(GetHeapSize(), before + SIZE + SPARE);
    std::free(block);
    EXPECT_EQ(GetHeapSize(), before);
}

TEST(CountedMallocTest, EveryFunctionIsCounted) {
    ExpectCounted("malloc", [] { return std::malloc(SIZE); });
    ExpectCounted("calloc", [] { return std::calloc(SIZE / 16, 16); });
    ExpectCounted("realloc", [] { return std::realloc(nullptr, SIZE); });
    ExpectCounted("memalign", [] { return memalign(ALIGNMENT, SIZE); });
    ExpectCounted("aligned_alloc", [] { return std::aligned_alloc(ALIGNMENT, SIZE); });
    ExpectCounted("posix_memalign", [] {
        void* block = nullptr;
        EXPECT_EQ(posix_memalign(&block, ALIGNMENT, SIZE), 0);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % ALIGNMENT, 0U);
        return block;
    });
}

TEST(CountedMallocTest, OperatorNewIsCounted) {
    const std::size_t before = GetHeapSize();
    void* const block = Keep(::operator new(SIZE));
    EXPECT_GE(GetHeapSize(), before + SIZE);
    ::operator delete(block);
    EXPECT_EQ(GetHeapSize(), before);
    void* const aligned = Keep(::operator new(SIZE, std::align_val_t(ALIGNMENT)));
    EXPECT_GE(GetHeapSize(), before + SIZE);
    ::operator delete(aligned, std::align_val_t(ALIGNMENT));
    EXPECT_EQ(GetHeapSize(), before);
}

TEST(CountedMallocTest, AnInvalidAlignmentGivesNothing) {
    const std::size_t before = GetHeapSize();
    void* block = nullptr;
    EXPECT_NE(posix_memalign(&block, 3 * sizeof(void*), SIZE), 0);
    EXPECT_NE(posix_memalign(&block, 2, SIZE), 0);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(GetHeapSize(), before);
}

TEST(CountedMallocTest, BothBlocksAreThereWhileOneMoves) {
    void* const first = Keep(std::malloc(SIZE));
    void* const obstacle = Keep(std::malloc(SIZE));  // before which the first one cannot grow
    const auto address = reinterpret_cast<std::uintptr_t>(first);
    RestartHeapPeak();
    const std::size_t before = GetHeapSize();
    void* const moved = Keep(std::realloc(first, 2 * SIZE));
    ASSERT_NE(reinterpret_cast<std::uintptr_t>(moved), address);
    EXPECT_GE(GetHeapPeak(), before + 2 * SIZE);
    EXPECT_LE(GetHeapSize(), before + SIZE + SPARE);

    // A block that shrinks stays where it is.
    RestartHeapPeak();
    const std::size_t large = GetHeapSize();
    void* const shrunk = Keep(std::realloc(moved, SIZE));
    EXPECT_LE(GetHeapSize(), large - SIZE + SPARE);
    EXPECT_EQ(GetHeapPeak(), large);
    std::free(shrunk);
    std::free(obstacle);
}

TEST(CountedMallocTest, AFailureChangesNothing) {
    void* const block = Keep(std::malloc(SIZE));
    const std::size_t before = GetHeapSize();
    std::size_t volatile tooMuch = SIZE_MAX / 2;
    // To the compiler, a block that was given to `realloc` is gone, whatever it answers.
    EXPECT_EQ(Keep(std::realloc(Keep(block), tooMuch)), nullptr);
    EXPECT_EQ(GetHeapSize(), before);
    std::free(block);
}

}  // namespace
}  // namespace Kestra::Test
