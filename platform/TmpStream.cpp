#include "platform/TmpStream.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>
#include <new>
#include <optional>
#include <stdexcept>
#include <vector>

#include "platform/Results.h"
#include "platform/TemporaryFile.h"

namespace Kestra::VFS {

/// The bytes of one temporary stream: those in the file, if there is one, and after them those in
/// memory.
///
/// Once the file exists, the memory only gathers small writes, so that not each of them costs a
/// system call.
class TmpStorage {
public:
    explicit TmpStorage(std::uint64_t limit) : memoryLimit(limit) {}

    std::uint32_t Write(const void* data, std::uint64_t number) {
        if (result == RESULT_OK && number != 0)
            result = Append(static_cast<const char*>(data), number);
        return result;
    }

    /// @param position  not above the size
    std::uint32_t Read(std::uint64_t position, char* buffer, std::uint64_t number, std::uint64_t* bytesRead) const {
        *bytesRead = 0;
        const std::uint64_t wanted = std::min(number, GetSize() - position);
        if (wanted == 0)
            return result != RESULT_OK ? result : RESULT_END_OF_DATA;
        const std::uint64_t fromFile = position < fileSize ? std::min(wanted, fileSize - position) : 0;
        if (fromFile != 0) {
            std::uint64_t found = 0;
            if (file->Read(position, buffer, fromFile, &found) != RESULT_OK || found != fromFile)
                return RESULT_STREAM_FAILED;
        }
        if (wanted != fromFile)
            std::memcpy(buffer + fromFile, memory.data() + (position + fromFile - fileSize),
                        static_cast<std::size_t>(wanted - fromFile));
        *bytesRead = wanted;
        return RESULT_OK;
    }

    std::uint64_t GetSize() const {
        return fileSize + memory.size();
    }

    std::uint32_t GetResult() const {
        return result;
    }

private:
    static constexpr std::uint64_t WRITE_BUFFER_SIZE = 65536;

    std::uint32_t Append(const char* data, std::uint64_t number) {
        if (data == nullptr)
            return RESULT_INVALID_ARGUMENT;
        if (number > std::numeric_limits<std::uint64_t>::max() - GetSize())
            return RESULT_STREAM_FAILED;
        if (AppendToMemory(data, number))
            return RESULT_OK;
        if (const std::uint32_t moved = MoveToFile(); moved != RESULT_OK)
            return moved;  // what came so far stays in memory and can be read
        const std::uint32_t written = file->Write(fileSize, data, number);
        if (written == RESULT_OK)
            fileSize += number;
        return written;
    }

    /// @return false, and nothing is changed, when the limit or the memory is exhausted; the file
    ///         takes over then.
    bool AppendToMemory(const char* data, std::uint64_t number) {
        const std::uint64_t limit = file ? std::min(memoryLimit, WRITE_BUFFER_SIZE) : memoryLimit;
        const std::uint64_t needed = memory.size() + number;
        if (needed > limit)
            return false;
        try {
            // Doubled, but never beyond the limit: it holds for the memory taken, not only for the
            // bytes in it.
            if (needed > memory.capacity())
                memory.reserve(
                    static_cast<std::size_t>(std::min(limit, std::max<std::uint64_t>(needed, memory.capacity() * 2))));
            memory.insert(memory.end(), data, data + number);
            return true;
        } catch (const std::bad_alloc&) {
            return false;
        } catch (const std::length_error&) {
            return false;
        }
    }

    std::uint32_t MoveToFile() {
        const bool first = !file;
        if (first) {
            file.emplace();
            if (const std::uint32_t created = file->Create(); created != RESULT_OK)
                return created;
        }
        if (const std::uint32_t written = file->Write(fileSize, memory.data(), memory.size()); written != RESULT_OK)
            return written;
        fileSize += memory.size();
        memory.clear();
        if (first)
            memory.shrink_to_fit();
        return RESULT_OK;
    }

    std::uint64_t memoryLimit;
    std::vector<char> memory;
    std::optional<TemporaryFile> file;
    /// Bytes of the stream that are in the file; a failed write may leave others after them.
    std::uint64_t fileSize = 0;
    std::uint32_t result = RESULT_OK;
};

TmpOutputStream::TmpOutputStream(std::uint64_t memoryLimit) : storage(std::make_shared<TmpStorage>(memoryLimit)) {}

TmpOutputStream::~TmpOutputStream() = default;

std::uint32_t TmpOutputStream::Write(const void* data, std::uint64_t size) {
    return storage->Write(data, size);
}

std::uint64_t TmpOutputStream::GetSize() const {
    return storage->GetSize();
}

std::uint32_t TmpOutputStream::GetResult() const {
    return storage->GetResult();
}

TmpInputStream::TmpInputStream(const TmpOutputStream& output) : storage(output.storage) {}

TmpInputStream::~TmpInputStream() = default;

std::uint32_t TmpInputStream::Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    if (bytesRead == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *bytesRead = 0;
    if (size == 0)
        return RESULT_OK;
    if (buffer == nullptr)
        return RESULT_INVALID_ARGUMENT;
    const std::uint32_t result = storage->Read(next, static_cast<char*>(buffer), size, bytesRead);
    next += *bytesRead;
    return result;
}

std::uint32_t TmpInputStream::GetPosition(std::uint64_t* position) {
    if (position == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *position = next;
    return RESULT_OK;
}

std::uint32_t TmpInputStream::Seek(std::uint64_t position) {
    if (position > storage->GetSize())
        return RESULT_STREAM_FAILED;
    next = position;
    return RESULT_OK;
}

bool TmpInputStream::IsEnd() {
    // The end of a copy that could not be written whole is found out by reading, which then fails.
    return next == storage->GetSize() && storage->GetResult() == RESULT_OK;
}

}  // namespace Kestra::VFS
