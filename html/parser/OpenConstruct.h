#pragma once

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string>

#include "html/parser/ParserInput.h"
#include "html/parser/PieceOrigin.h"
#include "platform/BufferAllocPolicy.h"
#include "platform/InputStream.h"
#include "platform/Uninherited.h"

namespace Kestra::HTML {

/// Where the token in progress began, and the stream from which its bytes are read again when it
/// fails. A copy has no stream. Not installed.
template <typename C, typename S>
class OpenConstruct {
public:
    /// Begins a document.
    /// @param markLength  bytes of a byte-order mark before the first piece
    void BeginDocument(std::uint64_t markLength);

    /// The input has a new piece.
    void BeginPiece(const PieceOrigin& origin);

    /// The token begins `charactersBack` before the current place, but not before this piece.
    void MarkStart(const ParserInput<C, S>& input, std::uint64_t charactersBack) {
        startPosition = input.context.position - std::min(charactersBack, input.context.position);
        startBase = pieceBase;
        startFed = input.fedBefore + startPosition;
        isStartPositioned = isPiecePositioned;
    }

    /// Sets the stream of the next pieces, borrowed; null for none. An open token cannot be re-read
    /// from a stream other than the one it began in.
    void SetStream(VFS::InputStream* stream);

    /// Replaces that stream by another one with the same bytes at the same offsets.
    void ReplaceStream(VFS::InputStream* stream);

    bool CanReadBack() const;

    /// Appends the bytes of the token in progress, up to the current place. The stream is left
    /// where it was. A token has no more bytes than have been fed since it began, whatever the
    /// stream says of its position.
    /// @param maxTokenSize  the limit of a token's size, 0 for none
    /// @return 0, or why the bytes could not be read
    std::uint32_t ReadBack(const ParserInput<C, S>& input, std::uint64_t maxTokenSize, std::string* bytes);

    /// A stream over those bytes in memory; null when they cannot be read.
    std::unique_ptr<VFS::InputStream> CopyToMemory(const ParserInput<C, S>& input, std::uint64_t maxTokenSize);

private:
    std::uint64_t GetStartOffset() const;

    Uninherited<VFS::InputStream*> stream;
    std::uint64_t pieceBase = 0;      // offset of the piece's first character in the stream, in bytes
    std::uint64_t startPosition = 0;  // where the token in progress began: characters into a piece,
    std::uint64_t startBase = 0;      // that piece's `pieceBase`,
    std::uint64_t startFed = 0;       // and characters of the document before it
    bool isPiecePositioned = false;   // the current piece can be read again
    bool isStartPositioned = false;   // so can the piece in which the token began, in the same stream
    Uninherited<std::unique_ptr<Base::DefaultBufferAllocPolicy>> buffer;  // made at the first recovery
};

}  // namespace Kestra::HTML
