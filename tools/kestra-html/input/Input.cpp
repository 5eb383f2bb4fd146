#include "tools/kestra-html/input/Input.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <new>
#include <stdexcept>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/Results.h"
#include "platform/TmpStream.h"
#include "tools/kestra-html/system/FileNames.h"

namespace Kestra::Tool {

namespace {

constexpr std::size_t SMALLEST_BLOCK = std::size_t{64} * 1024;
constexpr std::size_t LARGEST_BLOCK = std::size_t{256} << 20;  // system calls of Windows count with 32 bits

constexpr std::size_t NO_LIMIT = std::numeric_limits<std::size_t>::max();

/// Reads to the end, or to the limit, in growing blocks.
/// @param readBlock  fills a block and returns the bytes in it, fewer at the end only
template <typename ReadBlock>
void ReadAll(ReadBlock readBlock, std::size_t limit, std::string* bytes) {
    std::size_t size = 0;
    while (size < limit) {
        const std::size_t block = std::min(std::clamp(size, SMALLEST_BLOCK, LARGEST_BLOCK), limit - size);
        bytes->resize(size + block);
        const std::size_t count = readBlock(bytes->data() + size, block);
        size += count;
        if (count < block)
            break;
    }
    bytes->resize(size);
}

bool ReadStandardInput(std::string* bytes) {
    ReadAll([](char* block, std::size_t size) { return std::fread(block, 1, size, stdin); }, NO_LIMIT, bytes);
    const bool failed = std::ferror(stdin) != 0;
    std::clearerr(stdin);
    return !failed;
}

bool ReadFile(const std::string& name, std::size_t limit, std::string* bytes) {
    std::ifstream file(ToPath(name), std::ios::binary);
    if (!file)
        return false;
    const auto readBlock = [&file](char* block, std::size_t size) {
        file.read(block, static_cast<std::streamsize>(size));
        return static_cast<std::size_t>(file.gcount());
    };
    ReadAll(readBlock, limit, bytes);
    return !file.bad();
}

constexpr std::uint64_t MOST_IN_MEMORY = std::uint64_t{1} << 20;
constexpr std::size_t BLOCK_SIZE = std::size_t{64} * 1024;

/// Reads standard input once.
class StandardInputStream final : public VFS::InputStream {
public:
    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        *bytesRead = std::fread(buffer, 1, static_cast<std::size_t>(size), stdin);
        const bool failed = std::ferror(stdin) != 0;
        if (*bytesRead < size)
            std::clearerr(stdin);
        if (failed)
            *bytesRead = 0;
        return failed ? RESULT_STREAM_FAILED : *bytesRead == 0 && size > 0 ? RESULT_END_OF_DATA : RESULT_OK;
    }
    std::uint32_t GetPosition(std::uint64_t*) override {
        return RESULT_STREAM_FAILED;
    }
    std::uint32_t Seek(std::uint64_t) override {
        return RESULT_STREAM_FAILED;
    }
    bool IsEnd() override {
        return false;
    }
};

/// Reads a file piece by piece, forwards and back.
class FileInputStream final : public VFS::InputStream {
public:
    explicit FileInputStream(const std::string& name) : file(ToPath(name), std::ios::binary) {}

    bool IsOpen() const {
        return file.is_open();
    }

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        constexpr auto MOST = static_cast<std::uint64_t>(std::numeric_limits<std::streamsize>::max());
        file.read(static_cast<char*>(buffer), static_cast<std::streamsize>(std::min(size, MOST)));
        *bytesRead = static_cast<std::uint64_t>(file.gcount());
        next += *bytesRead;
        const bool failed = file.bad();
        file.clear();
        if (failed) {
            *bytesRead = 0;
            return RESULT_STREAM_FAILED;
        }
        return *bytesRead == 0 && size > 0 ? std::uint32_t{RESULT_END_OF_DATA} : std::uint32_t{RESULT_OK};
    }
    std::uint32_t GetPosition(std::uint64_t* position) override {
        *position = next;
        return RESULT_OK;
    }
    std::uint32_t Seek(std::uint64_t position) override {
        if (!file.seekg(static_cast<std::streamoff>(position))) {
            file.clear();
            return RESULT_STREAM_FAILED;
        }
        next = position;
        return RESULT_OK;
    }
    bool IsEnd() override {
        return false;
    }

private:
    std::ifstream file;
    std::uint64_t next = 0;
};

/// @param readBlock  fills a block and returns the bytes in it, 0 at the end
template <typename ReadBlock>
OpenedInput Keep(ReadBlock readBlock) {
    VFS::TmpOutputStream kept(MOST_IN_MEMORY);
    std::vector<char> block(BLOCK_SIZE);
    while (const std::size_t count = readBlock(block.data(), block.size())) {
        if (kept.Write(block.data(), count) != RESULT_OK)
            return {};
    }
    return {std::make_unique<VFS::TmpInputStream>(kept), kept.GetSize()};
}

OpenedInput KeepStandardInput() {
    OpenedInput kept = Keep([](char* block, std::size_t size) { return std::fread(block, 1, size, stdin); });
    const bool failed = std::ferror(stdin) != 0;
    std::clearerr(stdin);
    return failed ? OpenedInput() : std::move(kept);
}

OpenedInput KeepFile(FileInputStream* file) {
    std::uint32_t result = RESULT_OK;
    OpenedInput kept = Keep([file, &result](char* block, std::size_t size) {
        std::uint64_t count = 0;
        result = file->Read(block, size, &count);
        return static_cast<std::size_t>(count);
    });
    return result == RESULT_END_OF_DATA ? std::move(kept) : OpenedInput();
}

}  // namespace

ReadResult ReadInput(const std::string& name, std::string* bytes) {
    return ReadInputStart(name, NO_LIMIT, bytes);
}

ReadResult ReadInputStart(const std::string& name, std::size_t size, std::string* bytes) {
    bytes->clear();
    try {
        const bool isRead = name == "-" ? ReadStandardInput(bytes) : ReadFile(name, size, bytes);
        return isRead ? ReadResult::READ : ReadResult::UNREADABLE;
    } catch (const std::bad_alloc&) {
        return ReadResult::OUT_OF_MEMORY;
    } catch (const std::length_error&) {  // more than a string can have
        return ReadResult::OUT_OF_MEMORY;
    }
}

OpenedInput OpenInput(const std::string& name, bool readsAgain) {
    if (name == "-")
        return readsAgain ? KeepStandardInput() : OpenedInput{std::make_unique<StandardInputStream>()};
    auto file = std::make_unique<FileInputStream>(name);
    if (!file->IsOpen())
        return {};
    std::error_code error;
    const std::filesystem::path path = ToPath(name);
    if (!std::filesystem::is_regular_file(path, error))
        return readsAgain ? KeepFile(file.get()) : OpenedInput{std::move(file)};
    const std::uint64_t size = std::filesystem::file_size(path, error);
    return {std::move(file), error ? 0 : size};
}

}  // namespace Kestra::Tool
