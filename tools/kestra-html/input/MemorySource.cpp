#include "tools/kestra-html/input/MemorySource.h"

#include <algorithm>
#include <cstddef>

#include "platform/Results.h"

namespace Kestra::Tool {

MemorySource::MemorySource(std::string_view inputBytes) : bytes(inputBytes) {}

std::uint32_t MemorySource::Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    *bytesRead = std::min<std::uint64_t>(size, bytes.size() - next);
    if (*bytesRead == 0)
        return size == 0 ? RESULT_OK : RESULT_END_OF_DATA;
    bytes.copy(static_cast<char*>(buffer), static_cast<std::size_t>(*bytesRead), static_cast<std::size_t>(next));
    next += *bytesRead;
    furthest = std::max(furthest, next);
    return RESULT_OK;
}

std::uint32_t MemorySource::Seek(std::uint64_t position) {
    if (position > bytes.size())
        return RESULT_STREAM_FAILED;
    next = position;
    return RESULT_OK;
}

std::optional<std::uint64_t> MemorySource::GetSize() const {
    return bytes.size();
}

}  // namespace Kestra::Tool
