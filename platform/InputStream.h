#pragma once

#include <cstdint>

#include "Export.h"

/// Streams and files.
namespace Kestra::VFS {

/// A source of bytes that a host hands to a parser. Hosts derive from it; the library's own streams
/// do too.
///
/// Every operation returns a result code (`platform/Results.h`; a host's stream may return codes of
/// its own) and must not throw. The library's own streams answer a null pointer with
/// RESULT_INVALID_ARGUMENT, and a read of 0 bytes with 0, at the end as well.
class KESTRA_HTML_API InputStream {
public:
    InputStream();
    /// A stream of this class has no state: there is nothing to copy.
    InputStream(const InputStream&);
    /// Copies nothing.
    InputStream& operator=(const InputStream&);
    virtual ~InputStream();

    /// Reads up to `size` bytes into `buffer` and stores their number, which may be smaller before
    /// the end as well.
    /// @return 0; RESULT_END_OF_DATA (513) with 0 bytes at the end; any other code is a failure,
    ///         `*bytesRead` is then 0.
    virtual std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) = 0;

    /// Stores the offset, in bytes from the start, of the next byte to read.
    /// @return 0, or a failure code for a stream that does not know its position.
    virtual std::uint32_t GetPosition(std::uint64_t* position) = 0;

    /// Moves to an absolute offset in bytes.
    /// @return 0, or a failure code; the position is then unchanged.
    virtual std::uint32_t Seek(std::uint64_t position) = 0;

    /// True when no byte is left. May answer false at the end as long as the next `Read` returns
    /// 513.
    virtual bool IsEnd() = 0;
};

}  // namespace Kestra::VFS
