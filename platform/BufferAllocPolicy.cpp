#include "platform/BufferAllocPolicy.h"

#include <cstddef>
#include <limits>
#include <new>

#include "platform/Results.h"

namespace Kestra::Base {

DefaultBufferAllocPolicy::DefaultBufferAllocPolicy() : data(nullptr), size(0) {}

DefaultBufferAllocPolicy::~DefaultBufferAllocPolicy() {
    Release();
}

void DefaultBufferAllocPolicy::Initialize() {
    Release();
}

std::uint32_t DefaultBufferAllocPolicy::AdjustTo(std::uint64_t neededSize) {
    if (neededSize <= size)
        return RESULT_OK;
    // No object is larger; an allocator need not be asked, and some abort instead of failing.
    if (neededSize > static_cast<std::uint64_t>(std::numeric_limits<std::ptrdiff_t>::max()))
        return RESULT_OUT_OF_MEMORY;
    char* const memory = new (std::nothrow) char[static_cast<std::size_t>(neededSize)];
    if (memory == nullptr)
        return RESULT_OUT_OF_MEMORY;
    Release();
    data = memory;
    size = neededSize;
    return RESULT_OK;
}

void DefaultBufferAllocPolicy::Release() {
    delete[] data;
    data = nullptr;
    size = 0;
}

char* DefaultBufferAllocPolicy::GetData() const {
    return data;
}

std::uint64_t DefaultBufferAllocPolicy::GetSize() const {
    return size;
}

}  // namespace Kestra::Base
