#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/kestra-html/input/InputSource.h"

namespace Kestra::Tool {

/// An input whose bytes are kept, as a parser reads them, until they have been shown.
class ShownSource final : public InputSource {
public:
    /// @param inputSource  borrowed; at its start
    explicit ShownSource(InputSource* inputSource);

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t Seek(std::uint64_t position) override;
    std::optional<std::uint64_t> GetSize() const override;
    void Forget(std::uint64_t position) override;
    ReadResult GetFailure() const override;

    /// After the last byte that has been read.
    std::uint64_t GetReadEnd() const;

    /// Bytes that have been read and not been released; valid until the next read.
    std::string_view GetBytes(std::uint64_t begin, std::uint64_t end) const;

    /// Says that bytes before this position have been shown.
    void Release(std::uint64_t position);

private:
    InputSource* source;
    std::string kept;
    std::uint64_t keptBegin = 0;  ///< position of its first byte
    std::uint64_t released = 0;
};

}  // namespace Kestra::Tool
