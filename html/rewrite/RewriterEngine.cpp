#include "html/rewrite/RewriterEngine.h"

#include <algorithm>
#include <cstddef>
#include <exception>
#include <new>
#include <utility>

#include "html/parser/GenericParserEngine.h"
#include "html/parser/StreamReader.h"
#include "platform/Results.h"
#include "platform/VirtualFileSystem.h"

namespace Kestra::HTML {

namespace {

constexpr std::uint64_t READ_SIZE = 65536;      // bytes per read of a stream
constexpr std::uint64_t SMALL_READ_SIZE = 512;  // when there is no memory for that

}  // namespace

RewriterEngine::RewriterEngine(ParserObserverOutputHandler* handler)
    : self(std::make_shared<RewriterEngine*>(this)),
      output(handler, &parser),
      narrowObserver(this),
      wideObserver(this),
      elements(callbacks.GetSelectors()),
      elementEdits(&elements, &output),
      token(&parser, &output) {}

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
    BindObserver();
    return PARSER_OK;
}

std::uint32_t RewriterEngine::OnElement(std::string_view selector, Rewriter::ElementCallback callback,
                                        std::string* message) {
    if (isRunning || !callback)
        return PARSER_INVALID_ARGUMENT;
    const std::uint32_t result = callbacks.AddForElements(selector, std::move(callback), message);
    if (result == REWRITE_OK)
        BindObserver();
    return result;
}

std::uint32_t RewriterEngine::OnContent(std::string_view selector, Rewriter::TokenCallback callback,
                                        std::string* message) {
    if (isRunning || !callback)
        return PARSER_INVALID_ARGUMENT;
    const std::uint32_t result = callbacks.AddForContent(selector, std::move(callback), message);
    if (result == REWRITE_OK)
        BindObserver();
    return result;
}

void RewriterEngine::SetMaxDepth(std::uint64_t count) {
    elements.SetMaxDepth(count);
    hasLimits = hasLimits || count > 0;
    if (!isRunning)
        BindObserver();
}

void RewriterEngine::SetMaxOpenAttributes(std::uint64_t count) {
    elements.SetMaxOpenAttributes(count);
    hasLimits = hasLimits || count > 0;
    if (!isRunning)
        BindObserver();
}

/// The observer of the host decides the flavour; without one nothing is converted, and without
/// callbacks nothing is delivered.
void RewriterEngine::BindObserver() {
    if (isOverLimit)
        return;
    ParserObserver<char, std::string>* narrow = nullptr;
    if (wideObserver.GetHost() != nullptr) {
        parser.SetObserver(&wideObserver, false);
        return;
    }
    if (narrowObserver.GetHost() != nullptr || HasCallbacks() || hasLimits)
        narrow = &narrowObserver;
    parser.SetObserver(narrow, false);
    BindFlavour();
}

/// A document begins: its flavour is known.
void RewriterEngine::BindFlavour() {
    const bool hasHost = narrowObserver.GetHost() != nullptr || wideObserver.GetHost() != nullptr;
    if (hasHost || (!HasCallbacks() && !hasLimits))
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
    const HostCall call(this);
    EndDocument();
    BeginDocument();
    BindObserver();
    try {
        const std::uint32_t result = parser.StartParse(code, type);
        isCopying = result != PARSER_OK;
        return result;
    } catch (const std::bad_alloc&) {
        if (output.IsHostsFault())
            throw;
        isCopying = true;
        return RESULT_OUT_OF_MEMORY;
    }
}

void RewriterEngine::BeginDocument() {
    isCopying = false;
    isOverLimit = false;
    output.BeginDocument();
    token.CloseRawElements();
}

std::uint32_t RewriterEngine::ParseBuffer(const char* data, std::uint64_t size) {
    if (isRunning || (data == nullptr && size > 0))
        return PARSER_INVALID_ARGUMENT;
    const HostCall call(this);
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
    const HostCall call(this);
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
    output.BeginPiece(data, size);
    output.CopyUntil(output.GetFed());
}

std::uint32_t RewriterEngine::FeedPiece(const char* data, std::uint64_t size) {
    output.BeginPiece(data, size);
    std::exception_ptr failure;
    std::uint32_t result = PARSER_OK;
    try {
        const std::uint32_t parsed = GenericParser::Internals::GetEngine(parser).FeedPiece(
            data, size, output.GetRetainedBytes(), output.GetPieceBegin());
        result = SettlePiece(parsed, &failure);
    } catch (const std::bad_alloc&) {
        CopyAll();
        if (output.IsHostsFault())
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
    // 8 here means that a token was lost because memory was lacking.
    if (result != PARSER_OK && result != RESULT_OUT_OF_MEMORY)
        return Fail(result);
    const std::uint64_t end = parser.GetTokenPlace().end;
    *failure = output.CopyWhateverHappens(end);
    try {
        output.RetainFrom(end);
    } catch (const std::bad_alloc&) {
        isCopying = true;
        throw;
    }
    return result;
}

/// After an answer other than 0 everything is copied.
std::uint32_t RewriterEngine::Fail(std::uint32_t result) {
    std::exception_ptr failure;
    if (!isCopying && !isOverLimit)
        failure = output.CopyWhateverHappens(std::min(parser.GetTokenPlace().end, output.GetFed()));
    isCopying = true;
    const std::exception_ptr later = CopyAll();
    if (failure != nullptr || later != nullptr)
        std::rethrow_exception(failure != nullptr ? failure : later);
    return result;
}

/// Writes what has been fed as it came in. A handler that throws still gets the rest.
/// @return what it has thrown first
std::exception_ptr RewriterEngine::CopyAll() noexcept {
    current = 0;
    token.ClearEdits();
    output.EndRemovals();
    const std::exception_ptr failure = output.CopyWhateverHappens(output.GetFed());
    output.ForgetRetained();
    return failure;
}

std::uint32_t RewriterEngine::EndParse() {
    if (isRunning)
        return PARSER_INVALID_ARGUMENT;
    const HostCall call(this);
    output.EndPieces();
    std::uint32_t result = PARSER_OK;
    if (!isCopying) {
        try {
            result = parser.EndParse();
            if (isOverLimit)
                result = Fail(PARSER_LIMIT_EXCEEDED);
        } catch (const std::bad_alloc&) {
            CopyAll();
            if (output.IsHostsFault()) {
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
    output.EndPieces();
    output.CopyUntil(output.GetFed());
    output.ForgetRetained();
    if (std::exchange(hasHalfUnit, false))
        output.Emit(std::string_view(&halfUnit, 1));
    elementEdits.CloseAll();
    token.CloseRawElements();
}

// -------------------------------------------------------------------------------------------------
// the current token

RewriterToken RewriterEngine::GetToken() const {
    return current != 0 ? RewriterToken(self, current) : RewriterToken();
}

CurrentToken* RewriterEngine::Find(const RewriterToken& hostToken) {
    RewriterEngine* const engine = hostToken.engine != nullptr ? *hostToken.engine : nullptr;
    const bool isCurrent = engine != nullptr && engine->current == hostToken.generation && engine->current != 0;
    return isCurrent ? &engine->token : nullptr;
}

template <typename S>
bool RewriterEngine::OpenElement(const S& name, std::uint64_t attributeCount) {
    token.BeginElement();
    if (!TracksElements() && !MayBeRawElement(name))
        return true;
    token.SetTagName(name);
    return OpenTag(attributeCount);
}

template <typename S>
void RewriterEngine::CloseElements(const S& name) {
    if (!TracksElements() && (!token.HasOpenRawElements() || !MayBeRawElement(name)))
        return;
    token.SetTagName(name);
    token.CloseRawElement();
    if (TracksElements())
        elementEdits.Close(token.GetTagName(), token.GetEdits());
}

template bool RewriterEngine::OpenElement(const std::string& name, std::uint64_t attributeCount);
template bool RewriterEngine::OpenElement(const WideString& name, std::uint64_t attributeCount);
template void RewriterEngine::CloseElements(const std::string& name);
template void RewriterEngine::CloseElements(const WideString& name);

bool RewriterEngine::OpenTag(std::uint64_t attributeCount) {
    if (TracksElements()) {
        callbacks.FindContentMatches(elements);
        const OpenElements::OpenedElement opened =
            elements.Open(token.GetTagName(), token.GetKind() == TOKEN_SHORT_TAG, attributeCount,
                          CurrentAttributes(&token), callbacks.GetMatches());
        if (opened.isOverLimit) {
            output.CopyUntil(parser.GetTokenPlace().begin);
            output.EndRemovals();
            isOverLimit = true;
            parser.Stop();
            current = 0;
            token.ForgetTag();
            return false;
        }
        token.SetHasContent(opened.hasContent);
    }
    token.OpenRawElement();
    return true;
}

void RewriterEngine::FindCallbacks() {
    callbacks.FindCallbacksOfToken(elements, token.IsOpening());
}

void RewriterEngine::CallBack() {
    for (const std::size_t index : callbacks.GetCallbacksOfToken()) {
        if (GenericParser::Internals::GetEngine(parser).IsStopped())
            return;
        const RewriterCallbacks::Registration& registration = callbacks.GetRegistration(index);
        current = ++generation;
        const RewriterToken called(self, current);
        if (registration.onElement)
            registration.onElement(RewriterElement(called));
        else
            registration.onContent(called);
    }
}

void RewriterEngine::LeaveOutBeforeToken() {
    output.CopyUntil(parser.GetTokenPlace().begin);
}

void RewriterEngine::SettleToken() {
    if (token.GetKind() == TOKEN_NONE)
        return;
    if (TokenEdits* const edits = token.CompleteEdits(); edits != nullptr) {
        auto opening = ElementEditStack::Opening::NONE;
        if (token.IsOpening()) {
            opening = token.HasContent() ? ElementEditStack::Opening::WITH_CONTENT
                                         : ElementEditStack::Opening::WITHOUT_CONTENT;
        }
        elementEdits.WriteToken(parser.GetTokenPlace(), opening, edits);
        token.ClearEdits();
    } else if (output.IsRemoving()) {
        output.CopyUntil(parser.GetTokenPlace().end);
    }
    token.ForgetTag();
}

/// The host has thrown: its edits of the token are dropped, but not those of the elements that end
/// here.
void RewriterEngine::AbandonToken() {
    output.SetHostsFault(true);
    token.AbandonEdits();
    // From this token on nothing is left out.
    output.EndRemovals();
    current = 0;
    try {
        SettleToken();
    } catch (...) {
        token.ClearEdits();
    }
}

}  // namespace Kestra::HTML
