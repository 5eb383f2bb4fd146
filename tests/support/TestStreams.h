#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/InputStream.h"
#include "platform/MemoryInputStream.h"

namespace Kestra::Test {

/// Answers how many of the bytes asked for one read may deliver. It is called once for each read
/// and may count them.
using ReadBound = std::function<std::uint64_t(std::uint64_t size)>;

/// At most `limit` bytes in each read.
ReadBound AtMost(std::uint64_t limit);

/// The first read delivers at most `sizes[0]` bytes and so on; reads after the list are whole. A
/// size of 0 is a read of no bytes with code 0.
ReadBound InSizes(std::vector<std::uint64_t> sizes);

/// Bounds only the reads of at least `minimum` bytes. Shorter ones are served whole and not
/// counted.
ReadBound OnlyFrom(std::uint64_t minimum, ReadBound bound);

/// A stream over bytes in memory whose reads are cut short.
class BoundedInputStream final : public VFS::InputStream {
public:
    /// @param firstOffset  the position of the first byte
    BoundedInputStream(std::string bytes, ReadBound readBound, std::uint64_t firstOffset = 0);

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t GetPosition(std::uint64_t* position) override;
    std::uint32_t Seek(std::uint64_t position) override;
    bool IsEnd() override;

private:
    VFS::MemoryInputStream content;
    ReadBound bound;
};

/// A stream that passes every call on to another one, except for those that a script says shall go
/// wrong.
///
/// Calls are counted from 1, for each operation by itself; a call that fails by the script does not
/// reach the inner stream. The methods of the script return the stream, so that they can be
/// chained.
class FaultyInputStream final : public VFS::InputStream {
public:
    explicit FaultyInputStream(std::unique_ptr<VFS::InputStream> innerStream);

    /// Over bytes in memory.
    explicit FaultyInputStream(std::string bytes);

    FaultyInputStream(const FaultyInputStream&) = delete;
    FaultyInputStream& operator=(const FaultyInputStream&) = delete;
    ~FaultyInputStream() override;

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t GetPosition(std::uint64_t* position) override;
    std::uint32_t Seek(std::uint64_t position) override;
    bool IsEnd() override;

    FaultyInputStream& FailRead(std::uint64_t call, std::uint32_t code);
    FaultyInputStream& FailGetPosition(std::uint64_t call, std::uint32_t code);
    FaultyInputStream& FailSeek(std::uint64_t call, std::uint32_t code);

    /// This call and every later one.
    FaultyInputStream& FailReadsFrom(std::uint64_t call, std::uint32_t code);
    FaultyInputStream& FailGetPositionsFrom(std::uint64_t call, std::uint32_t code);
    FaultyInputStream& FailSeeksFrom(std::uint64_t call, std::uint32_t code);

    /// The read returns 0 with 0 bytes; the bytes come with the next one.
    FaultyInputStream& ReadNothing(std::uint64_t call);

    /// The read delivers at most `count` bytes; the others come with the next one.
    FaultyInputStream& ShortenRead(std::uint64_t call, std::uint64_t count);

    /// The read fills the buffer, and then states a count of bytes of which nothing is true.
    FaultyInputStream& MisreportRead(std::uint64_t call, std::uint64_t count);

    /// `IsEnd` is false, at the end as well.
    FaultyInputStream& NeverEnd();

    /// The destructor adds 1 to `*counter`.
    FaultyInputStream& CountDestructions(int* counter);

    std::uint64_t GetReadCalls() const;
    std::uint64_t GetPositionCalls() const;
    std::uint64_t GetSeekCalls() const;

private:
    /// The faults of one operation, and how often it was called.
    struct Script {
        /// Counts one call.
        /// @return the code with which it has to fail, or 0.
        std::uint32_t Next();

        std::uint64_t calls = 0;
        std::map<std::uint64_t, std::uint32_t> failures;  ///< codes by call
        std::uint64_t failingFrom = 0;                    ///< 0 for never
        std::uint32_t failingCode = 0;
    };

    std::unique_ptr<VFS::InputStream> inner;
    Script reads;
    Script positions;
    Script seeks;
    std::map<std::uint64_t, std::uint64_t> shortened;    ///< bytes delivered by call
    std::map<std::uint64_t, std::uint64_t> misreported;  ///< counts stated by call
    bool neverEnds = false;
    int* destructions = nullptr;
};

/// What `ReadAll` found.
struct StreamContent {
    std::string bytes;
    std::uint32_t result = 0;  ///< the code of the read that ended it, 513 at the end of the data
    std::uint64_t reads = 0;   ///< reads that delivered at least one byte
};

/// Reads a stream, `pieceSize` bytes at a time, until a read does not return 0. Gives up with
/// result 0 after 1000 reads in a row without a byte.
StreamContent ReadAll(VFS::InputStream* stream, std::uint64_t pieceSize);

}  // namespace Kestra::Test
