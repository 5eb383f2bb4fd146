#include "html/parser/GenericParserEngine.h"

#include <cstring>

#include "html/framework/ResultCodes.h"
#include "html/parser/StreamPieces.h"
#include "platform/AtScopeEnd.h"
#include "platform/Results.h"
#include "platform/StringHelper.h"
#include "platform/VirtualFileSystem.h"

namespace Kestra::HTML {

namespace {

/// UTF-7 hides markup in shifted runs, so it is read as 1252, in which every byte stands for
/// itself.
StringNS::CharSet::Code DocumentCharset(StringNS::CharSet::Code code) {
    return code == StringNS::CharSet::UTF7 ? StringNS::CharSet::WINDOWS_1252 : code;
}

/// Begins a document with the first piece. When a callback throws, that piece is in no token.
/// @param bytes  of the document so far
template <typename Parser, typename Start>
std::uint32_t SkipWhenItThrows(Parser& parser, std::uint64_t bytes, Start start) {
    try {
        return start();
    } catch (...) {
        parser.SkipTo(bytes);
        throw;
    }
}

}  // namespace

GenericParserEngine::GenericParserEngine() = default;

GenericParserEngine::GenericParserEngine(const GenericParserEngine& other)
    : mode(other.mode),
      charset(other.charset),
      narrowParser(other.narrowParser),
      wideParser(other.wideParser),
      observers(other.observers),
      detection(other.detection),
      charsetDetected(other.charsetDetected),
      ended(other.ended) {}

GenericParserEngine::~GenericParserEngine() = default;

/// Marks a call that feeds, starts or ends. Observers replaced meanwhile are freed at its end.
auto GenericParserEngine::BeginCall() {
    isBusy = true;
    return AtScopeEnd([this] {
        isBusy = false;
        observers.FreeReplaced();
    });
}

/// Makes both parsers forget their stream when a call fails or an observer throws. Cancelled, the
/// stream stays in use.
auto GenericParserEngine::BeginStreamUse() {
    return AtScopeEnd([this] { SetBackingStream(nullptr); });
}

std::uint32_t GenericParserEngine::StartParse(StringNS::CharSet::Code code, GenericParser::DataStreamType type) {
    if (isBusy.Get())
        return PARSER_INVALID_ARGUMENT;
    const auto call = BeginCall();
    SetBackingStream(nullptr);
    charset = code;
    charsetDetected = false;
    ended = false;
    std::uint32_t result = PARSER_OK;
    switch (type) {
        case GenericParser::DATA_STREAM_8BIT:
            result = StartNarrow(0, 0, DocumentCharset(code), false);
            break;
        case GenericParser::DATA_STREAM_UTF16:
            result = StartWide(false);
            break;
        case GenericParser::DATA_STREAM_AUTO:
        default:
            mode = MODE_START;
            return PARSER_OK;
    }
    return result == PARSER_OK ? AnnounceCharset() : result;
}

/// Calls `OnCharset` for a document that has begun.
std::uint32_t GenericParserEngine::AnnounceCharset() {
    const auto announce = [](auto& parser) {
        parser.GetDelivery().OnCharset(parser.GetDelivery().GetCharset());
        return true;
    };
    CallRunning(announce, false);
    return IsStopped() ? PARSER_STOPPED : PARSER_OK;
}

/// Begins a document with the 8-bit parser, which has the charset of the document before until the
/// callbacks have returned.
/// @param markLength    of the UTF-8 mark, 0 without one
/// @param bytesDropped  of a mark that turned out to be none
std::uint32_t GenericParserEngine::StartNarrow(std::uint64_t markLength, std::uint64_t bytesDropped,
                                               StringNS::CharSet::Code code, bool detected) {
    mode = MODE_NARROW;
    wideParser.Release();
    const AtScopeEnd settle([this, code] {
        narrowParser.GetDelivery().SetCharset(code);
        narrowParser.GetMarkupCharset().SetDiscovery(code == StringNS::CharSet::UNKNOWN);
    });
    const std::uint32_t result = narrowParser.Start(markLength, detected, bytesDropped);
    if (result != PARSER_OK || markLength == 0)
        return result;
    narrowParser.OnBOM(StringNS::BOM_UTF8, markLength);
    return narrowParser.IsStopped() ? PARSER_STOPPED : PARSER_OK;
}

/// Begins a document with the wide parser. A mark decides the charset before the callbacks.
std::uint32_t GenericParserEngine::StartWide(bool hasMark) {
    mode = MODE_WIDE;
    narrowParser.Release();
    const auto settle = [this] {
        charset = StringNS::CharSet::UTF16_LE;
        wideParser.GetDelivery().SetCharset(charset);
    };
    if (hasMark)
        settle();
    const AtScopeEnd settleAtEnd(settle);
    wideParser.GetMarkupCharset().SetDiscovery(false);
    const std::uint32_t result = wideParser.Start(hasMark ? sizeof(StringNS::BOM_UTF16_LE) : 0, false, 0);
    if (result != PARSER_OK || !hasMark)
        return result;
    wideParser.OnBOM(StringNS::BOM_UTF16_LE, sizeof(StringNS::BOM_UTF16_LE));
    return wideParser.IsStopped() ? PARSER_STOPPED : PARSER_OK;
}

std::uint32_t GenericParserEngine::ParseBuffer(const char* data, std::uint64_t size) {
    if (isBusy.Get())
        return PARSER_INVALID_ARGUMENT;
    const auto call = BeginCall();
    auto use = BeginStreamUse();
    const std::uint32_t result = FeedBytes(data, size, PieceOrigin());
    if (result == PARSER_OK)
        use.Cancel();
    return ReportLostToken(result);
}

std::uint32_t GenericParserEngine::FeedPiece(const char* data, std::uint64_t size, VFS::InputStream* backing,
                                             std::uint64_t offset) {
    const auto call = BeginCall();
    auto use = BeginStreamUse();
    SetBackingStream(backing);
    PieceOrigin origin;
    origin.fromStream = true;
    origin.positioned = true;
    origin.offset = offset;
    std::uint32_t result = FeedBytes(data, size, origin);
    if (result == PARSER_UNTERMINATED)
        result = PARSER_OK;  // as in `FeedStream`
    if (result == PARSER_OK)
        use.Cancel();
    return ReportLostToken(result);
}

std::uint64_t GenericParserEngine::CountWholeUnits(const char* data, std::uint64_t size) const {
    const auto isByte = [&](std::uint64_t index, unsigned char byte) {
        return index < size && static_cast<unsigned char>(data[index]) == byte;
    };
    std::uint64_t markBytes = 0;
    if (mode == MODE_START && isByte(0, StringNS::BOM_UTF16_LE[0]) && isByte(1, StringNS::BOM_UTF16_LE[1]))
        markBytes = 2;
    else if (mode == MODE_UTF16_MARK_1 && isByte(0, StringNS::BOM_UTF16_LE[1]))
        markBytes = 1;
    else if (mode != MODE_WIDE)
        return size;
    return markBytes + (size - markBytes) / sizeof(WideChar) * sizeof(WideChar);
}

/// The answer of a call that feeds or ends. A token that was lost because memory was lacking ends
/// nothing; it is reported by the first call that would answer 0.
std::uint32_t GenericParserEngine::ReportLostToken(std::uint32_t result) {
    if (result != PARSER_OK)
        return result;
    const bool outOfMemory =
        CallRunning([](auto& parser) { return parser.GetDelivery().ReportAndResetOutOfMemory(); }, false);
    return outOfMemory ? std::uint32_t{RESULT_OUT_OF_MEMORY} : std::uint32_t{PARSER_OK};
}

std::uint32_t GenericParserEngine::FeedBytes(const char* data, std::uint64_t size, const PieceOrigin& origin) {
    if (size == 0)
        return PARSER_OK;
    if (data == nullptr)
        return PARSER_INVALID_ARGUMENT;
    if (IsStopped())
        return PARSER_STOPPED;
    if (mode == MODE_NARROW)
        return FeedNarrow(data, size, origin);
    if (mode == MODE_WIDE)
        return FeedWide(data, size, origin);
    return FeedFirstBytes(data, size, origin);
}

//  mode       EF     BB     BF          FF     FE           other
//  0 start    to 1   text   text        to 3   text         text
//  1 EF       text   to 2   text        text   text         text
//  2 EF BB    text   text   mark, to 4  text   text         text
//  3 FF       text   text   text        text   mark, to 5   text
//
// "text": there is no mark, and the whole current piece is 8-bit text, to 4. Bytes of a possible
// mark in an earlier piece are dropped.
std::uint32_t GenericParserEngine::FeedFirstBytes(const char* data, std::uint64_t size, const PieceOrigin& origin) {
    const std::uint64_t bytesDropped = mode == MODE_UTF8_MARK_2 ? 2 : mode == MODE_START ? 0 : 1;
    const std::uint64_t all = bytesDropped + size;
    for (std::uint64_t i = 0; i < size; ++i) {
        const auto byte = static_cast<unsigned char>(data[i]);
        PieceOrigin rest = origin;
        rest.offset += i + 1;
        if (mode == MODE_START && byte == StringNS::BOM_UTF8[0]) {
            mode = MODE_UTF8_MARK_1;
        } else if (mode == MODE_START && byte == StringNS::BOM_UTF16_LE[0]) {
            mode = MODE_UTF16_MARK_1;
        } else if (mode == MODE_UTF8_MARK_1 && byte == StringNS::BOM_UTF8[1]) {
            mode = MODE_UTF8_MARK_2;
        } else if (mode == MODE_UTF8_MARK_2 && byte == StringNS::BOM_UTF8[2]) {
            charset = StringNS::CharSet::UTF8;
            const std::uint32_t result = SkipWhenItThrows(
                narrowParser, all, [this] { return StartNarrow(sizeof(StringNS::BOM_UTF8), 0, charset, false); });
            return result != PARSER_OK ? result : FeedNarrow(data + i + 1, size - i - 1, rest);
        } else if (mode == MODE_UTF16_MARK_1 && byte == StringNS::BOM_UTF16_LE[1]) {
            const std::uint32_t result = SkipWhenItThrows(wideParser, all, [this] { return StartWide(true); });
            return result != PARSER_OK ? result : FeedWide(data + i + 1, size - i - 1, rest);
        } else {
            const std::uint32_t result = SkipWhenItThrows(narrowParser, all, [&] {
                return StartNarrow(0, bytesDropped, DocumentCharset(charset), charsetDetected);
            });
            return result != PARSER_OK ? result : FeedNarrow(data, size, origin);
        }
    }
    return PARSER_OK;
}

std::uint32_t GenericParserEngine::FeedNarrow(const char* data, std::uint64_t size, const PieceOrigin& origin) {
    ended = false;
    return narrowParser.Parse(data, size, origin);
}

std::uint32_t GenericParserEngine::FeedWide(const char* data, std::uint64_t size, const PieceOrigin& origin) {
    if (size % sizeof(WideChar) != 0)
        return PARSER_INVALID_ARGUMENT;
    if (size == 0)
        return PARSER_OK;
    ended = false;
    const std::uint64_t length = size / sizeof(WideChar);
    if (reinterpret_cast<std::uintptr_t>(data) % alignof(WideChar) == 0)
        return wideParser.Parse(reinterpret_cast<const WideChar*>(data), length, origin);
    alignedPiece.Get().resize(static_cast<std::size_t>(length));
    std::memcpy(alignedPiece.Get().data(), data, static_cast<std::size_t>(size));
    return wideParser.Parse(alignedPiece.Get().data(), length, origin);
}

std::uint32_t GenericParserEngine::ParseStream(VFS::InputStream* stream, bool ownsStream) {
    if (isBusy.Get())
        return PARSER_INVALID_ARGUMENT;
    const auto call = BeginCall();
    const std::unique_ptr<VFS::InputStream> owned(ownsStream ? stream : nullptr);
    auto use = BeginStreamUse();
    if (stream == nullptr)
        return PARSER_INVALID_ARGUMENT;
    if (IsStopped())
        return PARSER_STOPPED;
    std::uint32_t result = FeedStream(stream);
    if (result != PARSER_OK)
        return ReportLostToken(result);
    result = DetectLateCharset(stream);
    if (result == PARSER_PARSE_AGAIN)
        return ReportLostToken(result);
    if (ownsStream)
        KeepOpenConstruct();
    use.Cancel();
    return ReportLostToken(result);
}

std::uint32_t GenericParserEngine::FeedStream(VFS::InputStream* stream) {
    StreamPieces pieces(stream);
    std::uint32_t result = pieces.Allocate();
    if (result != RESULT_OK)
        return result;
    SetBackingStream(stream);
    while ((result == PARSER_OK || result == PARSER_UNTERMINATED) && !stream->IsEnd()) {
        PieceOrigin origin;
        const char* data = nullptr;
        std::uint64_t count = 0;
        const std::uint32_t readResult = pieces.Read(&data, &count, &origin);
        if (readResult != RESULT_OK)
            return readResult == RESULT_END_OF_DATA ? std::uint32_t{PARSER_OK} : readResult;
        if (count > 0)
            result = FeedBytes(data, count, origin);
    }
    return result == PARSER_UNTERMINATED ? std::uint32_t{PARSER_OK} : result;
}

/// A whole stream was parsed without a charset: calls the detector. Without a usable answer nothing
/// changes.
std::uint32_t GenericParserEngine::DetectLateCharset(VFS::InputStream* stream) {
    const bool isUnknown = QueryRunning(
        [](const auto& parser) { return parser.GetDelivery().GetCharset() == StringNS::CharSet::UNKNOWN; }, false);
    if (!isUnknown || stream->Seek(0) != RESULT_OK)
        return PARSER_OK;
    StringNS::CharSet::Code code = StringNS::CharSet::UNKNOWN;
    const std::uint32_t result = detection.Detect(stream, &code);
    if (result == PARSER_DETECTOR_FAILED || (result == PARSER_OK && code == StringNS::CharSet::UNKNOWN))
        return PARSER_CHARSET_NOT_DETECTED;
    if (result != PARSER_OK)
        return PARSER_OK;
    mode = MODE_START;
    charset = code;
    charsetDetected = true;
    return PARSER_PARSE_AGAIN;
}

/// An owned stream is about to be freed: copies into memory what `EndParse` may have to re-read.
void GenericParserEngine::KeepOpenConstruct() {
    std::unique_ptr<VFS::InputStream> kept =
        CallRunning([](auto& parser) { return parser.KeepOpenConstruct(); }, std::unique_ptr<VFS::InputStream>());
    if (kept == nullptr) {
        SetBackingStream(nullptr);
        return;
    }
    ForEachParser([&kept](auto& parser) { parser.ReplaceBackingStream(kept.get()); });
    keptBytes = std::move(kept);
}

void GenericParserEngine::SetBackingStream(VFS::InputStream* stream) {
    ForEachParser([stream](auto& parser) { parser.SetBackingStream(stream); });
    keptBytes = nullptr;
}

std::uint32_t GenericParserEngine::ParseFile(const WideChar* path) {
    if (isBusy.Get())
        return PARSER_INVALID_ARGUMENT;
    return ParseStream(VFS::VirtualFileSystem::GetInputStreamEx(path), true);
}

std::uint32_t GenericParserEngine::EndParse() {
    if (isBusy.Get())
        return PARSER_INVALID_ARGUMENT;
    const auto call = BeginCall();
    const auto use = BeginStreamUse();
    const bool isRunning = mode == MODE_NARROW || mode == MODE_WIDE;
    if (!isRunning || ended)
        return PARSER_OK;
    ended = true;
    if (QueryRunning([](const auto& parser) { return parser.IsHalted(); }, false))
        return PARSER_OK;
    return ReportLostToken(CallRunning([](auto& parser) { return parser.End(); }, std::uint32_t{PARSER_OK}));
}

std::uint32_t GenericParserEngine::Stop() {
    if (!isBusy.Get())
        return PARSER_INVALID_ARGUMENT;
    const auto stop = [](auto& parser) {
        parser.Stop();
        return std::uint32_t{PARSER_OK};
    };
    return CallRunning(stop, std::uint32_t{PARSER_INVALID_ARGUMENT});
}

bool GenericParserEngine::IsStopped() const {
    return QueryRunning([](const auto& parser) { return parser.IsStopped(); }, false);
}

bool GenericParserEngine::GetTagNameEnd(std::uint64_t* end) const {
    return QueryRunning([end](const auto& parser) { return parser.GetTagNameEnd(end); }, false);
}

StringNS::CharSet::Code GenericParserEngine::GetCharset() const {
    return QueryRunning([](const auto& parser) { return parser.GetDelivery().GetCharset(); }, charset);
}

bool GenericParserEngine::IsWide() const {
    return mode == MODE_WIDE;
}

CharsetDetection& GenericParserEngine::GetDetection() {
    return detection;
}

const CharsetDetection& GenericParserEngine::GetDetection() const {
    return detection;
}

}  // namespace Kestra::HTML
