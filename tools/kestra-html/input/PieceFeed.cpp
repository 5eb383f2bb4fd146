#include "tools/kestra-html/input/PieceFeed.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "html/framework/ResultCodes.h"
#include "html/stateless/StatelessResults.h"

namespace Kestra::Tool {

static_assert(std::uint32_t{HTML::STATELESS_NEED_MORE_DATA} == std::uint32_t{HTML::PARSER_UNTERMINATED},
              "both parsers ask for the next piece with the same code");

std::uint32_t FeedPieces(std::string_view content, std::uint64_t pieceSize, const ParsePiece& parsePiece,
                         const BytesDone& bytesDone) {
    std::uint32_t result = HTML::PARSER_OK;
    std::size_t offset = 0;
    while (offset < content.size() && (result == HTML::PARSER_OK || result == HTML::PARSER_UNTERMINATED)) {
        const std::size_t left = content.size() - offset;
        const std::size_t size =
            pieceSize == 0 ? left : static_cast<std::size_t>(std::min<std::uint64_t>(pieceSize, left));
        const std::unique_ptr<char[]> piece(new char[size]);
        std::memcpy(piece.get(), content.data() + offset, size);
        result = parsePiece(piece.get(), size);
        offset += size;
        bytesDone(offset);
    }
    return result;
}

}  // namespace Kestra::Tool
