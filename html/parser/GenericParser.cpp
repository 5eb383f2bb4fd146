#include "html/parser/GenericParser.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "html/parser/Parser.h"
#include "html/parser/StreamReader.h"
#include "platform/AtScopeEnd.h"
#include "platform/BufferAllocPolicy.h"
#include "platform/CharsetDetector.h"
#include "platform/Results.h"
#include "platform/Services.h"
#include "platform/StringHelper.h"
#include "platform/VirtualFileSystem.h"

namespace Kestra::HTML {

namespace {

/// What the first bytes have shown so far, or which parser runs.
enum FeedMode : std::uint32_t {
    MODE_START = 0,
    MODE_UTF8_MARK_1 = 1,   // EF
    MODE_UTF8_MARK_2 = 2,   // EF BB
    MODE_UTF16_MARK_1 = 3,  // FF
    MODE_NARROW = 4,
    MODE_WIDE = 5,
};

/// UTF-7 hides markup in shifted runs, so it is read as 1252, in which every byte stands for itself.
StringNS::CharSet::Code DocumentCharset(StringNS::CharSet::Code code) {
    return code == StringNS::CharSet::UTF7 ? StringNS::CharSet::WINDOWS_1252 : code;
}

/// Begins a document with the first piece. When a callback throws, that piece is in no token, as any other.
/// @param bytes  of the document that have come
template <typename Parser, typename Start>
std::uint32_t SkipWhenItThrows(Parser* parser, std::uint64_t bytes, Start start) {
    try {
        return start();
    } catch (...) {
        parser->SkipTo(bytes);
        throw;
    }
}

}  // namespace

/// An observer that parsers own together.
struct GenericParser::ObserverOwner {
    explicit ObserverOwner(void* ownedBlock) : block(ownedBlock) {}
    ObserverOwner(const ObserverOwner&) = delete;
    ObserverOwner& operator=(const ObserverOwner&) = delete;
    ~ObserverOwner() {
        if (frees)
            ::operator delete(block);
    }

    void* block;
    bool frees = true;
};

/// Marks a call that feeds input, so that callbacks cannot nest another one. Observers replaced meanwhile are freed at its end.
class GenericParser::Feeding {
public:
    explicit Feeding(GenericParser* feedingParser) : parser(feedingParser) {
        parser->feeding = true;
    }
    Feeding(const Feeding&) = delete;
    Feeding& operator=(const Feeding&) = delete;
    ~Feeding() {
        parser->feeding = false;
        parser->retiredObservers.Get().clear();
    }

private:
    GenericParser* parser;
};

/// Makes both parsers forget their stream when a call fails or an observer throws.
class GenericParser::StreamUse {
public:
    explicit StreamUse(GenericParser* usingParser) : parser(usingParser) {}
    StreamUse(const StreamUse&) = delete;
    StreamUse& operator=(const StreamUse&) = delete;
    ~StreamUse() {
        if (parser != nullptr)
            parser->SetBackingStream(nullptr);
    }

    /// The stream stays in use.
    void Keep() {
        parser = nullptr;
    }

private:
    GenericParser* parser;
};

GenericParser::GenericParser()
    : mode(MODE_START),
      charset(StringNS::CharSet::UNKNOWN),
      narrowParser(std::make_unique<Parser<char, std::string>>()),
      wideParser(std::make_unique<Parser<WideChar, WideString>>()),
      charObserver(nullptr),
      wcharObserver(nullptr),
      ownsObserver(false),
      chrDetMinConfidence(DETECTCHARSET_MIN_CONFIDENCE),
      charsetDetected(false),
      ended(false) {}

GenericParser::GenericParser(const GenericParser& other)
    : mode(other.mode),
      charset(other.charset),
      narrowParser(std::make_unique<Parser<char, std::string>>(*other.narrowParser)),
      wideParser(std::make_unique<Parser<WideChar, WideString>>(*other.wideParser)),
      charObserver(other.charObserver),
      wcharObserver(other.wcharObserver),
      ownsObserver(other.ownsObserver),
      chrDetMinConfidence(other.chrDetMinConfidence),
      charsetDetected(other.charsetDetected),
      ended(other.ended),
      observerOwner(other.observerOwner),
      sharedByCopies(other.sharedByCopies) {
    narrowParser->SettleCopy();
    wideParser->SettleCopy();
}

/// All that may fail is done before anything changes.
GenericParser& GenericParser::operator=(const GenericParser& other) {
    if (this != &other) {
        GenericParser copy(other);
        Swap(&copy);
    }
    return *this;
}

GenericParser::~GenericParser() = default;

std::uint32_t GenericParser::SetObserver(ParserObserver<char, std::string>* observer, bool owns) {
    BindObserver(observer, nullptr, observer, owns);
    return PARSER_OK;
}

std::uint32_t GenericParser::SetObserver(ParserObserver<WideChar, WideString>* observer, bool owns) {
    BindObserver(nullptr, observer, observer, owns);
    return PARSER_OK;
}

void GenericParser::Swap(GenericParser* other) {
    std::swap(mode, other->mode);
    std::swap(charset, other->charset);
    std::swap(narrowParser, other->narrowParser);
    std::swap(wideParser, other->wideParser);
    std::swap(charObserver, other->charObserver);
    std::swap(wcharObserver, other->wcharObserver);
    std::swap(ownsObserver, other->ownsObserver);
    std::swap(chrDetMinConfidence, other->chrDetMinConfidence);
    std::swap(charsetDetected, other->charsetDetected);
    std::swap(ended, other->ended);
    std::swap(observerOwner, other->observerOwner);
    std::swap(sharedByCopies, other->sharedByCopies);
    std::swap(keptBytes.Get(), other->keptBytes.Get());
    std::swap(alignedPiece.Get(), other->alignedPiece.Get());
}

/// Takes all the memory that it needs before anything changes.
void GenericParser::BindObserver(ParserObserver<char, std::string>* narrow, ParserObserver<WideChar, WideString>* wide, void* block,
                                 bool owns) {
    std::vector<std::shared_ptr<ObserverOwner>>& retired = retiredObservers.Get();
    if (feeding.Get())
        retired.reserve(retired.size() + 1);
    std::shared_ptr<ObserverOwner> owner = TakeOwnerOf(block);
    if (owner == nullptr && owns && block != nullptr)
        owner = std::make_shared<ObserverOwner>(block);
    if (observerOwner != nullptr) {
        sharedByCopies = observerOwner;
        if (feeding.Get())
            retired.push_back(std::move(observerOwner));
    }
    if (owner != nullptr && !owns) {
        if (owner.use_count() == 1)
            owner->frees = false;  // given back to the host, which binds the same observer as its own
        sharedByCopies = owner;
    }
    observerOwner = owns ? owner : nullptr;
    ownsObserver = observerOwner != nullptr;
    charObserver = narrow;
    wcharObserver = wide;
    narrowParser->SetObservers(narrow, wide);
    wideParser->SetObservers(narrow, wide);
}

/// The ownership that this parser has, or that its copies still have, of an observer; null for none.
std::shared_ptr<GenericParser::ObserverOwner> GenericParser::TakeOwnerOf(const void* block) {
    if (block == nullptr)
        return nullptr;
    if (observerOwner != nullptr && observerOwner->block == block)
        return std::exchange(observerOwner, nullptr);
    std::vector<std::shared_ptr<ObserverOwner>>& retired = retiredObservers.Get();
    const auto found = std::find_if(retired.begin(), retired.end(), [block](const auto& owner) { return owner->block == block; });
    if (found != retired.end()) {
        std::shared_ptr<ObserverOwner> owner = std::move(*found);
        retired.erase(found);
        return owner;
    }
    std::shared_ptr<ObserverOwner> shared = sharedByCopies.lock();
    return shared != nullptr && shared->block == block ? shared : nullptr;
}

std::uint32_t GenericParser::StartParse(StringNS::CharSet::Code code, DataStreamType type) {
    if (feeding.Get())
        return PARSER_INVALID_ARGUMENT;
    const Feeding guard(this);
    SetBackingStream(nullptr);
    charset = code;
    charsetDetected = false;
    ended = false;
    std::uint32_t result = PARSER_OK;
    switch (type) {
        case DATA_STREAM_8BIT:
            result = StartNarrow(0, 0, DocumentCharset(code), false);
            break;
        case DATA_STREAM_UTF16:
            result = StartWide(false);
            break;
        case DATA_STREAM_AUTO:
        default:
            mode = MODE_START;
            return PARSER_OK;
    }
    return result == PARSER_OK ? AnnounceCharset() : result;
}

/// Tells the observer of the charset of a document that has begun.
std::uint32_t GenericParser::AnnounceCharset() {
    if (mode == MODE_NARROW)
        narrowParser->OnCharset(narrowParser->GetCharset());
    else
        wideParser->OnCharset(wideParser->GetCharset());
    return IsStopped() ? PARSER_STOPPED : PARSER_OK;
}

/// Begins a document with the 8-bit parser, which has the charset of the document before until the callbacks have returned.
/// @param markLength    of the UTF-8 mark, 0 without one
/// @param bytesDropped  of a mark that turned out to be none
std::uint32_t GenericParser::StartNarrow(std::uint64_t markLength, std::uint64_t bytesDropped, StringNS::CharSet::Code code,
                                         bool detected) {
    mode = MODE_NARROW;
    wideParser->Rest();
    const AtScopeEnd settle([this, code] {
        narrowParser->SetCharset(code);
        narrowParser->SetDiscoverCharset(code == StringNS::CharSet::UNKNOWN);
    });
    const std::uint32_t result = narrowParser->Start(markLength, detected, bytesDropped);
    if (result != PARSER_OK || markLength == 0)
        return result;
    narrowParser->OnBOM(StringNS::BOM_UTF8, markLength);
    return narrowParser->IsStopped() ? PARSER_STOPPED : PARSER_OK;
}

/// Begins a document with the wide parser. A mark settles the charset before the callbacks.
std::uint32_t GenericParser::StartWide(bool hasMark) {
    mode = MODE_WIDE;
    narrowParser->Rest();
    const auto settle = [this] {
        charset = StringNS::CharSet::UTF16_LE;
        wideParser->SetCharset(charset);
    };
    if (hasMark)
        settle();
    const AtScopeEnd settleAtEnd(settle);
    wideParser->SetDiscoverCharset(false);
    const std::uint32_t result = wideParser->Start(hasMark ? sizeof(StringNS::BOM_UTF16_LE) : 0, false, 0);
    if (result != PARSER_OK || !hasMark)
        return result;
    wideParser->OnBOM(StringNS::BOM_UTF16_LE, sizeof(StringNS::BOM_UTF16_LE));
    return wideParser->IsStopped() ? PARSER_STOPPED : PARSER_OK;
}

std::uint32_t GenericParser::ParseBuffer(const char* data, std::uint64_t size) {
    if (feeding.Get())
        return PARSER_INVALID_ARGUMENT;
    const Feeding guard(this);
    StreamUse use(this);
    const std::uint32_t result = FeedBytes(data, size, PieceOrigin());
    if (result == PARSER_OK)
        use.Keep();
    return AnswerWith(result);
}

/// Feeds a piece of a document that can be read again, as the pieces of a stream.
/// @param size     what `CountWholeUnits` has answered
/// @param backing  borrowed until `StartParse` or `EndParse`, and the same for all pieces: has the token under way and this piece
/// @param offset   of the piece, in that stream and in the document
std::uint32_t GenericParser::FeedPiece(const char* data, std::uint64_t size, VFS::InputStream* backing, std::uint64_t offset) {
    const Feeding guard(this);
    StreamUse use(this);
    SetBackingStream(backing);
    PieceOrigin origin;
    origin.fromStream = true;
    origin.positioned = true;
    origin.offset = offset;
    std::uint32_t result = FeedBytes(data, size, origin);
    if (result == PARSER_UNTERMINATED)
        result = PARSER_OK;  // as in `FeedStream`
    if (result == PARSER_OK)
        use.Keep();
    return AnswerWith(result);
}

/// How many bytes of a piece can be fed: all, or all but the last when that is half a unit of UTF-16. Of a byte-order mark that the piece
/// begins with, or ends, all bytes count.
std::uint64_t GenericParser::CountWholeUnits(const char* data, std::uint64_t size) const {
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

/// What a call that feeds or ends answers. A token that was lost for want of memory ends nothing: only the answer tells of it, the next
/// one when this call has another.
std::uint32_t GenericParser::AnswerWith(std::uint32_t result) {
    if (result != PARSER_OK)
        return result;
    const bool outOfMemory = mode == MODE_NARROW ? narrowParser->TakeOutOfMemory() : mode == MODE_WIDE && wideParser->TakeOutOfMemory();
    return outOfMemory ? std::uint32_t{RESULT_OUT_OF_MEMORY} : std::uint32_t{PARSER_OK};
}

std::uint32_t GenericParser::FeedBytes(const char* data, std::uint64_t size, const PieceOrigin& origin) {
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
// "text": there is no mark, and the whole current piece is 8-bit text, to 4. Bytes of a possible mark in an earlier piece are gone.
std::uint32_t GenericParser::FeedFirstBytes(const char* data, std::uint64_t size, const PieceOrigin& origin) {
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
            const std::uint32_t result =
                SkipWhenItThrows(narrowParser.get(), all, [this] { return StartNarrow(sizeof(StringNS::BOM_UTF8), 0, charset, false); });
            return result != PARSER_OK ? result : FeedNarrow(data + i + 1, size - i - 1, rest);
        } else if (mode == MODE_UTF16_MARK_1 && byte == StringNS::BOM_UTF16_LE[1]) {
            const std::uint32_t result = SkipWhenItThrows(wideParser.get(), all, [this] { return StartWide(true); });
            return result != PARSER_OK ? result : FeedWide(data + i + 1, size - i - 1, rest);
        } else {
            const std::uint32_t result = SkipWhenItThrows(
                narrowParser.get(), all, [&] { return StartNarrow(0, bytesDropped, DocumentCharset(charset), charsetDetected); });
            return result != PARSER_OK ? result : FeedNarrow(data, size, origin);
        }
    }
    return PARSER_OK;
}

std::uint32_t GenericParser::FeedNarrow(const char* data, std::uint64_t size, const PieceOrigin& origin) {
    ended = false;
    return narrowParser->Parse(data, size, origin);
}

std::uint32_t GenericParser::FeedWide(const char* data, std::uint64_t size, const PieceOrigin& origin) {
    if (size % sizeof(WideChar) != 0)
        return PARSER_INVALID_ARGUMENT;
    if (size == 0)
        return PARSER_OK;
    ended = false;
    const std::uint64_t length = size / sizeof(WideChar);
    if (reinterpret_cast<std::uintptr_t>(data) % alignof(WideChar) == 0)
        return wideParser->Parse(reinterpret_cast<const WideChar*>(data), length, origin);
    alignedPiece.Get().resize(static_cast<std::size_t>(length));
    std::memcpy(alignedPiece.Get().data(), data, static_cast<std::size_t>(size));
    return wideParser->Parse(alignedPiece.Get().data(), length, origin);
}

std::uint32_t GenericParser::ParseStream(VFS::InputStream* stream, bool ownsStream) {
    if (feeding.Get())
        return PARSER_INVALID_ARGUMENT;
    const Feeding guard(this);
    const std::unique_ptr<VFS::InputStream> owned(ownsStream ? stream : nullptr);
    StreamUse use(this);
    if (stream == nullptr)
        return PARSER_INVALID_ARGUMENT;
    if (IsStopped())
        return PARSER_STOPPED;
    std::uint32_t result = FeedStream(stream);
    if (result != PARSER_OK)
        return AnswerWith(result);
    result = DetectLateCharset(stream);
    if (result == PARSER_PARSE_AGAIN)
        return AnswerWith(result);
    if (ownsStream)
        KeepOpenConstruct();
    use.Keep();
    return AnswerWith(result);
}

std::uint32_t GenericParser::FeedStream(VFS::InputStream* stream) {
    Base::DefaultBufferAllocPolicy buffer;
    buffer.Initialize();
    std::uint32_t result = Base::GetServices().adjustBuffer(&buffer, BUFFER_SIZE);
    if (result != RESULT_OK)
        return result;
    SetBackingStream(stream);
    StreamReader reader(stream);
    while ((result == PARSER_OK || result == PARSER_UNTERMINATED) && !stream->IsEnd()) {
        PieceOrigin origin;
        origin.fromStream = true;
        origin.positioned = stream->GetPosition(&origin.offset) == RESULT_OK;
        std::uint64_t count = 0;
        const std::uint32_t readResult = reader.Read(buffer.GetData(), BUFFER_SIZE, &count);
        if (readResult != RESULT_OK)
            return readResult == RESULT_END_OF_DATA ? std::uint32_t{PARSER_OK} : readResult;
        if (count > 0)
            result = FeedBytes(buffer.GetData(), count, origin);
    }
    return result == PARSER_UNTERMINATED ? std::uint32_t{PARSER_OK} : result;
}

/// A whole stream went by without a charset: asks the detector. A detector that has no usable answer changes nothing.
std::uint32_t GenericParser::DetectLateCharset(VFS::InputStream* stream) {
    const bool isUnknown = Ask([](const auto& parser) { return parser.GetCharset() == StringNS::CharSet::UNKNOWN; }, false);
    if (!isUnknown || stream->Seek(0) != RESULT_OK)
        return PARSER_OK;
    StringNS::CharSet::Code code = StringNS::CharSet::UNKNOWN;
    const std::uint32_t result = DetectCharset(stream, &code);
    if (result == PARSER_DETECTOR_FAILED || (result == PARSER_OK && code == StringNS::CharSet::UNKNOWN))
        return PARSER_CHARSET_NOT_DETECTED;
    if (result != PARSER_OK)
        return PARSER_OK;
    mode = MODE_START;
    charset = code;
    charsetDetected = true;
    return PARSER_PARSE_AGAIN;
}

/// An owned stream is about to be freed: what `EndParse` may have to read again goes into memory.
void GenericParser::KeepOpenConstruct() {
    std::unique_ptr<VFS::InputStream> kept;
    if (mode == MODE_NARROW)
        kept = narrowParser->KeepOpenConstruct();
    else if (mode == MODE_WIDE)
        kept = wideParser->KeepOpenConstruct();
    if (kept == nullptr) {
        SetBackingStream(nullptr);
        return;
    }
    narrowParser->ReplaceBackingStream(kept.get());
    wideParser->ReplaceBackingStream(kept.get());
    keptBytes = std::move(kept);
}

void GenericParser::SetBackingStream(VFS::InputStream* stream) {
    narrowParser->SetBackingStream(stream);
    wideParser->SetBackingStream(stream);
    keptBytes = nullptr;
}

std::uint32_t GenericParser::ParseFile(const WideChar* path) {
    if (feeding.Get())
        return PARSER_INVALID_ARGUMENT;
    return ParseStream(VFS::VirtualFileSystem::GetInputStreamEx(path), true);
}

std::uint32_t GenericParser::EndParse() {
    if (feeding.Get())
        return PARSER_INVALID_ARGUMENT;
    const Feeding guard(this);
    const StreamUse use(this);
    const bool isRunning = mode == MODE_NARROW || mode == MODE_WIDE;
    if (!isRunning || ended)
        return PARSER_OK;
    ended = true;
    if (Ask([](const auto& parser) { return parser.IsHalted(); }, false))
        return PARSER_OK;
    return AnswerWith(mode == MODE_NARROW ? narrowParser->End() : wideParser->End());
}

std::uint32_t GenericParser::DetectCharset(const void* data, std::uint64_t size, StringNS::CharSet::Code* out) {
    if (out == nullptr || (data == nullptr && size > 0))
        return PARSER_INVALID_ARGUMENT;
    if (size < DETECTCHARSET_MIN_SIZE)
        return PARSER_TOO_LITTLE_DATA;
    *out = StringNS::CharSet::UNKNOWN;
    Base::DetectedCharset detected;
    std::uint32_t count = 0;
    const std::uint32_t result = Base::GetServices().detectCharset(data, size, &detected, &count);
    if (result != RESULT_OK)
        return result;
    if (count != 1 || chrDetMinConfidence > detected.confidence)
        return PARSER_DETECTOR_NOT_CONFIDENT;
    if (detected.code == StringNS::CharSet::EUC_JP)
        detected.code = StringNS::CharSet::EUC_JP_0208_1990;
    if (detected.code == StringNS::CharSet::US_ASCII || StringNS::CharSet::GetCharSetName(detected.code).empty())
        return RESULT_UNAVAILABLE;
    *out = detected.code;
    return PARSER_OK;
}

std::uint32_t GenericParser::DetectCharset(VFS::InputStream* stream, StringNS::CharSet::Code* out) {
    if (stream == nullptr || out == nullptr)
        return PARSER_INVALID_ARGUMENT;
    Base::DefaultBufferAllocPolicy buffer;
    buffer.Initialize();
    std::uint32_t result = Base::GetServices().adjustBuffer(&buffer, BUFFER_SIZE);
    if (result != RESULT_OK)
        return result;
    std::uint64_t size = 0;
    StreamReader reader(stream);
    while (result == RESULT_OK && size < BUFFER_SIZE && !stream->IsEnd()) {
        std::uint64_t count = 0;
        result = reader.Read(buffer.GetData() + size, BUFFER_SIZE - size, &count);
        size += count;
    }
    return result == RESULT_OK || result == RESULT_END_OF_DATA ? DetectCharset(buffer.GetData(), size, out) : result;
}

/// Puts a query to the running parser.
template <typename Query, typename Answer>
Answer GenericParser::Ask(Query query, Answer otherwise) const {
    if (mode == MODE_NARROW)
        return query(std::as_const(*narrowParser));
    if (mode == MODE_WIDE)
        return query(std::as_const(*wideParser));
    return otherwise;
}

std::uint32_t GenericParser::Stop() {
    if (!feeding.Get())
        return PARSER_INVALID_ARGUMENT;
    if (mode == MODE_NARROW)
        narrowParser->Stop();
    else if (mode == MODE_WIDE)
        wideParser->Stop();
    else
        return PARSER_INVALID_ARGUMENT;
    return PARSER_OK;
}

bool GenericParser::IsStopped() const {
    return Ask([](const auto& parser) { return parser.IsStopped(); }, false);
}

std::uint32_t GenericParser::SetMaxTokenSize(std::uint64_t bytes) {
    narrowParser->SetMaxTokenSize(bytes);
    wideParser->SetMaxTokenSize(bytes);
    return PARSER_OK;
}

std::uint64_t GenericParser::GetMaxTokenSize() const {
    return narrowParser->GetMaxTokenSize();
}

std::uint32_t GenericParser::SetMaxAttributes(std::uint64_t count) {
    narrowParser->SetMaxAttributes(count);
    wideParser->SetMaxAttributes(count);
    return PARSER_OK;
}

std::uint64_t GenericParser::GetMaxAttributes() const {
    return narrowParser->GetMaxAttributes();
}

TokenPlace GenericParser::GetTokenPlace() const {
    return Ask([](const auto& parser) { return parser.GetTokenPlace(); }, TokenPlace());
}

std::uint32_t GenericParser::GetAttributePlace(std::uint64_t index, AttributePlace* place) const {
    if (place == nullptr)
        return PARSER_INVALID_ARGUMENT;
    const auto find = [index, place](const auto& parser) { return parser.GetAttributePlace(static_cast<std::size_t>(index), place); };
    return Ask(find, false) ? PARSER_OK : PARSER_INVALID_ARGUMENT;
}

std::uint32_t GenericParser::GetAttributeParts(std::uint64_t index, std::vector<AttributePlace>* places) const {
    if (places == nullptr)
        return PARSER_INVALID_ARGUMENT;
    const auto find = [index, places](const auto& parser) { return parser.GetAttributeParts(static_cast<std::size_t>(index), places); };
    return Ask(find, false) ? PARSER_OK : PARSER_INVALID_ARGUMENT;
}

/// Where the name of the tag, or the target of the instruction, that is being delivered ends.
bool GenericParser::GetTagNameEnd(std::uint64_t* end) const {
    return Ask([end](const auto& parser) { return parser.GetTagNameEnd(end); }, false);
}

std::uint64_t GenericParser::GetLine() const {
    return Ask([](const auto& parser) { return parser.GetLine(); }, std::uint64_t{1});
}

std::uint64_t GenericParser::GetColumn() const {
    return Ask([](const auto& parser) { return parser.GetColumn(); }, std::uint64_t{1});
}

WideString GenericParser::GetCurrentParserName() const {
    return WideString(Ask([](const auto& parser) { return parser.GetCurrentParserName(); }, WideStringView()));
}

StringNS::CharSet::Code GenericParser::GetCharset() const {
    return Ask([](const auto& parser) { return parser.GetCharset(); }, charset);
}

bool GenericParser::IsWParser() const {
    return mode == MODE_WIDE;
}

bool GenericParser::HasCharsetErrors() const {
    return Ask([](const auto& parser) { return parser.HasCharsetErrors(); }, false);
}

std::uint32_t GenericParser::GetConversionError() const {
    return Ask([](const auto& parser) { return parser.GetConversionError(); }, std::uint32_t{PARSER_OK});
}

bool GenericParser::NeedsReparsing() const {
    return Ask([](const auto& parser) { return parser.NeedsReparsing(); }, false);
}

bool GenericParser::WasCharsetDetectorUsed() const {
    return Ask([](const auto& parser) { return parser.WasCharsetDetectorUsed(); }, false);
}

VFS::InputStream* GenericParser::GetSelfCheckStream() {
    if (mode == MODE_NARROW)
        return narrowParser->GetSelfCheckStream();
    return mode == MODE_WIDE ? wideParser->GetSelfCheckStream() : nullptr;
}

std::uint32_t GenericParser::SetSelfCheck(SelfCheck selfCheck) {
    narrowParser->SetSelfCheckMode(selfCheck);
    wideParser->SetSelfCheckMode(selfCheck);
    return PARSER_OK;
}

GenericParser::SelfCheck GenericParser::GetSelfCheck() const {
    return static_cast<SelfCheck>(Ask([](const auto& parser) { return parser.GetSelfCheckMode(); }, std::uint32_t{SELF_CHECK_OFF}));
}

std::uint32_t GenericParser::SetScriptMode(ScriptMode scriptMode) {
    if (scriptMode != SCRIPT_AS_TOKENS && scriptMode != SCRIPT_AS_TEXT)
        return PARSER_INVALID_ARGUMENT;
    narrowParser->SetScriptsAsText(scriptMode == SCRIPT_AS_TEXT);
    wideParser->SetScriptsAsText(scriptMode == SCRIPT_AS_TEXT);
    return PARSER_OK;
}

GenericParser::ScriptMode GenericParser::GetScriptMode() const {
    return narrowParser->AreScriptsAsText() ? SCRIPT_AS_TEXT : SCRIPT_AS_TOKENS;
}

std::uint32_t GenericParser::SetDetectCharsetErrors(bool detect) {
    narrowParser->SetDetectCharsetErrors(detect);
    wideParser->SetDetectCharsetErrors(detect);
    return PARSER_OK;
}

bool GenericParser::GetDetectCharsetErrors() const {
    return Ask([](const auto& parser) { return parser.GetDetectCharsetErrors(); }, false);
}

std::uint32_t GenericParser::SetChrDetMinConfidence(std::uint64_t confidence) {
    chrDetMinConfidence = confidence;
    return PARSER_OK;
}

std::uint64_t GenericParser::GetChrDetMinConfidence() const {
    return chrDetMinConfidence;
}

}  // namespace Kestra::HTML
