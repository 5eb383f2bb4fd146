#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

#include "tools/kestra-html/input/PieceStream.h"

namespace Kestra::Tool {

/// Hands one piece to a parser.
/// @param piece  gone after the call
/// @return what `ParseBuffer` returned
using ParsePiece = std::function<std::uint32_t(const char* piece, std::size_t size)>;

/// Feeds an input piece by piece, for as long as the parser answers 0, or 16 for a piece that ends
/// inside a construct.
///
/// Each piece lies in a heap block of its exact size that is gone before the next, so that a
/// sanitizer sees every access outside the piece.
/// @param pieceSize  0 for one piece with the whole input
/// @return the last answer; 0 for an empty input, of which there is no piece
std::uint32_t FeedPieces(std::string_view content, std::uint64_t pieceSize, const ParsePiece& parsePiece,
                         const BytesDone& bytesDone);

}  // namespace Kestra::Tool
