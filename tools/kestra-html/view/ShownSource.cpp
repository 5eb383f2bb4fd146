#include "tools/kestra-html/view/ShownSource.h"

#include <algorithm>
#include <cstddef>

#include "platform/Results.h"

namespace Kestra::Tool {

ShownSource::ShownSource(InputSource* inputSource) : source(inputSource) {}

/// A part of the input can be read again; only what comes after the last byte is new.
std::uint32_t ShownSource::Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    const std::uint64_t position = next;
    const std::uint32_t result = source->Read(buffer, size, bytesRead);
    next += *bytesRead;
    const std::uint64_t end = GetReadEnd();
    if (result == RESULT_OK && position <= end && position + *bytesRead > end) {
        if (const auto shown = static_cast<std::size_t>(released - keptBegin); shown >= kept.size() / 2) {
            kept.erase(0, shown);
            keptBegin = released;
        }
        kept.append(static_cast<const char*>(buffer) + (end - position),
                    static_cast<std::size_t>(position + *bytesRead - end));
    }
    return result;
}

std::uint32_t ShownSource::Seek(std::uint64_t position) {
    const std::uint32_t result = source->Seek(position);
    if (result == RESULT_OK)
        next = position;
    return result;
}

std::optional<std::uint64_t> ShownSource::GetSize() const {
    return source->GetSize();
}

void ShownSource::Forget(std::uint64_t position) {
    source->Forget(position);
}

ReadResult ShownSource::GetFailure() const {
    return source->GetFailure();
}

std::uint64_t ShownSource::GetReadEnd() const {
    return keptBegin + kept.size();
}

std::string_view ShownSource::GetBytes(std::uint64_t begin, std::uint64_t end) const {
    const std::uint64_t last = std::clamp(end, keptBegin, GetReadEnd());
    const std::uint64_t first = std::clamp(begin, keptBegin, last);
    return std::string_view(kept).substr(static_cast<std::size_t>(first - keptBegin),
                                         static_cast<std::size_t>(last - first));
}

void ShownSource::Release(std::uint64_t position) {
    released = std::clamp(position, released, GetReadEnd());
}

}  // namespace Kestra::Tool
