#include "tools/kestra-html/input/PieceStream.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "platform/Results.h"

namespace Kestra::Tool {

PieceStream::PieceStream(std::string_view content, std::uint64_t pieceSize, BytesDone bytesDone)
    : bytes(content), longReadLimit(pieceSize), afterLongRead(std::move(bytesDone)) {}

std::uint32_t PieceStream::Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    if (bytesRead == nullptr || (buffer == nullptr && size > 0))
        return RESULT_INVALID_ARGUMENT;
    *bytesRead = 0;
    if (size > 0 && IsEnd())
        return RESULT_END_OF_DATA;
    const bool isLong = size >= LONG_READ;
    std::uint64_t count = std::min<std::uint64_t>(size, bytes.size() - next);
    if (isLong && longReadLimit > 0)
        count = std::min(count, longReadLimit);
    if (count > 0)
        std::memcpy(buffer, bytes.data() + next, static_cast<std::size_t>(count));
    next += count;
    *bytesRead = count;
    if (isLong)
        afterLongRead(next);
    return RESULT_OK;
}

std::uint32_t PieceStream::GetPosition(std::uint64_t* position) {
    if (position == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *position = next;
    return RESULT_OK;
}

std::uint32_t PieceStream::Seek(std::uint64_t position) {
    if (position > bytes.size())
        return RESULT_STREAM_FAILED;
    next = position;
    return RESULT_OK;
}

bool PieceStream::IsEnd() {
    return next == bytes.size();
}

}  // namespace Kestra::Tool
