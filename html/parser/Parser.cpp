#include "html/parser/Parser.h"

#include <algorithm>

#include "html/framework/Instantiate.h"
#include "html/framework/Scan.h"
#include "html/parser/Construct.h"
#include "platform/AtScopeEnd.h"

namespace Kestra::HTML {

template <typename C, typename S>
Parser<C, S>::Parser() = default;

template <typename C, typename S>
Parser<C, S>::Parser(const Parser& other) : core(other.core) {
    core.SettleCopy();
}

template <typename C, typename S>
Parser<C, S>::~Parser() = default;

template <typename C, typename S>
std::uint32_t Parser<C, S>::Start(std::uint64_t markLength, bool detectedCharset, std::uint64_t bytesDropped) {
    core.input.context.Init();
    core.input.fedBefore = 0;
    core.input.pieceLength = 0;
    core.ReturnToText();
    core.halted = PARSER_OK;
    core.inScript = false;
    core.inStyle = false;
    core.openConstruct.BeginDocument(markLength);
    core.places.BeginDocument(bytesDropped);
    core.LimitBuffers(true);
    core.markupCharset.BeginDocument(detectedCharset);
    core.delivery.BeginDocument();
    core.delivery.AnnounceStart();
    return core.halted;
}

template <typename C, typename S>
void Parser<C, S>::SkipTo(std::uint64_t bytes) {
    core.input.fedBefore = core.places.SkipTo(core.input, bytes);
}

/// Resets the driver to text when an observer throws, so that the next call starts from there.
/// Cancelled when the call ends as usual.
template <typename C, typename S>
auto Parser<C, S>::BeginDelivering() {
    return AtScopeEnd([this] {
        core.isWholeTextPending = false;
        core.ReturnToText();
        core.places.SkipPiece(core.input);
    });
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::Parse(const C* piece, std::uint64_t length, const PieceOrigin& origin) {
    if (IsStopped())
        return core.halted;
    if (length == 0)
        return PARSER_OK;
    BeginPiece(piece, length, origin);
    auto delivering = BeginDelivering();
    const std::uint32_t result = ParsePiece();
    delivering.Cancel();
    if (core.IsHalted())
        return core.halted;
    if (result == PARSER_LIMIT_EXCEEDED)
        core.GoBackToToken();
    return result;
}

template <typename C, typename S>
void Parser<C, S>::BeginPiece(const C* piece, std::uint64_t length, const PieceOrigin& origin) {
    if (core.halted == PARSER_LIMIT_EXCEEDED) {
        core.halted = PARSER_OK;
        core.delivery.RestartSelfCheck();
    }
    core.delivery.AddToInputCheck(piece, length * sizeof(C));
    if (core.state == STATE_TEXT)
        // A copy made in `OnEndParsing` has the name of the last recognizer.
        core.currentParserName = ParserNames::TEXT;
    ParserInput<C, S>& input = core.input;
    core.buffersDue -= std::min(core.buffersDue, input.pieceLength);
    input.fedBefore += input.pieceLength;
    input.pieceLength = length;
    input.context.buffer = piece;
    input.context.position = 0;
    core.BeginSlice();
    core.openConstruct.BeginPiece(origin);
}

/// The main loop: each turn runs the active recognizer.
/// @return 0 when the piece is used up or a callback has stopped the document; 705, 711, or the
///         code of a failure that has no recovery
template <typename C, typename S>
std::uint32_t Parser<C, S>::ParsePiece() {
    const SimpleParserContext<C, S>& context = core.input.context;
    // A limit may have been set since the last piece.
    std::uint32_t result = core.IsTooLongUnderWay() ? PARSER_LIMIT_EXCEEDED : PARSER_OK;
    while (result == PARSER_OK) {
        if (Scan::AtEnd(context)) {
            if (core.IsHalted() || context.position == core.input.pieceLength)
                break;
            core.BeginSlice();
        }
        if (context.position >= core.buffersDue)
            core.LimitBuffers(false);
        const Construct<C, S>& construct = Construct<C, S>::Of(core.state);
        result = construct.parse(core);
        if (result != SP_NEED_MORE_DATA && construct.state != STATE_JUNK)
            result = Recover(result);
        if (result == PARSER_OK && Scan::AtEnd(context) && core.IsTooLongUnderWay())
            result = PARSER_LIMIT_EXCEEDED;
    }
    return result;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::End() {
    std::uint32_t result = PARSER_OK;
    WideStringView lastParserName;
    {
        auto delivering = BeginDelivering();
        result = EndOpenConstruct();
        lastParserName = core.currentParserName;
        if (result == PARSER_LIMIT_EXCEEDED) {
            delivering.Cancel();
            core.GoBackToToken();
        }
    }
    SetBackingStream(nullptr);
    if (result != PARSER_OK)
        return result;
    if (!core.delivery.EndSelfCheck())
        return PARSER_SELF_CHECK_FAILED;
    core.places.EndToken(core.input, 0);  // nothing is left: parsing ends where the last token ended
    core.currentParserName = lastParserName;
    const auto delivering = BeginDelivering();
    core.delivery.Notify([](auto* observer) { observer->OnEndParsing(); });
    return core.halted;
}

template <typename C, typename S>
std::uint32_t Parser<C, S>::EndOpenConstruct() {
    const Construct<C, S>& construct = Construct<C, S>::Of(core.state);
    if (core.IsTooLong(0))
        return PARSER_LIMIT_EXCEEDED;
    const std::uint32_t result = construct.end(core);
    if (result != SP_TOKEN_COMPLETE && construct.state == STATE_JUNK)
        return result;
    const std::uint32_t settled = result == SP_TOKEN_COMPLETE ? std::uint32_t{PARSER_OK} : Recover(result);
    return settled == PARSER_OK ? core.halted : settled;
}

/// Delivers the failed construct, from its first character to the current place, as junk, and goes
/// on in the junk state.
/// @param failure  what the recognizer answered, or what ends the document
/// @return 0; 711; `failure` when it ends the document, or has no recovery
template <typename C, typename S>
std::uint32_t Parser<C, S>::Recover(std::uint32_t failure) {
    if (failure == PARSER_PARSE_AGAIN || failure == PARSER_LIMIT_EXCEEDED)
        return failure;
    if (core.IsTooLong(0))
        return PARSER_LIMIT_EXCEEDED;
    if (!core.openConstruct.CanReadBack())
        return failure;
    auto& junk = core.recognizers.junk;
    junk.Begin();
    if (core.openConstruct.ReadBack(core.input, core.limit.GetBytes(), &junk.data.text) != PARSER_OK)
        return failure;
    core.Deliver(MakeRecord<JunkData>(junk.data));
    junk.Begin();
    core.state = STATE_JUNK;  // the name stays that of the construct
    return PARSER_OK;
}

template <typename C, typename S>
void Parser<C, S>::OnBOM(const void* bytes, std::uint64_t size) {
    core.input.fedBefore += size / sizeof(C);
    core.places.EndToken(core.input, 0);
    core.delivery.OnBOM(bytes, size);
}

template <typename C, typename S>
void Parser<C, S>::Stop() {
    core.halted = PARSER_STOPPED;
    core.BeginSlice();
}

template <typename C, typename S>
bool Parser<C, S>::IsStopped() const {
    return core.halted == PARSER_STOPPED;
}

template <typename C, typename S>
bool Parser<C, S>::IsHalted() const {
    return core.IsHalted();
}

template <typename C, typename S>
void Parser<C, S>::Release() {
    core.ReturnToText();
    core.delivery.ReleaseSelfCheck();
    core.ReleaseBuffers();
}

template <typename C, typename S>
void Parser<C, S>::SetBackingStream(VFS::InputStream* stream) {
    core.openConstruct.SetStream(stream);
}

template <typename C, typename S>
std::unique_ptr<VFS::InputStream> Parser<C, S>::KeepOpenConstruct() {
    if (!Construct<C, S>::Of(core.state).isOpenAtEnd)
        return nullptr;
    return core.openConstruct.CopyToMemory(core.input, core.limit.GetBytes());
}

template <typename C, typename S>
void Parser<C, S>::ReplaceBackingStream(VFS::InputStream* stream) {
    core.openConstruct.ReplaceStream(stream);
}

template <typename C, typename S>
void Parser<C, S>::SetScriptsAsText(bool asText) {
    core.scriptsAsText = asText;
}

template <typename C, typename S>
bool Parser<C, S>::AreScriptsAsText() const {
    return core.scriptsAsText;
}

template <typename C, typename S>
void Parser<C, S>::SetMaxTokenSize(std::uint64_t bytes) {
    core.limit.SetBytes(bytes);
    core.ApplyLimits();
}

template <typename C, typename S>
std::uint64_t Parser<C, S>::GetMaxTokenSize() const {
    return core.limit.GetBytes();
}

template <typename C, typename S>
void Parser<C, S>::SetMaxAttributes(std::uint64_t count) {
    core.limit.SetAttributes(count);
    core.ApplyLimits();
}

template <typename C, typename S>
std::uint64_t Parser<C, S>::GetMaxAttributes() const {
    return core.limit.GetAttributes();
}

template <typename C, typename S>
TokenDelivery<C, S>& Parser<C, S>::GetDelivery() {
    return core.delivery;
}

template <typename C, typename S>
const TokenDelivery<C, S>& Parser<C, S>::GetDelivery() const {
    return core.delivery;
}

template <typename C, typename S>
MarkupCharset<C, S>& Parser<C, S>::GetMarkupCharset() {
    return core.markupCharset;
}

template <typename C, typename S>
const MarkupCharset<C, S>& Parser<C, S>::GetMarkupCharset() const {
    return core.markupCharset;
}

template <typename C, typename S>
TokenPlace Parser<C, S>::GetTokenPlace() const {
    return core.places.GetTokenPlace();
}

template <typename C, typename S>
bool Parser<C, S>::GetAttributePlace(std::size_t index, AttributePlace* place) const {
    return core.places.GetAttributePlace(core.GetDeliveredAttributes(), index, place);
}

template <typename C, typename S>
bool Parser<C, S>::GetAttributeParts(std::size_t index, std::vector<AttributePlace>* places) const {
    return core.places.GetAttributeParts(core.GetDeliveredAttributes(), core.MayHaveEscapeRuns(), index, places);
}

template <typename C, typename S>
bool Parser<C, S>::GetTagNameEnd(std::uint64_t* end) const {
    const DeliveredAttributes<C, S> delivered = core.GetDeliveredAttributes();
    if (delivered.list == nullptr)
        return false;
    *end = core.places.ToBytes(delivered.nameEnd);
    return true;
}

template <typename C, typename S>
std::uint64_t Parser<C, S>::GetLine() const {
    return core.input.context.line;
}

template <typename C, typename S>
std::uint64_t Parser<C, S>::GetColumn() const {
    return core.input.context.column;
}

template <typename C, typename S>
WideStringView Parser<C, S>::GetCurrentParserName() const {
    return core.currentParserName;
}

KESTRA_HTML_INSTANTIATE(Parser);

}  // namespace Kestra::HTML
