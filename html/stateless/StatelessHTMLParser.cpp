#include "html/stateless/StatelessHTMLParser.h"

#include <memory>
#include <type_traits>
#include <utility>

#include "html/stateless/Feed.h"
#include "html/stateless/Limits.h"
#include "html/stateless/Scan.h"
#include "platform/AtScopeEnd.h"
#include "platform/VirtualFileSystem.h"

namespace Kestra::HTML {

namespace {

/// Marks a call that feeds, starts or ends, so that callbacks cannot nest another one.
auto BeginCall(Uninherited<bool>* busy) {
    *busy = true;
    return AtScopeEnd([busy] { *busy = false; });
}

}  // namespace

StatelessHTMLParser::StatelessHTMLParser() = default;

StatelessHTMLParser::StatelessHTMLParser(const StatelessHTMLParser&) = default;

StatelessHTMLParser& StatelessHTMLParser::operator=(const StatelessHTMLParser& other) {
    if (this != &other) {
        StatelessHTMLParserData copy(other);
        Observable::operator=(other);
        static_assert(std::is_nothrow_move_assignable_v<StatelessHTMLParserData>);
        StatelessHTMLParserData::operator=(std::move(copy));
        busy = other.busy;
        converter = other.converter;
    }
    return *this;
}

StatelessHTMLParser::~StatelessHTMLParser() = default;

std::uint32_t StatelessHTMLParser::StartParse(StringNS::CharSet::Code newCharset) {
    if (busy.Get())
        return STATELESS_INVALID_ARGUMENT;
    const auto call = BeginCall(&busy);
    charset = newCharset;
    line = 1;
    column = 1;
    cursor = nullptr;
    position = 0;
    length = 0;
    lastByte = 0;
    state = Stateless::STATE_TEXT;
    text.clear();
    heldBack.clear();
    Stateless::LimitBuffers(*this, true);
    afterNewline = false;
    stopped = false;
    wentOver = false;
    pieceLeft = false;
    pieceOffset = 0;
    attributePlaces.clear();
    Stateless::BeginToken(*this);
    GetDelegate().Call(ID_START_PARSING);
    started = true;
    return stopped ? STATELESS_STOPPED : STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::EndParse() {
    if (busy.Get())
        return STATELESS_INVALID_ARGUMENT;
    const auto call = BeginCall(&busy);
    if (!started)
        return STATELESS_OK;
    const bool isOver = stopped || wentOver;
    attributePlaces.clear();
    if (!isOver)
        GetDelegate().Call(ID_STOP_PARSING);
    line = 1;
    charset = StringNS::CharSet::UNKNOWN;
    cursor = nullptr;
    position = 0;
    length = 0;
    started = false;
    column = 1;
    return stopped && !isOver ? STATELESS_STOPPED : STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::Stop() {
    if (!busy.Get())
        return STATELESS_INVALID_ARGUMENT;
    stopped = true;
    return STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::SetMaxTokenSize(std::uint64_t bytes) {
    maxTokenSize = bytes;
    Stateless::ApplyLimits(*this);
    return STATELESS_OK;
}

std::uint64_t StatelessHTMLParser::GetMaxTokenSize() const {
    return maxTokenSize;
}

std::uint32_t StatelessHTMLParser::SetMaxAttributes(std::uint64_t count) {
    maxAttributes = count;
    Stateless::ApplyLimits(*this);
    return STATELESS_OK;
}

std::uint64_t StatelessHTMLParser::GetMaxAttributes() const {
    return maxAttributes;
}

std::uint32_t StatelessHTMLParser::ParseBuffer(const void* data, std::size_t size) {
    if (busy.Get())
        return STATELESS_INVALID_ARGUMENT;
    const auto call = BeginCall(&busy);
    return Stateless::Feed(this, &GetDelegate(), &converter).ParsePiece(data, size);
}

std::uint32_t StatelessHTMLParser::ParseStream(VFS::InputStream* stream, bool release) {
    if (busy.Get())
        return STATELESS_INVALID_ARGUMENT;
    const auto call = BeginCall(&busy);
    const std::unique_ptr<VFS::InputStream> released(release ? stream : nullptr);
    if (stream == nullptr)
        return STATELESS_INVALID_ARGUMENT;
    return Stateless::Feed(this, &GetDelegate(), &converter).ParseStream(stream);
}

std::uint32_t StatelessHTMLParser::ParseFile(const WideChar* path) {
    if (busy.Get())
        return STATELESS_INVALID_ARGUMENT;
    const std::unique_ptr<VFS::InputStream> stream(VFS::VirtualFileSystem::GetInputStreamEx(path));
    return stream == nullptr ? std::uint32_t{STATELESS_FILE_NOT_OPENED} : ParseStream(stream.get(), false);
}

std::uint32_t StatelessHTMLParser::SetFlags(unsigned long newFlags) {
    flags = static_cast<std::uint32_t>(newFlags);
    return STATELESS_OK;
}

unsigned long StatelessHTMLParser::GetFlags() const {
    return flags;
}

std::uint32_t StatelessHTMLParser::SetScriptMode(ScriptMode newMode) {
    if (newMode != SCRIPT_AS_TOKENS && newMode != SCRIPT_AS_TEXT)
        return STATELESS_INVALID_ARGUMENT;
    scriptsAsText = newMode == SCRIPT_AS_TEXT;
    return STATELESS_OK;
}

StatelessHTMLParser::ScriptMode StatelessHTMLParser::GetScriptMode() const {
    return scriptsAsText ? SCRIPT_AS_TEXT : SCRIPT_AS_TOKENS;
}

std::uint32_t StatelessHTMLParser::GetCurrentLineNumber(std::size_t* out) const {
    *out = static_cast<std::size_t>(line);
    return STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::GetCurrentColumnNumber(std::size_t* out) const {
    *out = static_cast<std::size_t>(column);
    return STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::GetCurrentOffset(std::uint64_t* out) const {
    *out = started ? Stateless::GetOffset(*this) : 0;
    return STATELESS_OK;
}

std::uint32_t StatelessHTMLParser::GetAttributePlace(std::size_t index, AttributePlace* place) const {
    if (place == nullptr || !busy.Get() || index >= attributePlaces.size())
        return STATELESS_INVALID_ARGUMENT;
    *place = attributePlaces[index];
    return STATELESS_OK;
}

}  // namespace Kestra::HTML
