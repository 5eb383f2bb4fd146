#include "html/stateless/Feed.h"

#include <algorithm>

#include "html/stateless/Limits.h"
#include "platform/BufferAllocPolicy.h"
#include "platform/Results.h"
#include "platform/Services.h"

namespace Kestra::HTML::Stateless {

std::uint32_t Feed::ParsePiece(const void* bytes, std::size_t size) {
    if (!data.started)
        return STATELESS_NOT_STARTED;
    if (bytes == nullptr && size > 0)
        return STATELESS_INVALID_ARGUMENT;
    if (data.stopped && size > 0)
        return STATELESS_STOPPED;
    data.buffersDue -= std::min(data.buffersDue, data.length);
    data.pieceOffset += data.length;
    data.wentOver = data.wentOver && size == 0;
    data.cursor = static_cast<const unsigned char*>(bytes);
    data.position = 0;
    data.length = size;
    if (data.pieceLeft) {
        data.heldBack.clear();
        BeginToken(data);
    }
    data.pieceLeft = true;
    std::uint32_t result = machine.Run();
    data.pieceLeft = false;
    if (result != STATELESS_STOPPED && GoesOver(data, 0))
        result = STATELESS_LIMIT_EXCEEDED;
    if (data.position > 0)
        data.lastByte = data.cursor[-1];
    if (result == STATELESS_LIMIT_EXCEEDED)
        GoBackToToken(data);
    return result;
}

std::uint32_t Feed::ParseStream(VFS::InputStream* stream) {
    constexpr std::int32_t BUFFER_SIZE = StatelessHTMLParser::BUFFER_SIZE;
    if (data.started && data.stopped)
        return STATELESS_STOPPED;
    Base::DefaultBufferAllocPolicy buffer;
    buffer.Initialize();
    std::uint32_t result = Base::GetServices().adjustBuffer(&buffer, BUFFER_SIZE);
    if (result != RESULT_OK)
        return result;
    while (result == STATELESS_OK || result == STATELESS_NEED_MORE_DATA) {
        std::uint64_t count = 0;
        const std::uint32_t readResult = stream->Read(buffer.GetData(), BUFFER_SIZE, &count);
        if (readResult == RESULT_END_OF_DATA)
            return STATELESS_OK;
        if (readResult != RESULT_OK)
            return readResult;
        if (count > BUFFER_SIZE)
            return RESULT_STREAM_FAILED;  // it claims more than there is room for
        result = ParsePiece(buffer.GetData(), static_cast<std::size_t>(count));
    }
    return result;
}

}  // namespace Kestra::HTML::Stateless
