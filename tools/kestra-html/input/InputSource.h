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
    /// In bytes, when it is known: that of a file, or of what has been read to its end.
    virtual std::optional<std::uint64_t> GetSize() const = 0;

    /// Says that nothing will be read a second time: only a `Seek` to the start, for the first
    /// HEAD_SIZE bytes, and to what `Forget` has left is needed from now on. For an input that is
    /// read only once this ends the keeping of its bytes.
    virtual void ReadOnlyOnce() = 0;

    /// Says that bytes before this position are not needed any more, but for the first HEAD_SIZE.
    virtual void Forget(std::uint64_t position) = 0;

    /// Why a read failed; READ when none has.
    virtual ReadResult GetFailure() const = 0;

    /// As many as the charset detector looks at.
    static constexpr std::uint64_t HEAD_SIZE = 16384;

    /// Reads to the end, without keeping anything that need not be kept.
    void Drain();
};

}  // namespace Kestra::Tool
