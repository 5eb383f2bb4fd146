#include "html/parser/StreamPieces.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "html/parser/GenericParser.h"
#include "platform/Results.h"
#include "platform/Services.h"

namespace Kestra::HTML {

StreamPieces::StreamPieces(VFS::InputStream* readStream) : stream(readStream), reader(readStream) {}

std::uint32_t StreamPieces::Allocate() {
    buffer.Initialize();
    return Base::GetServices().adjustBuffer(&buffer, GenericParser::BUFFER_SIZE);
}

std::uint32_t StreamPieces::Read(const char** data, std::uint64_t* count, PieceOrigin* origin) {
    *data = current->GetData();
    *origin = PieceOrigin();
    origin->fromStream = true;
    origin->positioned = stream->GetPosition(&origin->offset) == RESULT_OK;
    return reader.Read(current->GetData(), GenericParser::BUFFER_SIZE, count);
}

std::uint32_t StreamPieces::ReadStart(std::uint64_t most, const char** data, std::uint64_t* count) {
    *count = 0;
    std::uint32_t result = RESULT_OK;
    while (result == RESULT_OK && *count < most && !stream->IsEnd()) {
        if (*count == current->GetSize())
            result = Grow(most);
        if (result != RESULT_OK)
            break;
        std::uint64_t added = 0;
        const std::uint64_t room = std::min(current->GetSize(), most) - *count;
        result = reader.Read(current->GetData() + *count, room, &added);
        *count += added;
    }
    *data = current->GetData();
    return result == RESULT_END_OF_DATA ? std::uint32_t{RESULT_OK} : result;
}

/// Doubles a buffer that is full, up to `most`. While the bytes move there is one and a half times
/// the room for them.
std::uint32_t StreamPieces::Grow(std::uint64_t most) {
    const std::uint64_t size = current->GetSize();
    Base::DefaultBufferAllocPolicy* const larger = current == &buffer ? &otherBuffer : &buffer;
    const std::uint32_t result = Base::GetServices().adjustBuffer(larger, size + std::min(size, most - size));
    if (result != RESULT_OK)
        return result;
    std::memcpy(larger->GetData(), current->GetData(), static_cast<std::size_t>(size));
    current->Release();
    current = larger;
    return RESULT_OK;
}

}  // namespace Kestra::HTML
