#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "platform/InputStream.h"

namespace Kestra::Tool {

/// Called with the bytes that have been handed to the parser so far.
using BytesDone = std::function<void(std::uint64_t)>;

/// A stream over bytes in memory whose long reads can be cut into pieces.
///
/// A read that asks for at least LONG_READ bytes, as every read for the next piece of a document
/// does, gets at most `pieceSize` of them. Shorter reads are those of a construct that is read
/// again; they are served whole.
class PieceStream final : public VFS::InputStream {
public:
    static constexpr std::uint64_t LONG_READ = 16384;

    /// @param content    borrowed for the life of the stream
    /// @param pieceSize  0 for no limit
    /// @param bytesDone  called after each long read
    PieceStream(std::string_view content, std::uint64_t pieceSize, BytesDone bytesDone);

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t GetPosition(std::uint64_t* position) override;
    std::uint32_t Seek(std::uint64_t position) override;
    bool IsEnd() override;

private:
    std::string_view bytes;
    std::uint64_t longReadLimit;
    BytesDone afterLongRead;
    std::uint64_t next = 0;
};

}  // namespace Kestra::Tool
