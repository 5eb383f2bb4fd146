#include "platform/MemoryInputStream.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "platform/Results.h"

namespace Kestra::VFS {

MemoryInputStream::MemoryInputStream(std::string bytes, std::uint64_t offsetOfFirst)
    : content(std::move(bytes)), firstOffset(offsetOfFirst), next(0) {}

std::uint32_t MemoryInputStream::Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    if (bytesRead == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *bytesRead = 0;
    if (size == 0)
        return RESULT_OK;
    if (buffer == nullptr)
        return RESULT_INVALID_ARGUMENT;
    const std::uint64_t available = content.size() - next;
    if (available == 0)
        return RESULT_END_OF_DATA;
    const std::uint64_t number = std::min(size, available);
    std::memcpy(buffer, content.data() + next, static_cast<std::size_t>(number));
    next += number;
    *bytesRead = number;
    return RESULT_OK;
}

std::uint32_t MemoryInputStream::GetPosition(std::uint64_t* position) {
    if (position == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *position = firstOffset + next;
    return RESULT_OK;
}

std::uint32_t MemoryInputStream::Seek(std::uint64_t position) {
    if (position < firstOffset || position - firstOffset > content.size())
        return RESULT_STREAM_FAILED;
    next = position - firstOffset;
    return RESULT_OK;
}

bool MemoryInputStream::IsEnd() {
    return next == content.size();
}

}  // namespace Kestra::VFS
