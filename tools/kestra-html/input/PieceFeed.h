#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

#include "tools/kestra-html/input/InputSource.h"
#include "tools/kestra-html/input/PieceStream.h"

namespace Kestra::Tool {

/// Hands one piece to a parser.
/// @param piece  gone after the call
/// @return what `ParseBuffer` returned
using ParsePiece = std::function<std::uint32_t(const char* piece, std::size_t size)>;

/// Feeds an input from its start, piece by piece, for as long as the parser answers 0, or 16 for a
/// piece that ends inside a construct. Bytes that have been fed are forgotten.
///
/// Each piece lies in a heap block of its exact size that is gone before the next, so that a
/// sanitizer sees every access outside the piece.
/// @param settings  a piece size of 0 is one piece with the whole input
/// @return the last answer; 0 for an empty input, of which there is no piece, and a code of the
///         source when reading fails
/// @throws std::bad_alloc when there is no memory for a piece
std::uint32_t FeedPieces(InputSource* source, const PieceSettings& settings, const ParsePiece& parsePiece);

}  // namespace Kestra::Tool
