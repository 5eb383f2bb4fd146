#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "html/framework/TokenLimits.h"

namespace Kestra::HTML {

/// The limits of one token, applied so that they cost the loops over text and tags nothing. Not
/// installed.
///
/// The work is done where a piece ends. With a limit of the size a piece is read in slices. A slice
/// ends where the unfinished token has as many characters as allowed, so that no longer token is
/// inside one slice; the next slice, of a single character, shows whether the token ends there. A
/// stop ends the slice and the piece.
template <typename C>
class TokenLimit {
public:
    /// @param bytes  0 for no limit
    void SetBytes(std::uint64_t bytes) {
        maxTokenSize = bytes;
        maxTokenLength = bytes == 0 ? UINT64_MAX : bytes / sizeof(C);
        CountAttributes();
    }
    std::uint64_t GetBytes() const {
        return maxTokenSize;
    }

    /// @param count  0 for as many as the limit of the size allows
    void SetAttributes(std::uint64_t count) {
        maxAttributes = count;
        CountAttributes();
    }
    std::uint64_t GetAttributes() const {
        return maxAttributes;
    }

    /// Attributes of a tag that are not too many.
    std::size_t GetMostAttributes() const {
        return mostAttributes;
    }

    /// Items of a declaration that are not too many.
    std::size_t GetMostItems() const {
        return TokenLimits::GetMostParts(maxTokenSize);
    }

    bool IsExceededBy(std::uint64_t characters) const {
        return characters > maxTokenLength;
    }

    /// The size of the next slice of what is left of a piece.
    /// @param lengthSoFar  characters of the unfinished token
    std::uint64_t GetSliceLength(std::uint64_t lengthSoFar, std::uint64_t left) const {
        if (maxTokenLength == UINT64_MAX)
            return left;
        return std::min(left, std::max<std::uint64_t>(1, maxTokenLength - std::min(maxTokenLength, lengthSoFar)));
    }

private:
    void CountAttributes() {
        mostAttributes = maxAttributes == 0
                             ? GetMostItems()
                             : static_cast<std::size_t>(std::min<std::uint64_t>(maxAttributes, SIZE_MAX));
    }

    std::uint64_t maxTokenSize = 0;             // as set, in bytes
    std::uint64_t maxAttributes = 0;            // as set
    std::uint64_t maxTokenLength = UINT64_MAX;  // in characters; UINT64_MAX for no limit
    std::size_t mostAttributes = SIZE_MAX;
};

}  // namespace Kestra::HTML
