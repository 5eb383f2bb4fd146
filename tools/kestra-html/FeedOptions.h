#pragma once

#include <cstdint>

#include "platform/CharSet.h"

namespace Kestra::Tool {

/// What the command line says about how inputs are handed to a parser.
struct FeedOptions {
    enum class Feed { STREAM, BUFFER };

    StringNS::CharSet::Code charset = StringNS::CharSet::UNKNOWN;
    Feed feed = Feed::STREAM;
    std::uint64_t maxTokenSize = 0;  ///< bytes; 0 for no limit
    std::uint64_t pieceSize = 0;     ///< bytes; 0 for whole buffers, or for reads as long as asked for
};

}  // namespace Kestra::Tool
