#pragma once

#include <cstdint>

#include "html/parser/PieceOrigin.h"
#include "html/parser/StreamReader.h"
#include "platform/BufferAllocPolicy.h"
#include "platform/InputStream.h"

namespace Kestra::HTML {

/// Reads a stream by pieces, or its first bytes at once, into a buffer of its own. Not installed.
class StreamPieces {
public:
    /// @param readStream  borrowed
    explicit StreamPieces(VFS::InputStream* readStream);
    StreamPieces(const StreamPieces&) = delete;
    StreamPieces& operator=(const StreamPieces&) = delete;

    /// Allocates the buffer.
    /// @return 0, or why there is none
    std::uint32_t Allocate();

    /// Reads the next piece, from the stream's current position on.
    /// @param data    the piece, valid until the next call
    /// @param count   its bytes; 0 is not yet the end
    /// @param origin  its place in the stream
    /// @return 0, RESULT_END_OF_DATA, or a failure
    std::uint32_t Read(const char** data, std::uint64_t* count, PieceOrigin* origin);

    /// Reads the next `most` bytes, or up to the end of the stream. The buffer grows with what has
    /// been read, not with `most`, and by doubling, so that time stays linear.
    /// @param data  valid until the next call
    /// @return 0, or a failure
    std::uint32_t ReadStart(std::uint64_t most, const char** data, std::uint64_t* count);

private:
    std::uint32_t Grow(std::uint64_t most);

    VFS::InputStream* stream;
    StreamReader reader;
    Base::DefaultBufferAllocPolicy buffer;
    Base::DefaultBufferAllocPolicy otherBuffer;  // empty, but while bytes move to a longer one
    Base::DefaultBufferAllocPolicy* current = &buffer;
};

}  // namespace Kestra::HTML
