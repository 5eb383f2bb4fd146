#pragma once

#include <cstdint>

#include "c/kestra/html.h"
#include "platform/InputStream.h"

namespace Kestra::C {

/// A stream over bytes of the host.
class BorrowedStream final : public VFS::InputStream {
public:
    BorrowedStream(const void* data, std::size_t size);

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t GetPosition(std::uint64_t* position) override;
    std::uint32_t Seek(std::uint64_t position) override;
    bool IsEnd() override;

private:
    const char* bytes;
    std::uint64_t count;
    std::uint64_t next = 0;
};

/// A stream whose bytes the functions of the host deliver.
class HostStream final : public VFS::InputStream {
public:
    explicit HostStream(const kestra_html_stream& functions);

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override;
    std::uint32_t GetPosition(std::uint64_t* position) override;
    std::uint32_t Seek(std::uint64_t position) override;
    bool IsEnd() override;

private:
    kestra_html_stream host;
    std::uint64_t next = 0;  // counted here: the host need not know
    bool hasEnded = false;
};

/// Writes a stream from its first byte on. @return 0; a code of the stream; a value of the callback
std::uint32_t WriteStream(VFS::InputStream* stream, kestra_html_write_callback write, void* user);

}  // namespace Kestra::C
