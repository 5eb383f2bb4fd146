#include <dlfcn.h>
#include <gtest/gtest.h>
#include <uchardet.h>
#include <unicode/uclean.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/CharsetDetector.h"
#include "platform/Results.h"

/// @file
/// Brings about the failures of the two engines: uchardet's functions are defined here once more
/// and go to the real ones unless told to fail; ICU gets an allocator that runs dry.

namespace {

bool uchardetStartFails = false;
bool uchardetCallFails = false;

template <typename Function>
Function* FindReal(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" uchardet_t uchardet_new(void) {
    return uchardetStartFails ? nullptr : FindReal<uchardet_t(void)>("uchardet_new")();
}

extern "C" int uchardet_handle_data(uchardet_t detector, const char* data, std::size_t size) {
    return uchardetCallFails
               ? 1
               : FindReal<int(uchardet_t, const char*, std::size_t)>("uchardet_handle_data")(detector, data, size);
}

namespace Kestra::Base {
namespace {

constexpr std::string_view TEXT = "\xCF\xF0\xE8\xE2\xE5\xF2";  // a Russian word

std::uint32_t Detect() {
    DetectedCharset detected;
    std::uint32_t count = 0;
    return CharsetDetector::Detect(TEXT.data(), TEXT.size(), &detected, &count);
}

TEST(CharsetDetectorFailuresTest, UchardetCannotBeStarted) {
    EXPECT_EQ(Detect(), RESULT_OK);
    uchardetStartFails = true;
    EXPECT_EQ(Detect(), RESULT_UNAVAILABLE);
    uchardetStartFails = false;
    EXPECT_EQ(Detect(), RESULT_OK);
}

TEST(CharsetDetectorFailuresTest, UchardetFails) {
    uchardetCallFails = true;
    EXPECT_EQ(Detect(), RESULT_DETECTION_FAILED);
    uchardetCallFails = false;
    EXPECT_EQ(Detect(), RESULT_OK);
}

int allocationsLeft = 0;

void* Allocate(const void*, std::size_t size) {
    return allocationsLeft-- > 0 ? std::malloc(size) : nullptr;
}

void* Reallocate(const void*, void* block, std::size_t size) {
    return allocationsLeft-- > 0 ? std::realloc(block, size) : nullptr;
}

void Free(const void*, void* block) {
    std::free(block);
}

/// In a process of its own: ICU takes an allocator only before its first use, and remembers that it
/// could not start. Leaves without the search for leaks, as ICU keeps some of its blocks when the
/// start fails halfway.
[[noreturn]] void ExitWithResult(int allocations) {
    allocationsLeft = allocations;
    UErrorCode status = U_ZERO_ERROR;
    u_setMemoryFunctions(nullptr, Allocate, Reallocate, Free, &status);
    std::_Exit(U_SUCCESS(status) ? static_cast<int>(Detect()) : 1);
}

TEST(CharsetDetectorFailuresDeathTest, IcuCannotBeStarted) {
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    for (const int allocations : {0, 1, 2, 5, 20})
        EXPECT_EXIT(ExitWithResult(allocations), testing::ExitedWithCode(RESULT_UNAVAILABLE), "")
            << allocations << " allocations";
    EXPECT_EXIT(ExitWithResult(1000000), testing::ExitedWithCode(RESULT_OK), "");
}

}  // namespace
}  // namespace Kestra::Base
