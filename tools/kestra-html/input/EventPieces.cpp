#include "tools/kestra-html/input/EventPieces.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "html/stateless/StatelessHTMLObserver.h"
#include "html/stateless/StatelessResults.h"
#include "platform/Results.h"

namespace Kestra::Tool {

namespace {

using HTML::StatelessHTMLParser;

/// What follows the bytes that are looked at, so that none of them is the last one of a piece. A
/// white space completes no construct.
constexpr char AFTER = '\n';

/// Remembers where in the document the last event came that is over within the bytes looked at.
class LastEvent final : public HTML::StatelessHTMLObserver {
public:
    LastEvent(const StatelessHTMLParser* observedParser, std::uint64_t endOfBytes)
        : parser(observedParser), end(endOfBytes) {}

    /// 0 for none.
    std::uint64_t GetEnd() const {
        return last;
    }

    void OnStartTag(const WideChar*, const Attributes*) override {
        EndAfter(0);
    }
    void OnEndTag(const WideChar*) override {
        EndAfter(0);
    }
    void OnScript(const Attributes*, const WideChar*) override {
        EndAfter(0);
    }
    void OnExternTag(const WideChar*, const Attributes*) override {
        EndAfter(0);
    }
    void OnEntityTag(const WideChar*, const Tokens*) override {
        EndAfter(0);
    }
    /// A comment that is still open ends with `AFTER`.
    void OnComment(const WideChar*) override {
        EndAfter(0);
    }
    /// The "<" after a text causes the event.
    void OnText(const WideChar*) override {
        EndAfter(1);
    }
    void OnStyle(const Attributes*, const WideChar*) override {
        EndAfter(0);
    }

private:
    void EndAfter(std::uint64_t count) {
        std::uint64_t offset = 0;
        parser->GetCurrentOffset(&offset);
        if (offset + count <= end)
            last = offset + count;
    }

    const StatelessHTMLParser* parser;
    std::uint64_t end;
    std::uint64_t last = 0;
};

bool IsMalformed(std::uint32_t result) {
    return result != HTML::STATELESS_OK && result != HTML::STATELESS_NEED_MORE_DATA &&
           result != HTML::STATELESS_LIMIT_EXCEEDED;
}

}  // namespace

EventPieces::EventPieces(const StatelessHTMLParser& started, InputSource* inputSource, PieceSettings pieceSettings)
    : source(inputSource), settings(std::move(pieceSettings)), follower(started) {
    source->Seek(0);
}

std::uint32_t EventPieces::Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) {
    if (bytesRead == nullptr || (buffer == nullptr && size > 0))
        return RESULT_INVALID_ARGUMENT;
    *bytesRead = 0;
    if (size == 0)
        return RESULT_OK;
    if (settings.beforePiece && !settings.beforePiece(next))
        return RESULT_END_OF_DATA;
    if (next == pieceEnd)
        pieceEnd = next + (settings.pieceSize > 0 ? std::min(size, settings.pieceSize) : size);
    const auto most = static_cast<std::size_t>(std::min(size, pieceEnd - next));
    std::size_t count = pending.empty() ? 0 : FindEnd();
    while (count == 0 && pending.size() < most) {
        const std::uint32_t result = ReadMore(most);
        if (result != RESULT_OK && pending.empty())
            return result;
        count = result == RESULT_OK ? FindEnd() : pending.size();  // a failure comes back with the next read
    }
    count = count == 0 ? most : std::min(count, most);
    HandOver(count, buffer);
    *bytesRead = count;
    return RESULT_OK;
}

/// Adds what is there, up to the end of the whole piece.
std::uint32_t EventPieces::ReadMore(std::size_t most) {
    const std::size_t before = pending.size();
    pending.resize(most);
    std::uint64_t count = 0;
    const std::uint32_t result = source->Read(pending.data() + before, most - before, &count);
    pending.resize(before + static_cast<std::size_t>(count));
    return result;
}

/// How many of the pending bytes may be a piece: up to the last event, or all where the document
/// is malformed and ends. A token that is too long is left for the whole piece, which may be
/// malformed before it is over.
/// @return 0 for none
std::size_t EventPieces::FindEnd() const {
    StatelessHTMLParser ahead(follower);
    LastEvent event(&ahead, next + pending.size());
    ahead.Attach(&event);
    const std::string bytes = pending + AFTER;
    const std::uint32_t result = ahead.ParseBuffer(bytes.data(), bytes.size());
    if (event.GetEnd() > next)  // a text may end before what is pending: where its end tag begins
        return static_cast<std::size_t>(event.GetEnd() - next);
    const bool isMalformed =
        IsMalformed(result) && IsMalformed(StatelessHTMLParser(follower).ParseBuffer(pending.data(), pending.size()));
    return isMalformed ? pending.size() : 0;
}

void EventPieces::HandOver(std::size_t count, void* buffer) {
    std::memcpy(buffer, pending.data(), count);
    follower.ParseBuffer(pending.data(), count);
    pending.erase(0, count);
    next += count;
    if (settings.bytesDone)
        settings.bytesDone(next);
}

std::uint32_t EventPieces::GetPosition(std::uint64_t* position) {
    if (position == nullptr)
        return RESULT_INVALID_ARGUMENT;
    *position = next;
    return RESULT_OK;
}

std::uint32_t EventPieces::Seek(std::uint64_t) {
    return RESULT_STREAM_FAILED;
}

bool EventPieces::IsEnd() {
    return pending.empty() && source->IsEnd();
}

}  // namespace Kestra::Tool
