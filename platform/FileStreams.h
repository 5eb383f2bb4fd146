#pragma once

#include <algorithm>
#include <cstdint>

#include "platform/InputStream.h"
#include "platform/Results.h"

/// @file
/// The parts of file and device streams that are the same on every system. Not installed.

namespace Kestra::VFS {

/// Checks the arguments of `Read`.
/// @return RESULT_OK, with no bytes read so far; or what `Read` must answer
inline std::uint32_t BeginRead(const void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    if (bytesRead == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *bytesRead = 0;
    return buffer == nullptr && size != 0 ? RESULT_INVALID_ARGUMENT : RESULT_OK;
}

/// A file on a disk. Reads are positioned, so the system's position in the file is not used.
/// @tparam File  owns an open file, and has `ReadAt` and `GetSize`
template <typename File>
class FileInputStream final : public InputStream {
public:
    template <typename Handle>
    FileInputStream(Handle openHandle, std::uint64_t fileSize) : file(openHandle), knownSize(fileSize) {}

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        const std::uint32_t result = BeginRead(buffer, size, bytesRead);
        if (result != RESULT_OK || size == 0)
            return result;
        if (!file.ReadAt(next, buffer, size, bytesRead))
            return RESULT_STREAM_FAILED;
        if (*bytesRead == 0)
            return RESULT_END_OF_DATA;
        next += *bytesRead;
        knownSize = std::max(knownSize, next);
        return RESULT_OK;
    }

    std::uint32_t GetPosition(std::uint64_t* position) override {
        if (position == nullptr)
            return RESULT_INVALID_ARGUMENT;
        *position = next;
        return RESULT_OK;
    }

    std::uint32_t Seek(std::uint64_t position) override {
        std::uint64_t size = 0;
        if (position > knownSize && file.GetSize(&size))
            knownSize = std::max(knownSize, size);
        if (position > knownSize)
            return RESULT_STREAM_FAILED;
        next = position;
        return RESULT_OK;
    }

    bool IsEnd() override {
        if (next < knownSize)
            return false;
        // The file may have grown, and some files have more bytes than the size they state: only a
        // read knows.
        char probe;
        std::uint64_t found = 0;
        return file.ReadAt(next, &probe, 1, &found) && found == 0;
    }

private:
    File file;
    std::uint64_t next = 0;
    std::uint64_t knownSize;  ///< the last size from the system, or the end of the last byte read if that is larger
};

/// A pipe, a terminal or another device: bytes come once, and their offsets are unknown.
/// @tparam Device  owns an open device, and has `ReadNext`, which answers as `Read` does
template <typename Device>
class DeviceInputStream final : public InputStream {
public:
    template <typename... Arguments>
    explicit DeviceInputStream(Arguments... arguments) : device(arguments...) {}

    /// Returns what is there, and waits only while nothing is.
    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        std::uint32_t result = BeginRead(buffer, size, bytesRead);
        if (result != RESULT_OK || size == 0)
            return result;
        result = device.ReadNext(buffer, size, bytesRead);
        if (result != RESULT_STREAM_FAILED)
            endSeen = result == RESULT_END_OF_DATA;
        return result;
    }

    std::uint32_t GetPosition(std::uint64_t* position) override {
        return position == nullptr ? RESULT_INVALID_ARGUMENT : RESULT_STREAM_FAILED;
    }

    std::uint32_t Seek(std::uint64_t) override {
        return RESULT_STREAM_FAILED;
    }

    bool IsEnd() override {
        return endSeen;
    }

private:
    Device device;
    bool endSeen = false;
};

}  // namespace Kestra::VFS
