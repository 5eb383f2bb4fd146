#include "tools/kestra-html/input/Input.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <optional>
#include <stdexcept>
#include <utility>

#include "platform/Results.h"
#include "tools/kestra-html/input/FileSource.h"

namespace Kestra::Tool {

namespace {

constexpr std::size_t SMALLEST_BLOCK = std::size_t{64} * 1024;
constexpr std::size_t LARGEST_BLOCK = std::size_t{256} << 20;
constexpr std::size_t NO_LIMIT = std::numeric_limits<std::size_t>::max();

/// The bytes for which there should be room next.
std::size_t GetNextBlock(const InputSource& source, std::size_t size) {
    const std::optional<std::uint64_t> known = source.GetSize();
    if (known && *known > size)
        return static_cast<std::size_t>(std::min<std::uint64_t>(*known - size, NO_LIMIT / 2));
    return std::clamp(size, SMALLEST_BLOCK, LARGEST_BLOCK);
}

}  // namespace

OpenedInput OpenInput(const std::string& name, ReadingEvents events) {
    OpenedInput opened;
    std::unique_ptr<RawInput> raw;
    opened.result = RawInput::Open(name, &raw);
    if (raw == nullptr)
        return opened;
    if (raw->IsFile())
        opened.source = std::make_unique<FileSource>(std::move(raw));
    else
        opened.source = std::make_unique<PipeSource>(std::move(raw), std::move(events));
    return opened;
}

ReadResult ReadRest(InputSource* source, std::size_t limit, std::string* bytes, const BytesDone& bytesDone) {
    try {
        std::size_t size = 0;
        std::uint32_t result = RESULT_OK;
        while (result == RESULT_OK && size < limit) {
            if (size == bytes->size())
                bytes->resize(size + std::min(GetNextBlock(*source, size), limit - size));
            std::uint64_t count = 0;
            result = source->Read(bytes->data() + size, bytes->size() - size, &count);
            size += static_cast<std::size_t>(count);
            if (bytesDone)
                bytesDone(size);
        }
        bytes->resize(size);
    } catch (const std::bad_alloc&) {
        return ReadResult::OUT_OF_MEMORY;
    } catch (const std::length_error&) {  // more than a string can have
        return ReadResult::OUT_OF_MEMORY;
    }
    return source->GetFailure();
}

ReadResult ReadInput(const std::string& name, std::string* bytes) {
    bytes->clear();
    try {
        const OpenedInput input = OpenInput(name);
        if (input.source == nullptr)
            return input.result;
        input.source->ReadOnlyOnce();
        return ReadRest(input.source.get(), NO_LIMIT, bytes);
    } catch (const std::bad_alloc&) {
        return ReadResult::OUT_OF_MEMORY;
    }
}

}  // namespace Kestra::Tool
