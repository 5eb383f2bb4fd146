#pragma once

#include <cstdint>
#include <memory>

#include "Export.h"
#include "InputStream.h"

namespace Kestra::VFS {

/// What a temporary stream holds: bytes in memory, or an unnamed temporary file. Private to the two
/// classes below.
class TmpStorage;

/// Collects bytes to be read back later: in memory up to a limit, above it in a temporary file
/// without a name, which is freed with its last user.
class KESTRA_HTML_API TmpOutputStream {
public:
    /// @param memoryLimit  bytes kept in memory; one byte more moves everything into the file, and
    ///                     so does the first byte for which there is no memory. Nothing is reserved
    ///                     ahead.
    explicit TmpOutputStream(std::uint64_t memoryLimit);
    TmpOutputStream(const TmpOutputStream&) = delete;
    TmpOutputStream& operator=(const TmpOutputStream&) = delete;
    ~TmpOutputStream();

    /// Appends `size` bytes. After a failure every later write fails too, so that a copy with a gap
    /// is never taken for a complete one.
    /// @return 0; RESULT_STREAM_FAILED when the temporary file cannot be made or written
    std::uint32_t Write(const void* data, std::uint64_t size);

    /// Bytes written so far, without those of writes that failed.
    std::uint64_t GetSize() const;

    /// 0, or the code of the first write that failed.
    std::uint32_t GetResult() const;

private:
    friend class TmpInputStream;
    std::shared_ptr<TmpStorage> storage;
};

/// Reads back what a `TmpOutputStream` collected, from its first byte on. It shares the storage:
/// the output stream may be destroyed. It may also be written to between two reads; a stream that
/// was at the end then goes on with the new bytes. One thread at a time.
///
/// Where a write failed, the bytes before it can be read; at their end `Read` returns the code of
/// that write in place of RESULT_END_OF_DATA, and `IsEnd` stays false. A `Seek` after the last byte
/// fails with RESULT_STREAM_FAILED.
class KESTRA_HTML_API TmpInputStream final : public InputStream {
public:
    /// Begins at the first byte of what `output` has collected.
    explicit TmpInputStream(const TmpOutputStream& output);
    TmpInputStream(const TmpInputStream&) = delete;
    TmpInputStream& operator=(const TmpInputStream&) = delete;
    ~TmpInputStream() override;

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t GetPosition(std::uint64_t* position) override;
    std::uint32_t Seek(std::uint64_t position) override;
    bool IsEnd() override;

private:
    std::shared_ptr<TmpStorage> storage;
    std::uint64_t next = 0;
};

}  // namespace Kestra::VFS
