#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/InputStream.h"
#include "platform/Results.h"

namespace Kestra::Bench {

/// A stream over borrowed bytes in memory that hands out at most so many new bytes in a read, and
/// counts all. Bytes that it has handed out before are given again in one read, as a parser needs
/// them that reads junk again.
class PieceStream final : public VFS::InputStream {
public:
    PieceStream(const std::string& bytes, std::uint64_t bytesPerRead) : content(&bytes), piece(bytesPerRead) {}

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        const std::uint64_t available =
            next < furthest ? furthest - next : std::min<std::uint64_t>(piece, content->size() - next);
        *bytesRead = std::min(size, available);
        std::memcpy(buffer, content->data() + next, static_cast<std::size_t>(*bytesRead));
        next += *bytesRead;
        furthest = std::max(furthest, next);
        handedOut += *bytesRead;
        return *bytesRead == 0 ? RESULT_END_OF_DATA : RESULT_OK;
    }
    std::uint32_t GetPosition(std::uint64_t* position) override {
        *position = next;
        return RESULT_OK;
    }
    std::uint32_t Seek(std::uint64_t position) override {
        next = position;
        return RESULT_OK;
    }
    bool IsEnd() override {
        return next == content->size();
    }

    /// Bytes of all reads, those that were read again included.
    std::uint64_t HandedOut() const {
        return handedOut;
    }

private:
    const std::string* content;
    std::uint64_t piece;
    std::uint64_t next = 0;
    std::uint64_t furthest = 0;  // end of what has been handed out
    std::uint64_t handedOut = 0;
};

/// Feeds a buffer in pieces of so many bytes, until a call returns another code than the two good
/// ones.
template <typename Parser>
std::uint32_t FeedPieces(Parser* parser, const std::string& document, std::uint64_t piece, std::uint32_t good,
                         std::uint32_t alsoGood) {
    std::uint32_t result = good;
    for (std::uint64_t fed = 0; fed < document.size() && (result == good || result == alsoGood); fed += piece) {
        const std::uint64_t size = std::min<std::uint64_t>(piece, document.size() - fed);
        result = parser->ParseBuffer(document.data() + fed, static_cast<std::size_t>(size));
    }
    return result;
}

}  // namespace Kestra::Bench
