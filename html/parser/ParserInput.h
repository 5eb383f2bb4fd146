#pragma once

#include <cstdint>

#include "html/framework/SimpleParserContext.h"

namespace Kestra::HTML {

/// The piece that is being read, and its place in the document, in characters. Not installed.
template <typename C, typename S>
struct ParserInput {
    SimpleParserContext<C, S> context;  ///< ends before the piece does when that is read by slices
    std::uint64_t pieceLength = 0;
    std::uint64_t fedBefore = 0;  ///< characters of the document before the piece

    /// Characters of the document before the current place.
    std::uint64_t GetOffset() const {
        return fedBefore + context.position;
    }
};

}  // namespace Kestra::HTML
