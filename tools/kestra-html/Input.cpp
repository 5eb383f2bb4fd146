#include "tools/kestra-html/Input.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <limits>
#include <new>
#include <stdexcept>

#include "tools/kestra-html/FileNames.h"

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

ExitStatus DiagnoseUnread(const std::string& name, ReadResult result, Console* console) {
    const bool isUnreadable = result == ReadResult::UNREADABLE;
    console->Diagnose(name, isUnreadable ? "cannot be read" : "not enough memory");
    return isUnreadable ? EXIT_STATUS_UNREADABLE : EXIT_STATUS_FAILED;
}

}  // namespace Kestra::Tool
