#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "tools/kestra-html/input/InputSource.h"

namespace Kestra::Tool {

/// Bytes of an input that have been read already.
class MemorySource final : public InputSource {
public:
    /// @param inputBytes  borrowed
    explicit MemorySource(std::string_view inputBytes);

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t Seek(std::uint64_t position) override;
    std::optional<std::uint64_t> GetSize() const override;

private:
    std::string_view bytes;
};

}  // namespace Kestra::Tool
