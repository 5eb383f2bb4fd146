#pragma once

#include <cstdint>

namespace Kestra::HTML {

/// Where a piece comes from. Not installed.
struct PieceOrigin {
    bool fromStream = false;   ///< the piece was read from the backing stream, not fed by the host
    bool positioned = false;   ///< and at a known offset, so it can be read again
    std::uint64_t offset = 0;  ///< of the piece's first byte in that stream
};

}  // namespace Kestra::HTML
