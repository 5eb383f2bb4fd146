#pragma once

#include <cstdint>
#include <string>

#include "Export.h"
#include "InputStream.h"

namespace Kestra::VFS {

/// A stream over bytes in memory, which it owns.
///
/// `firstOffset` is the position of the first byte, so that a part of another stream keeps the
/// offsets it had there; a `Seek` before it or after the last byte fails with RESULT_STREAM_FAILED.
class KESTRA_HTML_API MemoryInputStream final : public InputStream {
public:
    /// @param bytes        what can be read
    /// @param firstOffset  the position of the first byte
    explicit MemoryInputStream(std::string bytes, std::uint64_t firstOffset = 0);

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t GetPosition(std::uint64_t* position) override;
    std::uint32_t Seek(std::uint64_t position) override;
    bool IsEnd() override;

private:
    std::string content;
    std::uint64_t firstOffset;
    std::uint64_t next;  ///< index into `content`
};

}  // namespace Kestra::VFS
