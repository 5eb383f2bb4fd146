#pragma once

#include <cstdint>

#include "html/parser/PieceOrigin.h"
#include "html/parser/StreamReader.h"
#include "platform/BufferAllocPolicy.h"
#include "platform/InputStream.h"

namespace Kestra::HTML {

/// Reads a stream by pieces into a buffer of its own. Not installed.
class StreamPieces {
public:
    /// @param readStream  borrowed
    explicit StreamPieces(VFS::InputStream* readStream);

    /// Allocates the buffer.
    /// @return 0, or why there is none
    std::uint32_t Allocate();

    /// Reads the next piece, from the stream's current position on.
    /// @param data    the piece, valid until the next call
    /// @param count   its bytes; 0 is not yet the end
    /// @param origin  its place in the stream
    /// @return 0, RESULT_END_OF_DATA, or a failure
    std::uint32_t Read(const char** data, std::uint64_t* count, PieceOrigin* origin);

    /// Reads until the buffer is full or the stream ends.
    /// @return 0, or a failure
    std::uint32_t FillBuffer(const char** data, std::uint64_t* count);

private:
    VFS::InputStream* stream;
    StreamReader reader;
    Base::DefaultBufferAllocPolicy buffer;
};

}  // namespace Kestra::HTML
