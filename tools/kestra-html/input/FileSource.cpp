#include "tools/kestra-html/input/FileSource.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/Results.h"

namespace Kestra::Tool {

namespace {

constexpr std::uint64_t MOST_IN_BLOCK = std::uint64_t{64} * 1024;

/// For all of a small file. A file that says it is empty may have been made while it is read.
std::size_t ChooseBlock(std::uint64_t fileSize) {
    return static_cast<std::size_t>(fileSize == 0 ? MOST_IN_BLOCK : std::min(fileSize, MOST_IN_BLOCK));
}

}  // namespace

FileSource::FileSource(std::unique_ptr<RawInput> openFile)
    : file(std::move(openFile)), blockRoom(ChooseBlock(file->GetSize())), block(new char[blockRoom]) {}

std::uint32_t FileSource::Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    *bytesRead = 0;
    if (size == 0)
        return RESULT_OK;
    const bool isInBlock = next >= blockBegin && next - blockBegin < blockSize;
    if (const ReadResult result = isInBlock ? ReadResult() : FillBlock(); result != ReadResult::READ) {
        failure = result;
        return RESULT_STREAM_FAILED;
    }
    if (blockSize == 0)
        return RESULT_END_OF_DATA;
    const auto from = static_cast<std::size_t>(next - blockBegin);
    *bytesRead = std::min<std::uint64_t>(size, blockSize - from);
    std::memcpy(buffer, block.get() + from, static_cast<std::size_t>(*bytesRead));
    next += *bytesRead;
    return RESULT_OK;
}

/// With the bytes from the current position on.
ReadResult FileSource::FillBlock() {
    const bool isAtPlace = next == blockBegin + blockSize;
    blockBegin = next;
    blockSize = 0;
    ReadResult result = isAtPlace ? ReadResult() : file->Seek(next);
    if (result == ReadResult::READ)
        result = file->Read(block.get(), blockRoom, &blockSize);
    furthest = std::max(furthest, blockBegin + blockSize);
    return result;
}

std::uint32_t FileSource::Seek(std::uint64_t position) {
    next = position;
    return RESULT_OK;
}

std::optional<std::uint64_t> FileSource::GetSize() const {
    // A file that grows, or that is made while it is read, has more than it said.
    const std::optional<std::uint64_t> size = file->GetSize();
    return size ? std::optional(std::max(*size, furthest)) : std::nullopt;
}

}  // namespace Kestra::Tool
