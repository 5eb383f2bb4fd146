#include "c/HostStreams.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

#include "platform/Results.h"

namespace Kestra::C {

namespace {

class BorrowedStream final : public VFS::InputStream {
public:
    BorrowedStream(const void* data, std::size_t size) : bytes(static_cast<const char*>(data)), count(size) {}

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        *bytesRead = std::min(size, count - next);
        if (*bytesRead == 0)
            return size == 0 ? RESULT_OK : RESULT_END_OF_DATA;
        std::memcpy(buffer, bytes + next, static_cast<std::size_t>(*bytesRead));
        next += *bytesRead;
        return RESULT_OK;
    }

    std::uint32_t GetPosition(std::uint64_t* position) override {
        *position = next;
        return RESULT_OK;
    }

    std::uint32_t Seek(std::uint64_t position) override {
        if (position > count)
            return RESULT_STREAM_FAILED;
        next = position;
        return RESULT_OK;
    }

    bool IsEnd() override {
        return next == count;
    }

private:
    const char* bytes;
    std::uint64_t count;
    std::uint64_t next = 0;
};

class HostStream final : public VFS::InputStream {
public:
    explicit HostStream(const kestra_html_stream& functions) : host(functions) {}

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        *bytesRead = 0;
        const std::uint64_t most = std::min<std::uint64_t>(size, std::numeric_limits<std::size_t>::max());
        std::size_t delivered = 0;
        const std::uint32_t result = host.read(host.user, buffer, static_cast<std::size_t>(most), &delivered);
        if (result != RESULT_OK)
            return result;
        if (delivered > most)
            return RESULT_STREAM_FAILED;
        hasEnded = delivered == 0;
        next += delivered;
        *bytesRead = delivered;
        return hasEnded ? RESULT_END_OF_DATA : RESULT_OK;
    }

    std::uint32_t GetPosition(std::uint64_t* position) override {
        *position = next;
        return RESULT_OK;
    }

    std::uint32_t Seek(std::uint64_t position) override {
        if (host.seek == nullptr)
            return RESULT_STREAM_FAILED;
        const std::uint32_t result = host.seek(host.user, position);
        if (result == RESULT_OK) {
            next = position;
            hasEnded = false;
        }
        return result;
    }

    bool IsEnd() override {
        return hasEnded;
    }

private:
    kestra_html_stream host;
    std::uint64_t next = 0;  // counted here: the host need not know
    bool hasEnded = false;
};

}  // namespace

std::unique_ptr<VFS::InputStream> MakeBorrowedStream(const void* data, std::size_t size) {
    return std::make_unique<BorrowedStream>(data, size);
}

std::unique_ptr<VFS::InputStream> MakeHostStream(const kestra_html_stream& functions) {
    return std::make_unique<HostStream>(functions);
}

std::uint32_t WriteStream(VFS::InputStream* stream, kestra_html_write_callback write, void* user) {
    if (const std::uint32_t result = stream->Seek(0); result != RESULT_OK)
        return result;
    std::array<char, 4096> buffer{};
    for (;;) {
        std::uint64_t size = 0;
        const std::uint32_t result = stream->Read(buffer.data(), buffer.size(), &size);
        if (result == RESULT_END_OF_DATA)
            return RESULT_OK;
        if (result != RESULT_OK)
            return result;
        if (const std::uint32_t answer = write(user, buffer.data(), static_cast<std::size_t>(size)); answer != 0)
            return answer;
    }
}

}  // namespace Kestra::C
