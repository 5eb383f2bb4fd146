#pragma once

#include <cstdint>
#include <optional>

#include "platform/InputStream.h"
#include "tools/kestra-html/system/RawInput.h"

namespace Kestra::Tool {

/// The bytes of one input, read while they are parsed. A read gets what is there, and waits only
/// while nothing is.
class InputSource : public VFS::InputStream {
public:
    std::uint32_t GetPosition(std::uint64_t* position) override;
    bool IsEnd() override;  ///< false: a read finds the end

    /// In bytes, when it is known: that of a file, or of what has been read to its end.
    virtual std::optional<std::uint64_t> GetSize() const = 0;

    /// Says that nothing will be read a second time: only a `Seek` to the start, for the first
    /// HEAD_SIZE bytes, and to what `Forget` has left is needed from now on. For an input that is
    /// read only once this ends the keeping of its bytes.
    virtual void ReadOnlyOnce();

    /// Says that bytes before this position are not needed any more, but for the first HEAD_SIZE.
    virtual void Forget(std::uint64_t position);

    /// Why a read failed; READ when none has.
    virtual ReadResult GetFailure() const;

    /// As many as the charset detector looks at.
    static constexpr std::uint64_t HEAD_SIZE = 16384;

    /// The end of the last byte that has been read.
    std::uint64_t GetFurthest() const;

protected:
    std::uint64_t next = 0;                 ///< position of the next byte to read
    std::uint64_t furthest = 0;             ///< the end of the last byte that has been read
    ReadResult failure = ReadResult::READ;  ///< of a read
};

}  // namespace Kestra::Tool
