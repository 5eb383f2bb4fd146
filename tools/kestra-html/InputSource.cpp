#include "tools/kestra-html/InputSource.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <system_error>
#include <utility>
#include <vector>

#include "platform/Results.h"
#include "platform/TmpStream.h"
#include "tools/kestra-html/FileNames.h"

namespace Kestra::Tool {

namespace {

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

FileInputStream::FileInputStream(const std::string& name) : file(ToPath(name), std::ios::binary) {}

bool FileInputStream::IsOpen() const {
    return file.is_open();
}

std::uint32_t FileInputStream::Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
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

std::uint32_t FileInputStream::GetPosition(std::uint64_t* position) {
    *position = next;
    return RESULT_OK;
}

std::uint32_t FileInputStream::Seek(std::uint64_t position) {
    if (!file.seekg(static_cast<std::streamoff>(position))) {
        file.clear();
        return RESULT_STREAM_FAILED;
    }
    next = position;
    return RESULT_OK;
}

bool FileInputStream::IsEnd() {
    return false;
}

OpenedInput OpenInput(const std::string& name, bool again) {
    if (name == "-")
        return again ? KeepStandardInput() : OpenedInput{std::make_unique<StandardInputStream>()};
    auto file = std::make_unique<FileInputStream>(name);
    if (!file->IsOpen())
        return {};
    std::error_code error;
    const std::filesystem::path path = ToPath(name);
    if (!std::filesystem::is_regular_file(path, error))
        return again ? KeepFile(file.get()) : OpenedInput{std::move(file)};
    const std::uint64_t size = std::filesystem::file_size(path, error);
    return {std::move(file), error ? 0 : size};
}

}  // namespace Kestra::Tool
