#include "tools/kestra-html/input/PieceFeed.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "html/framework/ResultCodes.h"
#include "html/stateless/StatelessResults.h"
#include "platform/Results.h"
#include "tools/kestra-html/input/Input.h"

namespace Kestra::Tool {

static_assert(std::uint32_t{HTML::STATELESS_NEED_MORE_DATA} == std::uint32_t{HTML::PARSER_UNTERMINATED},
              "both parsers ask for the next piece with the same code");

namespace {

/// A heap block of its exact size.
struct Piece {
    std::unique_ptr<char[]> bytes;
    std::size_t size = 0;
};

Piece MakePiece(const char* bytes, std::size_t size) {
    Piece piece{std::unique_ptr<char[]>(new char[size]), size};
    std::memcpy(piece.bytes.get(), bytes, size);
    return piece;
}

/// Reads a piece whose size is known from that of the input.
Piece ReadKnownPiece(InputSource* source, std::size_t size) {
    Piece piece{std::unique_ptr<char[]>(new char[size]), 0};
    std::uint64_t count = 0;
    while (piece.size < size && source->Read(piece.bytes.get() + piece.size, size - piece.size, &count) == RESULT_OK)
        piece.size += static_cast<std::size_t>(count);
    return piece.size == size ? std::move(piece) : MakePiece(piece.bytes.get(), piece.size);
}

/// @throws std::bad_alloc
Piece ReadPiece(InputSource* source, std::uint64_t offset, std::uint64_t pieceSize) {
    constexpr std::uint64_t MOST = std::numeric_limits<std::size_t>::max();
    const std::uint64_t wanted = pieceSize == 0 ? MOST : std::min(pieceSize, MOST);
    const std::optional<std::uint64_t> size = source->GetSize();
    if (size && *size > offset)
        return ReadKnownPiece(source, static_cast<std::size_t>(std::min(wanted, *size - offset)));
    std::string bytes;
    if (ReadRest(source, static_cast<std::size_t>(wanted), &bytes) == ReadResult::OUT_OF_MEMORY)
        throw std::bad_alloc();
    return MakePiece(bytes.data(), bytes.size());
}

}  // namespace

std::uint32_t FeedPieces(InputSource* source, const PieceSettings& settings, const ParsePiece& parsePiece) {
    std::uint32_t result = HTML::PARSER_OK;
    std::uint64_t offset = 0;
    source->Seek(0);
    while (result == HTML::PARSER_OK || result == HTML::PARSER_UNTERMINATED) {
        if (settings.beforePiece && !settings.beforePiece(offset))
            break;
        const Piece piece = ReadPiece(source, offset, settings.pieceSize);
        if (source->GetFailure() != ReadResult::READ)
            return RESULT_STREAM_FAILED;
        if (piece.size == 0)
            break;
        result = parsePiece(piece.bytes.get(), piece.size);
        offset += piece.size;
        source->Forget(offset);
        if (settings.bytesDone)
            settings.bytesDone(offset);
    }
    return result;
}

}  // namespace Kestra::Tool
