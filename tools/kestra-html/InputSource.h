#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <string>

#include "platform/InputStream.h"

namespace Kestra::Tool {

/// Reads a file piece by piece, forwards and back.
class FileInputStream final : public VFS::InputStream {
public:
    explicit FileInputStream(const std::string& name);

    bool IsOpen() const;

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t GetPosition(std::uint64_t* position) override;
    std::uint32_t Seek(std::uint64_t position) override;
    bool IsEnd() override;

private:
    std::ifstream file;
    std::uint64_t next = 0;
};

struct OpenedInput {
    std::unique_ptr<VFS::InputStream> stream;  ///< null when it cannot be opened or read
    std::uint64_t size = 0;                    ///< in bytes
};

/// Opens a file, or standard input for the name "-", to be read piece by piece.
/// @param again  it can also be read again after a `Seek`. What has only one begin, as a pipe, is
/// kept for that, in a temporary file once it
///               is long
OpenedInput OpenInput(const std::string& name, bool again);

}  // namespace Kestra::Tool
