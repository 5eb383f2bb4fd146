#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>

#include "platform/InputStream.h"
#include "platform/MemoryInputStream.h"

namespace Kestra::Test {

/// A stream over bytes in memory that says when it is called.
class SpyStream final : public VFS::InputStream {
public:
    /// @param size  as asked for
    using OnRead = std::function<void(std::uint64_t offset, std::uint64_t size)>;

    explicit SpyStream(const std::string& bytes, OnRead readHook = {}, std::function<void()> seekHook = {})
        : content(bytes), onRead(std::move(readHook)), onSeek(std::move(seekHook)) {}

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        std::uint64_t offset = 0;
        content.GetPosition(&offset);
        if (onRead)
            onRead(offset, size);
        return content.Read(buffer, size, bytesRead);
    }
    std::uint32_t GetPosition(std::uint64_t* position) override {
        return content.GetPosition(position);
    }
    std::uint32_t Seek(std::uint64_t position) override {
        if (onSeek)
            onSeek();
        return content.Seek(position);
    }
    bool IsEnd() override {
        return content.IsEnd();
    }

private:
    VFS::MemoryInputStream content;
    OnRead onRead;
    std::function<void()> onSeek;
};

/// A stream without an end whose reads a function answers. It is always at its beginning.
class AnsweredStream final : public VFS::InputStream {
public:
    explicit AnsweredStream(std::function<std::uint32_t(std::uint64_t* bytesRead)> answerOfReads)
        : answer(std::move(answerOfReads)) {}

    std::uint32_t Read(void*, std::uint64_t, std::uint64_t* bytesRead) override {
        return answer(bytesRead);
    }
    std::uint32_t GetPosition(std::uint64_t* position) override {
        *position = 0;
        return 0;
    }
    std::uint32_t Seek(std::uint64_t) override {
        return 0;
    }
    bool IsEnd() override {
        return false;
    }

private:
    std::function<std::uint32_t(std::uint64_t* bytesRead)> answer;
};

}  // namespace Kestra::Test
