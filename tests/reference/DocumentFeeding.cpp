#include "tests/reference/DocumentFeeding.h"

#include <algorithm>
#include <cstring>

#include "platform/Results.h"

namespace Kestra::Test {

namespace {

std::uint32_t DetectNothing(const void*, std::uint64_t, Base::DetectedCharset*, std::uint32_t* count) {
    *count = 0;
    return 0;
}

Base::Services WithoutDetection() {
    Base::Services services = Base::PLATFORM_SERVICES;
    services.detectCharset = DetectNothing;
    return services;
}

}  // namespace

SilentDetector::SilentDetector() : services(WithoutDetection()), replacement(services) {}

void CutInputStream::Reset(std::string_view documentBytes, const Cuts& readCuts) {
    bytes = documentBytes;
    cuts = &readCuts;
    nextCut = 0;
    next = 0;
    delivered = 0;
}

std::uint32_t CutInputStream::Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    *bytesRead = 0;
    if (IsEnd())
        return RESULT_END_OF_DATA;
    std::size_t limit = delivered;
    if (next >= delivered) {
        while (nextCut < cuts->size() && (*cuts)[nextCut] <= next)
            ++nextCut;
        limit = nextCut < cuts->size() ? (*cuts)[nextCut] : bytes.size();
    }
    const std::size_t number = std::min(static_cast<std::size_t>(size), limit - next);
    std::memcpy(buffer, bytes.data() + next, number);
    next += number;
    delivered = std::max(delivered, next);
    *bytesRead = number;
    return RESULT_OK;
}

std::uint32_t CutInputStream::GetPosition(std::uint64_t* position) {
    *position = next;
    return RESULT_OK;
}

std::uint32_t CutInputStream::Seek(std::uint64_t position) {
    if (position > bytes.size())
        return RESULT_STREAM_FAILED;
    next = static_cast<std::size_t>(position);
    return RESULT_OK;
}

bool CutInputStream::IsEnd() {
    return next == bytes.size();
}

Cuts CutsAsRead(const Cuts& cuts, std::size_t length, std::size_t readSize) {
    Cuts read;
    for (const auto& [begin, end] : PiecesOf(cuts, length)) {
        for (std::size_t at = begin; at < end; at += readSize) {
            if (at > 0)
                read.push_back(at);
        }
    }
    return read;
}

Cuts CutsOfShortReads(std::size_t length, Dice* dice) {
    constexpr std::size_t MOST[] = {64, 64, 16, 3, 1};
    const std::size_t most = std::min(length, MOST[length < 64 ? dice->Between(2, 4) : dice->Below(5)]);
    Cuts cuts;
    for (std::size_t at = 0; at < length;) {
        at += dice->Between(1, most);
        if (at < length)
            cuts.push_back(at);
    }
    return cuts;
}

std::size_t PieceBegin(const Cuts& cuts, std::size_t index) {
    const auto after = std::upper_bound(cuts.begin(), cuts.end(), index);
    return after == cuts.begin() ? 0 : *std::prev(after);
}

void ForEverySplitOfTheTail(std::size_t length, std::size_t tail, const std::function<bool(const Cuts&)>& run) {
    const std::size_t head = length - tail;
    const bool headHasCuts = head > 1;
    // Bit i of a choice cuts before the character i of the tail. Nothing is cut before the whole
    // document.
    for (std::size_t choice = 0; choice < (std::size_t{1} << tail); ++choice) {
        if (head == 0 && (choice & 1) != 0)
            continue;
        for (const bool headIsCut : {false, true}) {
            if (headIsCut && !headHasCuts)
                continue;
            Cuts cuts;
            for (std::size_t at = 1; at < head && headIsCut; ++at)
                cuts.push_back(at);
            for (std::size_t i = 0; i < tail; ++i) {
                if ((choice >> i & 1) != 0)
                    cuts.push_back(head + i);
            }
            if (!run(cuts))
                return;
        }
    }
}

}  // namespace Kestra::Test
