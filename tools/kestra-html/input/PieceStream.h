#pragma once

#include <cstdint>
#include <functional>

#include "platform/InputStream.h"
#include "tools/kestra-html/input/InputSource.h"

namespace Kestra::Tool {

/// Called with the bytes that have been handed to the parser so far.
using BytesDone = std::function<void(std::uint64_t)>;

/// Called before each piece, with the position of its first byte.
/// @return false when no more is wanted: the input ends here
using BeforePiece = std::function<bool(std::uint64_t)>;

/// How an input is handed to a parser, and who follows that. None of the functions may throw.
struct PieceSettings {
    std::uint64_t pieceSize = 0;  ///< bytes; 0 for no limit
    /// Give a piece what is there, and wait for more only when nothing is. Otherwise pieces are the
    /// same however the bytes come.
    bool takesWhatIsThere = false;
    BytesDone bytesDone;      ///< may be empty
    BeforePiece beforePiece;  ///< may be empty
};

/// A stream over an input whose long reads can be cut into pieces.
///
/// A read that asks for at least LONG_READ bytes, as every read for the next piece of a document
/// does, gets at most `pieceSize` of them. Shorter reads are those of a construct that is read
/// again; they are served whole.
class PieceStream final : public VFS::InputStream {
public:
    static constexpr std::uint64_t LONG_READ = 16384;

    /// @param inputSource    borrowed for the life of the stream; read from its start
    /// @param pieceSettings  its functions are called at long reads
    PieceStream(InputSource* inputSource, PieceSettings pieceSettings);

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t GetPosition(std::uint64_t* position) override;
    std::uint32_t Seek(std::uint64_t position) override;
    bool IsEnd() override;

private:
    std::uint32_t Fill(char* buffer, std::uint64_t size, bool isLong, std::uint64_t* bytesRead);
    bool MayEndPiece(std::uint64_t position) const;

    InputSource* source;
    PieceSettings settings;
    std::uint64_t next = 0;
    bool isEnded = false;           ///< by `beforePiece`
    unsigned char firstBytes[2]{};  ///< of the input; two of them may be the mark of UTF-16
};

}  // namespace Kestra::Tool
