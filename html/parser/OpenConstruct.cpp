#include "html/parser/OpenConstruct.h"

#include <utility>

#include "html/framework/Instantiate.h"
#include "html/framework/ResultCodes.h"
#include "platform/MemoryInputStream.h"
#include "platform/Results.h"
#include "platform/Services.h"

namespace Kestra::HTML {

namespace {

constexpr std::uint64_t READ_SIZE = 16384;       // bytes per read
constexpr std::uint64_t LEAST_READ_SIZE = 1024;  // with a limit, as a construct is hardly longer than the limit

}  // namespace

template <typename C, typename S>
void OpenConstruct<C, S>::BeginDocument(std::uint64_t markLength) {
    startPosition = 0;
    startBase = markLength;
    startFed = 0;
    pieceBase = markLength;
    isPiecePositioned = false;
    isStartPositioned = false;
}

template <typename C, typename S>
void OpenConstruct<C, S>::BeginPiece(const PieceOrigin& origin) {
    isPiecePositioned = origin.positioned;
    if (origin.positioned)
        pieceBase = origin.offset;
    if (!origin.fromStream)
        isStartPositioned = false;
}

template <typename C, typename S>
void OpenConstruct<C, S>::SetStream(VFS::InputStream* newStream) {
    if (newStream == stream.Get())
        return;
    stream = newStream;
    isPiecePositioned = false;
    isStartPositioned = false;
}

template <typename C, typename S>
void OpenConstruct<C, S>::ReplaceStream(VFS::InputStream* newStream) {
    stream = newStream;
}

template <typename C, typename S>
bool OpenConstruct<C, S>::CanReadBack() const {
    return stream.Get() != nullptr && isPiecePositioned && isStartPositioned;
}

template <typename C, typename S>
std::uint32_t OpenConstruct<C, S>::ReadBack(const ParserInput<C, S>& input, std::uint64_t maxTokenSize,
                                            std::string* bytes) {
    std::uint64_t from = GetStartOffset();
    const std::uint64_t to = pieceBase + input.context.position * sizeof(C);
    const std::uint64_t fed = (input.GetOffset() - startFed) * sizeof(C);
    if (from < to && to - from > fed)
        return PARSER_SHORT_READ;
    if (buffer.Get() == nullptr)
        buffer = std::make_unique<Base::DefaultBufferAllocPolicy>();
    Base::DefaultBufferAllocPolicy& memory = *buffer.Get();
    const std::uint64_t size =
        maxTokenSize == 0 ? READ_SIZE : std::min(READ_SIZE, std::max(maxTokenSize, LEAST_READ_SIZE));
    std::uint32_t result = Base::GetServices().adjustBuffer(&memory, size);
    std::uint64_t place = 0;
    if (result == RESULT_OK)
        result = stream.Get()->GetPosition(&place);
    if (result == RESULT_OK)
        result = stream.Get()->Seek(from);
    while (result == RESULT_OK && from < to) {
        const std::uint64_t wanted = std::min(size, to - from);
        std::uint64_t count = 0;
        result = stream.Get()->Read(memory.GetData(), wanted, &count);
        if (result == RESULT_OK && count != wanted)
            result = PARSER_SHORT_READ;
        if (result == RESULT_OK)
            bytes->append(memory.GetData(), static_cast<std::size_t>(count));
        from += wanted;
    }
    return result == RESULT_OK ? stream.Get()->Seek(place) : result;
}

template <typename C, typename S>
std::unique_ptr<VFS::InputStream> OpenConstruct<C, S>::CopyToMemory(const ParserInput<C, S>& input,
                                                                    std::uint64_t maxTokenSize) {
    std::string bytes;
    if (!CanReadBack() || ReadBack(input, maxTokenSize, &bytes) != PARSER_OK)
        return nullptr;
    return std::make_unique<VFS::MemoryInputStream>(std::move(bytes), GetStartOffset());
}

/// In the stream, in bytes.
template <typename C, typename S>
std::uint64_t OpenConstruct<C, S>::GetStartOffset() const {
    return startBase + startPosition * sizeof(C);
}

KESTRA_HTML_INSTANTIATE(OpenConstruct);

}  // namespace Kestra::HTML
