#include "html/rewrite/RewriterEngine.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <type_traits>
#include <utility>

#include "html/parser/GenericParserEngine.h"
#include "html/parser/StreamReader.h"
#include "html/references/CharacterReferences.h"
#include "html/rewrite/MakeRoom.h"
#include "html/rewrite/RawElements.h"
#include "platform/Results.h"
#include "platform/VirtualFileSystem.h"

namespace Kestra::HTML {

namespace {

constexpr std::uint64_t READ_SIZE = 65536;      // bytes per read of a stream
constexpr std::uint64_t SMALL_READ_SIZE = 512;  // when there is no memory for that

bool IsScriptOrStyle(std::uint32_t raw) {
    return raw == RAW_SCRIPT || raw == RAW_STYLE;
}

}  // namespace

/// Marks a call of the host, so that callbacks cannot nest another one.
class RewriterEngine::Running {
public:
    explicit Running(RewriterEngine* runningEngine) : engine(runningEngine) {
        engine->isRunning = true;
        engine->isHostsFault = false;
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
    ~Running() {
        engine->isRunning = false;
        engine->current = 0;
    }

private:
    RewriterEngine* engine;
};

/// The kept bytes and the piece at hand, for the parser to read a failed construct again.
class RewriterEngine::Backing final : public VFS::InputStream {
public:
    explicit Backing(const RewriterEngine* owner) : engine(owner) {}

    std::uint32_t Read(void* buffer, std::uint64_t size, std::uint64_t* bytesRead) override {
        *bytesRead = 0;
        auto* to = static_cast<char*>(buffer);
        while (size > 0 && position >= engine->keptBegin && position < engine->fed) {
            const bool isInPiece = position >= engine->pieceBegin;
            const std::uint64_t count = std::min(size, (isInPiece ? engine->fed : engine->pieceBegin) - position);
            const char* const from = isInPiece ? engine->piece + (position - engine->pieceBegin)  //
                                               : engine->kept.data() + (position - engine->keptBegin);
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
        return position >= engine->fed;
    }

private:
    const RewriterEngine* engine;
    std::uint64_t position = 0;
};

/// What selectors ask about the tag at hand.
class RewriterEngine::AttributesOfTag final : public TagAttributes {
public:
    explicit AttributesOfTag(RewriterEngine* owner) : engine(owner) {}

    bool Find(std::string_view name, std::string* value) const override {
        engine->LoadTag();
        return value == nullptr ? engine->tag.Has(name) : engine->tag.Get(name, value) == REWRITE_OK;
    }

private:
    RewriterEngine* engine;
};

RewriterEngine::RewriterEngine(ParserObserverOutputHandler* handler)
    : output(handler),
      self(std::make_shared<RewriterEngine*>(this)),
      narrowObserver(this),
      wideObserver(this),
      backing(std::make_unique<Backing>(this)),
      elements(&selectors) {}

RewriterEngine::~RewriterEngine() {
    *self = nullptr;
}

// -------------------------------------------------------------------------------------------------
// settings

std::uint32_t RewriterEngine::SetObserver(ParserObserver<char, std::string>* narrow,
                                          ParserObserver<WideChar, WideString>* wide) {
    if (isRunning)
        return PARSER_INVALID_ARGUMENT;
    narrowObserver.SetHost(narrow);
    wideObserver.SetHost(wide);
    Bind();
    return PARSER_OK;
}

std::uint32_t RewriterEngine::OnElement(std::string_view selector, Rewriter::ElementCallback callback,
                                        std::string* message) {
    if (isRunning || !callback)
        return PARSER_INVALID_ARGUMENT;
    MakeRoom(1, &registrations);
    MakeRoom(1, &ofSelectors);
    if (!selectors.Add(selector, message))
        return REWRITE_BAD_SELECTOR;
    ofSelectors.push_back(registrations.size());
    registrations.push_back({std::move(callback), nullptr});
    Bind();
    return REWRITE_OK;
}

std::uint32_t RewriterEngine::OnContent(std::string_view selector, Rewriter::TokenCallback callback,
                                        std::string* message) {
    if (isRunning || !callback)
        return PARSER_INVALID_ARGUMENT;
    MakeRoom(1, &registrations);
    MakeRoom(1, &ofSelectors);
    MakeRoom(1, &ofAllContent);
    if (selector.empty()) {
        ofAllContent.push_back(registrations.size());
    } else {
        if (!selectors.Add(selector, message))
            return REWRITE_BAD_SELECTOR;
        ofSelectors.push_back(registrations.size());
        ++contentSelectors;
    }
    registrations.push_back({nullptr, std::move(callback)});
    Bind();
    return REWRITE_OK;
}

void RewriterEngine::SetMaxDepth(std::uint64_t count) {
    elements.SetMaxDepth(count);
    hasLimits = hasLimits || count > 0;
    if (!isRunning)
        Bind();
}

void RewriterEngine::SetMaxOpenAttributes(std::uint64_t count) {
    elements.SetMaxOpenAttributes(count);
    hasLimits = hasLimits || count > 0;
    if (!isRunning)
        Bind();
}

/// The observer of the host decides the flavour; without one nothing is converted, and without
/// callbacks nothing is delivered.
void RewriterEngine::Bind() {
    if (isOverLimit)
        return;
    ParserObserver<char, std::string>* narrow = nullptr;
    if (wideObserver.GetHost() != nullptr) {
        parser.SetObserver(&wideObserver, false);
        return;
    }
    if (narrowObserver.GetHost() != nullptr || !registrations.empty() || hasLimits)
        narrow = &narrowObserver;
    parser.SetObserver(narrow, false);
    BindFlavour();
}

/// A document begins: its flavour is known.
void RewriterEngine::BindFlavour() {
    const bool hasHost = narrowObserver.GetHost() != nullptr || wideObserver.GetHost() != nullptr;
    if (hasHost || (registrations.empty() && !hasLimits))
        return;
    if (parser.IsWParser())
        parser.SetObserver(&wideObserver, false);
    else
        parser.SetObserver(&narrowObserver, false);
}

// -------------------------------------------------------------------------------------------------
// feeding

std::uint32_t RewriterEngine::StartParse(StringNS::CharSet::Code code, GenericParser::DataStreamType type) {
    if (isRunning)
        return PARSER_INVALID_ARGUMENT;
    const Running running(this);
    EndDocument();
    BeginDocument();
    Bind();
    try {
        const std::uint32_t result = parser.StartParse(code, type);
        isCopying = result != PARSER_OK;
        return result;
    } catch (const std::bad_alloc&) {
        if (isHostsFault)
            throw;
        isCopying = true;
        return RESULT_OUT_OF_MEMORY;
    }
}

void RewriterEngine::BeginDocument() {
    isCopying = false;
    isOverLimit = false;
    fed = 0;
    written = 0;
    keptBegin = 0;
    pieceBegin = 0;
    rawElements = 0;
    tailSize = 0;
}

std::uint32_t RewriterEngine::ParseBuffer(const char* data, std::uint64_t size) {
    if (isRunning || (data == nullptr && size > 0))
        return PARSER_INVALID_ARGUMENT;
    const Running running(this);
    return Feed(data, size);
}

std::uint32_t RewriterEngine::ParseFile(const WideChar* path) {
    if (isRunning)
        return PARSER_INVALID_ARGUMENT;
    return ParseStream(VFS::VirtualFileSystem::GetInputStreamEx(path), true);
}

/// Reads to the end whatever the parser answers, so that all of the stream is written.
std::uint32_t RewriterEngine::ParseStream(VFS::InputStream* stream, bool ownsStream) {
    if (isRunning)
        return PARSER_INVALID_ARGUMENT;
    const std::unique_ptr<VFS::InputStream> owned(ownsStream ? stream : nullptr);
    if (stream == nullptr)
        return PARSER_INVALID_ARGUMENT;
    const Running running(this);
    char small[SMALL_READ_SIZE];
    const std::unique_ptr<char[]> large(new (std::nothrow) char[READ_SIZE]);
    char* const buffer = large != nullptr ? large.get() : small;
    const std::uint64_t size = large != nullptr ? READ_SIZE : SMALL_READ_SIZE;
    StreamReader reader(stream);
    std::uint32_t answer = PARSER_OK;
    while (!stream->IsEnd()) {
        std::uint64_t count = 0;
        const std::uint32_t readResult = reader.Read(buffer, size, &count);
        if (readResult == RESULT_END_OF_DATA)
            break;
        if (readResult != RESULT_OK) {
            if (isCopying && answer != PARSER_OK)
                return answer;
            return Fail(readResult);
        }
        const std::uint32_t result = Feed(buffer, count);
        if (result != PARSER_OK)
            answer = result;
    }
    return answer;
}

/// Feeds a piece of any size: of UTF-16 whole units, half a unit waits for the next piece.
std::uint32_t RewriterEngine::Feed(const char* data, std::uint64_t size) {
    if (size == 0)
        return PARSER_OK;
    std::string joined;
    if (hasHalfUnit) {
        try {
            joined.reserve(static_cast<std::size_t>(size + 1));
        } catch (const std::bad_alloc&) {
            std::exception_ptr failure;
            try {
                Fail(RESULT_OUT_OF_MEMORY);
            } catch (...) {
                failure = std::current_exception();
            }
            CopyPiece(&halfUnit, std::exchange(hasHalfUnit, false) ? 1 : 0);
            CopyPiece(data, size);
            if (failure != nullptr)
                std::rethrow_exception(failure);
            return RESULT_OUT_OF_MEMORY;
        }
        joined.append(1, halfUnit).append(data, static_cast<std::size_t>(size));
        hasHalfUnit = false;
        data = joined.data();
        ++size;
    }
    if (!isCopying) {
        const std::uint64_t count = GenericParser::Internals::GetEngine(parser).CountWholeUnits(data, size);
        hasHalfUnit = count < size;
        if (hasHalfUnit)
            halfUnit = data[count];
        const std::uint32_t result = count > 0 ? FeedPiece(data, count) : std::uint32_t{PARSER_OK};
        if (isCopying && std::exchange(hasHalfUnit, false))
            CopyPiece(&halfUnit, 1);
        return result;
    }
    CopyPiece(data, size);
    return PARSER_OK;
}

void RewriterEngine::CopyPiece(const char* data, std::uint64_t size) {
    piece = data;
    pieceBegin = fed;
    fed += size;
    CopyUntil(fed);
}

std::uint32_t RewriterEngine::FeedPiece(const char* data, std::uint64_t size) {
    piece = data;
    pieceBegin = fed;
    fed += size;
    std::exception_ptr failure;
    std::uint32_t result = PARSER_OK;
    try {
        result = SettlePiece(
            GenericParser::Internals::GetEngine(parser).FeedPiece(data, size, backing.get(), pieceBegin), &failure);
    } catch (const std::bad_alloc&) {
        CopyAll();
        if (isHostsFault)
            throw;
        isCopying = true;
        return RESULT_OUT_OF_MEMORY;
    } catch (...) {
        CopyAll();
        throw;
    }
    if (failure != nullptr)
        std::rethrow_exception(failure);
    return result;
}

/// Writes all before the token under way, and keeps its bytes, also when the handler throws: the
/// parser goes on with that token.
/// @param failure  receives what it has thrown
std::uint32_t RewriterEngine::SettlePiece(std::uint32_t result, std::exception_ptr* failure) {
    if (isOverLimit)
        result = PARSER_LIMIT_EXCEEDED;
    // 8 here is a token that was lost for want of memory.
    if (result != PARSER_OK && result != RESULT_OUT_OF_MEMORY)
        return Fail(result);
    const std::uint64_t end = parser.GetTokenPlace().end;
    *failure = CopyWhateverHappens(end);
    try {
        KeepFrom(std::max(end, keptBegin));
    } catch (const std::bad_alloc&) {
        isCopying = true;
        throw;
    }
    return result;
}

void RewriterEngine::KeepFrom(std::uint64_t begin) {
    const std::uint64_t size = fed - pieceBegin;
    if (begin >= pieceBegin) {
        kept.assign(piece + (begin - pieceBegin), static_cast<std::size_t>(fed - begin));
    } else {
        kept.erase(0, static_cast<std::size_t>(begin - keptBegin));
        keptBegin = begin;
        kept.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kept.size(), pieceBegin - begin)));
        kept.append(piece, static_cast<std::size_t>(size));
    }
    keptBegin = begin;
}

/// An answer is not 0: from here on everything is copied.
std::uint32_t RewriterEngine::Fail(std::uint32_t result) {
    std::exception_ptr failure;
    if (!isCopying && !isOverLimit)
        failure = CopyWhateverHappens(std::min(parser.GetTokenPlace().end, fed));
    isCopying = true;
    const std::exception_ptr later = CopyAll();
    if (failure != nullptr || later != nullptr)
        std::rethrow_exception(failure != nullptr ? failure : later);
    return result;
}

/// Writes what has been fed as it came in. A handler that throws gets what is left all the same.
/// @return what it has thrown first
std::exception_ptr RewriterEngine::CopyAll() noexcept {
    current = 0;
    ClearEdits();
    EndRemovals();
    const std::exception_ptr failure = CopyWhateverHappens(fed);
    kept.clear();
    keptBegin = fed;
    return failure;
}

/// Settles all up to an offset, as `CopyUntil`, also when the handler throws.
/// @return what it has thrown first
std::exception_ptr RewriterEngine::CopyWhateverHappens(std::uint64_t offset) noexcept {
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

std::uint32_t RewriterEngine::EndParse() {
    if (isRunning)
        return PARSER_INVALID_ARGUMENT;
    const Running running(this);
    piece = nullptr;
    pieceBegin = fed;
    std::uint32_t result = PARSER_OK;
    if (!isCopying) {
        try {
            result = parser.EndParse();
            if (isOverLimit)
                result = Fail(PARSER_LIMIT_EXCEEDED);
        } catch (const std::bad_alloc&) {
            CopyAll();
            if (isHostsFault) {
                EndDocument();
                throw;
            }
            result = RESULT_OUT_OF_MEMORY;
        } catch (...) {
            CopyAll();
            EndDocument();
            throw;
        }
    }
    EndDocument();
    return result;
}

/// Writes all that is left, with the edits of the elements that are still open.
void RewriterEngine::EndDocument() {
    piece = nullptr;
    pieceBegin = fed;
    CopyUntil(fed);
    kept.clear();
    keptBegin = fed;
    if (std::exchange(hasHalfUnit, false))
        Emit(std::string_view(&halfUnit, 1));
    CloseAll();
    rawElements = 0;
}

void RewriterEngine::CloseAll() {
    while (!elementEdits.empty()) {
        const ElementEdits edited = std::move(elementEdits.back());
        elementEdits.pop_back();
        EndRemoval(edited);
        EmitEndOfContent(edited);
        EmitInsertion(edited.after);
    }
    elements.Clear();
}

/// In constant time, as callbacks may throw again and again.
void RewriterEngine::EndRemovals() {
    removals = 0;
    ++removalSeries;
}

/// An element ends, or is forgotten.
void RewriterEngine::EndRemoval(const ElementEdits& edited) {
    if (edited.hasNoContent && edited.removalSeries == removalSeries)
        --removals;
}

// -------------------------------------------------------------------------------------------------
// output

/// Settles all up to an offset: writes it as it came in, or leaves it out.
void RewriterEngine::CopyUntil(std::uint64_t offset) {
    while (written < offset) {
        const std::uint64_t begin = written;
        const bool isKept = begin < pieceBegin;
        const std::uint64_t end = isKept ? std::min(offset, pieceBegin) : offset;
        written = end;
        const char* const from = isKept ? kept.data() + (begin - keptBegin) : piece + (begin - pieceBegin);
        Emit(std::string_view(from, static_cast<std::size_t>(end - begin)));
    }
}

void RewriterEngine::Emit(std::string_view bytes) {
    if (removals > 0 || bytes.empty())
        return;
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

void RewriterEngine::EmitInsertion(const Insertion& insertion) {
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
        Guard(ViewTail(markup, std::string_view(tail.data(), tailSize)), &guardedText);
        guarded = std::string(markup).append(guardedText);
    } catch (const std::bad_alloc&) {
        guarded.clear();
    }
    Emit(guarded.empty() ? insertion.bytes : guarded);
}

/// Text that would end its script together with the last characters of the script is left out, and
/// so is one of which that cannot be told for want of memory.
void RewriterEngine::EmitEndOfContent(const ElementEdits& edited) {
    if (edited.isRemoved || edited.end.bytes.empty())
        return;
    try {
        const std::string before = ViewTail(std::string_view(tail.data(), tailSize), "");
        if (edited.raw != RAW_NONE && EndsRawElement(edited.raw, ViewOf(edited.end.bytes), {before, "</", true}))
            return;
    } catch (const std::bad_alloc&) {
        return;
    }
    EmitInsertion(edited.end);
}

// -------------------------------------------------------------------------------------------------
// the token at hand

template <typename S>
bool RewriterEngine::OpenElement(const S& name, std::uint64_t attributeCount) {
    isOpening = true;
    elementHasContent = false;
    if (!TracksElements() && !MayBeRaw(name))
        return true;
    TakeTagName(name);
    return OpenTag(attributeCount);
}

template <typename S>
void RewriterEngine::CloseElements(const S& name) {
    if (!TracksElements() && (rawElements == RAW_NONE || !MayBeRaw(name)))
        return;
    TakeTagName(name);
    CloseTag();
}

template bool RewriterEngine::OpenElement(const std::string& name, std::uint64_t attributeCount);
template bool RewriterEngine::OpenElement(const WideString& name, std::uint64_t attributeCount);
template void RewriterEngine::CloseElements(const std::string& name);
template void RewriterEngine::CloseElements(const WideString& name);

/// Whether a name, in any flavour, may be that of a raw element: those begin with one of five
/// letters.
template <typename S>
bool RewriterEngine::MayBeRaw(const S& name) {
    if (name.size() < 3)
        return false;
    const auto first = FoldAscii(name[0]);
    return first == 's' || first == 'x' || first == 'i' || first == 'n' || first == 'p';
}

/// A name as an 8-bit observer gets it: in the charset of the document, also when that is UTF-16.
void RewriterEngine::TakeTagName(const std::string& name) {
    const bool isAscii = std::all_of(name.begin(), name.end(),
                                     [](char character) { return static_cast<unsigned char>(character) < 0x80; });
    if (isAscii && !parser.IsWParser())
        tagName = name;
    else
        Text().Decode(name, &tagName);
    std::transform(tagName.begin(), tagName.end(), tagName.begin(), FoldAscii<char>);
}

void RewriterEngine::TakeTagName(const WideString& name) {
    DocumentText::FromWide(name, &tagName);
    std::transform(tagName.begin(), tagName.end(), tagName.begin(), FoldAscii<char>);
}

/// A short tag opens no script for a parser that cuts scripts into tokens.
bool RewriterEngine::OpenTag(std::uint64_t attributeCount) {
    const bool isShort = tokenKind == TOKEN_SHORT_TAG;
    if (TracksElements()) {
        FindContentMatches();
        const OpenElements::OpenedElement opened =
            elements.Open(tagName, isShort, attributeCount, AttributesOfTag(this), &matches);
        if (opened.isOverLimit) {
            CopyUntil(parser.GetTokenPlace().begin);
            EndRemovals();
            isOverLimit = true;
            parser.Stop();
            current = 0;
            tag.Forget();
            return false;
        }
        elementHasContent = opened.hasContent;
    }
    const std::uint32_t raw = FindRawElement(tagName);
    if (!isShort || !IsScriptOrStyle(raw) || parser.GetScriptMode() == GenericParser::SCRIPT_AS_TEXT)
        rawElements |= raw;
    return true;
}

void RewriterEngine::CloseTag() {
    rawElements &= ~(FindRawElement(tagName) & ~std::uint32_t{RAW_PLAINTEXT});
    if (!TracksElements())
        return;
    const std::size_t count = elements.CountClosedBy(tagName);
    closing.reserve(std::min(count, elementEdits.size()));
    for (std::size_t i = 0; i < count; ++i) {
        closesEdited = elements.GetPayload(elements.GetDepth() - 1) != 0;
        if (closesEdited) {
            closing.push_back(std::move(elementEdits.back()));
            elementEdits.pop_back();
            isEdited = true;
        }
        elements.CloseInnermost();
    }
}

void RewriterEngine::FindContentMatches() {
    if (contentSelectors > 0 && elements.HasMatches())
        elements.GetMatches(&contentMatches);
    else
        contentMatches.clear();
}

void RewriterEngine::AddDue(const std::vector<std::size_t>& matched, bool isContent) {
    for (const std::size_t selector : matched) {
        const std::size_t registration = ofSelectors[selector];
        if ((registrations[registration].onContent != nullptr) == isContent)
            due.push_back(registration);
    }
}

/// What was registered for the token, in that order. A tag is in the content of the elements around
/// its own.
void RewriterEngine::FindCallbacks() {
    due = ofAllContent;
    if (ofSelectors.empty())
        return;
    if (!isOpening)
        FindContentMatches();
    AddDue(contentMatches, true);
    AddDue(matches, false);
    std::sort(due.begin(), due.end());
}

void RewriterEngine::CallBack() {
    for (const std::size_t index : due) {
        if (GenericParser::Internals::GetEngine(parser).IsStopped())
            return;
        const Registration& registration = registrations[index];
        current = ++generation;
        const RewriterToken token(self, current);
        if (registration.onElement)
            registration.onElement(RewriterElement(token));
        else
            registration.onContent(token);
    }
}

void RewriterEngine::LeaveOutBeforeToken() {
    CopyUntil(parser.GetTokenPlace().begin);
}

void RewriterEngine::SettleToken() {
    if (tokenKind == TOKEN_NONE)
        return;
    if (isEdited || tag.IsChanged()) {
        WriteToken();
        ClearEdits();
    } else if (removals > 0) {
        CopyUntil(parser.GetTokenPlace().end);
    }
    tag.Forget();
}

/// The host has thrown: nothing of what it asked for counts, but for what was asked about the
/// elements that end here.
void RewriterEngine::AbandonToken() {
    isHostsFault = true;
    std::vector<ElementEdits> ended;
    ended.swap(closing);
    const bool endsEdited = closesEdited;
    ClearEdits();
    closing.swap(ended);
    closesEdited = endsEdited;
    // From this token on nothing is left out.
    EndRemovals();
    isEdited = !closing.empty();
    current = 0;
    try {
        SettleToken();
    } catch (...) {
        ClearEdits();
    }
}

void RewriterEngine::ClearEdits() {
    edits.before.Clear();
    edits.body.Clear();
    edits.after.Clear();
    edits.hasBody = false;
    element.Clear();
    closing.clear();
    closesEdited = false;
    isEdited = false;
    tag.Forget();
}

/// Writes the token at hand with its edits, and what the elements that it ends have asked for. All
/// memory is taken first.
void RewriterEngine::WriteToken() {
    const TokenPlace place = parser.GetTokenPlace();
    const bool hasBody = edits.hasBody || tag.IsChanged();
    if (tag.IsChanged() && !edits.hasBody)
        tag.Write(&edits.body.bytes);
    const bool opensEdited = isOpening && elementHasContent && !element.IsEmpty();
    if (opensEdited)
        MakeRoom(1, &elementEdits);
    const ElementEdits* const own = closesEdited ? &closing.back() : nullptr;
    CopyUntil(place.begin);
    for (const ElementEdits& ended : closing) {
        EndRemoval(ended);
        EmitEndOfContent(ended);
        if (&ended != own)
            EmitInsertion(ended.after);
    }
    if (own == nullptr || !own->isRemoved)
        EmitInsertion(edits.before);
    if (hasBody || (own != nullptr && own->hasNoEndTag)) {
        written = std::max(written, place.end);
        if (own == nullptr || !own->hasNoEndTag)
            EmitInsertion(edits.body);
    } else {
        CopyUntil(place.end);
    }
    if (own != nullptr)
        EmitInsertion(own->after);
    if (!element.isRemoved || !elementHasContent)
        EmitInsertion(edits.after);
    if (isOpening && !elementHasContent)
        EmitInsertion(element.after);
    if (opensEdited) {
        removals += element.hasNoContent ? 1 : 0;
        element.removalSeries = removalSeries;
        elementEdits.push_back(std::move(element));
        elements.SetPayload(elements.GetDepth() - 1, elementEdits.size());
    }
}

/// The bytes of a token lie in the piece or, when it began earlier, in the kept ones, which then
/// get the rest of it.
std::string_view RewriterEngine::GetBytes() {
    return GetBytes(parser.GetTokenPlace());
}

std::string_view RewriterEngine::GetBytes(const TokenPlace& place) {
    const auto size = static_cast<std::size_t>(place.end - place.begin);
    if (size == 0 || place.begin < std::min(keptBegin, pieceBegin) || place.end > fed)
        return {};
    if (place.begin >= pieceBegin)
        return {piece + (place.begin - pieceBegin), size};
    const std::uint64_t keptEnd = keptBegin + kept.size();
    if (keptEnd < place.end)
        kept.append(piece + (keptEnd - pieceBegin), static_cast<std::size_t>(place.end - keptEnd));
    return std::string_view(kept).substr(static_cast<std::size_t>(place.begin - keptBegin), size);
}

RewriterToken RewriterEngine::GetToken() const {
    return current != 0 ? RewriterToken(self, current) : RewriterToken();
}

RewriterEngine* RewriterEngine::Find(const RewriterToken& token) {
    RewriterEngine* const engine = token.engine != nullptr ? *token.engine : nullptr;
    return engine != nullptr && engine->current == token.generation && engine->current != 0 ? engine : nullptr;
}

TokenKind RewriterEngine::GetKind() const {
    return tokenKind;
}

TokenPlace RewriterEngine::GetPlace() const {
    return parser.GetTokenPlace();
}

bool RewriterEngine::HasContent() const {
    return isOpening && elementHasContent;
}

const std::string& RewriterEngine::GetTagName() const {
    return tagName;
}

DocumentText& RewriterEngine::Text() {
    text.SetCharset(parser.GetCharset(), parser.IsWParser());
    return text;
}

// -------------------------------------------------------------------------------------------------
// attributes

/// Takes the attributes of the tag at hand apart, once.
bool RewriterEngine::LoadTag() {
    if (!canHaveAttributes)
        return false;
    if (tag.IsLoaded())
        return true;
    const TokenPlace tokenPlace = parser.GetTokenPlace();
    const std::string_view bytes = GetBytes(tokenPlace);
    DocumentText& charset = Text();
    std::uint64_t nameEnd = 0;
    layout.offset = tokenPlace.begin;
    if (!GenericParser::Internals::GetEngine(parser).GetTagNameEnd(&nameEnd))
        return false;
    const std::size_t unit = charset.GetUnitSize();
    layout.nameEnd = static_cast<std::size_t>(nameEnd - layout.offset);
    layout.nameBegin = unit * (tokenKind == TOKEN_START_TAG || tokenKind == TOKEN_SHORT_TAG ? 1 : 2);
    while (layout.nameBegin < layout.nameEnd && charset.IsSpaceAt(bytes, layout.nameBegin))
        layout.nameBegin += unit;
    layout.attributes.clear();
    AttributePlace place;
    for (std::uint64_t i = 0; parser.GetAttributePlace(i, &place) == PARSER_OK; ++i) {
        if (MayBeFolded(place, bytes) && parser.GetAttributeParts(i, &attributeParts) == PARSER_OK)
            layout.attributes.insert(layout.attributes.end(), attributeParts.begin(), attributeParts.end());
        else
            layout.attributes.push_back(place);
    }
    tag.Load(bytes, layout, &charset);
    return true;
}

/// Only a value without quotes has taken up bare words, and then there is white space, a quote or a
/// "<" in it.
bool RewriterEngine::MayBeFolded(const AttributePlace& place, std::string_view bytes) const {
    if (place.valueBegin == place.nameEnd || place.end != place.valueEnd)
        return false;
    const auto begin = static_cast<std::size_t>(place.valueBegin - layout.offset);
    const std::string_view value = bytes.substr(begin, static_cast<std::size_t>(place.valueEnd - place.valueBegin));
    const auto isTelling = [](char byte) {
        return static_cast<unsigned char>(byte) <= ' ' || static_cast<unsigned char>(byte) >= 0x80 || byte == '"' ||
               byte == '\'' || byte == '<';
    };
    return std::any_of(value.begin(), value.end(), isTelling);
}

bool RewriterEngine::HasAttribute(std::string_view name) {
    return LoadTag() && tag.Has(name);
}

std::uint32_t RewriterEngine::GetAttribute(std::string_view name, std::string* value) {
    if (value == nullptr)
        return PARSER_INVALID_ARGUMENT;
    return Try([&]() -> std::uint32_t { return LoadTag() ? tag.Get(name, value) : std::uint32_t{REWRITE_WRONG_KIND}; });
}

std::uint32_t RewriterEngine::SetAttribute(std::string_view name, std::string_view value, bool adds) {
    return Try([&]() -> std::uint32_t {
        if (!LoadTag())
            return REWRITE_WRONG_KIND;
        if (!DocumentText::IsWellFormed(name) || !DocumentText::IsWellFormed(value))
            return PARSER_INVALID_ARGUMENT;
        if (rawBefore != RAW_NONE && EndsRawElement(rawBefore, value, {"", "\"", true}))
            return REWRITE_ENDS_EARLY;
        return adds ? tag.Add(name, value) : tag.Set(name, value);
    });
}

std::uint32_t RewriterEngine::SetAttribute(std::string_view name, WideStringView value, bool adds) {
    return TryWide(value, [&](std::string_view utf8) { return SetAttribute(name, utf8, adds); });
}

std::uint32_t RewriterEngine::RenameAttribute(std::string_view name, std::string_view newName) {
    return Try([&]() -> std::uint32_t {
        if (!LoadTag())
            return REWRITE_WRONG_KIND;
        return DocumentText::IsWellFormed(newName) ? tag.Rename(name, newName) : std::uint32_t{PARSER_INVALID_ARGUMENT};
    });
}

std::uint32_t RewriterEngine::RemoveAttribute(std::string_view name) {
    return Try([&]() -> std::uint32_t { return LoadTag() ? tag.Remove(name) : std::uint32_t{REWRITE_WRONG_KIND}; });
}

// -------------------------------------------------------------------------------------------------
// edits

template <typename Edit>
std::uint32_t RewriterEngine::Try(Edit edit) {
    try {
        return edit();
    } catch (const std::bad_alloc&) {
        return RESULT_OUT_OF_MEMORY;
    }
}

template <typename Edit>
std::uint32_t RewriterEngine::TryWide(WideStringView wide, Edit edit) {
    return Try([&]() -> std::uint32_t {
        std::string converted;
        return DocumentText::FromWide(wide, &converted) ? edit(std::string_view(converted))
                                                        : std::uint32_t{PARSER_INVALID_ARGUMENT};
    });
}

/// The elements whose content a text becomes that is written there.
std::uint32_t RewriterEngine::GetRawElements(Spot spot) const {
    switch (spot) {
        case Spot::BEFORE:
        case Spot::INSTEAD:
        case Spot::AFTER_ELEMENT:
        case Spot::INSTEAD_OF_ELEMENT:
            return rawBefore;
        case Spot::AFTER:
        case Spot::CONTENT_BEGIN:
        case Spot::CONTENT_END:
        case Spot::INSTEAD_OF_CONTENT:
            return rawElements;
    }
    return RAW_NONE;
}

/// @param raw  not RAW_NONE
std::uint32_t RewriterEngine::Encode(std::string_view utf8Text, RewriteContent kind, std::uint32_t raw,
                                     std::string* bytes) {
    if (!DocumentText::IsWellFormed(utf8Text) || (kind != CONTENT_TEXT && kind != CONTENT_MARKUP))
        return PARSER_INVALID_ARGUMENT;
    if (raw != RAW_NONE)
        return Text().Append(utf8Text, DocumentText::Lacking::REFUSED, bytes) ? REWRITE_OK : REWRITE_NOT_IN_CHARSET;
    if (kind == CONTENT_MARKUP) {
        Text().Append(utf8Text, DocumentText::Lacking::REFERENCE, bytes);
        return REWRITE_OK;
    }
    std::string encoded(utf8Text);
    CharacterReferences<char, std::string>::EncodeText(encoded, &encoded);
    Text().Append(encoded, DocumentText::Lacking::REFERENCE, bytes);
    return REWRITE_OK;
}

std::uint32_t RewriterEngine::Write(Spot spot, std::string_view content, RewriteContent kind) {
    return Try([&]() -> std::uint32_t {
        if (tokenKind == TOKEN_NONE)
            return REWRITE_WRONG_KIND;
        const bool isInside =
            spot == Spot::CONTENT_BEGIN || spot == Spot::CONTENT_END || spot == Spot::INSTEAD_OF_CONTENT;
        if (isInside && !elementHasContent)
            return REWRITE_NO_CONTENT;
        const std::uint32_t raw = GetRawElements(spot);
        std::string bytes;
        const std::uint32_t result = Encode(content, kind, raw, &bytes);
        if (result != REWRITE_OK)
            return result;
        if (raw != RAW_NONE && EndsRaw(spot, raw, content))
            return REWRITE_ENDS_EARLY;
        Put(spot, &bytes, kind == CONTENT_TEXT && raw == RAW_NONE);
        isEdited = true;
        return REWRITE_OK;
    });
}

std::uint32_t RewriterEngine::Write(Spot spot, WideStringView content, RewriteContent kind) {
    return TryWide(content, [&](std::string_view converted) { return Write(spot, converted, kind); });
}

/// Whether the text would end the raw elements that it is written into, together with what lies
/// around it. An end tag that ends one itself may be replaced by anything.
bool RewriterEngine::EndsRaw(Spot spot, std::uint32_t raw, std::string_view inserted) {
    const auto fits = [&](std::string_view before, std::string_view after, bool isAfterKnown) {
        return !EndsRawElement(raw, inserted, {before, after, isAfterKnown});
    };
    switch (spot) {
        case Spot::BEFORE: {
            const std::string after = ViewHead(edits.after.bytes, GetBody());
            return !fits(ViewTail(edits.before.bytes, GetTail()), after, after.size() >= SURROUNDING_UNITS);
        }
        case Spot::INSTEAD:
        case Spot::INSTEAD_OF_ELEMENT: {
            if (tokenKind == TOKEN_END_TAG && rawElements != rawBefore)
                return false;
            const std::string after = ViewHead(edits.after.bytes, "");
            return !fits(ViewTail(edits.before.bytes, GetTail()), after, after.size() >= SURROUNDING_UNITS);
        }
        case Spot::AFTER: {
            const std::string before = LastOf(edits.before.bytes, GetTail());
            return !fits(ViewTail(edits.after.bytes, LastOf(GetBody(), before)), "", false);
        }
        case Spot::CONTENT_BEGIN:
            return !fits(ViewTail(edits.after.bytes, ""), "", false);
        case Spot::CONTENT_END:
            return !fits(ViewTail(element.end.bytes, ""), "</", true);
        case Spot::INSTEAD_OF_CONTENT:
            return !fits("", "</", true);
        case Spot::AFTER_ELEMENT:
            return !fits(ViewTail(element.after.bytes, ""), "", false);
    }
    return false;
}

/// Keeps what is to be written. Takes the bytes; all that may fail comes first.
void RewriterEngine::Put(Spot spot, std::string* bytes, bool isText) {
    const auto put = [&](Insertion* insertion) {
        insertion->bytes.swap(*bytes);
        insertion->textBegin = isText ? 0 : Insertion::NO_TEXT;
    };
    switch (spot) {
        case Spot::BEFORE:
            Insert(bytes, isText, &edits.before);
            break;
        case Spot::AFTER:
        case Spot::CONTENT_BEGIN:
            Insert(bytes, isText, &edits.after);
            break;
        case Spot::CONTENT_END:
            Insert(bytes, isText, &element.end);
            element.raw = rawElements;
            break;
        case Spot::AFTER_ELEMENT:
            Insert(bytes, isText, &element.after);
            break;
        case Spot::INSTEAD:
            put(&edits.body);
            edits.hasBody = true;
            break;
        case Spot::INSTEAD_OF_CONTENT:
            put(&edits.after);
            element.end.Clear();
            element.hasNoContent = true;
            break;
        case Spot::INSTEAD_OF_ELEMENT:
            put(&edits.body);
            LeaveElementOut();
            break;
    }
}

/// After what was to be written there before.
void RewriterEngine::Insert(std::string* bytes, bool isText, Insertion* insertion) const {
    const std::size_t begin = insertion->bytes.size();
    if (begin == 0) {
        insertion->bytes.swap(*bytes);
        insertion->textBegin = isText ? 0 : Insertion::NO_TEXT;
        return;
    }
    const std::size_t size = bytes->size();
    if (isText)
        Guard(ViewTail(insertion->bytes, ""), bytes);
    insertion->bytes.append(*bytes);
    // All that comes before the first text is known only when it is written.
    const bool isGuarded = bytes->size() != size;
    if (isText && size > 0 && !isGuarded && insertion->textBegin == Insertion::NO_TEXT)
        insertion->textBegin = begin;
}

/// Of the element nothing is written but what takes its place.
void RewriterEngine::LeaveElementOut() {
    edits.hasBody = true;
    element.isRemoved = true;
    element.end.Clear();
    element.hasNoContent = elementHasContent;
    element.hasNoEndTag = elementHasContent;
    if (elementHasContent)
        edits.after.Clear();
    isEdited = true;
}

std::uint32_t RewriterEngine::Remove() {
    return Try([&]() -> std::uint32_t {
        if (tokenKind == TOKEN_NONE)
            return REWRITE_WRONG_KIND;
        if (rawBefore != RAW_NONE && EndsRaw(Spot::INSTEAD, rawBefore, ""))
            return REWRITE_ENDS_EARLY;
        edits.body.Clear();
        edits.hasBody = true;
        isEdited = true;
        return REWRITE_OK;
    });
}

std::uint32_t RewriterEngine::RemoveElement() {
    return Try([&]() -> std::uint32_t {
        if (rawBefore != RAW_NONE && EndsRaw(Spot::INSTEAD, rawBefore, ""))
            return REWRITE_ENDS_EARLY;
        edits.body.Clear();
        LeaveElementOut();
        return REWRITE_OK;
    });
}

std::uint32_t RewriterEngine::Unwrap() {
    return Try([&]() -> std::uint32_t {
        if (element.isRemoved)
            return REWRITE_OK;
        if (rawBefore != RAW_NONE && EndsRaw(Spot::INSTEAD, rawBefore, ""))
            return REWRITE_ENDS_EARLY;
        edits.body.Clear();
        edits.hasBody = true;
        element.hasNoEndTag = elementHasContent;
        isEdited = true;
        return REWRITE_OK;
    });
}

std::uint32_t RewriterEngine::SetText(std::string_view newText) {
    if (tokenKind == TOKEN_TEXT)
        return Write(Spot::INSTEAD, newText, CONTENT_TEXT);
    if (tokenKind != TOKEN_COMMENT_TAG)
        return REWRITE_WRONG_KIND;
    return Try([&]() -> std::uint32_t {
        if (!DocumentText::IsWellFormed(newText))
            return PARSER_INVALID_ARGUMENT;
        if (EndsComment(newText) || (rawBefore != RAW_NONE && EndsRawElement(rawBefore, newText, {"", "-->", true})))
            return REWRITE_ENDS_EARLY;
        constexpr std::string_view OPENER = "<!--";
        constexpr std::string_view CLOSER = "-->";
        const std::string_view bytes = GetBytes();
        const std::size_t unit = Text().GetUnitSize();
        std::string body(bytes.substr(0, OPENER.size() * unit));
        if (!Text().Append(newText, DocumentText::Lacking::REFUSED, &body))
            return REWRITE_NOT_IN_CHARSET;
        const std::size_t closerSize = CLOSER.size() * unit;
        const bool isClosed = bytes.size() >= (OPENER.size() + CLOSER.size()) * unit &&
                              ViewOf(bytes.substr(bytes.size() - closerSize)) == CLOSER;
        if (isClosed)
            body.append(bytes.substr(bytes.size() - closerSize));
        edits.body.bytes.swap(body);
        edits.body.textBegin = Insertion::NO_TEXT;
        edits.hasBody = true;
        isEdited = true;
        return REWRITE_OK;
    });
}

std::uint32_t RewriterEngine::SetText(WideStringView newText) {
    return TryWide(newText, [&](std::string_view converted) { return SetText(converted); });
}

/// What is written in place of the token so far, or its own bytes, as far as it matters for a raw
/// element. Attributes that are changed do not: such a tag still begins with its "<" and ends with
/// its ">", and what could end a raw element goes past neither. So the tag is not written for every
/// text that is inserted there. Borrowed until the next edit.
std::string_view RewriterEngine::GetBody() {
    return edits.hasBody ? std::string_view(edits.body.bytes) : GetBytes();
}

/// The last bytes before the token, as they will be written.
std::string RewriterEngine::GetTail() const {
    std::string bytes(tail.data(), tailSize);
    const std::uint64_t end = parser.GetTokenPlace().begin;
    if (removals > 0 || written >= end)
        return bytes;
    for (std::uint64_t place = std::max(written, end - std::min<std::uint64_t>(end, TAIL_SIZE)); place < end; ++place)
        bytes.push_back(place < pieceBegin ? kept[static_cast<std::size_t>(place - keptBegin)]
                                           : piece[place - pieceBegin]);
    return bytes;
}

/// The characters of some bytes of the document, every one beyond ASCII as the byte 0x80.
std::string RewriterEngine::ViewOf(std::string_view bytes) const {
    if (!parser.IsWParser())
        return std::string(bytes);
    std::string view;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
        const bool isAscii = bytes[i + 1] == 0 && static_cast<unsigned char>(bytes[i]) < 0x80;
        view.push_back(isAscii ? bytes[i] : '\x80');
    }
    return view;
}

/// The last bytes of `before` and `bytes`, one after the other: as many as matter.
std::string RewriterEngine::LastOf(std::string_view bytes, std::string_view before) {
    const std::size_t count = std::min(bytes.size(), TAIL_SIZE);
    const std::size_t countBefore = std::min(before.size(), TAIL_SIZE - count);
    return std::string(before.substr(before.size() - countBefore)).append(bytes.substr(bytes.size() - count));
}

/// The last characters of `before` and `bytes`.
std::string RewriterEngine::ViewTail(std::string_view bytes, std::string_view before) const {
    return ViewOf(LastOf(bytes, before));
}

/// The first characters of `before` and `bytes`.
std::string RewriterEngine::ViewHead(std::string_view bytes, std::string_view before) const {
    const std::size_t countBefore = std::min(before.size(), TAIL_SIZE);
    return ViewOf(std::string(before.substr(0, countBefore)).append(bytes.substr(0, TAIL_SIZE - countBefore)));
}

/// Writes the first character of a text as a reference where it would go on with the reference, or
/// the tag, that the characters before it begin.
void RewriterEngine::Guard(std::string_view before, std::string* bytes) const {
    const std::size_t unit = parser.IsWParser() ? 2 : 1;
    const std::string first = ViewOf(std::string_view(*bytes).substr(0, unit));
    if (first.empty() || static_cast<unsigned char>(first[0]) >= 0x80 || !GoesOnWithMarkup(before, first[0]))
        return;
    const std::string reference = "&#" + std::to_string(static_cast<unsigned>(first[0])) + ";";
    std::string guarded;
    for (const char character : reference)
        guarded.append(1, character).append(unit - 1, '\0');
    guarded.append(*bytes, unit);
    bytes->swap(guarded);
}

}  // namespace Kestra::HTML
