#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "platform/KeptBuffers.h"

namespace Kestra::HTML {

/// The numbers that follow from a limit of the size of a token, in bytes of the document; 0 is no
/// limit. With a limit a parser allocates at most 64 KiB and 16 times the limit, its buffer for
/// streams included. Most of that is for the attributes of the longest tag, and for their copies
/// for an observer of the other flavour. Not installed.
class TokenLimits {
public:
    /// The attributes of a tag, or the items of a declaration, that are not too many.
    static std::size_t GetMostParts(std::uint64_t maxTokenSize) {
        constexpr std::uint64_t FEWEST = 24;
        constexpr std::uint64_t BYTES_PER_PART = 128;
        if (maxTokenSize == 0)
            return SIZE_MAX;
        return static_cast<std::size_t>(std::min<std::uint64_t>(FEWEST + maxTokenSize / BYTES_PER_PART, SIZE_MAX));
    }

    static KeptBytes GetKeptBytes(std::uint64_t maxTokenSize) {
        KeptBytes kept;
        if (maxTokenSize == 0)
            return kept;
        constexpr std::uint64_t FEWEST = 12 * 1024;
        kept.most = static_cast<std::size_t>(
            std::min<std::uint64_t>(kept.most, FEWEST + std::min<std::uint64_t>(kept.most, maxTokenSize / 2)));
        kept.slack = 4 * 1024;
        kept.isLargestExtra = false;
        return kept;
    }
};

}  // namespace Kestra::HTML
