#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/Results.h"
#include "tools/kestra-html/input/InputSource.h"

namespace Kestra::Test {

/// An input in memory, which comes in portions.
class TextSource final : public Tool::InputSource {
public:
    /// @param portionSize  most bytes for a read; 0 for any number
    explicit TextSource(std::string_view content, std::uint64_t portionSize = 0)
        : bytes(content), portion(portionSize) {}

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        *bytesRead = 0;
        if (size == 0)
            return RESULT_OK;
        if (next >= bytes.size())
            return RESULT_END_OF_DATA;
        *bytesRead = std::min<std::uint64_t>(size, bytes.size() - next);
        if (portion > 0)
            *bytesRead = std::min(*bytesRead, portion);
        std::memcpy(buffer, bytes.data() + next, static_cast<std::size_t>(*bytesRead));
        next += *bytesRead;
        furthest = std::max(furthest, next);
        return RESULT_OK;
    }

    std::uint32_t Seek(std::uint64_t position) override {
        if (position > bytes.size())
            return RESULT_STREAM_FAILED;
        next = position;
        return RESULT_OK;
    }

    std::optional<std::uint64_t> GetSize() const override {
        return portion > 0 ? std::nullopt : std::optional<std::uint64_t>(bytes.size());
    }

    void Forget(std::uint64_t position) override {
        forgotten = std::max(forgotten, position);
    }

    std::uint64_t GetForgotten() const {
        return forgotten;
    }

private:
    std::string bytes;
    std::uint64_t portion;
    std::uint64_t forgotten = 0;
};

}  // namespace Kestra::Test
