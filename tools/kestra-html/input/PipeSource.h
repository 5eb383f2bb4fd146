#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/TmpStream.h"
#include "tools/kestra-html/input/InputSource.h"

namespace Kestra::Tool {

/// What happens while an input is read, for whoever sits at the terminal. Must not throw.
struct ReadingEvents {
    std::function<void()> onWait;  ///< before bytes are waited for that may be long in coming
    std::function<void()> onFile;  ///< once, before the bytes go into a temporary file
};

/// A pipe, a terminal or a device: its bytes come once.
///
/// Until `ReadOnlyOnce` all of them are kept, so that they can be read again: in memory, and in an
/// unnamed temporary file when they are many. After it only those that `Forget` leaves are, in
/// memory.
class PipeSource final : public InputSource {
public:
    static constexpr std::uint64_t MOST_IN_MEMORY = std::uint64_t{1} << 20;  ///< bytes kept without a file

    PipeSource(std::unique_ptr<RawInput> openPipe, ReadingEvents readingEvents);

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t Seek(std::uint64_t position) override;
    void ReadOnlyOnce() override;
    void Forget(std::uint64_t position) override;
    std::optional<std::uint64_t> GetSize() const override;

private:
    std::uint64_t GetEnd() const;
    std::uint32_t Fetch();
    std::uint32_t Keep();
    std::uint32_t Fail(ReadResult why);

    std::unique_ptr<RawInput> pipe;
    ReadingEvents events;
    VFS::TmpOutputStream kept;       ///< the first bytes, without a gap
    VFS::TmpInputStream keptReader;  ///< reads them back while more come
    std::string window;              ///< the last bytes
    std::uint64_t windowBegin = 0;   ///< position of its first byte
    bool keepsAll = true;
    bool endSeen = false;
    bool usesFile = false;
};

}  // namespace Kestra::Tool
