#include "html/rewrite/RewriterOutput.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "html/rewrite/RawElements.h"
#include "platform/Results.h"

namespace Kestra::HTML {

class RewriterOutput::RetainedBytesStream final : public VFS::InputStream {
public:
    explicit RetainedBytesStream(const RewriterOutput* owner) : document(owner) {}

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        *bytesRead = 0;
        auto* to = static_cast<char*>(buffer);
        while (size > 0 && position >= document->retainedBegin && position < document->fed) {
            const bool isInPiece = position >= document->pieceBegin;
            const std::uint64_t count = std::min(size, (isInPiece ? document->fed : document->pieceBegin) - position);
            const char* const from = isInPiece ? document->piece + (position - document->pieceBegin)  //
                                               : document->retained.data() + (position - document->retainedBegin);
            std::memcpy(to, from, static_cast<std::size_t>(count));
            to += count;
            position += count;
            size -= count;
            *bytesRead += count;
        }
        return *bytesRead > 0 || size == 0 ? RESULT_OK : RESULT_END_OF_DATA;
    }
    std::uint32_t GetPosition(std::uint64_t* offset) override {
        *offset = position;
        return RESULT_OK;
    }
    std::uint32_t Seek(std::uint64_t offset) override {
        position = offset;
        return RESULT_OK;
    }
    bool IsEnd() override {
        return position >= document->fed;
    }

private:
    const RewriterOutput* document;
    std::uint64_t position = 0;
};

RewriterOutput::RewriterOutput(ParserObserverOutputHandler* handler, const GenericParser* documentParser)
    : output(handler), view(documentParser), retainedBytesStream(std::make_unique<RetainedBytesStream>(this)) {}

RewriterOutput::~RewriterOutput() = default;

// -------------------------------------------------------------------------------------------------
// input

void RewriterOutput::BeginDocument() {
    fed = 0;
    written = 0;
    retainedBegin = 0;
    pieceBegin = 0;
    tailSize = 0;
}

void RewriterOutput::BeginPiece(const char* data, std::uint64_t size) {
    piece = data;
    pieceBegin = fed;
    fed += size;
}

void RewriterOutput::EndPieces() {
    piece = nullptr;
    pieceBegin = fed;
}

void RewriterOutput::RetainFrom(std::uint64_t begin) {
    begin = std::max(begin, retainedBegin);
    const std::uint64_t size = fed - pieceBegin;
    if (begin >= pieceBegin) {
        retained.assign(piece + (begin - pieceBegin), static_cast<std::size_t>(fed - begin));
    } else {
        retained.erase(0, static_cast<std::size_t>(begin - retainedBegin));
        retainedBegin = begin;
        retained.resize(static_cast<std::size_t>(std::min<std::uint64_t>(retained.size(), pieceBegin - begin)));
        retained.append(piece, static_cast<std::size_t>(size));
    }
    retainedBegin = begin;
}

void RewriterOutput::ForgetRetained() {
    retained.clear();
    retainedBegin = fed;
}

VFS::InputStream* RewriterOutput::GetRetainedBytes() {
    return retainedBytesStream.get();
}

std::string_view RewriterOutput::GetBytes(const TokenPlace& place) {
    const auto size = static_cast<std::size_t>(place.end - place.begin);
    if (size == 0 || place.begin < std::min(retainedBegin, pieceBegin) || place.end > fed)
        return {};
    if (place.begin >= pieceBegin)
        return {piece + (place.begin - pieceBegin), size};
    const std::uint64_t retainedEnd = retainedBegin + retained.size();
    if (retainedEnd < place.end)
        retained.append(piece + (retainedEnd - pieceBegin), static_cast<std::size_t>(place.end - retainedEnd));
    return std::string_view(retained).substr(static_cast<std::size_t>(place.begin - retainedBegin), size);
}

std::string RewriterOutput::GetTail(std::uint64_t tokenBegin) const {
    std::string bytes(tail.data(), tailSize);
    if (removals > 0 || written >= tokenBegin)
        return bytes;
    const std::uint64_t longest = std::min<std::uint64_t>(tokenBegin, DocumentView::TAIL_SIZE);
    for (std::uint64_t place = std::max(written, tokenBegin - longest); place < tokenBegin; ++place)
        bytes.push_back(place < pieceBegin ? retained[static_cast<std::size_t>(place - retainedBegin)]
                                           : piece[place - pieceBegin]);
    return bytes;
}

// -------------------------------------------------------------------------------------------------
// output

void RewriterOutput::CopyUntil(std::uint64_t offset) {
    while (written < offset) {
        const std::uint64_t begin = written;
        const bool isRetained = begin < pieceBegin;
        const std::uint64_t end = isRetained ? std::min(offset, pieceBegin) : offset;
        written = end;
        const char* const from = isRetained ? retained.data() + (begin - retainedBegin) : piece + (begin - pieceBegin);
        Emit(std::string_view(from, static_cast<std::size_t>(end - begin)));
    }
}

std::exception_ptr RewriterOutput::CopyWhateverHappens(std::uint64_t offset) noexcept {
    std::exception_ptr failure;
    while (written < offset) {
        try {
            CopyUntil(offset);
        } catch (...) {
            isHostsFault = true;
            if (failure == nullptr)
                failure = std::current_exception();
        }
    }
    return failure;
}

void RewriterOutput::Skip(std::uint64_t offset) {
    written = std::max(written, offset);
}

void RewriterOutput::Emit(std::string_view bytes) {
    if (removals > 0 || bytes.empty())
        return;
    constexpr std::size_t TAIL_SIZE = DocumentView::TAIL_SIZE;
    if (bytes.size() >= TAIL_SIZE) {
        std::memcpy(tail.data(), bytes.data() + (bytes.size() - TAIL_SIZE), TAIL_SIZE);
        tailSize = TAIL_SIZE;
    } else {
        const std::size_t old = std::min(tailSize, TAIL_SIZE - bytes.size());
        std::memmove(tail.data(), tail.data() + (tailSize - old), old);
        std::memcpy(tail.data() + old, bytes.data(), bytes.size());
        tailSize = old + bytes.size();
    }
    if (output == nullptr)
        return;
    try {
        output->Write(bytes.data(), bytes.size(), true);
    } catch (...) {
        isHostsFault = true;
        throw;
    }
}

void RewriterOutput::EmitInsertion(const Insertion& insertion) {
    if (removals > 0 || insertion.bytes.empty())
        return;
    if (insertion.textBegin == Insertion::NO_TEXT) {
        Emit(insertion.bytes);
        return;
    }
    std::string guarded;
    try {
        const std::string_view markup = std::string_view(insertion.bytes).substr(0, insertion.textBegin);
        std::string guardedText = insertion.bytes.substr(insertion.textBegin);
        view.Guard(view.ViewTail(markup, std::string_view(tail.data(), tailSize)), &guardedText);
        guarded = std::string(markup).append(guardedText);
    } catch (const std::bad_alloc&) {
        guarded.clear();
    }
    Emit(guarded.empty() ? insertion.bytes : guarded);
}

void RewriterOutput::EmitEndOfContent(const ElementEdits& edited) {
    if (edited.isRemoved || edited.end.bytes.empty())
        return;
    try {
        const std::string before = view.ViewTail(std::string_view(tail.data(), tailSize), "");
        if (edited.raw != RAW_NONE && EndsRawElement(edited.raw, view.ViewOf(edited.end.bytes), {before, "</", true}))
            return;
    } catch (const std::bad_alloc&) {
        return;
    }
    EmitInsertion(edited.end);
}

// -------------------------------------------------------------------------------------------------
// contents that are left out

void RewriterOutput::BeginRemoval(ElementEdits* edited) {
    removals += edited->hasNoContent ? 1 : 0;
    edited->removalSeries = removalSeries;
}

void RewriterOutput::EndRemoval(const ElementEdits& edited) {
    if (edited.hasNoContent && edited.removalSeries == removalSeries)
        --removals;
}

void RewriterOutput::EndRemovals() {
    removals = 0;
    ++removalSeries;
}

}  // namespace Kestra::HTML
