#include "tools/kestra-html/input/PieceStream.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <utility>

#include "platform/Results.h"

namespace Kestra::Tool {

PieceStream::PieceStream(InputSource* inputSource, PieceSettings pieceSettings)
    : source(inputSource), settings(std::move(pieceSettings)) {
    source->Seek(0);
}

std::uint32_t PieceStream::Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    if (bytesRead == nullptr || (buffer == nullptr && size > 0))
        return RESULT_INVALID_ARGUMENT;
    *bytesRead = 0;
    if (size == 0)
        return RESULT_OK;
    const bool isLong = size >= LONG_READ;
    if (isLong && settings.beforePiece && !settings.beforePiece(next))
        isEnded = true;
    if (isLong && isEnded)
        return RESULT_END_OF_DATA;
    const std::uint64_t wanted = isLong && settings.pieceSize > 0 ? std::min(size, settings.pieceSize) : size;
    const std::uint32_t result = Fill(static_cast<char*>(buffer), wanted, isLong, bytesRead);
    if (result != RESULT_OK)
        return result;
    if (isLong && settings.bytesDone)
        settings.bytesDone(next);
    return RESULT_OK;
}

/// What was read before a failure is handed over; the failure comes back with the next read.
std::uint32_t PieceStream::Fill(char* buffer, std::uint64_t size, bool isLong, std::uint64_t* bytesRead) {
    std::uint32_t result = RESULT_OK;
    while (*bytesRead < size && result == RESULT_OK) {
        std::uint64_t count = 0;
        result = source->Read(buffer + *bytesRead, size - *bytesRead, &count);
        if (next < std::size(firstBytes) && count > 0)
            std::memcpy(firstBytes + next, buffer + *bytesRead,
                        static_cast<std::size_t>(std::min(count, std::size(firstBytes) - next)));
        *bytesRead += count;
        next += count;
        if (isLong && count > 0 && settings.takesWhatIsThere && MayEndPiece(next))
            break;
    }
    return *bytesRead > 0 ? std::uint32_t{RESULT_OK} : result;
}

/// A piece must not end in a byte-order mark, nor in a unit of UTF-16.
bool PieceStream::MayEndPiece(std::uint64_t position) const {
    const bool mayBeUtf16 = firstBytes[0] == 0xFF && firstBytes[1] == 0xFE;
    const bool mayBeMark = firstBytes[0] == 0xEF || firstBytes[0] == 0xFF;
    return (position >= 3 || !mayBeMark) && (position % 2 == 0 || !mayBeUtf16);
}

std::uint32_t PieceStream::GetPosition(std::uint64_t* position) {
    if (position == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *position = next;
    return RESULT_OK;
}

std::uint32_t PieceStream::Seek(std::uint64_t position) {
    const std::uint32_t result = source->Seek(position);
    if (result != RESULT_OK)
        return result;
    next = position;
    isEnded = false;
    return RESULT_OK;
}

bool PieceStream::IsEnd() {
    return source->IsEnd();
}

}  // namespace Kestra::Tool
