#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "tools/kestra-html/input/InputSource.h"

namespace Kestra::Tool {

/// A file on a disk, read block by block and anywhere.
class FileSource final : public InputSource {
public:
    explicit FileSource(std::unique_ptr<RawInput> openFile);

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t Seek(std::uint64_t position) override;
    std::optional<std::uint64_t> GetSize() const override;

private:
    ReadResult FillBlock();

    std::unique_ptr<RawInput> file;
    std::size_t blockRoom;
    std::unique_ptr<char[]> block;
    std::uint64_t blockBegin = 0;  ///< in the file
    std::size_t blockSize = 0;     ///< bytes that have been read into it
};

}  // namespace Kestra::Tool
