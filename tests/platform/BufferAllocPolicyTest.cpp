#include "platform/BufferAllocPolicy.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "platform/Results.h"

namespace Kestra::Base {
namespace {

static_assert(!std::is_copy_constructible_v<DefaultBufferAllocPolicy> &&
              !std::is_copy_assignable_v<DefaultBufferAllocPolicy>);

/// Touches both ends of the buffer, so that a sanitizer sees one that is too short.
void Fill(const DefaultBufferAllocPolicy& buffer) {
    std::memset(buffer.GetData(), 'x', static_cast<std::size_t>(buffer.GetSize()));
}

TEST(BufferAllocPolicyTest, StartsWithoutMemory) {
    DefaultBufferAllocPolicy buffer;
    EXPECT_EQ(buffer.GetData(), nullptr);
    EXPECT_EQ(buffer.GetSize(), 0U);
    buffer.Initialize();
    EXPECT_EQ(buffer.GetData(), nullptr);
    EXPECT_EQ(buffer.GetSize(), 0U);
    buffer.Release();
    EXPECT_EQ(buffer.GetData(), nullptr);
}

TEST(BufferAllocPolicyTest, AdjustToOnlyGrows) {
    struct Row {
        const char* note;
        std::uint64_t size;
        std::uint64_t expectedSize;
        bool sameMemory;
    };
    const Row rows[] = {
        {"the first size", 16384, 16384, false},
        {"the same size keeps the memory", 16384, 16384, true},
        {"a smaller size keeps the memory", 1, 16384, true},
        {"size 0 keeps the memory", 0, 16384, true},
        {"one byte more grows", 16385, 16385, false},
        {"a larger size grows", 65536, 65536, false},
    };
    DefaultBufferAllocPolicy buffer;
    buffer.Initialize();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.note);
        char* const before = buffer.GetData();
        ASSERT_EQ(buffer.AdjustTo(row.size), RESULT_OK);
        EXPECT_EQ(buffer.GetSize(), row.expectedSize);
        EXPECT_EQ(buffer.GetData() == before, row.sameMemory);
        Fill(buffer);
    }
}

TEST(BufferAllocPolicyTest, AdjustToZeroNeedsNoMemory) {
    DefaultBufferAllocPolicy buffer;
    EXPECT_EQ(buffer.AdjustTo(0), RESULT_OK);
    EXPECT_EQ(buffer.GetData(), nullptr);
}

TEST(BufferAllocPolicyTest, CanBeUsedAgainAfterRelease) {
    DefaultBufferAllocPolicy buffer;
    ASSERT_EQ(buffer.AdjustTo(100), RESULT_OK);
    buffer.Release();
    EXPECT_EQ(buffer.GetData(), nullptr);
    EXPECT_EQ(buffer.GetSize(), 0U);
    buffer.Release();
    ASSERT_EQ(buffer.AdjustTo(50), RESULT_OK);
    EXPECT_EQ(buffer.GetSize(), 50U);
    Fill(buffer);
    buffer.Initialize();
    EXPECT_EQ(buffer.GetData(), nullptr);
    EXPECT_EQ(buffer.GetSize(), 0U);
}

/// Sizes that no allocator can serve. The buffer that is there stays as it is.
class BufferAllocPolicyExhaustionTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(BufferAllocPolicyExhaustionTest, TellsThatTheMemoryIsExhausted) {
    DefaultBufferAllocPolicy buffer;
    EXPECT_EQ(buffer.AdjustTo(GetParam()), RESULT_OUT_OF_MEMORY);
    EXPECT_EQ(buffer.GetData(), nullptr);
    ASSERT_EQ(buffer.AdjustTo(100), RESULT_OK);
    Fill(buffer);
    char* const before = buffer.GetData();
    EXPECT_EQ(buffer.AdjustTo(GetParam()), RESULT_OUT_OF_MEMORY);
    EXPECT_EQ(buffer.GetData(), before);
    EXPECT_EQ(buffer.GetSize(), 100U);
    EXPECT_EQ(buffer.GetData()[99], 'x');
}

constexpr std::uint64_t LARGEST_OBJECT = static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max());

INSTANTIATE_TEST_SUITE_P(LargerThanAnyObject, BufferAllocPolicyExhaustionTest,
                         testing::Values(LARGEST_OBJECT + 1, std::numeric_limits<std::uint64_t>::max() - 1,
                                         std::numeric_limits<std::uint64_t>::max()));

// The address sanitizer's allocator ends the process where others return null.
#if !defined(__SANITIZE_ADDRESS__)
INSTANTIATE_TEST_SUITE_P(LargerThanTheAddressSpace, BufferAllocPolicyExhaustionTest,
                         testing::Values(LARGEST_OBJECT, std::uint64_t{1} << 62, std::uint64_t{1} << 50));
#endif

}  // namespace
}  // namespace Kestra::Base
