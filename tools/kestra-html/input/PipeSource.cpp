#include "tools/kestra-html/input/PipeSource.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <new>
#include <utility>

#include "platform/Results.h"

namespace Kestra::Tool {

namespace {

constexpr std::size_t BLOCK_SIZE = std::size_t{64} * 1024;

}  // namespace

PipeSource::PipeSource(std::unique_ptr<RawInput> openPipe, ReadingEvents readingEvents)
    : pipe(std::move(openPipe)), events(std::move(readingEvents)), kept(MOST_IN_MEMORY), keptReader(kept) {}

std::uint64_t PipeSource::GetEnd() const {
    return windowBegin + window.size();
}

std::uint32_t PipeSource::Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    *bytesRead = 0;
    if (size == 0)
        return RESULT_OK;
    if (next == GetEnd()) {
        if (const std::uint32_t result = Fetch(); result != RESULT_OK)
            return result;
    }
    if (next < windowBegin) {
        if (next >= kept.GetSize() || keptReader.Seek(next) != RESULT_OK)
            return RESULT_STREAM_FAILED;
        if (keptReader.Read(buffer, std::min(size, kept.GetSize() - next), bytesRead) != RESULT_OK)
            return Fail(ReadResult::NO_TEMPORARY_FILE);
    } else {
        const auto from = static_cast<std::size_t>(next - windowBegin);
        *bytesRead = std::min<std::uint64_t>(size, window.size() - from);
        std::memcpy(buffer, window.data() + from, static_cast<std::size_t>(*bytesRead));
    }
    next += *bytesRead;
    return RESULT_OK;
}

/// Reads the next bytes into the window.
std::uint32_t PipeSource::Fetch() {
    if (failure != ReadResult::READ)
        return RESULT_STREAM_FAILED;
    if (endSeen)
        return RESULT_END_OF_DATA;
    const bool isKept = keepsAll || kept.GetSize() < HEAD_SIZE;
    if (isKept) {
        windowBegin = GetEnd();
        window.clear();
    }
    const std::size_t before = window.size();
    try {
        window.resize(before + BLOCK_SIZE);
    } catch (const std::bad_alloc&) {
        return Fail(ReadResult::OUT_OF_MEMORY);
    }
    if (events.onWait)
        events.onWait();
    std::size_t count = 0;
    const ReadResult result = pipe->Read(window.data() + before, BLOCK_SIZE, &count);
    window.resize(before + count);
    if (result != ReadResult::READ)
        return Fail(result);
    furthest = GetEnd();
    endSeen = count == 0;
    if (endSeen)
        return RESULT_END_OF_DATA;
    return isKept ? Keep() : std::uint32_t{RESULT_OK};
}

std::uint32_t PipeSource::Keep() {
    if (!usesFile && kept.GetSize() + window.size() > MOST_IN_MEMORY) {
        usesFile = true;
        if (events.onFile)
            events.onFile();
    }
    return kept.Write(window.data(), window.size()) == RESULT_OK ? std::uint32_t{RESULT_OK}
                                                                 : Fail(ReadResult::NO_TEMPORARY_FILE);
}

std::uint32_t PipeSource::Fail(ReadResult why) {
    failure = why;
    return why == ReadResult::OUT_OF_MEMORY ? RESULT_OUT_OF_MEMORY : RESULT_STREAM_FAILED;
}

std::uint32_t PipeSource::Seek(std::uint64_t position) {
    const bool isThere = position <= kept.GetSize() || (position >= windowBegin && position <= GetEnd());
    if (!isThere)
        return RESULT_STREAM_FAILED;
    next = position;
    return RESULT_OK;
}

std::optional<std::uint64_t> PipeSource::GetSize() const {
    return endSeen ? std::optional(GetEnd()) : std::nullopt;
}

void PipeSource::ReadOnlyOnce() {
    keepsAll = false;
}

void PipeSource::Forget(std::uint64_t position) {
    if (keepsAll || position <= windowBegin)
        return;
    // A part at a time, so that what stays is not moved again and again.
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(position - windowBegin, window.size()));
    if (count < BLOCK_SIZE || count < window.size() / 2)
        return;
    window.erase(0, count);
    windowBegin += count;
}

}  // namespace Kestra::Tool
