#include "tools/kestra-html/Input.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <new>
#include <stdexcept>

namespace Kestra::Tool {

namespace {

constexpr std::size_t SMALLEST_BLOCK = std::size_t{64} * 1024;

/// Reads to the end in growing blocks. @param readBlock  fills a block and returns the bytes in it, fewer at the end only
template <typename ReadBlock>
void ReadAll(ReadBlock readBlock, std::string* bytes) {
    std::size_t size = 0;
    while (true) {
        const std::size_t block = std::max(SMALLEST_BLOCK, size);
        bytes->resize(size + block);
        const std::size_t count = readBlock(bytes->data() + size, block);
        size += count;
        if (count < block)
            break;
    }
    bytes->resize(size);
}

bool ReadStandardInput(std::string* bytes) {
    ReadAll([](char* block, std::size_t size) { return std::fread(block, 1, size, stdin); }, bytes);
    const bool failed = std::ferror(stdin) != 0;
    std::clearerr(stdin);
    return !failed;
}

bool ReadFile(const std::string& name, std::string* bytes) {
    std::ifstream file(std::filesystem::path(name), std::ios::binary);
    if (!file)
        return false;
    const auto readBlock = [&file](char* block, std::size_t size) {
        file.read(block, static_cast<std::streamsize>(size));
        return static_cast<std::size_t>(file.gcount());
    };
    ReadAll(readBlock, bytes);
    return !file.bad();
}

}  // namespace

bool ReadInput(const std::string& name, std::string* bytes) {
    bytes->clear();
    try {
        return name == "-" ? ReadStandardInput(bytes) : ReadFile(name, bytes);
    } catch (const std::bad_alloc&) {
        return false;
    } catch (const std::length_error&) {
        return false;
    }
}

std::string PrintableName(const std::string& name) {
    std::string printable;
    for (const char character : name) {
        const auto byte = static_cast<unsigned char>(character);
        if (byte < 0x20 || byte == 0x7F)
            fmt::format_to(std::back_inserter(printable), "\\x{:02X}", static_cast<unsigned>(byte));
        else
            printable.push_back(character);
    }
    return printable;
}

}  // namespace Kestra::Tool
